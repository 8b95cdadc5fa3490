#include "access/company_save.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "automation/dates.h"
#include "automation/safe_array.h"
#include "tests/support/recording_database.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::QueryResult;
using testing::RecordingDatabase;

// The company record's columns as the update statement lists them.
const std::vector<std::string> kCompanyUpdateOrder = {
    "datDataCreated", "datDataUpdated", "datLastFY", "datLatestQEnding", "intNumDataYears",
    "sngACS", "sngAPS", "sngAverageYield", "sngAvg5YrPTI", "sngAvg5YrROE", "sngBeta", "sngCSO",
    "sngCurAcctRec", "sngCurAssets", "sngCurCash", "sngCurDiv", "sngCurInv",
    "sngCurLiabilities", "sngCurPE", "sngCurPrice", "sngCurYield", "sngEPSACE5YrEst",
    "sngEPSACE5YrProjGr", "sngEPSHist5YrGr", "sngEPSHist5YrGrR2", "sngEPSHistGrowth",
    "sngEPSLastCYTrend", "sngEPSNextYearEst", "sngEPSPrefProc", "sngEPSPrevHigh",
    "sngEPSProjGrRate", "sngEPSQGrowth", "sngEPSVisualEst", "sngEstAvgPrice", "sngEstLowPrice",
    "sngHighPrice52W", "sngHighYield", "sngInsideOwnership", "sngInstHoldings",
    "sngInterestCov", "sngLatestQEPS", "sngLatestQRev", "sngLowPrice52W", "sngPEAverage",
    "sngPotDilution", "sngPrefDiv", "sngPrefStock", "sngProjDivPayout", "sngProjLiab",
    "sngProjOutstShares", "sngPSO", "sngRev5YrEst", "sngRevHist5YrGr", "sngRevHist5YrGrR2",
    "sngRevHistGrowth", "sngRevProjGrRate", "sngRevQGrowth", "sngSellLevelPrice",
    "sngSevereLowPrice", "sngShortTermDebt", "sngSplitRatio", "sngSPRating", "sngTaxRate",
    "sngTotalAssets", "sngTotalCap", "sngTotalDebt", "sngTotalReturn", "sngUpDownRatio",
    "sngYearAgoAcctRec", "sngYearAgoAssets", "sngYearAgoCash", "sngYearAgoDebt",
    "sngYearAgoInv", "sngYearAgoLiab", "sngYearAgoQEPS", "sngYearAgoQRev", "strAddress1",
    "strAddress2", "strCity", "strCode", "strContactName", "strCountry", "DataSourceID",
    "IndustryID", "strName", "strPhoneNumber", "strPostalCode", "strProvState", "SectorID",
    "strSoftwareVersion", "strSPStockRank", "strUpdatedPerson", "strIndustryGroup",
    "strURLAddress", "strVLFinRating", "strVLPage", "strVLSafety", "intLastFY",
    "datLastStudied", "datLatestQData", "datLatestMData", "strVLTimeliness", "sngCommDiv",
    "strSymbol", "intLatestPMGFY", "intPMGGraphDisplay", "ExchangeID"};

