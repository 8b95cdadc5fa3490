#include "access/maintenance.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/safe_array.h"
#include "model/schema.h"
#include "tests/support/test_database.h"
#include "tests/support/recording_database.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::QueryResult;
using testing::RecordingDatabase;

Variant List(std::vector<Variant> values) { return testing::Array(std::move(values)); }

struct Recorded {
  RecordingDatabase db;
  ReferenceCaches caches;
  ErrorCollector errors;
  StoreContext store{&db, 0, &caches, &errors};
};

TEST(KeyedDelete, WritesOnlyTheLastKeyOfAList) {
  const Variant no_values(SafeArray::Vector(0, -1));
  struct Case {
    const char* table;
    Variant fields;
    Variant values;
    std::vector<std::string> expected;
  } cases[] = {
      {"Company", Variant("CompanyID"), Variant(int32_t{7}),
       {"delete * from Company where CompanyID=7"}},
      {"ComparisonCompany", List({Variant("ComparisonID"), Variant("CompanyID")}),
       List({Variant(int32_t{3}), Variant(int32_t{5})}),
       {"delete * from ComparisonCompany where CompanyID=5"}},
      {"T", Variant("Name"), Variant("O'Neil"), {"delete * from T where Name='O\xC3\xBFNeil'"}},
      {"T", Variant("X"), Variant(2.5), {"delete * from T where X=2.5"}},
      {"T", List({Variant("A"), Variant("B")}), List({Variant("x"), Variant(1.5f)}),
       {"delete * from T where B=1.5"}},
      // A value with no condition leaves the delete unrestricted.
      {"T", Variant("X"), Variant(true), {"delete * from T"}},
      {"T", Variant("X"), no_values, {"delete * from T"}},
      {"", Variant("X"), Variant(int32_t{1}), {}},
  };
  for (const Case& c : cases) {
    Recorded r;
    mdlAccess_Delete(r.store, c.table, c.fields, c.values);
    EXPECT_EQ(r.db.statements, c.expected) << c.table << " " << c.values;
    EXPECT_TRUE(r.errors.reports().empty());
  }
}

TEST(KeyedDelete, ReportsNamesThatAreNoListWhereValuesAre) {
  Recorded r;
  mdlAccess_Delete(r.store, "T", Variant("A"), List({Variant(int32_t{1})}));
  EXPECT_TRUE(r.db.statements.empty());
  ASSERT_EQ(r.errors.reports().size(), 1u);
  EXPECT_EQ(r.errors.reports()[0].location, "mdlAccess_Delete");
  EXPECT_EQ(r.errors.reports()[0].parameter, "strTable: T");
}

TEST(DoesRecordExist, AnswersFromTheFirstValueOfTheFirstRow) {
  const std::string sql = "Select CompanyID from Company Where CompanyID = 7;";
  struct Case {
    testing::ScriptedResult answer;
    bool expected;
  } cases[] = {
      {QueryResult({"CompanyID"}, {{Variant(int32_t{7})}}), true},
      {QueryResult({"CompanyID"}, {{Variant(8.0)}}), false},  // a row, but another value
      {QueryResult({"CompanyID"}, {{Variant::Null()}}), false},
      {testing::ScriptedResult{false}, false},
  };
  for (const Case& c : cases) {
    Recorded r;
    r.db.Answer("Select", c.answer);
    EXPECT_EQ(DoesRecordExist(r.store, 7, "Company", "CompanyID"), c.expected) << c.answer.data;
    EXPECT_EQ(r.db.statements, std::vector<std::string>{sql});
  }
  StoreContext none;
  EXPECT_FALSE(DoesRecordExist(none, 7, "Company", "CompanyID"));
}

// The stored row of the price update: price 10, P/E 20, latest monthly data 30 June 2024.
testing::ScriptedResult StoredPriceRow(Variant price, Variant pe) {
  return QueryResult({"CompanyID", "sngCurPrice", "sngHighPrice52W", "sngLowPrice52W", "datLastFY",
                      "datDataUpdated", "sngCurPE", "datLatestMData"},
                     {{Variant(int32_t{7}), price, Variant(11.0f), Variant(9.0f),
                       Variant(DateSerial(2023, 12, 31)), Variant(DateSerial(2024, 1, 2)), pe,
                       Variant(DateSerial(2024, 6, 30))}});
}

