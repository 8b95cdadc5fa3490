#include "chart/chart_scene.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "automation/dates.h"
#include "common/helpers.h"

namespace kwx {
namespace {

// --- Page layout, in points. A landscape page that prints well and reads on a screen. ------
constexpr double kPageWidth = 900;
constexpr double kPageBottomMargin = 16;
constexpr double kPlotLeft = 64;
constexpr double kPlotTop = 78;
constexpr double kPlotRight = 672;
constexpr double kPlotBottom = 512;
constexpr double kLegendLeft = 692;
constexpr double kLegendTop = 92;
constexpr double kLegendStep = 19;
constexpr double kNotesTop = kPlotBottom + 54;
constexpr double kNoteStep = 15;
constexpr size_t kMaxNoteLines = 6;
constexpr double kMinYearLabelSpacing = 30;  // closer year labels overlap: label every other
// Points per tenfold step of the value axis from which the 5s, and then the 2s and 3s, get a
// labelled grid line of their own; below that they would crowd.
constexpr double kDecadeRoomForFives = 60;
constexpr double kDecadeRoomForTwos = 110;
constexpr double kMinTickSpacing = 14;  // closer value labels overlap
// How far the projection lines reach past the latest fiscal year.
constexpr int kProjectionYears = 5;

constexpr SceneColor kInk{0.13, 0.13, 0.13};
constexpr SceneColor kMuted{0.42, 0.42, 0.42};
constexpr SceneColor kFrame{0.55, 0.55, 0.55};
constexpr SceneColor kGrid{0.84, 0.84, 0.84};
constexpr SceneColor kMinorGrid{0.93, 0.93, 0.93};
constexpr SceneColor kProjectedShade{0.95, 0.96, 0.99};
constexpr SceneColor kPriceBar{0.80, 0.80, 0.80};
constexpr SceneColor kWarning{0.70, 0.12, 0.10};

// The plotted yearly series, in drawing and legend order. `name` is the column and the name a
// reader finds on the drawn path; `label` is what a person reads.
struct SeriesDef {
  const char* name;
  const char* label;
  const char* note_label;  // the label inside a sentence
  float YearlyRow::*value;
  float JudgmentGraphGroup::*factor;
  SceneColor color;
  double width;
  bool dashed;
};
constexpr SeriesDef kSeries[] = {
    {"Sales",
     "Sales",
     "sales",
     &YearlyRow::Sales,
     &JudgmentGraphGroup::sngFactorRev,
     {0.10, 0.52, 0.20},
     2.2,
     false},
    {"EPS",
     "EPS",
     "EPS",
     &YearlyRow::EPS,
     &JudgmentGraphGroup::sngFactorEPS,
     {0.11, 0.33, 0.76},
     2.2,
     false},
    {"PretaxIncome",
     "Pre-tax income",
     "pre-tax income",
     &YearlyRow::PretaxIncome,
     &JudgmentGraphGroup::sngFactorPTI,
     {0.85, 0.45, 0.05},
     1.8,
     false},
    {"HighPrice",
     "High price",
     "high price",
     &YearlyRow::HighPrice,
     &JudgmentGraphGroup::sngFactorPrice52W,
     {0.30, 0.30, 0.30},
     1.1,
     false},
    {"LowPrice",
     "Low price",
     "low price",
     &YearlyRow::LowPrice,
     &JudgmentGraphGroup::sngFactorPrice52W,
     {0.30, 0.30, 0.30},
     1.1,
     true},
};
constexpr size_t kHighPrice = 3;
constexpr size_t kLowPrice = 4;

// The two fitted growth lines of the judgment graph, each a trend through the history and a
// projection from the latest fiscal year five years ahead.
struct GrowthLineDef {
  const char* label;
  const char* trend_name;
  const char* projection_name;
  size_t series;  // index into kSeries, for the colour
  float JudgmentGraphGroup::*trend_x1;
  float JudgmentGraphGroup::*trend_y1;
  float JudgmentGraphGroup::*trend_x2;
  float JudgmentGraphGroup::*trend_y2;
  float JudgmentGraphGroup::*projection_y1;
  float JudgmentGraphGroup::*projection_y2;
  float Company::*history_rate;
  float Company::*projected_rate;
};
constexpr GrowthLineDef kGrowthLines[] = {
    {"Sales", "SalesTrend", "SalesProjection", 0, &JudgmentGraphGroup::sngRevTrendX1,
     &JudgmentGraphGroup::sngRevTrendY1, &JudgmentGraphGroup::sngRevTrendX2,
     &JudgmentGraphGroup::sngRevTrendY2, &JudgmentGraphGroup::sngRevProjY1,
     &JudgmentGraphGroup::sngRevProjY2, &Company::sngRevHistGrowth, &Company::sngRevProjGrRate},
    {"EPS", "EPSTrend", "EPSProjection", 1, &JudgmentGraphGroup::sngEPSTrendX1,
     &JudgmentGraphGroup::sngEPSTrendY1, &JudgmentGraphGroup::sngEPSTrendX2,
     &JudgmentGraphGroup::sngEPSTrendY2, &JudgmentGraphGroup::sngEPSProjY1,
     &JudgmentGraphGroup::sngEPSProjY2, &Company::sngEPSHistGrowth, &Company::sngEPSProjGrRate},
};

bool Drawable(double v) { return std::isfinite(v) && v > 0; }

std::string Format(const char* format, double v) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, format, v);
  return buffer;
}

