#include "access/sql_text.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "tests/support/recording_database.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

const std::string kY = ChrW(255);

using testing::Array;
using testing::QueryResult;

// A recording database that answers every statement with `answer`.
struct Canned {
  testing::RecordingDatabase db;
  testing::ScriptedResult answer;
  Canned() {
    db.set_responder([this](const std::string&) { return answer; });
  }
};

TEST(SqlText, ValueWritersGiveExactTexts) {
  struct Case {
    Variant value;
    ColumnType type;
    std::string want;
  };
  const Variant flags = Array({true, true, false, true});  // element 0 is not written
  const std::vector<Case> cases = {
      {"O'Neil", ColumnType::Text, "'O" + kY + "Neil'"},
      {"  padded ", ColumnType::Text, "'padded'"},
      {"", ColumnType::Text, "''"},
      {DateSerial(2026, 11, 22), ColumnType::Date, "'11/22/2026'"},
      {DateSerial(2024, 3, 5), ColumnType::Variant, "'3/5/2024'"},
      {Variant(), ColumnType::Text, "''"},
      {12.5, ColumnType::Text, "''"},  // the text/date writer takes only text and dates
      {true, ColumnType::Boolean, "True"},
      {int16_t{0}, ColumnType::Boolean, "False"},
      {2.5, ColumnType::Integer, "2"},
      {1.0f / 3.0f, ColumnType::Single, "0.3333333"},
      {123456789.0, ColumnType::Single, "1.234568E+08"},
      {flags, ColumnType::Flags, "'101'"},
      {Array({true}), ColumnType::Flags, "''"},  // upper bound 0
      {Variant("101"), ColumnType::Flags, "''"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(SqlValue(c.value, c.type), c.want) << c.value;
  }
  EXPECT_EQ(SqlDouble(Variant(0.1)), "0.1");
  EXPECT_EQ(FlagsText(flags), "101");

  // A key is written as its text only when that text is a number (or empty); any other text
  // would be read as SQL, so it carries the mark that makes the statement refused.
  using namespace std::string_literals;
  const std::vector<std::pair<Variant, std::string>> keys = {
      {int32_t{4}, "4"},     {2.5, "2.5"},        {"12", "12"},
      {"-1e3", "-1e3"},      {Variant(), ""},     {"", ""},
      {"4 or 1=1", "\0" "4 or 1=1"s},           {"1--", "\0" "1--"s},
      {"abc", "\0abc"s},
  };
  for (const auto& [key, want] : keys) EXPECT_EQ(SqlKeyText(key), want) << key;
}

TEST(SqlText, ApostrophesRoundTripThroughTheSubstitute) {
  const std::vector<std::string> texts = {"O'Neil", "''", "it's Bob's", "plain", "caf\xC3\xA9's"};
  for (const std::string& text : texts) {
    const std::string sql = SqlText(Variant(text));
    ASSERT_GE(sql.size(), 2u);
    const std::string stored = sql.substr(1, sql.size() - 2);
    EXPECT_EQ(stored.find('\''), std::string::npos) << sql;
    EXPECT_EQ(TextFromSql(Variant(stored)), text);
  }
  // A stored substitute always reads back as an apostrophe, whoever wrote it.
  EXPECT_EQ(TextFromSql(Variant("a" + kY + "b" + kY)), "a'b'");
  EXPECT_EQ(TextFromSql(Variant::Null()), "");
  EXPECT_EQ(TextFromSql(Variant(int32_t{12})), "12");
}

TEST(SqlText, StatementBuildersKeepTheirBlanks) {
  const std::vector<std::string> conditions = {"ComparisonID=3", "", "CompanyID=7"};
  const std::vector<std::pair<std::string, std::string>> cases = {
      {NameOfIdSql("Industry", "Industry", "IndustryCode", 12),
       "select Industry  from Industry where IndustryCode=12;"},
      {IdOfNameSql("IndustryID", "Industry", "Industry", QuoteSQLText(" Banks", '\'')),
       "select IndustryID  from Industry where Industry='Banks'"},
      {LoadTableSql("Sector"), "select * from Sector"},
      {DeleteRowsSql("Sector", "SectorID", "4"), "Delete * From Sector Where SectorID=4;"},
      {UpdateFieldSql("Sector", "Sector", QuoteSQLText("Energy", '\''), "SectorID", "4"),
       "Update Sector   set Sector='Energy' Where SectorID=4;"},
      {InsertRowSql("Sector", "Sector", QuoteSQLText("Energy", '\'')),
       "Insert into Sector(Sector)     select 'Energy';"},
      {DeleteWhereSql("ComparisonCompany", conditions),
       "delete * from ComparisonCompany where ComparisonID=3 and CompanyID=7"},
      {DeleteWhereSql("Company", std::vector<std::string>{}), "delete * from Company"},
  };
  for (const auto& [got, want] : cases) EXPECT_EQ(got, want);
}

TEST(FieldValue, FirstCaseInsensitiveMatchWins) {
  const Variant fields = Array({"CompanyID", "strName", "STRNAME", "sngCurPrice"});
  SafeArray rows = SafeArray::Matrix(0, 1, 0, 3);
  for (int32_t r = 0; r <= 1; ++r) {
    for (int32_t c = 0; c <= 3; ++c) rows(r, c) = Variant(int32_t{r * 10 + c});
  }
  const Variant data(rows);
  struct Case {
    std::string name;
    int32_t row;
    Variant want;
  };
  const std::vector<Case> cases = {
      {"companyid", 0, int32_t{0}},
      {"StrName", 1, int32_t{11}},  // two columns of this name: the first one
      {"SNGCURPRICE", 1, int32_t{13}},
      {"missing", 0, Variant()},
      {"", 0, Variant()},
  };
  for (const Case& c : cases) {
    EXPECT_TRUE(FieldValue(c.name, fields, data, c.row).SameAs(c.want)) << c.name;
  }
  EXPECT_TRUE(FieldValue("strName", Variant(), data, 0).IsEmpty());
  try {
    FieldValue("strName", fields, data, 2);
    FAIL() << "row 2 read";
  } catch (const AutomationError& e) {
    EXPECT_EQ(e.number(), err::kSubscript);
  }
}

TEST(LookupIDByName, CacheAnswersWithoutTheDatabase) {
  Canned c;
  const Variant ids = Array({int32_t{3}, "12abc", 7.5, Variant()});
  const Variant names = Array({"NYSE", "Nasdaq", "AMEX", Variant()});
  const std::pair<std::string, int32_t> cases[] = {
      {"nyse", 3}, {"NASDAQ", 12}, {"amex", 8},  // 7.5 rounds half to even
      {" NYSE ", 0},                            // not trimmed
      {"LSE", 0},
  };
  for (const auto& [name, want] : cases) {
    EXPECT_EQ(LookupIDByName(name, "ExchangeID", "Exchange", "Exchange", ids, names, c.db), want)
        << name;
  }
  // Names by ID read the cached IDs by their leading number; a short names array is no name.
  const Variant sector_ids = Array({"12abc", int32_t{4}, "x"});
  const Variant sectors = Array({"Banks", "Energy", "Zero"});
  const std::pair<int32_t, std::string> by_id[] = {{12, "Banks"}, {0, "Zero"}, {5, ""}};
  for (const auto& [id, want] : by_id) {
    EXPECT_EQ(LookupNameByID(id, "SectorID", "Sector", "Sector", sector_ids, sectors, c.db), want);
  }
  EXPECT_EQ(LookupNameByID(7, "SectorID", "Sector", "Sector", Array({int32_t{1}, int32_t{7}}),
                           Array({"One"}), c.db),
            "");
  EXPECT_TRUE(c.db.statements.empty());
}

TEST(LookupIDByName, WithoutCacheQueriesTheDatabase) {
  Canned c;
  c.answer = QueryResult({"SectorID"}, {{Variant(int32_t{9})}});
  EXPECT_EQ(LookupIDByName(" Energy ", "SectorID", "Sector", "Sector", Variant(),
                           Array({"Energy"}), c.db),
            9);
  EXPECT_EQ(c.db.statements,
            std::vector<std::string>{"select SectorID  from Sector where Sector='Energy'"});
  // No row, an error inside (Null) and a failed statement all read as not found.
  for (const testing::ScriptedResult& r :
       {QueryResult({"SectorID"}, {}), QueryResult({"SectorID"}, {{Variant::Null()}}),
        testing::ScriptedResult{false}}) {
    c.answer = r;
    EXPECT_EQ(LookupIDByName("x", "SectorID", "Sector", "Sector", Variant(), Variant(), c.db), 0);
  }

  c.db.statements.clear();
  c.answer = QueryResult({"Industry"}, {{Variant("Banks")}});
  EXPECT_EQ(
      LookupNameByID(12, "IndustryCode", "Industry", "Industry", Array({"12"}), Variant(), c.db),
      "Banks");
  EXPECT_EQ(c.db.statements,
            std::vector<std::string>{"select Industry  from Industry where IndustryCode=12;"});
  c.answer.fields = Variant();  // both arrays are needed
  EXPECT_EQ(LookupNameByID(12, "IndustryCode", "Industry", "Industry", Variant(), Variant(), c.db),
            "");
}

TEST(ErrorReport, FourLinesEachEndedByACarriageReturn) {
  struct Case {
    ErrorReport report;
    std::string want;
  };
  const std::vector<Case> cases = {
      {{13, "Type mismatch", "mdlAccess_UpdateCompany", "lngCompanyID: 7"},
       "Code: 13\rError: Type mismatch\rLocation: mdlAccess_UpdateCompany\r"
       "Parameter: lngCompanyID: 7\r"},
      {{9, "Subscript out of range", "m_ParseYearly", ""},
       "Code: 9\rError: Subscript out of range\rLocation: m_ParseYearly\r"},
      {{-2147217900, "", "", ""}, "Code: -2147217900\rError: \r"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.report.Text(), c.want);
}

TEST(ErrorReport, BuiltFromCaughtExceptions) {
  struct Case {
    std::exception_ptr error;
    int32_t code;
    std::string description;
  };
  const std::vector<Case> cases = {
      {std::make_exception_ptr(AutomationError(err::kOverflow)), 6, "Overflow"},
      {std::make_exception_ptr(std::runtime_error("disk gone")), 5, "disk gone"},
      {std::make_exception_ptr(std::bad_alloc()), 7, "Out of memory"},
      {std::make_exception_ptr(42), 5, "Invalid procedure call or argument"},
  };
  for (const Case& c : cases) {
    const ErrorReport r = ReportFromException(c.error, "Access_Update", "lngCompanyID: 1");
    EXPECT_EQ(r.code, c.code);
    EXPECT_EQ(r.description, c.description);
    EXPECT_EQ(r.location, "Access_Update");
    EXPECT_EQ(r.parameter, "lngCompanyID: 1");
  }
}

}  // namespace
}  // namespace kwx
