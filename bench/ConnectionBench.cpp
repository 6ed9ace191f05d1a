// The library's own cost per statement against Connector/C called directly,
// inside a session (one connection) and outside (a connection per statement),
// and key allocation.

#include <benchmark/benchmark.h>
#include <mysql.h>

#include <stdexcept>

#include "access/Connection.h"
#include "bench/BenchSupport.h"
#include "orvmysql/Keys.h"

namespace {

// A small read like the providers' by-key selects: 20 rows, 5 columns.
const std::string kSelect =
    "SELECT EntityTypeCode, LastAllocatedKey, Seed, Increment, `Offset` FROM tblKeyGen";

// The direct call does what a caller of the client library must do to get
// the same rows: run, store, read every value.
void DirectSelect(MYSQL* db) {
  if (mysql_real_query(db, kSelect.data(), kSelect.size()) != 0)
    throw std::runtime_error(mysql_error(db));
  MYSQL_RES* result = mysql_store_result(db);
  const unsigned columns = mysql_num_fields(result);
  while (MYSQL_ROW row = mysql_fetch_row(result)) {
    for (unsigned i = 0; i < columns; ++i) benchmark::DoNotOptimize(row[i]);
  }
  mysql_free_result(result);
}

void LibrarySelect(orvmysql::IConnection& connection) {
  auto rows = connection.Execute(kSelect);
  while (rows->GetNext()) benchmark::DoNotOptimize(rows->CurrentItem()->GetValue("Seed"));
}

std::shared_ptr<orvmysql::IConnection> LibraryConnection() {
  return orvmysql::NewConnection(orvbench::Server().Connector(orvbench::Database()));
}

void BM_Select_Direct_Session(benchmark::State& state) {
  MYSQL* db = orvbench::DirectConnect();
  for (auto _ : state) DirectSelect(db);
  mysql_close(db);
}
BENCHMARK(BM_Select_Direct_Session);

void BM_Select_Library_Session(benchmark::State& state) {
  auto connection = LibraryConnection();
  connection->StartSession();
  for (auto _ : state) LibrarySelect(*connection);
  connection->EndSession();
}
BENCHMARK(BM_Select_Library_Session);

const std::string kUpdate = "UPDATE tblKeyGen SET Seed = Seed WHERE EntityTypeCode = -4";

void BM_Update_Direct_Session(benchmark::State& state) {
  MYSQL* db = orvbench::DirectConnect();
  for (auto _ : state) {
    if (mysql_real_query(db, kUpdate.data(), kUpdate.size()) != 0)
      state.SkipWithError(mysql_error(db));
    benchmark::DoNotOptimize(mysql_affected_rows(db));
  }
  mysql_close(db);
}
BENCHMARK(BM_Update_Direct_Session);

void BM_Update_Library_Session(benchmark::State& state) {
  auto connection = LibraryConnection();
  connection->StartSession();
  for (auto _ : state) benchmark::DoNotOptimize(connection->ExecuteNonQuery(kUpdate));
  connection->EndSession();
}
BENCHMARK(BM_Update_Library_Session);

void BM_Select_Direct_NoSession(benchmark::State& state) {
  for (auto _ : state) {
    MYSQL* db = orvbench::DirectConnect();
    DirectSelect(db);
    mysql_close(db);
  }
}
BENCHMARK(BM_Select_Direct_NoSession);

void BM_Select_Library_NoSession(benchmark::State& state) {
  auto connection = LibraryConnection();
  for (auto _ : state) LibrarySelect(*connection);
}
BENCHMARK(BM_Select_Library_NoSession);

void BM_GetNextID_Session(benchmark::State& state) {
  auto connection = LibraryConnection();
  connection->StartSession();
  for (auto _ : state) benchmark::DoNotOptimize(orvmysql::GetNextID(*connection, -25));
  connection->EndSession();
}
BENCHMARK(BM_GetNextID_Session);

}  // namespace
