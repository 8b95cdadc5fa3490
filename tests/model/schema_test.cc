#include "model/schema.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace kwx {
namespace {

// The value columns of `table` joined with ", " in insert-statement order.
std::string InsertList(const TableDef& table) {
  std::vector<const ColumnDef*> columns;
  for (const ColumnDef& c : table.columns) columns.push_back(&c);
  std::sort(columns.begin(), columns.end(), [](const ColumnDef* a, const ColumnDef* b) {
    return a->insert_position < b->insert_position;
  });
  std::string out;
  for (const ColumnDef* c : columns) out += (out.empty() ? "" : ", ") + std::string(c->name);
  return out;
}

std::string UpdateList(const TableDef& table) {
  std::string out;
  for (const ColumnDef& c : table.columns) out += (out.empty() ? "" : ", ") + std::string(c.name);
  return out;
}

TEST(Schema, InsertOrdersAreTheStatementLists) {
  EXPECT_EQ(InsertList(*FindTable("Company")),
    "datDataCreated, datDataUpdated, datLastFY, datLatestQEnding, intNumDataYears, sngACS, "
    "sngAPS, sngAverageYield, sngAvg5YrPTI, sngAvg5YrROE, sngBeta, sngCSO, sngCurAcctRec, "
    "sngCurAssets, sngCurCash, sngCurDiv, sngCurInv, sngCurLiabilities, sngCurPE, "
    "sngCurPrice, sngCurYield, sngEPSACE5YrEst, sngEPSACE5YrProjGr, sngEPSHist5YrGr, "
    "sngEPSHist5YrGrR2, sngEPSHistGrowth, sngEPSLastCYTrend, sngEPSNextYearEst, "
    "sngEPSPrefProc, sngEPSPrevHigh, sngEPSProjGrRate, sngEPSQGrowth, sngEPSVisualEst, "
    "sngEstAvgPrice, sngEstLowPrice, sngHighPrice52W, sngHighYield, sngInsideOwnership, "
    "sngInstHoldings, sngInterestCov, sngLatestQEPS, sngLatestQRev, sngLowPrice52W, "
    "sngPEAverage, sngPotDilution, sngPrefDiv, sngPrefStock, sngProjDivPayout, sngProjLiab, "
    "sngProjOutstShares, sngPSO, sngRev5YrEst, sngRevHist5YrGr, sngRevHist5YrGrR2, "
    "sngRevHistGrowth, sngRevProjGrRate, sngRevQGrowth, sngSellLevelPrice, "
    "sngSevereLowPrice, sngShortTermDebt, sngSplitRatio, sngSPRating, sngTaxRate, "
    "sngTotalAssets, sngTotalCap, sngTotalDebt, sngTotalReturn, sngUpDownRatio, "
    "sngYearAgoAcctRec, sngYearAgoAssets, sngYearAgoCash, sngYearAgoDebt, sngYearAgoInv, "
    "sngYearAgoLiab, sngYearAgoQEPS, sngYearAgoQRev, strAddress1, strAddress2, strCity, "
    "strCode, strContactName, strCountry, DataSourceID, ExchangeID, IndustryID, strName, "
    "strPhoneNumber, strPostalCode, strProvState, SectorID, strSoftwareVersion, "
    "strSPStockRank, strSymbol, strUpdatedPerson, strIndustryGroup, strURLAddress, "
    "strVLFinRating, strVLPage, strVLSafety, intLastFY, datLastStudied, datLatestQData, "
    "datLatestMData, sngCommDiv, intLatestPMGFY, intPMGGraphDisplay, strVLTimeliness");
  EXPECT_EQ("CompanyID, " + InsertList(*FindTable("Options")),
    "CompanyID, strCurSymbol, intUnit, intPEMethod, blnTaxRate, blnRevTrendLine, "
    "blnRevProjLine, blnRevPlot, blnPTIPlot, blnPricePlot, blnPart3Extra, blnEPSTrendLine, "
    "blnEPSProjLine, blnEPSPlot, blnDebt2Eq, blnLockBasicInfo, blnBookVal, intReportPeriod, "
    "sngPMGPEScaleFactor, sngPMGPriceZoneScaleFactor, sngPMGRVScaleFactor, blnEPSMinProjLine");
  EXPECT_EQ(InsertList(*FindTable("Comparison")),
            "Name, Description, Field27, Field28, UpdatePerson, StudiedSection, LastUpdate");
  EXPECT_EQ(UpdateList(*FindTable("Comparison")),
            "Name, Description, Field27, Field28, UpdatePerson, LastUpdate, StudiedSection");
}

TEST(Schema, InsertPositionsArePermutations) {
  for (const TableDef& table : AllTables()) {
    std::vector<int> positions;
    for (const ColumnDef& c : table.columns) positions.push_back(c.insert_position);
    std::sort(positions.begin(), positions.end());
    for (size_t i = 0; i < positions.size(); ++i) {
      EXPECT_EQ(positions[i], static_cast<int>(i) + 1) << table.name;
    }
  }
}

TEST(Schema, UpdateOrdersDifferOnlyWhereTheStatementsDo) {
  // Without ExchangeID, strSymbol and strVLTimeliness the two Company orders are the same.
  auto without_moved = [](const std::string& list) {
    std::string out;
    size_t from = 0;
    while (from <= list.size()) {
      size_t end = std::min(list.find(", ", from), list.size());
      std::string name = list.substr(from, end - from);
      if (name != "ExchangeID" && name != "strSymbol" && name != "strVLTimeliness") {
        out += (out.empty() ? "" : ", ") + name;
      }
      from = end + 2;
    }
    return out;
  };
  const TableDef& company = GetTable(TableId::Company);
  EXPECT_NE(UpdateList(company), InsertList(company));
  EXPECT_EQ(without_moved(UpdateList(company)), without_moved(InsertList(company)));
  EXPECT_EQ(UpdateList(company).substr(0, 30), "datDataCreated, datDataUpdated");
  EXPECT_TRUE(UpdateList(company).ends_with(
      ", strVLTimeliness, sngCommDiv, strSymbol, intLatestPMGFY, intPMGGraphDisplay, "
            "ExchangeID"));

  // Options: only blnBookVal and blnLockBasicInfo swap.
  const TableDef& options = GetTable(TableId::Options);
  for (size_t i = 0; i < options.columns.size(); ++i) {
    const ColumnDef& c = options.columns[i];
    bool swapped = c.name == "blnBookVal" || c.name == "blnLockBasicInfo";
    EXPECT_EQ(c.insert_position != static_cast<int>(i) + 1, swapped) << c.name;
  }
}

TEST(Schema, ColumnCountsAndTypes) {
  struct Expect {
    const char* table;
    size_t columns;
    const char* key;
    TableKind kind;
    PlatformUse platform;
  };
  const Expect expectations[] = {
      {"Sector", 1, "SectorID", TableKind::Reference, PlatformUse::Both},
      {"Exchange", 1, "ExchangeID", TableKind::Reference, PlatformUse::Both},
      {"DataSource", 1, "DataSourceID", TableKind::Reference, PlatformUse::Both},
      {"Industry", 2, "IndustryID", TableKind::Reference, PlatformUse::Both},
      {"Company", 107, "CompanyID", TableKind::Company, PlatformUse::Both},
      {"Notes", 1, "CompanyID", TableKind::PerCompanyRow, PlatformUse::Both},
      {"Options", 21, "CompanyID", TableKind::PerCompanyRow, PlatformUse::Both},
      {"Yearly", 14, "YearlyID", TableKind::Series, PlatformUse::Both},
      {"Quarterly", 11, "QuarterlyID", TableKind::Series, PlatformUse::Both},
      {"Monthly", 2, "MonthlyID", TableKind::Series, PlatformUse::Both},
      {"JudgmentPMG", 5, "JudgmentPMGID", TableKind::Series, PlatformUse::Both},
      {"JudgmentPERT", 3, "JudgmentPERTID", TableKind::Series, PlatformUse::Both},
      {"JudgmentGraph", 27, "CompanyID", TableKind::PerCompanyRow, PlatformUse::Both},
      {"JudgmentAnalysis", 25, "CompanyID", TableKind::PerCompanyRow, PlatformUse::Both},
      {"JudgmentCheckList", 14, "CompanyID", TableKind::PerCompanyRow, PlatformUse::PlainOnly},
      {"JudgmentPrefProc", 8, "CompanyID", TableKind::PerCompanyRow, PlatformUse::Both},
      {"JudgmentAssessment", 15, "CompanyID", TableKind::PerCompanyRow, PlatformUse::SPOnly},
      {"JudgmentStockReport", 56, "CompanyID", TableKind::PerCompanyRow,
       PlatformUse::PlainOnly},
      {"Comparison", 7, "ComparisonID", TableKind::Shared, PlatformUse::Both},
      {"ComparisonCompany", 4, "ComparisonCompanyID", TableKind::Shared, PlatformUse::Both},
      {"PERTReport", 3, "PERTReportID", TableKind::Shared, PlatformUse::Both},
      {"PERTReportCompany", 2, "PERTReportCompanyID", TableKind::Shared, PlatformUse::Both},
      {"DJAverages", 4, "", TableKind::Shared, PlatformUse::Both},
  };
  ASSERT_EQ(AllTables().size(), std::size(expectations));
  for (size_t i = 0; i < std::size(expectations); ++i) {
    const Expect& e = expectations[i];
    const TableDef& t = AllTables()[i];
    EXPECT_EQ(t.name, e.table) << "creation order at " << i;
    EXPECT_EQ(t.columns.size(), e.columns) << e.table;
    EXPECT_EQ(t.key, e.key) << e.table;
    EXPECT_EQ(t.kind, e.kind) << e.table;
    EXPECT_EQ(t.platform, e.platform) << e.table;
    EXPECT_EQ(&GetTable(static_cast<TableId>(i)), &t);
  }

  struct TypeExpect {
    const char* table;
    const char* column;
    ColumnType type;
  };
  const TypeExpect types[] = {
      {"Company", "datDataCreated", ColumnType::Date},
      {"Company", "intNumDataYears", ColumnType::Integer},
      {"Company", "sngCurPrice", ColumnType::Single},
      {"Company", "strName", ColumnType::Text},
      {"Company", "SectorID", ColumnType::Reference},
      {"Company", "ExchangeID", ColumnType::Reference},
      {"Company", "IndustryID", ColumnType::Reference},
      {"Company", "DataSourceID", ColumnType::Reference},
      {"Options", "blnBookVal", ColumnType::Boolean},
      {"JudgmentGraph", "strYearStrike", ColumnType::Flags},
      {"JudgmentAnalysis", "strPart2Strike", ColumnType::Flags},
      {"JudgmentAnalysis", "strPart3Strike", ColumnType::Flags},
      {"JudgmentCheckList", "strSCLStrike", ColumnType::Flags},
      {"JudgmentPrefProc", "strPrefProcStrikeTaxRate", ColumnType::Flags},
      {"JudgmentAssessment", "vntContribFactors", ColumnType::Variant},
      {"JudgmentStockReport", "datSSR8g", ColumnType::Date},
      {"Yearly", "Year", ColumnType::Integer},
      {"Yearly", "Sales", ColumnType::Single},
      {"Quarterly", "Quarter", ColumnType::Integer},
      {"Quarterly", "Year", ColumnType::Integer},
      {"Monthly", "Month", ColumnType::Integer},
      {"JudgmentPMG", "Year", ColumnType::Integer},
      {"JudgmentPERT", "GraphType", ColumnType::Long},
      {"Industry", "IndustryCode", ColumnType::Long},
      {"ComparisonCompany", "SelectedFields", ColumnType::Text},
      {"PERTReportCompany", "CompanyID", ColumnType::Long},
      {"DJAverages", "DJDate", ColumnType::Date},
  };
  for (const TypeExpect& e : types) {
    const ColumnDef* c = FindColumn(*FindTable(e.table), e.column);
    ASSERT_NE(c, nullptr) << e.table << "." << e.column;
    EXPECT_EQ(c->type, e.type) << e.table << "." << e.column;
  }
  EXPECT_EQ(FindColumn(*FindTable("Options"), "blnEPSMinProjLine")->platform,
            PlatformUse::SPOnly);
  EXPECT_EQ(FindColumn(*FindTable("Options"), "sngPMGRVScaleFactor")->platform,
            PlatformUse::Both);
}

TEST(Schema, LookupIsCaseInsensitive) {
  EXPECT_EQ(FindTable("judgmentpmg"), &GetTable(TableId::JudgmentPMG));
  EXPECT_EQ(FindTable("COMPANY"), &GetTable(TableId::Company));
  EXPECT_EQ(FindTable("Judgment"), nullptr);
  EXPECT_EQ(FindTable(""), nullptr);
  EXPECT_NE(FindColumn(GetTable(TableId::Company), "STRNAME"), nullptr);
  EXPECT_EQ(FindColumn(GetTable(TableId::Company), "CompanyID"), nullptr);
}

TEST(Schema, SeriesLoadOrders) {
  EXPECT_EQ(GetTable(TableId::Yearly).load_order, " order by YearlyID asc");
  EXPECT_EQ(GetTable(TableId::Quarterly).load_order, " order by Year desc, QuarterlyID asc");
  EXPECT_EQ(GetTable(TableId::Monthly).load_order, " order by MonthlyID asc");
  EXPECT_EQ(GetTable(TableId::JudgmentPMG).load_order, " order by Year asc, JudgmentPMGID asc");
  EXPECT_EQ(GetTable(TableId::JudgmentPERT).load_order, " order by GraphType asc");
  EXPECT_EQ(GetTable(TableId::Company).load_order, "");
}

}  // namespace
}  // namespace kwx
