#include "automation/format.h"

#include <string>

#include <gtest/gtest.h>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/errors.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::ErrorOf;

TEST(Format, NamedDateFormats) {
  const Date day = DateSerial(2026, 11, 2);
  const Date with_time = DateTimeSerial(2026, 11, 22, 15, 4, 5);
  const struct {
    Variant value;
    const char* format;
    const char* expected;
  } cases[] = {
      {Variant(day), "Short Date", "11/2/2026"},
      {Variant(day), "short date", "11/2/2026"},
      {Variant(day), "medium date", "02-Nov-2026"},
      {Variant(DateSerial(2030, 1, 5)), "Medium Date", "05-Jan-2030"},
      {Variant(day), "MMM/DD/YYYY", "Nov/02/2026"},
      {Variant(day), "yyyy-mm-dd", "2026-11-02"},
      {Variant(day), "General Date", "11/2/2026"},
      {Variant(with_time), "General Date", "11/22/2026 3:04:05 PM"},
      {Variant(with_time), "Short Date", "11/22/2026"},  // the time is not shown
      {Variant("2026-11-22"), "MMM/DD/YYYY", "Nov/22/2026"},
      {Variant(46348), "Short Date", "11/22/2026"},
      {Variant(DateSerial(100, 1, 1)), "Short Date", "1/1/0100"},
      {Variant(), "Short Date", ""},
      {Variant::Null(), "Short Date", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Format(c.value, c.format), c.expected) << c.value << " as " << c.format;
  }
  EXPECT_EQ(ErrorOf([] { Format(Variant("soon"), "Short Date"); }), err::kTypeMismatch);
  EXPECT_EQ(ErrorOf([] { Format(Variant(DateSerial(2026, 1, 1)), "dddd"); }), err::kInvalidCall);
}

TEST(Format, DateFormatsReadBack) {
  // Everything written in a date format is read back as the same day.
  const Date days[] = {DateSerial(2026, 11, 22), DateSerial(2030, 2, 28), DateSerial(1931, 12, 1),
                       DateSerial(2000, 2, 29), DateSerial(9999, 12, 31)};
  for (const char* format : {"Short Date", "medium date", "MMM/DD/YYYY", "yyyy-mm-dd"}) {
    for (const Date d : days) {
      const std::string text = FormatDate(d, format);
      EXPECT_EQ(ParseDate(text), d) << format << ": " << text;
    }
  }
  const Date t = DateTimeSerial(2026, 11, 22, 0, 0, 1);
  EXPECT_EQ(ParseDate(FormatDate(t, "General Date")), t);
  EXPECT_EQ(CDate(Variant(CStr(Variant(Date{0.5})))), Date{0.5});
}

TEST(Format, TwoDecimalsRoundHalfAwayFromZero) {
  const struct {
    Variant value;
    const char* expected;
  } cases[] = {
      {Variant(1.01f), "1.01"},    {Variant(1.005), "1.01"},    {Variant(1.004), "1.00"},
      {Variant(-1.005), "-1.01"},  {Variant(0.125), "0.13"},    {Variant(2.675), "2.68"},
      {Variant(0.0), "0.00"},      {Variant(-0.001), "0.00"},   {Variant(1234567.891), "1234567.89"},
      {Variant(9.999), "10.00"},   {Variant(0.005), "0.01"},    {Variant(0.0049), "0.00"},
      {Variant(1e20), "100000000000000000000.00"},              {Variant(int16_t{7}), "7.00"},
      {Variant("3.14159"), "3.14"}, {Variant(true), "-1.00"},   {Variant(), ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Format(c.value, "0.00"), c.expected) << c.value;
  EXPECT_EQ(ErrorOf([] { Format(Variant("abc"), "0.00"); }), err::kTypeMismatch);
}

}  // namespace
}  // namespace kwx
