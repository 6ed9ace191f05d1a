#pragma once

#include <string>
#include <string_view>

#include "orvmysql/Connection.h"

namespace orvmysql {

// True when any row of the table meets the condition (an SQL boolean
// expression without WHERE). A null connection raises 91 from inside this
// routine, so the error trail names it.
bool Exists(IConnection* connection, std::string_view table, std::string_view condition);

}  // namespace orvmysql
