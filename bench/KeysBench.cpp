// A keyed Add (the key, then the INSERT) against the bare INSERT through
// Connector/C, with single keys and with key blocks of 100. The two take turns
// in one loop so that both see the same load on the machine; the reported
// time is the Add's.
//   add_us, insert_us     the median times of the Add and of the bare INSERT
//   add_per_insert        the first over the second (medians resist the
//                         stalls of a machine shared with other work)
//   key_statements_per_100_keys  the server's count of statements, less the INSERTs

#include <benchmark/benchmark.h>
#include <mysql.h>

#include <cstdlib>
#include <string>

#include "bench/BenchSupport.h"
#include "orvmysql/Definitions.h"

namespace {

void BM_KeyedAdd(benchmark::State& state, const char* block) {
  if (block != nullptr)
    setenv("ORVMYSQL_KEY_BLOCK", block, 1);
  else
    unsetenv("ORVMYSQL_KEY_BLOCK");
  orvbench::CountedSession session;
  auto transitions = orvbench::Source<orvmysql::ITransitionsDP>(session.Handler(), 5);
  MYSQL* db = orvbench::DirectConnect();
  // The bare INSERTs use keys far above the key generator's.
  static long long direct_key = 1'000'000'000;
  const orvmysql::FieldArray fields = {1, 1, 2, 1, "", 1, "bench"};
  const long long statements_before = session.Statements();
  auto add = [&] {
    if (transitions->Add(fields) < 1) state.SkipWithError("Add inserted no row");
  };
  auto insert = [&] {
    const std::string sql =
        "INSERT INTO tblTransitions (TransitionID,FKFromNodeID,FromNodeType,FKToNodeID,"
        "ToNodeType,TransitionCondition,FKProcDefinitionID,TransitionProcDefID) VALUES (" +
        std::to_string(direct_key++) + ",1,1,2,1,NULL,1,'bench')";
    if (mysql_real_query(db, sql.data(), sql.size()) != 0) state.SkipWithError(mysql_error(db));
  };
  orvbench::TakeTurns(state, "add", add, "insert", insert);
  // The INSERTs are not key statements.
  const long long key_statements = session.Statements() - statements_before - state.iterations();
  mysql_close(db);
  unsetenv("ORVMYSQL_KEY_BLOCK");
  state.counters["key_statements_per_100_keys"] =
      100.0 * static_cast<double>(key_statements) / static_cast<double>(state.iterations());
}
BENCHMARK_CAPTURE(BM_KeyedAdd, single_keys, nullptr)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_KeyedAdd, blocks_of_100, "100")
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
