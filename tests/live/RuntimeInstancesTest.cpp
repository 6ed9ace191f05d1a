// Process instances, activity instances and work items in the database: trees
// of sub-processes, what the columns hold after Add and Update (NULL for empty
// optional texts, date-only columns, long texts kept whole), the lists by
// process and by task, deletes, missing rows, and input that writes nothing.
// The statement texts themselves are the unit tests' business.

#include <functional>
#include <regex>
#include <string>
#include <tuple>
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
  EXPECT_EQ(processes_->Load(Filter("", {Is("TreeID", tree)}))->Count(), 3);

  // A parent without a row: the INSERT fails and writes nothing.
  const long long before = Db().Count("tblProcessInstance");
  const orvmysql::Error e = Raised(
      [&] { processes_->Add(ProcessFields(Unique("orphan"), definition_, other_root + 1000)); });
  EXPECT_EQ(e.Number(), orvmysql::kErrDatabase);
  EXPECT_NE(e.Source().find("CProcInstanceDP: IProcInstanceDP_Add Function ("), std::string::npos);
  EXPECT_EQ(Db().Count("tblProcessInstance"), before);
}

TEST_F(RuntimeInstances, ProcessRowKeepsTextsAsGivenAndTheTimeOutWithoutItsTime) {
  const std::string guid = Unique("guid");
  const int32_t id = AddProcess(ProcessFields(guid, definition_, 0));
  ExpectOneRow(processes_->GetProcessByID(id), {{"ProcInstanceName", "Order 'A' \\ 1"},
                                                {"ScheduledStartTime", "2024-05-17 09:00:00"},
                                                {"ScheduledTimeOut", "2024-06-03"},
                                                {"CreatorType", "NULL"},
                                                {"GUID", guid},
                                                {"FKParentProcInstanceID", "0"},
                                                {"StartedOn", "NULL"},
                                                {"Note", "first note"}});

  // Empty optional texts become NULL, an empty name and GUID stay texts, a
  // long note is not cut, a long name is; the tree stays.
  const std::string tree = TreeOf(id);
  FieldArray fields = ProcessFields("", definition_, 0);
  fields[0] = "";
  fields[3] = "";
  fields[15] = std::string(70000, 'n');
  EXPECT_TRUE(processes_->Update(id, fields));
  ExpectOneRow(processes_->GetProcessByID(id), {{"ProcInstanceName", ""},
                                                {"CreatorID", "NULL"},
                                                {"GUID", ""},
                                                {"ScheduledTimeOut", "2024-06-03"}});
  EXPECT_EQ(TreeOf(id), tree);
  EXPECT_EQ(Column("tblProcessInstance", "CHAR_LENGTH(Note)", "ProcInstanceID", id), "70000");
  fields[0] = std::string(300, 'x');
  processes_->Update(id, fields);
  EXPECT_EQ(Column("tblProcessInstance", "CHAR_LENGTH(ProcInstanceName)", "ProcInstanceID", id),
            "255");
}

TEST_F(RuntimeInstances, ActivityInstanceKeepsTheTimeOutsTimeOnlyUntilUpdate) {
  const int32_t id = AddActivityInstance(AddProcess(), "Review it");
  ExpectOneRow(activity_instances_->GetTaskByID(id), {{"ScheduledTimeout", "2024-05-19 16:45:00"},
                                                      {"Max", "9"},
                                                      {"Min", "1"},
                                                      {"Threshold", "NULL"},
                                                      {"ExtendedAttributes", "<ext a='1'/>"},
                                                      {"ActivityNote", "NULL"},
                                                      {"ActivityName", "Task review"}});

  FieldArray fields = ActivityInstanceFields(AddProcess(), activity_, "");
  fields[13] = "";  // ActivityInstanceIndex: a text, never NULL
  fields[24] = std::string(300, 'n');
  EXPECT_TRUE(activity_instances_->Update(id, fields));
  ExpectOneRow(
      activity_instances_->GetTaskByID(id),
      {{"ScheduledTimeout", "2024-05-19"}, {"DisplayName", ""}, {"ActivityInstanceIndex", ""}});
  EXPECT_EQ(Column("tblActivityInstance", "CHAR_LENGTH(ActivityNote)", "ActivityInstanceID", id),
            "300");
}

