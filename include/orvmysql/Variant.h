#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "orvmysql/Export.h"

namespace orvmysql {

// Calendar and clock parts of a Date.
struct DateParts {
  int year = 1899, month = 12, day = 30;
  int hour = 0, minute = 0, second = 0;
  int weekday = 7;  // 1 = Sunday ... 7 = Saturday
};

// A date and time as a day count: day 0 is 1899-12-30 00:00:00 and the fraction
// is the time of day (0.5 is noon). Negative values count days before day 0,
// with the fraction still running forward from midnight.
class ORVMYSQL_EXPORT Date {
 public:
  constexpr Date() = default;
  constexpr explicit Date(double serial) : serial_(serial) {}

  // Raises error 5 for a month, day or time outside its range, and error 6 for
  // a year outside 100..9999.
  static Date FromParts(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);
  // The local clock, read through the clock seam (see SetClockForTesting).
  static Date Now();

  double Serial() const { return serial_; }
  // Parts rounded to the nearest second.
  DateParts Parts() const;
  // The date with the time of day cut off.
  Date DateOnly() const;
  // The time of day on day 0.
  Date TimeOnly() const;

  friend bool operator==(Date a, Date b) { return a.serial_ == b.serial_; }

 private:
  double serial_ = 0;
};

// Units of DateAdd.
enum class DateUnit { Second, Minute, Hour, Day, Week, Month, Year };

// Adds n units; months and years keep the day of month where it exists and
// otherwise fall back to the month's last day (Jan 31 + 1 month = Feb 28/29).
ORVMYSQL_EXPORT Date DateAdd(DateUnit unit, double n, Date d);

// The clock seam, a documented part of the API: makes Date::Now, and with it
// every relative date condition ("today", "last 7 days"), read the given
// function instead of the local clock; null restores the local clock. For
// tests, the host's as well as the library's, that need a fixed day.
// Process-wide, and safe to call at any time.
ORVMYSQL_EXPORT void SetClockForTesting(Date (*now)());

struct NullValue {
  friend bool operator==(NullValue, NullValue) { return true; }
};
inline constexpr NullValue Null{};

// The one value type of the library: Empty, Null, Boolean, 32-bit integer,
// double, text (UTF-8) and date. Conversions follow the platform's rules:
// Null raises error 94 ("Invalid use of Null"), a value that cannot be
// converted raises 13 ("Type mismatch") and an integer out of range raises 6
// ("Overflow"). Texts are parsed and numbers and dates formatted without
// regard to the process locale.
class ORVMYSQL_EXPORT Variant {
 public:
  enum class Type { Empty, Null, Boolean, Long, Double, Text, Date };

  Variant() = default;
  Variant(NullValue) : value_(NullValue{}) {}
  Variant(bool b) : value_(b) {}
  Variant(int32_t i) : value_(i) {}
  Variant(double d) : value_(d) {}
  Variant(std::string s) : value_(std::move(s)) {}
  Variant(std::string_view s) : value_(std::string(s)) {}
  Variant(const char* s) : value_(std::string(s)) {}
  Variant(orvmysql::Date d) : value_(d) {}
  // A 64-bit integer is kept as a 32-bit integer when it fits, else as a double.
  static Variant FromInt64(int64_t i);

  Type GetType() const { return static_cast<Type>(value_.index()); }
  bool IsEmpty() const { return GetType() == Type::Empty; }
  bool IsNull() const { return GetType() == Type::Null; }
  bool IsText() const { return GetType() == Type::Text; }
  bool IsNumeric() const;  // Boolean, Long or Double

  // Text form: Empty gives "", booleans "True"/"False", numbers their shortest
  // exact decimal form, dates "yyyy-mm-dd hh:mm:ss" (date only when the time is
  // midnight, time only on day 0).
  std::string ToText() const;
  // Rounds half to even like the platform's integer conversion; True is -1.
  int32_t ToLong() const;
  double ToDouble() const;
  // Numbers are true when not zero; texts "True"/"False" in any case or numbers.
  bool ToBoolean() const;
  // Texts in the forms "yyyy-mm-dd", "yyyy-mm-dd hh:mm[:ss]" (a "T" may stand
  // for the blank) and "hh:mm[:ss]"; numbers are day counts.
  orvmysql::Date ToDate() const;

  // The stored text; only valid when IsText().
  const std::string& Text() const { return std::get<std::string>(value_); }

  friend bool operator==(const Variant& a, const Variant& b) { return a.value_ == b.value_; }

 private:
  struct EmptyValue {
    friend bool operator==(EmptyValue, EmptyValue) { return true; }
  };
  std::variant<EmptyValue, NullValue, bool, int32_t, double, std::string, orvmysql::Date> value_;
};

// Field arrays of the providers' Add and Update operations: zero-based, read
// by fixed position. A missing position raises error 9 before any statement runs.
using FieldArray = std::vector<Variant>;

}  // namespace orvmysql
