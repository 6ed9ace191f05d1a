// A whole case's life (bench/CaseLife.h) played by 1, 2 and 4 client threads,
// each with a handler of its own, on four paths that take turns:
//   exact        single keys, no pooled connections (ORVMYSQL_POOL=off): a
//                connection per call outside a session
//   fast         pooled connections and key blocks of 100
//                (ORVMYSQL_POOL=on, ORVMYSQL_KEY_BLOCK=100)
//   *_floor      the statements the library sent for one case, sent again by
//                bare Connector/C with fresh keys taken the way that path
//                takes them (bench/CaseScript.h), one connection per thread
// once with the server's log flushed at every commit (durable:1, as
// production runs) and once with the test server's relaxed setting
// (durable:0, innodb_flush_log_at_trx_commit=2).
//
// Counters (medians of the rounds):
//   <path>_cps        cases per second, all threads together
//   <path>_stmts      statements per case (the library's counted by a
//                     statement observer, the floor's as it sends them)
//   exact_per_floor,  the library's time per case over the floor's, same
//   fast_per_floor    statements
//   fast_per_exact    the fast path's cases per second over the exact path's
//   load              the machine's load average when the row started
//
// ORVMYSQL_WORKLOAD_ROUNDS (default 7) and ORVMYSQL_WORKLOAD_SECONDS (default
// 0.6, per path and round) set the length of a row. On a loaded machine one
// round of a path varies tenfold and more with the scheduling of client and
// server; many short rounds give steadier medians than a few long ones.

#include <benchmark/benchmark.h>
#include <mysql.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "bench/BenchSupport.h"
#include "bench/CaseLife.h"
#include "bench/CaseScript.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t kFastKeyBlock = 100;

double EnvNumber(const char* name, double fallback) {
  const char* text = std::getenv(name);
  if (text == nullptr || *text == '\0') return fallback;
  return std::stod(text);
}

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

// What every row shares: the definition the cases run and the script of one
// case recorded on the exact path.
struct Workload {
  orvbench::CaseDefinition definition;
  std::unique_ptr<orvbench::CaseScript> script;

  Workload() {
    unsetenv("ORVMYSQL_KEY_BLOCK");
    auto handler = orvbench::NewHandler();
    definition = orvbench::StoreCaseDefinition(*handler);
    orvbench::MoveKeyCountersForScript(*handler->Connection());
    std::vector<std::string> statements;
    handler->SetStatementObserver(
        [&](const orvmysql::StatementEvent& e) { statements.emplace_back(e.sql); });
    const std::string guid = "{WORKLOAD-RECORDED-CASE}";
    const orvbench::CaseKeys keys = orvbench::CaseLife(handler, definition).Run(guid);
    handler->SetStatementObserver(nullptr);
    const std::string tree = handler->Connection()->ExecuteScalar(
        "SELECT TreeID FROM tblProcessInstance WHERE ProcInstanceID = " +
            std::to_string(keys.process),
        "");
    script = std::make_unique<orvbench::CaseScript>(statements, guid, tree);
  }
};

const Workload& TheWorkload() {
  static const Workload workload;
  return workload;
}

struct PathRun {
  double cases_per_second = 0;
  double statements_per_case = 0;
};

// One thread's player: plays a case and returns the statements it sent.
using Player = std::function<long long(const std::string& guid, const std::string& tree)>;

// Runs `threads` players for about `seconds`, each made on its own thread
// before the clock starts and destroyed after it stopped.
PathRun RunThreads(int threads, double seconds,
                   const std::function<Player(int thread)>& make_player) {
  static std::atomic<long long> runs{0};
  const long long run = ++runs;
  std::barrier ready(threads + 1);
  std::atomic<long long> cases{0}, statements{0};
  std::mutex failure_mutex;
  std::exception_ptr failure;
  std::vector<Clock::time_point> ends(threads);
  std::vector<std::thread> pool;
  for (int t = 0; t < threads; ++t) {
    pool.emplace_back([&, t] {
      Player player;
      try {
        player = make_player(t);
      } catch (...) {
        std::lock_guard hold(failure_mutex);
        failure = std::current_exception();
      }
      ready.arrive_and_wait();
      const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
      long long n = 0;
      try {
        while (player && Clock::now() < deadline) {
          char tree[33];
          std::snprintf(tree, sizeof tree, "%012llX%04X%016llX", run, t, n);
          const std::string guid =
              "workload " + std::to_string(run) + "." + std::to_string(t) + "." + std::to_string(n);
          statements += player(guid, tree);
          ++n;
        }
      } catch (...) {
        std::lock_guard hold(failure_mutex);
        failure = std::current_exception();
      }
      ends[t] = Clock::now();
      cases += n;
    });
  }
  ready.arrive_and_wait();
  const auto start = Clock::now();
  for (auto& thread : pool) thread.join();
  if (failure) std::rethrow_exception(failure);
  const double elapsed =
      std::chrono::duration<double>(*std::max_element(ends.begin(), ends.end()) - start).count();
  PathRun result;
  if (cases > 0) {
    result.cases_per_second = static_cast<double>(cases) / elapsed;
    result.statements_per_case = static_cast<double>(statements) / static_cast<double>(cases);
  }
  return result;
}

