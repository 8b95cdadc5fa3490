// The database object's compiled-statement cache: statements that share a shape still answer
// by their own values, whatever the cache holds or drops.
#include <gtest/gtest.h>

#include <string>

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

}  // namespace
}  // namespace kwx
