// What the fault handling adds to every statement, in one run: the in-use
// check alone (a compare-and-swap and a store around each call), next to the
// smallest statement in a session through the library (which also decides
// whether a lock conflict may be retried) and through Connector/C directly.
// The two statements take turns in one loop, so that both see the same load
// on the machine.
//   library_us, direct_us  median times of SELECT 1 through each
//   library_minus_direct_us  what the library adds to a statement in all

#include <benchmark/benchmark.h>
#include <mysql.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <vector>

#include "access/InUse.h"
#include "bench/BenchSupport.h"

namespace {

using Clock = std::chrono::steady_clock;

void BM_InUseCheck(benchmark::State& state) {
  orvmysql::detail::InUseMark mark;
  for (auto _ : state) {
    orvmysql::detail::InUseGuard guard(mark);
    benchmark::DoNotOptimize(&guard);
  }
}
BENCHMARK(BM_InUseCheck);

double Median(std::vector<double>& values) {
  if (values.empty()) return 0;
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

void BM_SelectOne_LibraryAndDirect(benchmark::State& state) {
  auto handler = orvbench::NewHandler();
  handler->StartSession();
  auto connection = handler->Connection();
  MYSQL* db = orvbench::DirectConnect();
  const std::string sql = "SELECT 1";
  std::vector<double> library_us, direct_us;
  for (auto _ : state) {
    auto start = Clock::now();
    benchmark::DoNotOptimize(connection->ExecuteScalar(sql, ""));
    library_us.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    start = Clock::now();
    if (mysql_real_query(db, sql.data(), sql.size()) != 0) state.SkipWithError(mysql_error(db));
    MYSQL_RES* result = mysql_store_result(db);
    benchmark::DoNotOptimize(mysql_fetch_row(result));
    mysql_free_result(result);
    direct_us.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
  mysql_close(db);
  handler->EndSession();
  const double library = Median(library_us), direct = Median(direct_us);
  state.counters["library_us"] = library;
  state.counters["direct_us"] = direct;
  state.counters["library_minus_direct_us"] = library - direct;
}
BENCHMARK(BM_SelectOne_LibraryAndDirect);

}  // namespace