// The same columns as the insert statement lists them.
const std::vector<std::string> kCompanyInsertOrder = {
    "datDataCreated", "datDataUpdated", "datLastFY", "datLatestQEnding", "intNumDataYears",
    "sngACS", "sngAPS", "sngAverageYield", "sngAvg5YrPTI", "sngAvg5YrROE", "sngBeta", "sngCSO",
    "sngCurAcctRec", "sngCurAssets", "sngCurCash", "sngCurDiv", "sngCurInv",
    "sngCurLiabilities", "sngCurPE", "sngCurPrice", "sngCurYield", "sngEPSACE5YrEst",
    "sngEPSACE5YrProjGr", "sngEPSHist5YrGr", "sngEPSHist5YrGrR2", "sngEPSHistGrowth",
    "sngEPSLastCYTrend", "sngEPSNextYearEst", "sngEPSPrefProc", "sngEPSPrevHigh",
    "sngEPSProjGrRate", "sngEPSQGrowth", "sngEPSVisualEst", "sngEstAvgPrice", "sngEstLowPrice",
    "sngHighPrice52W", "sngHighYield", "sngInsideOwnership", "sngInstHoldings",
    "sngInterestCov", "sngLatestQEPS", "sngLatestQRev", "sngLowPrice52W", "sngPEAverage",
    "sngPotDilution", "sngPrefDiv", "sngPrefStock", "sngProjDivPayout", "sngProjLiab",
    "sngProjOutstShares", "sngPSO", "sngRev5YrEst", "sngRevHist5YrGr", "sngRevHist5YrGrR2",
    "sngRevHistGrowth", "sngRevProjGrRate", "sngRevQGrowth", "sngSellLevelPrice",
    "sngSevereLowPrice", "sngShortTermDebt", "sngSplitRatio", "sngSPRating", "sngTaxRate",
    "sngTotalAssets", "sngTotalCap", "sngTotalDebt", "sngTotalReturn", "sngUpDownRatio",
    "sngYearAgoAcctRec", "sngYearAgoAssets", "sngYearAgoCash", "sngYearAgoDebt",
    "sngYearAgoInv", "sngYearAgoLiab", "sngYearAgoQEPS", "sngYearAgoQRev", "strAddress1",
    "strAddress2", "strCity", "strCode", "strContactName", "strCountry", "DataSourceID",
    "ExchangeID", "IndustryID", "strName", "strPhoneNumber", "strPostalCode", "strProvState",
    "SectorID", "strSoftwareVersion", "strSPStockRank", "strSymbol", "strUpdatedPerson",
    "strIndustryGroup", "strURLAddress", "strVLFinRating", "strVLPage", "strVLSafety",
    "intLastFY", "datLastStudied", "datLatestQData", "datLatestMData", "sngCommDiv",
    "intLatestPMGFY", "intPMGGraphDisplay", "strVLTimeliness"};

// A study with a few telling values; every other value stays zero or empty.
Company SampleCompany() {
  Company c;
  c.strName = "O'Neil Corp";
  c.strSymbol = "ONL";
  c.sngCurPrice = 12.5f;
  c.intNumDataYears = 10;
  c.datLastFY = DateSerial(2024, 6, 30);
  c.datLatestQEnding = DateSerial(2024, 12, 31);
  c.SectorID = "Tech";
  c.ExchangeID = "NYSE";
  c.IndustryID = "Software";
  c.DataSourceID = "Unknown source";
  c.Notes = "Buy";
  return c;
}

// What each column of SampleCompany() writes; the IDs are those of the caches below.
std::string SampleValue(const std::string& column) {
  static const std::map<std::string, std::string> kValues = {
      {"strName", "'O\xC3\xBFNeil Corp'"}, {"strSymbol", "'ONL'"},
      {"sngCurPrice", "12.5"},            {"intNumDataYears", "10"},
      {"datLastFY", "'6/30/2024'"},       {"datLatestQEnding", "'12/31/2024'"},
      {"SectorID", "4"},                  {"ExchangeID", "2"},
      {"IndustryID", "9"},                {"DataSourceID", "0"}};
  if (auto it = kValues.find(column); it != kValues.end()) return it->second;
  if (column.starts_with("str")) return "''";
  if (column.starts_with("dat")) return "'12/30/1899'";
  return "0";
}

testing::ScriptedResult OneRow() {
  testing::ScriptedResult r;
  r.rows = 1;
  return r;
}

// A statement that runs and changes no row.
testing::ScriptedResult NoRow() { return testing::ScriptedResult{true, 0, {}, {}}; }

using testing::Array;
using testing::Flags;

struct Fixture {
  RecordingDatabase db;
  ReferenceCaches caches;
  ErrorCollector errors;
  StoreContext Store(int32_t platform) { return StoreContext{&db, platform, &caches, &errors}; }

  Fixture() {
    caches.sector = {Array({Variant(int32_t{4})}), Array({Variant("Tech")})};
    caches.exchange = {Array({Variant(int32_t{2})}), Array({Variant("NYSE")})};
    caches.data_source = {Array({Variant(int32_t{1})}), Array({Variant("Analyst")})};
    db.Answer("select IndustryID  from Industry where Industry='Software'",
              QueryResult({"IndustryID"}, {{Variant(int32_t{9})}}));
    db.Answer("select max(CompanyID)", QueryResult({"Expr1000"}, {{Variant(int32_t{41})}}));
    // By default every statement changes one row, so no update falls back to its insert.
    db.set_responder([](const std::string&) { return OneRow(); });
  }

