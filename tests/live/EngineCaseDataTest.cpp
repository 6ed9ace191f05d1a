// Routing reads (the start node, the transitions leaving a node) and the copy
// of process and task data into the case-relevant data in its three cases,
// with the clean-up of a task's earlier runs.

#include <string>
#include <utility>
#include <vector>

#include "live/EngineFixture.h"

namespace orvtest {
namespace {

class EngineRouting : public EngineTest {};

TEST_F(EngineRouting, StartNodeAndTheTransitionsLeavingIt) {
  switches_->Add(SwitchFields(definition_, 3, "join"));
  const int32_t start = switches_->Add(SwitchFields(definition_, 2, "start"));
  auto node = engine_->GetStartNodeID(definition_);
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->NodeID(), start);
  EXPECT_EQ(node->NodeType(), 2);
  EXPECT_EQ(engine_->GetStartNodeID(AddDefinition(Unique("no start"))), nullptr);

  transitions_->Add(TransitionFields(definition_, start, 2, activity_, 1, "t-1"));
  transitions_->Add(TransitionFields(definition_, start, 2, activity_ + 1, 1, "t-2"));
  transitions_->Add(TransitionFields(definition_, start, 1, activity_, 1, "activity, same id"));
  transitions_->Add(TransitionFields(definition_, activity_, 1, start, 2, "back"));
  const auto rows = Read(engine_->GetTransitions(definition_, 2, start),
                         {"TransitionProcDefID", "FKToNodeID", "ToNodeType"});
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].at("TransitionProcDefID").substr(0, 2), "t-");
  EXPECT_EQ(rows[1].at("TransitionProcDefID").substr(0, 2), "t-");
  EXPECT_EQ(engine_->GetTransitions(definition_ + 1000, 2, start)->Count(), 0);
}

class EngineCaseData : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    process_ = AddProcess();
    task_ = AddActivityInstance(process_, "Review it");
    // ann works on task 0, bob on task 1.
    const std::pair<std::string, std::string> people[] = {{"ann", "Ann"}, {"bob", "Bob"}};
    for (int32_t index = 0; index < 2; ++index) {
      orvmysql::FieldArray item = WorkitemFields(process_, task_, people[index].first);
      item[6] = people[index].second;
      item[11] = index;
      AddWorkitem(item);
    }
    const std::string p = std::to_string(process_), t = std::to_string(task_);
    // Instance data as the data providers store it; a NULL among the plain
    // numbers is written back as NULL.
    Db().Exec(
        "INSERT INTO tblProcInstanceData (ProcInstanceDataID, FKProcInstanceID, ParameterName, "
        "TextValue, NumericValue, DataType, `Attributes`, `Min`, `Max`, ParameterType, "
        "LookupTypeCode, ListAttribute, Relevance) VALUES (" +
        p + "1, " + p + ", 'Amount', NULL, 1250.5, 2, 0, 0, 5000, 1, 'money', NULL, 'high'), (" +
        p + "2, " + p + ", 'Note', 'O''Brien \\\\ " + std::string(300, 'n') +
        "', NULL, 1, NULL, NULL, NULL, 1, "
        "NULL, NULL, NULL), (" +
        p + "3, 999, 'Elsewhere', 'x', NULL, 1, 0, 0, 0, 1, '', '', '')");
    Db().Exec(
        "INSERT INTO tblActivityInstanceData (AIParameterID, FKActivityInstanceID, ParameterName, "
        "TextValue, NumericValue, DataType, `Attributes`, `Min`, `Max`, ParameterType, TaskIndex, "
        "LookupTypeCode, ListAttribute, Relevance) VALUES (" +
        t + "1, " + t + ", 'Approved', 'yes', NULL, 1, 0, 0, 0, 1, 0, '', '', ''), (" + t + "2, " +
        t + ", 'Approved', 'no', NULL, 1, 0, 0, 0, 1, 1, '', '', ''), (" + t + "3, " + t +
        ", 'Approved', 'n/a', NULL, 1, 0, 0, 0, 1, 2, '', '', '')");
  }

  // The case rows of the entity, as "name=text|number|resource|task".
  std::vector<std::string> CaseRows(int32_t entity, int32_t type) {
    std::vector<std::string> rows;
    auto list = Db().NewConnection()->Execute(
        "SELECT CONCAT_WS('|', CONCAT(ParameterName, '=', IFNULL(LEFT(TextValue, 12), 'NULL')), "
        "IFNULL(NumericValue, 'NULL'), IFNULL(DataType, 'NULL'), IFNULL(`Min`, 'NULL'), "
        "IFNULL(ResourceID, 'NULL'), IFNULL(ResourceName, 'NULL'), TaskIndex, FKProcInstanceID, "
        "IFNULL(LookupTypeCode, 'NULL'), IFNULL(ListAttribute, 'NULL')) AS r FROM "
        "tblPIReleventData WHERE EntityID = " +
        std::to_string(entity) + " AND EntityType = " + std::to_string(type) +
        " ORDER BY ParameterName, TaskIndex, PIReleventDataID");
    while (list->GetNext()) rows.push_back(list->CurrentItem()->GetValue("r").ToText());
    return rows;
  }

  // The case rows of this test's case that meet the condition.
  long long CaseCount(const std::string& condition = "1=1") {
    return Db().Count("tblPIReleventData",
                      "FKProcInstanceID = " + std::to_string(process_) + " AND " + condition);
  }

  int32_t process_ = 0, task_ = 0;
};

