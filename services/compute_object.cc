#include "services/compute_object.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/safe_array.h"

namespace kwx {
namespace {

// The default projected growth rate never exceeds this, percent a year: a higher historical
// rate is rarely sustained.
constexpr double kMaxProjectedRate = 20;
// How far the projection line runs, in years.
constexpr int kProjectionYears = 5;
// The span of years whose fit output 6 describes.
constexpr int kRecentYears = 5;
// A line fitted through fewer points says nothing about a trend.
constexpr size_t kMinPoints = 3;

struct Point {
  double year;
  double value;
};

void CheckKind(int32_t kind) {
  if (kind < 0 || kind > 3) throw AutomationError(err::kInvalidCall);
}

const SafeArray& YearlyArray(const Variant& series) {
  if (!series.IsArray() || series.AsArray().dims() != 1) {
    throw AutomationError(err::kTypeMismatch);
  }
  return series.AsArray();
}

// The values of a yearly series with their years, oldest first.
std::vector<Point> PositiveValues(const SafeArray& array) {
  std::vector<Point> points;
  for (int32_t year = array.LBound(); year <= array.UBound(); ++year) {
    const Variant& element = array(year);
    if (element.IsEmpty() || !IsNumeric(element)) continue;
    const double value = CDbl(element);
    if (std::isfinite(value) && value > 0) points.push_back({static_cast<double>(year), value});
  }
  return points;
}

// ln(value) = mean_y + slope * (year - mean_x), fitted by least squares.
struct LogFit {
  double mean_x = 0;
  double mean_y = 0;
  double slope = 0;
  double r_squared = 0;

  double At(double year) const { return std::exp(mean_y + slope * (year - mean_x)); }
};

// REQUIRES: at least two points, all of distinct years.
LogFit Fit(std::span<const Point> points) {
  LogFit fit;
  const double n = static_cast<double>(points.size());
  for (const Point& p : points) {
    fit.mean_x += p.year;
    fit.mean_y += std::log(p.value);
  }
  fit.mean_x /= n;
  fit.mean_y /= n;
  // Equal values lie exactly on a flat line. Their logarithms, summed and averaged, need not
  // come back exactly equal, and a residue of rounding would then pass for a poor fit.
  const bool flat = std::all_of(points.begin(), points.end(),
                                [&](const Point& p) { return p.value == points.front().value; });
  if (flat) {
    fit.mean_y = std::log(points.front().value);
    fit.r_squared = 1;
    return fit;
  }
  double sxx = 0;
  double sxy = 0;
  double syy = 0;
  for (const Point& p : points) {
    const double dx = p.year - fit.mean_x;
    const double dy = std::log(p.value) - fit.mean_y;
    sxx += dx * dx;
    sxy += dx * dy;
    syy += dy * dy;
  }
  fit.slope = sxy / sxx;
  fit.r_squared = syy == 0 ? 1.0 : (sxy * sxy) / (sxx * syy);
  return fit;
}

}  // namespace

float ComputeObject::sngNormalize(const Variant& series, int32_t kind, bool flag) {
  CheckKind(kind);
  const std::vector<Point> points = PositiveValues(YearlyArray(series));
  if (!flag || points.empty()) return 1;
  double largest = 0;
  for (const Point& p : points) largest = std::max(largest, p.value);
  return static_cast<float>(std::pow(10.0, -std::floor(std::log10(largest))));
}

void ComputeObject::DefaultGrowthLine(float& factor, int32_t kind, const Variant& series,
                                      std::array<float, 15>& outputs) {
  CheckKind(kind);
  const SafeArray& array = YearlyArray(series);
  const std::vector<Point> points = PositiveValues(array);
  outputs.fill(0);
  if (points.size() < kMinPoints) return;

  const LogFit fit = Fit(points);
  const double latest_year = array.UBound();
  const auto recent_begin = std::find_if(points.begin(), points.end(), [&](const Point& p) {
    return p.year > latest_year - kRecentYears;
  });
  const std::span<const Point> recent(recent_begin, points.end());
  const double recent_r_squared = recent.size() >= kMinPoints ? Fit(recent).r_squared : 0;

  const double hist_rate = 100 * (std::exp(fit.slope) - 1);
  const double scale = factor;
  const double x1 = points.front().year;
  const double x2 = points.back().year;
  // Indexed by argument position minus 4; the positions are the member's calling convention.
  double values[15] = {
      0, hist_rate, recent_r_squared, fit.mean_y - fit.slope * fit.mean_x, fit.slope,  // 4..8
      0, 0,         0,                0,                                               // 9..12
      0, 0,                                                                            // 13, 14
      x1, fit.At(x1) * scale, x2, fit.At(x2) * scale,                                  // 15..18
  };
  if (hist_rate >= 0) {
    const double proj_rate = std::min(hist_rate, kMaxProjectedRate);
    const double start_y = fit.At(latest_year) * scale;
    const double end_y = start_y * std::pow(1 + proj_rate / 100, kProjectionYears);
    const double end_x = latest_year + kProjectionYears;
    values[0] = proj_rate;
    values[5] = start_y, values[6] = latest_year;  // label 1 (Y, X)
    values[7] = end_y, values[8] = end_x;          // label 2 (Y, X)
    values[9] = start_y, values[10] = end_y;       // projection Y1, Y2
  }
  for (size_t k = 0; k < outputs.size(); ++k) outputs[k] = static_cast<float>(values[k]);
}

}  // namespace kwx
