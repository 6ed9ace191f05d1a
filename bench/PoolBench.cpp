// Pooled connections: a statement outside a session against the same
// statement inside one, with the pool on and off, taking turns (medians); and
// what the checks a pooled connection could get before reuse cost.

#include <benchmark/benchmark.h>
#include <mysql.h>
#include <poll.h>

#include <cstdlib>
#include <functional>
#include <stdexcept>

#include "access/Connection.h"
#include "bench/BenchSupport.h"

namespace {

// A by-key read, a read of 20 rows, a write that matches one row, and a read
// that assigns a user variable (so the pooled connection is reset after it).
const std::string kByKey = "SELECT LastAllocatedKey FROM tblKeyGen WHERE EntityTypeCode = -4";
const std::string kRows =
    "SELECT EntityTypeCode, LastAllocatedKey, Seed, Increment, `Offset` FROM tblKeyGen";
const std::string kUpdate = "UPDATE tblKeyGen SET Seed = Seed WHERE EntityTypeCode = -4";
const std::string kVariable =
    "SELECT @last := LastAllocatedKey FROM tblKeyGen WHERE "
    "EntityTypeCode = -4";

std::function<void()> Statement(orvmysql::IConnection& connection, const std::string& sql) {
  if (&sql == &kRows) {
    return [&connection, &sql] {
      auto rows = connection.Execute(sql);
      while (rows->GetNext()) benchmark::DoNotOptimize(rows->CurrentItem()->GetValue("Seed"));
    };
  }
  if (&sql == &kUpdate) {
    return [&connection, &sql] { benchmark::DoNotOptimize(connection.ExecuteNonQuery(sql)); };
  }
  return [&connection, &sql] { benchmark::DoNotOptimize(connection.ExecuteScalar(sql, "")); };
}

// pool: "on" or "off", as ORVMYSQL_POOL; read by a connection once, at its
// first statement.
void BM_OutsideSession(benchmark::State& state, const char* pool, const std::string* sql) {
  setenv("ORVMYSQL_POOL", pool, 1);
  const auto connector = orvbench::Server().Connector(orvbench::Database());
  auto inside = orvmysql::NewConnection(connector);
  auto outside = orvmysql::NewConnection(connector);
  inside->StartSession();
  outside->ExecuteScalar("SELECT 1", "");
  unsetenv("ORVMYSQL_POOL");
  orvbench::TakeTurns(state, "outside", Statement(*outside, *sql), "inside",
                      Statement(*inside, *sql));
  inside->EndSession();
}
BENCHMARK_CAPTURE(BM_OutsideSession, by_key_pool_on, "on", &kByKey)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_OutsideSession, by_key_pool_off, "off", &kByKey)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_OutsideSession, rows_pool_on, "on", &kRows)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_OutsideSession, rows_pool_off, "off", &kRows)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_OutsideSession, update_pool_on, "on", &kUpdate)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_OutsideSession, update_pool_off, "off", &kUpdate)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_OutsideSession, user_variable_pool_on, "on", &kVariable)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

// Checks of an idle connection before it is used again: asking the server
// (ping), resetting the session, or looking at the socket (what the pool
// does).
void BM_IdleCheck(benchmark::State& state, int check) {
  MYSQL* db = orvbench::DirectConnect();
  for (auto _ : state) {
    int failed = 0;
    if (check == 0) {
      failed = mysql_ping(db);
    } else if (check == 1) {
      failed = mysql_reset_connection(db);
    } else {
      pollfd watch{mysql_get_socket(db), POLLIN | POLLRDHUP, 0};
      failed = poll(&watch, 1, 0);
    }
    if (failed != 0) state.SkipWithError("check failed");
  }
  mysql_close(db);
}
BENCHMARK_CAPTURE(BM_IdleCheck, ping, 0)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_IdleCheck, reset, 1)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_IdleCheck, socket, 2)->Unit(benchmark::kMicrosecond);

}  // namespace
