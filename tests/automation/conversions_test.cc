#include "automation/conversions.h"

#include <cmath>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::ErrorOf;

TEST(Conversions, ValReadsTheLeadingNumber) {
  const struct {
    const char* text;
    double expected;
  } cases[] = {
      {"12.5x", 12.5}, {"", 0},          {".", 0},         {"  42", 42},     {"1 2 3", 123},
      {"- 4", -4},      {"1.2.3", 1.2},    {"2d2", 200},     {"1e", 1},        {"1E-2x", 0.01},
      {"&H1F", 31},     {"&o17", 15},      {"&Z12", 0},      {"12,5", 12},     {"1e999", INFINITY},
      {"3\r4", 3},
  };
  for (const auto& c : cases) {
    EXPECT_DOUBLE_EQ(Val(c.text), c.expected) << '"' << c.text << '"';
  }
}

TEST(Conversions, NumberTextKeepsSignificantDigitsAndExponentForm) {
  const struct {
    float value;
    const char* expected;
  } singles[] = {
      {123456789.0f, "1.234568E+08"}, {1e7f, "1E+07"},  {1234567.0f, "1234567"},
      {12.34f, "12.34"},              {0.1f, "0.1"},    {1e-5f, "1E-05"},
      {-3.0e-20f, "-3E-20"},          {1.01f, "1.01"},
      // Rounding on the exact binary value: half to even, a carry into the next decade, the
      // edges of the usual range, a Single coarser than 7 digits, the smallest Single.
      {1234567.5f, "1234568"},        {9999999.5f, "1E+07"},     {0.0001f, "0.0001"},
      {0.00009999999f, "9.999999E-05"}, {8.8e12f, "8.8E+12"},   {16777216.0f, "1.677722E+07"},
      {1.5e-45f, "1.401298E-45"},     {-98.2f, "-98.2"},
  };
  for (const auto& c : singles) EXPECT_EQ(NumberText(c.value), c.expected) << c.value;

  const struct {
    double value;
    const char* expected;
  } doubles[] = {
      {0.1, "0.1"},        {1.0 / 3, "0.333333333333333"},
      {1e15, "1E+15"},     {123456789012345.0, "123456789012345"},
      {1.5e300, "1.5E+300"}, {-1.25e-100, "-1.25E-100"}, {2.0 / 3 * 1e-3, "0.000666666666666667"},
      {999999999999999.9, "1E+15"},  // rounding to 15 digits moves the exponent
  };
  for (const auto& c : doubles) EXPECT_EQ(NumberText(c.value), c.expected) << c.value;

  // Exact ties round half to even on the binary value; a decimal that only looks like a tie
  // rounds by the binary value it stands for.
  const struct {
    double value;
    bool single;
    const char* expected;
  } ties[] = {
      {1234567.5, true, "1234568"},   {1234568.5, true, "1234568"},
      {1e100, false, "1E+100"},       {5e-324, false, "4.94065645841247E-324"},
      {1.7976931348623157e308, false, "1.79769313486232E+308"},
      {99999.995, true, "99999.99"},  {0.00012345675, false, "0.00012345675"},
  };
  for (const auto& c : ties) {
    EXPECT_EQ(c.single ? NumberText(static_cast<float>(c.value)) : NumberText(c.value),
              c.expected)
        << c.value;
  }
}

