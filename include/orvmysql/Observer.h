#pragma once

// Statement observers: a host sees every statement the library runs, for
// logging and metrics. Install one per data handler
// (CMYSqlDP::SetStatementObserver) or one for the whole process
// (SetProcessStatementObserver); a statement is reported to both. With none
// installed a statement costs one relaxed atomic load more.

#include <chrono>
#include <cstdint>
#include <functional>
#include <string_view>

#include "orvmysql/Error.h"
#include "orvmysql/Export.h"

namespace orvmysql {

struct StatementEvent {
  // The statement's text as sent. The library's statements never carry the
  // connection's password.
  std::string_view sql;
  // The whole call, including the connect when the statement runs outside a
  // session.
  std::chrono::nanoseconds duration{0};
  // Rows returned (Execute, ExecuteScalar) or affected (ExecuteNonQuery);
  // -1 when the statement failed.
  int64_t rows = -1;
  // The failure as the caller receives it (a failed connect is a 61441 whose
  // text shows the password masked), null on success.
  const Error* error = nullptr;
  // How many times the statement was sent again after a deadlock (1213) or a
  // lock-wait timeout (1205); 0 when the first attempt stood.
  int32_t retries = 0;
};

// Called on the thread that ran the statement, after it finished and before
// its result or error reaches the caller. An exception leaving the observer is
// dropped.
using StatementObserver = std::function<void(const StatementEvent&)>;

// Installs the observer for every connection of the process; an empty function
// removes it. It may be called from several threads at once, so it must be
// thread-safe. Installing and removing are safe at any time.
ORVMYSQL_EXPORT void SetProcessStatementObserver(StatementObserver observer);

}  // namespace orvmysql
