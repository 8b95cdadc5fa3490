// The database object's compiled-statement cache: statements that share a shape still answer
// by their own values, whatever the cache holds or drops.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "automation/safe_array.h"
#include "automation/variant.h"
#include "services/sqlite_database.h"
#include "tests/support/test_database.h"

namespace kwx {
namespace {

TEST_F(DatabaseTest, StatementsOfOneShapeAnswerByTheirOwnValues) {
  if (testing::OnServer()) GTEST_SKIP() << "SQLite names a literal's column by its text";
  for (int k = 1; k <= 5; ++k) {
    ASSERT_TRUE(Exec("Insert into Sector(Sector)     select 'S" + std::to_string(k) + "';"));
  }
  struct Case {
    std::string sql;
    Variant expected;
  };
  const Case cases[] = {
      {"select Sector from Sector where SectorID=2", Variant("S2")},
      {"select SectorID from Sector where Sector='S3'", Variant(int32_t{3})},
      {"select count(*) from Sector where SectorID > 1 and Sector <> 'S5'", Variant(int32_t{3})},
      {"select count(*) from Sector where SectorID > 3 and Sector <> 'S1'", Variant(int32_t{2})},
      // Literal result columns are kept, so the names and values of the row set stay as written.
      {"select 'x' from Sector where SectorID=1", Variant("x")},
      {"select 'y' from Sector where SectorID=1", Variant("y")},
  };
  for (const Case& c : cases) {
    const Variant got = Scalar(c.sql);
    EXPECT_TRUE(got.SameAs(c.expected)) << c.sql << " gave " << got;
  }
  Variant fields, data;
  ASSERT_TRUE(db_.blnExecute("select 'y', SectorID from Sector where SectorID=1", fields, data));
  EXPECT_EQ(fields.AsArray()(0).AsString(), "'y'");

  // A failing run (no such parent row) leaves the kept statement ready for the next values.
  ASSERT_TRUE(Exec("insert into Company (strName) select 'Acme'"));
  EXPECT_FALSE(Exec("insert into Options (CompanyID, blnTaxRate) select 99, True"));
  EXPECT_TRUE(Exec("insert into Options (CompanyID, blnTaxRate) select 1, True"));
  EXPECT_EQ(Scalar("select count(*) from Options").AsLong(), 1);
}

TEST_F(DatabaseTest, CacheSurvivesEvictionSchemaChangesAndQuotedNames) {
  if (testing::OnServer()) GTEST_SKIP() << "the SQLite engine's own statement cache";
  // More distinct shapes than the cache keeps, then the first ones again.
  for (int round = 0; round < 2; ++round) {
    for (int k = 0; k < 600; k += 37) {
      std::string sql = "select count(*) from Sector where SectorID > 0";
      for (int j = 0; j < k; ++j) sql += " and SectorID <> " + std::to_string(j + 1000);
      ASSERT_TRUE(Scalar(sql).SameAs(Variant(int32_t{0}))) << k;
    }
    for (int k = 0; k < 600; ++k) {
      ASSERT_TRUE(Exec("select count(*) from Sector where SectorID = " + std::to_string(k) +
                       std::string(k % 7, ' ') + " and " + std::to_string(k) + " = " +
                       std::to_string(k)));
    }
  }

  ASSERT_TRUE(Exec("insert into Sector(Sector) select 'Energy'"));
  Variant fields, data;
  ASSERT_TRUE(db_.blnExecute("select * from Sector where SectorID = 1", fields, data));
  EXPECT_EQ(fields.AsArray().UBound(), 1);
  ASSERT_TRUE(Exec("alter table Sector add column Extra SMALLINT"));
  ASSERT_TRUE(Exec("Update Sector   set Extra=7 Where SectorID=1;"));
  ASSERT_TRUE(db_.blnExecute("select * from Sector where SectorID = 1", fields, data));
  ASSERT_EQ(fields.AsArray().UBound(), 2) << "the kept statement sees the new column";
  EXPECT_EQ(fields.AsArray()(2).AsString(), "Extra");
  EXPECT_TRUE(data.AsArray()(0, 2).SameAs(Variant(int16_t{7})));

  // A text where SQLite reads a name cannot become a value: run as written.
  EXPECT_TRUE(Exec("insert into Sector('Sector') select 'Banks'"));
  EXPECT_TRUE(Scalar("select count(*) from Sector where Sector = 'Banks'").SameAs(Variant(int32_t{1})));
  // A second statement is still refused, whether or not its shape was kept before.
  EXPECT_TRUE(Exec("select count(*) from Sector where SectorID = 1"));
  EXPECT_FALSE(Exec("select count(*) from Sector where SectorID = 1; delete from Sector"));
  EXPECT_TRUE(Scalar("select count(*) from Sector").SameAs(Variant(int32_t{2})));
}

// A template keeps its compiled statement between runs; when more shapes than the cache holds
// have run since, or a schema change recompiled it, the next run still stores its own values.
TEST_F(DatabaseTest, ComposedStatementsRunAgainOnceTheirStatementWasDropped) {
  if (testing::OnServer()) GTEST_SKIP() << "the SQLite engine's own statement cache";
  StatementTemplate insert;
  insert.pieces = {"insert into Sector(Sector) select ", ""};
  insert.columns = {"Sector"};
  Variant fields, data;
  for (int round = 0; round < 4; ++round) {
    ComposedStatement statement{&insert, {"'S" + std::to_string(round) + "'"}, {}};
    ASSERT_TRUE(db_.blnExecuteComposed(statement, fields, data)) << round;
    if (round == 1) {
      ASSERT_TRUE(Exec("alter table Sector add column Extra SMALLINT"));
    }
    if (round == 3) continue;
    for (int k = 0; k < 600; ++k) {
      ASSERT_TRUE(Exec("select count(*) as n" + std::to_string(k) + " from Sector"));
    }
  }
  ASSERT_TRUE(db_.blnExecute("select Sector from Sector order by SectorID", fields, data));
  const SafeArray& rows = data.AsArray();
  ASSERT_EQ(rows.UBound(1) - rows.LBound(1) + 1, 4);
  for (int round = 0; round < 4; ++round) {
    EXPECT_EQ(rows(rows.LBound(1) + round, 0).AsString(), "S" + std::to_string(round));
  }
}

// A statement handed over as template and values stores, answers and traces exactly what its
// text does, whatever the values: signs, exponents, apostrophes, dates, Booleans, and values
// that cannot be bound as they stand (which send the statement through its text).
TEST_F(DatabaseTest, ComposedStatementsStoreWhatTheirTextStores) {
  if (testing::OnServer()) GTEST_SKIP() << "SQLite's own types and quote()";
  ASSERT_TRUE(Exec("create table T (K INTEGER PRIMARY KEY, s TEXT, f SINGLE, i SMALLINT, "
                   "b BIT, datLastFY DATETIME)"));
  StatementTemplate insert;
  insert.pieces = {"insert into T (K,s,f,i,b,datLastFY) select ", ",", ",", ",", ",", ",", ""};
  insert.columns = {"K", "s", "f", "i", "b", "datLastFY"};
  StatementTemplate update;  // a literal of its own: runs as text
  update.pieces = {"Update T set s=", " where datediff('d',datLastFY,", ") = 0 and K = ", ""};
  update.columns = {"s", "datLastFY", "K"};
  const std::vector<std::vector<std::string>> options = {
      {"'abc'", "'O\xC3\xBFNeil'", "'\xC3\x9Cn\xC3\xAF'", "''", "'12'", "'a\"b'", "'x",
       std::string("'nul\0'", 6)},
      {"12", "-3.25", "1.5E+10", "1E-05", "0.1", "-0", "3.402823E+38", "-1.175494E-38"},
      {"7", "-32768", "0", "True"},
      {"True", "False", "-1", "0"},
      {"'11/22/2026'", "'1/5/2026 13:45:00'", "'not a date'", "''", "'12/30/1899'", "0"},
  };
  std::mt19937 rng(20261122);
  std::vector<std::string> trace;
  db_.SetTraceCallback([&](std::string_view line) { trace.emplace_back(line); });
  // Singles kept as their numbers, as the loader composes them, in and out of the magnitudes
  // whose text is worked out without writing it.
  const std::vector<float> singles = {12.0f,  -3.25f,  1.5e10f,       1e-5f,     0.1f,      -0.0f,
                                      42.29f, 0.0001f, 3.4028235e38f, 123456.5f, 9999999.0f};
  for (int k = 0; k < 200; ++k) {
    ComposedStatement statement{&insert, {std::to_string(2 * k + 1)}, {}};
    for (const auto& column : options) statement.literals.push_back(column[rng() % column.size()]);
    if (k % 2 == 0) statement.SetSingle(2, singles[rng() % singles.size()]);
    Variant fields, data;
    const bool by_text = db_.blnExecute(statement.Text(), fields, data);
    statement.literals[0] = std::to_string(2 * k + 2);
    const size_t traced = trace.size();
    const bool composed = db_.blnExecuteComposed(statement, fields, data);
    ASSERT_EQ(composed, by_text) << statement.Text();
    ASSERT_EQ(trace.size(), traced + 1);
    if (!by_text) continue;
    EXPECT_EQ(db_.lngRowCount(), 1);
    EXPECT_EQ(nlohmann::json::parse(trace.back())["sql"], statement.Text());
    // As stored, not as the object types what it reads back.
    const std::string row = "select quote(s), quote(f), quote(i), quote(b), quote(datLastFY) "
                            "from T where K = ";
    Variant first = Query(row + std::to_string(2 * k + 1));
    Variant second = Query(row + std::to_string(2 * k + 2));
    ASSERT_TRUE(first.IsArray() && second.IsArray());
    for (int c = 0; c <= first.AsArray().UBound(2); ++c) {
      EXPECT_TRUE(first.AsArray()(0, c).SameAs(second.AsArray()(0, c)))
          << statement.Text() << " column " << c;
    }
  }
  // A text compared in the condition ignores case, as in the statement's text.
  StatementTemplate compared;
  compared.pieces = {"Update T set i=", " where s = ", ""};
  compared.columns = {"i", "s"};
  ASSERT_TRUE(Exec("insert into T (K, s) select 9999, 'Mixed Case'"));
  ComposedStatement by_name{&compared, {"77", "'MIXED case'"}, {}};
  {
    Variant fields, data;
    EXPECT_TRUE(db_.blnExecuteComposed(by_name, fields, data));
    EXPECT_EQ(db_.lngRowCount(), 1);
  }
  ComposedStatement changed{&update, {"'new'", "'11/22/2026'", "1"}, {}};
  Variant fields, data;
  EXPECT_TRUE(db_.blnExecuteComposed(changed, fields, data));
  EXPECT_NE(trace.back().find("datediff('d',datLastFY,'11/22/2026') = 0 and K = 1"),
            std::string::npos);
}

}  // namespace
}  // namespace kwx
