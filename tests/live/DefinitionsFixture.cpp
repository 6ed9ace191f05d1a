#include "live/DefinitionsFixture.h"

#include <atomic>

namespace orvtest {

using orvmysql::Date;
using orvmysql::FieldArray;
using orvmysql::Variant;

std::string Show(const Variant& v) {
  return v.IsNull() ? "NULL" : v.ToText();
}

void DefinitionsTest::SetUp() {
  handler_ = Handler();
  definitions_ = Provider<orvmysql::IOrvDefinitionsDP>(handler_, 4);
  transitions_ = Provider<orvmysql::ITransitionsDP>(handler_, 5);
  switches_ = Provider<orvmysql::ISwitchesDP>(handler_, 6);
  activities_ = Provider<orvmysql::IActivitiesDP>(handler_, 7);
  parameters_ = Provider<orvmysql::IParameterValueDP>(handler_, 20);
  properties_ = Provider<orvmysql::IPropertyValueDP>(handler_, 23);
  process_params_ = Provider<orvmysql::IProcessParamsDP>(handler_, 24);
}

FieldArray DefinitionsTest::DefinitionFields(const std::string& name) {
  return {name,
          "Handles orders",
          3,
          Date::FromParts(2024, 3, 5, 14, 5, 9),
          Date::FromParts(2024, 3, 6, 8, 0, 0),
          "Ann Author",
          "",
          "u-17",
          "user",
          "",
          "",
          5,
          2,
          1,
          true,
          7,
          1,
          4,
          0,
          30,
          3,
          8,
          "<layout/>",
          ""};
}

FieldArray DefinitionsTest::ActivityFields(int32_t definition_id, const std::string& name,
                                           const std::string& identifier) {
  return {name, "Checks the order", 1,          0,  1,          2, 3, 4, 5, definition_id, 6,
          "",   "Please check",     identifier, 16, "{CLASS-1}"};
}

FieldArray DefinitionsTest::PropertyFields(int32_t activity_id, const std::string& name) {
  return {activity_id, name,  "", "The description", 2, "", 1, 0.5, 99.75, "<x/>", "", "high",
          "",          "a;b", 2};
}

FieldArray DefinitionsTest::ParameterAddFields(int32_t activity_id, const std::string& name) {
  return {activity_id, name, "", "42", 3, 4, -1.25, 10, 1, "", "map", "", "LT", "", 5};
}

FieldArray DefinitionsTest::ProcessParamFields(int32_t definition_id, const std::string& name) {
  return {definition_id, name, "", 1, "", 2, 1, 0, 2.5, 1, "", "rel", "", "list"};
}

FieldArray DefinitionsTest::SwitchFields(int32_t definition_id, int32_t type,
                                         const std::string& identifier) {
  return {type, identifier + " switch", definition_id, identifier};
}

FieldArray DefinitionsTest::TransitionFields(int32_t definition_id, int32_t from, int32_t from_type,
                                             int32_t to, int32_t to_type,
                                             const std::string& identifier) {
  return {from, from_type, to, to_type, "", definition_id, identifier};
}

std::string DefinitionsTest::Unique(const std::string& stem) {
  static std::atomic<int> counter{0};
  return stem + " " + std::to_string(++counter);
}

int32_t DefinitionsTest::AddDefinition(const std::string& name) {
  return AddDefinition(DefinitionFields(name));
}

int32_t DefinitionsTest::AddDefinition(const FieldArray& fields) {
  EXPECT_TRUE(definitions_->Add(fields));
  // Keys grow, so the newest row is the one just added.
  auto rows = definitions_->Load("ORDER BY ProcessDefID DESC LIMIT 1");
  if (!rows->GetNext()) throw std::runtime_error("definition not stored");
  return rows->CurrentItem()->GetValue("ProcessDefID").ToLong();
}

int32_t DefinitionsTest::AddActivity(int32_t definition_id, const std::string& identifier) {
  EXPECT_TRUE(activities_->Add(ActivityFields(definition_id, "Task " + identifier, identifier)));
  auto rows = activities_->GetActivitiesForProcess(definition_id);
  while (rows->GetNext()) {
    auto row = rows->CurrentItem();
    if (row->GetValue("ActivityProcDefID").ToText() == identifier) {
      return row->GetValue("ActivityID").ToLong();
    }
  }
  throw std::runtime_error("activity not stored: " + identifier);
}

std::vector<Expected> DefinitionsTest::Read(const std::shared_ptr<orvmysql::IListIterator>& rows,
                                            const std::vector<std::string>& columns) {
  std::vector<Expected> result;
  while (rows->GetNext()) {
    auto row = rows->CurrentItem();
    Expected texts;
    for (const auto& column : columns) texts[column] = Show(row->GetValue(column));
    result.push_back(std::move(texts));
  }
  return result;
}

void DefinitionsTest::ExpectOneRow(const std::shared_ptr<orvmysql::IListIterator>& rows,
                                   const Expected& expected) {
  std::vector<std::string> columns;
  for (const auto& [column, text] : expected) columns.push_back(column);
  const auto found = Read(rows, columns);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0], expected);
}

}  // namespace orvtest
