#pragma once

// Shared by the live tests of the instance data: the four providers on the
// runtime fixture's handler, process and activity instances of a given
// definition and activity, value arrays, and readers that turn the
// template-join rows into "name=text|number" lines.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "live/RuntimeFixture.h"
#include "orvmysql/InstanceData.h"

namespace orvtest {

class InstanceDataTest : public RuntimeTest {
 protected:
  void SetUp() override;

  // A process instance of the definition, and an activity instance of the
  // activity in a process instance, added through their providers.
  int32_t StartCase(int32_t definition_id);
  int32_t Enter(int32_t process_id, int32_t activity_id);

  // A declaration of the definition: ParameterName name, DisplayName
  // name + " shown", the data type, Attributes 2 and Max 5000.
  void Declare(int32_t definition_id, const std::string& name, int32_t data_type);

  // A value array for IProcInstanceParamsDP (and, with a task index,
  // ITaskParamsDP): Attributes 6, Min 0.5, Max 99.75, ParameterType 1,
  // Relevance "case".
  static orvmysql::FieldArray Value(int32_t owner_id, const std::string& name,
                                    const orvmysql::Variant& value, int32_t data_type);
  static orvmysql::FieldArray TaskValue(int32_t activity_instance_id, int32_t task_index,
                                        const std::string& name, const orvmysql::Variant& value,
                                        int32_t data_type);

  // The key of the one value row of the owner with this name, read directly.
  static int32_t KeyOf(const std::string& table, const std::string& key, const std::string& owner,
                       int32_t owner_id, const std::string& name_column, const std::string& name);

  // Rows as sorted lines "name=column|column...", from the named name column
  // and value columns; a name that comes twice shows twice.
  static std::vector<std::string> RowLines(const std::shared_ptr<orvmysql::IListIterator>& rows,
                                           const std::string& name_column,
                                           const std::vector<std::string>& value_columns);
  // The process values as "ParameterName=TextValue|NumericValue" lines.
  static std::vector<std::string> ValueLines(const std::shared_ptr<orvmysql::IListIterator>& rows);

  std::shared_ptr<orvmysql::IProcInstanceParamsDP> values_;
  std::shared_ptr<orvmysql::IParameterValueDP> cases_;
  std::shared_ptr<orvmysql::ITaskParamsDP> tasks_;
  std::shared_ptr<orvmysql::ITaskPropertyDP> task_properties_;
};

}  // namespace orvtest