// A value-axis label: short and exact for the 1-2-3-5 steps at any size.
std::string TickLabel(double v) {
  if (v >= 1e6) return Format("%gM", v / 1e6);
  if (v >= 1e4) return Format("%gk", v / 1e3);
  return Format("%g", v);
}

// The 1-2-3-5 steps of the ratio scale, each decade's steps in ascending order.
constexpr double kSteps[] = {1, 2, 3, 5};

// The largest step value at or below v, and the smallest at or above it.
double StepAtOrBelow(double v) {
  const double decade = std::pow(10.0, std::floor(std::log10(v)));
  double best = decade;
  for (double s : kSteps) {
    if (s * decade <= v * (1 + 1e-9)) best = s * decade;
  }
  return best;
}
double StepAtOrAbove(double v) {
  const double decade = std::pow(10.0, std::floor(std::log10(v)));
  for (double s : kSteps) {
    if (s * decade >= v * (1 - 1e-9)) return s * decade;
  }
  return 10 * decade;
}
double NextStep(double v) { return StepAtOrAbove(v * 1.01); }
double PreviousStep(double v) { return StepAtOrBelow(v * 0.99); }

// Years as a compact list: "2012-2014, 2016".
std::string YearList(const std::vector<int>& years) {
  std::string out;
  for (size_t i = 0; i < years.size();) {
    size_t j = i;
    while (j + 1 < years.size() && years[j + 1] == years[j] + 1) ++j;
    if (!out.empty()) out += ", ";
    out += std::to_string(years[i]);
    if (j > i) out += "-" + std::to_string(years[j]);
    i = j + 1;
  }
  return out;
}

std::string DateText(Date d) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", Year(d), Month(d), Day(d));
  return buffer;
}

// How a line is stroked, on the plot and in its legend sample alike.
struct Pen {
  double width;
  std::vector<double> dash;  // empty for a solid line
};
const Pen kTrendPen{1.4, {7, 4}};
const Pen kProjectionPen{2.4, {2, 3}};
const Pen kPriceBarPen{7, {}};

Pen SeriesPen(const SeriesDef& def) {
  return {def.width, def.dashed ? std::vector<double>{5, 3} : std::vector<double>{}};
}

ScenePath Line(ScenePoint a, ScenePoint b, SceneColor color, const Pen& pen) {
  ScenePath path;
  path.runs = {{a, b}};
  path.color = color;
  path.width = pen.width;
  path.dash = pen.dash;
  return path;
}

