// The engine's tree operations (pause, resume, terminate, clear the log) on a
// tree of 10 process instances with 10 activity instances each and 3 work
// items per activity instance, amid 10,000 and then 1,000,000 rows in each
// instance table (process instances, activity instances, work items and the
// two activity-instance data tables), in a database of the benchmark's own.
// The surroundings are filled once per benchmark process, set-based, and
// grown from the small size to the large one; the fill time is reported.
// Counters: the server's statement count and the median ms per operation, and
// at 1M the ratio of that median to the one at 10k (close to 1 when the cost
// follows the rows touched, not the table sizes).
//
// Beside them, the two measurements behind ClearLog's departures: the
// activity-instance data DELETE written with a sub-select against the join
// form, with a writer of an unrelated row waiting meanwhile; and a blank
// ClearLog of 70,000 closed instances in batches against one statement.

#include <benchmark/benchmark.h>
#include <mysql.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/BenchSupport.h"
#include "orvmysql/Engine.h"
#include "runtime/COrvEngineDP.h"

namespace {

using Clock = std::chrono::steady_clock;

double MsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

// The benchmark's database and its surroundings, grown on demand.
class Surroundings {
 public:
  static Surroundings& Get() {
    static Surroundings instance;
    return instance;
  }

  const std::string& Database() const { return database_.Name(); }

  // Fills the five instance tables up to rows each; returns the seconds the
  // growth took (0 when they already held that many).
  double GrowTo(int64_t rows) {
    if (rows <= rows_) return 0;
    const auto start = Clock::now();
    MYSQL* db = orvbench::DirectConnect(Database());
    // In chunks, so that no transaction grows with the size.
    constexpr int64_t kChunk = 250'000;
    for (int64_t from = rows_ + 1; from <= rows; from += kChunk) {
      const std::string seq = "seq_" + std::to_string(from) + "_to_" +
                              std::to_string(std::min(rows, from + kChunk - 1));
      // A fifth of the history is still open; the rest is completed.
      const std::string state = "IF(seq % 5 = 0, 67108864, 134217729)";
      for (const std::string& sql : {
               "INSERT INTO tblProcessInstance (ProcInstanceID, ProcInstanceName, FKProcDefID, "
               "State, `Guid`, FKParentProcInstanceID, TreeID) SELECT 10000000 + seq, 'history', "
               "1, " +
                   state +
                   ", CONCAT('g', seq), IF(seq % 10 = 1, 0, 10000000 + seq - (seq - 1) "
                   "% 10), CONCAT('h', (seq - 1) DIV 10) FROM " +
                   seq,
               "INSERT INTO tblActivityInstance (ActivityInstanceID, State, DisplayName, "
               "FKActivityID, FKProcInstanceID) SELECT 10000000 + seq, " +
                   state + ", 'task', 1, 10000000 + seq FROM " + seq,
               "INSERT INTO tblWorkitems (WorkitemID, ResourceID, State, FKActivityInstanceID, "
               "FKProcInstanceID, TaskIndex) SELECT 10000000 + seq, CONCAT('user', seq % 1000), " +
                   state + ", 10000000 + seq, 10000000 + seq, 0 FROM " + seq,
               "INSERT INTO tblAIPropertyData (AIPropertyID, FKActivityInstanceID, PropertyName) "
               "SELECT 10000000 + seq, 10000000 + seq, 'property' FROM " +
                   seq,
               "INSERT INTO tblActivityInstanceData (AIParameterID, FKActivityInstanceID, "
               "ParameterName, TaskIndex) SELECT 10000000 + seq, 10000000 + seq, 'parameter', 0 "
               "FROM " +
                   seq,
           }) {
        orvbench::DirectExecute(db, sql);
      }
    }
    for (const char* table : {"tblProcessInstance", "tblActivityInstance", "tblWorkitems",
                              "tblAIPropertyData", "tblActivityInstanceData"}) {
      orvbench::DirectExecute(db, std::string("ANALYZE TABLE ") + table);
      mysql_free_result(mysql_store_result(db));
    }
    mysql_close(db);
    rows_ = rows;
    const double seconds = MsSince(start) / 1000;
    std::cerr << "[engine bench] instance tables grown to " << rows << " rows each in " << seconds
              << " s\n";
    return seconds;
  }

