#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "cli/app.h"

namespace kwx::cli {
namespace {

struct Result {
  int code;
  std::string out;
  std::string err;
};

Result Kwx(std::vector<std::string> args) {
  std::istringstream in;
  std::ostringstream out, err;
  int code = Run(args, in, out, err);
  return {code, out.str(), err.str()};
}

std::vector<std::string> Lines(const std::string& path) {
  std::ifstream f(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(f, line);) lines.push_back(line);
  return lines;
}

// init, ref, sql and the trace on a fresh database, as a new user would run them.
TEST(DatabaseCommands, InitRefSqlAndTheTraceOnAFreshDatabase) {
  const auto dir = std::filesystem::temp_directory_path() /
                   ("kwx_db_cmds_" + std::to_string(::getpid()));
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir);
  const std::string db = (dir / "studies.db").string();
  const std::string trace = (dir / "trace.jsonl").string();

  EXPECT_EQ(Kwx({"--db", db, "init"}).code, 0);
  Result again = Kwx({"--db", db, "init"});
  EXPECT_EQ(again.code, 1) << "init must never overwrite a database";

  Result added = Kwx({"--db", db, "--trace-sql", trace, "ref", "exchange", "add", "NYSE"});
  EXPECT_EQ(added.code, 0) << added.err;
  EXPECT_EQ(added.out, "1\tNYSE\n");
  // The cache comparison ignores case: nothing new is inserted.
  EXPECT_EQ(Kwx({"--db", db, "ref", "exchange", "add", "nyse"}).out, "1\tNYSE\n");
  EXPECT_EQ(Kwx({"--db", db, "ref", "exchange", "rename", "1", "TSX"}).code, 0);
  EXPECT_EQ(Kwx({"--db", db, "ref", "exchange", "list"}).out, "1\tTSX\n");
  // A name holding an apostrophe cannot be stored; the user is told.
  EXPECT_EQ(Kwx({"--db", db, "ref", "sector", "add", "O'Hara"}).code, 1);
  EXPECT_EQ(Kwx({"--db", db, "ref", "industry", "add", "Banks"}).out, "1\tBanks\n");

  Result rows = Kwx({"--db", db, "sql", "--json", "select Exchange from Exchange"});
  EXPECT_EQ(rows.code, 0) << rows.err;
  EXPECT_NE(rows.out.find("\"Exchange\": \"TSX\""), std::string::npos) << rows.out;

  // The trace holds the exact statement texts of the traced command, one JSON line each.
  const std::vector<std::string> traced = Lines(trace);
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
  };
  for (const Bad& b : bad) {
    Result r = Kwx(b.args);
    EXPECT_EQ(r.code, 2) << b.says;
    EXPECT_NE(r.err.find(b.says), std::string::npos) << r.err;
  }
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace kwx::cli
