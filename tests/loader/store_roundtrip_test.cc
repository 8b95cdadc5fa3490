// Saving and loading studies through the loader against a real database file.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/registry.h"
#include "automation/safe_array.h"
#include "loader/kwx_loader.h"
#include "model/company.h"
#include "model/fiscal_dates.h"
#include "services/create_database.h"
#include "services/database_object.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

// The real database object, failing (without running) every statement that starts with
// `fail_prefix` once that is set.
class FailingDatabase : public IDatabase {
 public:
  bool blnOpenDatabase(std::string& path) override { return real_.blnOpenDatabase(path); }
  bool CloseNCompact(std::string& path) override { return real_.CloseNCompact(path); }
  bool blnExecute(const std::string& sql, Variant& fields, Variant& data) override {
    if (!fail_prefix.empty() && sql.starts_with(fail_prefix)) return false;
    return real_.blnExecute(sql, fields, data);
  }
  int32_t lngRowCount() override { return real_.lngRowCount(); }
  void BeginTrans() override { real_.BeginTrans(); }
  void CommitTrans() override { real_.CommitTrans(); }
  void RollbackTrans() override { real_.RollbackTrans(); }

  std::string fail_prefix;

 private:
  DatabaseObject real_;
};

class StoreRoundTrip : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = dir_.Database("studies.db");
    if (path_.empty()) GTEST_SKIP() << "no PostgreSQL server to test on (KWX_TEST_PG)";
    const Status created = CreateDatabase(path_);
    ASSERT_TRUE(created.ok()) << created.message();
    for (const char* id : {progid::kDatabase, progid::kDatabaseSP}) {
      guards_.push_back(std::make_unique<ScopedRegistration>(id, [this] {
        database_ = std::make_shared<FailingDatabase>();
        return database_;
      }));
    }
  }
  void TearDown() override { Close(); }

  // Releases the loader and its database object, closing the file.
  void Close() {
    loader_.reset();
    database_.reset();
  }

  // A loader on the test's database with the reference names the sample studies use.
  kwxLoader& Open(int32_t platform) {
    loader_ = std::make_unique<kwxLoader>();
    loader_->ProgramPlatform(platform);
    EXPECT_TRUE(loader_->Access_blnOpenDatabase(path_));
    loader_->Access_AddSector("Tech");
    loader_->Access_AddExchange("NASDAQ");
    loader_->Access_AddExchange("NYSE");
    loader_->Access_AddDataSource("Analyst");
    loader_->Access_AddIndustry("Software");
    return *loader_;
  }

  // The single number a query answers (count(*), min(...)).
  int32_t Number(const std::string& sql) {
    Variant data, fields;
    loader_->Access_GetCompanies(sql, data, fields);
    if (!data.IsArray()) return -1;
    const Variant& v = data.AsArray()(0, 0);
    return v.IsNull() ? 0 : CLng(v);
  }
  int32_t Rows(const std::string& table) { return Number("select count(*) from " + table); }

  testing::TempDir dir_;
  std::string path_;
  std::vector<std::unique_ptr<ScopedRegistration>> guards_;
  std::shared_ptr<FailingDatabase> database_;
  std::unique_ptr<kwxLoader> loader_;
};

// A value of each column type that differs with `seed` and survives being written as text.
template <class Rec>
void Fill(Rec& rec, int seed) {
  int i = 0;
  for (const auto& binding : Rec::Bindings()) {
    ++i;
    const int n = seed * 100 + i;
    Variant value;
    switch (binding.column.type) {
      case ColumnType::Text:
      case ColumnType::Variant:
        value = Variant("t" + std::to_string(n));
        break;
      case ColumnType::Single:
        value = Variant(static_cast<float>(n) + 0.25f);
        break;
      case ColumnType::Integer:
      case ColumnType::Long:
        value = Variant(static_cast<int32_t>(n % 1000));
        break;
      case ColumnType::Boolean:
        value = Variant(n % 2 == 1);
        break;
      case ColumnType::Date:
        value = Variant(DateSerial(2000 + n % 20, 1 + n % 12, 1 + n % 28));
        break;
      case ColumnType::Flags:
        value = Variant(n % 2 ? "0110" : "101");
        break;
      case ColumnType::Reference:
        continue;
    }
    SetField(rec, binding, value);
  }
}

