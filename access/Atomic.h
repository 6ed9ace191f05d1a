#pragma once

// Units of work: statements that belong together commit together. A unit
// runs its statements between START TRANSACTION and COMMIT on the session's
// connection (it holds a session level of its own for that long, so the
// statements share one connection). When anything in it fails, ROLLBACK is
// sent before the error goes on, unchanged: the engine's handlers leave their
// session open after a failure, and row locks must not outlive the call. A
// unit that lost a deadlock (1213: the server has already rolled it back) runs
// again from the start, a bounded number of times, after a short random pause.
//
// A unit started while a transaction is open on the connection (an outer
// unit's, or one the caller opened on the connection) joins it: no brackets of
// its own, no retry; its failures are the outer unit's to handle.
//
// Operations that take keys stay out of units: a transaction would hold the
// key row's lock until its commit and so serialise every writer of the
// entity type.

#include <chrono>
#include <type_traits>
#include <utility>

#include "orvmysql/Connection.h"

namespace orvmysql::detail {

// A unit runs at most this often. The pause before the second run is drawn
// between half and all of kFirstRetryPause; each later pause doubles.
inline constexpr int kUnitAttempts = 5;
inline constexpr std::chrono::milliseconds kFirstRetryPause{8};

// True while a transaction is open on the connection: a unit of this thread,
// or (for the library's own connection) one the server reports for its
// session.
bool InTransaction(IConnection& connection);

// The steps of a unit; Atomically puts them together.
void BeginUnit(IConnection& connection, int line);
void CommitUnit(IConnection& connection, int line);
// Rolls back and releases the unit's session level; errors are dropped (the
// error in flight is the one that matters).
void AbandonUnit(IConnection& connection) noexcept;
// Called while an error is in flight after the attempt-th run failed: true,
// after the pause, when the error is a deadlock and attempts are left.
bool RetryUnitAfter(int attempt);

// Runs body as one unit on the connection and returns its result. The line
// is recorded for the error trail when START TRANSACTION or COMMIT fails; a
// failure inside body keeps the line body recorded.
template <class Body>
std::invoke_result_t<Body&> Atomically(IConnection& connection, Body&& body,
                                       int line = __builtin_LINE()) {
  if (InTransaction(connection)) return body();
  for (int attempt = 1;; ++attempt) {
    BeginUnit(connection, line);
    try {
      if constexpr (std::is_void_v<std::invoke_result_t<Body&>>) {
        body();
        CommitUnit(connection, line);
        return;
      } else {
        auto result = body();
        CommitUnit(connection, line);
        return result;
      }
    } catch (...) {
      AbandonUnit(connection);
      if (!RetryUnitAfter(attempt)) throw;
    }
  }
}

}  // namespace orvmysql::detail
