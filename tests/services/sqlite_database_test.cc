#include "services/sqlite_database.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "automation/dates.h"
#include "automation/registry.h"
#include "automation/safe_array.h"
#include "services/builtin_services.h"
#include "services/database_object.h"
#include "tests/support/test_database.h"

namespace kwx {
namespace {

using testing::ReadLines;

TEST_F(DatabaseTest, OpenOfMissingOrForeignFileAnswersFalseAndCreatesNothing) {
  if (testing::OnServer()) GTEST_SKIP() << "files only";
  std::string missing = (dir_ / "missing.db").string();
  EXPECT_FALSE(db_.blnOpenDatabase(missing));
  EXPECT_FALSE(std::filesystem::exists(missing));
  EXPECT_FALSE(Exec("select 1")) << "the earlier database must be closed by the open";

  std::string foreign = (dir_ / "notes.txt").string();
  std::ofstream(foreign) << "not a database at all, but long enough to hold a header\n";
  EXPECT_FALSE(db_.blnOpenDatabase(foreign));
  EXPECT_TRUE(db_.blnOpenDatabase(path_));
}

TEST_F(DatabaseTest, ValuesComeBackTypedFromDeclaredTypes) {
  ASSERT_TRUE(Exec(
      "insert into Company (datDataCreated, datDataUpdated, datLastFY, intNumDataYears, sngBeta, "
      "strName, ExchangeID) select #11/22/2026#, 'soon', 46000, 10, 1.5, 'Acme', 3"));
  ASSERT_TRUE(Exec("insert into Options (CompanyID, blnTaxRate, blnRevPlot, intUnit) "
                   "select 1, True, False, 40000"));
  struct Case {
    std::string sql;
    Variant expected;
  };
  const Case cases[] = {
      {"select datDataCreated from Company", Variant(DateSerial(2026, 11, 22))},
      {"select datDataUpdated from Company", Variant("soon")},
      {"select datLastFY from Company", Variant(Date{46000})},
      {"select intNumDataYears from Company", Variant(int16_t{10})},
      {"select sngBeta from Company", Variant(1.5f)},
      {"select ExchangeID from Company", Variant(int32_t{3})},
      {"select CompanyID from Company", Variant(int32_t{1})},
      {"select sngCurPrice from Company", Variant::Null()},
      {"select blnTaxRate from Options", Variant(true)},
      {"select blnRevPlot from Options", Variant(false)},
      {"select intUnit from Options", Variant(int32_t{40000})},  // too wide for 16 bits
      {"select 5000000000", Variant(5000000000.0)},
      {"select 2.5", Variant(2.5)},
  };
  for (const Case& c : cases) {
    const Variant got = Scalar(c.sql);
    EXPECT_TRUE(got.SameAs(c.expected)) << c.sql << " gave " << got << ", want " << c.expected;
  }
}

TEST_F(DatabaseTest, ResultArraysHaveTheirShapes) {
  ASSERT_TRUE(Exec("insert into Sector(Sector) select 'Energy'"));
  ASSERT_TRUE(Exec("insert into Sector(Sector) select 'Banks'"));
  Variant fields, data;
  ASSERT_TRUE(db_.blnExecute("select * from Sector order by SectorID", fields, data));
  const SafeArray& f = fields.AsArray();
  EXPECT_EQ(f.dims(), 1);
  EXPECT_EQ(f.LBound(), 0);
  EXPECT_EQ(f.UBound(), 1);
  EXPECT_EQ(f(0).AsString(), "SectorID");
  EXPECT_EQ(f(1).AsString(), "Sector");
  const SafeArray& d = data.AsArray();
  EXPECT_EQ(d.dims(), 2);
  EXPECT_EQ(d.LBound(1), 0);
  EXPECT_EQ(d.UBound(1), 1);  // rows
  EXPECT_EQ(d.UBound(2), 1);  // columns
  EXPECT_EQ(d(1, 1).AsString(), "Banks");

  ASSERT_TRUE(db_.blnExecute("select * from Sector where SectorID = 99", fields, data));
  EXPECT_TRUE(fields.IsArray()) << "names come back even without rows";
  EXPECT_TRUE(data.IsEmpty());

  ASSERT_TRUE(db_.blnExecute("Update Sector set Sector='x' where SectorID = 1", fields, data));
  EXPECT_TRUE(fields.IsEmpty());
  EXPECT_TRUE(data.IsEmpty());
}

TEST_F(DatabaseTest, RowCountFollowsTheLastStatement) {
  struct Step {
    std::string sql;
    bool ok;
    int32_t rows;
  };
  const Step steps[] = {
      {"Insert into Sector(Sector)     select 'Energy';", true, 1},
      {"insert into Sector(Sector) select Sector || '2' from Sector", true, 1},
      {"Update Sector   set Sector='None' Where SectorID=99;", true, 0},
      {"Update Sector   set Sector='Power'", true, 2},
      {"create table Scratch (x integer)", true, 0},  // no stale count from the update
      {"select * from Sector", true, 2},
      {"select * from NoSuchTable", false, 0},
      {"Delete * From Sector Where SectorID=1;", true, 1},
  };
  for (const Step& s : steps) {
    EXPECT_EQ(Exec(s.sql), s.ok) << s.sql;
    EXPECT_EQ(db_.lngRowCount(), s.rows) << s.sql;
  }
}

TEST_F(DatabaseTest, TransactionsNestAsSavepoints) {
  auto count = [&] { return Scalar("select count(*) from Sector").AsLong(); };
  db_.CommitTrans();  // nothing open: nothing happens
  db_.RollbackTrans();

  db_.BeginTrans();
  ASSERT_TRUE(Exec("insert into Sector(Sector) select 'outer'"));
  db_.BeginTrans();
  ASSERT_TRUE(Exec("insert into Sector(Sector) select 'inner'"));
  EXPECT_EQ(db_.TransactionDepth(), 2);
  db_.RollbackTrans();
  EXPECT_EQ(count(), 1) << "the inner rollback keeps the outer work";
  db_.CommitTrans();
  EXPECT_EQ(db_.TransactionDepth(), 0);

  db_.BeginTrans();
  ASSERT_TRUE(Exec("insert into Sector(Sector) select 'a'"));
  db_.BeginTrans();
  ASSERT_TRUE(Exec("insert into Sector(Sector) select 'b'"));
  db_.CommitTrans();
  db_.RollbackTrans();
  EXPECT_EQ(count(), 1) << "the outer rollback drops the committed inner level too";

  ASSERT_TRUE(db_.blnOpenDatabase(path_));  // the committed row is in the file
  EXPECT_EQ(count(), 1);
  EXPECT_EQ(Scalar("select Sector from Sector").AsString(), "outer");
}

TEST_F(DatabaseTest, SecondStatementIsRefusedAndNothingOfItRuns) {
  const std::string refused[] = {
      "insert into Sector(Sector) select 'x'; drop table Sector",
      "insert into Sector(Sector) select 'x';;\n/* note */ delete from Sector",
      "",
  };
  for (const std::string& sql : refused) {
    EXPECT_FALSE(Exec(sql)) << sql;
  }
  EXPECT_EQ(Scalar("select count(*) from Sector").AsLong(), 0);

  EXPECT_TRUE(Exec("insert into Sector(Sector) select 'y';  -- trailing note\n ; "));
  // A value written with double quotes stays a value, whatever it holds.
  const std::string value = "x'); drop table Sector; --";
  EXPECT_TRUE(Exec("insert into Sector(Sector) select \"" + value + "\""));
  EXPECT_EQ(Scalar("select Sector from Sector where SectorID = 2").AsString(), value);
  EXPECT_EQ(Scalar("select count(*) from Sector").AsLong(), 2);
}

// A NUL byte marks a value that could not be one literal: the text is refused before anything
// runs, whether its values would be lifted or it runs as plain text. The last error is the
// engine's own message or the reason for refusing.
TEST_F(DatabaseTest, NulByteTextsAreRefusedAndTheLastErrorSaysWhy) {
  using namespace std::string_literals;
  const std::string refused[] = {
      "insert into Sector(Sector) select '\0x' || (select 'y') || ''"s,
      "insert into Sector(Sector) select 'a\0b'"s,
      "select 'a\0b' as x"s,
      "create table Scratch (x default 'a\0')"s,
  };
  for (const std::string& sql : refused) {
    EXPECT_FALSE(Exec(sql)) << sql;
    EXPECT_NE(db_.LastErrorMessage().find("NUL byte"), std::string::npos) << sql;
  }
  EXPECT_EQ(Scalar("select count(*) from Sector").AsLong(), 0);
  EXPECT_TRUE(db_.LastErrorMessage().empty());
  EXPECT_FALSE(Exec("select * from Nope"));
  EXPECT_EQ(db_.LastErrorMessage(), testing::OnServer() ? "relation \"nope\" does not exist"
                                                       : "no such table: Nope");
  // Refused as its literal form is: digits glued to a lifted literal never number its value.
  EXPECT_FALSE(Exec("select Sector from Sector where Sector = \"O'N\"1"));
  EXPECT_FALSE(Exec("select 1; select 2"));
  EXPECT_NE(db_.LastErrorMessage().find("second statement"), std::string::npos);
}

// New files are created in WAL mode; opening leaves a file's journal mode as it is, so a
// program that only reads never needs the file to itself.
TEST_F(DatabaseTest, CreatedInWalModeAndOpeningKeepsTheJournalMode) {
  if (testing::OnServer()) GTEST_SKIP() << "a SQLite file's journal";
  EXPECT_EQ(Scalar("PRAGMA journal_mode").AsString(), "wal");
  ASSERT_TRUE(Exec("PRAGMA journal_mode = DELETE"));
  ASSERT_TRUE(db_.blnOpenDatabase(path_));
  EXPECT_EQ(Scalar("PRAGMA journal_mode").AsString(), "delete");
}

// The open temporary files of this process that SQLite made (it names them so and unlinks them
// at once: they show only as open descriptors).
int OpenSqliteTemporaryFiles() {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code ec;
    const std::filesystem::path target = std::filesystem::read_symlink(entry.path(), ec);
    if (!ec && target.string().find("etilqs_") != std::string::npos) ++count;
  }
  return count;
}

// What a level inside a batch journals, so that it can be undone alone, stays in memory: as a
// temporary file it cost one small write per page, and a bulk import crawled.
TEST_F(DatabaseTest, ALevelInsideABatchJournalsInMemoryAndUndoesAlone) {
  if (testing::OnServer()) GTEST_SKIP() << "a SQLite connection's temporary files";
  ASSERT_TRUE(Exec("insert into Company (strSymbol, ExchangeID) select 'A', 1"));
  db_.BeginTrans();
  // Some 80 pages of rows written before the level: the level journals each page it changes.
  for (int year = 0; year < 6000; ++year) {
    ASSERT_TRUE(Exec("insert into Yearly (CompanyID, Year, Sales, EPS) select 1, " +
                     std::to_string(year) + ", 1, 1"));
  }
  db_.BeginTrans();
  ASSERT_TRUE(Exec("update Yearly set Sales = 2, EPS = 1234567"));
  const int temporary_files = OpenSqliteTemporaryFiles();
  db_.RollbackTrans();
  EXPECT_EQ(CDbl(Scalar("select sum(Sales) from Yearly")), 6000)
      << "undoing the level restores every page it changed";
  db_.CommitTrans();
  EXPECT_EQ(temporary_files, 0);
  EXPECT_EQ(Scalar("select count(*) from Yearly").AsLong(), 6000);
}

// A level whose journal outgrows the block kept in memory goes on in a temporary file, and is
// undone from there as from memory (written out whole, that block came back short of the
// system's limit on one write, and the transaction was undone as "disk is full").
TEST_F(DatabaseTest, ALevelWhoseJournalOutgrowsMemoryUndoesAlone) {
  if (testing::OnServer()) GTEST_SKIP() << "a SQLite connection's journals";
  const std::string filler(90, 'i');
  db_.BeginTrans();
  for (int n = 0; n < 20000; ++n) {  // some 500 pages
    ASSERT_TRUE(Exec("insert into Industry (IndustryCode, Industry) select 7, '" +
                     std::to_string(n) + filler + "'"));
  }
  db_.BeginTrans();
  ASSERT_TRUE(Exec("update Industry set Industry = 'changed' where IndustryCode = 7"))
      << db_.LastErrorMessage();
  db_.RollbackTrans();
  db_.CommitTrans();
  EXPECT_EQ(Scalar("select count(*) from Industry where Industry like '%" + filler + "'").AsLong(),
            20000);
}

// Writes `batches` transactions of `rows` rows of about a page each into Industry.
void WritePages(DatabaseObject& db, int batches, int rows) {
  const std::string name(3000, 'x');
  int n = 0;
  for (int b = 0; b < batches; ++b) {
    db.BeginTrans();
    for (int r = 0; r < rows; ++r) {
      Variant fields, data;
      ASSERT_TRUE(db.blnExecute("insert into Industry (IndustryCode, Industry) select 0, '" +
                                    std::to_string(++n) + name + "'",
                                fields, data));
    }
    db.CommitTrans();
  }
}

// The write-ahead log is copied into the file while the connection goes on writing, on a
// thread of its own: the file grows with no further statement and no checkpoint asked for.
TEST_F(DatabaseTest, TheLogIsCopiedIntoTheFileWhileTheConnectionStaysOpen) {
  if (testing::OnServer()) GTEST_SKIP() << "a SQLite file's write-ahead log";
  const auto before = std::filesystem::file_size(path_);
  WritePages(db_, 1, 500);  // some 500 pages: well short of SQLite's own 1,000
  bool copied = false;
  for (int wait = 0; wait < 600 && !copied; ++wait) {
    copied = std::filesystem::file_size(path_) > before + 400 * 4096;
    if (!copied) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_TRUE(copied) << "the file stayed at " << std::filesystem::file_size(path_) << " bytes";
}

// A connection that commits on and on has its log start over: it stays near kInlineFrom pages
// instead of growing with everything written, and is gone once the connection closes.
TEST_F(DatabaseTest, TheLogOfALongWriteStaysBoundedAndGoesAtClose) {
  if (testing::OnServer()) GTEST_SKIP() << "a SQLite file's write-ahead log";
  WritePages(db_, 60, 100);  // some 6,000 pages
  const std::string log = path_ + "-wal";
  ASSERT_TRUE(std::filesystem::exists(log));
  // Room for copies put off while the thread's copy was under way.
  EXPECT_LT(std::filesystem::file_size(log), (2000 + 1000) * (4096 + 24));
  std::string none;
  ASSERT_TRUE(!db_.blnOpenDatabase(none));  // closes
  EXPECT_FALSE(std::filesystem::exists(log));
  ASSERT_TRUE(db_.blnOpenDatabase(path_));
  EXPECT_EQ(Scalar("select count(*) from Industry where IndustryCode = 0").AsLong(), 6000);
}

TEST_F(DatabaseTest, DateDiffComparesStoredDatesByDay) {
  ASSERT_TRUE(Exec("insert into DJAverages (DJDate, sngUtilities, sngTransportation, "
                   "sngIndustrials) select '11/22/2026',1,2,3"));
  ASSERT_TRUE(Exec("insert into DJAverages (DJDate, sngUtilities) select '11/23/2026 3:00 PM',1"));
  ASSERT_TRUE(Exec("Update DJAverages   set sngUtilities = 5 Where datediff('d',DJDate,"
                   "'11/22/2026') = 0"));
  EXPECT_EQ(db_.lngRowCount(), 1);
  EXPECT_TRUE(Scalar("select sngUtilities from DJAverages where datediff(\"d\", DJDate, "
                     "#11/23/2026#) = 0")
                  .SameAs(Variant(1.0f)));
  struct Case {
    std::string expr;
    Variant expected;
  };
  const Case cases[] = {
      {"datediff('d', '11/20/2026', '11/22/2026')", Variant(int32_t{2})},
      {"datediff('m', '1/31/2026', '2/1/2026')", Variant(int32_t{1})},
      {"datediff('d', 46000, 46003)", Variant(int32_t{3})},
      {"datediff('d', 'someday', '11/22/2026')", Variant::Null()},
      // Serials beyond the years 100 to 9999 are no dates.
      {"datediff('d', 1e308, 0)", Variant::Null()},
      {"datediff('d', 2958465, 2958465)", Variant(int32_t{0})},
  };
  for (const Case& c : cases) {
    const Variant got = Scalar("select " + c.expr);
    EXPECT_TRUE(got.SameAs(c.expected)) << c.expr << " gave " << got;
  }
  EXPECT_FALSE(Exec("select datediff('fortnight', 1, 2)"));
}

TEST_F(DatabaseTest, ComparedTextsIgnoreCaseInEveryScript) {
  ASSERT_TRUE(Exec("insert into Industry (IndustryCode, Industry) select 0,'\xC5\xA0koda Parts'"));
  ASSERT_TRUE(Exec("insert into Industry (IndustryCode, Industry) select 0,'Banks'"));
  ASSERT_TRUE(Exec("Insert into Comparison (Name) select '\xCE\xA3\xCE\xAF\xCE\xB3\xCE\xBC\xCE\xB1 Picks'"));
  const std::string found[] = {
      "select IndustryID  from Industry where Industry='\xC5\xA1KODA parts'",  // Š / š
      "select IndustryID  from Industry where Industry=\"bANKS\"",
      "select ComparisonID from Comparison where Name = '\xCF\x83\xCE\xAF\xCE\xB3\xCE\xBC\xCE\xB1 PICKS'",
  };
  for (const std::string& sql : found) EXPECT_FALSE(Scalar(sql).IsEmpty()) << sql;
  EXPECT_TRUE(Query("select IndustryID  from Industry where Industry='Bank'").IsEmpty());
  // A symbol is looked up through its index even though the comparison ignores case.
  if (testing::OnServer()) return;  // the server plans by its own statistics
  const Variant plan = Query(
      "explain query plan select CompanyID from Company where strSymbol = 'abc' and ExchangeID = 1");
  ASSERT_TRUE(plan.IsArray());
  const std::string detail = CStr(plan.AsArray()(0, plan.AsArray().UBound(2)));
  EXPECT_NE(detail.find("INDEX Company_strSymbol_ExchangeID"), std::string::npos) << detail;
}

TEST_F(DatabaseTest, TraceWritesOneJsonLinePerStatement) {
  const std::string trace = (dir_ / "trace.jsonl").string();
  ASSERT_TRUE(db_.SetTraceFile(trace));
  std::vector<std::string> seen;
  db_.SetTraceCallback([&](std::string_view line) { seen.emplace_back(line); });
  Exec("insert into Sector(Sector) select \"say \"\"hi\"\"\"");
  Exec("select * from Sector");
  Exec("select * from Nowhere");
  db_.SetTraceFile("");
  Exec("select 1");  // after the file was closed: only the callback sees it
  const std::vector<std::string> expected = {
      R"({"sql":"insert into Sector(Sector) select \"say \"\"hi\"\"\"","ok":true,"rows":1})",
      R"({"sql":"select * from Sector","ok":true,"rows":1})",
      R"({"sql":"select * from Nowhere","ok":false,"rows":0})",
  };
  EXPECT_EQ(ReadLines(trace), expected);
  ASSERT_EQ(seen.size(), 4u);
  EXPECT_EQ(seen[3], R"({"sql":"select 1","ok":true,"rows":1})");

}

