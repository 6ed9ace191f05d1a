// The runtime providers against a recording connection: the exact text of
// every statement they send (one line per case, on a fixed clock), the
// session brackets on success and on failure, and the values that stop an
// operation before anything is sent. What the database makes of the
// statements is proved by the live tests.

#include <gtest/gtest.h>

#include <functional>
#include <regex>
#include <string>
#include <vector>

#include "runtime/CActivityInstanceDP.h"
#include "runtime/CProcInstanceDP.h"
#include "runtime/CWorkitemsDP.h"
#include "support/RecordingConnection.h"
#include "unit/QueryTestSupport.h"

namespace orvtest {
namespace {

// Instance rows with one value of every kind: texts that need escaping, empty
// texts (NULL or '' by position), dates with and without a time of day, and
// Empty dates.
FieldArray ProcessFields(int32_t parent) {
  return {"PO 1042",
          7,
          Date::FromParts(2024, 5, 17, 9, 0, 0),
          "ann",
          Variant(),
          67108864,
          2,
          Date::FromParts(2024, 5, 20, 17, 45, 0),
          "G-1",
          parent,
          "",
          "Ann",
          Date::FromParts(2024, 5, 17, 9, 30, 0),
          Variant(),
          Variant(),
          "O'Brien's note"};
}

FieldArray ActivityFields() {
  return {67108864,
          Date::FromParts(2024, 5, 17, 9, 0, 0),
          Date::FromParts(2024, 5, 18, 12, 30, 0),
          "Approve",
          3,
          42,
          6,
          7,
          "10",
          "",
          "x",
          11,
          "<ext/>",
          "1",
          "",
          15,
          16,
          "T-1",
          "approve",
          Variant(),
          Date::FromParts(2024, 5, 17, 9, 30, 0),
          Variant(),
          Variant(),
          2,
          ""};
}

FieldArray WorkitemFields() {
  return {67108864,
          Date::FromParts(2024, 5, 17, 9, 30, 0),
          Variant(),
          Variant(),
          "ann",
          "user",
          "",
          "Approve PO 1042",
          "",
          43,
          42,
          1,
          Variant(),
          14,
          Variant(),
          Variant(),
          Date::FromParts(2024, 5, 20, 17, 0, 0),
          3,
          0};
}

const std::string kProcessSelect =
    "SELECT ProcInstanceID , ProcInstanceName, FKProcDefID, ScheduledStartTime, "
    "ScheduledEndTime, ScheduledTimeOut, CreatorID, CreatorType, CreatorName, State,Priority, "
    "`GUID`, FKParentProcInstanceID, CreatedOn, StartedOn, FinishedOn,`Note` FROM "
    "tblProcessInstance ";
const std::string kProcessInsert =
    "INSERT INTO tblProcessInstance  (ProcInstanceID,`ProcInstanceName`,`FKProcDefID`,"
    "`ScheduledStartTime`,`CreatorID`,`CreatorType`,`CreatorName`,`ScheduledEndTime`,`State`,"
    "`Priority`,`ScheduledTimeOut`,`Guid`,FKParentProcInstanceID,TreeID,CreatedOn,StartedOn,"
    "FinishedOn,`Note`) VALUES (42,'PO 1042',7, '2024-05-17 09:00:00' ,'ann',NULL,'Ann',NULL,"
    "67108864,2, '2024-05-20' ,'G-1',";
const std::string kProcessInsertTail = ", '2024-05-17 09:30:00' ,NULL,NULL,'O''Brien''s note')";
const std::string kActivitySelect =
    "SELECT tblActivityInstance.*,tblActivities.ActivityName  FROM tblActivityInstance INNER "
    "JOIN tblActivities ON tblActivityInstance.FKActivityID = tblActivities.ActivityID ";
const std::string kNow = " '2024-05-17 10:15:30' ";

std::string Document(const std::string& entity, std::shared_ptr<CConditionExpression> criteria,
                     const char* sort_key = nullptr) {
  CQuery query;
  query.SetEntityName(entity);
  query.SetCriteria(std::move(criteria));
  if (sort_key != nullptr) {
    query.OrderBy()->Add(std::make_shared<COrderExpression>(sort_key, dsDescending));
  }
  return query.ToXML();
}

class RuntimeStatements : public ::testing::Test {
 protected:
  struct Case {
    std::function<void()> call;
    std::vector<std::string> expected;  // key allocation left out
  };

