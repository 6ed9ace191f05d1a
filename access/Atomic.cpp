#include "access/Atomic.h"

#include <algorithm>
#include <random>
#include <thread>
#include <vector>

#include "access/Connection.h"
#include "access/ErrorHandling.h"
#include "orvmysql/Error.h"

namespace orvmysql::detail {

namespace {

constexpr unsigned kDeadlock = 1213;

// The connections on which a unit of this thread is open. A unit runs
// entirely inside one call on one thread, so the thread's own list is enough.
std::vector<const IConnection*>& OpenUnits() {
  thread_local std::vector<const IConnection*> open;
  return open;
}

// Removes the connection from the open units; false when it was not there.
bool Forget(const IConnection& connection) {
  auto& open = OpenUnits();
  const auto found = std::find(open.begin(), open.end(), &connection);
  if (found == open.end()) return false;
  open.erase(found);
  return true;
}

}  // namespace

bool InTransaction(IConnection& connection) {
  const auto& open = OpenUnits();
  if (std::find(open.begin(), open.end(), &connection) != open.end()) return true;
  const auto* own = dynamic_cast<const CConnection*>(&connection);
  return own != nullptr && own->InTransaction();
}

void BeginUnit(IConnection& connection, int line) {
  MarkLine(line);
  connection.StartSession();
  try {
    MarkLine(line);
    connection.ExecuteNonQuery("START TRANSACTION");
  } catch (...) {
    try {
      connection.EndSession(true);
    } catch (...) {
    }
    throw;
  }
  OpenUnits().push_back(&connection);
}

void CommitUnit(IConnection& connection, int line) {
  MarkLine(line);
  connection.ExecuteNonQuery("COMMIT");
  Forget(connection);
  connection.EndSession(true);
}

void AbandonUnit(IConnection& connection) noexcept {
  // Not open any more: the commit went through and only ending the session
  // failed; there is nothing to roll back.
  if (!Forget(connection)) return;
  try {
    connection.ExecuteNonQuery("ROLLBACK");
  } catch (...) {
  }
  try {
    connection.EndSession(true);
  } catch (...) {
  }
}

bool RetryUnitAfter(int attempt) {
  if (attempt >= kUnitAttempts) return false;
  try {
    throw;
  } catch (const Error& e) {
    if (e.NativeError() != kDeadlock) return false;
  } catch (...) {
    return false;
  }
  // Units that deadlocked on each other would meet again if they came back
  // together; a random pause sets them apart.
  thread_local std::minstd_rand random{std::random_device{}()};
  const auto longest = kFirstRetryPause * (1 << (attempt - 1));
  std::uniform_int_distribution<long long> pause(longest.count() * 500, longest.count() * 1000);
  std::this_thread::sleep_for(std::chrono::microseconds(pause(random)));
  return true;
}

}  // namespace orvmysql::detail
