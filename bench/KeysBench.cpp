// A keyed Add (the key, then the INSERT) against the bare INSERT through
// Connector/C, with single keys and with key blocks of 100. The two are
// interleaved in one loop so that both see the same load on the machine; the
// reported time is the Add's.
//   insert_us             the bare INSERT's mean time
//   add_per_insert        the Add's time over the bare INSERT's
//   key_statements_per_100_keys  the server's count of statements, less the INSERTs

#include <benchmark/benchmark.h>
#include <mysql.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include "bench/BenchSupport.h"
#include "orvmysql/Definitions.h"

namespace {

using Clock = std::chrono::steady_clock;

void BM_KeyedAdd(benchmark::State& state, const char* block) {
  if (block != nullptr)
    setenv("ORVMYSQL_KEY_BLOCK", block, 1);
  else
    unsetenv("ORVMYSQL_KEY_BLOCK");
  auto handler = orvbench::NewHandler();
  handler->StartSession();
  auto transitions = std::dynamic_pointer_cast<orvmysql::ITransitionsDP>(handler->GetDataSource(5));
  MYSQL* db = orvbench::DirectConnect();
  // The bare INSERTs use keys far above the key generator's.
  static long long direct_key = 1'000'000'000;
  const orvmysql::FieldArray fields = {1, 1, 2, 1, "", 1, "bench"};
  const long long statements_before = orvbench::StatementCount(*handler->Connection());
  Clock::duration add{}, insert{};
  for (auto _ : state) {
    const auto t0 = Clock::now();
    if (transitions->Add(fields) < 1) state.SkipWithError("Add inserted no row");
    const auto t1 = Clock::now();
    const std::string sql =
        "INSERT INTO tblTransitions (TransitionID,FKFromNodeID,FromNodeType,FKToNodeID,"
        "ToNodeType,TransitionCondition,FKProcDefinitionID,TransitionProcDefID) VALUES (" +
        std::to_string(direct_key++) + ",1,1,2,1,NULL,1,'bench')";
    if (mysql_real_query(db, sql.data(), sql.size()) != 0) state.SkipWithError(mysql_error(db));
    const auto t2 = Clock::now();
    add += t1 - t0;
    insert += t2 - t1;
    state.SetIterationTime(std::chrono::duration<double>(t1 - t0).count());
  }
  // The two readings of the counter and the INSERTs are not key statements.
  const long long key_statements =
      orvbench::StatementCount(*handler->Connection()) - statements_before - 1 - state.iterations();
  mysql_close(db);
  handler->EndSession();
  unsetenv("ORVMYSQL_KEY_BLOCK");
  const double n = static_cast<double>(state.iterations());
  state.counters["insert_us"] = std::chrono::duration<double, std::micro>(insert).count() / n;
  state.counters["add_per_insert"] =
      std::chrono::duration<double>(add).count() / std::chrono::duration<double>(insert).count();
  state.counters["key_statements_per_100_keys"] = 100.0 * static_cast<double>(key_statements) / n;
}
BENCHMARK_CAPTURE(BM_KeyedAdd, single_keys, nullptr)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_KeyedAdd, blocks_of_100, "100")
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
