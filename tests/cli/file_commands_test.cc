#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "cli/app.h"

namespace kwx {
namespace {

struct Result {
  int code = 0;
  std::string out;
  std::string err;
};

class FileCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = std::filesystem::temp_directory_path() /
           ("kwx_cli_files_" + std::to_string(::getpid()) + "_" + info->name());
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
    db_ = File("studies.db");
    ASSERT_EQ(Kwx({"--db", db_, "init"}).code, 0);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::string File(const std::string& name) const { return (dir_ / name).string(); }

  Result Kwx(std::vector<std::string> args, const std::string& input = "") {
    std::istringstream in(input);
    std::ostringstream out, err;
    Result r;
    r.code = cli::Run(args, in, out, err);
    r.out = out.str();
    r.err = err.str();
    return r;
  }

  // A KWX text naming one study.
  static std::string KwxText(const std::string& symbol, const std::string& name) {
    return "1.01\r\n\r\nC1\r\n" + name + "\r\n" + symbol + "\r\n\r\nJun/30/2005\r\n";
  }
  std::string Write(const std::string& name, const std::string& text) {
    std::string path = File(name);
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
  static std::string Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  std::filesystem::path dir_;
  std::string db_;
};

TEST_F(FileCommandsTest, ImportSavesEachStudyAndReportsTheFailures) {
  const std::string a = Write("a.kwx", KwxText("AAA", "Alpha"));
  const std::string b = Write("b.KWX", KwxText("BBB", "Beta"));
  const std::string blank = Write("blank.kwx", "1.01\r\n");
  const std::string as_kwx = Write("c.txt", KwxText("CCC", "Gamma"));

  struct Case {
    std::vector<std::string> args;
    std::string input;
    int code;
    std::string out;
    std::string err_has;
  };
  const Case cases[] = {
      {{"import", a, b}, "", 0, "1\tAAA\tAlpha\n2\tBBB\tBeta\n", ""},
      {{"import", File("missing.kwx"), blank, a}, "", 1, "3\tAAA\tAlpha\n", "missing.kwx"},
      {{"import", "--format", "kwx", as_kwx}, "", 0, "4\tCCC\tGamma\n", ""},
      {{"import", as_kwx}, "", 2, "", "--format"},
      {{"import", "--format", "kwx", "-"}, KwxText("DDD", "Delta"), 0, "5\tDDD\tDelta\n", ""},
  };
  for (const Case& c : cases) {
    std::vector<std::string> args = {"--db", db_};
    args.insert(args.end(), c.args.begin(), c.args.end());
    Result r = Kwx(args, c.input);
    EXPECT_EQ(r.code, c.code) << c.args.back() << r.err;
    EXPECT_EQ(r.out, c.out) << c.args.back();
    EXPECT_NE(r.err.find(c.err_has), std::string::npos) << r.err;
  }
  // The unreadable and the empty file are both named.
  Result r = Kwx({"--db", db_, "import", File("missing.kwx"), blank});
  EXPECT_NE(r.err.find("blank.kwx"), std::string::npos) << r.err;
}

TEST_F(FileCommandsTest, ReadPrintsTheStudyWithoutSavingIt) {
  const std::string a = Write("a.kwx", KwxText("AAA", "Alpha"));
  // No --db: no database is opened, so a missing file there does not matter.
  Result r = Kwx({"--db", File("none.db"), "read", a, "--json"});
  EXPECT_EQ(r.code, 2) << "a named database must exist";
  r = Kwx({"read", a, "--json"});
  ASSERT_EQ(r.code, 0) << r.err;
  nlohmann::json json = nlohmann::json::parse(r.out);
  EXPECT_EQ(json["strSymbol"], "AAA");
  EXPECT_EQ(json["CompanyID"], 0);
  // Nothing was saved.
  Result export_missing = Kwx({"--db", db_, "export", "1", File("x.kwx")});
  EXPECT_EQ(export_missing.code, 1);
}

TEST_F(FileCommandsTest, ExportWritesTheFormatOfTheExtension) {
  const std::string a = Write("a.kwx", KwxText("AAA", "Alpha"));
  ASSERT_EQ(Kwx({"--db", db_, "import", a}).code, 0);

  const std::string by_id = File("by_id.kwx");
  Result r = Kwx({"--db", db_, "export", "1", by_id});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(Read(by_id).rfind("1.01\r\n\r\nC1\r\nAlpha\r\nAAA\r\n", 0), 0u);

  const std::string ssg = File("out.ssg");
  r = Kwx({"--db", db_, "export", "1", ssg});
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_TRUE(std::filesystem::exists(ssg));

  EXPECT_EQ(Kwx({"--db", db_, "export", "1", File("out.txt")}).code, 2);
  EXPECT_EQ(Kwx({"--db", db_, "export", "99", File("none.kwx")}).code, 1);
  // A target that is a folder is not replaced.
  std::filesystem::create_directories(File("folder.kwx"));
  EXPECT_EQ(Kwx({"--db", db_, "export", "1", File("folder.kwx")}).code, 1);
  EXPECT_TRUE(std::filesystem::is_directory(File("folder.kwx")));
}

}  // namespace
}  // namespace kwx
