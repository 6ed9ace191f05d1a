#!/usr/bin/env bash
# Installs the built tree into a temporary prefix, checks what was installed,
# builds tests/consumer against it once through find_package and once through
# pkg-config, configures a project that embeds the source tree with
# add_subdirectory, and runs the installed orvmysql-schema and both consumers
# against a private server.
#   run.sh BUILD_DIR DEVSERVER GENERATOR [CXXFLAGS]
set -euo pipefail

if [ "${1:-}" = "--against-server" ]; then
  # Second stage, started by orvmysql-devserver with the server in the environment.
  work=$2 prefix=$3 libdir=$4
  db=orvconsumer_$$
  "$prefix/bin/orvmysql-schema" create --database "$db"
  "$prefix/bin/orvmysql-schema" check --database "$db"
  "$work/cmake-build/consumer" "$db"
  LD_LIBRARY_PATH="$libdir" "$work/pkg-config-consumer" "$db" --drop
  exit 0
fi

build=$(cd "$1" && pwd) devserver=$2 generator=$3 flags=${4:-}
src=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d /tmp/orvmysql-consumer-XXXXXX)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() { echo "FAILED: $*" >&2; exit 1; }

echo "== cmake --install into $prefix"
cmake --install "$build" --prefix "$prefix" >"$work/install.log"
lib=$(find "$prefix" -name liborvmysql.so.2 | head -1)
[ -n "$lib" ] || fail "liborvmysql.so.2 is not installed"
libdir=$(dirname "$lib")
soname=$(objdump -p "$lib" | awk '$1 == "SONAME" { print $2 }')
[ "$soname" = liborvmysql.so.2 ] || fail "SONAME is '$soname'"
for f in "$libdir/liborvmysql.so" include/orvmysql/orvmysql.h include/orvmysql/c.h \
  "$libdir/cmake/orvmysql/orvmysqlConfig.cmake" "$libdir/cmake/orvmysql/orvmysqlConfigVersion.cmake" \
  "$libdir/pkgconfig/orvmysql.pc" share/orvmysql/schema/orvmysql.sql bin/orvmysql-schema \
  share/doc/orvmysql/LICENSE; do
  case $f in /*) ;; *) f=$prefix/$f ;; esac
  [ -e "$f" ] || fail "not installed: ${f#"$prefix"/}"
done
for f in "$src"/schema/migrations/*.sql; do
  [ -e "$f" ] || continue
  [ -e "$prefix/share/orvmysql/schema/migrations/$(basename "$f")" ] || fail "migration $(basename "$f") not installed"
done
if [ -d "$src/data" ]; then
  (cd "$src/data" && find . -type f) | while read -r f; do
    [ -e "$prefix/share/orvmysql/$f" ] || fail "data file ${f#./} not installed"
  done
fi

echo "== find_package(orvmysql 2.0)"
CXXFLAGS="$flags" LDFLAGS="$flags" cmake -S "$src/tests/consumer" -B "$work/cmake-build" -G "$generator" \
  -DCMAKE_PREFIX_PATH="$prefix" >"$work/configure.log" || { cat "$work/configure.log"; fail "configure"; }
cmake --build "$work/cmake-build" >"$work/build.log" || { cat "$work/build.log"; fail "build"; }
if cmake -S "$src/tests/consumer" -B "$work/wrong-version" -G "$generator" -DCMAKE_PREFIX_PATH="$prefix" \
  -DORVMYSQL_WANTED_VERSION=3.0 >"$work/wrong.log" 2>&1; then
  fail "find_package(orvmysql 3.0) accepted version 2"
fi

echo "== pkg-config orvmysql"
export PKG_CONFIG_PATH=$libdir/pkgconfig
[ "$(pkg-config --modversion orvmysql)" = "$(sed -n 's/^Version: //p' "$libdir/pkgconfig/orvmysql.pc")" ]
# shellcheck disable=SC2046,SC2086
c++ -std=c++20 $flags "$src/tests/consumer/consumer.cpp" -o "$work/pkg-config-consumer" \
  $(pkg-config --cflags --libs orvmysql) || fail "build with pkg-config"

echo "== add_subdirectory of the source tree"
cmake -S "$src/tests/consumer/embedded" -B "$work/embedded" -G "$generator" \
  -DORVMYSQL_SOURCE_DIR="$src" >"$work/embedded.log" || { cat "$work/embedded.log"; fail "configure"; }
targets=$(cmake --build "$work/embedded" --target help)
grep -q "orvmysql" <<<"$targets" || fail "the embedded build has no orvmysql target"
if grep -q "orvmysql_unit_tests\|orvmysql_bench" <<<"$targets"; then
  fail "an embedding project builds the tests or benchmarks by default"
fi

echo "== against a private server"
"$devserver" "$0" --against-server "$work" "$prefix" "$libdir"
echo "install test: passed"
