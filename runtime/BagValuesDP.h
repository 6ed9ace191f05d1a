#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "access/TableProvider.h"

namespace orvmysql {

// The reads shared by the providers of activity-instance values: the
// declarations in a bag of the instance's activity, each beside the value the
// instance holds for it.
class BagValuesDP : public TableProvider {
 public:
  // The pieces of one bag's template join.
  struct TemplateJoin {
    std::string_view head;       // "SELECT " and the declaration's columns
    std::string_view values;     // "," and the value columns
    std::string_view no_values;  // "," and the value columns' names as NULL
    // " FROM <bag> WHERE <bag>.FKActivityID = "
    std::string_view declarations;
    // The FROM clause up to the end of the value join's ON condition, which
    // matches the value's name and activity instance.
    std::string_view join;
    // " AND <bag>.FKActivityID = "
    std::string_view and_activity;
  };

 protected:
  // Under the location text: one row per declaration of the bag. With activity_instance_id -1 the
  // declarations of activity_id with NULL value columns; otherwise those of
  // the instance's activity (and of activity_id unless it is -1) with the
  // instance's values that also meet value_condition (" AND ..." or empty).
  std::shared_ptr<IListIterator> DeclarationsWithValues(std::string_view location,
                                                        const TemplateJoin& join,
                                                        int32_t activity_id,
                                                        int32_t activity_instance_id,
                                                        const std::string& value_condition = {});
};

}  // namespace orvmysql