TEST_F(DatabaseTest, CloseNCompactClosesAndShrinksTheFile) {
  if (testing::OnServer()) GTEST_SKIP() << "a file's size";
  const std::string filler(2000, 'x');
  db_.BeginTrans();
  for (int i = 0; i < 500; ++i) {
    ASSERT_TRUE(Exec("insert into Sector(Sector) select '" + filler + "'"));
  }
  db_.CommitTrans();
  ASSERT_TRUE(Exec("Delete * From Sector"));
  // Under WAL the recent pages sit in the log beside the file until a checkpoint.
  auto footprint = [&] {
    std::error_code ec;
    const auto log = std::filesystem::file_size(path_ + "-wal", ec);
    return std::filesystem::file_size(path_) + (ec ? 0 : log);
  };
  const auto before = footprint();
  EXPECT_TRUE(db_.CloseNCompact(path_));
  EXPECT_LT(footprint(), before);
  EXPECT_FALSE(std::filesystem::exists(path_ + "-wal")) << "closing folds the log in";
  EXPECT_FALSE(Exec("select 1")) << "the database is closed after compacting";

  std::string missing = (dir_ / "missing.db").string();
  EXPECT_FALSE(db_.CloseNCompact(missing));
  EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST(BuiltinServices, RegistersTheDatabaseUnderBothProgIdsWithoutReplacingDoubles) {
  auto double_db = std::make_shared<Object>();
  {
    ScopedRegistration guard(progid::kDatabase, [&] { return double_db; });
    RegisterBuiltinServices();
    EXPECT_EQ(ObjectRegistry::Instance().Create(progid::kDatabase), double_db);
  }
  RegisterBuiltinServices();
  RegisterBuiltinServices();
  for (const char* id : {progid::kDatabase, progid::kDatabaseSP}) {
    EXPECT_NE(std::dynamic_pointer_cast<DatabaseObject>(CreateObjectAs<IDatabase>(id)), nullptr)
        << id;
  }
}

}  // namespace
}  // namespace kwx