  std::vector<std::string> StartingWith(const std::string& prefix) const {
    std::vector<std::string> out;
    for (const auto& s : db.statements) {
      if (s.starts_with(prefix)) out.push_back(s);
    }
    return out;
  }
  bool Ran(const std::string& sql) const {
    return std::find(db.statements.begin(), db.statements.end(), sql) != db.statements.end();
  }
};

std::string Join(const std::vector<std::string>& parts, const std::string& separator) {
  std::string out;
  for (const auto& p : parts) out += (out.empty() ? "" : separator) + p;
  return out;
}

TEST(CompanySave, CompanyRecordInsertAndUpdateTextsKeepBothColumnOrders) {
  std::vector<std::string> names, values, pairs;
  for (const auto& c : kCompanyInsertOrder) {
    names.push_back(c);
    values.push_back(SampleValue(c));
  }
  for (const auto& c : kCompanyUpdateOrder) pairs.push_back(c + "=" + SampleValue(c));

  Fixture f;
  f.db.Answer("update Notes", NoRow());
  Company company = SampleCompany();
  EXPECT_TRUE(SaveCompany(f.Store(0), company, true));
  ASSERT_GE(f.db.statements.size(), 4u);
  EXPECT_EQ(f.db.statements[0], "select IndustryID  from Industry where Industry='Software'");
  EXPECT_EQ(f.db.statements[1], "<BeginTrans>");
  EXPECT_EQ(f.db.statements[2],
            "insert into Company (" + Join(names, ",") + ") select " + Join(values, ","));
  EXPECT_EQ(f.db.statements[3],
            "select max(CompanyID)  from Company where strSymbol = 'ONL'   and ExchangeID = 2"
            "    or CompanyID = 0");
  EXPECT_EQ(company.CompanyID, 41);
  // The object keeps its names; only the statement carries the IDs.
  EXPECT_EQ(company.SectorID, "Tech");
  EXPECT_EQ(company.DataSourceID, "Unknown source");
  // The notes update changes no row, so the insert follows.
  EXPECT_EQ(f.db.statements[4], "update Notes set Notes = 'Buy' where CompanyID = 41");
  EXPECT_EQ(f.db.statements[5], "insert into Notes(CompanyID, Notes) select 41,'Buy'");

  Fixture again;
  EXPECT_TRUE(SaveCompany(again.Store(0), company, true));
  EXPECT_EQ(again.db.statements[2], "Update Company set " + Join(pairs, ",") +
                                        " where CompanyID = 41");
  EXPECT_TRUE(again.StartingWith("select max(").empty());
}

