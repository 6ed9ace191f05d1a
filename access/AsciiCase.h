#pragma once

// Case folding of names (columns, attributes, class names, keywords). Only the
// ASCII letters fold, whatever the process locale: under a Turkish locale the
// C library folds "I" to a dotless i, which would make "WorkitemID" and
// "workitemid" different names.

#include <algorithm>
#include <string>
#include <string_view>

namespace orvmysql::detail {

constexpr char AsciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

inline std::string AsciiLowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = AsciiLower(c);
  return lower;
}

// Equal without regard to ASCII case.
inline bool AsciiSameText(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return AsciiLower(x) == AsciiLower(y); });
}

}  // namespace orvmysql::detail
