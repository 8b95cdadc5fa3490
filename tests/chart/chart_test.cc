#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "automation/dates.h"
#include "chart/chart_scene.h"
#include "chart/chart_writer.h"
#include "model/company.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

constexpr int kLatest = 2020;

// Ten fiscal years to 2020 in which every series grows 10 % a year, each factor a different
// power of ten; with `lines`, the growth lines a study with its defaults holds.
Company GrowingStudy(bool lines) {
  Company c;
  c.strName = "Steady Growth Inc";
  c.strSymbol = "GRO";
  c.ExchangeID = "NYSE";
  c.datLastFY = DateSerial(kLatest, 12, 31);
  for (size_t i = 0; i < c.Yearly.size(); ++i) {
    const float g = static_cast<float>(std::pow(1.1, 9 - static_cast<int>(i)));
    c.Yearly[i].Sales = 4000 * g;
    c.Yearly[i].EPS = 2 * g;
    c.Yearly[i].PretaxIncome = 300 * g;
    c.Yearly[i].HighPrice = 40 * g;
    c.Yearly[i].LowPrice = 25 * g;
  }
  JudgmentGraphGroup& graph = c.JudgmentGraph;
  graph.sngFactorRev = 0.001f;
  graph.sngFactorPTI = 0.01f;
  graph.sngFactorPrice52W = 0.1f;  // sngFactorEPS stays 0, which counts as 1
  if (lines) {
    graph.sngRevTrendX1 = kLatest - 9, graph.sngRevTrendY1 = 4;
    graph.sngRevTrendX2 = kLatest, graph.sngRevTrendY2 = 9.4318f;  // 4000 * 1.1^9 * 0.001
    graph.sngRevProjY1 = 9.4f, graph.sngRevProjY2 = 15;
    graph.sngEPSTrendX1 = kLatest - 9, graph.sngEPSTrendY1 = 2;
    graph.sngEPSTrendX2 = kLatest, graph.sngEPSTrendY2 = 4.7159f;  // 2 * 1.1^9
    graph.sngEPSProjY1 = 4.7f, graph.sngEPSProjY2 = 7.5f;
  }
  return c;
}

std::string Svg(const Company& c) { return ChartSvg(BuildChartScene(c, DateSerial(2026, 1, 1))); }

// The points of the path carrying `attribute`="name" (data-series or data-line), in order;
// none when no such path is drawn.
std::vector<ScenePoint> PathPoints(const std::string& svg, const std::string& attribute,
                                   const std::string& name) {
  const std::regex path("<path " + attribute + "=\"" + name + "\" d=\"([^\"]*)\"");
  std::smatch m;
  std::vector<ScenePoint> points;
  if (!std::regex_search(svg, m, path)) return points;
  const std::string d = m[1];
  const std::regex point("[ML](-?[0-9.]+),(-?[0-9.]+)");
  for (auto it = std::sregex_iterator(d.begin(), d.end(), point); it != std::sregex_iterator();
       ++it) {
    points.push_back({std::stod((*it)[1]), std::stod((*it)[2])});
  }
  return points;
}

// The year labels of the x axis, by year, with their x.
std::map<int, double> YearLabels(const std::string& svg) {
  const std::regex label("<text x=\"([0-9.]+)\"[^>]*class=\"year\">([0-9]+)</text>");
  std::map<int, double> years;
  for (auto it = std::sregex_iterator(svg.begin(), svg.end(), label); it != std::sregex_iterator();
       ++it) {
    years[std::stoi((*it)[2])] = std::stod((*it)[1]);
  }
  return years;
}

// Growing 10 % a year is a straight rising line on a ratio scale: equal steps across and up,
// whatever the series and its factor. Each series is drawn times its factor (0 counting as 1),
// so the study's trend lines, which hold scaled values, meet it at both ends.
TEST(ChartScene, SteadyGrowthIsAStraightLine) {
  const std::string svg = Svg(GrowingStudy(true));
  for (const char* series : {"Sales", "EPS", "PretaxIncome", "HighPrice", "LowPrice"}) {
    SCOPED_TRACE(series);
    const std::vector<ScenePoint> p = PathPoints(svg, "data-series", series);
    ASSERT_EQ(p.size(), 10u);
    const double dx = p[1].x - p[0].x, dy = p[1].y - p[0].y;
    EXPECT_GT(dx, 0);
    EXPECT_LT(dy, 0) << "growth goes up the page";
    for (size_t i = 1; i < p.size(); ++i) {
      EXPECT_NEAR(p[i].x - p[i - 1].x, dx, 0.02) << i;
      EXPECT_NEAR(p[i].y - p[i - 1].y, dy, 0.02) << i;
    }
  }
  for (const auto& [series, trend] : {std::pair{"Sales", "SalesTrend"}, {"EPS", "EPSTrend"}}) {
    const std::vector<ScenePoint> values = PathPoints(svg, "data-series", series);
    const std::vector<ScenePoint> line = PathPoints(svg, "data-line", trend);
    ASSERT_EQ(line.size(), 2u) << trend;
    EXPECT_NEAR(values.front().y, line.front().y, 0.05) << trend;
    EXPECT_NEAR(values.back().y, line.back().y, 0.05) << trend;
  }
}