// A study using every column the platform keeps, with a fiscal year ending in June.
Company FullStudy(int32_t platform, int seed) {
  Company c;
  Fill(c, seed);
  c.strName = "O'Neil " + std::to_string(seed);
  c.strSymbol = "ONL";
  c.SectorID = "Tech";
  c.ExchangeID = "NYSE";
  c.IndustryID = "Software";
  c.DataSourceID = "Analyst";
  c.datLastFY = DateSerial(2024, 6, 30);
  c.datLatestQEnding = DateSerial(2024, 12, 31);
  c.Notes = "Hold 'em";
  Fill(c.Options, seed);
  if (platform == kPlatformPlain) c.Options.blnEPSMinProjLine = false;
  Fill(c.JudgmentAnalysis, seed);
  Fill(c.JudgmentGraph, seed);
  Fill(c.JudgmentPrefProc, seed);
  if (platform == kPlatformPlain) {
    Fill(c.JudgmentCheckList, seed);
    Fill(c.JudgmentStockReport, seed);
  } else {
    Fill(c.JudgmentAssessment, seed);
  }
  // Columns the save derives from the element's place, and the load orders.
  for (size_t i = 0; i < c.Yearly.size(); ++i) {
    Fill(c.Yearly[i], seed + static_cast<int>(i));
    c.Yearly[i].Year = static_cast<int16_t>(2024 - i);
  }
  for (size_t i = 0; i < c.Quarterly.size(); ++i) {
    Fill(c.Quarterly[i], seed + static_cast<int>(i));
    const FiscalQuarter q = QuarterOfElement(static_cast<int>(i), c.datLatestQEnding, c.datLastFY);
    c.Quarterly[i].Quarter = q.quarter;
    c.Quarterly[i].Year = q.year;
  }
  for (size_t i = 0; i < c.Monthly.size(); ++i) {
    Fill(c.Monthly[i], seed + static_cast<int>(i));
    c.Monthly[i].Month = static_cast<int16_t>(i);
  }
  for (size_t i = 0; i < c.JudgmentPMG.size(); ++i) {
    Fill(c.JudgmentPMG[i], seed + static_cast<int>(i));
    c.JudgmentPMG[i].Year = static_cast<int16_t>(2021 + i);
  }
  c.JudgmentPERT.resize(3);
  for (size_t i = 0; i < c.JudgmentPERT.size(); ++i) {
    Fill(c.JudgmentPERT[i], seed + static_cast<int>(i));
    c.JudgmentPERT[i].GraphType = static_cast<int32_t>(i + 1);
  }
  return c;
}

TEST_F(StoreRoundTrip, SaveLoadSaveAgainOverwritesTheRowsOnBothPlatforms) {
  for (int32_t platform : {kPlatformPlain, kPlatformSP}) {
    SCOPED_TRACE(platform);
    kwxLoader& loader = Open(platform);
    Company saved = FullStudy(platform, 1);
    loader.Access_Update(saved);
    ASSERT_GT(saved.CompanyID, 0);
    EXPECT_EQ(saved.ExchangeID, "NYSE");  // the object keeps its names

    Company loaded;
    loader.Access_Get(saved.CompanyID, "", "", loaded);
    EXPECT_EQ(DescribeDifferences(saved, loaded), "");
    // June year-ends: the latest quarter (December 2024) is Q2 of fiscal 2025.
    EXPECT_EQ(loaded.Quarterly[0].Quarter, 2);
    EXPECT_EQ(loaded.Quarterly[0].Year, 2025);
    EXPECT_EQ(loaded.Quarterly[2].Quarter, 4);
    EXPECT_EQ(loaded.Quarterly[2].Year, 2024);

    const int32_t first_yearly = Number("select min(YearlyID) from Yearly");
    Company changed = FullStudy(platform, 2);
    changed.CompanyID = saved.CompanyID;
    loader.Access_Update(changed);
    EXPECT_EQ(changed.CompanyID, saved.CompanyID);
    const struct {
      const char* table;
      int32_t rows;
    } counts[] = {{"Company", 1}, {"Yearly", 10},     {"Quarterly", 36}, {"Monthly", 72},
                  {"JudgmentPMG", 5}, {"JudgmentPERT", 3}, {"Notes", 1},     {"Options", 1},
                  {"DJAverages", 1}};
    for (const auto& c : counts) EXPECT_EQ(Rows(c.table), c.rows) << c.table;
    EXPECT_EQ(Number("select min(YearlyID) from Yearly"), first_yearly);

    Company reloaded;
    loader.Access_Get(saved.CompanyID, "", "", reloaded);
    EXPECT_EQ(DescribeDifferences(changed, reloaded), "");
    EXPECT_TRUE(loader.ErrorReports().empty());

    // Start the next platform on an empty database.
    Close();
    path_ = dir_.Database("after" + std::to_string(platform) + ".db");
    const Status created = CreateDatabase(path_);
    ASSERT_TRUE(created.ok()) << created.message();
  }
}

