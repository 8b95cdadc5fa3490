#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

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
      {{"import", dir.File("missing.kwx"), blank, a}, "", 1, "3\tAAA\tAlpha\n", "missing.kwx"},
      {{"import", dir.File("missing.kwx"), blank}, "", 1, "", "blank.kwx"},
      {{"import", "--format", "kwx", as_kwx}, "", 0, "4\tCCC\tGamma\n", ""},
      {{"import", as_kwx}, "", 2, "", "--format"},
      {{"import", "--format", "kwx", "-"}, KwxText("DDD", "Delta"), 0, "5\tDDD\tDelta\n", ""},
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
  // A target that is a folder is not replaced.
  std::filesystem::create_directories(dir.File("folder.kwx"));
  EXPECT_EQ(RunKwx({"--db", db, "export", "1", dir.File("folder.kwx")}).code, 1);
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

}  // namespace
}  // namespace kwx