  // A new tree: 10 process instances (a root and 9 sub-processes), 10
  // activity instances each, 3 work items per activity instance, and one
  // property and one parameter row per activity instance, all open. Returns
  // the process ids joined by ",".
  std::string NewTree(MYSQL* db) {
    const int64_t t = ++trees_;
    const std::string p = std::to_string(100'000'000 + t * 10),
                      a = std::to_string(200'000'000 + t * 100),
                      w = std::to_string(300'000'000 + t * 300),
                      tree = "'bench-" + std::to_string(t) + "'";
    for (const std::string& sql : {
             "INSERT INTO tblProcessInstance (ProcInstanceID, ProcInstanceName, FKProcDefID, "
             "State, FKParentProcInstanceID, TreeID) SELECT " +
                 p +
                 " + seq - 1, 'tree', 1, "
                 "67108868, IF(seq = 1, 0, " +
                 p + "), " + tree + " FROM seq_1_to_10",
             "INSERT INTO tblActivityInstance (ActivityInstanceID, State, DisplayName, "
             "FKActivityID, FKProcInstanceID) SELECT " +
                 a + " + seq - 1, 67108864, 'task', 1, " + p +
                 " + (seq - 1) DIV 10 FROM seq_1_to_100",
             "INSERT INTO tblWorkitems (WorkitemID, ResourceID, State, FKActivityInstanceID, "
             "FKProcInstanceID, TaskIndex) SELECT " +
                 w + " + seq - 1, 'ann', 67108864, " + a + " + (seq - 1) DIV 3, " + p +
                 " + (seq - 1) DIV 30, 0 FROM seq_1_to_300",
             "INSERT INTO tblAIPropertyData (AIPropertyID, FKActivityInstanceID, PropertyName) "
             "SELECT " +
                 a + " + seq - 1, " + a + " + seq - 1, 'property' FROM seq_1_to_100",
             "INSERT INTO tblActivityInstanceData (AIParameterID, FKActivityInstanceID, "
             "ParameterName, TaskIndex) SELECT " +
                 a + " + seq - 1, " + a + " + seq - 1, 'parameter', 0 FROM seq_1_to_100",
         }) {
      orvbench::DirectExecute(db, sql);
    }
    std::string ids;
    for (int i = 0; i < 10; ++i) ids += (i ? "," : "") + std::to_string(100'000'000 + t * 10 + i);
    return ids;
  }

