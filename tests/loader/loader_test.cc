#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "automation/errors.h"
#include "automation/registry.h"
#include "automation/safe_array.h"
#include "loader/kwx_loader.h"
#include "model/company.h"
#include "model/comparison.h"
#include "model/pert_report.h"
#include "tests/support/recording_database.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::QueryResult;
using testing::RecordingDatabase;

// A data-file double that remembers the ProgID it was created under.
class TaggedDataFile : public IDataFile {
 public:
  explicit TaggedDataFile(std::string prog_id) : prog_id(std::move(prog_id)) {}
  Variant vntImportB(std::string&) override { return Variant(); }
  bool blnExport(std::string&, Variant&) override { return false; }
  std::string prog_id;
};

class TaggedDatabase : public RecordingDatabase {
 public:
  explicit TaggedDatabase(std::string prog_id) : prog_id(std::move(prog_id)) {}
  std::string prog_id;
};

// Registers doubles under all four ProgIDs for the test's lifetime.
struct Doubles {
  std::shared_ptr<TaggedDatabase> last_database;
  std::vector<std::unique_ptr<ScopedRegistration>> guards;
  std::function<void(TaggedDatabase&)> setup;

  Doubles() {
    for (const char* id : {progid::kDatabase, progid::kDatabaseSP}) {
      guards.push_back(std::make_unique<ScopedRegistration>(id, [this, id] {
        last_database = std::make_shared<TaggedDatabase>(id);
        if (setup) setup(*last_database);
        return last_database;
      }));
    }
    for (const char* id : {progid::kDataFile, progid::kDataFileSP}) {
      guards.push_back(std::make_unique<ScopedRegistration>(
          id, [id] { return std::make_shared<TaggedDataFile>(id); }));
    }
  }
};

std::string ProgIdOf(const kwxLoader& loader) {
  auto db = std::dynamic_pointer_cast<TaggedDatabase>(loader.database());
  auto file = std::dynamic_pointer_cast<TaggedDataFile>(loader.reader());
  return (db ? db->prog_id : "none") + "|" + (file ? file->prog_id : "none");
}

using testing::Texts;

TEST(LoaderPlatform, SwitchNormalisesAndAlwaysReplacesTheServiceObjects) {
  Doubles doubles;
  kwxLoader loader;
  EXPECT_EQ(loader.ProgramPlatform(), 0);
  EXPECT_EQ(ProgIdOf(loader), "iKWX_DB.KWXDB|iKWX_SSG.KWXSSG");

  struct Case {
    int32_t set;
    int32_t stored;
    const char* prog_ids;
  } cases[] = {
      {1, 1, "iKWX_SP_DB.KWXDB|iKWX_SP_SSG.KWXSSG"},
      {2, 0, "iKWX_DB.KWXDB|iKWX_SSG.KWXSSG"},
      {1, 1, "iKWX_SP_DB.KWXDB|iKWX_SP_SSG.KWXSSG"},
      {-1, 0, "iKWX_DB.KWXDB|iKWX_SSG.KWXSSG"},
      {0, 0, "iKWX_DB.KWXDB|iKWX_SSG.KWXSSG"},
  };
  for (const Case& c : cases) {
    loader.ProgramPlatform(c.set);
    EXPECT_EQ(loader.ProgramPlatform(), c.stored) << "set " << c.set;
    EXPECT_EQ(ProgIdOf(loader), c.prog_ids) << "set " << c.set;
  }

  // The same value again still gives a new database object, which has nothing open.
  auto before = loader.database();
  loader.ProgramPlatform(0);
  EXPECT_NE(loader.database(), before);
}

TEST(LoaderPlatform, MissingProgIdsLeaveTheObjectsUnsetAndCallsFailQuietly) {
  ScopedRegistration no_db(progid::kDatabase, nullptr);
  ScopedRegistration no_file(progid::kDataFile, [] () -> ObjectRef { throw std::runtime_error("refused"); });
  kwxLoader loader;
  EXPECT_EQ(loader.database(), nullptr);
  EXPECT_EQ(loader.reader(), nullptr);
  EXPECT_FALSE(loader.Access_blnOpenDatabase("x.db"));
  loader.Access_AddSector("Energy");  // no object: nothing happens, nothing raised
  EXPECT_TRUE(loader.vntSector().IsEmpty());
  // Compacting is the one member whose failure reaches the caller.
  EXPECT_THROW(loader.Access_CompactDB("x.db"), AutomationError);
}

