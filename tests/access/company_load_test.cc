#include "access/company_load.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "model/fiscal_dates.h"
#include "tests/support/recording_database.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::QueryResult;
using testing::RecordingDatabase;

const std::string kApostrophe = "\xC3\xBF";  // how a stored text holds an apostrophe

using testing::Array;

struct Fixture {
  RecordingDatabase db;
  ReferenceCaches caches;
  ErrorCollector errors;
  StoreContext Store(int32_t platform) { return StoreContext{&db, platform, &caches, &errors}; }

  Fixture() {
    caches.sector = {Array({Variant(int32_t{4})}), Array({Variant("Tech")})};
    caches.exchange = {Array({Variant(int32_t{1}), Variant(int32_t{2})}),
                       Array({Variant("NASDAQ"), Variant("NYSE")})};
    caches.data_source = {Array({Variant(int32_t{1})}), Array({Variant("Analyst")})};
    db.Answer("select Industry  from Industry where IndustryID=9;",
              QueryResult({"Industry"}, {{Variant("Software")}}));
  }

  // Answers the company query with one row of these columns.
  void CompanyRow(std::vector<std::string> columns, std::vector<Variant> values) {
    db.Answer("select * from Company", QueryResult(std::move(columns), {std::move(values)}));
  }
  void StandardCompanyRow() {
    CompanyRow({"CompanyID", "strName", "SectorID", "ExchangeID", "IndustryID", "DataSourceID",
                "datLastFY", "intLatestPMGFY", "datLatestMData", "sngCurPrice"},
               {Variant(int32_t{7}), Variant("O" + kApostrophe + "Neil"), Variant(int32_t{4}),
                Variant(int32_t{2}), Variant(int32_t{9}), Variant(int32_t{1}),
                Variant(DateSerial(2024, 6, 30)), Variant(int16_t{2030}), Variant::Null(),
                Variant(12.5f)});
  }
};

const char* const kSeriesStatements[] = {
    "select * from Yearly where CompanyID = 7 order by YearlyID asc",
    "select * from Monthly where CompanyID = 7 order by MonthlyID asc",
    "select * from Quarterly where CompanyID = 7 order by Year desc, QuarterlyID asc",
    "select * from JudgmentPMG where CompanyID = 7 order by Year asc, JudgmentPMGID asc",
    "select * from JudgmentPERT where CompanyID = 7 order by GraphType asc",
};

