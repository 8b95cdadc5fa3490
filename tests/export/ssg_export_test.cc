#include "export/ssg_export.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/safe_array.h"
#include "import/ssg_import.h"

namespace kwx {
namespace {

std::string FieldAt(const Variant& fields, int position) {
  return fields.AsArray()(position).AsString();
}

// A study with a distinct value in everything the SSG layout carries.
Company FilledStudy() {
  Company c;
  c.strName = "Larchmont Rail Systems";
  c.strSymbol = "LRS";
  c.ExchangeID = "TSX";
  c.DataSourceID = "Value Line";
  c.SectorID = "Industrials";
  c.IndustryID = "Railroad Equipment";
  c.datDataCreated = c.datDataUpdated = DateTimeSerial(2024, 11, 8, 15, 4, 5);
  c.datLastFY = DateSerial(2024, 6, 30);
  c.datLatestQEnding = DateSerial(2024, 9, 30);
  c.intLastFY = 2024;
  c.intNumDataYears = 10;
  c.sngCurPrice = 41.37f;
  c.sngCurDiv = c.sngCommDiv = 0.88f;
  c.sngCSO = 118.4f;
  c.sngACS = 121.2f;
  c.sngPotDilution = 2.364865f;
  c.sngCurYield = 2.1f;
  c.sngEPSProjGrRate = 9.5f;
  c.sngPrefDiv = 0.25f;
  c.sngBeta = 1.07f;
  c.sngTotalAssets = 1234.5678f;  // seven digits would read back as 1234.568
  c.strVLTimeliness = c.strVLSafety = "3";
  c.strAddress1 = "400 Quay Street";
  c.strPhoneNumber = "416-555-0142";
  c.strIndustryGroup = "Transportation";
  // Values as a file or a database holds them: the single nearest to a short decimal.
  auto decimal = [](double v) { return static_cast<float>(v); };
  for (int i = 0; i < 10; ++i) {
    YearlyRow& y = c.Yearly[i];
    y.HighPrice = decimal(45.5 - i);
    y.LowPrice = decimal(30.25 - i);
    y.Sales = decimal(2400.0 - 110 * i);
    y.BookValue = decimal(18.5 - 0.75 * i);
    y.EPS = decimal(2.4 - 0.125 * i);
    y.CSO = i == 3 ? 0.0f : decimal(118.0 - i);
    y.CashFlow = decimal(3.5 - 0.25 * i);
  }
  for (int i = 0; i < 36; ++i) {
    c.Quarterly[i].EPS = decimal(0.6 - 0.0078 * i);
    c.Quarterly[i].Sales = decimal(600.0 - 2.5 * i);
    c.Quarterly[i].Depreciation = decimal(12.0 + i);
  }
  for (int i = 0; i < 72; ++i) c.Monthly[i].ClosingPrice = decimal(41.0 - 0.13 * i);
  c.JudgmentAnalysis.sngProjPriceLow = 28.5f;
  c.JudgmentAnalysis.sngEstHighPrice = 74.0f;
  c.JudgmentGraph.SetProperty("strYearStrike", Variant("0010000000"));
  c.JudgmentAssessment.vntStrikePELow = FlagsFrom(Variant("0100"));  // a list, as SP keeps it
  c.JudgmentPrefProc.SetProperty("strPrefProcStrikeTaxRate", Variant("00101"));
  c.JudgmentAnalysis.SetProperty("vntStrikeD2Eq", Variant("10000"));
  c.JudgmentAnalysis.SetProperty("vntStrikePTI", Variant("01100"));
  c.JudgmentAnalysis.SetProperty("vntStrikeROE", Variant("00010"));
  c.JudgmentAnalysis.SetProperty("vntStrikeLowPrice", Variant("11111"));
  c.JudgmentAnalysis.SetProperty("vntStrikePayout", Variant("00001"));
  return c;
}

TEST(SsgExport, WritesTextsAtTheirPositions) {
  Company c = FilledStudy();
  c.strAddress1 = "400 Quay Street\r\nSuite 9";
  c.IndustryID = "Railroad\r\nEquipment";
  Variant fields = BuildSsgFields(c);
  ASSERT_TRUE(fields.IsArray());
  EXPECT_EQ(fields.AsArray().LBound(), 0);
  EXPECT_GE(fields.AsArray().Count(), 546);
  const struct {
    int position;
    const char* text;
  } cases[] = {
      {90, "41.37"},       {92, "0.88"},     {93, "2024"},         {235, "Larchmont Rail Systems"},
      {239, "11/8/2024 3:04:05 PM"},         {255, "6/30/2024"},
      {231, "6"},          {254, "9/30/2024"},
      {269, "9/30"},       {270, "2024"},    {353, "2.1"},         {128, "2.1"},
      {243, "Railroad\xC3\xBE" "Equipment"}, {278, "Railroad\xC3\xBE" "Equipment"},
      {9, "45.5"},         {0, "36.5"},      {540, "400 Quay Street\xC3\xBESuite 9"},
      {306, "0010000000"}, {307, "00101"},   {310, "10000"},       {311, "01100"},
      {312, "00010"},      {313, "11111"},   {314, "00001"},       {105, ""},        {399, ""},            {941, "41"}, {940, "40.87"},
  };
  for (const auto& k : cases) {
    EXPECT_EQ(FieldAt(fields, k.position), k.text) << "position " << k.position;
  }
}

TEST(SsgExport, NoYearEndMonthWithoutAYearEnd) {
  Company c;
  Variant fields = BuildSsgFields(c);
  EXPECT_EQ(FieldAt(fields, 231), "");
  // An unset date is written as the day it is, which reads back.
  EXPECT_EQ(FieldAt(fields, 239), "12/30/1899");
  Company back;
  back.intLastFY = 2020;
  back.datDataUpdated = DateSerial(2020, 1, 1);
  MapSsgFields(back, fields, 0);
  EXPECT_EQ(back.datLastFY, c.datLastFY);
  EXPECT_EQ(back.datDataUpdated, c.datDataUpdated);
}

// Every value the reader maps comes back from what the writer wrote.
TEST(SsgExport, RoundTripsEveryMappedValue) {
  const Company original = FilledStudy();
  for (int platform : {0, 1}) {
    Company back;
    MapSsgFields(back, BuildSsgFields(original), platform);
    std::string differences;
    auto compare = [&](const std::string& where, const Variant& a, const Variant& b) {
      if (!a.SameAs(b)) {
        differences += where + ": " + CStr(a) + " vs " + CStr(b) + "\n";
      }
    };
    for (const auto& binding : Company::Bindings()) {
      const std::string name(binding.column.name);
      // Not in the layout, or derived by the reader from other values.
      static const std::vector<std::string> skipped = {
          "strAddress2", "strCity", "strCountry", "strPostalCode", "strProvState",
          "strUpdatedPerson", "strURLAddress", "datLastStudied", "datLatestMData",
          "datLatestQData", "intLatestPMGFY", "intPMGGraphDisplay", "sngLatestQEPS"};
      if (std::find(skipped.begin(), skipped.end(), name) != skipped.end()) continue;
      compare(name, original.GetProperty(name), back.GetProperty(name));
    }
    for (int i = 0; i < 10; ++i) {
      for (const auto& binding : YearlyRow::Bindings()) {
        std::string column(binding.column.name);
        if (column == "Year" || column == "CommonEquity") continue;
        compare("Yearly(" + std::to_string(i) + ")." + column,
                GetField(original.Yearly[i], binding), GetField(back.Yearly[i], binding));
      }
    }
    for (int i = 0; i < 36; ++i) {
      for (const auto& binding : QuarterlyRow::Bindings()) {
        std::string column(binding.column.name);
        if (column == "Year" || column == "Quarter") continue;
        compare("Quarterly(" + std::to_string(i) + ")." + column,
                GetField(original.Quarterly[i], binding), GetField(back.Quarterly[i], binding));
      }
    }
    for (int i = 0; i < 72; ++i) {
      compare("Monthly(" + std::to_string(i) + ")", Variant(original.Monthly[i].ClosingPrice),
              Variant(back.Monthly[i].ClosingPrice));
    }
    compare("sngProjPriceLow", Variant(original.JudgmentAnalysis.sngProjPriceLow),
            Variant(back.JudgmentAnalysis.sngProjPriceLow));
    compare("sngEstHighPrice", Variant(original.JudgmentAnalysis.sngEstHighPrice),
            Variant(back.JudgmentAnalysis.sngEstHighPrice));
    // The struck-out lists the judgment values carry, kept by the tables or not.
    for (const char* name : {"vntStrikeD2Eq", "vntStrikePTI", "vntStrikeROE",
                             "vntStrikeLowPrice", "vntStrikePayout"}) {
      compare(name, original.JudgmentAnalysis.GetProperty(name),
              back.JudgmentAnalysis.GetProperty(name));
    }
    EXPECT_TRUE(original.JudgmentPrefProc.strPrefProcStrikeTaxRate.SameAs(
        back.JudgmentPrefProc.strPrefProcStrikeTaxRate));
    EXPECT_TRUE(original.JudgmentGraph.strYearStrike.SameAs(back.JudgmentGraph.strYearStrike));
    EXPECT_EQ(
        back.JudgmentAssessment.vntStrikePELow.SameAs(original.JudgmentAssessment.vntStrikePELow),
        platform == 1);
    EXPECT_EQ(differences, "") << "platform " << platform;
    // The reader's derived values follow from the written ones.
    EXPECT_EQ(back.intLatestPMGFY, 2025);
    EXPECT_EQ(back.datLatestQData, original.datLatestQEnding);
    EXPECT_EQ(back.Yearly[3].CommonEquity,
              static_cast<float>(double{original.Yearly[3].BookValue} * original.sngCSO));
    // Writing the read-back study again gives the same file (the plain platform does not
    // take the assessment's lists back).
    if (platform == 1) {
      EXPECT_TRUE(BuildSsgFields(back).SameAs(BuildSsgFields(original)));
    }
  }
}

}  // namespace
}  // namespace kwx
