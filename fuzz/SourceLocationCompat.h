#pragma once

// clang before 15 lacks __builtin_source_location, so libstdc++'s
// <source_location> declares nothing. This supplies std::source_location
// from the older line and file builtins, which take the location of the call
// that uses a default argument. The build force-includes it for such compilers.

#if defined(__clang__) && !__has_builtin(__builtin_source_location)
#include <cstdint>

namespace std {

struct source_location {
  static constexpr source_location current(uint_least32_t line = __builtin_LINE(),
                                           uint_least32_t column = __builtin_COLUMN(),
                                           const char* file = __builtin_FILE(),
                                           const char* function = __builtin_FUNCTION()) noexcept {
    source_location where;
    where.line_ = line;
    where.column_ = column;
    where.file_ = file;
    where.function_ = function;
    return where;
  }

  constexpr source_location() noexcept = default;
  constexpr uint_least32_t line() const noexcept { return line_; }
  constexpr uint_least32_t column() const noexcept { return column_; }
  constexpr const char* file_name() const noexcept { return file_; }
  constexpr const char* function_name() const noexcept { return function_; }

 private:
  uint_least32_t line_ = 0;
  uint_least32_t column_ = 0;
  const char* file_ = "";
  const char* function_ = "";
};

}  // namespace std

#endif
