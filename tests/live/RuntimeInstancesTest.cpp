// Process instances, activity instances and work items written through the
// providers and read back column by column: trees of sub-processes, the
// positions of each field array, NULL for empty optional texts, date-only
// columns, rewrites, deletes, missing rows, and input that must write nothing.

#include <functional>
#include <regex>
#include <string>
#include <vector>

#include "live/RuntimeFixture.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;
using orvmysql::Variant;

class RuntimeInstances : public RuntimeTest {};

TEST_F(RuntimeInstances, SubProcessesShareTheTreeOfTheirRoot) {
  const int32_t root = AddProcess(0);
  const int32_t child = AddProcess(root);
  const int32_t grandchild = AddProcess(child);
  const int32_t other_root = AddProcess(-1);

  const std::string tree = TreeOf(root);
  EXPECT_TRUE(std::regex_match(tree, std::regex("[0-9A-F]{32}"))) << tree;
  EXPECT_EQ(TreeOf(child), tree);
  EXPECT_EQ(TreeOf(grandchild), tree);
  EXPECT_NE(TreeOf(other_root), tree);
  EXPECT_EQ(Read(processes_->Load(Filter("", {Is("TreeID", tree)}, "ProcInstanceID")),
                 {"ProcInstanceID", "FKParentProcInstanceID"}),
            (std::vector<Expected>{
                {{"ProcInstanceID", std::to_string(root)}, {"FKParentProcInstanceID", "0"}},
                {{"ProcInstanceID", std::to_string(child)},
                 {"FKParentProcInstanceID", std::to_string(root)}},
                {{"ProcInstanceID", std::to_string(grandchild)},
                 {"FKParentProcInstanceID", std::to_string(child)}}}));

  // A parent without a row: the INSERT fails and writes nothing.
  const long long before = Db().Count("tblProcessInstance");
  const orvmysql::Error e = Raised(
      [&] { processes_->Add(ProcessFields(Unique("orphan"), definition_, other_root + 1000)); });
  EXPECT_EQ(e.Number(), orvmysql::kErrDatabase);
  EXPECT_NE(e.Source().find("CProcInstanceDP: IProcInstanceDP_Add Function ("), std::string::npos);
  EXPECT_EQ(Db().Count("tblProcessInstance"), before);
}

TEST_F(RuntimeInstances, ProcessRowKeepsEveryPositionAndTheTimeOutLosesItsTime) {
  const std::string guid = Unique("guid");
  const int32_t id = AddProcess(ProcessFields(guid, definition_, 0));
  const Expected written = {{"ProcInstanceName", "Order 'A' \\ 1"},
                            {"FKProcDefID", std::to_string(definition_)},
                            {"ScheduledStartTime", "2024-05-17 09:00:00"},
                            {"ScheduledEndTime", "2024-05-31 18:00:00"},
                            {"ScheduledTimeOut", "2024-06-03"},
                            {"CreatorID", "u-7"},
                            {"CreatorType", "NULL"},
                            {"CreatorName", "Ann"},
                            {"State", "67108864"},
                            {"Priority", "3"},
                            {"GUID", guid},
                            {"FKParentProcInstanceID", "0"},
                            {"CreatedOn", "2024-05-17 08:59:00"},
                            {"StartedOn", "NULL"},
                            {"FinishedOn", "NULL"},
                            {"Note", "first note"}};
  ExpectOneRow(processes_->GetProcessByID(id), written);

  // Update rewrites every position but the tree; empty optional texts become
  // NULL, an empty name and GUID stay texts, long notes are not cut.
  const std::string tree = TreeOf(id);
  FieldArray fields = ProcessFields("", definition_, 0);
  fields[0] = "";
  fields[3] = "";
  fields[5] = 134217729;
  fields[11] = "";
  fields[13] = orvmysql::Date::FromParts(2024, 5, 17, 9, 1, 0);
  fields[15] = std::string(70000, 'n');
  EXPECT_TRUE(processes_->Update(id, fields));
  ExpectOneRow(processes_->GetProcessByID(id), {{"ProcInstanceName", ""},
                                                {"CreatorID", "NULL"},
                                                {"CreatorName", "NULL"},
                                                {"State", "134217729"},
                                                {"GUID", ""},
                                                {"ScheduledTimeOut", "2024-06-03"},
                                                {"StartedOn", "2024-05-17 09:01:00"}});
  EXPECT_EQ(TreeOf(id), tree);
  EXPECT_EQ(Column("tblProcessInstance", "CHAR_LENGTH(Note)", "ProcInstanceID", id), "70000");

  fields[0] = std::string(300, 'x');
  fields[15] = "";
  processes_->Update(id, fields);
  EXPECT_EQ(Column("tblProcessInstance", "CHAR_LENGTH(ProcInstanceName)", "ProcInstanceID", id),
            "255");
  EXPECT_EQ(Column("tblProcessInstance", "Note", "ProcInstanceID", id), "NULL");
}

