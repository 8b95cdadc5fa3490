#include "automation/text.h"

#include <string>

#include <gtest/gtest.h>

#include "automation/errors.h"

namespace kwx {
namespace {

TEST(Text, CharactersAreCodePoints) {
  EXPECT_EQ(ChrW(255), "\xC3\xBF");
  EXPECT_EQ(ChrW(254), "\xC3\xBE");
  EXPECT_EQ(ChrW(65), "A");
  EXPECT_EQ(ChrW(0x20AC), "\xE2\x82\xAC");
  EXPECT_EQ(ChrW(0x1F600), "\xF0\x9F\x98\x80");
  EXPECT_THROW(ChrW(0xD800), AutomationError);
  EXPECT_EQ(AscW("\xC3\xBFx"), 255u);
  EXPECT_EQ(AscW(""), 0u);

  const struct {
    std::string text;
    size_t length;
  } lengths[] = {
      {"", 0}, {"abc", 3}, {"O\xC3\xBFNeil", 6}, {"\xE2\x82\xAC" "1", 2},
      {"\xFF\xFE", 2},  // stray bytes count one each
      {"\xC3", 1},
  };
  for (const auto& c : lengths) EXPECT_EQ(Len(c.text), c.length) << c.text;

  const std::string name = "O\xC3\xBFNeil";
  EXPECT_EQ(Mid(name, 2, 1), "\xC3\xBF");
  EXPECT_EQ(Mid(name, 3), "Neil");
  EXPECT_EQ(Mid(name, 7), "");
  EXPECT_EQ(Mid(name, 1, 0), "");
  EXPECT_EQ(Mid(name, 5, 99), "il");
  EXPECT_THROW(Mid(name, 0), AutomationError);

  EXPECT_EQ(Trim("  a b \t "), "a b \t");
  EXPECT_EQ(Trim("   "), "");
}

TEST(Text, CaseFoldingCoversUnicodeLetters) {
  const struct {
    std::string a;
    std::string b;
    int expected;
  } cases[] = {
      {"abc", "ABC", 0},
      {"\xC3\xA9t\xC3\xA9", "\xC3\x89T\xC3\x89", 0},  // été, ÉTÉ
      {"\xC3\x80", "\xC3\xA0", 0},                    // À, à
      {"\xC3\x9E", "\xC3\xBE", 0},                    // Þ, þ
      {"\xC3\x97", "\xC3\xB7", -1},                   // × and ÷ are not a letter pair
      {"\xC3\x9F", "\xC3\xBF", -1},                   // ß is not folded (U+00DF)
      {"a", "B", -1},
      {"b", "A", 1},
      {"ab", "abc", -1},
      {"\xC5\x92", "\xC5\x93", 0},                    // Œ, œ
      {"\xC5\xA0koda", "\xC5\xA1KODA", 0},             // Škoda, šKODA
      {"\xCE\xA3\xCE\x9F\xCE\xA3", "\xCF\x83\xCE\xBF\xCF\x82", 0},  // ΣΟΣ, σος (final sigma)
      {"\xD0\x94\xD0\x90", "\xD0\xB4\xD0\xB0", 0},      // ДА, да
      {"\xE2\x84\xAA", "k", 0},                     // the Kelvin sign is a K
      {"\xD0\x94", "\xD0\xB5", -1},                   // Д before е
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CompareNoCase(c.a, c.b), c.expected) << c.a << " / " << c.b;
    EXPECT_EQ(EqualsNoCase(c.a, c.b), c.expected == 0) << c.a << " / " << c.b;
  }
  EXPECT_EQ(FoldCase("ABC \xC3\x89"), "abc \xC3\xA9");