TEST(Conversions, IntegerConversionsRoundHalfToEvenAndOverflow) {
  const struct {
    Variant value;
    int32_t cint;  // 0 with cint_error set when CInt raises
    int32_t cint_error;
    int32_t clng_error;
  } cases[] = {
      {Variant(2.5), 2, 0, 0},
      {Variant(3.5), 4, 0, 0},
      {Variant(-2.5), -2, 0, 0},
      {Variant(32767.4), 32767, 0, 0},
      {Variant(32767.5), 0, err::kOverflow, 0},
      {Variant(-32768.5), -32768, 0, 0},
      {Variant(-32769.0), 0, err::kOverflow, 0},
      {Variant(5e9), 0, err::kOverflow, err::kOverflow},
      {Variant(" 6.5 "), 6, 0, 0},
      {Variant("12x"), 0, err::kTypeMismatch, err::kTypeMismatch},
      {Variant(""), 0, err::kTypeMismatch, err::kTypeMismatch},
      {Variant(true), -1, 0, 0},
      {Variant(), 0, 0, 0},
      {Variant::Null(), 0, err::kInvalidUseOfNull, err::kInvalidUseOfNull},
      {Variant(Currency{25000}), 2, 0, 0},
      {Variant(Date{45000.75}), 0, err::kOverflow, 0},
      {Variant(SafeArray()), 0, err::kTypeMismatch, err::kTypeMismatch},
  };
  for (const auto& c : cases) {
    int16_t got = 0;
    EXPECT_EQ(ErrorOf([&] { got = CInt(c.value); }), c.cint_error) << c.value;
    if (c.cint_error == 0) {
      EXPECT_EQ(got, c.cint) << c.value;
    }
    EXPECT_EQ(ErrorOf([&] { CLng(c.value); }), c.clng_error) << c.value;
  }
  EXPECT_EQ(CLng(Variant(2147483647.4)), 2147483647);
  EXPECT_EQ(ErrorOf([] { CLng(Variant(2147483647.5)); }), err::kOverflow);
  EXPECT_EQ(CByte(Variant(255.4)), 255);
  EXPECT_EQ(ErrorOf([] { CByte(Variant(-1)); }), err::kOverflow);
  EXPECT_EQ(RoundHalfEven(0.5), 0);
  EXPECT_EQ(RoundHalfEven(1.5), 2);
  EXPECT_EQ(RoundHalfEven(-0.5), 0);
}

TEST(Conversions, FloatingAndOtherConversions) {
  EXPECT_FLOAT_EQ(CSng(Variant("1.5E3")), 1500.0f);
  EXPECT_EQ(ErrorOf([] { CSng(Variant(1e39)); }), err::kOverflow);
  EXPECT_EQ(ErrorOf([] { CDbl(Variant("1e999")); }), err::kOverflow);
  EXPECT_EQ(ErrorOf([] { CDbl(Variant("abc")); }), err::kTypeMismatch);
  EXPECT_DOUBLE_EQ(CDbl(Variant("&H10")), 16);
  EXPECT_DOUBLE_EQ(CDbl(Variant(Date{1.5})), 1.5);
  EXPECT_EQ(CCur(Variant(1.23456)).scaled, 12346);
  EXPECT_EQ(CCur(Variant(2.5)).scaled, 25000);
  EXPECT_EQ(ErrorOf([] { CCur(Variant(1e15)); }), err::kOverflow);
  EXPECT_EQ(CDec(Variant("12345678901234567")).value, 12345678901234567.0L);

  const struct {
    Variant value;
    bool expected;
    int32_t error;
  } booleans[] = {
      {Variant("True"), true, 0},   {Variant("fALSE"), false, 0}, {Variant(" true "), true, 0},
      {Variant("0"), false, 0},     {Variant("-2"), true, 0},     {Variant(0.0), false, 0},
      {Variant(0.1), true, 0},      {Variant(), false, 0},        {Variant("yes"), false, err::kTypeMismatch},
      {Variant::Null(), false, err::kInvalidUseOfNull},
  };
  for (const auto& c : booleans) {
    bool got = false;
    EXPECT_EQ(ErrorOf([&] { got = CBool(c.value); }), c.error) << c.value;
    if (c.error == 0) {
      EXPECT_EQ(got, c.expected) << c.value;
    }
  }

  EXPECT_EQ(CDate(Variant("11/22/2026")), DateSerial(2026, 11, 22));
  EXPECT_EQ(CDate(Variant(45000)).serial, 45000);
  EXPECT_EQ(CDate(Variant()).serial, 0);
  EXPECT_EQ(ErrorOf([] { CDate(Variant("2/30/2020")); }), err::kTypeMismatch);
  EXPECT_EQ(ErrorOf([] { CDate(Variant(1e9)); }), err::kOverflow);

  EXPECT_EQ(ConvertTo(Variant("7"), VarType::Integer).type(), VarType::Integer);
  EXPECT_EQ(ConvertTo(Variant(7), VarType::Byte).AsByte(), 7);
  EXPECT_TRUE(ConvertTo(Variant("x"), VarType::Empty).SameAs(Variant("x")));
}

