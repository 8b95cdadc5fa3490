#include "import/kwx_import.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "import/layout_check.h"
#include "model/company.h"

namespace kwx {
namespace {

// A 1.01 array of empty texts with the given positions set.
Variant Fields(std::vector<std::pair<int16_t, std::string>> set, std::string version = "1.01") {
  SafeArray a = SafeArray::Vector(0, 371);
  for (int32_t i = 0; i <= 371; ++i) a(i) = Variant("");
  a(0) = Variant(version);
  for (auto& [pos, text] : set) a(pos) = Variant(text);
  return Variant(std::move(a));
}

// Runs the three steps as the dispatcher does.
bool Import(Company& company, Variant fields) {
  if (!ValidateKwxFields(fields)) return false;
  MapKwxCompany(company, fields, 0);
  MapKwxJudgment(company, fields, 0);
  return true;
}

TEST(KwxImport, VersionDecidesWhetherAndHowToImport) {
  struct Case {
    const char* version;
    bool imported;
  };
  const Case cases[] = {{"0", false}, {"abc", false}, {"", false},
                        {"1.0", true}, {"1", true},   {"1.01", true}, {"2", true}};
  for (const Case& c : cases) {
    Company company;
    company.CompanyID = 42;
    company.strName = "before";
    Variant fields = Fields({{3, "Acme"}, {105, "3"}, {204, "7.5"}, {326, "True"}}, c.version);
    const bool valid = ValidateKwxFields(fields);
    EXPECT_EQ(valid, c.imported) << c.version;
    // The company step stops after the ID even when called on an invalid array.
    MapKwxCompany(company, fields, 0);
    EXPECT_EQ(company.CompanyID, 0) << c.version;
    EXPECT_EQ(company.strName, c.imported ? "Acme" : "before") << c.version;
    if (!c.imported) continue;
    MapKwxJudgment(company, fields, 0);
    const bool first_layout = Val(c.version) == 1.0;
    // A 1.0 file does not carry the positions 1.01 added: they read as their defaults.
    EXPECT_EQ(company.intPMGGraphDisplay, first_layout ? 0 : 3) << c.version;
    EXPECT_EQ(company.JudgmentGraph.sngEPSMinProjY1, first_layout ? 0.0f : 7.5f) << c.version;
    EXPECT_EQ(company.Options.blnEPSMinProjLine, !first_layout) << c.version;
  }
}

TEST(KwxImport, FirstLayoutDefaultsAreWrittenIntoTheArray) {
  Variant fields = Fields({{101, "9"}, {103, "Jan/31/2007"}, {104, "2009"}, {238, "4"}}, "1.0");
  ASSERT_TRUE(ValidateKwxFields(fields));
  const SafeArray& a = fields.AsArray();
  for (int16_t p : {101, 105, 204, 205, 232, 233, 234, 235, 236, 237, 238}) {
    EXPECT_TRUE(a(p).SameAs(Variant(int16_t{0}))) << p;
  }
  EXPECT_TRUE(a(326).SameAs(Variant(false)));
  EXPECT_TRUE(a(103).SameAs(Variant("")));
  EXPECT_TRUE(a(104).SameAs(Variant("")));
  // A short 1.0 array is completed as far as it reaches.
  Variant short_array(SafeArray::FromValues({Variant("1.0"), Variant("x")}));
  EXPECT_TRUE(ValidateKwxFields(short_array));
}

TEST(KwxImport, LatestMonthlyDateAndPmgYearFollowTheLastFiscalYear) {
  struct Case {
    const char* last_fy;
    const char* pos103;
    const char* pos104;
    Date latest_month;
    int16_t pmg_year;
  };
  const Case cases[] = {
      {"Jun/30/2005", "", "", DateSerial(2006, 12, 30), 2006},
      {"Mar/31/2005", "", "", DateSerial(2005, 12, 31), 2006},
      {"Mar/31/2005", "Feb/15/2007", "2004", DateSerial(2007, 2, 15), 2006},
      {"Mar/31/2005", "not a date", "2010", DateSerial(2005, 12, 31), 2010},
      // A number no 16-bit year holds gives the year after the last fiscal year.
      {"Mar/31/2005", "", "99999", DateSerial(2005, 12, 31), 2006},
      {"Mar/31/2005", "", "-99999", DateSerial(2005, 12, 31), 2006},
  };
  for (const Case& c : cases) {
    Company company;
    Import(company, Fields({{6, c.last_fy}, {103, c.pos103}, {104, c.pos104}}));
    EXPECT_EQ(company.datLatestMData.serial, c.latest_month.serial) << c.last_fy << c.pos103;
    EXPECT_EQ(company.intLatestPMGFY, c.pmg_year) << c.last_fy << c.pos104;
  }
}

TEST(KwxImport, ValuesThatDoNotConvertLeaveTheirPropertyAlone) {
  Company company;
  company.datLastFY = DateSerial(2004, 6, 30);
  company.datLatestQEnding = DateSerial(2004, 9, 30);
  company.intPMGGraphDisplay = 4;
  company.sngCurPrice = 12;
  company.Yearly[0].EPS = 1.5f;
  Import(company, Fields({{5, "Feb/30/2005"},      // no such day
                          {6, "Dec/01/2999"},      // the date check rejects it
                          {105, "abc"},            // integer: raises, skipped
                          {13, "abc"},             // number: reads as 0
                          {14, "12.5x"},           // number: its leading number
                          {144, "1\tx\t3"},        // a piece that is no number
                          {145, "1\t2\t3"},        // short series: padded with 0
                          {232, "x"}}));           // single: raises, stays 0
  EXPECT_EQ(company.datLatestQEnding.serial, DateSerial(2004, 9, 30).serial);
  EXPECT_EQ(company.datLastFY.serial, DateSerial(2004, 6, 30).serial);
  EXPECT_EQ(company.intPMGGraphDisplay, 4);
  EXPECT_EQ(company.sngCurPrice, 0.0f);
  EXPECT_EQ(company.sngCurPE, 12.5f);
  EXPECT_EQ(company.Yearly[0].EPS, 1.5f);
  std::vector<float> lows;
  for (const YearlyRow& row : company.Yearly) lows.push_back(row.LowPrice);
  EXPECT_EQ(lows, (std::vector<float>{1, 2, 3, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(company.JudgmentAnalysis.sngIndusAvgPTI, 0.0f);
}

TEST(KwxImport, DatesNotesAndTheValueAt101) {
  Company company;
  const std::string brk = ChrW(254);
  Import(company, Fields({{1, "Nov/22/2026"},
                          {100, "line one" + brk + "line two" + brk + brk + "end"},
                          {101, "3.25"},
                          {102, "Feed"},
                          {10, "Energy"}}));
  EXPECT_EQ(company.datDataUpdated.serial, DateSerial(2026, 11, 22).serial);
  EXPECT_EQ(company.datDataCreated.serial, DateSerial(2026, 11, 22).serial);
  EXPECT_EQ(company.Notes, "line one\r\nline two\r\n\r\nend");
  EXPECT_EQ(company.sngKWXExtra, 3.25f);
  EXPECT_EQ(company.DataSourceID, "Feed");
  EXPECT_EQ(company.SectorID, "Energy");

  // A number a single cannot hold is refused: the property keeps its value.
  Company huge;
  huge.sngKWXExtra = 1.5f;
  huge.sngCurPrice = 2.5f;
  Import(huge, Fields({{101, "1e39"}, {13, "-4e38"}}));
  EXPECT_EQ(huge.sngKWXExtra, 1.5f);
  EXPECT_EQ(huge.sngCurPrice, 2.5f);

  Company created;
  Import(created, Fields({{1, "Nov/22/2026"}, {106, "Jan/05/2001"}}));
  EXPECT_EQ(created.datDataCreated.serial, DateSerial(2001, 1, 5).serial);
}

// Every position's placement is shown by the export-import round trip; these are the rules.
TEST(KwxImport, GroupsAreFilledFreshFromTheirPositions) {
  Company company;
  company.JudgmentCheckList.strSCLGrowthDiscuss = "not in the file";
  company.JudgmentPERT.resize(4);
  Import(company, Fields({{159, "reason"},
                          {168, "-1\t0"},
                          {231, "-1\t-1\t-1\t-1\t-1"},
                          {250, "1\t2\t3\t4\t5\t6\t7\t8\t9\t10\t11\t12\t13"},
                          {370, "2"},
                          {371, "1\t0.5\t0.25\t3\t2\t1"}}));
  EXPECT_EQ(company.JudgmentCheckList.strSCLReason, "reason");
  EXPECT_EQ(company.JudgmentCheckList.strSCLGrowthDiscuss, "");
  // The lists the tables do not keep have five items; a short one is padded with False.
  EXPECT_TRUE(company.JudgmentCheckList.GetProperty("vntSCLRevStrike")
                  .SameAs(FlagsFrom(Variant("10000"))));
  EXPECT_TRUE(company.JudgmentAnalysis.GetProperty("vntStrikePayout")
                  .SameAs(FlagsFrom(Variant("11111"))));
  EXPECT_EQ(company.JudgmentStockReport.strSSR0GAP, "1\t2\t3\t4\t5\t6\t7\t8\t9\t10\t11\t12\t13");
  // Position 370 counts the PERT rows of 371, three values a row.
  ASSERT_EQ(company.JudgmentPERT.size(), 2u);
  EXPECT_EQ(company.JudgmentPERT[1].GraphType, 3);
  EXPECT_EQ(company.JudgmentPERT[1].ScaleFactorPositive, 2.0f);
  EXPECT_EQ(company.JudgmentPERT[1].ScaleFactorNegative, 1.0f);

  // Without a row count the PERT rows stay; a bad integer list leaves strSSR0GAP empty.
  Company other;
  other.JudgmentPERT.resize(3);
  Import(other, Fields({{250, "1\tx"}}));
  EXPECT_EQ(other.JudgmentPERT.size(), 3u);
  EXPECT_EQ(other.JudgmentStockReport.strSSR0GAP, "");
}

TEST(KwxImport, AShortArrayStoresWhatItHas) {
  Company company;
  company.strSymbol = "KEEP";
  Variant fields(SafeArray::FromValues({Variant("1.01"), Variant(""), Variant("C1"),
                                        Variant("Name")}));
  ASSERT_TRUE(Import(company, fields));
  EXPECT_EQ(company.strCode, "C1");
  EXPECT_EQ(company.strName, "Name");
  EXPECT_EQ(company.strSymbol, "KEEP");
}

TEST(KwxImport, FieldsHaveLayoutTellsTheLayoutsApart) {
  auto array = [](int32_t last, std::vector<std::pair<int16_t, std::string>> set) {
    SafeArray a = SafeArray::Vector(0, last);
    for (int32_t i = 0; i <= last; ++i) a(i) = Variant("");
    for (auto& [pos, text] : set) a(pos) = Variant(text);
    return Variant(std::move(a));
  };
  SafeArray prices = SafeArray::Vector(0, 941);
  for (int32_t i = 0; i <= 941; ++i) prices(i) = Variant("12.5");
  struct Case {
    const char* what;
    Variant fields;
    bool kwx, ssg;
  };
  const Case cases[] = {
      {"KWX", Fields({{6, "Jun/30/2005"}, {144, "1\t2"}, {124, "3\t4"}}), true, false},
      {"KWX without lists", Fields({{3, "Acme"}}), true, true},
      {"SSG", Variant(prices), false, true},
      {"a price at a date position", Fields({{1, "12.5"}}), false, true},
      {"one number at a list position", Fields({{144, "12.5"}}), false, true},
      {"version 0", Fields({}, "0"), false, true},
      {"text after 371", array(400, {{0, "1.01"}, {400, "Energy"}}), false, true},
      {"not an array", Variant("1.01"), false, false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(FieldsHaveLayout(c.fields, 1), c.kwx) << c.what;
    EXPECT_EQ(FieldsHaveLayout(c.fields, 0), c.ssg) << c.what;
    EXPECT_FALSE(FieldsHaveLayout(c.fields, 2)) << c.what;
  }
}

}  // namespace
}  // namespace kwx
