// Date, date-time and time conditions on a fixed clock.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "QueryTestSupport.h"
#include "orvmysql/Attributes.h"
#include "orvmysql/ConditionBuilder.h"

namespace orvtest {
namespace {

using detail::CalendarRange;

std::string Stamp(Date d) {
  const DateParts p = d.Parts();
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", p.year, p.month, p.day, p.hour,
                p.minute, p.second);
  return text;
}

Date At(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return Date::FromParts(y, mo, d, h, mi, s);
}

// The range as "start .. end".
std::string Range(int32_t op, Date now, int32_t x = 0, int first_weekday = 1) {
  const auto range = CalendarRange(op, now, first_weekday, x);
  return range ? Stamp(range->start) + " .. " + Stamp(range->end) : "none";
}

TEST(QueryDateRangeTest, EveryCalendarOperatorOnAWednesdayAfternoon) {
  const Date now = At(2024, 5, 15, 15, 30, 0);  // a Wednesday
  const std::pair<int32_t, const char*> sunday_weeks[] = {
      {dcoYesterday, "2024-05-14 00:00:00 .. 2024-05-14 23:59:59"},
      {dcoToday, "2024-05-15 00:00:00 .. 2024-05-15 23:59:59"},
      {dcoTomorrow, "2024-05-16 00:00:00 .. 2024-05-16 23:59:59"},
      {dcoNextSevenDays, "2024-05-15 15:30:00 .. 2024-05-23 15:29:59"},
      {dcoLastSevenDays, "2024-05-08 00:00:00 .. 2024-05-15 15:30:00"},
      {dcoNextWeek, "2024-05-19 15:30:00 .. 2024-05-26 15:29:59"},
      {dcoLastWeek, "2024-05-05 00:00:00 .. 2024-05-11 23:59:59"},
      {dcoThisWeek, "2024-05-12 00:00:00 .. 2024-05-18 23:59:59"},
      {dcoThisMonth, "2024-05-01 00:00:00 .. 2024-05-31 23:59:59"},
      {dcoLastMonth, "2024-04-01 00:00:00 .. 2024-04-30 23:59:59"},
      {dcoNextMonth, "2024-06-01 00:00:00 .. 2024-06-30 23:59:59"},
      {dcoThisYear, "2024-01-01 00:00:00 .. 2024-12-31 23:59:59"},
      {dcoLastYear, "2023-01-01 00:00:00 .. 2023-12-31 23:59:59"},
      {dcoNextYear, "2025-01-01 00:00:00 .. 2025-12-31 23:59:59"},
  };
  for (const auto& [op, want] : sunday_weeks) EXPECT_EQ(Range(op, now), want) << op;

  const std::pair<int32_t, const char*> counted[] = {
      {dcoLastXHours, "2024-05-15 12:30:00 .. 2024-05-15 15:30:00"},
      {dcoNextXHours, "2024-05-15 15:30:00 .. 2024-05-15 18:30:00"},
      {dcoLastXDays, "2024-05-12 00:00:00 .. 2024-05-15 15:30:00"},
      {dcoNextXDays, "2024-05-15 15:30:00 .. 2024-05-18 23:59:59"},
      {dcoLastXWeeks, "2024-04-21 00:00:00 .. 2024-05-15 15:30:00"},
      {dcoNextXWeeks, "2024-05-15 15:30:00 .. 2024-06-08 23:59:59"},
      {dcoLastXMonths, "2024-02-01 00:00:00 .. 2024-05-15 15:30:00"},
      {dcoNextXMonths, "2024-05-15 15:30:00 .. 2024-08-31 23:59:59"},
      {dcoLastXYears, "2021-05-15 15:30:00 .. 2024-05-15 15:30:00"},
      {dcoNextXYears, "2024-05-15 15:30:00 .. 2027-05-15 15:30:00"},
  };
  for (const auto& [op, want] : counted) EXPECT_EQ(Range(op, now, 3), want) << op;

  // Weeks starting on Monday move this, last and next week only.
  EXPECT_EQ(Range(dcoThisWeek, now, 0, 2), "2024-05-13 00:00:00 .. 2024-05-19 23:59:59");
  EXPECT_EQ(Range(dcoLastWeek, now, 0, 2), "2024-05-06 00:00:00 .. 2024-05-12 23:59:59");
  EXPECT_EQ(Range(dcoNextWeek, now, 0, 2), "2024-05-20 15:30:00 .. 2024-05-27 15:29:59");
  EXPECT_EQ(Range(dcoLastXWeeks, now, 3, 2), Range(dcoLastXWeeks, now, 3, 1));

  EXPECT_EQ(Range(dcoOn, now), "none");
  EXPECT_EQ(Range(dcoIn, now), "none");
}

TEST(QueryDateRangeTest, MonthAndYearEndsAndLeapDays) {
  EXPECT_EQ(Range(dcoThisMonth, At(2024, 1, 31, 9)), "2024-01-01 00:00:00 .. 2024-01-31 23:59:59");
  EXPECT_EQ(Range(dcoThisMonth, At(2023, 2, 10)), "2023-02-01 00:00:00 .. 2023-02-28 23:59:59");
  EXPECT_EQ(Range(dcoLastMonth, At(2024, 3, 31, 9)), "2024-02-01 00:00:00 .. 2024-02-29 23:59:59");
  EXPECT_EQ(Range(dcoLastMonth, At(2024, 1, 10)), "2023-12-01 00:00:00 .. 2023-12-31 23:59:59");
  EXPECT_EQ(Range(dcoNextMonth, At(2024, 1, 31, 9)), "2024-02-01 00:00:00 .. 2024-02-29 23:59:59");
  EXPECT_EQ(Range(dcoNextMonth, At(2024, 12, 15)), "2025-01-01 00:00:00 .. 2025-01-31 23:59:59");
  EXPECT_EQ(Range(dcoYesterday, At(2024, 3, 1, 8)), "2024-02-29 00:00:00 .. 2024-02-29 23:59:59");
  EXPECT_EQ(Range(dcoTomorrow, At(2023, 12, 31, 8)), "2024-01-01 00:00:00 .. 2024-01-01 23:59:59");
  EXPECT_EQ(Range(dcoThisWeek, At(2024, 12, 31)), "2024-12-29 00:00:00 .. 2025-01-04 23:59:59");
  EXPECT_EQ(Range(dcoLastWeek, At(2024, 5, 12, 10)), "2024-05-05 00:00:00 .. 2024-05-11 23:59:59");
  EXPECT_EQ(Range(dcoNextYear, At(2024, 2, 29, 12)), "2025-01-01 00:00:00 .. 2025-12-31 23:59:59");
  EXPECT_EQ(Range(dcoLastXYears, At(2024, 2, 29, 12), 1),
            "2023-02-28 12:00:00 .. 2024-02-29 12:00:00");
  EXPECT_EQ(Range(dcoNextXMonths, At(2024, 1, 31, 12), 1),
            "2024-01-31 12:00:00 .. 2024-02-29 23:59:59");
  EXPECT_EQ(Range(dcoNextXDays, At(2023, 12, 31, 22), 1),
            "2023-12-31 22:00:00 .. 2024-01-01 23:59:59");
  EXPECT_EQ(Range(dcoLastXHours, At(2024, 3, 1, 1), 2),
            "2024-02-29 23:00:00 .. 2024-03-01 01:00:00");
}

class QueryDateTest : public ::testing::Test {
 protected:
  QueryDateTest() : clock_(At(2024, 5, 15, 15, 30, 0)), map_(std::make_shared<CAttributes>()) {
    map_->Add("t", "When", "When", kAttrDateTime);
    map_->Add("t", "Day", "Day", kAttrDate);
    map_->Add("t", "At", "At", kAttrTime);
  }

