// Tables of well over 100,000 rows, filled set-based, and every statement the
// runtime providers send for a lookup by key, by process, by task and for a
// work list, checked with EXPLAIN: none may read a whole table or a whole
// index. The indexes come from the migration, applied to a database whose
// schema had them dropped, so that the migration is proved as well.

#include <algorithm>
#include <string>
#include <vector>

#include "live/RuntimeFixture.h"
#include "tools/SchemaInstaller.h"

namespace orvtest {
namespace {

using orvmysql::IConnection;
using orvmysql::IListIterator;

// Passes every call on and keeps the text of every statement.
class LoggingConnection : public IConnection {
 public:
  explicit LoggingConnection(std::shared_ptr<IConnection> inner) : inner_(std::move(inner)) {}
  std::vector<std::string> statements;

  std::string ConnectionString() const override { return inner_->ConnectionString(); }
  void StartSession() override { inner_->StartSession(); }
  void EndSession(const orvmysql::Variant& v) override { inner_->EndSession(v); }
  bool TestConnection() override { return inner_->TestConnection(); }
  std::shared_ptr<IListIterator> Execute(const std::string& sql) override {
    statements.push_back(sql);
    return inner_->Execute(sql);
  }
  int32_t ExecuteNonQuery(const std::string& sql) override {
    statements.push_back(sql);
    return inner_->ExecuteNonQuery(sql);
  }
  std::string ExecuteScalar(const std::string& sql, const std::string& default_value) override {
    statements.push_back(sql);
    return inner_->ExecuteScalar(sql, default_value);
  }

 private:
  std::shared_ptr<IConnection> inner_;
};

constexpr const char* kIndexes =
    "SELECT COUNT(*) FROM information_schema.STATISTICS WHERE TABLE_SCHEMA = DATABASE() AND "
    "INDEX_NAME IN ('ixWorkitemsResource', 'ixProcessInstanceGuid')";

class RuntimeIndexes : public RuntimeTest {
 protected:
  // Runs the statements of a migration the tools carry.
  static void ApplyMigration(const std::string& name) {
    const auto& migrations = orvmysql::devkit::SchemaSource::BuiltIn().migrations;
    const auto found = std::find_if(migrations.begin(), migrations.end(),
                                    [&](const auto& m) { return m.name == name; });
    ASSERT_NE(found, migrations.end()) << name;
    for (const std::string& statement : orvmysql::devkit::SplitStatements(found->sql)) {
      Db().Exec(statement);
    }
  }

