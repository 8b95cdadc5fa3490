#include "common/helpers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::Array;

void ExpectSame(const std::vector<Variant>& want, const Variant& got, const std::string& label) {
  ASSERT_TRUE(got.IsArray()) << label << ": " << got;
  EXPECT_EQ(got.AsArray().LBound(), 0) << label;
  const std::vector<Variant> elements = got.AsArray().elements();
  ASSERT_EQ(elements.size(), want.size()) << label << ": " << got;
  for (size_t i = 0; i < want.size(); ++i) {
    EXPECT_TRUE(elements[i].SameAs(want[i]))
        << label << " [" << i << "]: got " << elements[i] << ", want " << want[i];
  }
}

TEST(SafeDivide, SubstitutesAndQuotients) {
  const Variant if_zero = Variant(int16_t{0});
  const Variant if_negative = Variant("neg");
  struct Case {
    Variant numerator, divisor;
    bool use_float, check_negative;
    Variant want;
  };
  const std::vector<Case> cases = {
      {int16_t{5}, int16_t{0}, true, false, if_zero},
      {int16_t{5}, Variant(), true, false, if_zero},  // Empty divisor counts as 0
      {int16_t{-5}, int16_t{2}, true, true, if_negative},
      {int16_t{-5}, int16_t{2}, true, false, -2.5},
      {int16_t{-5}, int16_t{2}, false, false, int16_t{-2}},
      {2.5, 1.5, false, false, int32_t{1}},  // operands rounded half to even: 2 \ 2
      {Variant(), int16_t{4}, true, false, 0.0},
      {Variant::Null(), int16_t{4}, true, true, Variant::Null()},
  };
  for (const Case& c : cases) {
    const Variant got = SafeDivide(c.numerator, c.divisor, c.use_float, if_zero,
                                   c.check_negative, if_negative);
    EXPECT_TRUE(got.SameAs(c.want)) << c.numerator << " / " << c.divisor << ": got " << got
                                    << ", want " << c.want;
  }
}

TEST(SafeDivide, RaisesForTextAndForARoundedZeroDivisor) {
  const Variant zero(int16_t{0});
  EXPECT_EQ(testing::ErrorOf([&] { SafeDivide(Variant("abc"), Variant(int16_t{2}), true, zero, false, zero); }),
            err::kTypeMismatch);
  EXPECT_EQ(testing::ErrorOf([&] { SafeDivide(Variant(int16_t{1}), Variant(0.4), false, zero, false, zero); }),
            err::kDivisionByZero);
}