 private:
  orvbench::OwnDatabase database_{"engine"};
  int64_t rows_ = 0;
  int64_t trees_ = 0;
};

enum class Op { Pause, Resume, Terminate, ClearLog };

// The median ms per operation at 10k, for the ratio at 1M.
std::map<Op, double>& SmallMedians() {
  static std::map<Op, double> medians;
  return medians;
}

void BM_Engine_Tree(benchmark::State& state, Op op, int64_t rows) {
  Surroundings& s = Surroundings::Get();
  state.counters["fill_s"] = s.GrowTo(rows);
  orvbench::CountedSession session(orvbench::NewHandler(s.Database()));
  auto engine = orvbench::Source<orvmysql::IOrvEngineDP>(session.Handler(), orvmysql::kDsEngine);
  MYSQL* db = orvbench::DirectConnect(s.Database());
  std::string ids = s.NewTree(db);
  const auto root = [&] { return std::stoi(ids.substr(0, ids.find(','))); };
  std::vector<double> ms;
  long long statements = 0;
  for (auto _ : state) {
    // Bring the tree to where the operation starts, untimed.
    if (op == Op::Pause) engine->ResumeProcess(root());
    if (op == Op::Resume) engine->PauseProcess(root());
    if (op == Op::Terminate || op == Op::ClearLog) ids = s.NewTree(db);
    if (op == Op::ClearLog) engine->TerminateProcess(root(), false);
    const long long before = session.Statements();
    const auto start = Clock::now();
    bool done = false;
    switch (op) {
      case Op::Pause:
        done = engine->PauseProcess(root());
        break;
      case Op::Resume:
        done = engine->ResumeProcess(root());
        break;
      case Op::Terminate:
        done = engine->TerminateProcess(root(), false);
        break;
      case Op::ClearLog:
        done = engine->ClearLog(ids);
        break;
    }
    ms.push_back(MsSince(start));
    state.SetIterationTime(ms.back() / 1000);
    statements += session.Statements() - before;
    if (!done) state.SkipWithError("the operation changed nothing");
  }
  mysql_close(db);
  orvbench::SetStatements(state, statements);
  const double median = Median(ms);
  state.counters["median_ms"] = median;
  if (rows <= 10'000) SmallMedians()[op] = median;
  if (rows > 10'000 && SmallMedians().count(op) != 0) {
    state.counters["ratio_to_10k"] = median / SmallMedians()[op];
  }
}

#define ENGINE_TREE(name, op, rows)                 \
  BENCHMARK_CAPTURE(BM_Engine_Tree, name, op, rows) \
      ->UseManualTime()                             \
      ->Unit(benchmark::kMillisecond)               \
      ->MinTime(1.0)

ENGINE_TREE(pause_10k, Op::Pause, 10'000);
ENGINE_TREE(resume_10k, Op::Resume, 10'000);
ENGINE_TREE(terminate_10k, Op::Terminate, 10'000);
ENGINE_TREE(clear_log_10k, Op::ClearLog, 10'000);
ENGINE_TREE(pause_1M, Op::Pause, 1'000'000);
ENGINE_TREE(resume_1M, Op::Resume, 1'000'000);
ENGINE_TREE(terminate_1M, Op::Terminate, 1'000'000);
ENGINE_TREE(clear_log_1M, Op::ClearLog, 1'000'000);

// The DELETE of a tree's activity-instance properties amid 1M rows, written
// with a sub-select over the activity instances or as a join, while another
// client updates a row of an unrelated instance 20 ms after it starts: ms
// per DELETE and how long that writer waited.
void BM_Engine_TaskDataDelete(benchmark::State& state, bool join) {
  Surroundings& s = Surroundings::Get();
  s.GrowTo(1'000'000);
  MYSQL* db = orvbench::DirectConnect(s.Database());
  MYSQL* writer = orvbench::DirectConnect(s.Database());
  std::vector<double> ms, waits;
  for (auto _ : state) {
    const std::string ids = s.NewTree(db);
    const std::string sql =
        join ? " DELETE tblAIPropertyData FROM tblAIPropertyData INNER JOIN tblActivityInstance ON "
               "tblAIPropertyData.FKActivityInstanceID = tblActivityInstance.ActivityInstanceID "
               "WHERE tblActivityInstance.FKProcInstanceID IN (" +
                   ids + ")"
             : " DELETE FROM tblAIPropertyData WHERE FKActivityInstanceID IN (SELECT "
               "tblActivityInstance.ActivityInstanceID FROM tblActivityInstance WHERE "
               "FKProcInstanceID IN (" +
                   ids + "))";
    const auto start = Clock::now();
    std::thread other([&] {
      std::this_thread::sleep_until(start + std::chrono::milliseconds(20));
      const auto asked = Clock::now();
      orvbench::DirectExecute(writer,
                              "UPDATE tblAIPropertyData SET PropertyName = 'changed' WHERE "
                              "AIPropertyID = 10000005");
      waits.push_back(MsSince(asked));
    });
    orvbench::DirectExecute(db, sql);
    ms.push_back(MsSince(start));
    other.join();
    state.SetIterationTime(ms.back() / 1000);
    if (mysql_affected_rows(db) != 100) state.SkipWithError("not the tree's 100 rows");
  }
  mysql_close(writer);
  mysql_close(db);
  state.counters["median_ms"] = Median(ms);
  state.counters["writer_wait_ms"] = Median(waits);
}
BENCHMARK_CAPTURE(BM_Engine_TaskDataDelete, subselect, false)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_CAPTURE(BM_Engine_TaskDataDelete, join, true)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

// A blank ClearLog of 70,000 closed instances (each with an activity
// instance and a work item) in batches of the given size; 70,000 is the
// whole list in one statement per table.
void BM_Engine_ClearLogBlank(benchmark::State& state) {
  static orvbench::OwnDatabase database("engine_blank");
  constexpr int kInstances = 70'000;
  const auto batch = static_cast<std::size_t>(state.range(0));
  orvbench::CountedSession session(orvbench::NewHandler(database.Name()));
  auto engine = orvbench::Source<orvmysql::IOrvEngineDP>(session.Handler(), orvmysql::kDsEngine);
  MYSQL* db = orvbench::DirectConnect(database.Name());
  const std::string seq = " FROM seq_1_to_" + std::to_string(kInstances);
  std::vector<double> ms;
  long long statements = 0;
  orvmysql::SetClearLogBatchSizeForTesting(batch);
  for (auto _ : state) {
    for (const std::string& sql : {
             "INSERT INTO tblProcessInstance (ProcInstanceID, State, TreeID) SELECT 1000000 + seq, "
             "134217730, CONCAT('c', seq)" +
                 seq,
             "INSERT INTO tblActivityInstance (ActivityInstanceID, State, FKProcInstanceID) SELECT "
             "1000000 + seq, 134217730, 1000000 + seq" +
                 seq,
             "INSERT INTO tblWorkitems (WorkitemID, State, FKActivityInstanceID, "
             "FKProcInstanceID) SELECT 1000000 + seq, 134217730, 1000000 + seq, 1000000 + seq" +
                 seq,
         }) {
      orvbench::DirectExecute(db, sql);
    }
    const long long before = session.Statements();
    const auto start = Clock::now();
    engine->ClearLog("");
    ms.push_back(MsSince(start));
    state.SetIterationTime(ms.back() / 1000);
    statements += session.Statements() - before;
  }
  orvmysql::SetClearLogBatchSizeForTesting(0);
  mysql_close(db);
  orvbench::SetStatements(state, statements);
  state.counters["median_ms"] = Median(ms);
  state.counters["us_per_instance"] = Median(ms) * 1000 / kInstances;
}
BENCHMARK(BM_Engine_ClearLogBlank)
    ->Arg(orvmysql::kClearLogBatchSize)
    ->Arg(10'000)
    ->Arg(70'000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

// What one blank-mode statement would be without batches: the first
// deletion of the cascade for 2.1 million closed instances of 8-digit ids,
// sent as one statement. Reports its size, the server's max_allowed_packet
// and the error the server answers with (0 when it is accepted).
void BM_Engine_ClearLogUnbatchedStatement(benchmark::State& state) {
  constexpr int kInstances = 2'100'000;
  std::string sql = " DELETE FROM tblWorkitems WHERE FKProcInstanceID IN (";
  for (int i = 0; i < kInstances; ++i) {
    if (i != 0) sql += ',';
    sql += std::to_string(10'000'000 + i);
  }
  sql += ")";
  MYSQL* probe = orvbench::DirectConnect(Surroundings::Get().Database());
  orvbench::DirectExecute(probe, "SELECT @@max_allowed_packet");
  MYSQL_RES* result = mysql_store_result(probe);
  const double packet_mb = std::stod(mysql_fetch_row(result)[0]) / 1e6;
  mysql_free_result(result);
  mysql_close(probe);
  unsigned error = 0;
  for (auto _ : state) {
    MYSQL* db = orvbench::DirectConnect(Surroundings::Get().Database());
    const auto start = Clock::now();
    error = mysql_real_query(db, sql.data(), sql.size()) == 0 ? 0 : mysql_errno(db);
    state.SetIterationTime(MsSince(start) / 1000);
    mysql_close(db);
  }
  state.counters["statement_mb"] = static_cast<double>(sql.size()) / 1e6;
  state.counters["max_packet_mb"] = packet_mb;
  state.counters["server_error"] = error;
}
BENCHMARK(BM_Engine_ClearLogUnbatchedStatement)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

}  // namespace
