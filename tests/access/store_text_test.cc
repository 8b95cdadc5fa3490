// The text paths the store takes for speed: columns found by name through the load's index,
// stored texts read without the substitution when they hold none, and values appended in place
// when statements are composed. Each must give what the plain by-name and per-value rules give.
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "access/company_load.h"
#include "access/company_save.h"
#include "access/error_report.h"
#include "access/sql_text.h"
#include "automation/dates.h"
#include "tests/support/recording_database.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::QueryResult;
using testing::RecordingDatabase;

const std::string kApostrophe = "\xC3\xBF";  // how a stored text holds an apostrophe

using testing::Array;

TEST(StoreText, LoadFindsColumnsByNameAsFieldValueDoes) {
  // Column names in any case, a name given twice (the first wins), columns the record does not
  // know, and texts with and without the apostrophe substitute.
  const std::vector<std::string> columns = {"COMPANYID", "strname",    "Unknown", "sngCurPrice",
                                            "SNGCURPRICE", "strSymbol", "strNAME", "datLastFY"};
  const std::vector<Variant> row = {Variant(int32_t{7}),    Variant("O" + kApostrophe + "Neil"),
                                    Variant("ignored"),      Variant(12.5f),
                                    Variant(99.0f),          Variant("ABC"),
                                    Variant("second name"),  Variant(DateSerial(2024, 6, 30))};
  const testing::ScriptedResult result = QueryResult(columns, {row});
  RecordingDatabase db;
  db.Answer("select * from Company", result);
  ReferenceCaches caches;
  ErrorCollector errors;
  Company company;
  LoadCompany(StoreContext{&db, 0, &caches, &errors}, 7, "", "", company);

  EXPECT_EQ(company.CompanyID, 7);
  EXPECT_EQ(company.strName, "O'Neil");
  EXPECT_EQ(company.strName, TextFromSql(FieldValue("strName", result.fields, result.data, 0)));
  EXPECT_EQ(company.sngCurPrice, 12.5f);
  EXPECT_EQ(company.strSymbol, "ABC");
  EXPECT_EQ(company.datLastFY, DateSerial(2024, 6, 30));
  EXPECT_TRUE(errors.reports().empty());
}

TEST(StoreText, AppendedValuesMatchTheWriters) {
  Variant flags = Array({Variant(true), Variant(false), Variant(true)});
  const struct {
    Variant value;
    ColumnType type;
  } cases[] = {
      {Variant("  O'Neil's  "), ColumnType::Text},
      {Variant("''"), ColumnType::Text},
      {Variant("   "), ColumnType::Text},
      {Variant(""), ColumnType::Text},
      {Variant(DateSerial(2026, 11, 22)), ColumnType::Date},
      {Variant(Date{1e308}), ColumnType::Date},  // no short form: written as ''
      {Variant(), ColumnType::Variant},
      {Variant::Null(), ColumnType::Text},
      {Variant(int32_t{5}), ColumnType::Text},  // neither text nor date
      {flags, ColumnType::Flags},
      {Variant(1234567.5f), ColumnType::Single},
      {Variant(-0.00001), ColumnType::Single},
      {Variant(int16_t{-32768}), ColumnType::Integer},
      {Variant(2.5), ColumnType::Integer},
      {Variant(int32_t{2147483647}), ColumnType::Long},
      {Variant(int32_t{-12}), ColumnType::Reference},
      {Variant(true), ColumnType::Boolean},
      {Variant("False"), ColumnType::Boolean},
  };
  for (const auto& c : cases) {
    std::string out = "x=";
    AppendSqlValue(out, c.value, c.type);
    EXPECT_EQ(out, "x=" + SqlValue(c.value, c.type)) << static_cast<int>(c.type);
  }
  EXPECT_EQ(SqlText(Variant("  O'Neil's  ")), "'O" + kApostrophe + "Neil" + kApostrophe + "s'");
  EXPECT_EQ(SqlText(Variant("   ")), "''");

  std::string out;
  AppendSqlInteger(out, std::numeric_limits<int64_t>::min());
  EXPECT_EQ(out, "-9223372036854775808");
}

TEST(StoreText, SavedFieldsTakeTheConversionRules) {
  // A single that no conversion takes fails the save as before; the text written for every
  // other value is the writer's.
  const struct {
    float price;
    bool saved;
    const char* value_text;
  } cases[] = {
      {12.5f, true, "sngCurPrice=12.5,"},
      {123456789.0f, true, "sngCurPrice=1.234568E+08,"},
      {std::numeric_limits<float>::infinity(), false, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.price);
    RecordingDatabase db;
    db.set_responder([](const std::string&) {
      testing::ScriptedResult r;
      r.rows = 1;
      return r;
    });
    ReferenceCaches caches;
    ErrorCollector errors;
    Company company;
    company.CompanyID = 7;
    company.strName = " Bob's ";
    company.sngCurPrice = c.price;
    EXPECT_EQ(SaveCompany(StoreContext{&db, 0, &caches, &errors}, company, false), c.saved);
    std::string update;
    for (const std::string& s : db.statements) {
      if (s.rfind("Update Company set ", 0) == 0) update = s;
    }
    if (!c.saved) {
      EXPECT_TRUE(update.empty());
      EXPECT_FALSE(errors.reports().empty());
      continue;
    }
    EXPECT_NE(update.find(c.value_text), std::string::npos) << update;
    EXPECT_NE(update.find("strName='Bob" + kApostrophe + "s'"), std::string::npos) << update;
  }
}

}  // namespace
}  // namespace kwx
