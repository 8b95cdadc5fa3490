#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/cli_runner.h"
#include "tests/support/test_util.h"

namespace kwx::cli {
namespace {

using testing::CliResult;
using testing::ReadLines;

CliResult Kwx(const std::vector<std::string>& args) { return testing::RunKwx(args); }

// init, ref, sql and the trace on a fresh database, as a new user would run them.
TEST(DatabaseCommands, InitRefSqlAndTheTraceOnAFreshDatabase) {
  testing::TempDir tmp;
  const std::filesystem::path& dir = tmp.path();
  const std::string db = tmp.Database("studies.db");
  if (db.empty()) GTEST_SKIP() << "no PostgreSQL server to test on (KWX_TEST_PG)";
  const std::string trace = (dir / "trace.jsonl").string();

  EXPECT_EQ(Kwx({"--db", db, "init"}).code, 0);
  CliResult again = Kwx({"--db", db, "init"});
  EXPECT_EQ(again.code, 1) << "init must never overwrite a database";

  CliResult added = Kwx({"--db", db, "--trace-sql", trace, "ref", "exchange", "add", "NYSE"});
  EXPECT_EQ(added.code, 0) << added.err;
  EXPECT_EQ(added.out, "1\tNYSE\n");
  // The cache comparison ignores case: nothing new is inserted.
  EXPECT_EQ(Kwx({"--db", db, "ref", "exchange", "add", "nyse"}).out, "1\tNYSE\n");
  EXPECT_EQ(Kwx({"--db", db, "ref", "exchange", "rename", "1", "TSX"}).code, 0);
  EXPECT_EQ(Kwx({"--db", db, "ref", "exchange", "list"}).out, "ID  Name\n--  ----\n 1  TSX\n");
  // A name holding an apostrophe cannot be stored; the user is told.
  EXPECT_EQ(Kwx({"--db", db, "ref", "sector", "add", "O'Hara"}).code, 1);
  EXPECT_EQ(Kwx({"--db", db, "ref", "industry", "add", "Banks"}).out, "1\tBanks\n");

  CliResult rows = Kwx({"--db", db, "sql", "--json", "select Exchange from Exchange"});
  EXPECT_EQ(rows.code, 0) << rows.err;
  EXPECT_NE(rows.out.find("\"Exchange\": \"TSX\""), std::string::npos) << rows.out;
  // As CSV a value keeps its commas, quotes and line breaks, and a column its query's name.
  CliResult csv = Kwx({"--db", db, "sql", "--csv",
                       "select Exchange, 'a, \"b\"\nc' as Odd, 1.5 as N, "
                       "null as Blank from Exchange"});
  EXPECT_EQ(csv.code, 0) << csv.err;
  EXPECT_EQ(testing::ReadCsv(csv.out),
            (std::vector<std::vector<std::string>>{{"Exchange", "Odd", "N", "Blank"},
                                                   {"TSX", "a, \"b\"\nc", "1.5", ""}}));

  // The trace holds the exact statement texts of the traced command, one JSON line each.
  const std::vector<std::string> traced = ReadLines(trace);
  ASSERT_FALSE(traced.empty());
  EXPECT_EQ(traced.front(), R"({"sql":"select * from Sector","ok":true,"rows":0})");
  bool saw_insert = false;
  for (const auto& line : traced) {
    saw_insert |= line == R"({"sql":"insert into Exchange(Exchange) select 'NYSE'","ok":true,"rows":1})";
  }
  EXPECT_TRUE(saw_insert);

  // Bad input: a clear line on stderr and exit 2.
  struct Bad {
    std::vector<std::string> args;
    const char* says;
  } bad[] = {
      {{"--db", (dir / "missing.db").string(), "ref", "sector", "list"}, "no such file"},
      {{"--db", db, "frobnicate"}, "unknown command 'frobnicate'"},
      {{"--db", db, "ref", "sector", "delete", "x"}, "x"},
      {{"--db", testing::WriteFile((dir / "junk.db").string(), std::string(200, 'j')), "list"},
       "file is not a database"},
  };
  for (const Bad& b : bad) {
    CliResult r = Kwx(b.args);
    EXPECT_EQ(r.code, 2) << b.says;
    EXPECT_NE(r.err.find(b.says), std::string::npos) << r.err;
  }
}

// kwx sql runs any one statement: a query prints its rows, a change how many rows it changed,
// a failure the engine's own message (exit 1). --json keeps every column in its order, a
// repeated name included, and shows stored bytes that are not UTF-8 as U+FFFD.
TEST(DatabaseCommands, SqlRunsOneStatementAndTellsWhatHappened) {
  testing::TempDir tmp;
  const std::string db = tmp.Database("studies.db");
  if (db.empty()) GTEST_SKIP() << "no PostgreSQL server to test on (KWX_TEST_PG)";
  ASSERT_EQ(Kwx({"--db", db, "init"}).code, 0);
  struct Case {
    std::vector<std::string> args;
    int code;
    std::string out;
    std::string err_has;
    bool file_only = false;  // the engine's own words or functions
  };
  const Case cases[] = {
      {{"insert into Sector(Sector) select 'Energy'"}, 0, "1 row changed\n", ""},
      {{"insert into Sector(Sector) select Sector || '2' from Sector"}, 0, "1 row changed\n", ""},
      {{"Update Sector   set Sector='x'"}, 0, "2 rows changed\n", ""},
      {{"--json", "Delete * From Sector Where SectorID=2;"}, 0, "{\"changed\": 1}\n", ""},
      {{"select SectorID, Sector from Sector"}, 0, "SectorID\tSector\n1\tx\n", ""},
      {{"--json", "select SectorID as a, Sector, SectorID as a, cast(x'FF' as text) as b "
                  "from Sector"},
       0, "[\n  {\n    \"a\": 1,\n    \"Sector\": \"x\",\n    \"a\": 1,\n    \"b\": \"\xEF\xBF\xBD\"\n  }\n]\n",
       "", true},
      {{"--json", "select * from Sector where SectorID = 7"}, 0, "[]\n", ""},
      {{"select * from Nope"}, 1, "", "no such table: Nope", true},
      {{"select * from Nope"}, 1, "", ""},
      {{"select 1; drop table Sector"}, 1, "", "second statement"},
  };
  for (const Case& c : cases) {
    if (c.file_only && testing::OnServer()) continue;
    std::vector<std::string> args = {"--db", db, "sql"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const CliResult r = Kwx(args);
    EXPECT_EQ(r.code, c.code) << c.args.back() << r.err;
    EXPECT_EQ(r.out, c.out) << c.args.back();
    EXPECT_NE(r.err.find(c.err_has), std::string::npos) << r.err;
  }
}

// A file written by an older version is upgraded by a command that writes; a command that only
// reads leaves it as it is and says why it cannot read it yet.
TEST(DatabaseCommands, OnlyAWritingCommandUpgradesAnOlderFile) {
  if (testing::OnServer()) GTEST_SKIP() << "a SQLite file's own upgrade";
  testing::TempDir tmp;
  const std::string db = tmp.File("studies.db");
  ASSERT_EQ(Kwx({"--db", db, "init"}).code, 0);
  ASSERT_EQ(Kwx({"--db", db, "sql", "insert into Company (strSymbol) select 'A'"}).code, 0);
  ASSERT_EQ(Kwx({"--db", db, "sql", "PRAGMA user_version = 2"}).code, 0);
  for (const std::vector<std::string>& reading :
       {std::vector<std::string>{"list"}, {"show", "1"}, {"ref", "sector", "list"}}) {
    std::vector<std::string> args = {"--db", db};
    args.insert(args.end(), reading.begin(), reading.end());
    const CliResult r = Kwx(args);
    EXPECT_EQ(r.code, 2) << reading[0];
    EXPECT_NE(r.err.find("must be upgraded"), std::string::npos) << r.err;
  }
  sqlite3* raw = nullptr;
  ASSERT_EQ(sqlite3_open_v2(db.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  int version = -1;
  sqlite3_exec(
      raw, "PRAGMA user_version",
      [](void* v, int, char** values, char**) { return *static_cast<int*>(v) = std::atoi(values[0]), 0; },
      &version, nullptr);
  sqlite3_close(raw);
  EXPECT_EQ(version, 2) << "a read left the file as it was";
  const CliResult upgraded = Kwx({"--db", db, "upgrade"});
  EXPECT_EQ(upgraded.code, 0) << upgraded.err;
  EXPECT_EQ(Kwx({"--db", db, "list"}).code, 0);
}

// The kwx program beside this test program in the build folder.
std::string KwxProgram() {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "cli" /
          "kwx")
      .string();
}

// Writes `count` small studies named P<prefix><n> into `dir`; answers their paths joined by
// blanks, for a shell command line.
std::string StudyFiles(const testing::TempDir& dir, const std::string& prefix, int count) {
  std::string paths;
  for (int n = 0; n < count; ++n) {
    const std::string symbol = prefix + std::to_string(n);
    paths += " " + testing::WriteFile(dir.File(symbol + ".kwx"),
                                      "1.01\r\n\r\nC1\r\nStudy " + symbol + "\r\n" + symbol +
                                          "\r\n\r\nJun/30/2005\r\n");
  }
  return paths;
}

// Real processes on one database: two imports started together both save every study with
// its own series (each waits for the other's lock instead of failing), and a compact during an
// import loses no study the import reported as saved.
TEST(DatabaseCommands, ConcurrentImportsAndACompactLoseNothing) {
  testing::TempDir tmp;
  const std::string db = tmp.Database("studies.db");
  if (db.empty()) GTEST_SKIP() << "no PostgreSQL server to test on (KWX_TEST_PG)";
  ASSERT_EQ(Kwx({"--db", db, "init"}).code, 0);
  const std::string kwx = KwxProgram() + " --db '" + db + "'";
  const std::string out = tmp.File("out");
  auto count = [&](const std::string& where) {
    const CliResult r = Kwx({"--db", db, "sql", "select count(*) from Company" + where});
    return r.out.substr(r.out.find('\n') + 1);
  };

  constexpr int kRounds = 3;
  constexpr int kFiles = 60;
  for (int round = 0; round < kRounds; ++round) {
    const std::string a = StudyFiles(tmp, "A" + std::to_string(round) + "x", kFiles);
    const std::string b = StudyFiles(tmp, "B" + std::to_string(round) + "x", kFiles);
    const std::string both = "(" + kwx + " import" + a + " >" + out + ".a 2>&1; echo $? >" +
                             out + ".a.rc) & (" + kwx + " import" + b + " >" + out +
                             ".b 2>&1; echo $? >" + out + ".b.rc) & wait";
    ASSERT_EQ(std::system(both.c_str()), 0);
    EXPECT_EQ(testing::ReadFile(out + ".a.rc"), "0\n") << testing::ReadFile(out + ".a");
    EXPECT_EQ(testing::ReadFile(out + ".b.rc"), "0\n") << testing::ReadFile(out + ".b");
  }
  EXPECT_EQ(count(""), std::to_string(2 * kRounds * kFiles) + "\n");
  // Both import the same files: each study is saved once and refreshed by the other.
  const std::string same = StudyFiles(tmp, "Sx", kFiles);
  const std::string twice = "(" + kwx + " import" + same + " >/dev/null 2>&1) & (" + kwx +
                            " import" + same + " >/dev/null 2>&1) & wait";
  ASSERT_EQ(std::system(twice.c_str()), 0);
  EXPECT_EQ(count(" where strSymbol like 'Sx%'"), std::to_string(kFiles) + "\n");
  // Each study loads back with its own series: all its rows, every one in its own key block.
  for (const auto& [series, rows] : {std::pair{"Yearly", 10}, {"Monthly", 72}}) {
    const std::string table = series;
    const CliResult outside = Kwx({"--db", db, "sql", "select count(*) from " + table +
                                   " where " + table + "ID / 65536 <> CompanyID"});
    EXPECT_EQ(outside.out.substr(outside.out.find('\n') + 1), "0\n") << table;
    const CliResult per_study = Kwx({"--db", db, "sql", "select count(*) from Company where "
                                     "(select count(*) from " + table + " s where s.CompanyID "
                                     "= Company.CompanyID) = " + std::to_string(rows)});
    EXPECT_EQ(per_study.out.substr(per_study.out.find('\n') + 1), count("")) << table;
  }

  const std::string c = StudyFiles(tmp, "Cx", 150);
  const std::string during = "(" + kwx + " import" + c + " >" + out + ".c 2>" + out +
                             ".c.err) & (sleep 0.2; " + kwx + " compact >/dev/null 2>&1) & wait";
  ASSERT_EQ(std::system(during.c_str()), 0);
  const std::vector<std::string> reported = testing::ReadLines(out + ".c");
  EXPECT_FALSE(reported.empty()) << testing::ReadFile(out + ".c.err");
  EXPECT_EQ(count(" where strSymbol like 'Cx%'"), std::to_string(reported.size()) + "\n")
      << testing::ReadFile(out + ".c.err");
}

// The sample study `name` (samples/studies) as text.
std::string Sample(const std::string& name) {
  const char* source = std::getenv("KWX_SOURCE_DIR");
  return testing::ReadFile(std::string(source != nullptr ? source : KWX_SOURCE_TREE) + "/samples/studies/" +
                           name);
}

// A value from outside that would break out of its literal makes its statement fail as a
// whole: the database is unchanged, and the command says it failed.
TEST(DatabaseCommands, ValuesThatWouldBreakOutOfTheirLiteralChangeNothing) {
  testing::TempDir tmp;
  const std::string db = tmp.Database("studies.db");
  if (db.empty()) GTEST_SKIP() << "no PostgreSQL server to test on (KWX_TEST_PG)";
  ASSERT_EQ(Kwx({"--db", db, "init"}).code, 0);
  const std::string bwp = testing::WriteFile(tmp.File("BWP.kwx"), Sample("BWP.kwx"));
  const std::string cplm = testing::WriteFile(tmp.File("CPLM.kwx"), Sample("CPLM.kwx"));
  ASSERT_EQ(Kwx({"--db", db, "import", bwp, cplm}).code, 0);
  ASSERT_EQ(Kwx({"--db", db, "ref", "sector", "add", "Mining"}).code, 0);
  const std::string copy_symbols = "x' || (select group_concat(strSymbol) from Company) || '";
  std::string ssg = Sample("BWP.ssg");
  const size_t exchange = ssg.find("\nNASDAQ\r\n");
  ASSERT_NE(exchange, std::string::npos);
  ssg.replace(exchange + 1, 6, copy_symbols);
  const std::string hostile = testing::WriteFile(tmp.File("hostile.ssg"), ssg);

  auto rows = [&](const std::string& sql) { return Kwx({"--db", db, "sql", sql}).out; };
  auto references = [&] {
    return rows("select * from Exchange") + rows("select * from Sector") +
           rows("select * from Industry") + rows("select * from DataSource");
  };
  const std::string studies_before = rows("select * from Company");
  const std::string references_before = references();
  ASSERT_NE(studies_before.find("CPLM"), std::string::npos);

  const std::vector<std::string> attacks[] = {
      {"ref", "exchange", "add", copy_symbols},
      {"ref", "sector", "rename", "1", "Energy' --"},
      {"ref", "sector", "rename", "1", "x' where 1=1 or '"},
      {"show", "NOPE' \" or 1=1 or \"", "NASDAQ"},
      {"export", "NOPE' \" or 1=1 or \"", "NASDAQ", tmp.File("out.kwx")},
  };
  for (const auto& args : attacks) {
    std::vector<std::string> full = {"--db", db};
    full.insert(full.end(), args.begin(), args.end());
    const CliResult r = Kwx(full);
    EXPECT_EQ(r.code, 1) << args[2] << ": " << r.out << r.err;
    EXPECT_EQ(r.out.find("CPLM"), std::string::npos) << r.out;
    EXPECT_EQ(rows("select * from Company"), studies_before) << args[2];
    EXPECT_EQ(references(), references_before) << args[2];
  }
  // The file's exchange name is never stored, nor anything made of other studies' values.
  Kwx({"--db", db, "import", "--format", "ssg", hostile});
  EXPECT_EQ(references(), references_before);
}

// What a user types wrong gets one line in the user's terms: the file or database that is
// missing or a directory, the database another program holds, the command meant; the program's
// own names never show.
TEST(DatabaseCommands, MistakesAreToldInTheUsersTerms) {
  testing::TempDir tmp;
  const std::string db = tmp.File("studies.db");
  ASSERT_EQ(Kwx({"--db", db, "init"}).code, 0);
  const std::string folder = tmp.File("folder.kwx");
  std::filesystem::create_directories(folder);
  struct Case {
    std::vector<std::string> args;
    int code;
    const char* says;
    const char* never_says;
  } cases[] = {
      {{"--db", db, "import", tmp.File("gone.kwx")}, 1, "gone.kwx': no such file", "nothing"},
      {{"--db", tmp.File("gone.db"), "list"}, 2, "gone.db': no such file", "exist"},
      {{"--db", db, "import", folder}, 2, "folder.kwx' is a directory, not a data file", "nothing"},
      {{"read", tmp.path().string()}, 2, "is a directory, not a data file", "layout"},
      {{"--db", tmp.path().string(), "list"}, 2, "is a directory, not a study database", "cannot"},
      {{"--db", db, "--wait", "1", "ref", "sector", "add", "Mining"},
       1,
       "studies.db' is in use by another program; waited 1 s",
       "apostrophe"},
      {{"--db", db, "improt", "x.kwx"},
       2,
       "unknown command 'improt'; did you mean 'import'?",
       "required"},
      {{"--db", db, "ref", "sectr", "list"}, 2, "did you mean 'sector'?", "required"},
      {{"--db", db, "frobnicate"}, 2, "unknown command 'frobnicate'\n", "did you mean"},
      {{"--db", db, "init"}, 1, "exists already", "CreateDatabase"},
      {{"--db", db, "export", "1"},
       2,
       "the study (ID, or SYMBOL EXCHANGE) and the file",
       "STUDY_AND"},
  };
  for (const Case& c : cases) {
    sqlite3* other = nullptr;  // another program, holding the database while `ref` runs
    const bool hold = c.args.size() > 3 && c.args[3] == "1";
    if (hold) {
      ASSERT_EQ(sqlite3_open(db.c_str(), &other), SQLITE_OK);
      ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    }
    const CliResult r = Kwx(c.args);
    if (hold) sqlite3_close(other);
    EXPECT_EQ(r.code, c.code) << c.says << ": " << r.err;
    EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find(c.never_says), std::string::npos) << r.err;
  }
}

// kwx copy: every study loads back the same from the copy on either platform (its CompanyID
// aside), the members of comparisons and PERT reports follow their studies, a target holding
// studies is refused, and a copy that fails leaves its target as it was.
TEST(DatabaseCommands, CopyCarriesEveryStudyAndListIntoANewOrEmptyDatabase) {
  testing::TempDir tmp;
  const std::string db = tmp.File("studies.db");
  ASSERT_EQ(Kwx({"--db", db, "init"}).code, 0);
  for (const char* name : {"BWP.kwx", "CPLM.kwx", "HVG.ssg"}) {
    ASSERT_EQ(Kwx({"--db", db, "import", testing::WriteFile(tmp.File(name), Sample(name))}).code,
              0);
  }
  // A study of the other platform: its judgment groups are that platform's own.
  const std::string lrs = testing::WriteFile(tmp.File("LRS.kwx"), Sample("LRS.kwx"));
  ASSERT_EQ(Kwx({"--db", db, "--platform", "sp", "import", lrs}).code, 0);
  ASSERT_EQ(Kwx({"--db", db, "delete", "2"}).code, 0);  // the copy's IDs differ
  ASSERT_EQ(Kwx({"--db", db, "comparison", "save", "Club", "4", "1", "3"}).code, 0);
  ASSERT_EQ(Kwx({"--db", db, "pert", "save", "Watch", "3", "4"}).code, 0);

  const std::string copy = tmp.File("copy.db");
  const CliResult copied = Kwx({"--db", db, "copy", copy});
  ASSERT_EQ(copied.code, 0) << copied.err;
  EXPECT_EQ(copied.out, "copied 3 studies, 1 comparisons and 1 PERT reports into " + copy + "\n");

  auto study = [&](const std::string& file, const std::string& platform,
                   std::vector<std::string> which) {
    which.insert(which.begin(), {"--db", file, "--platform", platform, "show"});
    which.push_back("--json");
    const CliResult r = Kwx(which);
    EXPECT_EQ(r.code, 0) << r.err;
    nlohmann::json j = nlohmann::json::parse(r.out, nullptr, false);
    if (j.is_object()) j.erase("CompanyID");
    return j;
  };
  const std::pair<const char*, const char*> studies[] = {{"1", "BWP"}, {"3", "HVG"}, {"4", "LRS"}};
  for (const auto& [id, symbol] : studies) {
    for (const char* platform : {"plain", "sp"}) {
      const nlohmann::json original = study(db, platform, {id});
      EXPECT_EQ(study(copy, platform, {symbol, original.value("ExchangeID", "")}), original)
          << symbol << " on " << platform;
    }
  }
  // Members in their order, each the same study as before.
  auto symbols = [&](const std::string& file, const char* kind) {
    const CliResult r = Kwx({"--db", file, kind, "show", "1", "--json"});
    std::vector<std::string> out;
    const nlohmann::json list = nlohmann::json::parse(r.out);
    for (const auto& m : list["Members"]) {
      out.push_back(Kwx({"--db", file, "sql",
                         "select strSymbol from Company where CompanyID = " +
                             std::to_string(m["CompanyID"].get<int>())})
                        .out);
    }
    return out;
  };
  EXPECT_EQ(symbols(copy, "comparison"), symbols(db, "comparison"));
  EXPECT_EQ(symbols(copy, "pert"), symbols(db, "pert"));
  EXPECT_EQ(symbols(copy, "comparison").size(), 3u);

  // A target that holds studies is refused and left alone.
  const std::string before = Kwx({"--db", copy, "list"}).out;
  const CliResult again = Kwx({"--db", db, "copy", copy});
  EXPECT_EQ(again.code, 1);
  EXPECT_NE(again.err.find("holds studies"), std::string::npos) << again.err;
  EXPECT_EQ(Kwx({"--db", copy, "list"}).out, before);

  // A copy that fails part-way (another program holds the target) leaves it empty, and a new
  // file it would have made is not left behind.
  const std::string empty = tmp.File("empty.db");
  ASSERT_EQ(Kwx({"--db", empty, "init"}).code, 0);
  sqlite3* lock = nullptr;
  ASSERT_EQ(sqlite3_open(empty.c_str(), &lock), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(lock, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  const CliResult locked = Kwx({"--db", db, "--wait", "0", "copy", empty});
  sqlite3_exec(lock, "ROLLBACK", nullptr, nullptr, nullptr);
  sqlite3_close(lock);
  EXPECT_EQ(locked.code, 1);
  EXPECT_NE(locked.err.find("in use by another program"), std::string::npos) << locked.err;
  EXPECT_EQ(Kwx({"--db", empty, "sql", "select count(*) from Company"}).out, "count(*)\n0\n");
  EXPECT_EQ(Kwx({"--db", db, "copy", empty}).code, 0);
  EXPECT_EQ(Kwx({"--db", db, "copy", tmp.File("no/such/folder.db")}).code, 1);
  EXPECT_FALSE(std::filesystem::exists(tmp.File("no")));
}

}  // namespace
}  // namespace kwx::cli

namespace kwx::cli {
namespace {

// The same commands on a SQLite file and on a PostgreSQL database answer alike and run the same
// statement texts with the same outcomes: the database object hides which engine serves.
TEST(EngineParity, EveryCommandAnswersAndTracesAsOnSqlite) {
  if (!testing::OnServer()) GTEST_SKIP() << "compares the SQLite file with the server";
  testing::TempDir tmp;
  const std::string server = tmp.Database("studies");
  if (server.empty()) GTEST_SKIP() << "no PostgreSQL server to test on (KWX_TEST_PG)";
  std::string files;
  for (const char* name : {"BWP.kwx", "CPLM.kwx", "HVG.ssg", "LRS.kwx", "QFS.kwx"}) {
    files += testing::WriteFile(tmp.File(name), Sample(name)) + "\n";
  }
  const std::vector<std::vector<std::string>> commands = {
      {"init"}, {"import", "FILES"}, {"list"}, {"list", "--json"}, {"show", "1", "--json"},
      {"show", "3"}, {"show", "bwp", "nasdaq"}, {"price", "2", "25.5", "1/15/2026", "30", "20"},
      {"show", "2", "--json"}, {"comparison", "save", "Club picks", "1", "2", "3"},
      {"comparison", "show", "1"}, {"pert", "save", "Q1", "2", "4", "--description", "first"},
      {"pert", "show", "1"}, {"ref", "exchange", "add", "LSE"},
      {"ref", "exchange", "rename", "4", "London"}, {"ref", "exchange", "list"},
      {"ref", "sector", "list"},
      {"sql", "select CompanyID, strSymbol, datLastFY from Company where strSymbol = 'qfs'"},
      {"sql", "select strSymbol from Company where datLastFY > #1/1/2024# order by 1", "--json"},
      {"sql", "Update Company set strName = 'O''Neil' where CompanyID = 5"},
      {"show", "5", "--json"}, {"delete", "4"}, {"list"}, {"comparison", "delete", "1"},
      {"comparison", "show", "1"}, {"sql", "select strSymbol from Company where CompanyID = 4"}};
  struct Run {
    std::vector<std::string> answers;
    std::vector<std::string> trace;
  };
  auto run = [&](const std::string& db, const std::string& trace) {
    Run r;
    for (std::vector<std::string> args : commands) {
      if (args[0] == "import") {
        args.pop_back();
        for (const std::string& f : ReadLines(tmp.File("files"))) args.push_back(f);
      }
      args.insert(args.begin(), {"--db", db, "--trace-sql", trace});
      const CliResult result = Kwx(args);
      // The path and the import's rate are the only words that may differ.
      const bool differs = args[4] == "init" || args[4] == "import";
      r.answers.push_back(std::to_string(result.code) +
                          (differs ? "" : " " + result.out + result.err));
    }
    r.trace = ReadLines(trace);
    return r;
  };
  testing::WriteFile(tmp.File("files"), files);
  const Run file = run(tmp.File("studies.db"), tmp.File("file.jsonl"));
  const Run pg = run(server, tmp.File("server.jsonl"));
  for (size_t i = 0; i < commands.size(); ++i) {
    EXPECT_EQ(pg.answers[i], file.answers[i]) << commands[i][0] << " " << commands[i].back();
  }
  EXPECT_GT(file.trace.size(), 500u);
  EXPECT_EQ(pg.trace, file.trace);

  // A club moves its file onto a server database not initialised yet, and back into a new file:
  // every study reads as it did.
  const std::string moved = tmp.Database("moved");
  ASSERT_EQ(Kwx({"--db", tmp.File("studies.db"), "copy", moved}).code, 0);
  ASSERT_EQ(Kwx({"--db", moved, "copy", tmp.File("back.db")}).code, 0);
  auto studies = [&](const std::string& db) {
    std::vector<nlohmann::json> all;
    for (const auto& row : nlohmann::json::parse(Kwx({"--db", db, "list", "--json"}).out)) {
      nlohmann::json study = nlohmann::json::parse(
          Kwx({"--db", db, "show", std::to_string(row["CompanyID"].get<int>()), "--json"}).out);
      study.erase("CompanyID");
      all.push_back(std::move(study));
    }
    return all;
  };
  const std::vector<nlohmann::json> before = studies(tmp.File("studies.db"));
  EXPECT_EQ(before.size(), 4u);
  EXPECT_EQ(studies(moved), before);
  EXPECT_EQ(studies(tmp.File("back.db")), before);
}

}  // namespace
}  // namespace kwx::cli
