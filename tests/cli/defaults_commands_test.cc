#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "cli/app.h"
#include "loader/kwx_loader.h"
#include "model/company.h"

namespace kwx {
namespace {

struct Result {
  int code = 0;
  std::string out;
  std::string err;
};

// A fresh database made by `kwx init` holding one study whose sales grow 10 % a year.
class DefaultsCommandTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = std::filesystem::temp_directory_path() /
           ("kwx_cli_defaults_" + std::to_string(::getpid()) + "_" + info->name());
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
    path_ = (dir_ / "studies.db").string();
    ASSERT_EQ(Kwx({"init"}).code, 0);
    kwxLoader loader;
    ASSERT_TRUE(loader.Access_blnOpenDatabase(path_));
    loader.Access_AddExchange("NYSE");
    Company c;
    c.strSymbol = "GRO";
    c.strName = "Steady Growth";
    c.ExchangeID = "NYSE";
    for (size_t i = 0; i < c.Yearly.size(); ++i) {
      c.Yearly[i].Sales = static_cast<float>(100 * std::pow(1.1, 9 - static_cast<int>(i)));
      c.Yearly[i].EPS = 2;
    }
    c.sngACS = 110;
    c.sngCSO = 100;
    loader.Access_Update(c);
    ASSERT_TRUE(loader.ErrorReports().empty()) << loader.ErrorReports()[0].Text();
    id_ = std::to_string(c.CompanyID);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  Result Kwx(std::vector<std::string> args) {
    args.insert(args.begin(), {"--db", path_});
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    Result r;
    r.code = cli::Run(args, in, out, err);
    r.out = out.str();
    r.err = err.str();
    return r;
  }

  double Saved(const char* property) {
    Result r = Kwx({"show", id_, "--json"});
    EXPECT_EQ(r.code, 0) << r.err;
    return nlohmann::json::parse(r.out).at(property).get<double>();
  }

  std::filesystem::path dir_;
  std::string path_;
  std::string id_;
};

TEST_F(DefaultsCommandTest, FillsPrintsAndSavesOnce) {
  Result dry = Kwx({"defaults", id_, "--dry-run"});
  ASSERT_EQ(dry.code, 0) << dry.err;
  EXPECT_NE(dry.out.find("sngRevHistGrowth: "), std::string::npos) << dry.out;
  EXPECT_EQ(dry.out.find("saved study"), std::string::npos);
  EXPECT_EQ(Saved("sngRevHistGrowth"), 0) << "a dry run saves nothing";

  Result run = Kwx({"defaults", id_});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_NE(run.out.find("saved study " + id_), std::string::npos) << run.out;
  EXPECT_NEAR(Saved("sngRevHistGrowth"), 10, 1e-3);
  EXPECT_NEAR(Saved("sngPotDilution"), 0.1, 1e-6);

  // Everything filled is now non-zero, and the replaced factors come out the same.
  Result again = Kwx({"defaults", id_});
  ASSERT_EQ(again.code, 0) << again.err;
  EXPECT_EQ(again.out, "nothing to fill\n");
}

TEST_F(DefaultsCommandTest, UnknownStudyFails) {
  Result r = Kwx({"defaults", "9999"});
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(r.err.find("no study found for ID 9999"), std::string::npos) << r.err;
}

}  // namespace
}  // namespace kwx
