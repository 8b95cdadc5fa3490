#include "automation/dates.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "automation/errors.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::ErrorOf;

Date D(int y, int m, int d) { return DateSerial(y, m, d); }
Date DT(int y, int m, int d, int h, int n, int s) { return DateTimeSerial(y, m, d, h, n, s); }

TEST(Dates, SerialsCountDaysFrom1899December30) {
  const struct {
    int y, m, d;
    double serial;
  } cases[] = {
      {1899, 12, 30, 0},      {1900, 1, 1, 2},           {2026, 11, 22, 46348},
      {100, 1, 1, -657434},   {9999, 12, 31, 2958465},   {2026, 13, 1, 46388},   // January 2027
      {2005, 3, 0, 38411},    // day 0 is the last day of February
      {2006, 0, 1, 38687},    // month 0 is December 2005
      {2005, 2, 29, 38412},   // rolls into March
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DateSerial(c.y, c.m, c.d).serial, c.serial) << c.y << '-' << c.m << '-' << c.d;
  }
  EXPECT_EQ(ErrorOf([] { DateSerial(99, 12, 31); }), err::kOverflow);
  EXPECT_EQ(ErrorOf([] { DateSerial(10000, 1, 1); }), err::kOverflow);

  // Before day 0 the time is still added to the day: -1.25 is 29 Dec 1899, 06:00.
  EXPECT_EQ(DT(1899, 12, 29, 6, 0, 0).serial, -1.25);
  const Date before{-1.25};
  EXPECT_EQ(Year(before), 1899);
  EXPECT_EQ(Month(before), 12);
  EXPECT_EQ(Day(before), 29);
  EXPECT_EQ(Hour(before), 6);
  const Date t = DT(2026, 11, 22, 15, 4, 5);
  EXPECT_EQ(Minute(t), 4);
  EXPECT_EQ(Second(t), 5);
  EXPECT_TRUE(HasTime(t));
  EXPECT_FALSE(HasTime(D(2026, 11, 22)));
  EXPECT_EQ(DT(2026, 1, 1, 24, 0, 0), D(2026, 1, 2));  // hours carry into the day
}

TEST(Dates, SerialsOutsideTheCalendarOverflow) {
  // Serials past the years 100 to 9999, or no number at all, have no calendar fields; the
  // largest doubles must not wrap around into some other day.
  const struct {
    double serial;
    int32_t error;
  } cases[] = {
      {-657434, 0},          {2958465.5, 0},      {-657435, err::kOverflow},
      {2958466, err::kOverflow}, {1e308, err::kOverflow}, {-1e308, err::kOverflow},
      {1e19, err::kOverflow},    {INFINITY, err::kOverflow}, {NAN, err::kOverflow},
  };
  for (const auto& c : cases) {
    const Date d{c.serial};
    EXPECT_EQ(ErrorOf([&] { Year(d); }), c.error) << c.serial;
    EXPECT_EQ(ErrorOf([&] { DateDiff("s", Date{0}, d); }), c.error) << c.serial;
    EXPECT_EQ(ErrorOf([&] { DateAdd("m", 1, d); }), c.error == 0 && c.serial > 2958000
                                                        ? err::kOverflow
                                                        : c.error)
        << c.serial;
  }
}

TEST(Dates, DateAddClampsTheDayToTheTargetMonth) {
  const struct {
    const char* interval;
    double number;
    Date from;
    Date expected;
  } cases[] = {
      {"m", 1, D(2005, 1, 31), D(2005, 2, 28)},
      {"m", 18, D(2005, 6, 30), D(2006, 12, 30)},
      {"M", 1, D(2004, 1, 31), D(2004, 2, 29)},
      {"m", -1, D(2005, 3, 31), D(2005, 2, 28)},
      {"m", 1.9, D(2005, 1, 15), D(2005, 2, 15)},  // whole months only
      {"m", 1, DT(2005, 1, 31, 12, 0, 0), DT(2005, 2, 28, 12, 0, 0)},
      {"yyyy", 1, D(2004, 2, 29), D(2005, 2, 28)},
      {"q", 1, D(2005, 11, 30), D(2006, 2, 28)},
      {"d", 1, D(2005, 12, 31), D(2006, 1, 1)},
      {"d", 1, Date{-1.25}, Date{0.25}},
      {"y", -1, D(2005, 1, 1), D(2004, 12, 31)},
      {"ww", 2, D(2005, 1, 1), D(2005, 1, 15)},
      {"h", 25, DT(2005, 1, 1, 0, 0, 0), DT(2005, 1, 2, 1, 0, 0)},
      {"s", -1, D(2005, 1, 1), DT(2004, 12, 31, 23, 59, 59)},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DateAdd(c.interval, c.number, c.from), c.expected)
        << c.interval << ' ' << c.number << ' ' << c.from.serial;
  }
  EXPECT_EQ(ErrorOf([] { DateAdd("x", 1, D(2005, 1, 1)); }), err::kInvalidCall);
  EXPECT_EQ(ErrorOf([] { DateAdd("yyyy", 1, D(9999, 6, 1)); }), err::kOverflow);
}