// A host on the SP platform whose database ProgID is not installed: every member runs without
// a database object, reports or answers failure, and never touches a null object.
TEST(LoaderPlatform, EveryMemberCopesWithNoDatabaseObject) {
  ScopedRegistration no_db(progid::kDatabaseSP, nullptr);
  kwxLoader loader;
  loader.ProgramPlatform(kPlatformSP);
  ASSERT_EQ(loader.database(), nullptr);
  const Variant ids = testing::Array({Variant(1)});
  const Variant names = testing::Array({Variant("Energy")});
  Variant a, b;
  Company company;
  company.strSymbol = "ABC";
  Comparison comparison;
  PERTReport report;
  EXPECT_FALSE(loader.Access_blnOpenDatabase("x.db"));
  EXPECT_FALSE(loader.Access_DoesRecordExist(1, "Company", "CompanyID"));
  loader.Access_RefreshExchange();
  // The table loads continue past errors: one empty element, as for an unreadable table.
  EXPECT_EQ(Texts(loader.vntIndustry()), (std::vector<std::string>{"<empty>"}));
  loader.Access_GetIndustry(a, b);
  EXPECT_EQ(Texts(b), (std::vector<std::string>{"<empty>"}));
  loader.Access_UpdateSector(ids, names);
  loader.Access_UpdateExchange(ids, names);
  loader.Access_UpdateDataSource(ids, names);
  loader.Access_UpdateIndustry(ids, names);
  loader.Access_DeleteSector(ids);
  loader.Access_DeleteExchange(ids);
  loader.Access_DeleteDataSource(ids);
  loader.Access_DeleteIndustry(ids);
  loader.Access_AddSector("Energy");
  loader.Access_AddExchange("NYSE");
  loader.Access_AddDataSource("Own");
  loader.Access_AddIndustry("Banks");
  loader.Access_Get(1, "", "", company);
  loader.Access_Get(0, "ABC", "NYSE", company);
  loader.Access_Update(company);
  EXPECT_EQ(company.CompanyID, 0);
  EXPECT_FALSE(loader.LastUpdateCommitted());
  EXPECT_FALSE(loader.Access_UpdateCompanyPrice(1, 1, Date{}, 1, 1));
  a = b = Variant();
  loader.Access_GetCompanies("select * from Company", a, b);
  EXPECT_TRUE(a.IsEmpty());
  loader.Access_Delete(1);
  loader.Access_UpdateComparison(comparison);
  loader.Access_GetComparison(comparison);
  loader.Access_DeleteComparison(1);
  loader.Access_DeleteComparisonCompany(1, 1);
  loader.Access_UpdatePERTReport(report);
  loader.Access_GetPERTReport(report);
  loader.Access_DeletePERTReport(1);
  loader.Access_DeletePERTReportCompany(1, 1);
  loader.Stream_Get("1.01\r\n\r\nC1\r\nName\r\nSYM\r\n", company, idKWX);
  testing::TempDir dir;
  EXPECT_TRUE(loader.KWX_Update(company, dir.File("a.kwx")));
  EXPECT_TRUE(loader.SSG_Update(company, dir.File("a.ssg")));
  loader.KWX_Get(dir.File("a.kwx"), company);
  loader.SSG_Get(dir.File("a.ssg"), company);
  EXPECT_EQ(company.strSymbol, "SYM");
  for (const Variant& cached : {loader.vntSector(), loader.vntExchange(), loader.vntDataSource(),
                                loader.vntTrend()}) {
    EXPECT_FALSE(cached.IsArray() && cached.AsArray().UBound() > 0);
  }
  loader.Access_GetSector(a, b);
  loader.Access_GetExchange(a, b);
  loader.Access_GetDataSource(a, b);
  loader.ComputeDefaults(company);
  EXPECT_THROW(loader.Access_CompactDB("x.db"), AutomationError);
  EXPECT_FALSE(loader.ErrorReports().empty());
}

TEST(LoaderCaches, OpenLoadsSectorExchangeDataSourceInOrderAndAFailedOpenKeepsThem) {
  Doubles doubles;
  doubles.setup = [](TaggedDatabase& db) {
    db.Answer("select * from Sector", QueryResult({"SectorID", "Sector"}, {{Variant(4), Variant("Energy")}, {Variant(7), Variant("Banks")}}));
    db.Answer("select * from Exchange", QueryResult({"exchangeid", "EXCHANGE", "Extra"}, {{Variant(1), Variant("NYSE"), Variant("x")}}));
    // An empty DataSource table.
    db.Answer("select * from DataSource", QueryResult({"DataSourceID", "DataSource"}, {}));
  };
  kwxLoader loader;
  EXPECT_TRUE(loader.vntSector().IsEmpty());
  EXPECT_TRUE(loader.vntTrend().IsEmpty());
  Variant ids, names;
  loader.Access_GetSector(ids, names);
  EXPECT_TRUE(ids.IsEmpty());

  ASSERT_TRUE(loader.Access_blnOpenDatabase("studies.db"));
  EXPECT_EQ(doubles.last_database->statements,
            (std::vector<std::string>{"select * from Sector", "select * from Exchange",
                                      "select * from DataSource"}));
  EXPECT_EQ(Texts(loader.vntSector()), (std::vector<std::string>{"Energy", "Banks"}));
  loader.Access_GetSector(ids, names);
  EXPECT_EQ(Texts(ids), (std::vector<std::string>{"4", "7"}));
  EXPECT_EQ(Texts(loader.vntExchange()), (std::vector<std::string>{"NYSE"}));
  // An empty table leaves one empty element in both arrays.
  loader.Access_GetDataSource(ids, names);
  EXPECT_EQ(Texts(ids), (std::vector<std::string>{"<empty>"}));
  EXPECT_EQ(Texts(names), (std::vector<std::string>{"<empty>"}));

  doubles.last_database->open_answer = false;
  EXPECT_FALSE(loader.Access_blnOpenDatabase("other.db"));
  EXPECT_EQ(Texts(loader.vntSector()), (std::vector<std::string>{"Energy", "Banks"}));
  EXPECT_TRUE(loader.vntTrend().IsEmpty());
}

