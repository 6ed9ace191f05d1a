#include "access/ConnectionPool.h"

#include <mysql.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <new>
#include <string_view>

#include "orvmysql/Error.h"

namespace orvmysql::detail {

namespace {

using Clock = std::chrono::steady_clock;

// Idle connections of one key and the time a connection may sit idle are
// bounded here, whatever the settings ask for.
constexpr unsigned kMaxPoolSize = 1000;
constexpr unsigned kMaxIdleTimeout = 24 * 3600;

std::string_view Env(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

bool OnOff(std::string_view name, std::string_view text) {
  std::string value(text);
  std::transform(value.begin(), value.end(), value.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (value == "1" || value == "on" || value == "true" || value == "yes") return true;
  if (value == "0" || value == "off" || value == "false" || value == "no") return false;
  ThrowRuntimeError(kErrInvalidCall,
                    std::string(name) + " must be on or off, not '" + std::string(text) + "'");
}

unsigned Whole(std::string_view name, std::string_view text, unsigned largest) {
  unsigned value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size() || value > largest) {
    ThrowRuntimeError(kErrInvalidCall, std::string(name) + " must be a whole number from 0 to " +
                                           std::to_string(largest) + ", not '" + std::string(text) +
                                           "'");
  }
  return value;
}

// An idle connection has nothing to read. One the server closed reads as the
// end of the stream (or an error packet the server sent before closing it).
bool StillOpen(st_mysql* db) noexcept {
  pollfd watch{mysql_get_socket(db), POLLIN | POLLRDHUP, 0};
  return poll(&watch, 1, 0) == 0;
}

void CloseAll(const std::vector<st_mysql*>& connections) noexcept {
  for (st_mysql* db : connections) mysql_close(db);
}

ConnectionPool* g_pool = nullptr;
std::thread* g_orphaned_reaper = nullptr;  // a forked child's copy of the reaper's object

// Closes the idle connections when the library is unloaded or the process
// exits. Constant-initialised, so it is registered before any object that
// could still hold a connection and is destroyed after them; connections
// given back later are closed at once.
struct ShutAtExit {
  constexpr ShutAtExit() = default;
  ~ShutAtExit() {
    if (g_pool != nullptr) g_pool->Shut();
  }
} shut_at_exit;

}  // namespace

PoolSettings ReadPoolSettings(const OptionFileSettings& files) {
  PoolSettings settings;
  if (!files.pool.empty()) settings.enabled = OnOff("[orvmysql] pool", files.pool);
  if (!files.pool_size.empty()) {
    settings.max_idle = Whole("[orvmysql] pool-size", files.pool_size, kMaxPoolSize);
  }
  if (!files.pool_idle_timeout.empty()) {
    settings.idle_timeout =
        Whole("[orvmysql] pool-idle-timeout", files.pool_idle_timeout, kMaxIdleTimeout);
  }
  if (const auto text = Env("ORVMYSQL_POOL"); !text.empty()) {
    settings.enabled = OnOff("ORVMYSQL_POOL", text);
  }
  if (const auto text = Env("ORVMYSQL_POOL_SIZE"); !text.empty()) {
    settings.max_idle = Whole("ORVMYSQL_POOL_SIZE", text, kMaxPoolSize);
  }
  if (const auto text = Env("ORVMYSQL_POOL_IDLE_TIMEOUT"); !text.empty()) {
    settings.idle_timeout = Whole("ORVMYSQL_POOL_IDLE_TIMEOUT", text, kMaxIdleTimeout);
  }
  if (settings.max_idle == 0 || settings.idle_timeout == 0) settings.enabled = false;
  return settings;
}

bool LeftSessionState(const st_mysql* db) noexcept {
  const unsigned status = db->server_status;
  return (status & (SERVER_SESSION_STATE_CHANGED | SERVER_STATUS_IN_TRANS)) != 0 ||
         (status & SERVER_STATUS_AUTOCOMMIT) == 0;
}

bool MayLeaveSessionState(std::string_view sql) noexcept {
  const auto upper = [](unsigned char c) { return static_cast<char>(std::toupper(c)); };
  const auto first = sql.find_first_not_of(" \t\r\n(");
  if (first == std::string_view::npos) return false;
  std::string verb;
  for (std::size_t i = first; i < sql.size() && std::isalpha(static_cast<unsigned char>(sql[i]));
       ++i) {
    verb += upper(sql[i]);
  }
  if (verb != "SELECT" && verb != "INSERT" && verb != "UPDATE" && verb != "DELETE" &&
      verb != "REPLACE") {
    return true;
  }
  // A user variable; "@@" names a system variable, which a SELECT only reads.
  for (std::size_t at = sql.find('@'); at != std::string_view::npos; at = sql.find('@', at + 2)) {
    if (at + 1 == sql.size() || sql[at + 1] != '@') return true;
  }
  constexpr std::string_view kNamedLock = "GET_LOCK";
  return std::search(sql.begin(), sql.end(), kNamedLock.begin(), kNamedLock.end(),
                     [&](char a, char b) { return upper(static_cast<unsigned char>(a)) == b; }) !=
         sql.end();
}

bool ResetSession(st_mysql* db, const std::string& database) noexcept {
  if (mysql_reset_connection(db) != 0) return false;
  // The reset keeps the default database; a connection made without one
  // cannot be given none again.
  if (database.empty() ? db->db != nullptr : mysql_select_db(db, database.c_str()) != 0) {
    return false;
  }
  char** commands = nullptr;
  unsigned count = 0;
  if (mysql_get_optionv(db, MYSQL_INIT_COMMAND, &commands, &count) != 0) return false;
  for (unsigned i = 0; i < count; ++i) {
    if (mysql_query(db, commands[i]) != 0) return false;
    mysql_free_result(mysql_store_result(db));
  }
  return true;
}

ConnectionPool::ConnectionPool() {
  g_pool = this;
  // A forked child shares its parent's sockets: it must never send on them,
  // and the parent's threads (the reaper) do not exist in it.
  pthread_atfork([] { g_pool->mutex_.lock(); }, [] { g_pool->mutex_.unlock(); },
                 [] { g_pool->ForgetAfterFork(); });
}

ConnectionPool& ConnectionPool::Instance() {
  // Never destroyed: connection objects may outlive every static. ShutAtExit
  // closes what it holds.
  static ConnectionPool* const pool = new ConnectionPool;
  return *pool;
}

st_mysql* ConnectionPool::Take(const std::string& key) {
  for (;;) {
    st_mysql* db = nullptr;
    bool expired = false;
    {
      std::lock_guard hold(mutex_);
      const auto found = idle_.find(key);
      if (found == idle_.end()) return nullptr;
      auto& list = found->second;
      // The most recently used first: the others reach their idle time.
      db = list.back().db;
      expired = list.back().deadline <= Clock::now();
      list.pop_back();
      --count_;
      if (list.empty()) idle_.erase(found);
    }
    if (!expired && StillOpen(db)) return db;
    mysql_close(db);
  }
}

void ConnectionPool::Give(const std::string& key, st_mysql* db,
                          const PoolSettings& settings) noexcept {
  try {
    std::unique_lock hold(mutex_);
    auto& list = idle_[key];
    if (!shut_ && list.size() < settings.max_idle) {
      const auto deadline = Clock::now() + std::chrono::seconds(settings.idle_timeout);
      list.reserve(list.size() + 1);
      if (!reaper_) {
        reaper_wakes_ = deadline;
        reaper_ = std::make_unique<std::thread>([this] { Reap(); });
      } else if (deadline < reaper_wakes_) {
        reaper_wakes_ = deadline;
        wake_.notify_one();
      }
      list.push_back({db, deadline});
      ++count_;
      return;
    }
    if (list.empty()) idle_.erase(key);
  } catch (...) {
    // No memory for the list, or no thread: the connection is closed instead.
  }
  mysql_close(db);
}

Clock::time_point ConnectionPool::Expire(std::vector<st_mysql*>& out, bool everything) {
  const auto now = Clock::now();
  auto next = Clock::time_point::max();
  for (auto it = idle_.begin(); it != idle_.end();) {
    auto& list = it->second;
    const auto keep = std::stable_partition(list.begin(), list.end(), [&](const Idle& idle) {
      return !everything && idle.deadline > now;
    });
    for (auto gone = keep; gone != list.end(); ++gone) out.push_back(gone->db);
    count_ -= static_cast<std::size_t>(list.end() - keep);
    list.erase(keep, list.end());
    for (const Idle& idle : list) next = std::min(next, idle.deadline);
    it = list.empty() ? idle_.erase(it) : std::next(it);
  }
  return next;
}

void ConnectionPool::Reap() {
  std::unique_lock hold(mutex_);
  while (!shut_) {
    std::vector<st_mysql*> expired;
    reaper_wakes_ = Expire(expired, false);
    if (!expired.empty()) {
      hold.unlock();
      CloseAll(expired);
      hold.lock();
      continue;
    }
    if (reaper_wakes_ == Clock::time_point::max()) {
      wake_.wait(hold);
    } else {
      wake_.wait_until(hold, reaper_wakes_);
    }
  }
}

std::size_t ConnectionPool::IdleCount() {
  std::lock_guard hold(mutex_);
  return count_;
}

void ConnectionPool::Clear() noexcept {
  std::vector<st_mysql*> all;
  {
    std::lock_guard hold(mutex_);
    Expire(all, true);
  }
  CloseAll(all);
}

void ConnectionPool::Shut() noexcept {
  std::vector<st_mysql*> all;
  std::unique_ptr<std::thread> reaper;
  {
    std::lock_guard hold(mutex_);
    shut_ = true;
    Expire(all, true);
    reaper = std::move(reaper_);
    wake_.notify_all();
  }
  if (reaper && reaper->joinable()) reaper->join();
  CloseAll(all);
}

void ConnectionPool::ForgetAfterFork() noexcept {
  // Closing the child's copy of each socket leaves the parent's connection
  // alone; the goodbye mysql_close then tries to send goes nowhere.
  for (auto& [key, list] : idle_) {
    for (const Idle& idle : list) {
      close(mysql_get_socket(idle.db));
      mysql_close(idle.db);
    }
  }
  idle_.clear();
  count_ = 0;
  // The reaper thread and anyone waiting for it stayed in the parent. The
  // thread object is kept reachable and never joined; the condition variable
  // starts afresh (destroying it could wait for waiters that do not exist).
  g_orphaned_reaper = reaper_.release();
  new (&wake_) std::condition_variable;
  mutex_.unlock();
}

}  // namespace orvmysql::detail
