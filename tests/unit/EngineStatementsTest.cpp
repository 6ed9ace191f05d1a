// The engine operations against a recording connection: the exact text of
// every statement (one line per case, on a fixed clock, for the tree 12, 13,
// 27 of instance 7), the session brackets with their deliberate asymmetries,
// the location trail of a failure, and the id lists refused before anything
// is sent. What the database makes of the statements is the live tests'.

#include <gtest/gtest.h>

#include <functional>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "runtime/COrvEngineDP.h"
#include "support/RecordingConnection.h"
#include "unit/QueryTestSupport.h"

namespace orvtest {
namespace {

const std::string kSiblings =
    " SELECT  tblProcessInstance.ProcInstanceID FROM tblProcessInstance  WHERE "
    "tblProcessInstance.TreeID IN ( SELECT tblProcessInstance.TreeID FROM tblProcessInstance "
    "WHERE tblProcessInstance.ProcInstanceID = 7)";
const std::string kClosedInstances =
    " SELECT ProcInstanceID FROM tblProcessInstance WHERE (tblProcessInstance.State & 134217728) "
    "= 134217728";
const std::string kNow = " '2024-05-17 10:15:30' ";

const std::vector<std::string> kTerminate = {
    " UPDATE tblWorkitems SET tblWorkitems.State = 134217730 ,tblWorkitems.FinishedOn = " + kNow +
        " WHERE FKProcInstanceID IN (12,13,27) AND ((tblWorkitems.State & 67108864) = 67108864 OR "
        "(tblWorkitems.State & 536870912) = 536870912)",
    " UPDATE tblActivityInstance SET tblActivityInstance.State = 134217730 "
    ",tblActivityInstance.FinishedOn = " +
        kNow +
        "  WHERE FKProcInstanceID IN (12,13,27) AND ((tblActivityInstance.State & 67108864) = "
        "67108864 OR (tblActivityInstance.State & 536870912) = 536870912)",
    " UPDATE tblProcessInstance SET tblProcessInstance.State = 134217730 "
    ",tblProcessInstance.FinishedOn = " +
        kNow +
        " WHERE tblProcessInstance.ProcInstanceID IN (12,13,27) AND ((tblProcessInstance.State & "
        "67108864) = 67108864 OR (tblProcessInstance.State & 536870912) = 536870912)"};
const std::string kEnd =
    " UPDATE tblProcessInstance SET tblProcessInstance.State = 134217729 "
    ",tblProcessInstance.FinishedOn = " +
    kNow +
    " WHERE tblProcessInstance.ProcInstanceID = 7 AND NOT EXISTS ( SELECT 1 FROM "
    "tblActivityInstance  WHERE FKProcInstanceID = 7 AND (tblActivityInstance.State & 67108864) "
    "= 67108864)";
const std::string kCheckTree =
    " SELECT ProcInstanceID FROM tblProcessInstance WHERE ProcInstanceID IN (12,13,27) AND "
    "(tblProcessInstance.State & 134217728) = 0";

// The ten deletions of the log of the listed instances.
std::vector<std::string> Cascade(const std::string& ids) {
  return {
      " DELETE FROM tblWorkitems WHERE FKProcInstanceID IN (" + ids + ")",
      " DELETE tblAIPropertyData FROM tblAIPropertyData INNER JOIN tblActivityInstance ON "
      "tblAIPropertyData.FKActivityInstanceID = tblActivityInstance.ActivityInstanceID WHERE "
      "tblActivityInstance.FKProcInstanceID IN (" +
          ids + ")",
      " DELETE tblActivityInstanceData FROM tblActivityInstanceData INNER JOIN "
      "tblActivityInstance ON tblActivityInstanceData.FKActivityInstanceID = "
      "tblActivityInstance.ActivityInstanceID WHERE tblActivityInstance.FKProcInstanceID IN (" +
          ids + ")",
      " DELETE FROM tblActivityInstance WHERE FKProcInstanceID IN (" + ids + ")",
      " DELETE FROM tblProcPathInstance WHERE FKProcInstanceID IN (" + ids + ")",
      " DELETE FROM tblProcSplitInstance WHERE FKProcInstanceID IN (" + ids + ")",
      " DELETE FROM tblPIReleventData WHERE FKProcInstanceID IN (" + ids + ")",
      " DELETE FROM tblProcInstanceData WHERE FKProcInstanceID IN (" + ids + ")",
      " DELETE FROM tblProcThreadInstance WHERE FKProcInstanceID IN (" + ids + ")",
      " DELETE FROM tblProcessInstance WHERE ProcInstanceID IN (" + ids + ")",
  };
}

std::vector<std::string> Then(std::vector<std::string> first,
                              const std::vector<std::string>& rest) {
  first.insert(first.end(), rest.begin(), rest.end());
  return first;
}

const std::vector<std::string> kSourceColumns = {"ParameterName",  "TextValue",     "DataType",
                                                 "Attributes",     "Min",           "Max",
                                                 "ParameterType",  "NumericValue",  "EID",
                                                 "EType",          "IIndex",        "CaseID",
                                                 "ResourceID",     "ResourceType",  "ResourceName",
                                                 "LookupTypeCode", "ListAttribute", "Relevance"};

class EngineStatements : public ::testing::Test {
 protected:
  struct Case {
    std::function<void(COrvEngineDP&)> call;
    std::vector<std::string> expected;  // key allocation left out
  };