// The x axis runs from the oldest yearly row to five years past the latest fiscal year, every
// year labelled, and each value stands above its own year.
TEST(ChartScene, YearAxisSpansTheHistoryAndFiveProjectedYears) {
  const std::string svg = Svg(GrowingStudy(true));
  const std::map<int, double> years = YearLabels(svg);
  ASSERT_EQ(years.size(), 15u);
  EXPECT_EQ(years.begin()->first, kLatest - 9);
  EXPECT_EQ(years.rbegin()->first, kLatest + 5);
  const std::vector<ScenePoint> sales = PathPoints(svg, "data-series", "Sales");
  ASSERT_EQ(sales.size(), 10u);
  EXPECT_NEAR(sales.front().x, years.at(kLatest - 9), 0.02);
  EXPECT_NEAR(sales.back().x, years.at(kLatest), 0.02);
  const std::vector<ScenePoint> projection = PathPoints(svg, "data-line", "SalesProjection");
  ASSERT_EQ(projection.size(), 2u);
  EXPECT_NEAR(projection.front().x, years.at(kLatest), 0.02);
  EXPECT_NEAR(projection.back().x, years.at(kLatest + 5), 0.02);
}

// The four growth lines are drawn when the study holds them; a study without them, or with
// years missing, says so on the chart.
TEST(ChartScene, DrawsTheGrowthLinesItHasAndNamesWhatIsMissing) {
  Company partial = GrowingStudy(false);
  for (size_t i = 7; i < partial.Yearly.size(); ++i) partial.Yearly[i].Sales = 0;  // 2011-2013
  partial.Yearly[2].EPS = -1;                                                      // 2018
  struct Case {
    const char* what;
    Company study;
    bool lines;
    std::vector<std::string> notes;
  } cases[] = {
      {"with defaults", GrowingStudy(true), true, {}},
      {"without defaults",
       partial,
       false,
       {"no trend lines: run kwx defaults", "no sales before 2014", "no EPS for 2018"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string svg = Svg(c.study);
    for (const char* line : {"SalesTrend", "SalesProjection", "EPSTrend", "EPSProjection"}) {
      EXPECT_EQ(PathPoints(svg, "data-line", line).size(), c.lines ? 2u : 0u) << line;
    }
    EXPECT_EQ(svg.find("class=\"note\"") != std::string::npos, !c.notes.empty());
    for (const std::string& note : c.notes) {
      EXPECT_NE(svg.find("class=\"note\">" + note + "<"), std::string::npos) << note;
    }
  }
  EXPECT_EQ(PathPoints(Svg(partial), "data-series", "Sales").size(), 7u);
}

// Each format is written whole under its own name and is what it says it is.
TEST(ChartWriter, WritesSvgPngAndPdf) {
  testing::TempDir dir;
  const ChartScene scene = BuildChartScene(GrowingStudy(true), DateSerial(2026, 1, 1));
  const struct {
    const char* name;
    std::string magic;
  } files[] = {{"chart.svg", "<?xml"}, {"chart.PNG", "\x89PNG\r\n\x1a\n"}, {"chart.pdf", "%PDF-"}};
  for (const auto& f : files) {
    SCOPED_TRACE(f.name);
    const std::string path = dir.File(f.name);
    const std::optional<ChartFormat> format = ChartFormatOf(path);
    ASSERT_TRUE(format);
    std::string error;
    ASSERT_TRUE(WriteChart(scene, *format, path, &error)) << error;
    EXPECT_EQ(testing::ReadFile(path).substr(0, f.magic.size()), f.magic);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 3)
      << "no partial file is left";
  EXPECT_FALSE(ChartFormatOf("chart.jpg"));
  EXPECT_FALSE(ChartFormatOf("svg"));
  std::string error;
  EXPECT_FALSE(WriteChart(scene, ChartFormat::kPng, dir.File("no/such/dir/chart.png"), &error));
  EXPECT_EQ(error, "no such folder: " + dir.File("no/such/dir"));
}

}  // namespace
}  // namespace kwx