TEST(UpdateCompanyPrice, WritesTheRowAndTheMonthInTheWindow) {
  const std::string select =
      "SELECT CompanyID, sngCurPrice, sngHighPrice52W, sngLowPrice52W, datLastFY, "
      "datDataUpdated, sngCurPE, datLatestMData FROM Company WHERE CompanyID = 7 ;";
  struct Case {
    Date when;
    float price;
    Variant stored_price;
    std::string update;
    std::string monthly;  // "" when no Monthly row may change
  } cases[] = {
      {DateSerial(2024, 3, 15), 12.5f, Variant(10.0f),
       "UPDATE Company SET sngCurPrice = 12.5, sngHighPrice52W = 12.5, sngLowPrice52W = 9, "
       "datDataUpdated = '15-Mar-2024', sngCurPE = 25 WHERE CompanyID = 7;",
       "UPDATE Monthly SET ClosingPrice = 12.5 WHERE CompanyID = 7 AND Month = 3;"},
      // Within the range the caller's limits stand; the stored price 0 keeps the P/E.
      {DateSerial(2024, 6, 1), 10.5f, Variant(0.0f),
       "UPDATE Company SET sngCurPrice = 10.5, sngHighPrice52W = 11, sngLowPrice52W = 9, "
       "datDataUpdated = '01-Jun-2024', sngCurPE = 20 WHERE CompanyID = 7;",
       "UPDATE Monthly SET ClosingPrice = 10.5 WHERE CompanyID = 7 AND Month = 0;"},
      {DateSerial(2018, 7, 1), 8.0f, Variant::Null(),
       "UPDATE Company SET sngCurPrice = 8, sngHighPrice52W = 11, sngLowPrice52W = 8, "
       "datDataUpdated = '01-Jul-2018', sngCurPE = 20 WHERE CompanyID = 7;",
       "UPDATE Monthly SET ClosingPrice = 8 WHERE CompanyID = 7 AND Month = 71;"},
      {DateSerial(2018, 6, 30), 10.0f, Variant(10.0f),
       "UPDATE Company SET sngCurPrice = 10, sngHighPrice52W = 11, sngLowPrice52W = 9, "
       "datDataUpdated = '30-Jun-2018', sngCurPE = 20 WHERE CompanyID = 7;",
       ""},  // 72 months back
      {DateSerial(2024, 7, 1), 10.0f, Variant(10.0f),
       "UPDATE Company SET sngCurPrice = 10, sngHighPrice52W = 11, sngLowPrice52W = 9, "
       "datDataUpdated = '01-Jul-2024', sngCurPE = 20 WHERE CompanyID = 7;",
       ""},  // after the latest month
  };
  for (const Case& c : cases) {
    Recorded r;
    r.db.Answer("SELECT", StoredPriceRow(c.stored_price, Variant(20.0f)));
    EXPECT_TRUE(UpdateCompanyPrice(r.store, 7, c.price, c.when, 11.0f, 9.0f));
    std::vector<std::string> expected{select, c.update};
    if (!c.monthly.empty()) expected.push_back(c.monthly);
    EXPECT_EQ(r.db.statements, expected);
    EXPECT_TRUE(r.errors.reports().empty());
  }
}

TEST(UpdateCompanyPrice, AnswersFalseWhenTheCompanyCannotBeReadOrWritten) {
  Recorded missing;  // the select finds no row
  EXPECT_FALSE(UpdateCompanyPrice(missing.store, 7, 1.0f, DateSerial(2024, 1, 1), 1.0f, 1.0f));
  EXPECT_EQ(missing.db.statements.size(), 1u);

  Recorded refused;
  refused.db.Answer("SELECT", StoredPriceRow(Variant(10.0f), Variant(20.0f)));
  refused.db.Answer("UPDATE Company", testing::ScriptedResult{false});
  EXPECT_FALSE(UpdateCompanyPrice(refused.store, 7, 1.0f, DateSerial(2024, 1, 1), 1.0f, 1.0f));
  EXPECT_EQ(refused.db.statements.size(), 2u);

  StoreContext none;
  EXPECT_FALSE(UpdateCompanyPrice(none, 7, 1.0f, DateSerial(2024, 1, 1), 1.0f, 1.0f));
}

// ---- Against a real database -------------------------------------------------------------