TEST_F(EngineCaseData, ProcessDataTakesTheResourceGiven) {
  EXPECT_FALSE(engine_->InsertCaseRelatedData(process_, process_, 0, 4, "ann", "user", "Ann's"));
  const std::string p = std::to_string(process_);
  EXPECT_EQ(CaseRows(process_, 0),
            (std::vector<std::string>{"Amount=|1250.5|2|0|ann|Ann's|4|" + p + "|money|",
                                      "Note=O'Brien \\ nn|NULL|1|NULL|ann|Ann's|4|" + p + "||"}));
  EXPECT_EQ(CaseCount("CHAR_LENGTH(TextValue) = 310"), 1);
  // A process without data copies nothing.
  EXPECT_FALSE(engine_->InsertCaseRelatedData(process_, AddProcess(), 0, 0, "", "", ""));
  EXPECT_EQ(CaseCount(), 2);
}

TEST_F(EngineCaseData, AllTasksTakeTheirWorkItemsResources) {
  EXPECT_FALSE(engine_->InsertCaseRelatedData(process_, task_, 5, -1, "ignored", "", ""));
  const std::string p = std::to_string(process_);
  // Task 2 has no work item and is not copied.
  EXPECT_EQ(CaseRows(task_, 5), (std::vector<std::string>{
                                    "Approved=yes|NULL|1|0|ann|Ann|0|" + p + "||",
                                    "Approved=no|NULL|1|0|bob|Bob|1|" + p + "||",
                                }));
}

TEST_F(EngineCaseData, OneTaskReplacesWhatEarlierRunsOfItsActivityLeft) {
  const int32_t earlier = AddActivityInstance(process_, "Review it");
  const int32_t other_activity = AddActivityInstance(
      ActivityInstanceFields(process_, AddActivity(definition_, "sign"), "Sign it"));
  const int32_t other_process = AddActivityInstance(AddProcess(), "Review it");
  for (int32_t entity : {earlier, other_activity, other_process}) {
    Db().Exec(
        "INSERT INTO tblActivityInstanceData (AIParameterID, FKActivityInstanceID, "
        "ParameterName, TextValue, DataType, `Attributes`, `Min`, `Max`, ParameterType, "
        "TaskIndex) VALUES (" +
        std::to_string(entity) + "9, " + std::to_string(entity) +
        ", 'Approved', 'old', 1, 0, 0, 0, 1, 0)");
    engine_->InsertCaseRelatedData(process_, entity, 5, 0, "old", "", "");
    engine_->InsertCaseRelatedData(process_, entity, 6, 0, "old", "", "");
  }
  ASSERT_EQ(CaseCount(), 6);

  // A task index without data copies nothing and removes nothing.
  engine_->InsertCaseRelatedData(process_, task_, 5, 7, "cy", "user", "Cy");
  EXPECT_EQ(CaseCount(), 6);

  EXPECT_FALSE(engine_->InsertCaseRelatedData(process_, task_, 5, 1, "cy", "user", "Cy"));
  EXPECT_EQ(CaseRows(task_, 5), (std::vector<std::string>{"Approved=no|NULL|1|0|cy|Cy|1|" +
                                                          std::to_string(process_) + "||"}));
  // Gone: the earlier run's rows of type 5. Kept: its rows of type 6, and
  // those of another activity and of another process.
  EXPECT_TRUE(CaseRows(earlier, 5).empty());
  EXPECT_EQ(CaseRows(earlier, 6).size(), 1u);
  EXPECT_EQ(CaseRows(other_activity, 5).size(), 1u);
  EXPECT_EQ(CaseRows(other_process, 5).size(), 1u);

  // Run twice, the task's own rows are doubled; nothing else changes.
  engine_->InsertCaseRelatedData(process_, task_, 5, 1, "cy", "user", "Cy");
  EXPECT_EQ(CaseRows(task_, 5).size(), 2u);
  EXPECT_EQ(CaseCount(), 6 - 1 + 2);
}

}  // namespace
}  // namespace orvtest