  std::string Pred(const std::string& attribute, ConditionOperatorEnum op, Variant value = {}) {
    const std::string sql = CConditionToStringBuilder().ToString(
        Group(dloAnd, {Cond(attribute, op, std::move(value))}), map_);
    return sql.substr(2, sql.size() - 4);
  }

  FixedClock clock_;
  std::shared_ptr<CAttributes> map_;
};

TEST_F(QueryDateTest, DateTimeComparisonsWidenToTheDaysLastSecond) {
  const Variant v = "2024-05-01 10:00:00";
  EXPECT_EQ(Pred("When", dcoEqualto, v),
            "t.`When` BETWEEN  '2024-05-01 10:00:00'  AND  '2024-05-02 09:59:59' ");
  EXPECT_EQ(Pred("When", dcoOn, v), Pred("When", dcoEqualto, v));
  EXPECT_EQ(Pred("When", dconotequalto, v),
            "t.`When` NOT BETWEEN  '2024-05-01 10:00:00'  AND  '2024-05-02 09:59:59' ");
  EXPECT_EQ(Pred("When", dcoLessThan, v), "t.`When` <  '2024-05-01 10:00:00' ");
  EXPECT_EQ(Pred("When", dcoBefore, v), Pred("When", dcoLessThan, v));
  EXPECT_EQ(Pred("When", dcoGreaterThan, v), "t.`When` >  '2024-05-02 09:59:59' ");
  EXPECT_EQ(Pred("When", dcoAfter, v), Pred("When", dcoGreaterThan, v));
  EXPECT_EQ(Pred("When", dcoLessThanEqualTo, v), "t.`When` <=  '2024-05-02 09:59:59' ");
  EXPECT_EQ(Pred("When", dcoOnOrBefore, v), Pred("When", dcoLessThanEqualTo, v));
  EXPECT_EQ(Pred("When", dcoGreaterThanEqualTo, v), "t.`When` >=  '2024-05-01 10:00:00' ");
  EXPECT_EQ(Pred("When", dcoOnOrAfter, Date::FromParts(2024, 5, 1, 10)),
            Pred("When", dcoGreaterThanEqualTo, v));
  // No value: IS NULL for every comparison but "not equal to".
  EXPECT_EQ(Pred("When", dcoEqualto), "t.`When` IS NULL ");
  EXPECT_EQ(Pred("When", dcoGreaterThan, "NULL"), "t.`When` IS NULL ");
  EXPECT_EQ(Pred("When", dconotequalto), "t.`When` IS NOT NULL ");
  EXPECT_EQ(Pred("When", dcoNotNull), "t.`When` IS NOT NULL ");
  EXPECT_EQ(Raised([&] { Pred("When", dcoEqualto, "not a date"); }).Number(), kErrTypeMismatch);
}

TEST_F(QueryDateTest, CalendarOperatorsReadTheClock) {
  EXPECT_EQ(Pred("When", dcoToday),
            "t.`When` BETWEEN  '2024-05-15 00:00:00'  AND  '2024-05-15 23:59:59' ");
  EXPECT_EQ(Pred("When", dcoLastXDays, "2"),
            "t.`When` BETWEEN  '2024-05-13 00:00:00'  AND  '2024-05-15 15:30:00' ");
  clock_.Set(At(2024, 3, 31, 9));
  EXPECT_EQ(Pred("When", dcoLastMonth),
            "t.`When` BETWEEN  '2024-02-01 00:00:00'  AND  '2024-02-29 23:59:59' ");
  // X must be a number.
  EXPECT_EQ(Raised([&] { Pred("When", dcoNextXDays); }).Number(), kErrTypeMismatch);
  EXPECT_EQ(Raised([&] { Pred("When", dcoNextXDays, "two"); }).Number(), kErrTypeMismatch);
}

TEST_F(QueryDateTest, DateColumnsCompareAndRangeByDay) {
  EXPECT_EQ(Pred("Day", dcoEqualto, "2024-05-01 10:00"), "t.`Day` =  '2024-05-01' ");
  EXPECT_EQ(Pred("Day", dcoOnOrBefore, "2024-05-01"), "t.`Day` <=  '2024-05-01' ");
  EXPECT_EQ(Pred("Day", dconotequalto), "t.`Day` IS NOT NULL ");
  EXPECT_EQ(Pred("Day", dcoLessThan), "t.`Day` IS NULL ");
  // Ranges start from today's midnight, so a week is seven whole days.
  EXPECT_EQ(Pred("Day", dcoToday), "t.`Day` BETWEEN  '2024-05-15'  AND  '2024-05-15' ");
  EXPECT_EQ(Pred("Day", dcoNextWeek), "t.`Day` BETWEEN  '2024-05-19'  AND  '2024-05-25' ");
  EXPECT_EQ(Pred("Day", dcoNextSevenDays), "t.`Day` BETWEEN  '2024-05-15'  AND  '2024-05-22' ");
  EXPECT_EQ(Pred("Day", dcoLastSevenDays), "t.`Day` BETWEEN  '2024-05-08'  AND  '2024-05-15' ");
  EXPECT_EQ(Pred("Day", dcoNextXDays, 3), "t.`Day` BETWEEN  '2024-05-15'  AND  '2024-05-18' ");
  EXPECT_EQ(Pred("Day", dcoLastXMonths, 1), "t.`Day` BETWEEN  '2024-04-01'  AND  '2024-05-15' ");
}

TEST_F(QueryDateTest, TimeColumnsUseTheNumericNullPairing) {
  EXPECT_EQ(Pred("At", dcoEqualto, "10:15"), "t.`At` = '1899-12-30 10:15:00'");
  EXPECT_EQ(Pred("At", dcoAfter, "2024-05-01 10:15:30"), "t.`At` > '1899-12-30 10:15:30'");
  EXPECT_EQ(Pred("At", dcoOnOrAfter, "10:15"), "t.`At` >= '1899-12-30 10:15:00'");
  EXPECT_EQ(Pred("At", dcoEqualto), "t.`At` IS NULL ");
  EXPECT_EQ(Pred("At", dcoLessThan), "t.`At` IS NOT NULL ");
  EXPECT_EQ(Pred("At", dcoNextXHours, 2),
            "t.`At` BETWEEN  '2024-05-15 15:30:00'  AND  '2024-05-15 17:30:00' ");
}

}  // namespace
}  // namespace orvtest