  // Runs each case on a fresh connection with the scripted answers of this
  // test and compares the statements it sent.
  void ExpectStatements(const std::vector<Case>& cases) {
    for (std::size_t i = 0; i < cases.size(); ++i) {
      auto fresh = std::make_shared<RecordingConnection>();
      fresh->rows = script_->rows;
      fresh->scalars = script_->scalars;
      fresh->affected = script_->affected;
      engine_->Init(fresh);
      cases[i].call(*engine_);
      EXPECT_EQ(fresh->Written(), cases[i].expected) << "case " << i;
    }
  }

  void SetUp() override {
    script_->rows = {
        {"TreeID IN", {"ProcInstanceID"}, {{12}, {13}, {27}}},
        {"tblActivityInstance.ActivityInstanceID FROM", {"ActivityInstanceID"}, {{5}, {6}}}};
  }

  FixedClock clock_{Date::FromParts(2024, 5, 17, 10, 15, 30)};
  std::shared_ptr<RecordingConnection> script_ = std::make_shared<RecordingConnection>();
  std::shared_ptr<COrvEngineDP> engine_ = On<COrvEngineDP>(script_);
};

TEST_F(EngineStatements, PauseResumeTerminateAndEndTheTree) {
  script_->affected = {{"tblWorkitems.State - 536870912 ", 0},
                       {"tblProcessInstance.State - ", 0},
                       {"NOT EXISTS", 0}};
  ExpectStatements({
      {[](auto& e) { EXPECT_TRUE(e.PauseProcess(7)); },
       {kSiblings,
        " UPDATE tblWorkitems SET tblWorkitems.State = tblWorkitems.State | 536870912 WHERE "
        "FKProcInstanceID IN (12,13,27) AND (tblWorkitems.State & 67108864) = 67108864 AND "
        "(tblWorkitems.State & 536870912) = 0",
        " UPDATE tblActivityInstance SET tblActivityInstance.State = tblActivityInstance.State | "
        "536870912  WHERE FKProcInstanceID IN (12,13,27) AND (tblActivityInstance.State & "
        "67108864) = 67108864 AND (tblActivityInstance.State & 536870912) = 0",
        " UPDATE tblProcessInstance SET tblProcessInstance.State = tblProcessInstance.State | "
        "536870912 WHERE tblProcessInstance.ProcInstanceID IN (12,13,27) AND "
        "(tblProcessInstance.State & 67108864) = 67108864 AND (tblProcessInstance.State & "
        "536870912) = 0"}},
      // Work items and processes fall back to both flags; activity instances
      // found rows with the paused flag alone.
      {[](auto& e) { EXPECT_FALSE(e.ResumeProcess(7)); },
       {kSiblings,
        " UPDATE tblWorkitems SET tblWorkitems.State = tblWorkitems.State - 536870912 WHERE "
        "FKProcInstanceID IN (12,13,27) AND (tblWorkitems.State & 67108864) = 67108864 AND "
        "(tblWorkitems.State & 536870912) = 536870912 AND (tblWorkitems.State & 1073741824) = 0",
        " UPDATE tblWorkitems SET tblWorkitems.State = tblWorkitems.State - 1610612736 WHERE "
        "FKProcInstanceID IN (12,13,27) AND (tblWorkitems.State & 67108864) = 67108864 AND "
        "(tblWorkitems.State & 536870912) = 536870912 AND (tblWorkitems.State & 1073741824) = "
        "1073741824",
        " UPDATE tblActivityInstance SET tblActivityInstance.State = tblActivityInstance.State - "
        "536870912  WHERE FKProcInstanceID IN (12,13,27) AND (tblActivityInstance.State & "
        "67108864) = 67108864 AND (tblActivityInstance.State & 536870912) = 536870912 AND "
        "(tblActivityInstance.State & 1073741824) = 0",
        " UPDATE tblProcessInstance SET tblProcessInstance.State = tblProcessInstance.State - "
        "536870912 WHERE tblProcessInstance.ProcInstanceID IN (12,13,27) AND "
        "(tblProcessInstance.State & 67108864) = 67108864 AND (tblProcessInstance.State & "
        "536870912) = 536870912 AND (tblProcessInstance.State & 1073741824) = 0",
        " UPDATE tblProcessInstance SET tblProcessInstance.State = tblProcessInstance.State - "
        "1610612736 WHERE tblProcessInstance.ProcInstanceID IN (12,13,27) AND "
        "(tblProcessInstance.State & 67108864) = 67108864 AND (tblProcessInstance.State & "
        "536870912) = 536870912 AND (tblProcessInstance.State & 1073741824) = 1073741824"}},
      {[](auto& e) { EXPECT_TRUE(e.TerminateProcess(7, false)); }, Then({kSiblings}, kTerminate)},
      // Refused while an activity instance is open: nothing else is sent.
      {[](auto& e) { EXPECT_FALSE(e.EndProcess(7, true)); }, {kEnd}},
  });
}

TEST_F(EngineStatements, EndAndTerminateClearTheLogOfTheTreeWhenAsked) {
  ExpectStatements({
      {[](auto& e) { EXPECT_TRUE(e.EndProcess(7, true)); },
       Then({kEnd, kSiblings, kCheckTree}, Cascade("12,13,27"))},
      {[](auto& e) { EXPECT_TRUE(e.TerminateProcess(7, true)); },
       Then(Then(Then({kSiblings}, kTerminate), {kCheckTree}), Cascade("12,13,27"))},
  });
}

TEST_F(EngineStatements, SkipByConditionAndBySplitPath) {
  const std::vector<std::string> skip_5_and_6 = {
      " UPDATE tblWorkitems SET  `State` = 134217732 ,FinishedOn =  '2024-05-17 00:00:00'  "
      "WHERE FKActivityInstanceID = 5",
      " UPDATE tblActivityInstance SET  `State` = 134217732 WHERE ActivityInstanceID = 5",
      " UPDATE tblWorkitems SET  `State` = 134217732 ,FinishedOn =  '2024-05-17 00:00:00'  "
      "WHERE FKActivityInstanceID = 6",
      " UPDATE tblActivityInstance SET  `State` = 134217732 WHERE ActivityInstanceID = 6"};
  ExpectStatements({
      // The condition is the engine's own SQL, pasted as given.
      {[](auto& e) { EXPECT_TRUE(e.SkipActivity(" FKProcInstanceID = 12 ")); },
       Then({" SELECT tblActivityInstance.ActivityInstanceID FROM tblActivityInstance WHERE  "
             "FKProcInstanceID = 12 "},
            skip_5_and_6)},
      {[](auto& e) { EXPECT_FALSE(e.SkipActivity(" \t ")); }, {}},
      {[](auto& e) { EXPECT_TRUE(e.SkipPendingTaskOnSplit(9)); },
       Then({" SELECT tblActivityInstance.ActivityInstanceID FROM tblActivityInstance WHERE  "
             "tblActivityInstance.FKsplitInstanceID IN (  SELECT "
             "tblProcPathInstance.FKSplitInstanceID  FROM tblProcPathInstance WHERE "
             "tblProcPathInstance.PathID = 9)"},
            skip_5_and_6)},
  });
}

TEST_F(EngineStatements, ClearLogByListAndInBlankModeInBatches) {
  const std::string check =
      " SELECT ProcInstanceID FROM tblProcessInstance WHERE ProcInstanceID IN ( 12, 13 ,27 ) AND "
      "(tblProcessInstance.State & 134217728) = 0";
  ExpectStatements({
      // The list is written as it is given once it is known to be ids.
      {[](auto& e) { EXPECT_TRUE(e.ClearLog(" 12, 13 ,27 ")); },
       Then({check}, Cascade(" 12, 13 ,27 "))},
      {[](auto& e) { EXPECT_TRUE(e.ClearLog("  ")); }, {kClosedInstances}},
  });

  script_->scalars = {{"(tblProcessInstance.State & 134217728) = 0", "13"}};
  ExpectStatements({{[](auto& e) { EXPECT_FALSE(e.ClearLog(" 12, 13 ,27 ")); }, {check}}});

  // Fewer closed instances than a batch holds: exactly one list; more: one
  // list per batch, the last one shorter.
  script_->rows = {{"134217728) = 134217728", {"ProcInstanceID"}, {{1}, {2}, {3}, {4}, {5}}}};
  SetClearLogBatchSizeForTesting(5);
  ExpectStatements({{[](auto& e) { EXPECT_TRUE(e.ClearLog("")); },
                     Then({kClosedInstances}, Cascade("1,2,3,4,5"))}});
  SetClearLogBatchSizeForTesting(2);
  std::vector<std::pair<int64_t, int64_t>> progress;
  engine_->SetClearLogProgress(
      [&](int64_t done, int64_t total) { progress.emplace_back(done, total); });
  ExpectStatements(
      {{[](auto& e) { EXPECT_TRUE(e.ClearLog("")); },
        Then(Then(Then({kClosedInstances}, Cascade("1,2")), Cascade("3,4")), Cascade("5"))}});
  SetClearLogBatchSizeForTesting(0);
  EXPECT_EQ(progress, (std::vector<std::pair<int64_t, int64_t>>{{2, 5}, {4, 5}, {5, 5}}));
}

TEST_F(EngineStatements, StartNodeAndTransitions) {
  script_->scalars = {{"FKProcDefinitionID = 4", "31"}};
  ExpectStatements({
      {[](auto& e) {
         auto node = e.GetStartNodeID(4);
         ASSERT_NE(node, nullptr);
         EXPECT_EQ(node->NodeID(), 31);
         EXPECT_EQ(node->NodeType(), 2);
       },
       {" SELECT SwitchID FROM  tblSwitches  WHERE SwitchType = 2 AND FKProcDefinitionID = 4"}},
      {[](auto& e) { EXPECT_EQ(e.GetStartNodeID(5), nullptr); },
       {" SELECT SwitchID FROM  tblSwitches  WHERE SwitchType = 2 AND FKProcDefinitionID = 5"}},
      {[](auto& e) { e.GetTransitions(4, 2, 31); },
       {" SELECT tblTransitions.* FROM tblTransitions WHERE  FKFromNodeID = 31 AND FromNodeType "
        "= 2 AND  FKProcDefinitionID = 4"}},
  });
}

TEST_F(EngineStatements, CaseDataFromTheProcessFromAllTasksAndFromOneTask) {
  const RecordingConnection::Row amount = {
      "Amount", Variant(Null), 2,      0,     0.0,           5000.0,        1,     1250.5, 7, 0, 3,
      7,        "ann",         "user", "Ann", Variant(Null), Variant(Null), "high"};
  // Texts quoted and cut where the insert cuts them; NULL numbers written
  // as NULL.
  const RecordingConnection::Row note = {std::string(300, 'p'),
                                         "O'Brien \\ " + std::string(300, 't'),
                                         1,
                                         Variant(Null),
                                         Variant(Null),
                                         Variant(Null),
                                         1,
                                         Variant(Null),
                                         7,
                                         0,
                                         3,
                                         7,
                                         "a'b",
                                         "",
                                         "",
                                         "lk",
                                         "la",
                                         ""};
  script_->rows = {{" SELECT tbl", kSourceColumns, {amount, note}}};
  const std::string insert =
      " INSERT INTO tblPIReleventData (PIReleventDataID, ParameterName,  TextValue, DataType, "
      "Attributes, `Min`, `Max`,  ParameterType, NumericValue, EntityID, EntityType,  "
      "Taskindex,FKProcInstanceID,ResourceID,ResourceType,ResourceName,LookupTypeCode,"
      "ListAttribute,Relevance) VALUES (";
  const std::vector<std::string> inserts = {
      insert + "42,'Amount','',2,0,0,5000,1,1250.5,7,0,3,7,'ann','user','Ann','','','high')",
      insert + "43,'" + std::string(255, 'p') + "','O''Brien \\\\ " + std::string(300, 't') +
          "',1,NULL,NULL,NULL,1,NULL,7,0,3,7,'a''b','','','lk','la','')"};
  const std::string resources =
      " AS CaseID,'ann' AS ResourceID,'us''er' AS ResourceType,'Ann' AS "
      "ResourceName,LookupTypeCode,ListAttribute,Relevance";
  ExpectStatements({
      {[](auto& e) { EXPECT_FALSE(e.InsertCaseRelatedData(7, 7, 0, 3, "ann", "us'er", "Ann")); },
       Then(
           {" SELECT tblProcInstanceData.ParameterName,  tblProcInstanceData.TextValue, "
            "tblProcInstanceData.DataType,  tblProcInstanceData.Attributes, "
            "tblProcInstanceData.Min,  tblProcInstanceData.Max, tblProcInstanceData.ParameterType, "
            " tblProcInstanceData.NumericValue, 7 AS EID, 0 AS EType, 3 AS IIndex,7" +
            resources + " FROM tblProcInstanceData  WHERE FKProcInstanceID = 7"},
           inserts)},
      {[](auto& e) { EXPECT_FALSE(e.InsertCaseRelatedData(7, 5, 1, -1, "x", "y", "z")); },
       Then({" SELECT tblActivityInstanceData.ParameterName,  tblActivityInstanceData.TextValue, "
             "tblActivityInstanceData.DataType,  tblActivityInstanceData.Attributes, "
             "tblActivityInstanceData.Min,  tblActivityInstanceData.Max, "
             "tblActivityInstanceData.ParameterType,  "
             "tblActivityInstanceData.NumericValue,tblActivityInstanceData.FKActivityInstanceID AS "
             "EID, 1 AS EType,tblActivityInstanceData.TaskIndex AS IIndex,7 AS "
             "CaseID,tblWorkitems.ResourceID,tblWorkitems.ResourceType,tblWorkitems.ResourceName,"
             "LookupTypeCode,ListAttribute,Relevance FROM tblActivityInstanceData,tblWorkitems  "
             "WHERE tblActivityInstanceData.FKActivityInstanceID = "
             "tblWorkitems.FKActivityInstanceID  AND tblActivityInstanceData.TaskIndex = "
             "tblWorkitems.TaskIndex  AND tblActivityInstanceData.FKActivityInstanceID = 5"},
            inserts)},
      {[](auto& e) { EXPECT_FALSE(e.InsertCaseRelatedData(7, 5, 1, 3, "ann", "us'er", "Ann")); },
       Then(
           Then(
               {" SELECT tblActivityInstanceData.ParameterName,  "
                "tblActivityInstanceData.TextValue, tblActivityInstanceData.DataType,  "
                "tblActivityInstanceData.Attributes, tblActivityInstanceData.Min,  "
                "tblActivityInstanceData.Max, tblActivityInstanceData.ParameterType,  "
                "tblActivityInstanceData.NumericValue, 5 AS EID, 1 AS EType, 3 AS IIndex,7" +
                resources +
                " FROM tblActivityInstanceData   WHERE FKActivityInstanceID = 5 AND TasKIndex = 3"},
               inserts),
           {" DELETE  FROM tblPIReleventData USING tblPIReleventData INNER JOIN  (SELECT  "
            "PIReleventDataID  FROM  tblPIReleventData INNER JOIN tblActivityInstance ON  "
            "tblPIReleventData.EntityID =  tblActivityInstance.ActivityInstanceID  WHERE "
            "tblPIReleventData.EntityType = 1 AND  tblActivityInstance.FKActivityID IN (        "
            "                       SELECT  tblActivityInstance.FKActivityID                   "
            "            FROM tblPIReleventData INNER JOIN tblActivityInstance ON  "
            "tblPIReleventData.EntityID =  tblActivityInstance.ActivityInstanceID              "
            "                 WHERE tblPIReleventData.EntityType = 1                           "
            "   AND  tblActivityInstance.ActivityInstanceID = 5)  AND "
            "tblActivityInstance.FKProcInstanceID IN (                             SELECT  "
            "tblActivityInstance.FKProcInstanceID                             FROM "
            "tblPIReleventData INNER JOIN tblActivityInstance ON  tblPIReleventData.EntityID =  "
            "tblActivityInstance.ActivityInstanceID                             WHERE "
            "tblPIReleventData.EntityType = 1                            AND  "
            "tblActivityInstance.ActivityInstanceID = 5)  AND  "
            "tblActivityInstance.ActivityInstanceID <> 5) AS vObseleteData ON "
            "vObseleteData.PIReleventDataID = tblPIReleventData.PIReleventDataID"})},
  });
}

// Every multi-statement operation runs in one session of its own, with the
// engine's asymmetries: nothing selected to skip leaves the session open, a
// refused ClearLog ends it twice, a blank skip opens none. A unit of work
// (UnitOfWorkTest) adds a level of its own, unless it joins an open one.
TEST_F(EngineStatements, SessionBrackets) {
  struct Bracket {
    std::function<void(COrvEngineDP&)> call;
    int starts, ends;
  };
  const std::vector<Bracket> brackets = {
      {[](auto& e) { e.PauseProcess(7); }, 2, 2},
      {[](auto& e) { e.ResumeProcess(7); }, 2, 2},
      {[](auto& e) { e.TerminateProcess(7, false); }, 2, 2},
      {[](auto& e) { e.TerminateProcess(7, true); }, 3, 3},
      {[](auto& e) { e.EndProcess(7, true); }, 3, 3},
      {[](auto& e) { e.EndProcess(7, false); }, 1, 1},
      {[](auto& e) { e.ClearLog(""); }, 1, 1},
      {[](auto& e) { e.SkipActivity("FKProcInstanceID = 12"); }, 2, 2},
      {[](auto& e) { e.SkipActivity("FKProcInstanceID = 99"); }, 1, 0},
      {[](auto& e) { e.SkipPendingTaskOnSplit(8); }, 1, 0},
      {[](auto& e) { e.SkipActivity(""); }, 0, 0},
      {[](auto& e) { e.ClearLog("12"); }, 1, 2},
      {[](auto& e) { e.InsertCaseRelatedData(7, 7, 0, 0, "", "", ""); }, 1, 1},
      {[](auto& e) { e.GetStartNodeID(4); }, 0, 0},
      {[](auto& e) { e.GetTransitions(4, 2, 31); }, 0, 0},
  };
  script_->rows[1].when = "WHERE FKProcInstanceID = 12";
  script_->scalars = {{"ProcInstanceID IN (12)", "12"}};
  for (std::size_t i = 0; i < brackets.size(); ++i) {
    auto fresh = std::make_shared<RecordingConnection>();
    fresh->rows = script_->rows;
    fresh->scalars = script_->scalars;
    engine_->Init(fresh);
    brackets[i].call(*engine_);
    EXPECT_EQ(fresh->starts, brackets[i].starts) << "case " << i;
    EXPECT_EQ(fresh->ends, brackets[i].ends) << "case " << i;
  }
}

// A failure keeps the operation's session open (the engine's handlers do not
// end it) and names the operation, and the private routine or the nested
// ClearLog where it happened, in the trail.
TEST_F(EngineStatements, FailureKeepsTheSessionAndNamesWhereItHappened) {
  struct Failing {
    std::string fail_on;
    std::function<void(COrvEngineDP&)> call;
    std::vector<std::string> trail;  // innermost first
    int depth;
  };
  const std::string siblings = "COrvEngineDP: GetAllProcInstanceSiblings Sub (";
  const std::string clear = "COrvEngineDP: IOrvEngineDP_ClearLog Function (";
  const std::vector<Failing> failing = {
      {"UPDATE tblActivityInstance",
       [](auto& e) { e.PauseProcess(7); },
       {"COrvEngineDP: IOrvEngineDP_PauseProcess Function ("},
       1},
      {"TreeID IN",
       [](auto& e) { e.ResumeProcess(7); },
       {siblings, "COrvEngineDP: IOrvEngineDP_ResumeProcess Function ("},
       1},
      {"TreeID IN",
       [](auto& e) { e.TerminateProcess(7, false); },
       {siblings, "COrvEngineDP: IOrvEngineDP_TerminateProcess Function ("},
       0},
      {"DELETE FROM tblProcSplitInstance",
       [](auto& e) { e.TerminateProcess(7, true); },
       {clear, "COrvEngineDP: IOrvEngineDP_TerminateProcess Function ("},
       2},
      {"DELETE FROM tblWorkitems",
       [](auto& e) { e.EndProcess(7, true); },
       {clear, "COrvEngineDP: IOrvEngineDP_EndProcess Function ("},
       2},
      {"UPDATE tblWorkitems",
       [](auto& e) { e.SkipActivity("1=1"); },
       {"COrvEngineDP: IOrvEngineDP_SkipActivity Function ("},
       1},
      {"tblProcPathInstance",
       [](auto& e) { e.SkipPendingTaskOnSplit(9); },
       {"COrvEngineDP:IOrvEngineDP_SkipPendingTaskOnSplit Ln "},
       1},
      {"INSERT INTO tblPIReleventData",
       [](auto& e) { e.InsertCaseRelatedData(7, 7, 0, 0, "", "", ""); },
       {"COrvEngineDP: InsertCaseRelatedData Function ("},
       1},
      {"tblSwitches",
       [](auto& e) { e.GetStartNodeID(4); },
       {"COrvEngineDP: GetStartNodeID Function ("},
       0},
      {"tblTransitions",
       [](auto& e) { e.GetTransitions(4, 2, 31); },
       {"COrvEngineDP: StartActivityTransitions Function ("},
       0},
  };
  const RecordingConnection::Row row = {"n", "", 1, 0,  0,  0,  1,  0,  7,
                                        0,   0,  7, "", "", "", "", "", ""};
  for (const Failing& f : failing) {
    auto fresh = std::make_shared<RecordingConnection>();
    fresh->rows = {script_->rows[0],
                   {" tblActivityInstance WHERE ", {"ActivityInstanceID"}, {{5}}},
                   {"FROM tblProcInstanceData", kSourceColumns, {row}}};
    fresh->fail_on = f.fail_on;
    engine_->Init(fresh);
    const Error e = Raised([&] { f.call(*engine_); });
    EXPECT_EQ(e.Number(), kErrDatabase) << f.fail_on;
    std::string trail;
    for (const std::string& location : f.trail) {
      trail += " => \r\n" + std::regex_replace(location, std::regex("[()]"), "\\$&") + "[0-9]+" +
               (location.ends_with("(") ? "\\)" : "");
    }
    EXPECT_TRUE(std::regex_search(e.Source(), std::regex(trail + "$"))) << e.Source();
    EXPECT_EQ(fresh->depth, f.depth) << f.fail_on;
  }
}

TEST_F(EngineStatements, ClearLogRefusesAnythingButIdsBeforeAnySession) {
  for (const std::string list : {"0) OR (1=1", "12,,13", "12,", "12;13", "12 13", "1e3", "x"}) {
    auto fresh = std::make_shared<RecordingConnection>();
    engine_->Init(fresh);
    const Error e = Raised([&] { engine_->ClearLog(list); });
    EXPECT_EQ(e.Number(), kErrTypeMismatch) << list;
    EXPECT_NE(e.Source().find("COrvEngineDP: IOrvEngineDP_ClearLog Function ("), std::string::npos);
    EXPECT_TRUE(fresh->statements.empty()) << list;
    EXPECT_EQ(fresh->starts, 0) << list;
  }
}

// A NULL parameter name stops the copy at its row: the rows before it stay,
// and its own conversion fails before a key is taken.
TEST_F(EngineStatements, CaseDataStopsAtANullName) {
  const RecordingConnection::Row good = {"a", "", 1, 0,  0,  0,  1,  0,  7,
                                         0,   0,  7, "", "", "", "", "", ""};
  RecordingConnection::Row nameless = good;
  nameless[0] = Variant(Null);
  auto fresh = std::make_shared<RecordingConnection>();
  fresh->rows = {{"FROM tblProcInstanceData", kSourceColumns, {good, nameless, good}}};
  engine_->Init(fresh);
  EXPECT_EQ(ErrorOf([&] { engine_->InsertCaseRelatedData(7, 7, 0, 0, "", "", ""); }),
            kErrInvalidUseOfNull);
  const auto written = fresh->Written();
  ASSERT_EQ(written.size(), 2u);
  EXPECT_TRUE(written[1].ends_with("VALUES (42,'a','',1,0,0,0,1,0,7,0,0,7,'','','','','','')"))
      << written[1];
  EXPECT_EQ(fresh->statements.size(), 4u);  // one key: read and compare-and-set
}

}  // namespace
}  // namespace orvtest
