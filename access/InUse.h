#pragma once

// One thread at a time on a connection. Each call into the connection marks
// it as taken by the calling thread for the call's length: a call from another
// thread meanwhile raises 61442 at once, before it touches anything, instead
// of corrupting the connection. A call nested in one on the same thread (a
// statement observer that uses the same handler) passes. The check costs one
// compare-and-swap and one store per call.

#include <atomic>
#include <thread>

namespace orvmysql::detail {

using InUseMark = std::atomic<std::thread::id>;

[[noreturn]] void RaiseConnectionInUse();

class InUseGuard {
 public:
  explicit InUseGuard(InUseMark& mark) : mark_(mark) {
    const std::thread::id me = std::this_thread::get_id();
    std::thread::id holder;  // no thread
    if (mark_.compare_exchange_strong(holder, me, std::memory_order_acquire,
                                      std::memory_order_relaxed)) {
      owner_ = true;
    } else if (holder != me) {
      RaiseConnectionInUse();
    }
  }
  ~InUseGuard() {
    if (owner_) mark_.store(std::thread::id(), std::memory_order_release);
  }
  InUseGuard(const InUseGuard&) = delete;
  InUseGuard& operator=(const InUseGuard&) = delete;

 private:
  InUseMark& mark_;
  bool owner_ = false;
};

}  // namespace orvmysql::detail
