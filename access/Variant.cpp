#include "orvmysql/Variant.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <system_error>

#include "access/NumberText.h"
#include "orvmysql/Error.h"

namespace orvmysql {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view TrimBlanks(std::string_view s) {
  const auto first = s.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return s.substr(first, s.find_last_not_of(" \t") - first + 1);
}

// ASCII comparison without regard to case (no locale involved).
bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    const char c = a[i] >= 'A' && a[i] <= 'Z' ? static_cast<char>(a[i] - 'A' + 'a') : a[i];
    if (c != b[i]) return false;
  }
  return true;
}

// Parses a decimal number such as "-1.5", "+2e3" or ".5" (blanks around it are
// ignored); nullopt when the text is not a number. A number too large for a
// double raises 6; one too small to represent is zero.
std::optional<double> ParseNumber(std::string_view s) {
  s = TrimBlanks(s);
  const bool negative = !s.empty() && s[0] == '-';
  if (!s.empty() && (s[0] == '+' || s[0] == '-')) s.remove_prefix(1);
  // from_chars would also take "inf" and "nan", which are not numbers here.
  if (s.empty() || !(IsDigit(s[0]) || s[0] == '.')) return std::nullopt;
  double value = 0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), value);
  if (end != s.data() + s.size()) return std::nullopt;
  if (ec == std::errc::result_out_of_range) {
    const auto e = s.find_first_of("eE");
    if (e == std::string_view::npos || s[e + 1] != '-') ThrowRuntimeError(kErrOverflow);
    value = 0;
  } else if (ec != std::errc()) {
    return std::nullopt;
  }
  return negative ? -value : value;
}

double RoundHalfEven(double x) {
  return std::fabs(x - std::trunc(x)) == 0.5 ? 2 * std::round(x / 2) : std::round(x);
}

void AppendPadded(std::string& out, int value, int width) {
  char buf[16];
  const auto [end, ec] = std::to_chars(buf, buf + sizeof buf, value);
  out.append(static_cast<size_t>(std::max<std::ptrdiff_t>(0, width - (end - buf))), '0');
  out.append(buf, end);
}

std::string FormatDate(Date d) {
  const DateParts p = d.Parts();
  const bool midnight = p.hour == 0 && p.minute == 0 && p.second == 0;
  const bool day_zero = p.year == 1899 && p.month == 12 && p.day == 30;
  std::string out;
  if (midnight || !day_zero) {
    AppendPadded(out, p.year, 4);
    out += '-';
    AppendPadded(out, p.month, 2);
    out += '-';
    AppendPadded(out, p.day, 2);
  }
  if (!midnight) {
    if (!out.empty()) out += ' ';
    AppendPadded(out, p.hour, 2);
    out += ':';
    AppendPadded(out, p.minute, 2);
    out += ':';
    AppendPadded(out, p.second, 2);
  }
  return out;
}

// Reads exactly n digits from the front of s.
bool TakeDigits(std::string_view& s, size_t n, int& out) {
  if (s.size() < n) return false;
  out = 0;
  for (size_t i = 0; i < n; ++i) {
    if (!IsDigit(s[i])) return false;
    out = out * 10 + (s[i] - '0');
  }
  s.remove_prefix(n);
  return true;
}

bool TakeChar(std::string_view& s, char c) {
  if (s.empty() || s[0] != c) return false;
  s.remove_prefix(1);
  return true;
}

// Reads "hh:mm" or "hh:mm:ss", which must make up the rest of s.
bool TakeTime(std::string_view s, int& hour, int& minute, int& second) {
  if (!TakeDigits(s, 2, hour) || !TakeChar(s, ':') || !TakeDigits(s, 2, minute)) return false;
  if (TakeChar(s, ':') && !TakeDigits(s, 2, second)) return false;
  return s.empty();
}