TEST(IsValidDate, BoundsAreExclusiveAndTheUpperOneIsDecemberFirst) {
  struct Case {
    Date date;
    bool want;
  };
  const std::vector<Case> cases = {
      {Date{0.0}, false},  // 1899-12-30
      {DateSerial(1900, 1, 1), false},
      {Date{DateSerial(1900, 1, 1).serial + 0.99}, false},  // the time of day does not count
      {DateSerial(1900, 1, 2), true},
      {DateSerial(2999, 11, 30), true},
      {Date{DateSerial(2999, 11, 30).serial + 0.5}, true},
      {DateSerial(2999, 12, 1), false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(IsValidDate(c.date), c.want) << "serial " << c.date.serial;
  }
}

TEST(QuoteSQLText, TrimsAndChoosesTheQuote) {
  using namespace std::string_literals;
  struct Case {
    std::string text;
    uint8_t code;
    std::string want;
  };
  const std::vector<Case> cases = {
      {"  O'Neil ", 0, "\"O'Neil\""},
      {"abc", 0, "'abc'"},
      {" abc ", 39, "'abc'"},
      {"say \"hi\"", 0, "'say \"hi\"'"},
      {"\ttab ", 0, "'\ttab'"},  // only blanks are trimmed
      {"abc", 34, "\"abc\""},
      // A text holding its literal's own quote is never one literal: the mark after the
      // opening quote makes the database refuse the whole statement.
      {"O'Neil", 39, "'\0O'Neil'"s},
      {"say \"hi\"", 34, "\"\0say \"hi\"\""s},
      {"it's \"x\"", 0, "\"\0it's \"x\"\""s},
      {"x' || (select 1) || '", 39, "'\0x' || (select 1) || ''"s},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(QuoteSQLText(c.text, c.code), c.want) << "[" << c.text << "] code " << +c.code;
  }
  EXPECT_EQ(QuoteSQLText("x'y"), "\"x'y\"");
}

TEST(ReplaceText, CaseInsensitiveAndNeverRescansTheReplacement) {
  struct Case {
    std::string text, search, replacement, want;
  };
  const std::vector<Case> cases = {
      {"aXbx", "x", "yy", "ayybyy"},
      {"aaa", "a", "aa", "aaaaaa"},  // the replacement holds the search text
      {"O'Neil's", "'", ChrW(255), "O" + ChrW(255) + "Neil" + ChrW(255) + "s"},
      {"caf\xC3\x89 caf\xC3\xA9", "\xC3\xA9", "e", "cafe cafe"},  // Latin-1 letters fold too
      {"keep", "", "y", "keep"},
      {"1\xE2\x84\xAA = 1k", "K", "x", "1x = 1x"},  // the Kelvin sign's three bytes go whole
  };
  for (const Case& c : cases) {
    std::string text = c.text;
    ReplaceText(text, c.search, c.replacement);
    EXPECT_EQ(text, c.want) << c.text << " / " << c.search;
  }
}

TEST(SplitText, DropsOnlyOneTrailingEmptyPiece) {
  struct Case {
    std::string delimiter, text;
    std::vector<Variant> want;
  };
  const std::vector<Case> cases = {
      {",", "a,,b", {"a", "", "b"}},
      {",", "a,b,", {"a", "b"}},
      {",", "a,b,,", {"a", "b", ""}},
      {",", ",", {""}},
      {"A", "xAyaz", {"x", "yaz"}},               // binary comparison
      {",;", "a,;b", {"a", ";b"}},                // advances one character only
      {"\xC3\xA9", "x\xC3\xA9y", {"x", "y"}},     // positions are characters
  };
  for (const Case& c : cases) {
    ExpectSame(c.want, SplitText(c.delimiter, c.text), c.text);
  }
  EXPECT_TRUE(SplitText("", "a,b").IsEmpty());
  EXPECT_TRUE(SplitText(",", "").IsEmpty());
}

TEST(SplitText, LongTextIsCutOnlyWithinTheSixteenBitRange) {
  // A delimiter at character 32766 still cuts; one at 32767 no longer does.
  const std::string head(32765, 'a');
  const Variant cut = SplitText(",", head + ",b");
  ExpectSame({Variant(head), Variant("b")}, cut, "cut");
  const std::string longer(32766, 'a');
  const Variant uncut = SplitText(",", longer + ",b");
  ExpectSame({Variant(longer + ",b")}, uncut, "uncut");
}

TEST(SplitToTypedArray, ConvertsPadsAndKeepsUnconvertiblePiecesAsText) {
  struct Case {
    std::string delimiter, text;
    int16_t count;
    Variant default_value;
    int32_t type;
    std::vector<Variant> want;
  };
  const Variant zero(int16_t{0});
  const std::vector<Case> cases = {
      {",", "1,x,3", 4, zero, 4, {1.0f, "x", 3.0f, zero}},
      {",", "1,2,3", 2, zero, 2, {int16_t{1}, int16_t{2}}},  // extra pieces dropped
      {",", "1,,3", 3, zero, 3, {int32_t{1}, "", int32_t{3}}},
      {",", "a,b", 2, zero, 8, {"a", "b"}},
      {"\t", "1\t0\t-1", 3, false, 11, {true, false, true}},
      {"\t", "70000\t2", 2, zero, 2, {"70000", int16_t{2}}},  // overflow keeps the text
      {",", "", 2, Variant("d"), 4, {"d", "d"}},
      {"", "1,2", 2, Variant("d"), 4, {"d", "d"}},
      {",", "1,2", 0, zero, 4, {}},
  };
  for (const Case& c : cases) {
    ExpectSame(c.want, SplitToTypedArray(c.delimiter, c.text, c.count, c.default_value, c.type),
               c.text + " type " + std::to_string(c.type));
  }
}

TEST(FlagsFromText, OnlyTheDigitOneIsTrue) {
  struct Case {
    std::string text;
    int16_t offset, count;
    std::vector<Variant> want;
  };
  const std::vector<Case> cases = {
      {"1021", 1, 0, {true, false, false, true}},
      {"1021", 0, 0, {false, true, false, false}},  // position 0 is outside the text
      {"11", 1, 4, {true, true, false, false}},
      {"0011", 2, 2, {false, true}},
      {"1", -1, 3, {false, false, true}},
  };
  for (const Case& c : cases) {
    ExpectSame(c.want, FlagsFromText(c.text, c.offset, c.count), c.text);
  }
  EXPECT_TRUE(FlagsFromText("", 1, 0).IsEmpty());
  EXPECT_TRUE(FlagsFromText("101", 1, -2).IsEmpty());
  EXPECT_TRUE(FlagsFromText(std::string(40000, '1'), 1, 0).IsEmpty());
}

TEST(JoinArrayText, ConvertsByTypeCode) {
  const Variant mixed = Array({int16_t{1}, int16_t{0}, "x"});
  const Variant dates = Array({DateSerial(2024, 3, 5), DateSerial(1900, 1, 1), "text", Variant(),
                               DateSerial(2999, 11, 30)});
  struct Case {
    Variant array;
    int32_t type;
    std::string want;
  };
  const std::vector<Case> cases = {
      {mixed, 11, "-1,0,0"},
      {mixed, 8, "1,0,x"},
      {Array({true, 2.5f, Variant::Null()}), 8, "True,2.5,"},
      {Array({true, 2.5f, "7"}), 5, "True,2.5,7"},  // numeric elements are kept as they are
      {dates, 7, "Mar/05/2024,,,,Nov/30/2999"},
  };
  for (const Case& c : cases) {
    int16_t first = 0, last = 100;
    EXPECT_EQ(JoinArrayText(c.array, ",", first, last, c.type), c.want) << "type " << c.type;
  }
}

TEST(JoinArrayText, AdjustsAndWritesBackTheIndexes) {
  SafeArray based = SafeArray::Vector(2, 5);
  for (int32_t i = 2; i <= 5; ++i) based(i) = Variant(int32_t{i * 10});
  const Variant array(based);
  struct Case {
    int16_t first, last;
    std::string want;
    int16_t first_after, last_after;
  };
  const std::vector<Case> cases = {
      {0, 9, "20;30;40;50", 2, 5},
      {3, 4, "30;40", 3, 4},
      {3, 1, "30;40;50", 3, 5},  // last below the lower bound becomes the upper bound
      {4, 3, "", 4, 3},          // nothing between first and last
      {-7, -1, "20;30;40;50", 2, 5},
  };
  for (const Case& c : cases) {
    int16_t first = c.first, last = c.last;
    EXPECT_EQ(JoinArrayText(array, ";", first, last, 3), c.want) << c.first << ".." << c.last;
    EXPECT_EQ(first, c.first_after) << c.first << ".." << c.last;
    EXPECT_EQ(last, c.last_after) << c.first << ".." << c.last;
  }
  int16_t first = 5, last = 5;
  EXPECT_EQ(JoinArrayText(Variant("abc"), ",", first, last, 8), "");
  EXPECT_EQ(first, 5);
  EXPECT_EQ(JoinArrayText(Variant(SafeArray()), ",", first, last, 8), "");
}

}  // namespace
}  // namespace kwx
