// Renderers for date-time, date and time attributes, and the relative ranges
// of the calendar operators.

#include <langinfo.h>
#include <locale.h>

#include <atomic>
#include <cstdint>
#include <cstring>

#include "access/ErrorHandling.h"
#include "access/General.h"
#include "query/DateRanges.h"
#include "query/Renderers.h"

namespace orvmysql::detail {

namespace {

std::atomic<int> g_first_day_override{0};

constexpr double kDayEndSeconds = 86399;

Date AddDays(double n, Date d) {
  return DateAdd(DateUnit::Day, n, d);
}
Date EndOfDay(Date day) {
  return DateAdd(DateUnit::Second, kDayEndSeconds, day);
}
// The last second of the period of one unit that begins at start.
Date LastSecond(DateUnit unit, Date start) {
  return DateAdd(DateUnit::Second, -1, DateAdd(unit, 1, start));
}
Date FirstOfMonth(Date d) {
  const DateParts p = d.Parts();
  return Date::FromParts(p.year, p.month, 1);
}
Date FirstOfYear(Date d, int offset) {
  return Date::FromParts(d.Parts().year + offset, 1, 1);
}
// 1 for the first day of the week ... 7 for the last.
int WeekdayFrom(Date d, int first_weekday) {
  return (d.Parts().weekday - first_weekday + 7) % 7 + 1;
}
Date StartOfWeek(Date d, int first_weekday) {
  return AddDays(1 - WeekdayFrom(d, first_weekday), d).DateOnly();
}

// The program's LC_TIME locale when it has chosen one, else the environment's.
locale_t HostTimeLocale() {
  const char* chosen = setlocale(LC_TIME, nullptr);
  const bool plain =
      chosen == nullptr || std::strcmp(chosen, "C") == 0 || std::strcmp(chosen, "POSIX") == 0;
  return newlocale(LC_TIME_MASK, plain ? "" : chosen, static_cast<locale_t>(nullptr));
}

int HostFirstDayOfWeek() {
  locale_t host = HostTimeLocale();
  if (host == static_cast<locale_t>(nullptr)) return 1;
  // The locale's day names start at the weekday of the date week_1stday
  // (yyyymmdd); first_weekday is the 1-based index of the week's first day
  // in that list.
  const int index = nl_langinfo_l(_NL_TIME_FIRST_WEEKDAY, host)[0];
  const auto base = static_cast<unsigned>(
      reinterpret_cast<std::uintptr_t>(nl_langinfo_l(_NL_TIME_WEEK_1STDAY, host)));
  freelocale(host);
  if (index < 1 || index > 7) return 1;
  int base_weekday = 1;
  try {
    base_weekday = Date::FromParts(static_cast<int>(base / 10000),
                                   static_cast<int>(base / 100 % 100), static_cast<int>(base % 100))
                       .Parts()
                       .weekday;
  } catch (const Error&) {
    return 1;
  }
  return (base_weekday - 1 + index - 1) % 7 + 1;
}

using Formatter = std::string (*)(const Variant&);

std::string Between(const std::string& column, const DateRange& range, Formatter format) {
  return column + " BETWEEN " + format(Variant(range.start)) + " AND " + format(Variant(range.end));
}

// The range of a calendar operator at now, with X read from the value for the
// "last X" and "next X" operators; none for other operators.
std::optional<DateRange> RangeFor(const CCondition& condition, Date now) {
  const int32_t op = condition.Operator();
  const int32_t x = IsCountOperator(op) ? ReadValue(condition, "NULL").ToLong() : 0;
  return CalendarRange(op, now, FirstDayOfWeek(), x);
}

// NULL value of a date: only "not equal to" asks for a set column.
std::string_view DateNullForm(int comparison) {
  return comparison == dconotequalto ? " IS NOT NULL " : " IS NULL ";
}

// How a date, date-time or time column writes its comparisons.
struct ComparisonForms {
  int (*comparison)(int32_t op);  // the comparison 1-6 an operator stands for, 0 for none
  std::string_view (*null_form)(int comparison);
  std::string (*compare)(const std::string& column, int comparison, Date value);
};

const ComparisonForms kDateTimeForms = {
    &ComparisonOf, &DateNullForm, [](const std::string& column, int comparison, Date at) {
      const auto f = [](Date d) { return ConvertDateTimeIntoSQLFormat(Variant(d)); };
      // "Equals" and the bounds that include the value's day reach its last second.
      switch (comparison) {
        case dcoEqualto:
        case dconotequalto:
          return column + (comparison == dcoEqualto ? " BETWEEN " : " NOT BETWEEN ") + f(at) +
                 " AND " + f(EndOfDay(at));
        case dcoGreaterThan:
        case dcoLessThanEqualTo:
          return column + std::string(ComparisonSql(comparison)) + f(EndOfDay(at));
        default:
          return column + std::string(ComparisonSql(comparison)) + f(at);
      }
    }};

// Dates take neither "before" nor "after".
const ComparisonForms kDateForms = {
    [](int32_t op) { return op == dcoBefore || op == dcoAfter ? 0 : ComparisonOf(op); },
    &DateNullForm,
    [](const std::string& column, int comparison, Date day) {
      return column + std::string(ComparisonSql(comparison)) +
             ConvertDateIntoSQLFormat(Variant(day));
    }};

const ComparisonForms kTimeForms = {&ComparisonOf, &NumericNullForm,
                                    [](const std::string& column, int comparison, Date time) {
                                      return column + std::string(ComparisonSql(comparison)) +
                                             ConvertTimeIntoSQLFormat(Variant(time));
                                    }};

// The NULL tests and the comparisons of a date-like column; none for the
// calendar operators and the refused ones.
std::optional<std::string> Comparison(const CCondition& condition, const std::string& column,
                                      const ComparisonForms& forms) {
  const int32_t op = condition.Operator();
  if (op == dcoNull) return column + " IS NULL ";
  if (op == dcoNotNull) return column + " IS NOT NULL ";
  const int comparison = forms.comparison(op);
  if (comparison == 0) return std::nullopt;
  const Variant value = ReadValue(condition, "NULL");
  if (IsNullText(value)) return column + std::string(forms.null_form(comparison));
  return forms.compare(column, comparison, value.ToDate());
}

}  // namespace

bool IsCountOperator(int32_t op) {
  return op >= dcoLastXHours && op <= dcoNextXYears;
}

std::optional<DateRange> CalendarRange(int32_t op, Date now, int first_weekday, int32_t count) {
  const Date today = now.DateOnly();
  const double x = count;
  switch (op) {
    case dcoYesterday:
      return DateRange{AddDays(-1, today), EndOfDay(AddDays(-1, today))};
    case dcoToday:
      return DateRange{today, EndOfDay(today)};
    case dcoTomorrow:
      return DateRange{AddDays(1, today), EndOfDay(AddDays(1, today))};
    case dcoNextSevenDays:
      return DateRange{now, EndOfDay(AddDays(7, now))};
    case dcoLastSevenDays:
      return DateRange{AddDays(-7, today), now};
    case dcoNextWeek: {
      const Date start = AddDays(8 - WeekdayFrom(now, first_weekday), now);
      return DateRange{start, LastSecond(DateUnit::Week, start)};
    }
    case dcoLastWeek: {
      const Date last_day = AddDays(-WeekdayFrom(now, first_weekday), now).DateOnly();
      return DateRange{AddDays(-6, last_day), EndOfDay(last_day)};
    }
    case dcoThisWeek: {
      const Date start = StartOfWeek(now, first_weekday);
      return DateRange{start, LastSecond(DateUnit::Week, start)};
    }
    case dcoThisMonth:
      return DateRange{FirstOfMonth(now), LastSecond(DateUnit::Month, FirstOfMonth(now))};
    case dcoLastMonth: {
      const Date last_day = AddDays(-now.Parts().day, now).DateOnly();
      return DateRange{FirstOfMonth(last_day), EndOfDay(last_day)};
    }
    case dcoNextMonth: {
      const Date start = FirstOfMonth(DateAdd(DateUnit::Month, 1, now));
      return DateRange{start, LastSecond(DateUnit::Month, start)};
    }
    case dcoThisYear:
    case dcoLastYear:
    case dcoNextYear: {
      const Date start = FirstOfYear(now, op == dcoThisYear ? 0 : op == dcoLastYear ? -1 : 1);
      return DateRange{start, LastSecond(DateUnit::Year, start)};
    }
    case dcoLastXHours:
      return DateRange{DateAdd(DateUnit::Hour, -x, now), now};
    case dcoNextXHours:
      return DateRange{now, DateAdd(DateUnit::Hour, x, now)};
    case dcoLastXDays:
      return DateRange{AddDays(-x, now).DateOnly(), now};
    case dcoNextXDays:
      return DateRange{now, EndOfDay(AddDays(x, now).DateOnly())};
    // The week forms count weekdays from Sunday whatever the regional setting.
    case dcoLastXWeeks:
      return DateRange{StartOfWeek(DateAdd(DateUnit::Week, -x, now), 1), now};
    case dcoNextXWeeks:
      return DateRange{now,
                       LastSecond(DateUnit::Week, StartOfWeek(DateAdd(DateUnit::Week, x, now), 1))};
    case dcoLastXMonths:
      return DateRange{FirstOfMonth(DateAdd(DateUnit::Month, -x, now)), now};
    case dcoNextXMonths:
      return DateRange{now,
                       LastSecond(DateUnit::Month, FirstOfMonth(DateAdd(DateUnit::Month, x, now)))};
    case dcoLastXYears:
      return DateRange{DateAdd(DateUnit::Year, -x, now), now};
    case dcoNextXYears:
      return DateRange{now, DateAdd(DateUnit::Year, x, now)};
    default:
      return std::nullopt;
  }
}

int FirstDayOfWeek() {
  static const int host = HostFirstDayOfWeek();
  const int chosen = g_first_day_override.load(std::memory_order_relaxed);
  return chosen != 0 ? chosen : host;
}

void SetFirstDayOfWeekForTesting(int day) {
  g_first_day_override.store(day >= 1 && day <= 7 ? day : 0, std::memory_order_relaxed);
}

std::string GetDateTimeCondition(const CCondition& condition, const std::string& column) {
  return Guard({"CConditionToStringBuilder:GetDateTimeCondition method ("}, [&]() -> std::string {
    if (auto sql = Comparison(condition, column, kDateTimeForms)) return *std::move(sql);
    if (const auto range = RangeFor(condition, Date::Now())) {
      return Between(column, *range, &ConvertDateTimeIntoSQLFormat);
    }
    RaiseInvalidOperator(condition, "CConditionToStringBuilder:GetDateTimeCondition method");
  });
}

std::string GetDateCondition(const CCondition& condition, const std::string& column) {
  return Guard({"CConditionToStringBuilder:GetDateCondition method ("}, [&]() -> std::string {
    if (auto sql = Comparison(condition, column, kDateForms)) return *std::move(sql);
    // Date columns hold no time of day, so the ranges are taken from today's
    // midnight and written as dates.
    const int32_t op = condition.Operator();
    if (op != dcoLastXHours && op != dcoNextXHours) {
      if (const auto range = RangeFor(condition, Date::Now().DateOnly())) {
        return Between(column, *range, &ConvertDateIntoSQLFormat);
      }
    }
    RaiseInvalidOperator(condition, "CConditionToStringBuilder:GetDateCondition method");
  });
}

std::string GetTimeCondition(const CCondition& condition, const std::string& column) {
  return Guard({"CConditionToStringBuilder:GetTimeCondition method ("}, [&]() -> std::string {
    if (auto sql = Comparison(condition, column, kTimeForms)) return *std::move(sql);
    const int32_t op = condition.Operator();
    if (op == dcoLastXHours || op == dcoNextXHours) {
      return Between(column, *RangeFor(condition, Date::Now()), &ConvertDateTimeIntoSQLFormat);
    }
    RaiseInvalidOperator(condition, "CConditionToStringBuilder:GetTimeCondition method");
  });
}

}  // namespace orvmysql::detail
