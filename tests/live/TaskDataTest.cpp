// Parameter values of tasks, per activity instance and task index, and
// property values of activity instances, each read beside the bag of the
// instance's activity: other instances of the activity, other task indexes
// and other activities with the same names keep their values to themselves.

#include <string>
#include <vector>

#include "live/InstanceDataFixture.h"

namespace orvtest {
namespace {

using orvmysql::FieldArray;
using Lines = std::vector<std::string>;

constexpr int32_t kText = 1;
constexpr int32_t kNumber = 2;

class TaskData : public InstanceDataTest {
 protected:
  void SetUp() override {
    InstanceDataTest::SetUp();
    const int32_t definition = AddDefinition(Unique("Tasks"));
    review_ = AddActivity(definition, Unique("review"));
    other_ = AddActivity(definition, Unique("other"));
    for (const std::string name : {"Approved", "Comment", "Score"}) {
      parameters_->Add(ParameterAddFields(review_, name));
    }
    parameters_->Add(ParameterAddFields(other_, "Approved"));
    for (const std::string name : {"Performer", "DueDays"}) {
      properties_->Add(PropertyFields(review_, name));
    }
    properties_->Add(PropertyFields(other_, "Performer"));
    const int32_t process = StartCase(definition);
    first_ = Enter(process, review_);
    second_ = Enter(process, review_);
    elsewhere_ = Enter(process, other_);
  }

  static Lines Parameters(const std::shared_ptr<orvmysql::IListIterator>& rows) {
    return RowLines(rows, "ParameterName", {"TextValue", "NumericValue", "TaskIndex"});
  }
  static Lines Properties(const std::shared_ptr<orvmysql::IListIterator>& rows) {
    return RowLines(rows, "PropertyName", {"Value", "DefaultValue"});
  }
  static FieldArray Property(int32_t activity_instance_id, const std::string& name,
                             const std::string& value) {
    return {activity_instance_id, name, value, kText, 5, 0, 0, "", "", "", "case"};
  }