TEST_F(RuntimeInstances, ActivityInstanceKeepsEveryPositionAndUpdateDropsTheTimeOutsTime) {
  const int32_t process = AddProcess();
  const int32_t id = AddActivityInstance(process, "Review it");
  ExpectOneRow(activity_instances_->GetTaskByID(id), {{"ActivityInstanceID", std::to_string(id)},
                                                      {"State", "67108864"},
                                                      {"ScheduledStartTime", "2024-05-17 09:05:00"},
                                                      {"ScheduledTimeout", "2024-05-19 16:45:00"},
                                                      {"DisplayName", "Review it"},
                                                      {"FKActivityID", std::to_string(activity_)},
                                                      {"FKProcInstanceID", std::to_string(process)},
                                                      {"ActivityHandlerType", "6"},
                                                      {"ActivityType", "7"},
                                                      {"Max", "9"},
                                                      {"Min", "1"},
                                                      {"Threshold", "NULL"},
                                                      {"Trigger", "11"},
                                                      {"ExtendedAttributes", "<ext a='1'/>"},
                                                      {"ActivityInstanceIndex", "0"},
                                                      {"ResourceSet", "NULL"},
                                                      {"FKSplitInstanceID", "15"},
                                                      {"FKPathInstanceID", "16"},
                                                      {"FKThreadInstanceID", "thread-1"},
                                                      {"FKActivityProcDefID", "review"},
                                                      {"ScheduledEndTime", "2024-05-20 17:00:00"},
                                                      {"CreatedOn", "2024-05-17 09:04:00"},
                                                      {"StartedOn", "NULL"},
                                                      {"FinishedOn", "NULL"},
                                                      {"Priority", "2"},
                                                      {"ActivityNote", "NULL"},
                                                      {"ActivityName", "Task review"}});

  FieldArray fields = ActivityInstanceFields(process, activity_, "");
  fields[8] = "";    // Max
  fields[10] = "3";  // Threshold
  fields[13] = "";   // ActivityInstanceIndex: a text, never NULL
  fields[24] = std::string(300, 'n');
  EXPECT_TRUE(activity_instances_->Update(id, fields));
  ExpectOneRow(activity_instances_->GetTaskByID(id), {{"ScheduledTimeout", "2024-05-19"},
                                                      {"DisplayName", ""},
                                                      {"Max", "NULL"},
                                                      {"Threshold", "3"},
                                                      {"ActivityInstanceIndex", ""}});
  EXPECT_EQ(Column("tblActivityInstance", "CHAR_LENGTH(ActivityNote)", "ActivityInstanceID", id),
            "300");
}

TEST_F(RuntimeInstances, WorkItemKeepsEveryPositionAndIsListedByProcessAndByTask) {
  const int32_t process = AddProcess();
  const int32_t task = AddActivityInstance(process, "Review it");
  const int32_t other_task = AddActivityInstance(process, "Sign it");
  const int32_t id = AddWorkitem(process, task, "ann");
  const Expected written = {{"WorkitemID", std::to_string(id)},
                            {"ResourceID", "ann"},
                            {"ResourceType", "user"},
                            {"ResourceName", "NULL"},
                            {"Subject", "Review order"},
                            {"Note", "NULL"},
                            {"State", "67108864"},
                            {"FKActivityInstanceID", std::to_string(task)},
                            {"WorkitemActivityInstanceType", "14"},
                            {"FKProcInstanceID", std::to_string(process)},
                            {"AcknowledgedOn", "NULL"},
                            {"FinishedOn", "NULL"},
                            {"CreatedOn", "2024-05-17 09:06:00"},
                            {"StartedOn", "NULL"},
                            {"TaskIndex", "1"},
                            {"Priority", "4"},
                            {"ScheduledStartTime", "2024-05-17 10:00:00"},
                            {"ScheduledEndTime", "NULL"},
                            {"ScheduledTimeout", "2024-05-21 12:00:00"},
                            {"DisplayMask", "8"},
                            {"FKActivityID", std::to_string(activity_)}};
  ExpectOneRow(workitems_->GetWorkItemByID(id), written);

  AddWorkitem(process, task, "bob");
  AddWorkitem(process, other_task, "ann");
  AddWorkitem(AddProcess(), AddActivityInstance(process, "Elsewhere"), "cy");
  EXPECT_EQ(workitems_->GetWorkItemsForAProcess(process)->Count(), 3);
  EXPECT_EQ(workitems_->GetWorkItemsForATask(task)->Count(), 2);

  // Update writes CreatedOn from position 1 too; a long note is not cut.
  FieldArray fields = WorkitemFields(process, other_task, "");
  fields[1] = orvmysql::Date::FromParts(2024, 5, 18, 7, 0, 0);
  fields[5] = "";
  fields[8] = std::string(300, 'n');
  EXPECT_TRUE(workitems_->Update(id, fields));
  ExpectOneRow(workitems_->GetWorkItemByID(id),
               {{"ResourceID", "NULL"},
                {"ResourceType", "NULL"},
                {"CreatedOn", "2024-05-18 07:00:00"},
                {"FKActivityInstanceID", std::to_string(other_task)}});
  EXPECT_EQ(Column("tblWorkitems", "CHAR_LENGTH(Note)", "WorkitemID", id), "300");
  EXPECT_EQ(workitems_->GetWorkItemsForATask(task)->Count(), 1);
}

