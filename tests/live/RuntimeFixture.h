#pragma once

// Shared by the live tests of the runtime providers: the three providers on
// the definition fixture's handler (a process instance needs a definition, an
// activity instance an activity), complete field arrays with recognisable
// values, adders that find the new row the way the engine does, and query
// documents.

#include <memory>
#include <string>

#include "live/DefinitionsFixture.h"
#include "orvmysql/Query.h"
#include "orvmysql/Runtime.h"

namespace orvtest {

class RuntimeTest : public DefinitionsTest {
 protected:
  void SetUp() override;

  // Field arrays holding every position (see the .cpp file for the values).
  static orvmysql::FieldArray ProcessFields(const std::string& guid, int32_t definition_id,
                                            int32_t parent_id);
  static orvmysql::FieldArray ActivityInstanceFields(int32_t process_id, int32_t activity_id,
                                                     const std::string& display_name);
  static orvmysql::FieldArray WorkitemFields(int32_t process_id, int32_t activity_instance_id,
                                             const std::string& resource);

  // Adds a row and returns its key: a process instance found by its GUID, an
  // activity instance by its process and display name, a work item by its
  // activity instance and resource.
  int32_t AddProcess(int32_t parent_id = 0);
  int32_t AddProcess(const orvmysql::FieldArray& fields);
  int32_t AddActivityInstance(int32_t process_id, const std::string& display_name);
  int32_t AddActivityInstance(const orvmysql::FieldArray& fields);
  int32_t AddWorkitem(int32_t process_id, int32_t activity_instance_id,
                      const std::string& resource);
  int32_t AddWorkitem(const orvmysql::FieldArray& fields);

  // The stored TreeID of a process instance ("" when none).
  static std::string TreeOf(int32_t process_id);
  // One column of one row, read directly ("NULL" for a NULL).
  static std::string Column(const std::string& table, const std::string& column,
                            const std::string& key, int32_t id);

  // A query document: all conditions joined by AND, optional sort key.
  static std::string Filter(const std::string& entity,
                            std::vector<std::shared_ptr<orvmysql::CCondition>> conditions,
                            const std::string& sort_key = {},
                            orvmysql::SortOrderEnum order = orvmysql::dsAscending);
  static std::shared_ptr<orvmysql::CCondition> Is(const std::string& attribute,
                                                  orvmysql::Variant value);

  int32_t definition_ = 0;
  int32_t activity_ = 0;  // an activity of the definition, named "Task review"
  std::shared_ptr<orvmysql::IProcInstanceDP> processes_;
  std::shared_ptr<orvmysql::IActivityInstanceDP> activity_instances_;
  std::shared_ptr<orvmysql::IWorkitemsDP> workitems_;
};

}  // namespace orvtest