  static void SetUpTestSuite() {
    RuntimeTest::SetUpTestSuite();
    // 100,000 process instances in trees of ten, 100,000 activity instances
    // and 100,000 work items for 1,000 resources, with keys above those that
    // the providers hand out.
    Db().Exec(
        "INSERT INTO tblActivities (ActivityID, ActivityName) SELECT 1000000 + seq, "
        "CONCAT('Activity ', seq) FROM seq_1_to_50");
    Db().Exec(
        "INSERT INTO tblProcessInstance (ProcInstanceID, ProcInstanceName, FKProcDefID, State, "
        "`Guid`, FKParentProcInstanceID, TreeID, CreatorName) SELECT 1000000 + seq, "
        "CONCAT('P', seq), seq % 50, 67108864, CONCAT('g', seq), "
        "IF(seq % 10 = 1, 0, 1000000 + seq - (seq - 1) % 10), CONCAT('t', (seq - 1) DIV 10), "
        "'Ann' FROM seq_1_to_100000");
    Db().Exec(
        "INSERT INTO tblActivityInstance (ActivityInstanceID, State, DisplayName, FKActivityID, "
        "FKProcInstanceID) SELECT 1000000 + seq, 67108864, CONCAT('A', seq), "
        "1000000 + seq % 50 + 1, 1000000 + seq FROM seq_1_to_100000");
    Db().Exec(
        "INSERT INTO tblWorkitems (WorkitemID, ResourceID, State, FKActivityInstanceID, "
        "FKProcInstanceID, Priority, TaskIndex) SELECT 1000000 + seq, "
        "CONCAT('user', seq % 1000), IF(seq % 3 = 0, 134217729, 67108864), 1000000 + seq, "
        "1000000 + seq, seq % 10, 0 FROM seq_1_to_100000");
    for (const char* table :
         {"tblActivities", "tblProcessInstance", "tblActivityInstance", "tblWorkitems"}) {
      Db().NewConnection()->Execute(std::string("ANALYZE TABLE ") + table);
    }
  }
};

TEST_F(RuntimeIndexes, MigrationAddsTheIndexesTheSchemaHas) {
  EXPECT_EQ(Db().Scalar(kIndexes), "2");
  Db().Exec("DROP INDEX ixWorkitemsResource ON tblWorkitems");
  Db().Exec("DROP INDEX ixProcessInstanceGuid ON tblProcessInstance");
  EXPECT_EQ(Db().Scalar(kIndexes), "0");
  ApplyMigration("0001-runtime-indexes");
  ApplyMigration("0001-runtime-indexes");  // a second run changes nothing
  EXPECT_EQ(Db().Scalar(kIndexes), "2");
}

TEST_F(RuntimeIndexes, NoLookupReadsAWholeTable) {
  ASSERT_GE(Db().Count("tblWorkitems"), 100000);
  auto log = std::make_shared<LoggingConnection>(Db().NewConnection());
  auto with_log = [&](int32_t code) {
    auto source = handler_->GetDataSource(code);
    source->Init(log);
    return source;
  };
  auto p =
      std::dynamic_pointer_cast<orvmysql::IProcInstanceDP>(with_log(orvmysql::kDsProcInstance));
  auto a = std::dynamic_pointer_cast<orvmysql::IActivityInstanceDP>(
      with_log(orvmysql::kDsActivityInstance));
  auto w = std::dynamic_pointer_cast<orvmysql::IWorkitemsDP>(with_log(orvmysql::kDsWorkitems));

  const int32_t process = 1050001, task = 1050001, item = 1050001;
  p->GetProcessByID(process);
  p->GetCurrentState(process);
  p->ChangeWIState(process, 0x4000000, 0x4000004, false);
  p->Update(process, ProcessFields("g50001", 7, 0));
  p->Load(Filter("", {Is("GUID", "g50001")}));
  p->Load(Filter("", {Is("TreeID", "t5000")}, "ProcInstanceID"));
  p->Load(Filter("", {Is("FKParentProcInstanceID", process)}));
  p->Add(ProcessFields("g-new", 7, process));  // reads the parent's tree
  p->Delete(process + 1);
  a->GetTaskByID(task);
  a->GetCurrentState(task);
  a->ChangeAIState(task, 0x4000000, 0x4000004, false, "");
  a->Update(task, ActivityInstanceFields(process, 1000007, "A"));
  a->Load(Filter("", {Is("FKProcInstanceID", process)}, "ActivityInstanceID"));
  a->Delete(task + 1);
  w->GetWorkItemByID(item);
  w->GetCurrentState(item);
  w->ChangeWorkitemState(item, 1, 0x4000004, false);
  w->Update(item, WorkitemFields(process, task, "user17"));
  w->GetWorkItemsForAProcess(process);
  w->GetWorkItemsForATask(task);
  const auto open_for_user17 = std::vector<std::shared_ptr<orvmysql::CCondition>>{
      Is("ResourceID", "user17"),
      std::make_shared<orvmysql::CCondition>("State", orvmysql::dcoContains, 67108864)};
  w->Load(Filter("tblWorkitems", open_for_user17, "Priority", orvmysql::dsDescending));
  w->Load(Filter("vWorkitemsProcess", open_for_user17, "CreatedOn"));
  w->Delete(item + 1);

  int explained = 0;
  for (const std::string& sql : log->statements) {
    if (sql.find("INSERT INTO") != std::string::npos) continue;
    auto plan = Db().NewConnection()->Execute("EXPLAIN " + sql);
    while (plan->GetNext()) {
      const auto row = plan->CurrentItem();
      const std::string type = Show(row->GetValue("type"));
      EXPECT_TRUE(type != "ALL" && type != "index")
          << type << " on " << Show(row->GetValue("table")) << " for\n  " << sql;
    }
    ++explained;
  }
  EXPECT_GE(explained, 25);
}

}  // namespace
}  // namespace orvtest
