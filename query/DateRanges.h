#pragma once

// Relative date ranges of the calendar operators (yesterday, this week, last
// X days, ...), computed from a given "now". docs/date-conditions.md lists
// every bound.

#include <cstdint>
#include <optional>

#include "orvmysql/Variant.h"

namespace orvmysql::detail {

struct DateRange {
  Date start;
  Date end;
};

// True for the operators 33-42, which read a count X from the value.
bool IsCountOperator(int32_t op);

// The closed range of a calendar operator (16-29, 33-42) at now, with weeks
// starting on first_weekday (1 = Sunday ... 7 = Saturday) for this, last and
// next week; none for any other operator. x is the count of 33-42.
std::optional<DateRange> CalendarRange(int32_t op, Date now, int first_weekday, int32_t x);

// The first day of the week from the host's regional setting (the program's
// LC_TIME locale, else the environment's), read once: 1 = Sunday ... 7 =
// Saturday; Sunday when none is set.
int FirstDayOfWeek();
// Replaces the host's first day of the week (0 restores it). For tests.
void SetFirstDayOfWeekForTesting(int day);

}  // namespace orvmysql::detail
