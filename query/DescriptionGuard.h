#pragma once

// The query model's form of the re-raise convention: an error leaving an
// operation keeps its number and source, and its description is extended by
// " => \r\n" + the operation's context text + the line number.

#include <string_view>
#include <utility>

#include "access/ErrorHandling.h"

namespace orvmysql::detail {

// Raises the error in flight again with its description extended. Call only
// from a catch block.
[[noreturn]] void ReraiseWithContext(std::string_view context, int line);

template <class Body>
decltype(auto) GuardDescription(std::string_view context, Body&& body,
                                int line = __builtin_LINE()) {
  LineFrame frame(line);
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    ReraiseWithContext(context, frame.Line());
  }
}

}  // namespace orvmysql::detail