// Decimal texts convert to exactly the value of their literal read at full precision, however
// they are read; the cases around the 18-digit limit and the odd forms included.
TEST(Conversions, DecimalTextsConvertToTheirLiteralsValue) {
  std::vector<std::string> texts = {"0",     "-0",    " 12.5\t", "5.",   "+3",   ".25",
                                    "007",   "-1.10", "123456789012345678", "1234567890123456789",
                                    "0.1",   "9.999999999999999999", "1e3", "1234.5678"};
  std::mt19937_64 rng(11);
  for (int i = 0; i < 20000; ++i) {
    std::string t = (rng() % 2 ? "-" : "") + std::to_string(rng() % 100000000000ull);
    t.insert(t.size() - static_cast<size_t>(rng() % std::min<size_t>(t.size(), 12)), ".");
    texts.push_back(t);
  }
  for (const std::string& t : texts) {
    const long double literal = std::strtold(t.c_str(), nullptr);
    EXPECT_EQ(CDbl(Variant(t)), static_cast<double>(literal)) << t;
    EXPECT_EQ(CSng(Variant(t)), static_cast<float>(literal)) << t;
    EXPECT_EQ(std::signbit(CDbl(Variant(t))), std::signbit(literal)) << t;
  }
}

TEST(Conversions, CStrWritesEachTypeInItsStandardText) {
  const struct {
    Variant value;
    const char* expected;
  } cases[] = {
      {Variant(true), "True"},
      {Variant(false), "False"},
      {Variant(1e7f), "1E+07"},
      {Variant(0.5), "0.5"},
      {Variant(Currency{-12345}), "-1.2345"},
      {Variant(Currency{1230000}), "123"},
      {Variant(Decimal{0.1L}), "0.1"},
      {Variant::Byte(200), "200"},
      {Variant(), ""},
      {Variant(DateSerial(2026, 11, 22)), "11/22/2026"},
      {Variant(DateTimeSerial(2026, 11, 22, 15, 4, 5)), "11/22/2026 3:04:05 PM"},
      {Variant(DateTimeSerial(1899, 12, 30, 15, 4, 5)), "3:04:05 PM"},
      {Variant(DateTimeSerial(2026, 1, 2, 0, 30, 0)), "1/2/2026 12:30:00 AM"},
  };
  for (const auto& c : cases) EXPECT_EQ(CStr(c.value), c.expected) << c.value;
  EXPECT_EQ(ErrorOf([] { CStr(Variant::Null()); }), err::kInvalidUseOfNull);
  EXPECT_EQ(ErrorOf([] { CStr(Variant(SafeArray())); }), err::kTypeMismatch);
}

TEST(Conversions, IsNumericAndIsDate) {
  const struct {
    Variant value;
    bool numeric;
    bool date;
  } cases[] = {
      {Variant("12"), true, false},      {Variant(" 12.5 "), true, false},
      {Variant("12x"), false, false},    {Variant(""), false, false},
      {Variant("."), false, false},      {Variant("1e"), false, false},
      {Variant(), true, false},          {Variant(true), true, false},
      {Variant(Date{1}), false, true},   {Variant("11/22/2026"), false, true},
      {Variant("2026-11-22"), false, true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(IsNumeric(c.value), c.numeric) << c.value;
    EXPECT_EQ(IsDate(c.value), c.date) << c.value;
  }
}

TEST(Conversions, CompareFollowsTheMixedTypeRules) {
  const struct {
    Variant a;
    Variant b;
    bool text_compare;
    std::optional<int> expected;
  } cases[] = {
      {Variant(1), Variant(2.5), false, -1},
      {Variant(), Variant(0), false, 0},
      {Variant(), Variant(""), false, 0},
      {Variant(), Variant("a"), false, -1},
      {Variant("10"), Variant(9), false, 1},          // numeric text compares as a number
      {Variant(100), Variant("abc"), false, -1},      // a number is below other text
      {Variant("abc"), Variant("ABC"), false, 1},
      {Variant("abc"), Variant("ABC"), true, 0},
      {Variant("\xC3\xA9"), Variant("\xC3\x89"), true, 0},  // é and É
      {Variant(true), Variant(-1), false, 0},
      {Variant(Currency{10000}), Variant(1.0), false, 0},
      {Variant(Date{2}), Variant(2), false, 0},
      {Variant::Null(), Variant(1), false, std::nullopt},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Compare(c.a, c.b, c.text_compare), c.expected) << c.a << " vs " << c.b;
  }
  EXPECT_FALSE(Equals(Variant::Null(), Variant::Null()));
  EXPECT_TRUE(Equals(Variant("A"), Variant("a"), true));
  EXPECT_EQ(ErrorOf([] { Compare(Variant(SafeArray()), Variant(1)); }), err::kTypeMismatch);
}

}  // namespace
}  // namespace kwx
