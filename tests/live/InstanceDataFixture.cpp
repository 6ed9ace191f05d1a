#include "live/InstanceDataFixture.h"

#include <algorithm>

namespace orvtest {

using orvmysql::FieldArray;
using orvmysql::Variant;

void InstanceDataTest::SetUp() {
  RuntimeTest::SetUp();
  values_ = Provider<orvmysql::IProcInstanceParamsDP>(handler_, orvmysql::kDsProcInstData);
  cases_ = Provider<orvmysql::IParameterValueDP>(handler_, orvmysql::kDsPIReleventData);
  tasks_ = Provider<orvmysql::ITaskParamsDP>(handler_, orvmysql::kDsActivityInstanceData);
  task_properties_ = Provider<orvmysql::ITaskPropertyDP>(handler_, orvmysql::kDsAIPropertyData);
}

int32_t InstanceDataTest::StartCase(int32_t definition_id) {
  return AddProcess(ProcessFields(Unique("guid"), definition_id, 0));
}

int32_t InstanceDataTest::Enter(int32_t process_id, int32_t activity_id) {
  return AddActivityInstance(ActivityInstanceFields(process_id, activity_id, Unique("step")));
}

void InstanceDataTest::Declare(int32_t definition_id, const std::string& name, int32_t data_type) {
  ASSERT_GT(process_params_->Add({definition_id, name, name + " shown", data_type, "", 2, 1, 0,
                                  5000, 1, "", "", "", ""}),
            0);
}

FieldArray InstanceDataTest::Value(int32_t owner_id, const std::string& name, const Variant& value,
                                   int32_t data_type) {
  return {owner_id, name, value, data_type, 6, 0.5, 99.75, 1, "", "", "case"};
}

FieldArray InstanceDataTest::TaskValue(int32_t activity_instance_id, int32_t task_index,
                                       const std::string& name, const Variant& value,
                                       int32_t data_type) {
  return {
      activity_instance_id, name, value, data_type, 6, 0.5, 99.75, 1, "", "", "case", task_index};
}

int32_t InstanceDataTest::KeyOf(const std::string& table, const std::string& key,
                                const std::string& owner, int32_t owner_id,
                                const std::string& name_column, const std::string& name) {
  return std::stoi(Db().Scalar("SELECT " + key + " FROM " + table + " WHERE " + owner + " = " +
                               std::to_string(owner_id) + " AND " + name_column + " = '" + name +
                               "'"));
}

std::vector<std::string> InstanceDataTest::RowLines(
    const std::shared_ptr<orvmysql::IListIterator>& rows, const std::string& name_column,
    const std::vector<std::string>& value_columns) {
  std::vector<std::string> columns = value_columns;
  columns.push_back(name_column);
  std::vector<std::string> lines;
  for (const Expected& row : Read(rows, columns)) {
    std::string line = row.at(name_column) + "=";
    for (std::size_t i = 0; i < value_columns.size(); ++i) {
      line += (i > 0 ? "|" : "") + row.at(value_columns[i]);
    }
    lines.push_back(std::move(line));
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::vector<std::string> InstanceDataTest::ValueLines(
    const std::shared_ptr<orvmysql::IListIterator>& rows) {
  return RowLines(rows, "ParameterName", {"TextValue", "NumericValue"});
}

}  // namespace orvtest
