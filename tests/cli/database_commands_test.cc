#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
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
      {{"--db", (dir / "missing.db").string(), "ref", "sector", "list"}, "does not exist"},
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
}

}  // namespace
}  // namespace kwx::cli
