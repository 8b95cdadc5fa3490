#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/registry.h"
#include "automation/safe_array.h"
#include "cli/app.h"
#include "loader/kwx_loader.h"
#include "model/company.h"
#include "services/sqlite_database.h"
#include "tests/support/cli_runner.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::CliResult;
using testing::RunKwx;

// A KWX text naming one study.
std::string KwxText(const std::string& symbol, const std::string& name) {
  return "1.01\r\n\r\nC1\r\n" + name + "\r\n" + symbol + "\r\n\r\nJun/30/2005\r\n";
}

// `count` KWX files S0.kwx ... in `dir`, each its own study (symbol S0 ...), in file order.
std::vector<std::string> KwxFiles(const testing::TempDir& dir, int count) {
  std::vector<std::string> files;
  for (int i = 0; i < count; ++i) {
    const std::string symbol = "S" + std::to_string(i);
    files.push_back(testing::WriteFile(dir.File(symbol + ".kwx"), KwxText(symbol, "Study")));
  }
  return files;
}

// The real database object, but a statement that begins with `fail_prefix` fails, and the
// outermost commit fails (undoing its work, as a full disk would) while `fail_commits` > 0.
class FailingDatabase : public IDatabase {
 public:
  static inline int fail_commits = 0;
  static inline std::string fail_prefix;

  bool blnOpenDatabase(std::string& path) override { return real_.blnOpenDatabase(path); }
  bool CloseNCompact(std::string& path) override { return real_.CloseNCompact(path); }
  bool blnExecute(const std::string& sql, Variant& fields, Variant& data) override {
    if (!fail_prefix.empty() && sql.rfind(fail_prefix, 0) == 0) return false;
    return real_.blnExecute(sql, fields, data);
  }
  int32_t lngRowCount() override { return real_.lngRowCount(); }
  void BeginTrans() override { real_.BeginTrans(); }
  void CommitTrans() override {
    if (real_.TransactionDepth() == 1 && fail_commits > 0) {
      --fail_commits;
      real_.RollbackTrans();
      throw AutomationError(err::kInvalidCall, "CommitTrans failed: disk I/O error");
    }
    real_.CommitTrans();
  }
  void RollbackTrans() override { real_.RollbackTrans(); }

 private:
  SqliteDatabase real_;
};

// The number a query of one number answers.
int32_t Count(kwxLoader& loader, const std::string& sql) {
  Variant data, fields;
  loader.Access_GetCompanies(sql, data, fields);
  return data.IsArray() ? CLng(data.AsArray()(0, 0)) : -1;
}
int32_t Count(const std::string& db, const std::string& sql) {
  kwxLoader loader;
  return loader.Access_blnOpenDatabase(db) ? Count(loader, sql) : -1;
}

