// The runtime providers at work, inside one session: one process step (an
// activity instance entered, two work items offered, three state changes,
// one read of a work list through a filter document), and a process-instance
// Add taking turns with the bare INSERT of the same row through Connector/C,
// and with the same three statements (key read, key update, INSERT) sent
// directly. The "statements" counter is the server's own count per iteration.

#include <benchmark/benchmark.h>
#include <mysql.h>

#include <memory>
#include <string>

#include "bench/BenchSupport.h"
#include "orvmysql/Query.h"
#include "orvmysql/Runtime.h"

namespace {

using orvbench::Counted;
using orvbench::SetStatements;
using orvbench::Source;

using orvmysql::FieldArray;
using orvmysql::Variant;

constexpr int32_t kOpen = 0x4000000;
constexpr int32_t kStarted = 0x4000004;

FieldArray ProcessFields(const std::string& guid) {
  return {"PO 1042",
          1,
          Variant(),
          "u-ann",
          Variant(),
          kOpen,
          2,
          Variant(),
          guid,
          0,
          "user",
          "Ann",
          orvmysql::Date::Now(),
          Variant(),
          Variant(),
          "bench"};
}

// The open work items of a resource, most urgent first.
std::string WorkList(const std::string& resource) {
  orvmysql::CQuery query;
  auto all = std::make_shared<orvmysql::CConditionExpression>(orvmysql::dloAnd);
  all->Conditions()->Add(
      std::make_shared<orvmysql::CCondition>("ResourceID", orvmysql::dcoEqualto, resource));
  all->Conditions()->Add(
      std::make_shared<orvmysql::CCondition>("State", orvmysql::dcoContains, kOpen));
  query.SetCriteria(all);
  query.OrderBy()->Add(
      std::make_shared<orvmysql::COrderExpression>("Priority", orvmysql::dsDescending));
  return query.ToXML();
}

// The runtime providers on a handler held in one session.
class Session : public orvbench::CountedSession {
 public:
  Session()
      : processes_(Source<orvmysql::IProcInstanceDP>(Handler(), orvmysql::kDsProcInstance)),
        tasks_(Source<orvmysql::IActivityInstanceDP>(Handler(), orvmysql::kDsActivityInstance)),
        items_(Source<orvmysql::IWorkitemsDP>(Handler(), orvmysql::kDsWorkitems)) {}

  // The key the next Add of the entity type will get.
  int32_t NextKey(int32_t entity_type_code) {
    return std::stoi(Handler().Connection()->ExecuteScalar(
               "SELECT LastAllocatedKey FROM tblKeyGen WHERE EntityTypeCode = " +
                   std::to_string(entity_type_code),
               "0")) +
           1;
  }

