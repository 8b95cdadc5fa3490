// The study chart as a list of drawing elements in page coordinates. All the geometry of the
// chart (where a year, a value, a tick, a legend entry or a note goes) is decided here once;
// the writers only draw the elements, so the SVG, PNG and PDF files show the same picture.
#ifndef KWX_CHART_CHART_SCENE_H_
#define KWX_CHART_CHART_SCENE_H_

#include <string>
#include <variant>
#include <vector>

#include "automation/value_types.h"
#include "model/company.h"

namespace kwx {

// A point on the page: x to the right, y downwards, in points (1/72 inch).
struct ScenePoint {
  double x = 0;
  double y = 0;
};

// An opaque colour, each part from 0 to 1.
struct SceneColor {
  double r = 0;
  double g = 0;
  double b = 0;
};

// A line of connected runs; the pen lifts between runs (a year without a value breaks the
// line). `tag` and `name` label what the path draws, e.g. tag "data-series", name "Sales";
// both are empty for the frame, the grid and other furniture.
struct ScenePath {
  std::string tag;
  std::string name;
  std::vector<std::vector<ScenePoint>> runs;
  SceneColor color;
  double width = 1;
  // Lengths of dash and gap, alternating; empty for a solid line.
  std::vector<double> dash;
  // True to close each run and fill it with `fill` as well as stroking it.
  bool filled = false;
  SceneColor fill;
};

// A filled dot marking one value.
struct SceneDot {
  ScenePoint center;
  double radius = 2;
  SceneColor color;
};

enum class TextAnchor { kStart, kMiddle, kEnd };

// One line of text; `at` is the left end, middle or right end of its baseline by `anchor`.
// `role` names what the text is ("year", "tick", "note", ...) so a reader can find it.
struct SceneText {
  ScenePoint at;
  std::string text;  // UTF-8
  double size = 10;
  bool bold = false;
  TextAnchor anchor = TextAnchor::kStart;
  SceneColor color;
  std::string role;
};

using SceneElement = std::variant<ScenePath, SceneDot, SceneText>;

// The chart page: its size in points and its elements in drawing order (later ones on top).
// `plot_top_left` and `plot_bottom_right` are the corners of the plotted area.
struct ChartScene {
  double width = 0;
  double height = 0;
  ScenePoint plot_top_left;
  ScenePoint plot_bottom_right;
  std::vector<SceneElement> elements;
};

// Lays out the chart of `company`: the yearly Sales, EPS, PretaxIncome, HighPrice and LowPrice
// (each times its factor from the judgment graph, a factor of 0 counting as 1) on a ratio
// scale, the revenue and EPS trend and projection lines, a year axis running from the oldest
// yearly row to five years past the latest fiscal year, a legend, the title (name, symbol,
// exchange and datDataUpdated, or `today` when the study has no valid update date) and a note
// for each thing the study lacks. Values that are zero, negative or not finite are left out.
// Never raises.
ChartScene BuildChartScene(const Company& company, Date today);

}  // namespace kwx

#endif  // KWX_CHART_CHART_SCENE_H_