class MaintenanceDatabaseTest : public DatabaseTest {
 protected:
  // Inserts a company priced 10 (range 9 to 11, P/E 20, monthly data to June 2024) with
  // monthly rows 0 to 71 at price 1; answers its ID.
  int32_t AddCompany(const std::string& symbol, float price = 10.0f) {
    EXPECT_TRUE(Exec("insert into Company (strSymbol, strName, sngCurPrice, sngHighPrice52W, "
                     "sngLowPrice52W, sngCurPE, datLatestMData) select '" + symbol + "','" +
                     symbol + " Inc'," + NumberText(price) + ",11,9,20,'6/30/2024'"));
    const int32_t id =
        CLng(Scalar("select CompanyID from Company where strSymbol = '" + symbol + "'"));
    for (int month = 0; month < 72; ++month) {
      Exec("insert into Monthly (CompanyID, Month, ClosingPrice) select " + std::to_string(id) +
           "," + std::to_string(month) + ",1");
    }
    return id;
  }
  Variant CompanyValue(int32_t id, const std::string& column) {
    return Scalar("select " + column + " from Company where CompanyID = " + std::to_string(id));
  }
  // The months whose closing price is no longer 1.
  std::string ChangedMonths(int32_t id) {
    return Column("select Month from Monthly where ClosingPrice <> 1 and CompanyID = " +
                  std::to_string(id) + " order by Month");
  }

  ReferenceCaches caches_;
  ErrorCollector errors_;
  StoreContext store_{&db_, 0, &caches_, &errors_};
};

TEST_F(MaintenanceDatabaseTest, PriceUpdateInAndOutOfTheMonthlyWindow) {
  const int32_t id = AddCompany("ABC");
  auto stored = [&](const char* column) { return CStr(CompanyValue(id, column)); };
  ASSERT_TRUE(UpdateCompanyPrice(store_, id, 12.5f, DateSerial(2024, 3, 15), 11.0f, 9.0f));
  EXPECT_EQ(stored("sngCurPrice") + " " + stored("sngHighPrice52W") + " " +
                stored("sngLowPrice52W") + " " + stored("sngCurPE") + " " + stored("datDataUpdated"),
            "12.5 12.5 9 25 3/15/2024");  // the high is raised to the price
  EXPECT_EQ(ChangedMonths(id), "3;");

  ASSERT_TRUE(UpdateCompanyPrice(store_, id, 12.5f, DateSerial(2018, 6, 30), 13.0f, 9.0f));
  EXPECT_EQ(ChangedMonths(id), "3;");  // 72 months back: outside the series
  EXPECT_EQ(stored("sngHighPrice52W"), "13");
  EXPECT_TRUE(errors_.reports().empty());
  EXPECT_FALSE(UpdateCompanyPrice(store_, id + 100, 1.0f, DateSerial(2024, 3, 15), 1.0f, 1.0f));
}

TEST_F(MaintenanceDatabaseTest, DeletingACompanyRemovesItsRowsEverywhere) {
  const int32_t id = AddCompany("GONE");
  const int32_t kept = AddCompany("KEPT");
  for (int32_t company : {id, kept}) {
    const std::string c = std::to_string(company);
    for (const TableDef& t : AllTables()) {
      if (t.kind == TableKind::PerCompanyRow) {
        ASSERT_TRUE(Exec("insert into " + std::string(t.name) + " (CompanyID) select " + c));
      } else if (t.kind == TableKind::Series && t.name != "Monthly") {
        ASSERT_TRUE(Exec("insert into " + std::string(t.name) + " (CompanyID) select " + c));
      }
    }
  }
  ASSERT_TRUE(Exec("insert into Comparison (Name) select 'C'"));
  ASSERT_TRUE(Exec("insert into PERTReport (Name) select 'P'"));
  for (int32_t company : {id, kept}) {
    const std::string c = std::to_string(company);
    ASSERT_TRUE(Exec("insert into ComparisonCompany (ComparisonID, CompanyID) select 1," + c));
    ASSERT_TRUE(Exec("insert into PERTReportCompany (PERTReportID, CompanyID) select 1," + c));
  }

  DeleteCompany(store_, id);
  EXPECT_TRUE(errors_.reports().empty());
  for (const TableDef& t : AllTables()) {
    if (t.kind != TableKind::PerCompanyRow && t.kind != TableKind::Series &&
        t.kind != TableKind::Company && t.name != "ComparisonCompany" &&
        t.name != "PERTReportCompany") {
      continue;
    }
    const std::string from = " from " + std::string(t.name) + " where CompanyID = ";
    EXPECT_EQ(CLng(Scalar("select count(*)" + from + std::to_string(id))), 0) << t.name;
    EXPECT_EQ(CLng(Scalar("select count(*)" + from + std::to_string(kept))), 1 + 71 * (t.name == "Monthly"))
        << t.name;
  }
}

}  // namespace
}  // namespace kwx