// Texts "yyyy-mm-dd", "yyyy-mm-dd hh:mm[:ss]" (or with "T" for the blank) and
// "hh:mm[:ss]" (on day 0); anything else, including impossible dates, raises 13.
Date ParseDate(std::string_view text) {
  std::string_view s = TrimBlanks(text);
  int year = 1899, month = 12, day = 30, hour = 0, minute = 0, second = 0;
  bool ok;
  if (s.size() > 4 && s[4] == '-') {
    ok = TakeDigits(s, 4, year) && TakeChar(s, '-') && TakeDigits(s, 2, month) &&
         TakeChar(s, '-') && TakeDigits(s, 2, day) &&
         (s.empty() ||
          ((TakeChar(s, ' ') || TakeChar(s, 'T')) && TakeTime(s, hour, minute, second)));
  } else {
    ok = TakeTime(s, hour, minute, second);
  }
  if (!ok) ThrowRuntimeError(kErrTypeMismatch);
  try {
    return Date::FromParts(year, month, day, hour, minute, second);
  } catch (const Error&) {
    ThrowRuntimeError(kErrTypeMismatch);
  }
}

}  // namespace

Variant Variant::FromInt64(int64_t i) {
  if (i >= INT32_MIN && i <= INT32_MAX) return Variant(static_cast<int32_t>(i));
  return Variant(static_cast<double>(i));
}

bool Variant::IsNumeric() const {
  const Type t = GetType();
  return t == Type::Boolean || t == Type::Long || t == Type::Double;
}

std::string Variant::ToText() const {
  switch (GetType()) {
    case Type::Empty:
      return {};
    case Type::Null:
      ThrowRuntimeError(kErrInvalidUseOfNull);
    case Type::Boolean:
      return std::get<bool>(value_) ? "True" : "False";
    case Type::Long:
      return std::to_string(std::get<int32_t>(value_));
    case Type::Double:
      return DoubleText(std::get<double>(value_));
    case Type::Text:
      return Text();
    case Type::Date:
      return FormatDate(std::get<Date>(value_));
  }
  ThrowRuntimeError(kErrTypeMismatch);
}

int32_t Variant::ToLong() const {
  if (GetType() == Type::Long) return std::get<int32_t>(value_);
  const double r = RoundHalfEven(ToDouble());
  if (!(r >= INT32_MIN && r <= INT32_MAX)) ThrowRuntimeError(kErrOverflow);
  return static_cast<int32_t>(r);
}

double Variant::ToDouble() const {
  switch (GetType()) {
    case Type::Empty:
      return 0;
    case Type::Null:
      ThrowRuntimeError(kErrInvalidUseOfNull);
    case Type::Boolean:
      return std::get<bool>(value_) ? -1 : 0;
    case Type::Long:
      return std::get<int32_t>(value_);
    case Type::Double:
      return std::get<double>(value_);
    case Type::Text:
      if (const auto number = ParseNumber(Text())) return *number;
      break;
    case Type::Date:
      return std::get<Date>(value_).Serial();
  }
  ThrowRuntimeError(kErrTypeMismatch);
}

bool Variant::ToBoolean() const {
  if (GetType() == Type::Boolean) return std::get<bool>(value_);
  if (IsText()) {
    const std::string_view t = TrimBlanks(Text());
    if (EqualsNoCase(t, "true")) return true;
    if (EqualsNoCase(t, "false")) return false;
  }
  return ToDouble() != 0;
}

Date Variant::ToDate() const {
  switch (GetType()) {
    case Type::Empty:
      return Date(0);
    case Type::Null:
      ThrowRuntimeError(kErrInvalidUseOfNull);
    case Type::Boolean:
      break;
    case Type::Long:
    case Type::Double: {
      // Parts raises 6 for a day count outside the years 100..9999.
      const Date d(ToDouble());
      (void)d.Parts();
      return d;
    }
    case Type::Text:
      return ParseDate(Text());
    case Type::Date:
      return std::get<Date>(value_);
  }
  ThrowRuntimeError(kErrTypeMismatch);
}

}  // namespace orvmysql
