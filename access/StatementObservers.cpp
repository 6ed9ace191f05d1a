#include "access/StatementObservers.h"

#include <atomic>

namespace orvmysql {

namespace {

// The flag spares the statements the atomic shared_ptr (a lock in libstdc++)
// while no observer is installed.
std::atomic<bool> g_installed{false};
std::atomic<std::shared_ptr<const StatementObserver>> g_observer;

void Call(const StatementObserver* observer, const StatementEvent& event) noexcept {
  if (observer == nullptr) return;
  try {
    (*observer)(event);
  } catch (...) {
  }
}

}  // namespace

void SetProcessStatementObserver(StatementObserver observer) {
  if (observer) {
    g_observer.store(std::make_shared<const StatementObserver>(std::move(observer)));
    g_installed.store(true, std::memory_order_release);
  } else {
    g_installed.store(false, std::memory_order_release);
    g_observer.store(nullptr);
  }
}

namespace detail {

std::shared_ptr<const StatementObserver> ProcessStatementObserver() {
  if (!g_installed.load(std::memory_order_relaxed)) return nullptr;
  return g_observer.load();
}

void ReportStatement(const StatementObserver* handler, const StatementObserver* process,
                     const StatementEvent& event) noexcept {
  Call(handler, event);
  Call(process, event);
}

}  // namespace detail

}  // namespace orvmysql
