// Keys from tblKeyGen: one row per entity type, moved on by compare-and-set
// UPDATEs that match only the value read, so that writers in any process, with
// this protocol or an older one, never take the same key.

#include <pthread.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "access/ErrorHandling.h"
#include "orvmysql/Keys.h"

namespace orvmysql {

namespace {

constexpr int kAttempts = 6;
constexpr int32_t kMaxBlock = 100000;
constexpr const char* kBlockVariable = "ORVMYSQL_KEY_BLOCK";

using Clock = std::chrono::steady_clock;

struct KeyRow {
  int32_t last, seed, increment, offset;
};

// Keys of one database and entity type that this process reserved and has not
// handed out yet. Its mutex also makes the threads of the process take those
// keys one at a time, so that they never race each other on the row.
struct Reserve {
  std::mutex mutex;
  int32_t next = 0;
  int32_t left = 0;
  int32_t increment = 0;
};

// Every reserve of the process, by connection string and entity type. A
// reserve is never freed: there is one per database and entity type.
struct Registry {
  std::mutex mutex;
  std::map<std::pair<std::string, int32_t>, Reserve*> reserves;
  std::vector<Reserve*> abandoned;
};

// A forked child must not hand out its parent's reserved keys, nor wait on a
// lock that a thread of the parent held: it starts with no reserves.
Registry* forked_registry = nullptr;

void BeforeFork() {
  forked_registry->mutex.lock();
}
void AfterForkInParent() {
  forked_registry->mutex.unlock();
}
void AfterForkInChild() {
  Registry& r = *forked_registry;
  for (auto& entry : r.reserves) r.abandoned.push_back(entry.second);
  r.reserves.clear();
  r.mutex.unlock();
}

Registry& TheRegistry() {
  static Registry* const registry = [] {
    forked_registry = new Registry;
    pthread_atfork(&BeforeFork, &AfterForkInParent, &AfterForkInChild);
    return forked_registry;
  }();
  return *registry;
}

Reserve& ReserveFor(const std::string& connection_string, int32_t entity_type_code) {
  Registry& registry = TheRegistry();
  std::lock_guard hold(registry.mutex);
  Reserve*& reserve = registry.reserves[{connection_string, entity_type_code}];
  if (reserve == nullptr) reserve = new Reserve;
  return *reserve;
}

// The block size set by ORVMYSQL_KEY_BLOCK; 1 (single keys) when unset.
int32_t BlockSize() {
  const char* text = std::getenv(kBlockVariable);
  if (text == nullptr) return 1;
  std::string_view value(text);
  while (!value.empty() && value.front() == ' ') value.remove_prefix(1);
  while (!value.empty() && value.back() == ' ') value.remove_suffix(1);
  if (value.empty()) return 1;
  int32_t size = 0;
  const auto [end, ec] = std::from_chars(value.data(), value.data() + value.size(), size);
  if (ec != std::errc() || end != value.data() + value.size() || size < 1 || size > kMaxBlock) {
    ThrowRuntimeError(kErrInvalidCall, std::string(kBlockVariable) +
                                           " must be a whole number from 1 to " +
                                           std::to_string(kMaxBlock) + ", not '" + text + "'");
  }
  return size;
}

std::optional<KeyRow> ReadRow(IConnection& connection, const std::string& code, int line) {
  detail::MarkLine(line);
  auto rows = connection.Execute(
      " SELECT LastAllocatedKey,Seed,Increment,`Offset` FROM tblKeyGen WHERE EntityTypeCode = " +
      code);
  if (rows->Count() < 1) return std::nullopt;
  rows->GetNext();
  const auto row = rows->CurrentItem();
  return KeyRow{row->GetValue("LastAllocatedKey").ToLong(), row->GetValue("Seed").ToLong(),
                row->GetValue("Increment").ToLong(), row->GetValue("offset").ToLong()};
}

int32_t CheckedAdd(int32_t a, int32_t b) {
  int32_t sum;
  if (__builtin_add_overflow(a, b, &sum)) ThrowRuntimeError(kErrOverflow);
  return sum;
}

// The first key after the row: Seed + Offset while none was handed out.
int32_t FirstKey(const KeyRow& row) {
  return (row.last == row.seed || row.last == 0) ? CheckedAdd(row.seed, row.offset)
                                                 : CheckedAdd(row.last, row.increment);
}

// How many of the wanted keys fit from the first on, at least one.
int32_t KeysThatFit(int32_t first, int32_t increment, int32_t wanted) {
  if (increment <= 0) return 1;
  const int64_t room = (int64_t{INT32_MAX} - first) / increment + 1;
  return static_cast<int32_t>(std::min<int64_t>(wanted, room));
}

// Waits a random time, so that writers who lost to each other try again at
// different moments: up to 2^(attempt-1) units, a unit being 16 times the
// attempt just lost (1 ms at least), 20 ms at most. Shorter pauses left
// writers in other processes colliding again (measured with orvmysql-keys).
void BackOff(int attempt, Clock::duration lost) {
  thread_local std::minstd_rand random(std::random_device{}());
  const Clock::duration unit = std::max<Clock::duration>(lost * 16, std::chrono::milliseconds(1));
  const Clock::duration longest =
      std::min<Clock::duration>(unit * (1 << (attempt - 1)), std::chrono::milliseconds(20));
  std::uniform_int_distribution<Clock::rep> pick(0, longest.count());
  std::this_thread::sleep_for(Clock::duration(pick(random)));
}

struct Taken {
  int32_t first = 0, count = 0, increment = 0;
  bool late = false;  // won on the sixth attempt
};

// Moves the row on by up to `wanted` keys (the range's end may allow fewer).
// A lost compare-and-set reads the row again and tries once more after a
// pause, six attempts in all. Nothing taken (count 0) when the row is
// missing, every attempt lost, or an update matched more than one row.
Taken Take(IConnection& connection, int32_t entity_type_code, int32_t wanted) {
  const std::string code = std::to_string(entity_type_code);
  auto started = Clock::now();
  std::optional<KeyRow> row = ReadRow(connection, code, __LINE__);
  for (int attempt = 1; row && attempt <= kAttempts; ++attempt) {
    const int32_t first = FirstKey(*row);
    const int32_t count = KeysThatFit(first, row->increment, wanted);
    const int32_t end = first + (count - 1) * row->increment;
    detail::MarkLine(__LINE__);
    const int32_t affected = connection.ExecuteNonQuery(
        " UPDATE tblKeyGen SET LastAllocatedKey = " + std::to_string(end) +
        " WHERE EntityTypeCode = " + code + " AND LastAllocatedKey = " + std::to_string(row->last));
    if (affected == 1) return {first, count, row->increment, attempt == kAttempts};
    if (affected != 0) break;
    if (attempt < kAttempts) {
      BackOff(attempt, Clock::now() - started);
      started = Clock::now();
      row = ReadRow(connection, code, __LINE__);
    }
  }
  return {};
}

}  // namespace

std::string GetNextID(IConnection& connection, int32_t entity_type_code) {
  return detail::Guard({"GetNextID Ln "}, [&] {
    const int32_t block = BlockSize();
    Reserve& reserve = ReserveFor(connection.ConnectionString(), entity_type_code);
    std::lock_guard hold(reserve.mutex);
    if (block > 1 && reserve.left > 0) {
      const int32_t key = reserve.next;
      if (--reserve.left > 0) reserve.next += reserve.increment;
      return std::to_string(key);
    }
    const Taken taken = Take(connection, entity_type_code, block);
    // A win on the sixth attempt still fails the call; a block taken so keeps
    // its keys for the next calls instead of wasting them.
    const int32_t handed_out = taken.late ? 0 : 1;
    if (block > 1 && taken.count > handed_out) {
      reserve.next = taken.first + handed_out * taken.increment;
      reserve.left = taken.count - handed_out;
      reserve.increment = taken.increment;
    }
    if (taken.count == 0 || taken.late) {
      detail::MarkLine(__LINE__);
      detail::RaiseError(kMsgPrimaryKey, "GetNextID");
    }
    return std::to_string(taken.first);
  });
}

}  // namespace orvmysql