TEST(CompanyLoad, StatementsAndGroupsFollowThePlatform) {
  struct Case {
    int32_t platform;
    std::string judgment_sql;
    const char* check_list_reason;  // what JudgmentCheckList.strSCLReason ends as
    const char* sales_increasing;   // what JudgmentAssessment.strSalesIncreasing ends as
    bool min_proj_line;             // Options.blnEPSMinProjLine, an SP-only column
  } cases[] = {
      {0,
       "SELECT *  FROM JudgmentAnalysis AS JA,        JudgmentCheckList AS JC,        "
       "JudgmentGraph AS JG,        JudgmentPrefProc AS JP,        JudgmentStockReport AS JR"
       " WHERE JA.CompanyID = 7   and JC.CompanyID = 7   and JG.CompanyID = 7   and "
       "JP.CompanyID = 7   and JR.CompanyID = 7",
       "reason", "kept", false},
      {1,
       "SELECT *  FROM JudgmentAnalysis AS JA,        JudgmentAssessment AS JR,        "
       "JudgmentGraph AS JG,        JudgmentPrefProc AS JP  WHERE JA.CompanyID = 7   and "
       "JR.CompanyID = 7   and JG.CompanyID = 7   and JP.CompanyID = 7",
       "kept", "rising", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.platform);
    Fixture f;
    f.StandardCompanyRow();
    f.db.Answer("select Notes from Notes",
                QueryResult({"Notes"}, {{Variant("Hold " + kApostrophe + "em")}}));
    f.db.Answer("select * from Options",
                QueryResult({"CompanyID", "intUnit", "blnEPSMinProjLine"},
                            {{Variant(int32_t{7}), Variant(int16_t{3}), Variant(true)}}));
    f.db.Answer("SELECT *", QueryResult({"CompanyID", "sngAvgPEHigh", "strSCLReason",
                                         "strSalesIncreasing", "CompanyID"},
                                        {{Variant(int32_t{7}), Variant(20.5f), Variant("reason"),
                                          Variant("rising"), Variant(int32_t{7})}}));
    f.db.Answer("select * from Yearly",
                QueryResult({"YearlyID", "CompanyID", "Year", "Sales"},
                            {{Variant(int32_t{30}), Variant(int32_t{7}), Variant(int16_t{2024}),
                              Variant(1.5f)},
                             {Variant(int32_t{31}), Variant(int32_t{7}), Variant(int16_t{2023}),
                              Variant(2.5f)}}));

    Company company;
    company.JudgmentCheckList.strSCLReason = "kept";
    company.JudgmentAssessment.strSalesIncreasing = "kept";
    LoadCompany(f.Store(c.platform), 7, "", "", company);

    std::vector<std::string> expected = {"select * from Company where CompanyID = 7",
                                         "select Notes from Notes where CompanyID = 7",
                                         "select * from Options where CompanyID = 7",
                                         c.judgment_sql};
    expected.insert(expected.end(), std::begin(kSeriesStatements), std::end(kSeriesStatements));
    expected.push_back("select Industry  from Industry where IndustryID=9;");
    EXPECT_EQ(f.db.statements, expected);
    EXPECT_TRUE(f.errors.reports().empty());

    EXPECT_EQ(company.CompanyID, 7);
    EXPECT_EQ(company.strName, "O'Neil");
    EXPECT_EQ(company.sngCurPrice, 12.5f);
    EXPECT_EQ(company.SectorID, "Tech");
    EXPECT_EQ(company.ExchangeID, "NYSE");
    EXPECT_EQ(company.IndustryID, "Software");
    EXPECT_EQ(company.DataSourceID, "Analyst");
    EXPECT_EQ(company.Notes, "Hold 'em");
    EXPECT_EQ(company.Options.intUnit, 3);
    EXPECT_EQ(company.Options.blnEPSMinProjLine, c.min_proj_line);
    EXPECT_EQ(company.JudgmentAnalysis.sngAvgPEHigh, 20.5f);
    EXPECT_EQ(company.JudgmentCheckList.strSCLReason, c.check_list_reason);
    EXPECT_EQ(company.JudgmentAssessment.strSalesIncreasing, c.sales_increasing);
    // The rows set the length; a query without rows leaves the series as it was.
    ASSERT_EQ(company.Yearly.size(), 2u);
    EXPECT_EQ(company.Yearly[0].Year, 2024);
    EXPECT_EQ(company.Yearly[1].Sales, 2.5f);
    EXPECT_EQ(company.Monthly.size(), Company::kMonthlyRows);
  }
}

TEST(CompanyLoad, DerivedPropertiesCompleteTheRecord) {
  const Date last_fy = DateSerial(2024, 6, 30);
  const Date derived_month = LatestMonthlyDataFrom(last_fy);
  struct Case {
    Variant stored_pmg_fy;
    Variant stored_month;
    int16_t pmg_fy;
    Date month;
  } cases[] = {
      {Variant(int16_t{2030}), Variant::Null(), 2025, derived_month},  // later: lowered
      {Variant(int16_t{2020}), Variant(DateSerial(2025, 3, 31)), 2020, DateSerial(2025, 3, 31)},
      {Variant::Null(), Variant(DateSerial(2024, 12, 31)), 2025, DateSerial(2024, 12, 31)},
      // Beyond a 16-bit year: no year, and the columns after it are still read.
      {Variant(int32_t{70000}), Variant::Null(), 2025, derived_month},
      {Variant(int32_t{-70000}), Variant::Null(), 2025, derived_month},
  };
  ASSERT_EQ(derived_month, DateSerial(2025, 12, 30));
  for (const Case& c : cases) {
    Fixture f;
    f.CompanyRow({"CompanyID", "datLastFY", "intLatestPMGFY", "datLatestMData", "ExchangeID"},
                 {Variant(int32_t{7}), Variant(last_fy), c.stored_pmg_fy, c.stored_month,
                  Variant(int32_t{2})});
    Company company;
    LoadCompany(f.Store(0), 7, "", "", company);
    EXPECT_TRUE(f.errors.reports().empty()) << f.errors.reports().front().Text();
    EXPECT_EQ(company.ExchangeID, "NYSE");
    EXPECT_EQ(company.intLatestPMGFY, c.pmg_fy) << c.stored_pmg_fy;
    EXPECT_EQ(company.datLatestMData, c.month) << c.stored_month;
  }
}