// The library's paths. A connection reads ORVMYSQL_POOL at its first
// statement, and GetNextID reads ORVMYSQL_KEY_BLOCK at every call; both are
// set here, while no thread of the workload runs.
PathRun RunLibrary(bool fast, int threads, double seconds) {
  setenv("ORVMYSQL_POOL", fast ? "on" : "off", 1);
  if (fast) {
    setenv("ORVMYSQL_KEY_BLOCK", std::to_string(kFastKeyBlock).c_str(), 1);
  } else {
    unsetenv("ORVMYSQL_KEY_BLOCK");
  }
  const PathRun result = RunThreads(threads, seconds, [](int) {
    auto handler = orvbench::NewHandler();
    auto counted = std::make_shared<long long>(0);
    handler->SetStatementObserver([counted](const orvmysql::StatementEvent&) { ++*counted; });
    auto life = std::make_shared<orvbench::CaseLife>(handler, TheWorkload().definition);
    return [life, counted](const std::string& guid, const std::string&) {
      *counted = 0;
      life->Run(guid);
      return *counted;
    };
  });
  unsetenv("ORVMYSQL_KEY_BLOCK");
  unsetenv("ORVMYSQL_POOL");
  return result;
}

PathRun RunFloor(bool fast, int threads, double seconds) {
  orvbench::FloorKeys keys(fast ? kFastKeyBlock : 1);
  return RunThreads(threads, seconds, [&keys](int) {
    std::shared_ptr<MYSQL> db(orvbench::DirectConnect(), mysql_close);
    return [db, &keys](const std::string& guid, const std::string& tree) {
      return TheWorkload().script->Play(db.get(), keys, guid, tree);
    };
  });
}

// The server's log flushing set for the life of the object, then put back.
class LogFlush {
 public:
  explicit LogFlush(bool durable) : before_(Set(durable ? "1" : "2")) {}
  ~LogFlush() {
    try {
      Set(before_);
    } catch (const std::exception&) {
    }
  }
  LogFlush(const LogFlush&) = delete;
  LogFlush& operator=(const LogFlush&) = delete;

 private:
  // Returns the setting it replaced.
  static std::string Set(const std::string& value) {
    auto handler = orvbench::NewHandler();
    auto& connection = *handler->Connection();
    const std::string before =
        connection.ExecuteScalar("SELECT @@GLOBAL.innodb_flush_log_at_trx_commit", "1");
    connection.ExecuteNonQuery("SET GLOBAL innodb_flush_log_at_trx_commit = " + value);
    return before;
  }

  const std::string before_;
};

void BM_CaseLife(benchmark::State& state) {
  const bool durable = state.range(0) != 0;
  const int threads = static_cast<int>(state.range(1));
  const int rounds = std::max(1, static_cast<int>(EnvNumber("ORVMYSQL_WORKLOAD_ROUNDS", 7)));
  const double seconds = EnvNumber("ORVMYSQL_WORKLOAD_SECONDS", 0.6);
  double load = 0;
  getloadavg(&load, 1);

  struct Path {
    const char* name;
    std::function<PathRun()> run;
    std::vector<double> cps, stmts;
  };
  std::vector<Path> paths = {
      {"exact", [&] { return RunLibrary(false, threads, seconds); }, {}, {}},
      {"exact_floor", [&] { return RunFloor(false, threads, seconds); }, {}, {}},
      {"fast", [&] { return RunLibrary(true, threads, seconds); }, {}, {}},
      {"fast_floor", [&] { return RunFloor(true, threads, seconds); }, {}, {}},
  };
  try {
    TheWorkload();
    const LogFlush flush(durable);
    for (auto _ : state) {
      // Each round starts one path further on, so that every path goes first
      // as often as the others.
      for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < paths.size(); ++i) {
          Path& path = paths[(i + round) % paths.size()];
          const PathRun r = path.run();
          path.cps.push_back(r.cases_per_second);
          path.stmts.push_back(r.statements_per_case);
        }
      }
    }
  } catch (const std::exception& e) {
    state.SkipWithError(e.what());
    return;
  }
  for (Path& path : paths) {
    state.counters[std::string(path.name) + "_cps"] = Median(path.cps);
    state.counters[std::string(path.name) + "_stmts"] = Median(path.stmts);
  }
  auto cps = [&](size_t i) { return state.counters[std::string(paths[i].name) + "_cps"].value; };
  state.counters["exact_per_floor"] = cps(1) / cps(0);
  state.counters["fast_per_floor"] = cps(3) / cps(2);
  state.counters["fast_per_exact"] = cps(2) / cps(0);
  state.counters["load"] = load;
}
BENCHMARK(BM_CaseLife)
    ->ArgNames({"durable", "threads"})
    ->ArgsProduct({{1, 0}, {1, 2, 4}})
    ->Iterations(1)
    ->Unit(benchmark::kSecond);

}  // namespace
