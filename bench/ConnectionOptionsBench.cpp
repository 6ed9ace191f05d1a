// What the connection's options cost: a statement inside a session with no
// observer, with a handler's and with the process's (each doing nothing), and
// a statement outside a session (a connect each time) with the machine's
// option files read and with none.

#include <benchmark/benchmark.h>

#include "bench/BenchSupport.h"
#include "orvmysql/Observer.h"
#include "tests/support/ScopedEnv.h"

namespace {

const std::string kSelect = "SELECT Seed FROM tblKeyGen WHERE EntityTypeCode = -10";

void SelectInSession(benchmark::State& state, orvmysql::CMYSqlDP& handler) {
  handler.StartSession();
  auto connection = handler.Connection();
  for (auto _ : state) benchmark::DoNotOptimize(connection->ExecuteScalar(kSelect, ""));
  handler.EndSession();
}

void BM_Observer_None(benchmark::State& state) {
  SelectInSession(state, *orvbench::NewHandler());
}
BENCHMARK(BM_Observer_None);

void BM_Observer_Handler(benchmark::State& state) {
  auto handler = orvbench::NewHandler();
  handler->SetStatementObserver(
      [](const orvmysql::StatementEvent& e) { benchmark::DoNotOptimize(e.duration); });
  SelectInSession(state, *handler);
}
BENCHMARK(BM_Observer_Handler);

void BM_Observer_Process(benchmark::State& state) {
  orvmysql::SetProcessStatementObserver(
      [](const orvmysql::StatementEvent& e) { benchmark::DoNotOptimize(e.duration); });
  SelectInSession(state, *orvbench::NewHandler());
  orvmysql::SetProcessStatementObserver({});
}
BENCHMARK(BM_Observer_Process);

void SelectOutsideSession(benchmark::State& state, const char* option_file) {
  orvtest::ScopedEnv file("ORVMYSQL_OPTION_FILE", option_file);
  auto connection = orvbench::NewHandler()->Connection();
  for (auto _ : state) benchmark::DoNotOptimize(connection->ExecuteScalar(kSelect, ""));
}

void BM_Connect_StandardOptionFiles(benchmark::State& state) {
  SelectOutsideSession(state, nullptr);
}
BENCHMARK(BM_Connect_StandardOptionFiles);

void BM_Connect_EmptyOptionFile(benchmark::State& state) {
  SelectOutsideSession(state, "/dev/null");
}
BENCHMARK(BM_Connect_EmptyOptionFile);

}  // namespace
