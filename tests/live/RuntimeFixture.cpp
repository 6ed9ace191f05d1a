#include "live/RuntimeFixture.h"

#include "support/RuntimeFields.h"

#include <stdexcept>

namespace orvtest {

using orvmysql::Date;
using orvmysql::FieldArray;
using orvmysql::Variant;

void RuntimeTest::SetUp() {
  DefinitionsTest::SetUp();
  processes_ = Provider<orvmysql::IProcInstanceDP>(handler_, orvmysql::kDsProcInstance);
  activity_instances_ =
      Provider<orvmysql::IActivityInstanceDP>(handler_, orvmysql::kDsActivityInstance);
  workitems_ = Provider<orvmysql::IWorkitemsDP>(handler_, orvmysql::kDsWorkitems);
  definition_ = AddDefinition(Unique("runtime"));
  activity_ = AddActivity(definition_, "review");
}

FieldArray RuntimeTest::ProcessFields(const std::string& guid, int32_t definition_id,
                                      int32_t parent_id) {
  return SampleProcessFields(guid, definition_id, parent_id);
}

FieldArray RuntimeTest::ActivityInstanceFields(int32_t process_id, int32_t activity_id,
                                               const std::string& display_name) {
  return {67108864,
          Date::FromParts(2024, 5, 17, 9, 5, 0),
          Date::FromParts(2024, 5, 19, 16, 45, 0),
          display_name,
          activity_id,
          process_id,
          6,
          7,
          "9",
          "1",
          "",
          11,
          "<ext a='1'/>",
          "0",
          "",
          15,
          16,
          "thread-1",
          "review",
          Date::FromParts(2024, 5, 20, 17, 0, 0),
          Date::FromParts(2024, 5, 17, 9, 4, 0),
          Variant(),
          Variant(),
          2,
          ""};
}

FieldArray RuntimeTest::WorkitemFields(int32_t process_id, int32_t activity_instance_id,
                                       const std::string& resource) {
  return SampleWorkitemFields(process_id, activity_instance_id, resource);
}

int32_t RuntimeTest::AddProcess(int32_t parent_id) {
  return AddProcess(ProcessFields(Unique("guid"), definition_, parent_id));
}

int32_t RuntimeTest::AddProcess(const FieldArray& fields) {
  EXPECT_TRUE(processes_->Add(fields));
  // Add hands back no key: the engine finds its instance by the GUID it gave.
  auto rows = processes_->Load(Filter("", {Is("GUID", fields.at(8))}));
  if (rows->Count() != 1) throw std::runtime_error("process instance not found by its GUID");
  rows->GetNext();
  return rows->CurrentItem()->GetValue("ProcInstanceID").ToLong();
}

int32_t RuntimeTest::AddActivityInstance(int32_t process_id, const std::string& display_name) {
  return AddActivityInstance(ActivityInstanceFields(process_id, activity_, display_name));
}

int32_t RuntimeTest::AddActivityInstance(const FieldArray& fields) {
  EXPECT_TRUE(activity_instances_->Add(fields));
  auto rows = activity_instances_->Load(
      Filter("", {Is("FKProcInstanceID", fields.at(5)), Is("DisplayName", fields.at(3))},
             "ActivityInstanceID", orvmysql::dsDescending));
  if (!rows->GetNext()) throw std::runtime_error("activity instance not stored");
  return rows->CurrentItem()->GetValue("ActivityInstanceID").ToLong();
}

int32_t RuntimeTest::AddWorkitem(int32_t process_id, int32_t activity_instance_id,
                                 const std::string& resource) {
  return AddWorkitem(WorkitemFields(process_id, activity_instance_id, resource));
}

int32_t RuntimeTest::AddWorkitem(const FieldArray& fields) {
  EXPECT_TRUE(workitems_->Add(fields));
  auto rows = workitems_->Load(
      Filter("", {Is("FKActivityInstanceID", fields.at(9)), Is("ResourceID", fields.at(4))},
             "WorkitemID", orvmysql::dsDescending));
  if (!rows->GetNext()) throw std::runtime_error("work item not stored");
  return rows->CurrentItem()->GetValue("WorkitemID").ToLong();
}

std::string RuntimeTest::TreeOf(int32_t process_id) {
  return Db().Scalar("SELECT TreeID FROM tblProcessInstance WHERE ProcInstanceID = " +
                     std::to_string(process_id));
}

std::string RuntimeTest::Column(const std::string& table, const std::string& column,
                                const std::string& key, int32_t id) {
  return Db().Scalar("SELECT IFNULL(" + column + ", 'NULL') FROM " + table + " WHERE " + key +
                     " = " + std::to_string(id));
}

std::string RuntimeTest::Filter(const std::string& entity,
                                std::vector<std::shared_ptr<orvmysql::CCondition>> conditions,
                                const std::string& sort_key, orvmysql::SortOrderEnum order) {
  orvmysql::CQuery query;
  query.SetEntityName(entity);
  if (!conditions.empty()) {
    auto criteria = std::make_shared<orvmysql::CConditionExpression>(orvmysql::dloAnd);
    for (auto& c : conditions) criteria->Conditions()->Add(c);
    query.SetCriteria(criteria);
  }
  if (!sort_key.empty()) {
    query.OrderBy()->Add(std::make_shared<orvmysql::COrderExpression>(sort_key, order));
  }
  return query.ToXML();
}

std::shared_ptr<orvmysql::CCondition> RuntimeTest::Is(const std::string& attribute, Variant value) {
  return std::make_shared<orvmysql::CCondition>(attribute, orvmysql::dcoEqualto, std::move(value));
}

}  // namespace orvtest