  // Runs each case on a fresh connection (so that every new key is 42) and
  // compares what it sent, apart from the statements of the key allocation,
  // with the GUID of a new tree written as <GUID>.
  void ExpectStatements(const std::vector<Case>& cases) {
    for (std::size_t i = 0; i < cases.size(); ++i) {
      auto fresh = std::make_shared<RecordingConnection>();
      fresh->scalars = connection_->scalars;
      connection_ = fresh;
      processes_->Init(connection_);
      activities_->Init(connection_);
      workitems_->Init(connection_);
      cases[i].call();
      std::vector<std::string> sent;
      for (const std::string& sql : connection_->Written()) {
        sent.push_back(std::regex_replace(sql, std::regex("'[0-9A-F]{32}'"), "<GUID>"));
      }
      EXPECT_EQ(sent, cases[i].expected) << "case " << i;
    }
  }

  FixedClock clock_{Date::FromParts(2024, 5, 17, 10, 15, 30)};
  std::shared_ptr<RecordingConnection> connection_ = std::make_shared<RecordingConnection>();
  std::shared_ptr<CProcInstanceDP> processes_ = On<CProcInstanceDP>(connection_);
  std::shared_ptr<CActivityInstanceDP> activities_ = On<CActivityInstanceDP>(connection_);
  std::shared_ptr<CWorkitemsDP> workitems_ = On<CWorkitemsDP>(connection_);
};

TEST_F(RuntimeStatements, ProcessInstances) {
  connection_->scalars = {{"ProcInstanceID = 7", "3f2504e04f8911d39a0c0305e82c3301"},
                          {"ProcInstanceID = 8", "it's"},
                          {"ProcInstanceID = 10", "   "}};
  auto& p = *processes_;
  ExpectStatements({
      {[&] { p.Add(ProcessFields(0)); }, {kProcessInsert + "0,<GUID>" + kProcessInsertTail}},
      {[&] { p.Add(ProcessFields(7)); },
       {"SELECT TreeID FROM tblProcessInstance WHERE ProcInstanceID = 7",
        kProcessInsert + "7,'3f2504e04f8911d39a0c0305e82c3301'" + kProcessInsertTail}},
      {[&] { p.Add(ProcessFields(8)); },
       {"SELECT TreeID FROM tblProcessInstance WHERE ProcInstanceID = 8",
        kProcessInsert + "8,'it''s'" + kProcessInsertTail}},
      // A parent without a row leaves the place empty, so that the INSERT fails.
      {[&] { p.Add(ProcessFields(9)); },
       {"SELECT TreeID FROM tblProcessInstance WHERE ProcInstanceID = 9",
        kProcessInsert + "9," + kProcessInsertTail}},
      {[&] { p.Add(ProcessFields(10)); },
       {"SELECT TreeID FROM tblProcessInstance WHERE ProcInstanceID = 10",
        kProcessInsert + "10," + kProcessInsertTail}},
      {[&] { p.Update(42, ProcessFields(7)); },
       {"UPDATE tblProcessInstance SET  `ProcInstanceName` = 'PO 1042' ,`FKProcDefID` = 7 "
        ",`ScheduledStartTime` =  '2024-05-17 09:00:00'  ,`CreatorID` = 'ann' ,`CreatorType` = "
        "NULL ,`CreatorName` = 'Ann' ,`ScheduledEndTime` = NULL ,`State` = 67108864 ,`Priority` = "
        "2 ,`ScheduledTimeOut` =  '2024-05-20'  ,`Guid` = 'G-1' ,FKParentProcInstanceID = 7 "
        ",CreatedOn =  '2024-05-17 09:30:00'  ,StartedOn = NULL ,FinishedOn = NULL ,`Note` = "
        "'O''Brien''s note' WHERE ProcInstanceID = 42"}},
      {[&] { p.Delete(42); }, {"DELETE FROM tblProcessInstance WHERE ProcInstanceID = 42"}},
      {[&] { p.GetCurrentState(42); },
       {"SELECT State FROM tblProcessInstance WHERE ProcInstanceID = 42"}},
      {[&] { p.GetProcessByID(42); }, {kProcessSelect + " WHERE ProcInstanceID = 42"}},
      {[&] { p.Load(Document("", Group(dloAnd, {Cond("GUID", dcoEqualto, "G-1")}), "CreatedOn")); },
       {kProcessSelect + "  WHERE  (tblProcessInstance.`GUID` = 'G-1')   ORDER BY "
                         "tblProcessInstance.CreatedOn DESC"}},
      {[&] { p.ChangeWIState(42, 0x4000000, 0x4000004, true); },
       {"UPDATE tblProcessInstance SET `State` = `State` + 67108868 ,StartedOn = " + kNow +
        " WHERE ProcInstanceID = 42"}},
      {[&] { p.ChangeWIState(42, 0, 0x4000004, false); },
       {"UPDATE tblProcessInstance SET `State` = 67108868 WHERE ProcInstanceID = 42"}},
      {[&] { p.ChangeWIState(42, 0x8000000, -1, true); },
       {"UPDATE tblProcessInstance SET `State` = `State` + -1 WHERE ProcInstanceID = 42"}},
  });
}

TEST_F(RuntimeStatements, ActivityInstances) {
  auto& a = *activities_;
  ExpectStatements({
      {[&] { a.Add(ActivityFields()); },
       {"INSERT INTO tblActivityInstance  (ActivityInstanceID,`State`,`ScheduledStartTime`,"
        "`ScheduledTimeout`,`DisplayName`,`FKActivityID`,`FKProcInstanceID`,`ActivityType`,`Min`,"
        "`Max`,`Threshold`,`ActivityInstanceIndex`,`ActivityHandlerType`,`Trigger`,"
        "`ExtendedAttributes`,`ResourceSet`,FKSplitInstanceID,FKPathInstanceID,FKThreadInstanceID,"
        "FKActivityProcDefID,ScheduledEndTime,CreatedOn,StartedOn,FinishedOn,Priority,"
        "ActivityNote) VALUES (42,67108864, '2024-05-17 09:00:00' , '2024-05-18 12:30:00' ,"
        "'Approve',3,42,7,NULL,'10','x','1',6,11,'<ext/>',NULL,15,16,'T-1','approve',NULL, "
        "'2024-05-17 09:30:00' ,NULL,NULL,2,NULL)"}},
      {[&] { a.Update(42, ActivityFields()); },
       {"UPDATE tblActivityInstance SET  `State` = 67108864,`ScheduledStartTime` =  '2024-05-17 "
        "09:00:00' ,`ScheduledTimeout` =  '2024-05-18' ,`DisplayName` = 'Approve',`FKActivityID` "
        "= 3,`FKProcInstanceID` = 42,`ActivityType` = 7,`Min` = NULL,`Max` = '10',`Threshold` = "
        "'x',`ActivityInstanceIndex` = '1',`ActivityHandlerType` = 6,`Trigger` = "
        "11,`ExtendedAttributes` = '<ext/>',`ResourceSet` = NULL,`FKSplitInstanceID` = "
        "15,`FKPathInstanceID` = 16,`FKThreadInstanceID` = 'T-1',`FKActivityProcDefID` = "
        "'approve',`ScheduledEndTime` = NULL,`CreatedOn` =  '2024-05-17 09:30:00' ,`StartedOn` = "
        "NULL,`FinishedOn` = NULL,`Priority` = 2,`ActivityNote` = NULL WHERE ActivityInstanceID = "
        "42"}},
      {[&] { a.Delete(42); }, {"DELETE FROM tblActivityInstance WHERE ActivityInstanceID = 42"}},
      {[&] { a.GetCurrentState(42); },
       {"SELECT State FROM tblActivityInstance WHERE ActivityInstanceID = 42"}},
      {[&] { a.GetTaskByID(42); }, {kActivitySelect + " WHERE ActivityInstanceID = 42"}},
      {[&] { a.Load(Document("", Group(dloAnd, {Cond("FKProcInstanceID", dcoEqualto, 42)}))); },
       {kActivitySelect + "  WHERE  (tblActivityInstance.`FKProcInstanceID` = 42)  "}},
      // The start rule wins over the finish rule.
      {[&] { a.ChangeAIState(42, 0xC000000, 0x4000004, false, "go"); },
       {"UPDATE tblActivityInstance SET `State` = 67108868 ,StartedOn = " + kNow +
        " ,ActivityNote = 'go' WHERE ActivityInstanceID = 42"}},
      {[&] { a.ChangeAIState(42, 0x8000000, 1, true, ""); },
       {"UPDATE tblActivityInstance SET `State` = `State` + 1 ,FinishedOn = " + kNow +
        " ,ActivityNote = '' WHERE ActivityInstanceID = 42"}},
      {[&] { a.ChangeAIState(42, 0, 0x4000004, false, "it's"); },
       {"UPDATE tblActivityInstance SET `State` = 67108868 ,ActivityNote = 'it''s' WHERE "
        "ActivityInstanceID = 42"}},
  });
}

TEST_F(RuntimeStatements, WorkItems) {
  auto& w = *workitems_;
  const std::string started =
      " ,StartedOn = " + kNow + " ,AcknowledgedOn = " + kNow + " WHERE WorkitemID = 42";
  ExpectStatements({
      {[&] { w.Add(WorkitemFields()); },
       {" INSERT INTO tblWorkitems  (WorkitemID,`ResourceID`,`ResourceType`,`ResourceName`,"
        "`Subject`,`Note`,`State`,`FKActivityInstanceID`,WorkitemActivityInstanceType,"
        "`FKProcInstanceID`,`AcknowledgedOn`,`FinishedOn`,`Createdon`,`StartedOn`,`TaskIndex`,"
        "ScheduledStartTime,ScheduledEndTime,ScheduledTimeout,`Priority`,DisplayMask) VALUES "
        "(42,'ann', 'user', NULL, 'Approve PO 1042', NULL, 67108864, 43, 14, 42, NULL, NULL,  "
        "'2024-05-17 09:30:00' , NULL, 1, NULL, NULL,  '2024-05-20 17:00:00' , 3, 0)"}},
      {[&] { w.Update(42, WorkitemFields()); },
       {" UPDATE tblWorkitems SET  `ResourceID` = 'ann' ,`ResourceType` = 'user' ,`ResourceName` "
        "= NULL ,`Subject` = 'Approve PO 1042' ,`Note` = NULL ,`State` = 67108864 "
        ",`FKActivityInstanceID` = 43 ,`WorkitemActivityInstanceType` = 14 ,`FKProcInstanceID` = "
        "42 ,`AcknowledgedOn` = NULL ,`FinishedOn` = NULL ,`CreatedOn` =  '2024-05-17 09:30:00'  "
        ",`StartedOn` = NULL ,`TaskIndex` = 1 ,`ScheduledStartTime` = NULL ,`ScheduledEndTime` = "
        "NULL ,`ScheduledTimeout` =  '2024-05-20 17:00:00'  ,`Priority` = 3 ,`DisplayMask` = 0 "
        "WHERE WorkitemID = 42"}},
      {[&] { w.Delete(42); }, {"DELETE FROM tblWorkitems WHERE WorkitemID = 42"}},
      {[&] { w.GetCurrentState(42); }, {"SELECT State FROM tblWorkitems WHERE WorkitemID = 42"}},
      {[&] { w.GetWorkItemByID(42); }, {kWorkitemSelect + " WHERE WorkitemID = 42"}},
      {[&] { w.GetWorkItemsForAProcess(42); },
       {kWorkitemSelect + " WHERE tblWorkitems.FKProcInstanceID = 42"}},
      {[&] { w.GetWorkItemsForATask(43); }, {kWorkitemSelect + " WHERE FKActivityInstanceID = 43"}},
      {[&] { w.Load(Document("", Group(dloAnd, {Cond("ResourceID", dcoEqualto, "ann")}))); },
       {kWorkitemSelect + "  WHERE  (tblWorkitems.`ResourceID` = 'ann')  "}},
      {[&] { w.ChangeWorkitemState(42, 1, 0x4000004, false); },
       {"UPDATE tblWorkitems SET `State` = 67108868" + started}},
      {[&] { w.ChangeWorkitemState(42, 0x8000000, 0x4000004, true); },
       {"UPDATE tblWorkitems SET `State` = `State` + 67108868" + started}},
      {[&] { w.ChangeWorkitemState(42, 0, 0x4000004, false); },
       {"UPDATE tblWorkitems SET `State` = 67108868 WHERE WorkitemID = 42"}},
      {[&] { w.ChangeWorkitemState(42, 0x8000001, 2, false); },
       {"UPDATE tblWorkitems SET `State` = 2 ,FinishedOn = " + kNow + " WHERE WorkitemID = 42"}},
  });
  // The process view reads the process instance beside the work item.
  connection_->statements.clear();
  w.Load(Document("vWorkitemsProcess", nullptr, "DisplayName"));
  const std::string view = connection_->statements.at(0);
  EXPECT_TRUE(view.starts_with("SELECT tblProcessInstance.ProcInstanceName,")) << view;
  EXPECT_TRUE(
      view.ends_with(" INNER JOIN tblProcessInstance ON tblWorkitems.FKProcInstanceID = "
                     "tblProcessInstance.ProcInstanceID    ORDER BY "
                     "tblActivityInstance.DisplayName DESC"))
      << view;
}

TEST_F(RuntimeStatements, OnlyKeyedInsertsAndTheTwoMultiStepChangesOpenSessions) {
  struct Bracket {
    std::function<void()> call;
    int sessions;
  };
  const std::vector<Bracket> brackets = {
      {[&] { processes_->Add(ProcessFields(0)); }, 1},
      {[&] { processes_->ChangeWIState(1, 0, 4, true); }, 1},
      {[&] { processes_->Update(1, ProcessFields(0)); }, 0},
      {[&] { processes_->Delete(1); }, 0},
      {[&] { activities_->Add(ActivityFields()); }, 1},
      {[&] { activities_->Delete(1); }, 1},
      {[&] { activities_->ChangeAIState(1, 0, 4, true, ""); }, 0},
      {[&] { workitems_->Add(WorkitemFields()); }, 1},
      {[&] { workitems_->Delete(1); }, 0},
      {[&] { workitems_->ChangeWorkitemState(1, 0, 4, true); }, 0},
      {[&] { workitems_->GetWorkItemsForAProcess(1); }, 0},
  };
  for (std::size_t i = 0; i < brackets.size(); ++i) {
    connection_->starts = 0;
    brackets[i].call();
    EXPECT_EQ(connection_->starts, brackets[i].sessions) << "case " << i;
    EXPECT_EQ(connection_->depth, 0) << "case " << i;
  }
}

TEST_F(RuntimeStatements, FailureEndsOnlyTheSessionTheOperationOpened) {
  connection_->StartSession();  // the caller's own session
  struct Failing {
    std::string fail_on;
    std::function<void()> call;
    std::string location;
  };
  const std::vector<Failing> failing = {
      {"INSERT INTO tblProcessInstance", [&] { processes_->Add(ProcessFields(0)); },
       "CProcInstanceDP: IProcInstanceDP_Add Function ("},
      {"UPDATE tblProcessInstance", [&] { processes_->ChangeWIState(1, 0, 4, false); },
       "CProcInstanceDP: IProcInstanceDP_ChangeWIState Function ("},
      {"DELETE FROM tblActivityInstance", [&] { activities_->Delete(1); },
       "CActivityInstanceDP: IActivityInstanceDP_Delete Function ("},
      {"UPDATE tblWorkitems", [&] { workitems_->Update(1, WorkitemFields()); },
       "CWorkitemsDP: IWorkitemsDP_Update Function ("},
      {"tblKeyGen", [&] { workitems_->Add(WorkitemFields()); },
       "CWorkitemsDP: IWorkitemsDP_Add Function ("},
  };
  for (const Failing& f : failing) {
    connection_->fail_on = f.fail_on;
    const Error e = Raised(f.call);
    EXPECT_EQ(e.Number(), kErrDatabase) << f.location;
    EXPECT_TRUE(std::regex_search(
        e.Source(),
        std::regex(" => \r\n" + std::regex_replace(f.location, std::regex("[()]"), "\\$&") +
                   "[0-9]+\\)$")))
        << e.Source();
    EXPECT_EQ(connection_->depth, 1) << f.location;
  }
  connection_->EndSession(Variant());
  EXPECT_EQ(connection_->depth, 0);
}

TEST_F(RuntimeStatements, BadValuesStopBeforeAnySessionOrStatement) {
  FieldArray not_a_number = WorkitemFields();
  not_a_number[9] = "43 OR 1=1";
  FieldArray not_a_date = ActivityFields();
  not_a_date[20] = "yesterday";
  FieldArray short_process = ProcessFields(7);
  short_process.pop_back();
  const std::vector<std::pair<std::function<void()>, int32_t>> cases = {
      {[&] { workitems_->Add(not_a_number); }, kErrTypeMismatch},
      {[&] { workitems_->Update(1, FieldArray(18)); }, kErrSubscript},
      {[&] { activities_->Add(not_a_date); }, kErrTypeMismatch},
      {[&] { activities_->Update(1, FieldArray(24)); }, kErrSubscript},
      // The parent's tree is not looked up for an array that fails.
      {[&] { processes_->Add(short_process); }, kErrSubscript},
      {[&] { processes_->Add(FieldArray(16, Variant(Null))); }, kErrInvalidUseOfNull},
  };
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(ErrorOf(cases[i].first), cases[i].second) << "case " << i;
  }
  EXPECT_TRUE(connection_->statements.empty());
  EXPECT_EQ(connection_->starts, 0);
}

}  // namespace
}  // namespace orvtest