// Another program reading the file straight (as the sqlite3 shell or pandas would) sees dates
// that sort as dates, apostrophes as apostrophes and Booleans as 1 and 0.
TEST(FileCommands, OtherProgramsReadAnImportedFileCorrectly) {
  testing::TempDir dir;
  const std::string db = dir.File("studies.db");
  ASSERT_EQ(testing::RunKwxOn(db, {"init"}).code, 0);
  std::string older = KwxText("OLD", "O'Hara Foods");
  older.replace(older.find("Jun/30/2005"), 11, "Jan/31/2004");
  const std::vector<std::string> files = {
      testing::WriteFile(dir.File("new.kwx"), KwxText("NEW", "Newer")),
      testing::WriteFile(dir.File("old.kwx"), older)};
  ASSERT_EQ(testing::RunKwxOn(db, {"import", files[0], files[1]}).code, 0);

  sqlite3* raw = nullptr;
  ASSERT_EQ(sqlite3_open_v2(db.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  std::string seen;
  auto collect = [](void* out, int n, char** values, char**) {
    for (int i = 0; i < n; ++i) *static_cast<std::string*>(out) += (values[i] ? values[i] : "NULL") + std::string(";");
    return 0;
  };
  for (const char* sql : {"select strSymbol, datLastFY from Company order by datLastFY",
                          "select strName from Company where datLastFY < '2005-01-01'",
                          "select distinct blnTaxRate from Options"}) {
    ASSERT_EQ(sqlite3_exec(raw, sql, collect, &seen, nullptr), SQLITE_OK) << sql;
  }
  sqlite3_close(raw);
  EXPECT_EQ(seen, "OLD;2004-01-31;NEW;2005-06-30;O'Hara Foods;0;");
  // The loader reads back what it wrote.
  const CliResult shown = testing::RunKwxOn(db, {"show", "OLD", "", "--json"});
  EXPECT_NE(shown.out.find("\"O'Hara Foods\""), std::string::npos) << shown.out << shown.err;
}

TEST(FileCommands, ImportReadAndExport) {
  testing::TempDir dir;
  const std::string db = dir.File("studies.db");
  ASSERT_EQ(RunKwx({"--db", db, "init"}).code, 0);
  const std::string a = testing::WriteFile(dir.File("a.kwx"), KwxText("AAA", "Alpha"));
  const std::string b = testing::WriteFile(dir.File("b.KWX"), KwxText("BBB", "Beta"));
  const std::string blank = testing::WriteFile(dir.File("blank.kwx"), "1.01\r\n");
  const std::string as_kwx = testing::WriteFile(dir.File("c.txt"), KwxText("CCC", "Gamma"));

  // Import saves each study and names every file it could not use.
  struct Case {
    std::vector<std::string> args;
    std::string input;
    int code;
    std::string out;
    std::string err_has;
  };
  const Case cases[] = {
      {{"import", a, b}, "", 0, "1\tAAA\tAlpha\n2\tBBB\tBeta\n", ""},
      // A study saved already is refreshed in place.
      {{"import", dir.File("missing.kwx"), blank, a},
       "",
       1,
       "1\tAAA\tAlpha\tupdated\n",
       "'" + dir.File("missing.kwx") + "': no such file"},
      {{"import", dir.File("missing.kwx"), blank}, "", 1, "", "imported 0 of 2 files"},
      {{"import", blank}, "", 1, "", "'" + blank + "' holds no study (it gives no symbol)"},
      {{"import", "--format", "kwx", as_kwx}, "", 0, "3\tCCC\tGamma\n", "imported 1 of 1"},
      // A layout that cannot be told stops the command before anything is saved.
      {{"import", b, as_kwx}, "", 2, "", "--format"},
      {{"import", "--format", "kwx", "-"}, KwxText("DDD", "Delta"), 0, "4\tDDD\tDelta\n", ""},
  };
  for (const Case& c : cases) {
    std::vector<std::string> args = {"--db", db};
    args.insert(args.end(), c.args.begin(), c.args.end());
    CliResult r = RunKwx(args, c.input);
    EXPECT_EQ(r.code, c.code) << c.args.back() << r.err;
    EXPECT_EQ(r.out, c.out) << c.args.back();
    EXPECT_NE(r.err.find(c.err_has), std::string::npos) << r.err;
  }

  // Read prints the study without a database; a named database must exist.
  EXPECT_EQ(RunKwx({"--db", dir.File("none.db"), "read", a, "--json"}).code, 2);
  CliResult read = RunKwx({"read", a, "--json"});
  ASSERT_EQ(read.code, 0) << read.err;
  const nlohmann::json json = nlohmann::json::parse(read.out);
  EXPECT_EQ(json["strSymbol"], "AAA");
  EXPECT_EQ(json["CompanyID"], 0);

  // Export writes the format its extension names.
  const std::string kwx_out = dir.File("by_id.kwx");
  CliResult r = RunKwx({"--db", db, "export", "1", kwx_out});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(testing::ReadFile(kwx_out).rfind("1.01\r\n\r\nC1\r\nAlpha\r\nAAA\r\n", 0), 0u);
  EXPECT_EQ(RunKwx({"--db", db, "export", "1", dir.File("out.ssg")}).code, 0);
  EXPECT_TRUE(std::filesystem::exists(dir.File("out.ssg")));
  EXPECT_EQ(RunKwx({"--db", db, "export", "1", dir.File("out.txt")}).code, 2);
  EXPECT_EQ(RunKwx({"--db", db, "export", "99", dir.File("none.kwx")}).code, 1);
  // A target that is a folder is refused as a wrong name, and not replaced.
  std::filesystem::create_directories(dir.File("folder.kwx"));
  EXPECT_EQ(RunKwx({"--db", db, "export", "1", dir.File("folder.kwx")}).code, 2);
  EXPECT_TRUE(std::filesystem::is_directory(dir.File("folder.kwx")));

  // A file of the other layout is refused whatever its name or --format says, and nothing of
  // it is saved.
  const std::string list_before = RunKwx({"--db", db, "list"}).out;
  const std::string ssg_as_kwx = dir.File("ssg_inside.kwx");
  std::filesystem::copy_file(dir.File("out.ssg"), ssg_as_kwx);
  const std::vector<std::string> wrong[] = {
      {"import", "--format", "kwx", dir.File("out.ssg")},
      {"import", ssg_as_kwx},
      {"import", "--format", "ssg", kwx_out},
      // Several files are read ahead on a thread of their own and checked there.
      {"import", "--format", "kwx", ssg_as_kwx, dir.File("out.ssg")},
      {"read", "--format", "kwx", dir.File("out.ssg")},
  };
  for (const auto& args : wrong) {
    std::vector<std::string> full = {"--db", db};
    full.insert(full.end(), args.begin(), args.end());
    CliResult refused = RunKwx(full);
    EXPECT_EQ(refused.code, 1) << args.back();
    EXPECT_EQ(refused.out, "") << args.back();
    EXPECT_NE(refused.err.find("layout"), std::string::npos) << refused.err;
  }
  EXPECT_EQ(RunKwx({"--db", db, "list"}).out, list_before);
}

// Standard input is decoded as a file is: a code-page KWX text piped in reads as the file does.
TEST(FileCommands, StandardInputDecodesAsAFile) {
  testing::TempDir dir;
  std::string text = KwxText("CAF", "Caf\xE9");
  // Notes at position 100 with a line break written as the code page's byte for 254.
  for (int pos = 7; pos < 100; ++pos) text += "\r\n";
  text += "one\xFEtwo\r\n";
  const std::string path = testing::WriteFile(dir.File("cafe.kwx"), text);
  const CliResult from_file = RunKwx({"read", path, "--json"});
  const CliResult piped = RunKwx({"read", "-", "--format", "kwx", "--json"}, text);
  ASSERT_EQ(piped.code, 0) << piped.err;
  EXPECT_EQ(piped.out, from_file.out);
  const nlohmann::json json = nlohmann::json::parse(piped.out);
  EXPECT_EQ(json["strName"], "Caf\xC3\xA9");
  EXPECT_EQ(json["Notes"], "one\r\ntwo");
  // Line ends converted to LF read as the lines they were, from a file and from a pipe.
  std::string lf_text = KwxText("LFS", "Linefeed");
  std::erase(lf_text, '\r');
  const std::string lf_path = testing::WriteFile(dir.File("lf.kwx"), lf_text);
  EXPECT_EQ(RunKwx({"read", lf_path}).out, "LFS\tLinefeed\n");
  EXPECT_EQ(RunKwx({"read", "-", "--format", "kwx"}, lf_text).out, "LFS\tLinefeed\n");
}

// A batch whose commit fails reports its files as not imported, prints none of them, and the
// import goes on with the next batch; the summary says what was saved.
TEST(FileCommands, AFailedCommitPrintsNothingOfItsBatchAndGoesOn) {
  testing::TempDir dir;
  const std::string db = dir.File("studies.db");
  ASSERT_EQ(RunKwx({"--db", db, "init"}).code, 0);
  const std::vector<std::string> files = KwxFiles(dir, 60);
  ScopedRegistration failing(progid::kDatabase, [] { return std::make_shared<FailingDatabase>(); });
  FailingDatabase::fail_commits = 1;
  std::vector<std::string> args = {"--db", db, "import"};
  args.insert(args.end(), files.begin(), files.end());
  CliResult r = RunKwx(args);
  EXPECT_EQ(r.code, 1);
  std::istringstream lines(r.out);
  std::string line;
  int printed = 0;
  for (int i = 50; std::getline(lines, line); ++i, ++printed) {
    EXPECT_NE(line.find("\tS" + std::to_string(i) + "\t"), std::string::npos) << line;
  }
  EXPECT_EQ(printed, 10);
  EXPECT_NE(r.err.find("'" + files[0] + "' not imported: CommitTrans failed"), std::string::npos);
  EXPECT_NE(r.err.find("imported 10 of 60 files"), std::string::npos) << r.err;
  EXPECT_EQ(Count(db, "select count(*) from Company"), 10);
}

// Importing a saved symbol and exchange refreshes that study in place: same CompanyID, its
// comparison and PERT memberships kept, no rows of the old file left; --new adds a second one,
// and a refresh whose save fails leaves the saved study as it was.
TEST(FileCommands, ASavedStudyIsRefreshedInPlace) {
  testing::TempDir dir;
  const std::string db = dir.File("studies.db");
  auto kwx = [&](std::vector<std::string> args) {
    args.insert(args.begin(), {"--db", db});
    return RunKwx(args);
  };
  ASSERT_EQ(kwx({"init"}).code, 0);
  // The same study as written with three PERT rows, then with one and a new name.
  kwxLoader writer;
  Company c;
  c.strSymbol = "AAA";
  c.strName = "Alpha";
  c.ExchangeID = "NYSE";
  c.JudgmentPERT = {{1, 0.5f, 2.0f}, {2, 0.5f, 2.0f}, {3, 0.5f, 2.0f}};
  const std::string three = dir.File("three.kwx");
  ASSERT_TRUE(writer.KWX_Update(c, three));
  c.strName = "Alpha Two";
  c.JudgmentPERT.resize(1);
  const std::string one = dir.File("one.kwx");
  ASSERT_TRUE(writer.KWX_Update(c, one));

  ASSERT_EQ(kwx({"import", three}).out, "1\tAAA\tAlpha\n");
  ASSERT_EQ(kwx({"comparison", "save", "Picks", "1"}).code, 0);
  ASSERT_EQ(kwx({"pert", "save", "Watch", "1"}).code, 0);
  CliResult refreshed = kwx({"import", one});
  EXPECT_EQ(refreshed.out, "1\tAAA\tAlpha Two\tupdated\n") << refreshed.err;
  const std::string pert_rows = "select count(*) from JudgmentPERT where CompanyID = 1";
  EXPECT_EQ(Count(db, pert_rows), 1);
  EXPECT_EQ(Count(db, "select count(*) from Yearly where CompanyID = 1"), 10);
  EXPECT_EQ(Count(db, "select count(*) from ComparisonCompany where CompanyID = 1"), 1);
  EXPECT_EQ(Count(db, "select count(*) from PERTReportCompany where CompanyID = 1"), 1);

  // A refresh whose save fails keeps the saved rows: the old ones were cleared in its own level.
  {
    ScopedRegistration failing(progid::kDatabase,
                               [] { return std::make_shared<FailingDatabase>(); });
    FailingDatabase::fail_prefix = "insert into JudgmentPERT";
    CliResult failed = kwx({"import", three});
    FailingDatabase::fail_prefix.clear();
    EXPECT_EQ(failed.code, 1);
    EXPECT_EQ(failed.out, "");
    EXPECT_NE(failed.err.find("could not be saved"), std::string::npos) << failed.err;
  }
  EXPECT_EQ(Count(db, pert_rows), 1);
  EXPECT_EQ(Count(db, "select count(*) from Monthly where CompanyID = 1"), 72);
  EXPECT_EQ(Count(db, "select count(*) from Company where strName = 'Alpha Two'"), 1);

  // --new saves a second study on purpose; a plain import then cannot tell which to refresh.
  EXPECT_EQ(kwx({"import", "--new", one}).out, "2\tAAA\tAlpha Two\n");
  CliResult ambiguous = kwx({"import", one});
  EXPECT_EQ(ambiguous.code, 1);
  EXPECT_NE(ambiguous.err.find("IDs 1, 2"), std::string::npos) << ambiguous.err;
  EXPECT_EQ(Count(db, "select count(*) from Company"), 2);
}

// Kills `kwx import` of many files at random moments; every study it printed before it died is
// in the database and loads whole. KWX_KILL_TRIALS sets the number of trials (default 3).
TEST(FileCommands, AKilledImportPrintedOnlyStudiesItSaved) {
  testing::TempDir dir;
  const std::vector<std::string> files = KwxFiles(dir, 400);
  const char* env = std::getenv("KWX_KILL_TRIALS");
  const int trials = env ? std::atoi(env) : 3;
  std::random_device seed;
  std::mt19937 random(seed());
  int printed_in_all = 0;
  for (int trial = 0; trial < trials; ++trial) {
    const std::string db = dir.File("kill" + std::to_string(trial) + ".db");
    ASSERT_EQ(RunKwx({"--db", db, "init"}).code, 0);
    std::vector<std::string> args = {"--db", db, "import"};
    args.insert(args.end(), files.begin(), files.end());
    int out[2];
    ASSERT_EQ(pipe(out), 0);
    // The child must not inherit and write again what the test itself has not yet written.
    std::cout.flush();
    std::fflush(stdout);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      dup2(out[1], STDOUT_FILENO);
      close(out[0]);
      close(out[1]);
      std::ostringstream err;
      std::_Exit(cli::Run(args, std::cin, std::cout, err));
    }
    close(out[1]);
    const int delay_us = std::uniform_int_distribution<int>(0, 1'200'000)(random);
    usleep(delay_us);
    kill(child, SIGKILL);
    std::string printed;
    char buffer[4096];
    for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;) printed.append(buffer, n);
    close(out[0]);
    waitpid(child, nullptr, 0);

    // A kill in the middle of a write may leave the last line cut short.
    printed.erase(printed.find_last_of('\n') + 1);
    kwxLoader loader;
    ASSERT_TRUE(loader.Access_blnOpenDatabase(db));
    std::istringstream lines(printed);
    std::string line;
    while (std::getline(lines, line)) {
      ++printed_in_all;
      const std::string id = line.substr(0, line.find('\t'));
      const std::string symbol =
          line.substr(id.size() + 1, line.find('\t', id.size() + 1) - id.size() - 1);
      SCOPED_TRACE("trial " + std::to_string(trial) + ", killed after " + std::to_string(delay_us) +
                   " us, line " + line);
      Company company;
      loader.Access_Get(std::stoi(id), "", "", company);
      EXPECT_EQ(company.strSymbol, symbol);
      const std::pair<const char*, int> series[] = {
          {"Yearly", 10}, {"Quarterly", 36}, {"Monthly", 72}, {"JudgmentPMG", 5}};
      for (const auto& [table, rows] : series) {
        EXPECT_EQ(Count(loader,
                        std::string("select count(*) from ") + table + " where CompanyID = " + id),
                  rows)
            << table;
      }
    }
  }
  std::cout << "kill trials: " << trials << ", studies printed and checked: " << printed_in_all
            << " of " << trials * files.size() << "\n";
}