TEST(LoaderReferenceTables, StatementTextsOfUpdateDeleteAndAdd) {
  Doubles doubles;
  kwxLoader loader;
  auto& db = *doubles.last_database;
  db.Answer("select * from Exchange", QueryResult({"ExchangeID", "Exchange"}, {{Variant(1), Variant("NYSE")}}));
  ASSERT_TRUE(loader.Access_blnOpenDatabase("studies.db"));
  db.statements.clear();

  // ID 0: the update changes no row, so the row is inserted; the cache is reloaded.
  SafeArray ids = SafeArray::Vector(0, 1);
  ids(0) = Variant(0);
  ids(1) = Variant(4);
  SafeArray names = SafeArray::Vector(0, 1);
  names(0) = Variant("Energy");
  names(1) = Variant("  Utilities ");
  loader.Access_UpdateSector(Variant(ids), Variant(names));
  EXPECT_EQ(db.statements, (std::vector<std::string>{
                               "Update Sector   set Sector='Energy' Where SectorID=0;",
                               "Insert into Sector(Sector)     select 'Energy';",
                               "Update Sector   set Sector='Utilities' Where SectorID=4;",
                               "Insert into Sector(Sector)     select 'Utilities';",
                               "select * from Sector"}));

  db.statements.clear();
  loader.Access_DeleteExchange(Variant(ids));
  EXPECT_EQ(db.statements, (std::vector<std::string>{"Delete * From Exchange Where ExchangeID=0;",
                                                     "Delete * From Exchange Where ExchangeID=4;",
                                                     "select * from Exchange"}));

  // The cache comparison ignores case but not blanks: " NYSE " is not found and is inserted
  // trimmed; the insert's answer (True here) makes the cache reload.
  db.statements.clear();
  loader.Access_AddExchange("nyse");
  loader.Access_AddExchange(" NYSE ");
  EXPECT_EQ(db.statements, (std::vector<std::string>{"insert into Exchange(Exchange) select 'NYSE'",
                                                     "select * from Exchange"}));

  // Industries are never cached: the name is looked up in the database.
  db.statements.clear();
  loader.Access_AddIndustry("Banks");
  EXPECT_EQ(db.statements,
            (std::vector<std::string>{"select IndustryID  from Industry where Industry='Banks'",
                                      "insert into Industry (IndustryCode, Industry) select 0,'Banks'"}));

  // Rows of unequal arrays: the loop stops at the first missing name.
  db.statements.clear();
  SafeArray one_name = SafeArray::Vector(0, 0);
  one_name(0) = Variant("Energy");
  loader.Access_UpdateIndustry(Variant(ids), Variant(one_name));
  ASSERT_GE(db.statements.size(), 1u);
  EXPECT_EQ(db.statements.front(), "Update Industry   set Industry='Energy' Where IndustryID=0;");
  for (const auto& s : db.statements) EXPECT_EQ(s.find("IndustryID=4"), std::string::npos) << s;

  // A key that is not a number, or a name holding its own quote, cannot be written into the
  // statement as it stands: it goes behind the NUL byte that makes the database refuse it.
  db.statements.clear();
  SafeArray crafted = SafeArray::Vector(0, 0);
  crafted(0) = Variant("4 or 1=1");
  loader.Access_DeleteDataSource(Variant(crafted));
  loader.Access_AddDataSource("x' || (select 1) || '");
  using namespace std::string_literals;
  EXPECT_EQ(db.statements,
            (std::vector<std::string>{"Delete * From DataSource Where DataSourceID=\0" "4 or 1=1;"s,
                                      "select * from DataSource",
                                      "insert into DataSource(DataSource) select '\0x' || "
                                      "(select 1) || ''"s}));
}

}  // namespace
}  // namespace kwx
