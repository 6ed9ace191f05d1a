#include "runtime/BagValuesDP.h"

namespace orvmysql {

std::shared_ptr<IListIterator> BagValuesDP::DeclarationsWithValues(
    std::string_view location, const TemplateJoin& join, int32_t activity_id,
    int32_t activity_instance_id, const std::string& value_condition) {
  return detail::Guard({location}, [&] {
    std::string sql(join.head);
    if (activity_instance_id == -1) {
      sql += join.no_values;
      sql += join.declarations;
      sql += std::to_string(activity_id);
      return Rows(sql);
    }
    sql += join.values;
    sql += join.join;
    sql += value_condition;
    sql += ") WHERE tblActivityInstance.ActivityInstanceID = ";
    sql += std::to_string(activity_instance_id);
    if (activity_id != -1) {
      sql += join.and_activity;
      sql += std::to_string(activity_id);
    }
    return Rows(sql);
  });
}

}  // namespace orvmysql
