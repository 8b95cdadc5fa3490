#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "model/company.h"
#include "tests/support/cli_runner.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

// `kwx chart` finds the study by ID or by symbol and exchange, writes the format its file name
// asks for, and refuses any other name before it writes anything.
TEST(ChartCommand, WritesTheChartTheFileNameAsksFor) {
  testing::TempDir dir;
  const std::string db = dir.File("studies.db");
  auto kwx = [&](std::vector<std::string> args) { return testing::RunKwxOn(db, args); };
  ASSERT_EQ(kwx({"init"}).code, 0);
  Company c;
  c.strSymbol = "GRO";
  c.ExchangeID = "NYSE";
  for (YearlyRow& row : c.Yearly) row.Sales = 100;
  const std::string id = testing::SaveStudy(db, c);
  ASSERT_FALSE(id.empty());
  const testing::CliResult svg = kwx({"chart", id, "-o", dir.File("gro.svg")});
  ASSERT_EQ(svg.code, 0) << svg.err;
  EXPECT_NE(testing::ReadFile(dir.File("gro.svg")).find("data-series=\"Sales\""),
            std::string::npos);
  const testing::CliResult png = kwx({"chart", "GRO", "NYSE", "-o", dir.File("gro.png")});
  ASSERT_EQ(png.code, 0) << png.err;
  EXPECT_EQ(testing::ReadFile(dir.File("gro.png")).substr(1, 3), "PNG");

  const testing::CliResult jpg = kwx({"chart", id, "-o", dir.File("gro.jpg")});
  EXPECT_EQ(jpg.code, 2);
  EXPECT_NE(jpg.err.find("must end in .svg, .png or .pdf"), std::string::npos) << jpg.err;
  EXPECT_FALSE(std::filesystem::exists(dir.File("gro.jpg")));
  EXPECT_EQ(kwx({"chart", "9999", "-o", dir.File("none.pdf")}).code, 1);
}

}  // namespace
}  // namespace kwx
