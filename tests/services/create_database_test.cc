#include "services/create_database.h"

#include <gtest/gtest.h>

#include <string>

#include "automation/safe_array.h"
#include "model/schema.h"
#include "services/schema_ddl_internal.h"
#include "tests/support/test_database.h"

namespace kwx {
namespace {

TEST_F(DatabaseTest, EveryDeclaredColumnExistsWithItsType) {
  for (const TableDef& t : AllTables()) {
    Variant fields, data;
    ASSERT_TRUE(db_.blnExecute("select name, type, pk from pragma_table_info('" +
                                   std::string(t.name) + "')",
                               fields, data))
        << t.name;
    ASSERT_TRUE(data.IsArray()) << t.name;
    const SafeArray& rows = data.AsArray();
    auto find = [&](std::string_view name) -> int32_t {
      for (int32_t r = 0; r <= rows.UBound(1); ++r) {
        if (rows(r, 0).AsString() == name) return r;
      }
      return -1;
    };
    for (const ColumnDef& c : t.columns) {
      const int32_t r = find(c.name);
      ASSERT_GE(r, 0) << t.name << "." << c.name;
      EXPECT_EQ(rows(r, 1).AsString(), DeclaredTypeName(c.type)) << t.name << "." << c.name;
    }
    if (!t.key.empty()) {
      const int32_t r = find(t.key);
      ASSERT_GE(r, 0) << t.name << "." << t.key;
      EXPECT_EQ(rows(r, 2).AsLong(), 1) << t.name << " is keyed by " << t.key;
    }
    if (t.kind == TableKind::Series) {
      EXPECT_GE(find("CompanyID"), 0) << t.name;
    }
  }
  for (const char* index : {"Company_strSymbol_ExchangeID", "Yearly_CompanyID",
                            "ComparisonCompany_ComparisonID", "PERTReportCompany_CompanyID"}) {
    EXPECT_TRUE(Scalar(std::string("select count(*) from sqlite_master where type = 'index' "
                                   "and name = '") +
                       index + "'")
                    .SameAs(Variant(int32_t{1})))
        << index;
  }
}

TEST_F(DatabaseTest, CompanyRowsGoWithTheirCompany) {
  const std::string setup[] = {
      "insert into Sector(Sector) select 'Energy'",
      "insert into Company (strSymbol, ExchangeID, SectorID) select 'A', 1, 1",
      "insert into Company (strSymbol, ExchangeID) select 'B', 1",
      "insert into Notes(CompanyID, Notes) select 1,'n'",
      "insert into Options (CompanyID, intUnit) select 1, 1",
      "insert into Yearly (CompanyID, Year) select 1, 2025",
      "insert into Yearly (CompanyID, Year) select 2, 2025",
      "insert into JudgmentGraph (CompanyID) select 1",
      "insert into Comparison (Name) select 'c1'",
      "insert into Comparison (Name) select 'c2'",
      "insert into ComparisonCompany (ComparisonID, CompanyID) select 1, 1",
      "insert into ComparisonCompany (ComparisonID, CompanyID) select 1, 2",
      "insert into ComparisonCompany (ComparisonID, CompanyID) select 2, 2",
      "insert into PERTReport (Name) select 'p'",
      "insert into PERTReportCompany (PERTReportID, CompanyID) select 1, 1",
  };
  for (const std::string& sql : setup) ASSERT_TRUE(Exec(sql)) << sql;
  EXPECT_FALSE(Exec("insert into Yearly (CompanyID, Year) select 99, 2025"))
      << "a row of a company that does not exist";

  ASSERT_TRUE(Exec("delete * from Company where CompanyID=1"));
  ASSERT_TRUE(Exec("Delete * From Sector Where SectorID=1;")) << "reference rows stay free";
  ASSERT_TRUE(Exec("delete * from Comparison where ComparisonID=2"));
  struct Count {
    std::string table;
    int32_t rows;
  };
  const Count counts[] = {
      {"Company", 1},     {"Notes", 0},      {"Options", 0},           {"Yearly", 1},
      {"JudgmentGraph", 0}, {"Comparison", 1}, {"ComparisonCompany", 1}, {"PERTReportCompany", 0},
  };
  for (const Count& c : counts) {
    EXPECT_TRUE(Scalar("select count(*) from " + c.table).SameAs(Variant(c.rows))) << c.table;
  }
}

TEST(CreateDatabase, RefusesAnExistingFileAndLeavesItAlone) {
  testing::TempDir dir;
  const std::string existing = testing::WriteFile(dir.File("old.db"), "keep me");
  const Status refused = CreateDatabase(existing);
  EXPECT_FALSE(refused.ok());
  EXPECT_NE(refused.message().find("already exists"), std::string::npos) << refused.message();
  EXPECT_EQ(testing::ReadFile(existing), "keep me");
  EXPECT_FALSE(CreateDatabase(dir.File("no/such/folder.db")).ok());
  EXPECT_FALSE(CreateDatabase("").ok());
}

}  // namespace
}  // namespace kwx