  // A stray byte is no letter and matches only itself; texts of other byte lengths can be
  // equal; equal texts hash equal.
  const struct {
    std::string a;
    std::string b;
    bool equal;
  } in_place[] = {
      {"\x80", "\xA0", false},          // stray continuation bytes
      {"\xC4\x80", "\xC4\xA0", false},  // U+0100 and U+0120 are not a pair
      {"\xC4\x80", "\xC4\x81", true},   // U+0100 and U+0101 are
      {"1\xE2\x84\xAAm", "1KM", true},   // three bytes against one
      {"\xC3", "\xC3", true},           // a truncated character equals itself
      {"x\xC3\x89", "X\xC3\xA9", true},
      {"strPrefProcStrikeTaxRate", "STRPREFPROCSTRIKETAXRATE", true},
      {"CompanyID", "CompanyIE", false},
  };
  for (const auto& c : in_place) {
    EXPECT_EQ(EqualsNoCase(c.a, c.b), c.equal) << c.a << " / " << c.b;
    EXPECT_EQ(EqualsNoCase(c.a, c.b), FoldCase(c.a) == FoldCase(c.b)) << c.a << " / " << c.b;
    if (c.equal) {
      EXPECT_EQ(HashNoCase(c.a), HashNoCase(c.b)) << c.a << " / " << c.b;
    }
  }
  EXPECT_NE(HashNoCase("ExchangeID"), HashNoCase("SectorID"));

  EXPECT_EQ(FindNoCase("aXbx", "x"), 1u);
  EXPECT_EQ(FindNoCase("aXbx", "x", 2), 3u);
  EXPECT_EQ(FindNoCase("caf\xC3\x89!", "\xC3\xA9"), 3u);
  EXPECT_EQ(FindNoCase("abc", "d"), std::string::npos);
  EXPECT_EQ(FindNoCase("abc", "a", 4), std::string::npos);
  EXPECT_EQ(FindNoCase("abc", "", 1), 1u);
  EXPECT_EQ(FindNoCase("\xC3\x89", "", 1), 2u);            // not inside a character
  EXPECT_EQ(FindNoCase("\xC3\x89\xC3\xA9", "\xA9"), std::string::npos);
  EXPECT_EQ(FindNoCase("O'N'", "'", 2), 3u);
  EXPECT_EQ(FindNoCase("ab", "abc"), std::string::npos);
  size_t matched = 0;
  EXPECT_EQ(FindNoCase("1\xE2\x84\xAA!", "k", 0, &matched), 1u);
  EXPECT_EQ(matched, 3u) << "the occurrence's own length";
  EXPECT_EQ(FindNoCase("x\xC5\xA0", "\xC5\xA1", 0, &matched), 1u);
  EXPECT_EQ(matched, 2u);
}

TEST(Text, Windows1252RoundTripsEveryByte) {
  std::string all;
  for (int b = 0; b < 256; ++b) all.push_back(static_cast<char>(b));
  const std::string utf8 = Windows1252ToUtf8(all);
  EXPECT_TRUE(IsValidUtf8(utf8));
  std::string back;
  ASSERT_TRUE(Utf8ToWindows1252(utf8, back));
  EXPECT_EQ(back, all);

  const struct {
    const char* byte;
    const char* utf8;
  } mapped[] = {
      {"\x80", "\xE2\x82\xAC"},  // euro sign
      {"\x81", "\xC2\x81"},      // undefined: kept as U+0081
      {"\x92", "\xE2\x80\x99"},  // right single quotation mark
      {"\x9F", "\xC5\xB8"},      // Ÿ
      {"\xFF", "\xC3\xBF"},
      {"\xE9", "\xC3\xA9"},
  };
  for (const auto& m : mapped) EXPECT_EQ(Windows1252ToUtf8(m.byte), m.utf8) << m.utf8;

  std::string out;
  EXPECT_FALSE(Utf8ToWindows1252("\xE2\x82\xAD", out));  // U+20AD has no byte
  EXPECT_FALSE(Utf8ToWindows1252("\xC2\x80", out));      // U+0080 neither
  EXPECT_FALSE(Utf8ToWindows1252("\xFF", out));          // not UTF-8 at all

  const struct {
    const char* bytes;
    bool valid;
  } utf8_cases[] = {
      {"plain", true},          {"\xC3\xA9", true},     {"\xC3", false},
      {"\xC0\xAF", false},      // overlong
      {"\xED\xA0\x80", false},  // surrogate
      {"\xF4\x90\x80\x80", false},  // past U+10FFFF
      {"\xF0\x9F\x98\x80", true},
  };
  for (const auto& c : utf8_cases) EXPECT_EQ(IsValidUtf8(c.bytes), c.valid) << c.bytes;
}

}  // namespace
}  // namespace kwx
