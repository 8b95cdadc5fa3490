#include "import/ssg_import.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "automation/dates.h"
#include "automation/safe_array.h"

namespace kwx {
namespace {

using FieldList = std::vector<std::pair<int, std::string>>;

// A zero-based field array of `count` empty texts with `set` filled in.
Variant Fields(int count, const FieldList& set = {}) {
  SafeArray fields = SafeArray::Vector(0, count - 1);
  for (Variant& f : fields.elements()) f = Variant(std::string());
  for (const auto& [position, text] : set) fields(position) = Variant(text);
  return Variant(std::move(fields));
}

constexpr int kFull = 942;

TEST(SsgImport, MapsPositionsWithTheirConversions) {
  Company c;
  MapSsgFields(c, Fields(kFull, {{90, "12.5x"},        {91, ""},
                                 {92, "1.04"},         {93, "2023"},
                                 {94, "9.6"},          {102, "7"},
                                 {163, "abc"},         {235, "Northwind Tools"},
                                 {236, "NWT"},         {237, "NYSE"},
                                 {239, "3/15/2024"},   {278, "Machinery"},
                                 {400, "Industrials"}, {540, "12 Harbor Rd"},
                                 {545, "2"},           {364, "0.93"}}),
               0);
  const struct {
    const char* property;
    Variant expected;
  } cases[] = {
      {"sngCurPrice", Variant(12.5f)},
      {"sngCurPE", Variant(0.0f)},
      {"sngCommDiv", Variant(1.04f)},
      {"intLastFY", Variant(int16_t{2023})},
      {"sngPotDilution", Variant(7.0f)},
      {"sngTotalCap", Variant(0.0f)},
      {"strName", Variant("Northwind Tools")},
      {"datDataCreated", Variant(DateSerial(2024, 3, 15))},
      {"IndustryID", Variant("Machinery")},
      {"SectorID", Variant("Industrials")},
      {"strVLTimeliness", Variant("2")},
      {"sngRevHist5YrGrR2", Variant(0.93f)},
  };
  for (const auto& k : cases) {
    EXPECT_TRUE(c.GetProperty(k.property).SameAs(k.expected))
        << k.property << ": " << c.GetProperty(k.property) << " vs " << k.expected;
  }
}

TEST(SsgImport, ShortArrayKeepsHigherPositions) {
  for (int count : {400, 401, 300}) {
    Company c;
    c.SectorID = "Old sector";
    c.strAddress1 = "Old address";
    c.sngBeta = 1.5f;
    MapSsgFields(c, Fields(count, {{90, "20"}, {285, "0.8"}, {count - 1, "New"}}), 0);
    SCOPED_TRACE(count);
    EXPECT_EQ(c.sngCurPrice, 20.0f);
    EXPECT_EQ(c.SectorID, count > 400 ? "New" : "Old sector");
    EXPECT_EQ(c.strAddress1, "Old address");
    EXPECT_EQ(c.sngBeta, count > 285 ? 0.8f : 1.5f);
  }
}

TEST(SsgImport, RejectedFieldsKeepThePreviousValue) {
  Company c;
  c.intLastFY = 2019;
  c.datDataCreated = DateSerial(2020, 1, 2);
  c.datLatestQEnding = DateSerial(2020, 3, 31);
  MapSsgFields(c, Fields(kFull, {{93, "FY23"}, {239, "soon"}, {254, "2/30/2024"}, {90, "3"}}),
               0);
  EXPECT_EQ(c.intLastFY, 2019);
  EXPECT_EQ(c.datDataCreated, DateSerial(2020, 1, 2));
  EXPECT_EQ(c.datLatestQEnding, DateSerial(2020, 3, 31));
  EXPECT_EQ(c.sngCurPrice, 3.0f);
}

TEST(SsgImport, NoArrayLeavesTheStudyUntouched) {
  Company c;
  c.strName = "Kept";
  MapSsgFields(c, Variant("not an array"), 0);
  MapSsgFields(c, Variant(), 1);
  Company expected;
  expected.strName = "Kept";
  EXPECT_EQ(DescribeDifferences(c, expected), "");
}

TEST(SsgImport, DataSourceAndProviderFlags) {
  const struct {
    const char* source;
    const char* stored;
    bool tax_rate;
    bool book_value;
  } cases[] = {
      // Starting from blnTaxRate true and blnBookVal false, so every change shows.
      {"S", "S & P", false, true},
      {"S & P Global", "S & P Global", false, true},
      {"Value Line", "Value Line", true, true},
      {"Morningstar", "Morningstar", true, false},
      {"", "", true, false},
  };
  for (const auto& k : cases) {
    Company c;
    c.Options.blnTaxRate = true;
    c.Options.blnBookVal = false;
    MapSsgFields(c, Fields(kFull, {{238, k.source}}), 0);
    SCOPED_TRACE(k.source);
    EXPECT_EQ(c.DataSourceID, k.stored);
    EXPECT_EQ(c.Options.blnTaxRate, k.tax_rate);
    EXPECT_EQ(c.Options.blnBookVal, k.book_value);
  }
}

TEST(SsgImport, RulesForValuesFromSeveralPositions) {
  const Variant unchanged = Variant("unchanged");
  const struct {
    const char* rule;
    FieldList fields;
    const char* property;
    Variant expected;
  } cases[] = {
      {"yield from 353", {{353, "2.5"}, {128, "1.0"}}, "sngCurYield", Variant(2.5f)},
      {"yield from 128", {{353, ""}, {128, "1.8"}}, "sngCurYield", Variant(1.8f)},
      {"growth: lower", {{125, "12"}, {197, "9"}}, "sngEPSProjGrRate", Variant(9.0f)},
      {"growth: negative 125", {{125, "-3"}, {197, "9"}}, "sngEPSProjGrRate", Variant(-3.0f)},
      {"growth: only 197", {{125, ""}, {197, "7"}}, "sngEPSProjGrRate", Variant(7.0f)},
      {"pref div from 246", {{136, "0"}, {246, "0.9"}}, "sngPrefDiv", Variant(0.9f)},
      {"quarter from 254",
       {{254, "6/30/2024"}, {269, "3/31"}, {270, "2024"}},
       "datLatestQEnding",
       Variant(DateSerial(2024, 6, 30))},
      {"quarter from 269/270",
       {{254, ""}, {269, "3/31"}, {270, "2024"}},
       "datLatestQEnding",
       Variant(DateSerial(2024, 3, 31))},
      {"quarter kept", {{254, "x"}, {269, ""}, {270, ""}}, "datLatestQEnding", unchanged},
      {"year-end from 255",
       {{255, "9/30/2023"}, {231, "6"}, {93, "2024"}},
       "datLastFY",
       Variant(DateSerial(2023, 9, 30))},
      {"year-end from 231 and 93",
       {{255, ""}, {231, "6"}, {93, "2024"}},
       "datLastFY",
       Variant(DateSerial(2024, 6, 30))},
      {"year-end kept: no month", {{255, ""}, {231, "13"}, {93, "2024"}}, "datLastFY", unchanged},
      {"year-end kept: no year", {{255, ""}, {231, "6"}, {93, "0"}}, "datLastFY", unchanged},
      {"PMG year", {{255, "12/31/2023"}}, "intLatestPMGFY", Variant(int16_t{2024})},
      {"PMG display", {}, "intPMGGraphDisplay", Variant(int16_t{0})},
  };
  for (const auto& k : cases) {
    Company c;
    c.datLatestQEnding = DateSerial(2001, 1, 31);
    c.datLastFY = DateSerial(2000, 12, 31);
    c.intPMGGraphDisplay = 3;
    Variant before = c.GetProperty(k.property);
    MapSsgFields(c, Fields(kFull, k.fields), 0);
    const Variant& expected = k.expected.SameAs(unchanged) ? before : k.expected;
    EXPECT_TRUE(c.GetProperty(k.property).SameAs(expected))
        << k.rule << ": " << c.GetProperty(k.property) << " vs " << expected;
  }
}

TEST(SsgImport, GrowthRatesTurnTheirLinesOn) {
  Company c;
  c.Options.blnRevTrendLine = true;
  MapSsgFields(c, Fields(kFull, {{125, "10"}, {127, ""}, {130, "-2"}, {142, "0"}}), 0);
  EXPECT_TRUE(c.Options.blnEPSProjLine);
  EXPECT_FALSE(c.Options.blnRevProjLine);
  EXPECT_TRUE(c.Options.blnEPSTrendLine);
  EXPECT_FALSE(c.Options.blnRevTrendLine);
}

TEST(SsgImport, YearlyBlocksRunOldestFirst) {
  FieldList set;
  for (int k = 0; k < 10; ++k) {
    set.emplace_back(k, std::to_string(100 + k));           // HighPrice, oldest first
    set.emplace_back(60 + k, std::to_string(10 + k));       // BookValue
    set.emplace_back(164 + k, std::to_string(k));           // LongTermDebt
  }
  set.emplace_back(183, "5");  // the latest year's CSO
  set.emplace_back(182, "");   // the year before has none: the current sngCSO serves
  set.emplace_back(97, "8");
  Company c;
  MapSsgFields(c, Fields(kFull, set), 0);
  EXPECT_EQ(c.Yearly[0].HighPrice, 109.0f);
  EXPECT_EQ(c.Yearly[9].HighPrice, 100.0f);
  EXPECT_EQ(c.Yearly[3].LongTermDebt, 6.0f);
  EXPECT_EQ(c.Yearly[0].CommonEquity, 19.0f * 5);
  EXPECT_EQ(c.Yearly[1].CommonEquity, 18.0f * 8);
  EXPECT_EQ(c.Yearly[0].CSO, 5.0f);
}

// The series and lists are placed as the write-read round trip shows; here the platform rule.
TEST(SsgImport, AssessmentListsBelongToTheSPPlatform) {
  for (int platform : {0, 1}) {
    Company c;
    MapSsgFields(c, Fields(kFull, {{306, "0100000001"}, {308, "1010"}, {310, "10000"}}), platform);
    SCOPED_TRACE(platform);
    EXPECT_EQ(c.JudgmentGraph.strYearStrike.AsArray().Count(), 10);
    EXPECT_EQ(c.JudgmentAnalysis.GetProperty("vntStrikeD2Eq").AsArray().Count(), 5);
    EXPECT_EQ(c.JudgmentAssessment.vntStrikePEHigh.IsEmpty(), platform == 0);
  }
}

}  // namespace
}  // namespace kwx
