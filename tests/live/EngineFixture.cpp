#include "live/EngineFixture.h"

namespace orvtest {

using orvmysql::Date;
using orvmysql::FieldArray;

namespace {

constexpr int32_t kOpen = 0x4000000;
constexpr int32_t kStarted = 0x4000004;
constexpr int32_t kCompleted = 0x8000001;

}  // namespace

void EngineTest::SetUp() {
  RuntimeTest::SetUp();
  engine_ = Provider<orvmysql::IOrvEngineDP>(handler_, orvmysql::kDsEngine);
}

EngineTest::Tree EngineTest::AddTree() {
  Tree tree;
  const auto process = [&](int32_t parent, int32_t state) {
    FieldArray fields = ProcessFields(Unique("tree"), definition_, parent);
    fields[5] = state;
    if (state == kCompleted) fields[14] = Date::FromParts(2024, 5, 1, 8, 0, 0);
    return AddProcess(fields);
  };
  tree.root = process(0, kStarted);
  tree.open_sub = process(tree.root, kOpen);
  tree.closed_sub = process(tree.root, kCompleted);
  for (int32_t p : {tree.root, tree.open_sub, tree.closed_sub}) {
    for (int32_t state : {kOpen, kStarted, kCompleted}) {
      FieldArray fields = ActivityInstanceFields(p, activity_, "task " + std::to_string(state));
      fields[0] = state;
      if (state == kCompleted) fields[22] = Date::FromParts(2024, 5, 1, 8, 0, 0);
      const int32_t task = AddActivityInstance(fields);
      tree.tasks.push_back(task);
      const auto item = [&](const std::string& resource, int32_t item_state) {
        FieldArray w = WorkitemFields(p, task, resource);
        w[0] = item_state;
        if (item_state == kCompleted) w[2] = Date::FromParts(2024, 5, 1, 8, 0, 0);
        AddWorkitem(w);
      };
      item("ann", state);
      if (state == kOpen) item("bob", kCompleted);
    }
  }
  tree.ids = std::to_string(tree.root) + "," + std::to_string(tree.open_sub) + "," +
             std::to_string(tree.closed_sub);
  return tree;
}

std::map<std::string, int32_t> EngineTest::States(const std::string& process_ids) {
  auto rows = Db().NewConnection()->Execute(
      "SELECT CONCAT('p', ProcInstanceID) AS k, State FROM tblProcessInstance WHERE "
      "ProcInstanceID IN (" +
      process_ids +
      ") UNION ALL SELECT CONCAT('a', ActivityInstanceID), State FROM tblActivityInstance WHERE "
      "FKProcInstanceID IN (" +
      process_ids +
      ") UNION ALL SELECT CONCAT('w', WorkitemID), State FROM tblWorkitems WHERE "
      "FKProcInstanceID IN (" +
      process_ids + ")");
  std::map<std::string, int32_t> states;
  while (rows->GetNext()) {
    states[rows->CurrentItem()->GetValue("k").ToText()] =
        rows->CurrentItem()->GetValue("State").ToLong();
  }
  return states;
}

long long EngineTest::LogRows(const std::string& process_ids) {
  const std::string in = "IN (" + process_ids + ")";
  const std::string tasks =
      "FKActivityInstanceID IN (SELECT ActivityInstanceID FROM "
      "tblActivityInstance WHERE FKProcInstanceID " +
      in + ")";
  long long n =
      Db().Count("tblAIPropertyData", tasks) + Db().Count("tblActivityInstanceData", tasks);
  for (const char* table :
       {"tblWorkitems", "tblActivityInstance", "tblProcPathInstance", "tblProcSplitInstance",
        "tblPIReleventData", "tblProcInstanceData", "tblProcThreadInstance"}) {
    n += Db().Count(table, "FKProcInstanceID " + in);
  }
  return n + Db().Count("tblProcessInstance", "ProcInstanceID " + in);
}

void EngineTest::AddLogData(int32_t process_id) {
  const std::string p = std::to_string(process_id);
  // Keys of their own, far above those the providers hand out.
  static int32_t key = 900000;
  const std::string k = std::to_string(++key);
  const std::string tasks = " FROM tblActivityInstance WHERE FKProcInstanceID = " + p;
  Db().Exec(
      "INSERT INTO tblAIPropertyData (AIPropertyID, FKActivityInstanceID, PropertyName) "
      "SELECT " +
      k + " * 10 + ActivityInstanceID % 10, ActivityInstanceID, 'prop'" + tasks);
  Db().Exec(
      "INSERT INTO tblActivityInstanceData (AIParameterID, FKActivityInstanceID, "
      "ParameterName, TaskIndex) SELECT " +
      k + " * 10 + ActivityInstanceID % 10, ActivityInstanceID, 'param', 0" + tasks);
  Db().Exec("INSERT INTO tblProcSplitInstance (SplitInstanceID, FKProcInstanceID, State) VALUES (" +
            k + ", " + p + ", 67108864)");
  Db().Exec(
      "INSERT INTO tblProcPathInstance (PathID, FKSplitInstanceID, FKProcInstanceID, State) "
      "VALUES (" +
      k + ", " + k + ", " + p + ", 67108864)");
  Db().Exec(
      "INSERT INTO tblPIReleventData (PIReleventDataID, FKProcInstanceID, ParameterName) "
      "VALUES (" +
      k + ", " + p + ", 'case')");
  Db().Exec(
      "INSERT INTO tblProcInstanceData (ProcInstanceDataID, FKProcInstanceID, "
      "ParameterName) VALUES (" +
      k + ", " + p + ", 'value')");
  Db().Exec("INSERT INTO tblProcThreadInstance (ThreadID, FKProcInstanceID, State) VALUES ('t" + k +
            "', " + p + ", 67108864)");
}

}  // namespace orvtest
