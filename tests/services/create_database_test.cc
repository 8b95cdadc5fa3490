#include "services/create_database.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "automation/safe_array.h"
#include "automation/text.h"
#include "model/schema.h"
#include "services/schema_ddl_internal.h"
#include "services/series_keys_internal.h"
#include "tests/support/test_database.h"

namespace kwx {
namespace {

TEST_F(DatabaseTest, EveryDeclaredColumnExistsWithItsType) {
  if (testing::OnServer()) GTEST_SKIP() << "reads SQLite's own table list";
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

// On the server a series' index by study also orders each study's rows by key, as SQLite's
// does by itself: the smallest key of a study without rows is then found in one step. A
// database laid out with the index by study alone gets it when a program that may write opens
// it, not when one that only reads does.
TEST_F(DatabaseTest, ServerSeriesIndexesOrderEachStudysRowsByKey) {
  if (!testing::OnServer()) GTEST_SKIP() << "SQLite's index holds the key by itself";
  ASSERT_TRUE(Exec("drop index monthly_companyid_monthlyid"));
  ASSERT_TRUE(Exec("create index monthly_companyid on monthly (companyid)"));
  for (const bool writer : {false, true}) {
    db_.SetUpgradeAllowed(writer);
    ASSERT_TRUE(db_.blnOpenDatabase(path_));
    EXPECT_EQ(Scalar("select count(*) from pg_indexes where indexname = "
                     "'monthly_companyid_monthlyid' and schemaname = current_schema()")
                  .AsLong(),
              writer ? 1 : 0);
  }
  for (const TableDef& t : AllTables()) {
    if (t.kind != TableKind::Series) continue;
    const std::string table = FoldCase(t.name);
    // This test's own schema only, the index by study last. The definition is read only in
    // the order, which the server computes for the rows kept: read in the condition, it may be
    // read for another test's index, dropped meanwhile, and fail the query.
    const std::string found = Column("select indexdef from pg_indexes where tablename = '" +
                                     table + "' and schemaname = current_schema() order by "
                                     "indexdef like '%(companyid%'");
    EXPECT_TRUE(found.ends_with(" USING btree (companyid, " + FoldCase(t.key) + ");")) << found;
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

// Series rows take their keys in their study's block, so "the smallest key plus i" of one study
// never names another study's row: the next key after the block's highest, the key an update
// just found free, or (for a row inserted with a key outside the block) the lowest free one.
TEST_F(DatabaseTest, SeriesRowsTakeTheirKeysInTheirStudysBlock) {
  const std::string setup[] = {
      "insert into Company (strSymbol, ExchangeID) select 'A', 1",
      "insert into Company (strSymbol, ExchangeID) select 'B', 1",
      "insert into JudgmentPERT (CompanyID, GraphType) select 1, 1",
      "insert into JudgmentPERT (CompanyID, GraphType) select 2, 1",
      "insert into JudgmentPERT (CompanyID, GraphType) select 1, 2",
      "insert into JudgmentPERT (JudgmentPERTID, CompanyID, GraphType) select 5, 2, 2",
      "insert into JudgmentPERT (CompanyID, GraphType) select 1, 3",
      "delete * from JudgmentPERT where JudgmentPERTID = 65537",
      "insert into JudgmentPERT (CompanyID, GraphType) select 1, 4",  // after the highest
      "Update JudgmentPERT set GraphType = 5 where JudgmentPERTID = 65537",
      "insert into JudgmentPERT (CompanyID, GraphType) select 1, 6",  // fills the hole
      "insert into JudgmentPERT (CompanyID, GraphType) select 1, 7",  // not the row after it
      "insert into JudgmentPERT (CompanyID, GraphType) select 1, 8",  // the next after that
  };
  for (const std::string& sql : setup) ASSERT_TRUE(Exec(sql)) << sql;
  EXPECT_EQ(Column("select JudgmentPERTID || ':' || CompanyID || ':' || GraphType "
                   "from JudgmentPERT order by JudgmentPERTID"),
            "65536:1:1;65537:1:6;65538:1:3;65539:1:4;65540:1:7;65541:1:8;131072:2:1;131073:2:2;");
  // A study ID whose block no 64-bit key can hold has no block: the insert is refused (no
  // such study) without the key being worked out past the end of 64 bits.
  for (const char* id : {"4852094820647174142", "140737488355327", "-3"}) {
    EXPECT_FALSE(Exec(std::string("insert into JudgmentPERT (CompanyID, GraphType) select ") +
                      id + ", 1"))
        << id;
  }
  EXPECT_FALSE(InStudyBlock(0, std::numeric_limits<int64_t>::max() / kSeriesKeyBlock));
}

// Right after the series' first-key query found no row of a study, inside a transaction, the
// study's next row takes its block's first key and the rows after it the keys after that,
// without the block being asked. What the query told holds for the next statement only, and
// outside a transaction not at all (another program may write in between): there the block is
// asked, which a row moved into it (by another program's update of its key) shows.
TEST_F(DatabaseTest, ANewStudysSeriesRowsStartAtItsBlocksFirstKey) {
  for (const char* symbol : {"A", "B", "C", "D", "E"}) {
    ASSERT_TRUE(Exec(std::string("insert into Company (strSymbol, ExchangeID) select '") + symbol +
                     "', 1"));
  }
  // Rows of study 1 moved to the first keys of the blocks of studies 4 and 5.
  for (const char* sql : {"insert into Yearly (CompanyID, Year) select 1, 2001",
                          "insert into Yearly (CompanyID, Year) select 1, 2002",
                          "Update Yearly set YearlyID = 262144 where YearlyID = 65536",
                          "Update Yearly set YearlyID = 327680 where YearlyID = 65537"}) {
    ASSERT_TRUE(Exec(sql)) << sql;
  }
  const std::string first_key = "select min(YearlyID) from Yearly where CompanyID = ";
  auto insert = [](int study, int year) {
    return "insert into Yearly (CompanyID, Year) select " + std::to_string(study) + ", " +
           std::to_string(year);
  };
  db_.BeginTrans();
  ASSERT_TRUE(Exec(first_key + "3"));
  ASSERT_TRUE(Exec(insert(3, 2020)));
  ASSERT_TRUE(Exec(insert(3, 2019)));
  ASSERT_TRUE(Exec(first_key + "4"));
  ASSERT_TRUE(Exec("select 1"));
  EXPECT_TRUE(Exec(insert(4, 2020))) << "the block is asked again";
  db_.CommitTrans();
  ASSERT_TRUE(Exec(first_key + "5"));
  EXPECT_TRUE(Exec(insert(5, 2020))) << "outside a transaction the block is asked";
  EXPECT_EQ(Column("select YearlyID || ':' || CompanyID || ':' || Year from Yearly "
                   "where CompanyID > 1 order by YearlyID"),
            "196608:3:2020;196609:3:2019;262145:4:2020;327681:5:2020;");
}

// The loader's inserts of one row, every value lifted, compile as a row of values: a series
// row's with its key as one more value, any other table's as it stands. Shapes holding
// anything else run as they are.
TEST(SeriesShapes, InsertsOfOneRowOfLiftedValuesCompileAsARowOfValues) {
  struct Case {
    const char* shape;
    size_t values;
    SeriesShape::Role role;
    const char* compiled;
  } cases[] = {
      {"insert into Yearly (CompanyID,Year,sngSales) select ?,?,-?", 3, SeriesShape::Role::kInsert,
       "insert into Yearly (CompanyID,Year,sngSales,\"YearlyID\") values (?,?,-?,?)"},
      {"insert into Notes(CompanyID, Notes) select ?,?", 2, SeriesShape::Role::kRowInsert,
       "insert into Notes(CompanyID, Notes) values (?,?)"},
      {"Insert into JudgmentGraph (CompanyID,intA) Select -?, ?", 2, SeriesShape::Role::kRowInsert,
       "Insert into JudgmentGraph (CompanyID,intA) values (-?, ?)"},
      // The series row's study comes first, or its key cannot follow from it.
      {"insert into Yearly (Year,CompanyID) select ?,?", 2, SeriesShape::Role::kNone, ""},
      // A value the statement keeps, a select from a table, a count that differs.
      {"insert into Notes(CompanyID, Notes) select ?,Null", 1, SeriesShape::Role::kNone, ""},
      {"insert into Notes(CompanyID, Notes) select ?,? from Company", 2, SeriesShape::Role::kNone,
       ""},
      {"insert into Notes(CompanyID, Notes) select ?,?", 3, SeriesShape::Role::kNone, ""},
      {"insert into NoSuchTable (a) select ?", 1, SeriesShape::Role::kNone, ""},
      {"Update Yearly set Year=? where YearlyID = ?", 2, SeriesShape::Role::kKeyedUpdate, ""},
      {"Update Notes set Notes = ? where CompanyID = ?", 2, SeriesShape::Role::kNone, ""},
      {"select min(YearlyID) from Yearly where CompanyID = ?", 1, SeriesShape::Role::kFirstKey, ""},
      {"SELECT MIN( \"YearlyID\" ) FROM Yearly WHERE CompanyID=?", 1, SeriesShape::Role::kFirstKey,
       ""},
      // Another column's least value, another condition, a condition with more to it.
      {"select min(Year) from Yearly where CompanyID = ?", 1, SeriesShape::Role::kNone, ""},
      {"select min(YearlyID) from Yearly where Year = ?", 1, SeriesShape::Role::kNone, ""},
      {"select min(YearlyID) from Yearly where CompanyID = ? and Year > 2000", 1,
       SeriesShape::Role::kNone, ""},
      {"select min(NotesID) from Notes where CompanyID = ?", 1, SeriesShape::Role::kNone, ""},
  };
  for (const Case& c : cases) {
    const SeriesShape shape = ClassifySeriesShape(c.shape, c.values);
    EXPECT_EQ(shape.role, c.role) << c.shape;
    EXPECT_EQ(shape.compiled, c.compiled) << c.shape;
  }
}

// A file written before series keys were kept in blocks is renumbered when it is opened, each
// study's rows in their old order, its indexes take their declared form, and then it carries
// the current schema version.
TEST_F(DatabaseTest, OpeningAnOldFileMovesEachStudysSeriesIntoItsBlock) {
  if (testing::OnServer()) GTEST_SKIP() << "a SQLite file's upgrade";
  for (const TableDef& t : AllTables()) {
    if (t.kind == TableKind::Series) {
      ASSERT_TRUE(Exec("drop trigger \"" + std::string(t.name) + "_key_block\""));
    }
  }
  const std::string old_file[] = {
      "PRAGMA user_version = 0",
      "drop index Company_strSymbol_ExchangeID",
      "create index Company_strSymbol_ExchangeID on Company (strSymbol, ExchangeID)",
      // Values in the forms older files stored: M/d/yyyy dates, U+00FF for an apostrophe,
      // True as -1 (written past the statement forms that now store them otherwise).
      "insert into Company (strSymbol, ExchangeID, datLastFY, strName) "
      "select 'A', 1, '6/30/' || '2025', 'O' || char(255) || 'Hara'",
      "insert into Company (strSymbol, ExchangeID, datLastFY) select 'B', 1, '1/31/' || '2024'",
      "insert into Options (CompanyID, blnTaxRate, blnBookVal) select 1, -1, 0",
      "insert into Yearly (YearlyID, CompanyID, Year) select 1, 1, 2020",
      "insert into Yearly (YearlyID, CompanyID, Year) select 2, 2, 2020",
      "insert into Yearly (YearlyID, CompanyID, Year) select 3, 1, 2019",
      "insert into Yearly (YearlyID, CompanyID, Year) select 4, 2, 2019",
      "insert into Yearly (YearlyID, CompanyID, Year) select 65536, 1, 2018",
      "insert into JudgmentPMG (JudgmentPMGID, CompanyID, Year) select 9, 2, 2021",
  };
  for (const std::string& sql : old_file) ASSERT_TRUE(Exec(sql)) << sql;

  ASSERT_TRUE(db_.blnOpenDatabase(path_)) << db_.LastErrorMessage();
  EXPECT_EQ(Scalar("PRAGMA user_version").AsLong(), 4);
  // Dates sort as dates, an apostrophe reads as one, True is 1.
  EXPECT_EQ(Column("select strSymbol || ':' || datLastFY from Company order by datLastFY"),
            "B:2024-01-31;A:2025-06-30;");
  EXPECT_EQ(Column("select strName from Company where strSymbol = 'A'"), "O'Hara;");
  EXPECT_EQ(Column("select blnTaxRate || ':' || blnBookVal from Options"), "1:0;");
  // The symbol index orders symbols as lookups compare them, without regard to case.
  EXPECT_NE(CStr(Scalar("select sql from sqlite_master where name = 'Company_strSymbol_ExchangeID'"))
                .find("COLLATE NOCASE"),
            std::string::npos);
  EXPECT_EQ(Column("select YearlyID || ':' || CompanyID || ':' || Year from Yearly "
                   "order by YearlyID"),
            "65536:1:2020;65537:1:2019;65538:1:2018;131072:2:2020;131073:2:2019;");
  EXPECT_EQ(Column("select JudgmentPMGID from JudgmentPMG"), "131072;");
  ASSERT_TRUE(Exec("insert into Yearly (CompanyID, Year) select 2, 2018"));
  EXPECT_EQ(Scalar("select max(YearlyID) from Yearly where CompanyID = 2").AsLong(), 131074);
  // Opening the file again changes nothing.
  ASSERT_TRUE(db_.blnOpenDatabase(path_));
  EXPECT_EQ(Scalar("select count(*) from Yearly").AsLong(), 6);
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
