#include "services/compute_object.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/safe_array.h"

namespace kwx {
namespace {

// The cautious range for a default projected growth rate, percent a year. A historical rate
// outside it is rarely sustained, so the default never projects decline or more than 20 %.
constexpr double kMinProjectedRate = 0;
constexpr double kMaxProjectedRate = 20;
// How far the projection line runs, in years.
constexpr double kProjectionYears = 5;
// A line fitted through fewer points says nothing about a trend.
constexpr size_t kMinPoints = 3;

struct Point {
  double position;
  double value;
};

void CheckKind(int32_t kind) {
  if (kind < 0 || kind > 3) throw AutomationError(err::kInvalidCall);
}

// The values of a yearly series with their year positions, oldest first.
std::vector<Point> PositiveValues(const Variant& series) {
  if (!series.IsArray() || series.AsArray().dims() != 1) {
    throw AutomationError(err::kTypeMismatch);
  }
  const SafeArray& array = series.AsArray();
  std::vector<Point> points;
  for (int32_t i = array.UBound(); i >= array.LBound(); --i) {
    const Variant& element = array(i);
    if (element.IsEmpty() || !IsNumeric(element)) continue;
    const double value = CDbl(element);
    if (std::isfinite(value) && value > 0) {
      points.push_back({static_cast<double>(array.UBound() - i), value});
    }
  }
  return points;
}

}  // namespace

float ComputeObject::sngNormalize(const Variant& series, int32_t kind, bool flag) {
  CheckKind(kind);
  const std::vector<Point> points = PositiveValues(series);
  if (!flag || points.empty()) return 1;
  double largest = 0;
  for (const Point& p : points) largest = std::max(largest, p.value);
  return static_cast<float>(std::pow(10.0, -std::floor(std::log10(largest))));
}

void ComputeObject::DefaultGrowthLine(float& factor, int32_t kind, const Variant& series,
                                      std::array<float, 15>& outputs) {
  CheckKind(kind);
  const std::vector<Point> points = PositiveValues(series);
  outputs.fill(0);
  if (points.size() < kMinPoints) return;

  const double n = static_cast<double>(points.size());
  double mean_x = 0;
  double mean_y = 0;
  for (const Point& p : points) {
    mean_x += p.position;
    mean_y += std::log(p.value);
  }
  mean_x /= n;
  mean_y /= n;
  double sxx = 0;
  double sxy = 0;
  double syy = 0;
  for (const Point& p : points) {
    const double dx = p.position - mean_x;
    const double dy = std::log(p.value) - mean_y;
    sxx += dx * dx;
    sxy += dx * dy;
    syy += dy * dy;
  }
  // Positions are distinct, so three points always spread along x (sxx > 0).
  const double slope = sxy / sxx;
  const double intercept = mean_y - slope * mean_x;
  const double r_squared = syy == 0 ? 1.0 : (sxy * sxy) / (sxx * syy);
  const double hist_rate = 100 * (std::exp(slope) - 1);
  const double proj_rate = std::clamp(hist_rate, kMinProjectedRate, kMaxProjectedRate);

  const double scale = factor;
  const double x1 = points.front().position;
  const double x2 = points.back().position;
  const double trend_y1 = std::exp(intercept + slope * x1) * scale;
  const double trend_y2 = std::exp(intercept + slope * x2) * scale;
  const double proj_y2 = trend_y2 * std::pow(1 + proj_rate / 100, kProjectionYears);
  const double proj_x2 = x2 + kProjectionYears;

  // Indexed by argument position minus 4; the positions are the member's calling convention.
  const double values[15] = {
      proj_rate, hist_rate, r_squared, intercept, slope,  // 4..8
      trend_y2,  x2,        proj_y2,   proj_x2,           // 9..12 label 1 (Y, X), label 2 (Y, X)
      trend_y2,  proj_y2,                                 // 13, 14 projection Y1, Y2
      x1,        trend_y1,  x2,        trend_y2,          // 15..18 trend X1, Y1, X2, Y2
  };
  for (size_t k = 0; k < outputs.size(); ++k) outputs[k] = static_cast<float>(values[k]);
}

}  // namespace kwx