ScenePath Box(double left, double top, double right, double bottom, SceneColor fill) {
  ScenePath path;
  path.runs = {{{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
  path.width = 0;
  path.filled = true;
  path.fill = fill;
  return path;
}

SceneText Text(double x, double y, std::string text, double size, SceneColor color,
               TextAnchor anchor = TextAnchor::kStart, std::string role = "") {
  SceneText t;
  t.at = {x, y};
  t.text = std::move(text);
  t.size = size;
  t.color = color;
  t.anchor = anchor;
  t.role = std::move(role);
  return t;
}

// What the study gives the chart: its years, each series' values times its factor, and its
// growth lines, with a note for what it lacks.
struct ChartData {
  int latest = 0;      // the latest fiscal year: row 0 of the yearly series
  int first_year = 0;  // the oldest row's year
  int last_year = 0;   // the last projected year
  struct Series {
    double factor = 1;
    std::vector<std::optional<double>> values;  // by row; none where nothing can be drawn
    bool any = false;
    bool below_zero = false;
  };
  std::vector<Series> series;  // as kSeries
  struct Segment {
    double x1, y1, x2, y2;  // (year, value) at each end
  };
  struct Growth {
    std::optional<Segment> trend;
    std::optional<Segment> projection;
  };
  std::vector<Growth> growth;  // as kGrowthLines
  bool any_line_field = false;
  std::vector<std::string> notes;

  int YearOfRow(size_t row) const { return latest - static_cast<int>(row); }
};

ChartData ReadStudy(const Company& company) {
  ChartData data;
  // Row i of the yearly series is the fiscal year i years before the latest one. Without a
  // fiscal year-end the rows are counted from 0 at the oldest, as the fitted lines count them.
  const int rows = std::max(static_cast<int>(company.Yearly.size()), 1);
  if (IsValidDate(company.datLastFY)) {
    data.latest = Year(company.datLastFY);
  } else {
    data.latest = rows - 1;
    data.notes.push_back("no fiscal year-end date: years are counted from the oldest row");
  }
  data.first_year = data.latest - rows + 1;
  data.last_year = data.latest + kProjectionYears;
  const JudgmentGraphGroup& graph = company.JudgmentGraph;

  for (const SeriesDef& def : kSeries) {
    ChartData::Series& series = data.series.emplace_back();
    const double factor = graph.*def.factor;
    series.factor = (std::isfinite(factor) && factor != 0) ? factor : 1;
    for (const YearlyRow& row : company.Yearly) {
      const double v = static_cast<double>(row.*def.value) * series.factor;
      series.values.push_back(Drawable(v) ? std::optional<double>(v) : std::nullopt);
      series.any = series.any || Drawable(v);
      series.below_zero = series.below_zero || (std::isfinite(v) && v < 0);
    }
  }

  // A line drawn past the first or last year would leave the plot.
  auto on_axis = [&](double x) {
    return std::isfinite(x) && x >= data.first_year - 0.5 && x <= data.last_year + 0.5;
  };
  for (const GrowthLineDef& def : kGrowthLines) {
    ChartData::Growth& growth = data.growth.emplace_back();
    const double x1 = graph.*def.trend_x1, y1 = graph.*def.trend_y1;
    const double x2 = graph.*def.trend_x2, y2 = graph.*def.trend_y2;
    const double p1 = graph.*def.projection_y1, p2 = graph.*def.projection_y2;
    data.any_line_field =
        data.any_line_field || x1 != 0 || y1 != 0 || x2 != 0 || y2 != 0 || p1 != 0 || p2 != 0;
    if (Drawable(y1) && Drawable(y2) && x1 != x2) {
      if (on_axis(x1) && on_axis(x2)) {
        growth.trend = ChartData::Segment{x1, y1, x2, y2};
      } else {
        data.notes.push_back(std::string(def.label) + " trend line lies outside the years shown (" +
                             Format("%g", x1) + " to " + Format("%g", x2) + ")");
      }
    }
    if (Drawable(p1) && Drawable(p2)) {
      growth.projection = ChartData::Segment{static_cast<double>(data.latest), p1,
                                             static_cast<double>(data.last_year), p2};
    }
  }
  return data;
}

// The value axis: from the 1-2-3-5 step at or below the smallest value drawn to the one at or
// above the largest, at least one tenfold apart; 1 to 10 when nothing is drawn.
std::pair<double, double> ValueRange(const ChartData& data) {
  std::vector<double> values;
  for (const ChartData::Series& series : data.series) {
    for (const auto& v : series.values) {
      if (v) values.push_back(*v);
    }
  }
  for (const ChartData::Growth& growth : data.growth) {
    for (const auto& segment : {growth.trend, growth.projection}) {
      if (segment) values.insert(values.end(), {segment->y1, segment->y2});
    }
  }
  if (values.empty()) return {1, 10};
  const auto [min_it, max_it] = std::minmax_element(values.begin(), values.end());
  double low = StepAtOrBelow(*min_it);
  double high = StepAtOrAbove(*max_it);
  for (bool widen_low = true; high / low < 10 * (1 - 1e-9); widen_low = !widen_low) {
    if (widen_low) {
      low = PreviousStep(low);
    } else {
      high = NextStep(high);
    }
  }
  return {low, high};
}

// Where a year and a value go on the page.
class Layout {
 public:
  Layout(const ChartData& data, std::pair<double, double> range)
      : first_year_(data.first_year),
        year_count_(data.last_year - data.first_year + 1),
        low_(range.first),
        high_(range.second),
        log_low_(std::log10(low_)),
        log_span_(std::log10(high_) - log_low_) {}

  double X(double year) const {
    return kPlotLeft + (year - first_year_ + 0.5) * (kPlotRight - kPlotLeft) / year_count_;
  }
  double Y(double value) const {
    return kPlotBottom - (std::log10(value) - log_low_) / log_span_ * (kPlotBottom - kPlotTop);
  }
  ScenePoint At(double year, double value) const { return {X(year), Y(value)}; }
  double low() const { return low_; }
  double high() const { return high_; }
  double DecadeHeight() const { return (kPlotBottom - kPlotTop) / log_span_; }
  double YearWidth() const { return (kPlotRight - kPlotLeft) / year_count_; }

 private:
  int first_year_;
  int year_count_;
  double low_;
  double high_;
  double log_low_;
  double log_span_;
};

// The projected years shaded, the value grid with its labels and the year axis.
void AddAxes(const ChartData& data, const Layout& layout, std::vector<SceneElement>& out) {
  const double projected_left = layout.X(data.latest + 0.5);
  out.push_back(Box(projected_left, kPlotTop, kPlotRight, kPlotBottom, kProjectedShade));
  // The caption above the frame, where no line can cross it.
  out.push_back(Text((projected_left + kPlotRight) / 2, kPlotTop - 6, "projected", 9, kMuted,
                     TextAnchor::kMiddle));

  // Every step gets a grid line; the labels thin out when the decades are short, the 1s always
  // kept, and the two ends of the axis labelled when there is room.
  const double decade_height = layout.DecadeHeight();
  const double low = layout.low(), high = layout.high();
  std::vector<double> labelled_ys;
  std::vector<SceneText> tick_labels;
  auto label_tick = [&](double v) {
    labelled_ys.push_back(layout.Y(v));
    tick_labels.push_back(
        Text(kPlotLeft - 6, layout.Y(v) + 3.5, TickLabel(v), 9.5, kInk, TextAnchor::kEnd, "tick"));
  };
  for (double decade = std::pow(10.0, std::floor(std::log10(low))); decade < high * 1.001;
       decade *= 10) {
    for (int k = 1; k <= 9; ++k) {
      const double v = k * decade;
      if (v < low * (1 - 1e-9) || v > high * (1 + 1e-9)) continue;
      const bool step = k == 1 || k == 2 || k == 3 || k == 5;
      const bool labelled = k == 1 || (k == 5 && decade_height >= kDecadeRoomForFives) ||
                            ((k == 2 || k == 3) && decade_height >= kDecadeRoomForTwos);
      if (!step && decade_height < kDecadeRoomForTwos) continue;
      const double y = layout.Y(v);
      out.push_back(Line({kPlotLeft, y}, {kPlotRight, y}, labelled ? kGrid : kMinorGrid,
                         {k == 1 ? 1.0 : 0.6, {}}));
      if (labelled) label_tick(v);
    }
  }
  for (double end : {low, high}) {
    const double y = layout.Y(end);
    const bool room = std::all_of(labelled_ys.begin(), labelled_ys.end(), [&](double other) {
      return std::abs(other - y) >= kMinTickSpacing;
    });
    if (room) label_tick(end);
  }
  out.insert(out.end(), tick_labels.begin(), tick_labels.end());

  // A tick per year, a label per year (every other when they would crowd), the latest fiscal
  // year in bold.
  const int label_every = layout.YearWidth() >= kMinYearLabelSpacing ? 1 : 2;
  for (int year = data.first_year; year <= data.last_year; ++year) {
    const double x = layout.X(year);
    out.push_back(Line({x, kPlotBottom}, {x, kPlotBottom + 4}, kFrame, {0.8, {}}));
    if ((data.last_year - year) % label_every != 0 && year != data.latest) continue;
    SceneText label = Text(x, kPlotBottom + 16, std::to_string(year), 9.5,
                           year > data.latest ? kMuted : kInk, TextAnchor::kMiddle, "year");
    label.bold = year == data.latest;
    out.push_back(label);
  }
  out.push_back(Text((kPlotLeft + kPlotRight) / 2, kPlotBottom + 34, "fiscal year", 10, kMuted,
                     TextAnchor::kMiddle));
}

// The price range bars, the series with a dot per value, the growth lines and the frame.
void AddPlot(const ChartData& data, const Layout& layout, std::vector<SceneElement>& out) {
  const ChartData::Series& high_price = data.series[kHighPrice];
  const ChartData::Series& low_price = data.series[kLowPrice];
  for (size_t i = 0; i < high_price.values.size(); ++i) {
    if (!high_price.values[i] || !low_price.values[i]) continue;
    out.push_back(Line(layout.At(data.YearOfRow(i), *low_price.values[i]),
                       layout.At(data.YearOfRow(i), *high_price.values[i]), kPriceBar,
                       kPriceBarPen));
  }

  // Oldest year first; a year without a value breaks the line.
  for (size_t s = 0; s < std::size(kSeries); ++s) {
    const SeriesDef& def = kSeries[s];
    const ChartData::Series& series = data.series[s];
    if (!series.any) continue;
    const Pen pen = SeriesPen(def);
    ScenePath path;
    path.tag = "data-series";
    path.name = def.name;
    path.color = def.color;
    path.width = pen.width;
    path.dash = pen.dash;
    std::vector<ScenePoint> run;
    for (size_t i = series.values.size(); i-- > 0;) {
      if (series.values[i]) run.push_back(layout.At(data.YearOfRow(i), *series.values[i]));
      if ((!series.values[i] || i == 0) && !run.empty()) {
        path.runs.push_back(run);
        run.clear();
      }
    }
    out.push_back(path);
    for (const auto& points : path.runs) {
      for (const ScenePoint& point : points) {
        out.push_back(SceneDot{point, def.width + 0.8, def.color});
      }
    }
  }

  for (size_t g = 0; g < std::size(kGrowthLines); ++g) {
    const GrowthLineDef& def = kGrowthLines[g];
    const SceneColor color = kSeries[def.series].color;
    const struct {
      const std::optional<ChartData::Segment>& segment;
      const char* name;
      const Pen& pen;
    } lines[] = {{data.growth[g].trend, def.trend_name, kTrendPen},
                 {data.growth[g].projection, def.projection_name, kProjectionPen}};
    for (const auto& line : lines) {
      if (!line.segment) continue;
      const ChartData::Segment& s = *line.segment;
      ScenePath path = Line(layout.At(s.x1, s.y1), layout.At(s.x2, s.y2), color, line.pen);
      path.tag = "data-line";
      path.name = line.name;
      out.push_back(path);
    }
  }

  ScenePath frame;
  frame.runs = {{{kPlotLeft, kPlotTop},
                 {kPlotRight, kPlotTop},
                 {kPlotRight, kPlotBottom},
                 {kPlotLeft, kPlotBottom},
                 {kPlotLeft, kPlotTop}}};
  frame.color = kFrame;
  out.push_back(frame);
}

// "Name (SYMBOL, EXCHANGE)" and the date of the data.
void AddTitle(const Company& company, Date today, std::vector<SceneElement>& out) {
  // Without a name the symbol leads: "SYMBOL (EXCHANGE)".
  std::vector<std::string> parts;
  for (const std::string* part : {&company.strName, &company.strSymbol, &company.ExchangeID}) {
    if (!part->empty()) parts.push_back(*part);
  }
  std::string title = parts.empty() ? "Study " + std::to_string(company.CompanyID) : parts[0];
  for (size_t i = 1; i < parts.size(); ++i) {
    title += (i == 1 ? " (" : ", ") + parts[i] + (i + 1 == parts.size() ? ")" : "");
  }
  SceneText title_text = Text(kPlotLeft, 34, title, 18, kInk, TextAnchor::kStart, "title");
  title_text.bold = true;
  out.push_back(title_text);
  std::string subtitle = IsValidDate(company.datDataUpdated)
                             ? "data of " + DateText(company.datDataUpdated)
                             : "charted " + DateText(today) + " (the study has no update date)";
  subtitle += "  \u00b7  ratio scale: steady growth is a straight line";
  out.push_back(Text(kPlotLeft, 54, subtitle, 10.5, kMuted, TextAnchor::kStart, "date"));
}

// One entry per drawn series and line, its sample drawn as on the plot.
void AddLegend(const Company& company, const ChartData& data, std::vector<SceneElement>& out) {
  double y = kLegendTop;
  SceneText title = Text(kLegendLeft, y - 14, "Legend", 10.5, kInk);
  title.bold = true;
  out.push_back(title);
  auto entry = [&](const std::string& label, SceneColor color, const Pen& pen, bool dot) {
    out.push_back(Line({kLegendLeft, y}, {kLegendLeft + 24, y}, color, pen));
    if (dot) out.push_back(SceneDot{{kLegendLeft + 12, y}, pen.width + 0.8, color});
    out.push_back(Text(kLegendLeft + 31, y + 3.5, label, 9.5, kInk, TextAnchor::kStart, "legend"));
    y += kLegendStep;
  };
  for (size_t s = 0; s < std::size(kSeries); ++s) {
    const ChartData::Series& series = data.series[s];
    if (!series.any) continue;
    std::string label = kSeries[s].label;
    if (series.factor != 1) label += " \u00d7 " + Format("%g", series.factor);
    entry(label, kSeries[s].color, SeriesPen(kSeries[s]), true);
  }
  if (data.series[kHighPrice].any && data.series[kLowPrice].any) {
    entry("Price range", kPriceBar, kPriceBarPen, false);
  }
  auto rate = [](double r) {
    return r != 0 && std::isfinite(r) ? Format(" (%.1f %%/yr)", r) : std::string();
  };
  for (size_t g = 0; g < std::size(kGrowthLines); ++g) {
    const GrowthLineDef& def = kGrowthLines[g];
    const SceneColor color = kSeries[def.series].color;
    if (data.growth[g].trend) {
      entry(std::string(def.label) + " trend" + rate(company.*def.history_rate), color, kTrendPen,
            false);
    }
    if (data.growth[g].projection) {
      entry(std::string(def.label) + " projection" + rate(company.*def.projected_rate), color,
            kProjectionPen, false);
    }
  }
  if (y == kLegendTop) out.push_back(Text(kLegendLeft, y + 3.5, "nothing to draw", 9.5, kMuted));
}

// The notes on what the study lacks, under the plot. Answers the page height that holds them.
double AddNotes(const ChartData& data, std::vector<SceneElement>& out) {
  std::vector<std::string> notes = data.notes;
  if (!data.any_line_field) {
    notes.push_back("no trend lines: run kwx defaults");
  } else {
    for (size_t g = 0; g < std::size(kGrowthLines); ++g) {
      const std::string label = kGrowthLines[g].label;
      if (!data.growth[g].trend) notes.push_back("no " + label + " trend line");
      if (!data.growth[g].projection) notes.push_back("no " + label + " projection line");
    }
  }
  // Series missing the same years share one note ("no high price and low price before 2019").
  std::vector<std::pair<std::string, std::vector<std::string>>> gaps;  // (years, series)
  bool below_zero = false;
  for (size_t s = 0; s < std::size(kSeries); ++s) {
    const ChartData::Series& series = data.series[s];
    below_zero = below_zero || series.below_zero;
    std::vector<int> missing;  // oldest first
    for (size_t i = series.values.size(); i-- > 0;) {
      if (!series.values[i]) missing.push_back(data.YearOfRow(i));
    }
    if (missing.empty()) continue;
    std::string years;
    if (!series.any) {
      years = "";
    } else if (missing.front() == data.first_year &&
               missing.back() == missing.front() + static_cast<int>(missing.size()) - 1) {
      years = " before " + std::to_string(missing.back() + 1);
    } else {
      years = " for " + YearList(missing);
    }
    auto same =
        std::find_if(gaps.begin(), gaps.end(), [&](const auto& gap) { return gap.first == years; });
    if (same == gaps.end()) {
      gaps.push_back({years, {kSeries[s].note_label}});
    } else {
      same->second.push_back(kSeries[s].note_label);
    }
  }
  for (const auto& [years, labels] : gaps) {
    std::string names;
    for (size_t i = 0; i < labels.size(); ++i) {
      names += (i == 0 ? "" : i + 1 == labels.size() ? " and " : ", ") + labels[i];
    }
    notes.push_back("no " + names + years);
  }
  if (below_zero) {
    notes.push_back("values of 0 or below are left out: a ratio scale cannot show them");
  }

  // The page grows to hold the notes, at most kMaxNoteLines of them; the rest share the last.
  if (notes.size() > kMaxNoteLines) {
    for (size_t i = kMaxNoteLines; i < notes.size(); ++i) {
      notes[kMaxNoteLines - 1] += "; " + notes[i];
    }
    notes.resize(kMaxNoteLines);
  }
  for (size_t i = 0; i < notes.size(); ++i) {
    out.push_back(Text(kPlotLeft, kNotesTop + i * kNoteStep, notes[i], 10, kWarning,
                       TextAnchor::kStart, "note"));
  }
  return std::max(kNotesTop - kNoteStep, kNotesTop + (notes.size() - 1.0) * kNoteStep) +
         kPageBottomMargin;
}

}  // namespace

ChartScene BuildChartScene(const Company& company, Date today) {
  const ChartData data = ReadStudy(company);
  const Layout layout(data, ValueRange(data));
  ChartScene scene;
  scene.width = kPageWidth;
  scene.plot_top_left = {kPlotLeft, kPlotTop};
  scene.plot_bottom_right = {kPlotRight, kPlotBottom};
  // Drawing order: the grid behind the plot, the text on top.
  AddAxes(data, layout, scene.elements);
  AddPlot(data, layout, scene.elements);
  AddTitle(company, today, scene.elements);
  AddLegend(company, data, scene.elements);
  scene.height = AddNotes(data, scene.elements);
  return scene;
}

}  // namespace kwx
