#include "access/QueryHelper.h"

#include <string>

#include "access/ErrorHandling.h"

namespace orvmysql {

bool Exists(IConnection* connection, std::string_view table, std::string_view condition) {
  return detail::Guard({"modQueryHelper:Exists Ln "}, [&] {
    if (connection == nullptr) ThrowRuntimeError(kErrObjectNotSet);
    std::string sql = "SELECT 1 AS ListCount FROM ";
    sql += table;
    sql += " WHERE EXISTS (SELECT NULL FROM ";
    sql += table;
    sql += " WHERE ";
    sql += condition;
    sql += ") LIMIT 1";
    return Variant(connection->ExecuteScalar(sql, "0")).ToBoolean();
  });
}

}  // namespace orvmysql