  int32_t review_ = 0, other_ = 0;
  int32_t first_ = 0, second_ = 0, elsewhere_ = 0;
};

TEST_F(TaskData, EachTaskReadsItsOwnValuesBesideTheBag) {
  const int32_t approved = tasks_->Add(TaskValue(first_, 0, "Approved", "yes", kText));
  ASSERT_GT(approved, 0);
  tasks_->Add(TaskValue(first_, 0, "Score", "3", kNumber));
  tasks_->Add(TaskValue(first_, 1, "Approved", "no", kText));
  tasks_->Add(TaskValue(second_, 0, "Approved", "maybe", kText));
  tasks_->Add(TaskValue(second_, 0, "Comment", "see notes", kText));
  tasks_->Add(TaskValue(elsewhere_, 0, "Approved", "elsewhere", kText));

  EXPECT_EQ(Parameters(tasks_->GetParameterForTask(first_, 0)),
            (Lines{"Approved=yes|NULL|0", "Comment=NULL|NULL|NULL", "Score=NULL|3|0"}));
  EXPECT_EQ(Parameters(tasks_->GetParameterForTask(first_, 1)),
            (Lines{"Approved=no|NULL|1", "Comment=NULL|NULL|NULL", "Score=NULL|NULL|NULL"}));
  EXPECT_EQ(Parameters(tasks_->GetParameterForTask(second_, 0)),
            (Lines{"Approved=maybe|NULL|0", "Comment=see notes|NULL|0", "Score=NULL|NULL|NULL"}));
  const Lines nothing = {"Approved=NULL|NULL|NULL", "Comment=NULL|NULL|NULL",
                         "Score=NULL|NULL|NULL"};
  EXPECT_EQ(Parameters(tasks_->GetParameterForTask(first_, 7)), nothing);
  EXPECT_EQ(Parameters(tasks_->GetParameterForTask(elsewhere_, 0)),
            Lines{"Approved=elsewhere|NULL|0"});
  EXPECT_EQ(Parameters(tasks_->LoadTaskParams(review_, -1, 0)), nothing);
  EXPECT_EQ(Parameters(tasks_->LoadTaskParams(-1, first_, 1)),
            Parameters(tasks_->GetParameterForTask(first_, 1)));
  EXPECT_EQ(Parameters(tasks_->LoadTaskParams(review_, second_, 0)),
            Parameters(tasks_->GetParameterForTask(second_, 0)));
  EXPECT_TRUE(Parameters(tasks_->LoadTaskParams(other_, first_, 0)).empty());

  ExpectOneRow(tasks_->GetParameterByID(approved), {{"AIParameterID", std::to_string(approved)},
                                                    {"ActivityInstanceID", std::to_string(first_)},
                                                    {"FKActivityID", std::to_string(review_)},
                                                    {"DefaultValue", "42"},
                                                    {"TemplateAttributes", "4"},
                                                    {"Attributes", "6"},
                                                    {"Mapping", "map"},
                                                    {"TextValue", "yes"}});
  EXPECT_EQ(Parameters(tasks_->Load("WHERE tblActivityInstanceData.TaskIndex = 1")),
            Lines{"Approved=no|NULL|1"});
  EXPECT_TRUE(tasks_->ParameterExist("Approved", first_, 1));
  EXPECT_FALSE(tasks_->ParameterExist("Comment", first_, 0));
  EXPECT_TRUE(tasks_->ParameterExist("Comment", second_, 0));
}

TEST_F(TaskData, UpdateAndDeleteTaskValues) {
  const int32_t yes = tasks_->Add(TaskValue(first_, 0, "Approved", "yes", kText));
  tasks_->Add(TaskValue(first_, 1, "Approved", "no", kText));
  tasks_->Add(TaskValue(second_, 0, "Approved", "maybe", kText));
  EXPECT_TRUE(tasks_->Update(yes, TaskValue(first_, 2, "Approved", "  ", kText)));
  EXPECT_FALSE(tasks_->Update(999999, TaskValue(first_, 2, "Approved", "x", kText)));
  EXPECT_EQ(Parameters(tasks_->GetParameterByID(yes)), Lines{"Approved=NULL|NULL|2"});
  EXPECT_TRUE(tasks_->Delete(yes, 0));
  EXPECT_TRUE(Parameters(tasks_->GetParameterByID(yes)).empty());
  // Every value of the activity instance goes, whatever its task index.
  tasks_->Add(TaskValue(first_, 3, "Score", "1", kNumber));
  EXPECT_TRUE(tasks_->Delete(0, first_));
  EXPECT_EQ(
      Db().Count("tblActivityInstanceData", "FKActivityInstanceID = " + std::to_string(first_)), 0);
  EXPECT_EQ(
      Db().Count("tblActivityInstanceData", "FKActivityInstanceID = " + std::to_string(second_)),
      1);
}

TEST_F(TaskData, PropertyValuesBesideThePropertyBag) {
  const int32_t performer = task_properties_->Add(Property(first_, "Performer", "ann"));
  ASSERT_GT(performer, 0);
  task_properties_->Add(Property(second_, "DueDays", "3"));
  task_properties_->Add(Property(elsewhere_, "Performer", "carl"));

  // The bag's own value of a property is its DefaultValue here (empty: NULL).
  EXPECT_EQ(Properties(task_properties_->GetPropertiesForInstance(first_)),
            (Lines{"DueDays=NULL|NULL", "Performer=ann|NULL"}));
  EXPECT_EQ(Properties(task_properties_->GetPropertiesForInstance(second_)),
            (Lines{"DueDays=3|NULL", "Performer=NULL|NULL"}));
  EXPECT_EQ(Properties(task_properties_->LoadInstanceProperties(review_, -1)),
            (Lines{"DueDays=NULL|NULL", "Performer=NULL|NULL"}));
  EXPECT_EQ(Properties(task_properties_->LoadInstanceProperties(-1, elsewhere_)),
            Lines{"Performer=carl|NULL"});
  EXPECT_TRUE(Properties(task_properties_->LoadInstanceProperties(other_, first_)).empty());
  ExpectOneRow(task_properties_->GetPropertyByID(performer),
               {{"AIPropertyID", std::to_string(performer)},
                {"PropertyDescription", "The description"},
                {"Relevance", "high"},
                {"Value", "ann"},
                {"Attributes", "5"},
                {"TemplateAttributes", "1"}});
  EXPECT_TRUE(task_properties_->PropertyExist("Performer", first_));
  EXPECT_FALSE(task_properties_->PropertyExist("DueDays", first_));

  EXPECT_TRUE(task_properties_->Update(performer, Property(first_, "Performer", "bob")));
  EXPECT_EQ(Properties(task_properties_->Load("WHERE tblAIPropertyData.AIPropertyID = " +
                                              std::to_string(performer))),
            Lines{"Performer=bob|NULL"});
  EXPECT_TRUE(task_properties_->Delete(performer, 0));
  EXPECT_TRUE(task_properties_->Delete(0, second_));
  EXPECT_EQ(Db().Count("tblAIPropertyData", "FKActivityInstanceID IN (" + std::to_string(first_) +
                                                "," + std::to_string(second_) + ")"),
            0);
  EXPECT_EQ(Properties(task_properties_->GetPropertiesForInstance(elsewhere_)),
            Lines{"Performer=carl|NULL"});
}

}  // namespace
}  // namespace orvtest