TEST_F(RuntimeInstances, DeleteRemovesOneRowAndMissingRowsGiveFalseTrueAndZero) {
  const int32_t process = AddProcess();
  const int32_t child = AddProcess(process);
  const int32_t task = AddActivityInstance(process, "Review it");
  const int32_t item = AddWorkitem(process, task, "ann");
  const int32_t other_item = AddWorkitem(process, task, "bob");

  EXPECT_TRUE(workitems_->Delete(item));
  EXPECT_EQ(workitems_->GetWorkItemByID(item)->Count(), 0);
  EXPECT_EQ(workitems_->GetCurrentState(other_item), 67108864);
  EXPECT_TRUE(activity_instances_->Delete(task));
  EXPECT_EQ(Db().Count("tblWorkitems", "WorkitemID = " + std::to_string(other_item)), 1);
  EXPECT_TRUE(processes_->Delete(process));
  EXPECT_EQ(processes_->GetCurrentState(child), 67108864);

  const int32_t missing = process + 100000;
  EXPECT_FALSE(processes_->ChangeWIState(missing, 0, 1, true));
  EXPECT_TRUE(processes_->Delete(missing));
  EXPECT_EQ(processes_->GetCurrentState(missing), 0);
  EXPECT_FALSE(activity_instances_->ChangeAIState(missing, 0, 1, true, "n"));
  EXPECT_TRUE(activity_instances_->Delete(missing));
  EXPECT_EQ(activity_instances_->GetCurrentState(missing), 0);
  EXPECT_FALSE(workitems_->ChangeWorkitemState(missing, 0, 1, true));
  EXPECT_TRUE(workitems_->Delete(missing));
  EXPECT_EQ(workitems_->GetCurrentState(missing), 0);
  EXPECT_TRUE(processes_->Update(missing, ProcessFields("g", definition_, 0)));
}

TEST_F(RuntimeInstances, BadValuesWriteNothingAndUseUpNoKey) {
  const int32_t process = AddProcess();
  const int32_t task = AddActivityInstance(process, "Review it");
  const int32_t item = AddWorkitem(process, task, "ann");
  auto snapshot = [] {
    std::string text;
    for (const char* table : {"tblProcessInstance", "tblActivityInstance", "tblWorkitems"}) {
      text += std::to_string(Db().Count(table)) + " ";
    }
    return text +
           Db().Scalar(
               "SELECT GROUP_CONCAT(LastAllocatedKey ORDER BY EntityTypeCode) FROM "
               "tblKeyGen") +
           Db().Scalar("SELECT GROUP_CONCAT(State, ProcInstanceName) FROM tblProcessInstance") +
           Db().Scalar("SELECT GROUP_CONCAT(FKProcInstanceID) FROM tblActivityInstance") +
           Db().Scalar("SELECT GROUP_CONCAT(FKActivityInstanceID) FROM tblWorkitems");
  };
  auto with = [](FieldArray fields, std::size_t pos, const Variant& value) {
    fields[pos] = value;
    return fields;
  };
  auto shorter = [](FieldArray fields) {
    fields.pop_back();
    return fields;
  };
  const std::string injected = "1); DELETE FROM tblWorkitems; --";
  const FieldArray p = ProcessFields(Unique("guid"), definition_, 0);
  const FieldArray a = ActivityInstanceFields(process, activity_, "x");
  const FieldArray w = WorkitemFields(process, task, "x");
  const int32_t mismatch = orvmysql::kErrTypeMismatch;
  const int32_t subscript = orvmysql::kErrSubscript;
  const std::vector<std::tuple<std::string, std::function<void()>, int32_t>> cases = {
      {"process definition", [&] { processes_->Add(with(p, 1, injected)); }, mismatch},
      {"process parent", [&] { processes_->Add(with(p, 9, "0 OR 1=1")); }, mismatch},
      {"process state", [&] { processes_->Update(process, with(p, 5, "2 OR 1=1")); }, mismatch},
      {"process name", [&] { processes_->Add(with(p, 0, orvmysql::Null)); },
       orvmysql::kErrInvalidUseOfNull},
      {"short process", [&] { processes_->Add(shorter(p)); }, subscript},
      {"activity start", [&] { activity_instances_->Add(with(a, 1, "soon")); }, mismatch},
      {"activity process", [&] { activity_instances_->Update(task, with(a, 5, injected)); },
       mismatch},
      {"short activity", [&] { activity_instances_->Add(shorter(a)); }, subscript},
      {"work item mask", [&] { workitems_->Add(with(w, 18, "8 OR 1=1")); }, mismatch},
      {"work item task", [&] { workitems_->Update(item, with(w, 9, injected)); }, mismatch},
      {"short work item", [&] { workitems_->Update(item, shorter(w)); }, subscript},
  };
  for (const auto& [what, call, error] : cases) {
    const std::string before = snapshot();
    EXPECT_EQ(ErrorOf(call), error) << what;
    EXPECT_EQ(snapshot(), before) << what;
  }
}

}  // namespace
}  // namespace orvtest
