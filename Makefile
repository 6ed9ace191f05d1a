# Entry points. Every target installs missing Debian packages first.
#   make test           build and run all tests (starts a private MariaDB server)
#   make demo           build and run the demo against a private server
#   make bench          build and run the benchmarks
#   make test-sanitize  the tests under AddressSanitizer and UndefinedBehaviorSanitizer
#   make fuzz           build and run the fuzz targets for a bounded time
#   make package        Debian packages of the library, headers and tools (build-package/*.deb)
#   make soak-keys      key allocation under contention (about 2 minutes)
#   make test-cluster   writers on a 3-node Galera cluster while a node crashes (about 1 minute)
#   make format         clang-format every source file

JOBS ?= 2
GEN := -G Ninja
BUILD := build
SAN_BUILD := build-sanitize
FUZZ_BUILD := build-fuzz
PKG_BUILD := build-package
FUZZ_SECONDS ?= 60

.PHONY: deps configure build test test-sanitize demo bench fuzz format package clean soak-keys \
  test-cluster

deps:
	@./scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) $(GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure

test-sanitize: deps
	@cmake -S . -B $(SAN_BUILD) $(GEN) -DCMAKE_BUILD_TYPE=Debug -DORVMYSQL_SANITIZE=ON -DORVMYSQL_BENCH=OFF >/dev/null
	@cmake --build $(SAN_BUILD) -j $(JOBS)
	cd $(SAN_BUILD) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure

demo: build
	./$(BUILD)/orvmysql-demo

bench: deps
	@cmake -S . -B $(BUILD) $(GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	@cmake --build $(BUILD) -j $(JOBS) --target orvmysql_bench
	./$(BUILD)/orvmysql_bench --benchmark_counters_tabular=true

# One entity type, 20 s each: 8 threads of one process, then 8 processes of one
# thread; single keys, then blocks of 100. Exits non-zero on a duplicate key.
soak-keys: build
	./$(BUILD)/orvmysql-keys soak --threads 8 --seconds 20
	ORVMYSQL_KEY_BLOCK=100 ./$(BUILD)/orvmysql-keys soak --threads 8 --seconds 20
	./$(BUILD)/orvmysql-keys soak --processes 8 --threads 1 --seconds 20
	ORVMYSQL_KEY_BLOCK=100 ./$(BUILD)/orvmysql-keys soak --processes 8 --threads 1 --seconds 20

# Three Galera nodes on loopback, one writer per node for 30 s while node 2 is
# killed and rejoins (tests/cluster/cluster_main.cpp). Exits non-zero when a
# key is handed out twice, a successful Add is missing on a node, or a writer
# of a node that stayed up stalls for more than 8 s.
test-cluster: configure
	@./scripts/install-deps.sh cluster
	@cmake --build $(BUILD) -j $(JOBS) --target orvmysql-cluster-test
	./$(BUILD)/orvmysql-cluster-test

fuzz:
	@./scripts/install-deps.sh fuzz
	@CXX=clang++ cmake -S . -B $(FUZZ_BUILD) $(GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORVMYSQL_FUZZ=ON -DORVMYSQL_TESTS=OFF -DORVMYSQL_BENCH=OFF >/dev/null
	@cmake --build $(FUZZ_BUILD) -j $(JOBS)
	@set -e; for f in $(FUZZ_BUILD)/fuzz_*; do \
	  [ -x "$$f" ] || continue; \
	  echo "== $$f ($(FUZZ_SECONDS) s)"; \
	  mkdir -p $(FUZZ_BUILD)/corpus/$$(basename $$f); \
	  "$$f" -max_total_time=$(FUZZ_SECONDS) -rss_limit_mb=2048 $(FUZZ_BUILD)/corpus/$$(basename $$f) fuzz/seeds/$$(basename $$f); \
	done

# The packages are built for /usr in a build of their own, so that the paths
# the library was compiled with are the ones the packages install.
package: deps
	@./scripts/install-deps.sh package
	@cmake -S . -B $(PKG_BUILD) $(GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX=/usr \
	  -DORVMYSQL_TESTS=OFF -DORVMYSQL_BENCH=OFF >/dev/null
	@cmake --build $(PKG_BUILD) -j $(JOBS)
	cd $(PKG_BUILD) && cpack
	@ls -1 $(PKG_BUILD)/*.deb

format:
	@command -v clang-format >/dev/null || ./scripts/install-deps.sh format
	@git ls-files -co --exclude-standard '*.cpp' '*.h' '*.in' | grep -v '\.in$$' | xargs -r clang-format -i

clean:
	rm -rf $(BUILD) $(SAN_BUILD) $(FUZZ_BUILD) $(PKG_BUILD)