// A save overwrites its study's series rows from the smallest key on; those rows sit in a key
// block of the study's own, so growing one study's PERT list between saves inserts its new
// elements and never reaches the rows of a study saved in between.
TEST_F(StoreRoundTrip, InterleavedSavesNeverReachAnotherStudysRows) {
  kwxLoader& loader = Open(kPlatformPlain);
  Company a = FullStudy(kPlatformPlain, 1);
  loader.Access_Update(a);
  Company b = FullStudy(kPlatformPlain, 5);
  b.strSymbol = "BBB";
  loader.Access_Update(b);
  ASSERT_GT(b.CompanyID, a.CompanyID);

  Company grown = FullStudy(kPlatformPlain, 9);
  grown.CompanyID = a.CompanyID;
  grown.JudgmentPERT.resize(5);
  for (size_t i = 3; i < grown.JudgmentPERT.size(); ++i) {
    Fill(grown.JudgmentPERT[i], 30 + static_cast<int>(i));
    grown.JudgmentPERT[i].GraphType = static_cast<int32_t>(i + 1);
  }
  loader.Access_Update(grown);
  // A study whose series keys lie beyond 32 bits saves and loads like any other.
  Variant data, fields;
  loader.Access_GetCompanies("insert into Company (CompanyID) select 40000", data, fields);
  Company big = FullStudy(kPlatformPlain, 7);
  big.strSymbol = "BIG";
  big.CompanyID = 40000;
  loader.Access_Update(big);

  for (const Company* saved : {&b, &grown, &big}) {
    Company loaded;
    loader.Access_Get(saved->CompanyID, "", "", loaded);
    EXPECT_EQ(DescribeDifferences(*saved, loaded), "") << saved->strSymbol;
  }
  EXPECT_EQ(Rows("JudgmentPERT"), 11);
  EXPECT_TRUE(loader.ErrorReports().empty());
}

TEST_F(StoreRoundTrip, LoadBySymbolAndExchangeLeavesThePriceMultipleAndPertSeries) {
  kwxLoader& loader = Open(kPlatformPlain);
  Company saved = FullStudy(kPlatformPlain, 1);
  loader.Access_Update(saved);
  // The same symbol on another exchange is another study.
  Company other = FullStudy(kPlatformPlain, 3);
  other.ExchangeID = "NASDAQ";
  loader.Access_Update(other);
  ASSERT_NE(other.CompanyID, saved.CompanyID);

  Company loaded;
  loader.Access_Get(0, "ONL", "NYSE", loaded);
  EXPECT_EQ(loaded.CompanyID, saved.CompanyID);
  EXPECT_EQ(loaded.strName, saved.strName);
  Company expected = saved;
  const Company fresh;
  expected.JudgmentPMG = fresh.JudgmentPMG;
  expected.JudgmentPERT = fresh.JudgmentPERT;
  EXPECT_EQ(DescribeDifferences(expected, loaded), "");

  Company nasdaq;
  loader.Access_Get(0, "ONL", "NASDAQ", nasdaq);
  EXPECT_EQ(nasdaq.CompanyID, other.CompanyID);
  EXPECT_EQ(nasdaq.ExchangeID, "NASDAQ");
}

TEST_F(StoreRoundTrip, AFailingStepLeavesTheDatabaseAsItWas) {
  kwxLoader& loader = Open(kPlatformPlain);

  // A first save that fails at the quarterly series leaves no trace of the study.
  database_->fail_prefix = "insert into Quarterly";
  Company first = FullStudy(kPlatformPlain, 1);
  loader.Access_Update(first);
  EXPECT_EQ(first.CompanyID, 0);  // the ID read back inside the transaction is undone too
  for (const char* table : {"Company", "Notes", "Options", "Yearly", "Quarterly"}) {
    EXPECT_EQ(Rows(table), 0) << table;
  }

  database_->fail_prefix.clear();
  loader.Access_Update(first);  // a retry of the same study inserts it
  ASSERT_EQ(Rows("Company"), 1);
  Company saved = first;

  // A later save of changed values fails at the quarterly series: nothing of it remains.
  database_->fail_prefix = "Update Quarterly";
  Company changed = FullStudy(kPlatformPlain, 2);
  changed.CompanyID = saved.CompanyID;
  loader.Access_Update(changed);
  database_->fail_prefix.clear();
  Company loaded;
  loader.Access_Get(saved.CompanyID, "", "", loaded);
  EXPECT_EQ(DescribeDifferences(saved, loaded), "");
}

}  // namespace
}  // namespace kwx
