#include "orvmysql/Variant.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <ctime>

#include "orvmysql/Error.h"

namespace orvmysql {
namespace {

constexpr int64_t kSecondsPerDay = 86400;

// Days since 1970-01-01 of a date in the proleptic Gregorian calendar, counted
// in 400-year eras so that the arithmetic holds for any year.
constexpr int64_t DaysFromCivil(int64_t y, int m, int d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

struct Civil {
  int year, month, day;
};

// The inverse of DaysFromCivil.
constexpr Civil CivilFromDays(int64_t z) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  const int day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  const int month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  return {static_cast<int>(yoe + era * 400 + (month <= 2)), month, day};
}

// Day numbers below are relative to day 0, 1899-12-30.
constexpr int64_t kDayZero = DaysFromCivil(1899, 12, 30);
constexpr int64_t kFirstDay = DaysFromCivil(100, 1, 1) - kDayZero;
constexpr int64_t kLastDay = DaysFromCivil(9999, 12, 31) - kDayZero;
static_assert(kFirstDay == -657434 && kLastDay == 2958465);

int DaysInMonth(int year, int month) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : kDays[month - 1];
}

// A date as a calendar day number and whole seconds since that day's midnight.
struct DayTime {
  int64_t day;
  int64_t seconds;
};

// Splits a serial: the integer part (cut toward zero) is the day, the absolute
// fraction the time, rounded to the nearest second with 24:00:00 carried into
// the next day. Raises 6 outside the years 100..9999 (and for NaN).
DayTime Split(double serial) {
  if (!(serial > kFirstDay - 1 && serial < kLastDay + 1)) ThrowRuntimeError(kErrOverflow);
  const double whole = std::trunc(serial);
  DayTime dt{static_cast<int64_t>(whole), std::llround(std::fabs(serial - whole) * kSecondsPerDay)};
  if (dt.seconds == kSecondsPerDay) {
    ++dt.day;
    dt.seconds = 0;
  }
  if (dt.day > kLastDay) ThrowRuntimeError(kErrOverflow);
  return dt;
}

// The inverse of Split: before day 0 the time runs away from zero.
double Join(int64_t day, int64_t seconds) {
  const double time = static_cast<double>(seconds) / kSecondsPerDay;
  return day >= 0 ? static_cast<double>(day) + time : static_cast<double>(day) - time;
}

int64_t FloorDiv(int64_t a, int64_t b) {
  return a / b - (a % b != 0 && (a < 0) != (b < 0));
}

double RoundHalfEven(double x) {
  return std::fabs(x - std::trunc(x)) == 0.5 ? 2 * std::round(x / 2) : std::round(x);
}

int64_t UnitSeconds(DateUnit unit) {
  switch (unit) {
    case DateUnit::Second:
      return 1;
    case DateUnit::Minute:
      return 60;
    case DateUnit::Hour:
      return 3600;
    case DateUnit::Week:
      return 7 * kSecondsPerDay;
    default:  // Day; months and years are not counted in seconds
      return kSecondsPerDay;
  }
}

std::atomic<Date (*)()> g_clock{nullptr};

Date LocalClock() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm tm{};
  localtime_r(&now, &tm);
  // tm_sec is 60 during a leap second.
  const int second = tm.tm_sec > 59 ? 59 : tm.tm_sec;
  return Date::FromParts(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min,
                         second);
}

}  // namespace

Date Date::FromParts(int year, int month, int day, int hour, int minute, int second) {
  if (year < 100 || year > 9999) ThrowRuntimeError(kErrOverflow);
  if (month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month) || hour < 0 ||
      hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) {
    ThrowRuntimeError(kErrInvalidCall);
  }
  return Date(Join(DaysFromCivil(year, month, day) - kDayZero, hour * 3600 + minute * 60 + second));
}

Date Date::Now() {
  const auto clock = g_clock.load();
  return clock ? clock() : LocalClock();
}

DateParts Date::Parts() const {
  const DayTime dt = Split(serial_);
  const Civil civil = CivilFromDays(dt.day + kDayZero);
  DateParts parts;
  parts.year = civil.year;
  parts.month = civil.month;
  parts.day = civil.day;
  parts.hour = static_cast<int>(dt.seconds / 3600);
  parts.minute = static_cast<int>(dt.seconds / 60 % 60);
  parts.second = static_cast<int>(dt.seconds % 60);
  // Day 0 was a Saturday (7).
  parts.weekday = static_cast<int>((dt.day % 7 + 13) % 7) + 1;
  return parts;
}

Date Date::DateOnly() const {
  return Date(Join(Split(serial_).day, 0));
}

Date Date::TimeOnly() const {
  return Date(Join(0, Split(serial_).seconds));
}

Date DateAdd(DateUnit unit, double n, Date d) {
  const DayTime dt = Split(d.Serial());
  // Counts are whole numbers; any count this large leaves the years 100..9999
  // whatever the unit, and keeps the arithmetic below far from int64 overflow.
  const double count = RoundHalfEven(n);
  if (!(std::fabs(count) < 1e12)) ThrowRuntimeError(kErrInvalidCall);
  const auto k = static_cast<int64_t>(count);

  int64_t day = dt.day;
  int64_t seconds = dt.seconds;
  if (unit == DateUnit::Month || unit == DateUnit::Year) {
    const Civil civil = CivilFromDays(day + kDayZero);
    const int64_t months =
        civil.year * int64_t{12} + civil.month - 1 + (unit == DateUnit::Year ? 12 * k : k);
    if (months < 100 * 12 || months >= 10000 * 12) ThrowRuntimeError(kErrInvalidCall);
    const int year = static_cast<int>(months / 12);
    const int month = static_cast<int>(months % 12) + 1;
    day = DaysFromCivil(year, month, std::min(civil.day, DaysInMonth(year, month))) - kDayZero;
  } else {
    const int64_t total = day * kSecondsPerDay + seconds + k * UnitSeconds(unit);
    day = FloorDiv(total, kSecondsPerDay);
    seconds = total - day * kSecondsPerDay;
  }
  if (day < kFirstDay || day > kLastDay) ThrowRuntimeError(kErrInvalidCall);
  return Date(Join(day, seconds));
}

void SetClockForTesting(Date (*now)()) {
  g_clock.store(now);
}

}  // namespace orvmysql