TEST_F(RuntimeInstances, WorkItemIsListedByProcessAndByTask) {
  const int32_t process = AddProcess();
  const int32_t task = AddActivityInstance(process, "Review it");
  const int32_t other_task = AddActivityInstance(process, "Sign it");
  const int32_t id = AddWorkitem(process, task, "ann");
  ExpectOneRow(workitems_->GetWorkItemByID(id), {{"ResourceID", "ann"},
                                                 {"resourceName", "NULL"},
                                                 {"Note", "NULL"},
                                                 {"CreatedOn", "2024-05-17 09:06:00"},
                                                 {"ScheduledTimeout", "2024-05-21 12:00:00"},
                                                 {"FKActivityID", std::to_string(activity_)}});
  AddWorkitem(process, task, "bob");
  AddWorkitem(process, other_task, "ann");
  AddWorkitem(AddProcess(), AddActivityInstance(process, "Elsewhere"), "cy");
  EXPECT_EQ(workitems_->GetWorkItemsForAProcess(process)->Count(), 3);
  EXPECT_EQ(workitems_->GetWorkItemsForATask(task)->Count(), 2);

  FieldArray fields = WorkitemFields(process, other_task, "");
  fields[1] = orvmysql::Date::FromParts(2024, 5, 18, 7, 0, 0);
  fields[8] = std::string(300, 'n');
  EXPECT_TRUE(workitems_->Update(id, fields));
  ExpectOneRow(workitems_->GetWorkItemByID(id),
               {{"ResourceID", "NULL"}, {"CreatedOn", "2024-05-18 07:00:00"}});
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
}

TEST_F(RuntimeInstances, BadValuesWriteNothingAndUseUpNoKey) {
  const int32_t process = AddProcess();
  const int32_t task = AddActivityInstance(process, "Review it");
  auto snapshot = [] {
    return std::to_string(Db().Count("tblProcessInstance")) +
           std::to_string(Db().Count("tblActivityInstance")) +
           std::to_string(Db().Count("tblWorkitems")) +
           Db().Scalar("SELECT GROUP_CONCAT(LastAllocatedKey) FROM tblKeyGen") +
           Db().Scalar("SELECT GROUP_CONCAT(State) FROM tblProcessInstance");
  };
  auto with = [](FieldArray fields, std::size_t pos, const Variant& value) {
    fields[pos] = value;
    return fields;
  };
  const std::string injected = "1); DELETE FROM tblWorkitems; --";
  const FieldArray p = ProcessFields(Unique("guid"), definition_, process);
  const FieldArray a = ActivityInstanceFields(process, activity_, "x");
  const FieldArray w = WorkitemFields(process, task, "x");
  const std::vector<std::tuple<std::string, std::function<void()>, int32_t>> cases = {
      {"process parent", [&] { processes_->Add(with(p, 9, injected)); },
       orvmysql::kErrTypeMismatch},
      {"process state", [&] { processes_->Update(process, with(p, 5, "2 OR 1=1")); },
       orvmysql::kErrTypeMismatch},
      {"short process", [&] { processes_->Add(FieldArray(p.begin(), p.end() - 1)); },
       orvmysql::kErrSubscript},
      {"activity start", [&] { activity_instances_->Add(with(a, 1, "soon")); },
       orvmysql::kErrTypeMismatch},
      {"short activity", [&] { activity_instances_->Add(FieldArray(a.begin(), a.end() - 1)); },
       orvmysql::kErrSubscript},
      {"work item task", [&] { workitems_->Add(with(w, 9, injected)); },
       orvmysql::kErrTypeMismatch},
      {"short work item", [&] { workitems_->Add(FieldArray(w.begin(), w.end() - 1)); },
       orvmysql::kErrSubscript},
  };
  for (const auto& [what, call, error] : cases) {
    const std::string before = snapshot();
    EXPECT_EQ(ErrorOf(call), error) << what;
    EXPECT_EQ(snapshot(), before) << what;
  }
}

}  // namespace
}  // namespace orvtest