TEST(CompanySave, OptionsFormsDependOnThePlatform) {
  const std::string plain_update =
      "Update Options   set strCurSymbol='$',intUnit=1,intPEMethod=0,blnTaxRate=False,"
      "blnRevTrendLine=False,blnRevProjLine=False,blnRevPlot=False,blnPTIPlot=False,"
      "blnPricePlot=False,blnPart3Extra=False,blnEPSTrendLine=False,blnEPSProjLine=False,"
      "blnEPSPlot=False,blnDebt2Eq=False,blnBookVal=True,blnLockBasicInfo=False,"
      "intReportPeriod=0,sngPMGPEScaleFactor=0,sngPMGPriceZoneScaleFactor=0,"
      "sngPMGRVScaleFactor=1.25";
  const std::string plain_insert =
      "insert into Options (CompanyID,strCurSymbol,intUnit,intPEMethod,blnTaxRate,"
      "blnRevTrendLine,blnRevProjLine,blnRevPlot,blnPTIPlot,blnPricePlot,blnPart3Extra,"
      "blnEPSTrendLine,blnEPSProjLine,blnEPSPlot,blnDebt2Eq,blnLockBasicInfo,blnBookVal,"
      "intReportPeriod,sngPMGPEScaleFactor,sngPMGPriceZoneScaleFactor,sngPMGRVScaleFactor";
  const std::string plain_values =
      ") select 41,'$',1,0,False,False,False,False,False,False,False,False,False,False,False,"
      "False,True,0,0,0,1.25";
  struct Case {
    int32_t platform;
    std::string update;
    std::string insert;
  } cases[] = {
      {0, plain_update + " where CompanyID = 41", plain_insert + plain_values},
      {1, plain_update + ",blnEPSMinProjLine=True where CompanyID = 41",
       plain_insert + ",blnEPSMinProjLine" + plain_values + ",True"},
  };
  for (const Case& c : cases) {
    Fixture f;
    f.db.Answer("Update Options", NoRow());
    Company company = SampleCompany();
    company.Options.strCurSymbol = "$";
    company.Options.intUnit = 1;
    company.Options.blnBookVal = true;
    company.Options.sngPMGRVScaleFactor = 1.25f;
    company.Options.blnEPSMinProjLine = true;
    SaveCompany(f.Store(c.platform), company, true);
    SCOPED_TRACE(c.platform);
    EXPECT_EQ(f.StartingWith("Update Options"), std::vector<std::string>{c.update});
    EXPECT_EQ(f.StartingWith("insert into Options"), std::vector<std::string>{c.insert});
  }
}

// A double on which every action statement changes one row, so no fallback insert runs.
void WriteOneRow(RecordingDatabase& db, double min_key) {
  db.set_responder([min_key](const std::string& sql) {
    if (sql.starts_with("select min(")) {
      return QueryResult({"Expr1000"}, {{min_key < 1 ? Variant::Null() : Variant(min_key)}});
    }
    if (sql.starts_with("select max(")) return QueryResult({"Expr1000"}, {{Variant(41)}});
    testing::ScriptedResult r;
    r.rows = 1;
    return r;
  });
}

