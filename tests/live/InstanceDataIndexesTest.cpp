// The plans of the instance-data statements when the tables that grow with
// the instances hold 100,000 instances of one definition and one activity:
// every statement, as the providers write it, goes through the server's
// ANALYZE (reads, which it runs and counts) or EXPLAIN (writes), and none may
// read more than a few rows of those tables at a time.

#include <set>
#include <string>

#include "live/InstanceDataFixture.h"
#include "runtime/CAIPropertyDataDP.h"
#include "runtime/CActivityInstanceDataDP.h"
#include "runtime/CPIReleventDataDP.h"
#include "runtime/CProcInstDataDP.h"
#include "support/RecordingConnection.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;

constexpr int32_t kFirst = 2000001;  // keys of the filled rows: kFirst to kFirst + 99999

TEST_F(InstanceDataTest, StatementsUseIndexesWhenInstancesAbound) {
  const int32_t definition = AddDefinition(Unique("Busy"));
  Declare(definition, "Amount", 2);
  Declare(definition, "Requester", 1);
  Declare(definition, "Note", 1);
  const int32_t activity = AddActivity(definition, Unique("busy"));
  for (const std::string name : {"Approved", "Comment"}) {
    parameters_->Add(ParameterAddFields(activity, name));
    properties_->Add(PropertyFields(activity, name));
  }
  const std::string def = std::to_string(definition), act = std::to_string(activity);
  Db().Exec(
      "INSERT INTO tblProcessInstance (ProcInstanceID,ProcInstanceName,FKProcDefID,State) "
      "SELECT 2000000 + seq, CONCAT('case ', seq), " +
      def + ", 67108864 FROM seq_1_to_100000");
  Db().Exec(
      "INSERT INTO tblProcInstanceData (ProcInstanceDataID,FKProcInstanceID,ParameterName,"
      "NumericValue,TextValue,DataType) SELECT 2000000 + seq, 2000000 + (seq + 1) DIV 2, "
      "IF(seq % 2 = 1, 'Amount', 'Requester'), seq, NULL, 2 FROM seq_1_to_200000");
  Db().Exec(
      "INSERT INTO tblActivityInstance (ActivityInstanceID,FKActivityID,FKProcInstanceID,State) "
      "SELECT 2000000 + seq, " +
      act + ", 2000000 + seq, 67108864 FROM seq_1_to_100000");
  Db().Exec(
      "INSERT INTO tblActivityInstanceData (AIParameterID,FKActivityInstanceID,ParameterName,"
      "TextValue,DataType,TaskIndex) SELECT 2000000 + seq, 2000000 + (seq + 1) DIV 2, "
      "'Approved', 'yes', 1, seq % 2 FROM seq_1_to_200000");
  Db().Exec(
      "INSERT INTO tblAIPropertyData (AIPropertyID,FKActivityInstanceID,PropertyName,`Value`) "
      "SELECT 2000000 + seq, 2000000 + seq, 'Approved', 'ann' FROM seq_1_to_100000");
  Db().Exec(
      "INSERT INTO tblPIReleventData (PIReleventDataID,FKProcInstanceID,ParameterName,EntityID,"
      "EntityType,TaskIndex) SELECT 2000000 + seq, 2000000 + seq, 'Amount', 2000000 + seq, "
      "seq % 2, 0 FROM seq_1_to_100000");
  Db().Exec(
      "ANALYZE TABLE tblProcessInstance, tblProcInstanceData, tblActivityInstance, "
      "tblActivityInstanceData, tblAIPropertyData, tblPIReleventData");
  ASSERT_GE(Db().Count("tblProcInstanceData"), 200000);

  auto recorder = std::make_shared<RecordingConnection>();
  auto values = On<orvmysql::CProcInstDataDP>(recorder);
  auto cases = On<orvmysql::CPIReleventDataDP>(recorder);
  auto tasks = On<orvmysql::CActivityInstanceDataDP>(recorder);
  auto properties = On<orvmysql::CAIPropertyDataDP>(recorder);
  const int32_t key = kFirst + 50000, instance = kFirst + 25000;
  const FieldArray value = Value(instance, "Amount", "5", 2);
  const FieldArray task_value = TaskValue(instance, 1, "Approved", "no", 1);
  const FieldArray property = {instance, "Approved", "bob", 1, 0, 0, 0, 0, "", "", ""};
  const FieldArray case_row = {instance, "Amount", "5", 2, 0, 0, 0, 1, 0, "", "", "", instance, 1};
  values->Update(key, value);
  values->Delete(key, 0);
  values->Delete(0, instance);
  values->ParameterExist("Amount", instance);
  values->GetParameterByID(key);
  values->GetParameterForProcess(instance);
  values->Load("WHERE tblProcInstanceData.FKProcInstanceID = " + std::to_string(instance));
  values->LoadProcessInstanceParams(definition, instance);
  values->LoadProcessInstanceParams(-1, instance);
  values->LoadProcessInstanceParams(definition, -1);
  cases->Update(key, case_row);
  cases->Delete(key, 0);
  cases->Delete(0, instance);
  cases->GetParameterByID(key);
  cases->GetParameterForEntity(instance);
  tasks->Update(key, task_value);
  tasks->Delete(key, 0);
  tasks->Delete(0, instance);
  tasks->ParameterExist("Approved", instance, 1);
  tasks->GetParameterByID(key);
  tasks->GetParameterForTask(instance, 1);
  tasks->LoadTaskParams(activity, instance, 1);
  tasks->LoadTaskParams(activity, -1, 0);
  properties->Update(key, property);
  properties->Delete(key, 0);
  properties->Delete(0, instance);
  properties->PropertyExist("Approved", instance);
  properties->GetPropertyByID(key);
  properties->GetPropertiesForInstance(instance);
  properties->LoadInstanceProperties(activity, instance);
  ASSERT_EQ(recorder->statements.size(), 30u);

  const std::set<std::string> growing = {"tblProcessInstance",  "tblProcInstanceData",
                                         "tblActivityInstance", "tblActivityInstanceData",
                                         "tblAIPropertyData",   "tblPIReleventData"};
  auto explain = Db().NewConnection();
  for (const std::string& statement : recorder->statements) {
    // A read is run and its rows counted; a write is only planned.
    const bool read = statement.starts_with("SELECT");
    auto plan = explain->Execute((read ? "ANALYZE " : "EXPLAIN ") + statement);
    while (plan->GetNext()) {
      auto step = plan->CurrentItem();
      const std::string table = Show(step->GetValue("table"));
      if (growing.count(table) == 0) continue;
      if (read) {
        // Rows read per lookup (the existence test's outer scan stops at one).
        const orvmysql::Variant rows = step->GetValue("r_rows");
        if (!rows.IsNull()) {
          EXPECT_LT(rows.ToDouble(), 10) << table << " in " << statement;
        }
        continue;
      }
      const std::string type = Show(step->GetValue("type"));
      EXPECT_NE(type, "ALL") << table << " in " << statement;
      EXPECT_NE(type, "index") << table << " in " << statement;
      EXPECT_LT(step->GetValue("rows").ToLong(), 10) << table << " in " << statement;
    }
  }
}

}  // namespace
}  // namespace orvtest
