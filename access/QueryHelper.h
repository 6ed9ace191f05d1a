#pragma once

#include <string>
#include <string_view>

#include "orvmysql/Connection.h"

namespace orvmysql {

// True when any row of the table meets the condition (an SQL boolean
// expression without WHERE).
bool Exists(IConnection& connection, std::string_view table, std::string_view condition);

}  // namespace orvmysql