TEST(CompanySave, SeriesInsertWhenNoRowsElseOverwriteFromTheSmallestKey) {
  Company company = SampleCompany();
  company.CompanyID = 41;
  company.Yearly[0].Sales = 100.5f;
  company.Quarterly[1].EPS = 0.25f;
  company.Monthly.resize(3);  // padded with zero-valued months
  company.JudgmentPERT = {{3, -1.5f, 2.0f}, {5, 0, 1}};

  Fixture inserting;
  WriteOneRow(inserting.db, 0);
  EXPECT_TRUE(SaveCompany(inserting.Store(0), company, false));
  struct Count {
    const char* prefix;
    size_t count;
  } counts[] = {{"insert into Yearly ", 10},      {"insert into Quarterly ", 36},
                {"insert into Monthly ", 72},     {"insert into JudgmentPMG ", 5},
                {"insert into JudgmentPERT ", 2}, {"Update Yearly", 0}};
  for (const Count& c : counts) {
    EXPECT_EQ(inserting.StartingWith(c.prefix).size(), c.count) << c.prefix;
  }
  EXPECT_TRUE(inserting.Ran("select min(YearlyID) from Yearly where CompanyID = 41"));
  const std::vector<std::string> expected_inserts = {
      "insert into Yearly (CompanyID,Year,HighPrice,LowPrice,Sales,TaxRate,PretaxIncome,"
      "NetIncome,BookValue,EPS,DPS,LongTermDebt,CSO,CashFlow,CommonEquity) "
      "select 41,2024,0,0,100.5,0,0,0,0,0,0,0,0,0,0",
      // December 2024 is the second quarter of the fiscal year ending June 2025.
      "insert into Quarterly (CompanyID,Quarter,Year,EPS,Sales,PretaxIncome,NetIncome,DPS,CSO,"
      "TaxRate,Depreciation,ExDividend) select 41,2,2025,0,0,0,0,0,0,0,0,0",
      "insert into Monthly (CompanyID,Month,ClosingPrice) select 41,71,0",
      "insert into JudgmentPMG (CompanyID,Year,HiPE,LowPE,BuyBelow,SellAbove) "
      "select 41,0,0,0,0,0",
      "insert into JudgmentPERT (CompanyID,GraphType,ScaleFactorNegative,ScaleFactorPositive) "
      "select 41,3,-1.5,2"};
  for (const std::string& sql : expected_inserts) EXPECT_TRUE(inserting.Ran(sql)) << sql;

  Fixture updating;
  WriteOneRow(updating.db, 100);
  EXPECT_TRUE(SaveCompany(updating.Store(0), company, false));
  EXPECT_TRUE(updating.StartingWith("insert into Yearly").empty());
  const std::vector<std::string> expected_updates = {
      "Update Yearly set Year=2024,HighPrice=0,LowPrice=0,Sales=100.5,TaxRate=0,PretaxIncome=0,"
      "NetIncome=0,BookValue=0,EPS=0,DPS=0,LongTermDebt=0,CSO=0,CashFlow=0,CommonEquity=0 "
      "where YearlyID = 100",
      "Update Quarterly set Quarter=3,Year=2016,EPS=0,Sales=0,PretaxIncome=0,NetIncome=0,DPS=0,"
      "CSO=0,TaxRate=0,Depreciation=0,ExDividend=0 where QuarterlyID = 135",
      "Update Monthly set Month=71,ClosingPrice=0 where MonthlyID = 171",
      "Update JudgmentPMG set Year=0,HiPE=0,LowPE=0,BuyBelow=0,SellAbove=0 "
      "where JudgmentPMGID = 104",
      "Update JudgmentPERT set GraphType = 5,ScaleFactorNegative = 0,ScaleFactorPositive = 1 "
      "where JudgmentPERTID = 101"};
  for (const std::string& sql : expected_updates) EXPECT_TRUE(updating.Ran(sql)) << sql;
  EXPECT_EQ(updating.db.statements.back(), "<CommitTrans>");
  // A PERT element whose row changed nothing is inserted in the insert form, never left out;
  // the other series leave such an element unwritten.
  EXPECT_TRUE(updating.StartingWith("insert into JudgmentPERT ").empty());
  Fixture missing;
  WriteOneRow(missing.db, 100);
  missing.db.Answer("Update JudgmentPERT set GraphType = 5", testing::ScriptedResult{});
  missing.db.Answer("Update Monthly set Month=71", testing::ScriptedResult{});
  EXPECT_TRUE(SaveCompany(missing.Store(0), company, false));
  EXPECT_EQ(missing.StartingWith("insert into JudgmentPERT ").size(), 1u);
  EXPECT_TRUE(missing.Ran("insert into JudgmentPERT (CompanyID,GraphType,ScaleFactorNegative,"
                          "ScaleFactorPositive) select 41,5,0,1"));
  EXPECT_TRUE(missing.StartingWith("insert into Monthly").empty());
}