  std::shared_ptr<orvmysql::IProcInstanceDP> processes_;
  std::shared_ptr<orvmysql::IActivityInstanceDP> tasks_;
  std::shared_ptr<orvmysql::IWorkitemsDP> items_;
};

void BM_Runtime_ProcessStep(benchmark::State& state) {
  Session s;
  s.processes_->Add(ProcessFields("bench step"));
  const int32_t process = s.NextKey(-11) - 1;
  const std::string work_list = WorkList("ann");
  long long statements = 0;
  for (auto _ : state) {
    state.PauseTiming();
    // The engine knows the keys it is given; here they are read beforehand.
    const int32_t task = s.NextKey(-14);
    const int32_t item = s.NextKey(-10);
    state.ResumeTiming();
    Counted(state, s, statements, [&] {
      s.tasks_->Add(
          {kOpen,     Variant(), Variant(), "Approve", 1,         process,   1,
           1,         "",        "",        "",        0,         "",        "0",
           "",        0,         0,         "main",    "approve", Variant(), orvmysql::Date::Now(),
           Variant(), Variant(), 2,         ""});
      for (const char* resource : {"ann", "bob"}) {
        s.items_->Add({kOpen, orvmysql::Date::Now(), Variant(), Variant(), resource, "user",
                       resource, "Approve PO 1042", "", task, process, 0, Variant(), 1, Variant(),
                       Variant(), Variant(), 3, 0});
      }
      s.tasks_->ChangeAIState(task, kOpen, kStarted, false, "started");
      s.items_->ChangeWorkitemState(item, kOpen, kStarted, false);
      s.items_->ChangeWorkitemState(item + 1, kOpen, 0x20000000, true);
      auto rows = s.items_->Load(work_list);
      while (rows->GetNext()) benchmark::DoNotOptimize(rows->CurrentItem()->GetValue("Subject"));
    });
    state.PauseTiming();
    // Keep the work list at one item so that every iteration reads the same.
    s.items_->Delete(item);
    s.items_->Delete(item + 1);
    s.tasks_->Delete(task);
    state.ResumeTiming();
  }
  SetStatements(state, statements);
}
BENCHMARK(BM_Runtime_ProcessStep)->Unit(benchmark::kMicrosecond);

// The INSERT the library sends for a root instance, with a given key.
std::string Insert(int64_t key, const std::string& guid) {
  return "INSERT INTO tblProcessInstance  (ProcInstanceID,`ProcInstanceName`,`FKProcDefID`,"
         "`ScheduledStartTime`,`CreatorID`,`CreatorType`,`CreatorName`,`ScheduledEndTime`,`State`,"
         "`Priority`,`ScheduledTimeOut`,`Guid`,FKParentProcInstanceID,TreeID,CreatedOn,StartedOn,"
         "FinishedOn,`Note`) VALUES (" +
         std::to_string(key) + ",'PO 1042',1,NULL,'u-ann','user','Ann',NULL,67108864,2,NULL,'" +
         guid + "',0,'3F2504E04F8911D39A0C0305E82C3301', '2024-05-17 09:00:00' ,NULL,NULL,'bench')";
}

// A process-instance Add (a GUID, the key read and compare-and-set, the
// INSERT; three statements) taking turns with a baseline through Connector/C:
// the bare INSERT with its key known beforehand (the floor), or the same three
// statements sent directly. Counters: add_us and the baseline's median, their
// ratio, and the library's statements per Add.
void BM_Runtime_ProcInstanceAdd(benchmark::State& state, bool same_statements) {
  Session s;
  MYSQL* db = orvbench::DirectConnect();
  // Keys far above the key generator's; the function runs more than once.
  static int64_t direct_key = 1'000'000'000;
  int n = 0;
  auto add = [&] { s.processes_->Add(ProcessFields("library " + std::to_string(n++))); };
  auto insert = [&] {
    ++direct_key;
    orvbench::DirectExecute(db, Insert(direct_key, "direct " + std::to_string(direct_key)));
  };
  auto key_and_insert = [&] {
    orvbench::DirectExecute(db,
                            " SELECT LastAllocatedKey,Seed,Increment,`Offset` FROM tblKeyGen "
                            "WHERE EntityTypeCode = -25");
    MYSQL_RES* result = mysql_store_result(db);
    const int64_t last = std::stoll(mysql_fetch_row(result)[0]);
    mysql_free_result(result);
    orvbench::DirectExecute(
        db, " UPDATE tblKeyGen SET LastAllocatedKey = " + std::to_string(last + 1) +
                " WHERE EntityTypeCode = -25 AND LastAllocatedKey = " + std::to_string(last));
    ++direct_key;
    orvbench::DirectExecute(db, Insert(direct_key, "keyed " + std::to_string(direct_key)));
  };
  const long long before = s.Statements();
  if (same_statements) {
    orvbench::TakeTurns(state, "add", add, "direct", key_and_insert);
  } else {
    orvbench::TakeTurns(state, "add", add, "insert", insert);
  }
  SetStatements(state, s.Statements() - before);
  mysql_close(db);
}
BENCHMARK_CAPTURE(BM_Runtime_ProcInstanceAdd, beside_bare_insert, false)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_Runtime_ProcInstanceAdd, beside_same_statements, true)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
