// A kept statement answers each run with exactly its own rows, whether the run before it
// answered more, fewer or none.
#include <gtest/gtest.h>

#include <string>

#include "automation/safe_array.h"
#include "automation/variant.h"
#include "services/sqlite_database.h"
#include "tests/support/test_database.h"

namespace kwx {
namespace {

TEST_F(DatabaseTest, KeptStatementAnswersEachRunWithItsOwnRows) {
  for (int k = 1; k <= 6; ++k) {
    ASSERT_TRUE(Exec("insert into Sector(Sector) select 'S" + std::to_string(k) + "'"));
  }
  // One shape, run with bounds that give 5, 2, 0, 6 and 1 rows.
  const int below[] = {6, 3, 1, 7, 2};
  for (int bound : below) {
    const std::string sql =
        "select SectorID, Sector from Sector where SectorID < " + std::to_string(bound);
    Variant fields, data;
    ASSERT_TRUE(db_.blnExecute(sql, fields, data)) << sql;
    EXPECT_EQ(fields.AsArray().Count(1), 2) << sql;
    const int rows = bound - 1;
    EXPECT_EQ(db_.lngRowCount(), rows) << sql;
    if (rows == 0) {
      EXPECT_TRUE(data.IsEmpty()) << sql;
      continue;
    }
    const SafeArray& got = data.AsArray();
    ASSERT_EQ(got.Count(1), rows) << sql;
    ASSERT_EQ(got.Count(2), 2) << sql;
    for (int r = 0; r < rows; ++r) {
      EXPECT_TRUE(got(r, 0).SameAs(Variant(int32_t{r + 1}))) << sql << " row " << r;
      EXPECT_TRUE(got(r, 1).SameAs(Variant("S" + std::to_string(r + 1)))) << sql << " row " << r;
    }
  }
}

// Texts stored where a Boolean is declared are read as Booleans when they say so.
TEST_F(DatabaseTest, BooleanColumnReadsTrueAndFalseTexts) {
  if (testing::OnServer()) GTEST_SKIP() << "the server keeps no text in a number column";
  ASSERT_TRUE(Exec("insert into Company (strName) select 'Acme'"));
  struct Case {
    std::string stored;
    Variant expected;
  };
  const Case cases[] = {
      {"' True '", Variant(true)},
      {"'FALSE'", Variant(false)},
      {"'maybe'", Variant("maybe")},
  };
  for (const Case& c : cases) {
    ASSERT_TRUE(Exec("delete from Options"));
    ASSERT_TRUE(Exec("insert into Options (CompanyID, blnTaxRate) select 1, " + c.stored));
    const Variant got = Scalar("select blnTaxRate from Options");
    EXPECT_TRUE(got.SameAs(c.expected)) << c.stored << " gave " << got;
  }
}

}  // namespace
}  // namespace kwx

namespace kwx {
namespace {

// A kept query answers with the columns its table has now, a column added since included.
TEST_F(DatabaseTest, KeptQueryAnswersWithAColumnAddedSince) {
  ASSERT_TRUE(Exec("insert into Sector(Sector) select 'Energy'"));
  const std::string query = "select * from Sector where SectorID = 1";
  Variant fields, data;
  ASSERT_TRUE(db_.blnExecute(query, fields, data));
  ASSERT_TRUE(Exec("alter table Sector add column Extra SMALLINT"));
  ASSERT_TRUE(Exec("Update Sector   set Extra=7 Where SectorID=1;"));
  ASSERT_TRUE(db_.blnExecute(query, fields, data)) << db_.LastErrorMessage();
  ASSERT_EQ(fields.AsArray().UBound(), 2);
  EXPECT_TRUE(data.AsArray()(0, 2).SameAs(Variant(int16_t{7})));
}

}  // namespace
}  // namespace kwx