TEST(CompanySave, JudgmentGroupsFollowThePlatformThenTheMarketAverages) {
  Company company = SampleCompany();
  company.CompanyID = 41;
  company.JudgmentPrefProc.sngPrefProcTaxRate = 0.35f;
  company.JudgmentPrefProc.strPrefProcStrikeTaxRate = Flags({false, true, true});
  company.JudgmentAssessment.vntContribFactors = Variant("Growth");
  company.JudgmentAssessment.vntStrikePEHigh = Variant(int32_t{7});
  company.DJAverages.DJDate = DateSerial(2024, 11, 22);
  company.DJAverages.sngUtilities = 950.5f;
  company.DJAverages.sngTransportation = 16000;
  company.DJAverages.sngIndustrials = 44000.25f;

  struct Case {
    int32_t platform;
    std::vector<std::string> tables;
  } cases[] = {
      {0, {"JudgmentAnalysis", "JudgmentCheckList", "JudgmentGraph", "JudgmentPrefProc",
           "JudgmentStockReport"}},
      {1, {"JudgmentAnalysis", "JudgmentGraph", "JudgmentPrefProc", "JudgmentAssessment"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.platform);
    // Every update of a judgment group or of the day's averages finds no row, so each is
    // followed by its insert; everything else changes one row.
    Fixture f;
    f.db.Answer("Update Judgment", NoRow());
    f.db.Answer("Update DJAverages", NoRow());
    EXPECT_TRUE(SaveCompany(f.Store(c.platform), company, true));
    std::vector<std::string> updated, inserted;
    for (const auto& sql : f.StartingWith("Update Judgment")) {
      updated.push_back(sql.substr(7, sql.find(' ', 7) - 7));
    }
    for (const auto& sql : f.StartingWith("Insert into Judgment")) {
      inserted.push_back(sql.substr(12, sql.find(' ', 12) - 12));
    }
    EXPECT_EQ(updated, c.tables);
    EXPECT_EQ(inserted, c.tables);
    EXPECT_TRUE(f.Ran(
        "Update JudgmentPrefProc set sngPrefProcTaxRate=0.35,sngPrefProcPTIRev=0,"
        "sngPrefProcStartRevenue=0,sngPrefProcStartEPS=0,sngPrefProcRevenueGrowth=0,"
        "sngPrefProcPrefDivPaid=0,sngPrefProcNumShares=0,strPrefProcStrikeTaxRate='011' "
        "Where CompanyID = 41"));
    EXPECT_TRUE(f.Ran(
        "Insert into JudgmentPrefProc (CompanyID,sngPrefProcTaxRate,sngPrefProcPTIRev,"
        "sngPrefProcStartRevenue,sngPrefProcStartEPS,sngPrefProcRevenueGrowth,"
        "sngPrefProcPrefDivPaid,sngPrefProcNumShares,strPrefProcStrikeTaxRate) "
        "Select 41,0.35,0,0,0,0,0,0,'011'"));
    EXPECT_EQ(f.StartingWith("Update DJAverages"),
              std::vector<std::string>{
                  "Update DJAverages   set sngUtilities = 950.5,       sngTransportation = "
                  "16000,       sngIndustrials = 44000.25 Where datediff('d',DJDate,"
                  "'11/22/2024') = 0"});
    EXPECT_EQ(f.StartingWith("insert into DJAverages"),
              std::vector<std::string>{
                  "insert into DJAverages (DJDate, sngUtilities, sngTransportation, "
                  "sngIndustrials) select '11/22/2024',950.5,16000,44000.25"});
    EXPECT_EQ(f.db.statements.back(), "<CommitTrans>");
    if (c.platform == 1) {
      // The variant columns go through the text writer: a number is no text or date.
      const std::string assessment = f.StartingWith("Update JudgmentAssessment").at(0);
      EXPECT_NE(assessment.find(",vntContribFactors='Growth',"), std::string::npos);
      EXPECT_NE(assessment.find(",vntStrikePEHigh='',"), std::string::npos);
    }
  }

  // A group that can be neither updated nor inserted fails the save; the rest is not written.
  Fixture failing;
  failing.db.Answer("Insert into JudgmentGraph", testing::ScriptedResult{false, 0, {}, {}});
  failing.db.Answer("Update Judgment", NoRow());
  EXPECT_FALSE(SaveCompany(failing.Store(0), company, true));
  EXPECT_TRUE(failing.StartingWith("Update JudgmentPrefProc").empty());
  EXPECT_TRUE(failing.StartingWith("Update DJAverages").empty());
  EXPECT_EQ(failing.db.statements.back(), "<RollbackTrans>");
}

TEST(CompanySave, ErrorsAreReportedWithTheStepLocation) {
  Fixture f;
  f.db.set_responder([](const std::string& sql) -> testing::ScriptedResult {
    if (sql.starts_with("select min(MonthlyID)")) {
      return QueryResult({"Expr1000"}, {{Variant("not a key")}});
    }
    testing::ScriptedResult r;
    r.rows = 1;
    return r;
  });
  Company company = SampleCompany();
  company.CompanyID = 41;
  EXPECT_FALSE(SaveCompany(f.Store(0), company, true));
  ASSERT_EQ(f.errors.reports().size(), 1u);
  EXPECT_EQ(f.errors.reports()[0].Text(),
            "Code: 13\rError: Type mismatch\rLocation: mdlAccess_UpdateMonthly\r"
            "Parameter: lngCompanyID: 41\r");
  EXPECT_EQ(f.db.statements.back(), "<RollbackTrans>");
}

}  // namespace
}  // namespace kwx
