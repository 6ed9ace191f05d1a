#include "access/NumberText.h"

#include <langinfo.h>

#include <charconv>
#include <cmath>
#include <string>

#include "orvmysql/Variant.h"

namespace orvmysql {

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

}  // namespace

std::string DoubleText(double value) {
  const double magnitude = std::fabs(value);
  const bool plain = magnitude == 0 || (magnitude >= 1e-4 && magnitude < 1e15);
  char buf[64];
  const auto [end, ec] =
      std::to_chars(buf, buf + sizeof buf, value,
                    plain ? std::chars_format::fixed : std::chars_format::scientific);
  return std::string(buf, ec == std::errc() ? end : buf);
}

bool IsDecimalNumber(std::string_view text, bool whole_only) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  std::size_t i = 0;
  const auto digits = [&] {
    const std::size_t start = i;
    while (i < text.size() && IsDigit(text[i])) ++i;
    return i - start;
  };
  const auto sign = [&] {
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  };
  sign();
  std::size_t mantissa = digits();
  if (whole_only) return mantissa > 0 && i == text.size();
  if (i < text.size() && text[i] == '.') {
    ++i;
    mantissa += digits();
  }
  if (mantissa == 0) return false;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    sign();
    if (digits() == 0) return false;
  }
  return i == text.size();
}

double LocaleNumber(std::string_view text) {
  // The separator of the locale the calling thread uses (the program's unless
  // the thread chose its own with uselocale).
  const std::string_view separator = nl_langinfo(RADIXCHAR);
  const bool translate = !separator.empty() && separator != ".";
  std::string number;
  number.reserve(text.size());
  while (!text.empty()) {
    if (translate && text.starts_with(separator)) {
      number += '.';
      text.remove_prefix(separator.size());
    } else {
      number += text.front();
      text.remove_prefix(1);
    }
  }
  return Variant(std::move(number)).ToDouble();
}

}  // namespace orvmysql
