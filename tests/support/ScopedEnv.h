#pragma once

// An environment variable set (or, for a null value, removed) for a scope and
// restored when the scope ends.

#include <cstdlib>
#include <optional>
#include <string>

namespace orvtest {

class ScopedEnv {
 public:
  ScopedEnv(std::string name, const char* value) : name_(std::move(name)) {
    if (const char* previous = std::getenv(name_.c_str())) previous_ = previous;
    Set(value);
  }
  ~ScopedEnv() { Set(previous_ ? previous_->c_str() : nullptr); }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  void Set(const char* value) {
    if (value != nullptr) {
      setenv(name_.c_str(), value, 1);
    } else {
      unsetenv(name_.c_str());
    }
  }

  std::string name_;
  std::optional<std::string> previous_;
};

}  // namespace orvtest
