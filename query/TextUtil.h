#pragma once

// Small text helpers of the query model and the language files.

#include <string>
#include <string_view>

#include "access/AsciiCase.h"

namespace orvmysql::detail {

// The text without leading and trailing blanks, tabs and line breaks.
inline std::string_view TrimBlanks(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

// ASCII lower case, independent of the locale; other bytes stay as they are.
inline std::string LowerCase(std::string_view text) {
  return AsciiLowerCase(text);
}

// Equal without regard to ASCII case, independent of the locale.
inline bool SameText(std::string_view a, std::string_view b) {
  return AsciiSameText(a, b);
}

// "line L, column C" of a byte offset into a text (both counted from 1);
// a negative offset counts as its start, one past the end as its end.
inline std::string LineAndColumn(std::string_view text, std::ptrdiff_t offset) {
  const std::size_t end = offset < 0 ? 0 : std::min(static_cast<std::size_t>(offset), text.size());
  std::size_t line = 1, column = 1;
  for (std::size_t i = 0; i < end; ++i) {
    if (text[i] == '\n') {
      ++line;
      column = 1;
    } else {
      ++column;
    }
  }
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

}  // namespace orvmysql::detail
