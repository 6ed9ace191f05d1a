#pragma once

// Idle database connections kept for reuse by every connection object of the
// process. A statement outside a session, and a session, take a connection
// here and give it back instead of connecting and disconnecting. Connections
// are kept per key: the full set of settings a connection is made with, so a
// connection is only ever reused by someone who would have made the same one.
//
// A connection given back holds no session state: the connection object
// resets it first when any statement left state behind (see
// LeftSessionState). An idle connection is checked before it is handed out,
// so one the server closed while it sat here (restart, wait_timeout, KILL) is
// closed and replaced before any statement is sent on it. Idle connections
// are closed after their idle time, beyond the per-key bound, and when the
// library is unloaded or the process exits; a forked child never uses its
// parent's.

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "access/OptionFiles.h"

struct st_mysql;

namespace orvmysql::detail {

struct PoolSettings {
  bool enabled = true;
  unsigned max_idle = 8;       // idle connections kept per key
  unsigned idle_timeout = 60;  // seconds an idle connection is kept
};

// The pool settings of [orvmysql] (pool, pool-size, pool-idle-timeout),
// overridden by the environment (ORVMYSQL_POOL, ORVMYSQL_POOL_SIZE,
// ORVMYSQL_POOL_IDLE_TIMEOUT). A malformed value raises error 5 naming it.
PoolSettings ReadPoolSettings(const OptionFileSettings& files);

// True when the connection's last statement left session state behind, as
// the server reports it: a session variable, a temporary table, a prepared
// statement, another default database (once session state tracking is on,
// see kTrackSessionState), an open transaction, or autocommit off.
bool LeftSessionState(const st_mysql* db) noexcept;

// True unless the statement is a SELECT, INSERT, UPDATE, DELETE or REPLACE
// that names no user variable ("@", not "@@") and takes no named lock
// (GET_LOCK): what the server does not report (a user variable assigned in a
// SELECT, a named lock, LOCK TABLES, HANDLER, ...) is caught by the text. A
// false alarm (an "@" in a text value) costs a reset.
bool MayLeaveSessionState(std::string_view sql) noexcept;

// Turns on the server's session state tracking for a new or reset session.
inline constexpr const char* kTrackSessionState = "SET SESSION session_track_state_change = ON";

// Resets the session to what a new connection to the database would be: the
// server drops variables, temporary tables, prepared statements, locks and an
// open transaction; the database is selected again and the connection's init
// commands (from the option files) run again. False when the connection is
// unusable or, without a database, has another one selected.
bool ResetSession(st_mysql* db, const std::string& database) noexcept;

class ConnectionPool {
 public:
  // The process's pool.
  static ConnectionPool& Instance();

  // An idle connection made with these settings, checked still open; null
  // when there is none.
  st_mysql* Take(const std::string& key);
  // Keeps a connection that holds no session state, or closes it when the key
  // has settings.max_idle idle connections already or the pool is shut.
  void Give(const std::string& key, st_mysql* db, const PoolSettings& settings) noexcept;

  // Idle connections kept, over all keys.
  std::size_t IdleCount();
  // Closes every idle connection.
  void Clear() noexcept;
  // Closes every idle connection and keeps none from now on (at unload).
  void Shut() noexcept;

 private:
  struct Idle {
    st_mysql* db;
    std::chrono::steady_clock::time_point deadline;
  };

  ConnectionPool();
  void Reap();
  void ForgetAfterFork() noexcept;
  // Moves out every connection past its deadline (all when everything is
  // true) and returns the earliest deadline left.
  std::chrono::steady_clock::time_point Expire(std::vector<st_mysql*>& out, bool everything);

  std::mutex mutex_;
  std::condition_variable wake_;
  std::unordered_map<std::string, std::vector<Idle>> idle_;  // oldest first
  std::size_t count_ = 0;
  bool shut_ = false;
  std::chrono::steady_clock::time_point reaper_wakes_;  // when the reaper looks next
  std::unique_ptr<std::thread> reaper_;
};

}  // namespace orvmysql::detail