TEST(CompanyLoad, BySymbolAndExchangeSkipsThePriceMultipleAndPertSeries) {
  Fixture f;
  f.StandardCompanyRow();
  Company company;
  LoadCompany(f.Store(0), 0, "ONL", "nyse", company);
  ASSERT_GE(f.db.statements.size(), 2u);
  EXPECT_EQ(f.db.statements[0],
            "select * from Company where strSymbol = 'ONL'   and ExchangeID = 2");
  EXPECT_EQ(f.db.statements[1], "select Notes from Notes where CompanyID = 7");
  EXPECT_EQ(company.CompanyID, 7);
  const std::vector<std::string> tail(f.db.statements.end() - 5, f.db.statements.end() - 1);
  EXPECT_EQ(tail, (std::vector<std::string>{
                      kSeriesStatements[1], kSeriesStatements[2],
                      "select * from JudgmentPMG where CompanyID = 0 order by Year asc, "
                      "JudgmentPMGID asc",
                      "select * from JudgmentPERT where CompanyID = 0 order by GraphType asc"}));

  // The general quoting rule: a symbol with an apostrophe goes in double quotes.
  Fixture quoted;
  LoadCompany(quoted.Store(0), 0, "O'N", "NASDAQ", company);
  ASSERT_FALSE(quoted.db.statements.empty());
  EXPECT_EQ(quoted.db.statements[0],
            "select * from Company where strSymbol = \"O'N\"   and ExchangeID = 1");

  struct Case {
    const char* symbol;
    const char* exchange;
  } nothing[] = {{"", "NYSE"}, {"ONL", ""}, {"ONL", "Nowhere"}};
  for (const Case& c : nothing) {
    Fixture none;
    LoadCompany(none.Store(0), 0, c.symbol, c.exchange, company);
    EXPECT_TRUE(none.db.statements.empty()) << c.symbol << "/" << c.exchange;
  }
}

TEST(CompanyLoad, AStudyThatIsNotFoundStaysAsItWas) {
  Fixture f;
  Company company;
  company.SectorID = "Tech";
  company.strName = "Mine";
  company.JudgmentPERT.resize(2);
  const Company before = company;
  LoadCompany(f.Store(0), 12, "", "", company);
  EXPECT_EQ(DescribeDifferences(before, company), "");
  EXPECT_EQ(f.db.statements.front(), "select * from Company where CompanyID = 12");
  for (const auto& sql : f.db.statements) {
    EXPECT_EQ(sql.find("Industry"), std::string::npos) << "no name lookups: " << sql;
  }
}

TEST(CompanyLoad, ErrorsAreReportedAndTheLoadGoesOn) {
  Fixture f;
  f.StandardCompanyRow();
  f.db.Answer("select * from Options",
              QueryResult({"intUnit"}, {{Variant("many")}}));
  f.db.set_responder([](const std::string& sql) -> testing::ScriptedResult {
    if (sql.starts_with("select * from Yearly")) throw AutomationError(err::kInvalidCall);
    return {};
  });
  Company company;
  LoadCompany(f.Store(0), 7, "", "", company);
  ASSERT_EQ(f.errors.reports().size(), 2u);
  EXPECT_EQ(f.errors.reports()[0].Text(), "Code: 13\rError: Type mismatch\rLocation: "
                                          "m_ParseOptions\r");
  EXPECT_EQ(f.errors.reports()[1].Text(),
            "Code: 5\rError: Invalid procedure call or argument\rLocation: "
            "mdlAccess_QueryYearly\rParameter: lngCompanyID: 7\r");
  EXPECT_EQ(f.db.statements.back(), "select Industry  from Industry where IndustryID=9;");
  EXPECT_EQ(company.IndustryID, "Software");

}

}  // namespace
}  // namespace kwx