// The progress bar is redrawn at most ten times a second however fast the files go by, and
// ends showing every file done; --quiet prints nothing but what went wrong.
TEST(FileCommands, ProgressBarKeepsItsPaceAndQuietPrintsOnlyFailures) {
  testing::TempDir dir;
  const std::string db = dir.File("studies.db");
  ASSERT_EQ(RunKwx({"--db", db, "init"}).code, 0);
  std::vector<std::string> args = {"--db", db, "import"};
  for (const std::string& file : KwxFiles(dir, 60)) args.push_back(file);

  ::setenv("KWX_PROGRESS", "1", 1);
  const auto start = std::chrono::steady_clock::now();
  const CliResult drawn = RunKwx(args);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  ::unsetenv("KWX_PROGRESS");
  ASSERT_EQ(drawn.code, 0) << drawn.err;
  size_t draws = 0;
  for (size_t at = drawn.err.find("\r["); at != std::string::npos;
       at = drawn.err.find("\r[", at + 1)) {
    ++draws;
  }
  EXPECT_GE(draws, 2u);  // the first file and the last
  // At most ten a second, besides the first, the last and the one after each of the two
  // batches' commits (the bar is cleared while a batch's lines are printed). Per file, as
  // before, would be 60.
  EXPECT_LE(draws, 4 + static_cast<size_t>(seconds * 10)) << drawn.err;
  EXPECT_NE(drawn.err.find("60/60 files"), std::string::npos);

  args.push_back(dir.File("missing.kwx"));
  args.push_back("--quiet");
  const CliResult quiet = RunKwx(args);
  EXPECT_EQ(quiet.code, 1);
  EXPECT_EQ(quiet.out, "");
  EXPECT_EQ(quiet.err, "kwx: '" + dir.File("missing.kwx") +
                           "': no such file\nkwx: 1 of 61 files not imported\n");
  args.pop_back();
  args.pop_back();
  args.push_back("-q");
  const CliResult still = RunKwx(args);
  EXPECT_EQ(still.out + still.err, "");
}

}  // namespace
}  // namespace kwx
