#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <limits>
#include <tuple>
#include <utility>

#include "orvmysql/Error.h"
#include "orvmysql/Variant.h"
#include "support/ErrorCapture.h"

namespace orvmysql {
namespace {

using orvtest::ErrorOf;

// One row of a conversion table: a value and what it should convert to.
template <class T>
struct Row {
  Variant value;
  T want;
};

void ExpectParts(Date d, DateParts want) {
  const DateParts p = d.Parts();
  EXPECT_EQ(std::tuple(p.year, p.month, p.day, p.hour, p.minute, p.second),
            std::tuple(want.year, want.month, want.day, want.hour, want.minute, want.second))
      << "serial " << d.Serial();
}

TEST(DateTest, PartsAndSerialsAgree) {
  struct Case {
    DateParts parts;
    double serial;
  };
  const Case cases[] = {
      {{1899, 12, 30, 0, 0, 0, 7}, 0},       {{1900, 1, 1, 0, 0, 0, 2}, 2},
      {{1900, 3, 1, 0, 0, 0, 5}, 61},  // 1900 is not a leap year
      {{2000, 2, 29, 12, 0, 0, 3}, 36585.5}, {{2024, 1, 1, 18, 0, 0, 2}, 45292.75},
      {{1899, 12, 29, 6, 0, 0, 6}, -1.25},  // before day 0 the time runs forward
      {{100, 1, 1, 0, 0, 0, 6}, -657434},    {{9999, 12, 31, 0, 0, 0, 6}, 2958465},
  };
  for (const Case& c : cases) {
    const DateParts& p = c.parts;
    EXPECT_EQ(Date::FromParts(p.year, p.month, p.day, p.hour, p.minute, p.second).Serial(),
              c.serial);
    ExpectParts(Date(c.serial), p);
    EXPECT_EQ(Date(c.serial).Parts().weekday, p.weekday) << c.serial;
  }
  ExpectParts(Date::FromParts(9999, 12, 31, 23, 59, 59), {9999, 12, 31, 23, 59, 59});
}

TEST(DateTest, PartsRoundToTheNearestSecond) {
  ExpectParts(Date(0.5 + 0.6 / 86400), {1899, 12, 30, 12, 0, 1});
  ExpectParts(Date(0.5 + 0.4 / 86400), {1899, 12, 30, 12, 0, 0});
  ExpectParts(Date(1 - 0.4 / 86400), {1899, 12, 31, 0, 0, 0});  // 24:00:00 is the next day
  ExpectParts(Date(-1 - 86399.7 / 86400), {1899, 12, 30, 0, 0, 0});
  EXPECT_EQ(Date(1 - 0.4 / 86400).DateOnly(), Date(1));
  EXPECT_EQ(Date(-1.25).DateOnly(), Date(-1));
  EXPECT_EQ(Date(-1.25).TimeOnly(), Date(0.25));
  EXPECT_EQ(Date(45292.75).TimeOnly(), Date(0.75));
}

TEST(DateTest, FromPartsRejectsOutOfRangeParts) {
  EXPECT_EQ(ErrorOf([] { Date::FromParts(99, 12, 31); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { Date::FromParts(10000, 1, 1); }), kErrOverflow);
  const int bad[][6] = {{2024, 0, 1, 0, 0, 0},  {2024, 13, 1, 0, 0, 0}, {2024, 1, 0, 0, 0, 0},
                        {2023, 2, 29, 0, 0, 0}, {2100, 2, 29, 0, 0, 0}, {2024, 4, 31, 0, 0, 0},
                        {2024, 1, 1, 24, 0, 0}, {2024, 1, 1, -1, 0, 0}, {2024, 1, 1, 0, 60, 0},
                        {2024, 1, 1, 0, 0, 60}};
  for (const auto& b : bad) {
    EXPECT_EQ(ErrorOf([&] { Date::FromParts(b[0], b[1], b[2], b[3], b[4], b[5]); }),
              kErrInvalidCall)
        << b[0] << "-" << b[1] << "-" << b[2] << " " << b[3] << ":" << b[4] << ":" << b[5];
  }
  EXPECT_EQ(ErrorOf([] { Date(3e6).Parts(); }), kErrOverflow);
  EXPECT_EQ(ErrorOf([] { Date(std::nan("")).Parts(); }), kErrOverflow);
}

TEST(DateTest, DateAddKeepsTheDayOfMonthAndTheTime) {
  struct Case {
    DateUnit unit;
    double n;
    DateParts from, want;
  };
  const Case cases[] = {
      {DateUnit::Month, 1, {2024, 1, 31, 10, 30}, {2024, 2, 29, 10, 30}},
      {DateUnit::Month, 1, {2023, 1, 31}, {2023, 2, 28}},
      {DateUnit::Month, -1, {2024, 3, 31}, {2024, 2, 29}},
      {DateUnit::Month, 13, {2024, 12, 15}, {2026, 1, 15}},
      {DateUnit::Month, -12, {2024, 1, 15}, {2023, 1, 15}},
      {DateUnit::Year, 1, {2024, 2, 29, 8}, {2025, 2, 28, 8}},
      {DateUnit::Week, -1, {2024, 1, 3}, {2023, 12, 27}},
      {DateUnit::Day, 2.5, {2024, 1, 1}, {2024, 1, 3}},  // counts round half to even
      {DateUnit::Day, -1.5, {2024, 1, 3}, {2024, 1, 1}},
      {DateUnit::Second, 86399, {2024, 1, 1}, {2024, 1, 1, 23, 59, 59}},
      {DateUnit::Minute, -1, {1900, 1, 1}, {1899, 12, 31, 23, 59}},
      {DateUnit::Hour, -18, {1899, 12, 30, 12}, {1899, 12, 29, 18}},
      {DateUnit::Hour, 36, {1899, 12, 29, 18}, {1899, 12, 31, 6}},
  };
  for (const Case& c : cases) {
    const DateParts& f = c.from;
    const DateParts& w = c.want;
    const Date got =
        DateAdd(c.unit, c.n, Date::FromParts(f.year, f.month, f.day, f.hour, f.minute, f.second));
    EXPECT_EQ(got, Date::FromParts(w.year, w.month, w.day, w.hour, w.minute, w.second))
        << static_cast<int>(c.unit) << " " << c.n << " from " << f.year << "-" << f.month << "-"
        << f.day;
  }
  EXPECT_EQ(ErrorOf([] { DateAdd(DateUnit::Year, 1, Date::FromParts(9999, 6, 1)); }),
            kErrInvalidCall);
  EXPECT_EQ(ErrorOf([] { DateAdd(DateUnit::Day, -1, Date::FromParts(100, 1, 1)); }),
            kErrInvalidCall);
  EXPECT_EQ(ErrorOf([] { DateAdd(DateUnit::Second, 1e300, Date(0)); }), kErrInvalidCall);
}

TEST(DateTest, NowReadsTheInstalledClock) {
  SetClockForTesting([] { return Date::FromParts(2024, 5, 6, 7, 8, 9); });
  EXPECT_EQ(Date::Now(), Date::FromParts(2024, 5, 6, 7, 8, 9));
  SetClockForTesting(nullptr);
  // Without a clock installed, Now is the local wall clock.
  const std::time_t t = std::time(nullptr);
  std::tm tm{};
  localtime_r(&t, &tm);
  const Date local = Date::FromParts(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour,
                                     tm.tm_min, std::min(tm.tm_sec, 59));
  EXPECT_NEAR(Date::Now().Serial(), local.Serial(), 2.0 / 86400);
}

TEST(VariantTest, ToText) {
  const Row<const char*> cases[] = {
      {Variant(), ""},
      {true, "True"},
      {false, "False"},
      {-42, "-42"},
      {0.1, "0.1"},
      {2.5, "2.5"},
      {100.0, "100"},
      {1e20, "1e+20"},
      {"abc", "abc"},
      {Date(0), "1899-12-30"},
      {Date::FromParts(2024, 3, 5), "2024-03-05"},
      {Date(0.75), "18:00:00"},
      {Date::FromParts(2024, 3, 5, 7, 8, 9), "2024-03-05 07:08:09"},
      {Date(-1.25), "1899-12-29 06:00:00"},
      {Date::FromParts(100, 1, 1, 0, 0, 1), "0100-01-01 00:00:01"},
  };
  for (const auto& [v, want] : cases) EXPECT_EQ(v.ToText(), want);
}

TEST(VariantTest, NullRaisesInvalidUseOfNull) {
  const Variant v = Null;
  EXPECT_EQ(ErrorOf([&] { v.ToText(); }), kErrInvalidUseOfNull);
  EXPECT_EQ(ErrorOf([&] { v.ToLong(); }), kErrInvalidUseOfNull);
  EXPECT_EQ(ErrorOf([&] { v.ToDouble(); }), kErrInvalidUseOfNull);
  EXPECT_EQ(ErrorOf([&] { v.ToBoolean(); }), kErrInvalidUseOfNull);
  EXPECT_EQ(ErrorOf([&] { v.ToDate(); }), kErrInvalidUseOfNull);
}

TEST(VariantTest, ToLongRoundsHalfToEven) {
  const Row<int32_t> cases[] = {
      {2.5, 2},
      {3.5, 4},
      {-2.5, -2},
      {-3.5, -4},
      {2.4999, 2},
      {true, -1},
      {Variant(), 0},
      {" +12 ", 12},
      {"2.5e1", 25},
      {"-1.5", -2},
      {".5", 0},
      {Date(2.75), 3},
      {2147483647.0, INT32_MAX},
      {-2147483648.5, INT32_MIN},
  };
  for (const auto& [v, want] : cases) EXPECT_EQ(v.ToLong(), want) << v.ToText();
  const Variant overflow[] = {2147483647.5, -2147483649.0, "1e10",
                              std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity()};
  for (const Variant& v : overflow) EXPECT_EQ(ErrorOf([&] { v.ToLong(); }), kErrOverflow);
}

TEST(VariantTest, TextToNumber) {
  const std::pair<const char*, double> numbers[] = {{"1e-3", 0.001}, {"-.5", -0.5}, {"+7", 7},
                                                    {"\t3 ", 3},     {"5.", 5},     {"1e-400", 0}};
  for (const auto& [text, want] : numbers) EXPECT_EQ(Variant(text).ToDouble(), want) << text;
  for (const char* text :
       {"", "  ", "abc", "1,5", "1.2.3", "inf", "nan", "+-1", "- 1", "0x10", "1e", "12abc"}) {
    EXPECT_EQ(ErrorOf([&] { Variant(text).ToDouble(); }), kErrTypeMismatch) << text;
    EXPECT_EQ(ErrorOf([&] { Variant(text).ToLong(); }), kErrTypeMismatch) << text;
  }
  EXPECT_EQ(ErrorOf([] { Variant("1e400").ToDouble(); }), kErrOverflow);
}

TEST(VariantTest, ToBoolean) {
  const Row<bool> cases[] = {
      {Variant(), false}, {0, false},       {-3, true},       {0.0, false},
      {0.5, true},        {" TRUE ", true}, {"False", false}, {"0", false},
      {"-1", true},       {Date(0), false}, {Date(1), true},
  };
  for (const auto& [v, want] : cases) EXPECT_EQ(v.ToBoolean(), want) << v.ToText();
  EXPECT_EQ(ErrorOf([] { Variant("yes").ToBoolean(); }), kErrTypeMismatch);
}

TEST(VariantTest, ToDate) {
  const Row<Date> cases[] = {
      {Variant(), Date(0)},
      {45292.75, Date(45292.75)},
      {-2, Date(-2)},
      {"2024-02-29", Date::FromParts(2024, 2, 29)},
      {" 2024-02-29 13:45 ", Date::FromParts(2024, 2, 29, 13, 45)},
      {"2024-02-29T13:45:10", Date::FromParts(2024, 2, 29, 13, 45, 10)},
      {"06:00", Date(0.25)},
      {"18:00:00", Date(0.75)},
  };
  for (const auto& [v, want] : cases) EXPECT_EQ(v.ToDate(), want) << v.ToText();
  for (const char* text : {"", "2024-02-30", "2023-02-29", "0099-12-31", "2024-13-01", "24:00",
                           "12:60", "2024-1-5", "2024-01-05 9:30", "2024-01-05 12:00:", "12:00x",
                           "2024-01-05  12:00", "2024/01/05", "45292", "today"}) {
    EXPECT_EQ(ErrorOf([&] { Variant(text).ToDate(); }), kErrTypeMismatch) << text;
  }
  EXPECT_EQ(ErrorOf([] { Variant(true).ToDate(); }), kErrTypeMismatch);
  EXPECT_EQ(ErrorOf([] { Variant(1e10).ToDate(); }), kErrOverflow);
}

TEST(VariantTest, FromInt64KeepsLongsWhenTheyFit) {
  EXPECT_EQ(Variant::FromInt64(INT32_MAX), Variant(INT32_MAX));
  EXPECT_EQ(Variant::FromInt64(INT32_MIN), Variant(INT32_MIN));
  EXPECT_EQ(Variant::FromInt64(int64_t{INT32_MAX} + 1), Variant(2147483648.0));
  EXPECT_EQ(Variant::FromInt64(int64_t{INT32_MIN} - 1), Variant(-2147483649.0));
  EXPECT_TRUE(Variant(1.5).IsNumeric());
  EXPECT_TRUE(Variant(false).IsNumeric());
  EXPECT_FALSE(Variant("1").IsNumeric());
  EXPECT_FALSE(Variant(Date(1)).IsNumeric());
}

}  // namespace
}  // namespace orvmysql