TEST(Dates, DateDiffCountsBoundaries) {
  const struct {
    const char* interval;
    Date from;
    Date to;
    int64_t expected;
  } cases[] = {
      {"m", D(2026, 1, 31), D(2026, 2, 1), 1},
      {"m", D(2026, 1, 1), D(2026, 1, 31), 0},
      {"m", D(2005, 12, 1), D(2000, 1, 1), -71},
      {"d", DT(2026, 1, 1, 23, 0, 0), DT(2026, 1, 2, 1, 0, 0), 1},  // times ignored
      {"d", Date{-1.25}, Date{0.25}, 1},
      {"y", D(1900, 1, 1), D(1900, 1, 2), 1},
      {"yyyy", D(2025, 12, 31), D(2026, 1, 1), 1},
      {"q", D(2026, 3, 31), D(2026, 4, 1), 1},
      {"ww", D(2026, 1, 3), D(2026, 1, 4), 1},   // Saturday to Sunday
      {"ww", D(2026, 1, 4), D(2026, 1, 10), 0},  // Sunday to Saturday
      {"ww", Date{0}, Date{1}, 1},
      {"h", DT(2026, 1, 1, 10, 59, 59), DT(2026, 1, 1, 11, 0, 0), 1},
      {"s", DT(2026, 1, 1, 10, 59, 59), DT(2026, 1, 1, 11, 0, 0), 1},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DateDiff(c.interval, c.from, c.to), c.expected)
        << c.interval << ' ' << c.from.serial << ' ' << c.to.serial;
  }
  EXPECT_EQ(ErrorOf([] { DateDiff("w", D(2026, 1, 1), D(2026, 2, 1)); }), err::kInvalidCall);
}

TEST(Dates, ParseDateAcceptsTheWrittenForms) {
  const struct {
    const char* text;
    Date expected;
  } accepted[] = {
      {"11/22/2026", D(2026, 11, 22)},
      {"01/02/26", D(2026, 1, 2)},
      {"1/2/29", D(2029, 1, 2)},
      {"1/2/30", D(1930, 1, 2)},
      {"2/29/2024", D(2024, 2, 29)},
      {"22-Nov-2026", D(2026, 11, 22)},
      {"05-NOVEMBER-2026", D(2026, 11, 5)},
      {"Nov/22/2026", D(2026, 11, 22)},
      {"2026-11-22", D(2026, 11, 22)},
      {"2026-11-22T15:04:05", DT(2026, 11, 22, 15, 4, 5)},
      {"11/22/2026 3:04:05 PM", DT(2026, 11, 22, 15, 4, 5)},
      {"11/22/2026 12:30 am", DT(2026, 11, 22, 0, 30, 0)},
      {"  11/22/2026  ", D(2026, 11, 22)},
      {"3:04:05 PM", Date{(15 * 3600 + 4 * 60 + 5) / 86400.0}},
  };
  for (const auto& c : accepted) {
    const std::optional<Date> got = ParseDate(c.text);
    ASSERT_TRUE(got.has_value()) << '"' << c.text << '"';
    EXPECT_EQ(*got, c.expected) << '"' << c.text << '"';
  }

  const char* rejected[] = {
      "",           "abc",           "2/30/2020",          "13/1/2020",     "0/1/2020",
      "11/22/2026x", "11-22-2026",   "Nov 22 2026",        "22-Nox-2026",   "11/22/202",
      "1/1/0099",   "2026-02-30",    "11/22/2026T10:00",   "2026-11-22T",   "11/22/2026 25:00",
      "11/22/2026 13:00 PM", "11/22/2026 0:00 AM", "11/22/2026 3:4", "11/22/2026 10:60",
      "2026/11/22",
  };
  for (const char* text : rejected) {
    EXPECT_FALSE(ParseDate(text).has_value()) << '"' << text << '"';
  }
}

}  // namespace
}  // namespace kwx
