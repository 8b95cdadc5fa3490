#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "model/company.h"
#include "tests/support/cli_runner.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

// A database made by `kwx init` holding one study whose sales grow 10 % a year: defaults
// prints without saving on a dry run, saves once, and then finds nothing left to fill.
TEST(DefaultsCommand, FillsPrintsAndSavesOnce) {
  testing::TempDir dir;
  const std::string db = dir.File("studies.db");
  auto kwx = [&](std::vector<std::string> args) { return testing::RunKwxOn(db, args); };
  ASSERT_EQ(kwx({"init"}).code, 0);
  Company c;
  c.strSymbol = "GRO";
  c.ExchangeID = "NYSE";
  for (size_t i = 0; i < c.Yearly.size(); ++i) {
    c.Yearly[i].Sales = static_cast<float>(100 * std::pow(1.1, 9 - static_cast<int>(i)));
    c.Yearly[i].EPS = 2;
  }
  c.sngACS = 110;
  c.sngCSO = 100;
  const std::string id = testing::SaveStudy(db, c);
  ASSERT_FALSE(id.empty());
  auto saved = [&](const char* property) {
    return nlohmann::json::parse(kwx({"show", id, "--json"}).out).at(property).get<double>();
  };

  testing::CliResult dry = kwx({"defaults", id, "--dry-run"});
  ASSERT_EQ(dry.code, 0) << dry.err;
  EXPECT_NE(dry.out.find("sngRevHistGrowth: "), std::string::npos) << dry.out;
  EXPECT_EQ(saved("sngRevHistGrowth"), 0) << "a dry run saves nothing";

  testing::CliResult run = kwx({"defaults", id});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_NE(run.out.find("saved study " + id), std::string::npos) << run.out;
  EXPECT_NEAR(saved("sngRevHistGrowth"), 10, 1e-3);
  EXPECT_NEAR(saved("sngPotDilution"), 0.1, 1e-6);
  EXPECT_EQ(kwx({"defaults", id}).out, "nothing to fill\n");

  testing::CliResult unknown = kwx({"defaults", "9999"});
  EXPECT_EQ(unknown.code, 1);
  EXPECT_NE(unknown.err.find("no study found for ID 9999"), std::string::npos) << unknown.err;
}

}  // namespace
}  // namespace kwx
