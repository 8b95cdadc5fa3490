#include "services/compute_object.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "automation/errors.h"
#include "automation/registry.h"
#include "automation/safe_array.h"
#include "services/builtin_services.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

// A yearly series as the compute object reads it: indexed by year, oldest first.
Variant ByYear(int32_t first_year, std::vector<Variant> oldest_first) {
  const auto count = static_cast<int32_t>(oldest_first.size());
  SafeArray array = SafeArray::Vector(first_year, first_year + count - 1);
  for (int32_t k = 0; k < count; ++k) array(first_year + k) = std::move(oldest_first[k]);
  return Variant(std::move(array));
}

Variant OldestFirst(const std::vector<double>& values, int32_t first_year = 0) {
  return ByYear(first_year, std::vector<Variant>(values.begin(), values.end()));
}

std::array<float, 15> Fit(const Variant& series, float factor = 1) {
  ComputeObject compute;
  std::array<float, 15> out;
  out.fill(-99);
  compute.DefaultGrowthLine(factor, 1, series, out);
  return out;
}

float At(const std::array<float, 15>& out, int position) { return out[position - 4]; }

using testing::ErrorOf;

TEST(ComputeObject, ExactTenPercentGrowthFitsPerfectlyOnFiscalYears) {
  std::vector<double> values;
  for (int k = 0; k < 10; ++k) values.push_back(50 * std::pow(1.1, k));
  const float factor = 0.1f;
  const auto out = Fit(OldestFirst(values, 2016), factor);
  const double first = 50 * factor;
  const double last = 50 * std::pow(1.1, 9) * factor;
  const double projected = last * std::pow(1.1, 5);
  struct Case {
    int position;
    double expected;
  };
  const Case cases[] = {
      {4, 10},        {5, 10},    {6, 1},  {7, std::log(50.0) - 2016 * std::log(1.1)},
      {8, std::log(1.1)}, {9, last}, {10, 2025}, {11, projected}, {12, 2030}, {13, last},
      {14, projected}, {15, 2016}, {16, first}, {17, 2025}, {18, last},
  };
  for (const Case& k : cases) {
    EXPECT_NEAR(At(out, k.position), k.expected, 1e-5 * std::max(1.0, std::abs(k.expected)))
        << "output " << k.position;
  }
}

TEST(ComputeObject, NoisySeriesMatchesTheSpreadsheetLogFit) {
  // Six positive years after four empty ones. A spreadsheet's LOGEST over years 4..9 gives
  // m = 1.11188551; RSQ of ln(value) against the year over the latest five (5..9) 0.98411580.
  const auto out = Fit(OldestFirst({0, 0, 0, 0, 100, 112, 119, 140, 151, 170}));
  EXPECT_NEAR(At(out, 5), 11.188551, 1e-4);
  EXPECT_NEAR(At(out, 6), 0.98411580, 1e-6) << "the latest five years, not all six";
  EXPECT_NEAR(At(out, 4), 11.188551, 1e-4);
  EXPECT_NEAR(At(out, 8), std::log(1.11188551), 1e-6);
  EXPECT_EQ(At(out, 15), 4) << "the trend starts at the oldest value used";
  EXPECT_EQ(At(out, 17), 9);
  EXPECT_NEAR(At(out, 16), 99.594718, 1e-3);
  EXPECT_NEAR(At(out, 18), 169.253110, 1e-3);
  // Fewer than three values among the latest five years: no R-squared for them.
  EXPECT_EQ(At(Fit(OldestFirst({100, 110, 121, 133, 146, 0, 0, 0, 177, 195})), 6), 0);
}

TEST(ComputeObject, FlatSeriesFitsExactly) {
  // Equal values lie on a flat line whatever rounding their logarithms' mean suffers.
  for (double v : {0.1, 7.77, 45.0, 1.1, 123.456, 3.3}) {
    const auto out = Fit(OldestFirst(std::vector<double>(10, v), 2016));
    EXPECT_EQ(At(out, 6), 1) << v;
    EXPECT_EQ(At(out, 5), 0) << v;
    EXPECT_FLOAT_EQ(At(out, 18), static_cast<float>(v)) << v;
  }
}

TEST(ComputeObject, ProjectionIsCappedAndADecliningHistoryGetsNone) {
  struct Case {
    double growth;  // a year, as a ratio
    double projected_rate;
  };
  const Case cases[] = {{1.35, 20}, {1.05, 5}, {1.0, 0}};
  for (const Case& k : cases) {
    std::vector<double> values;
    for (int i = 0; i < 6; ++i) values.push_back(10 * std::pow(k.growth, i));
    const auto out = Fit(OldestFirst(values));
    EXPECT_NEAR(At(out, 5), 100 * (k.growth - 1), 1e-3) << k.growth;
    EXPECT_NEAR(At(out, 4), k.projected_rate, 1e-3) << k.growth;
    EXPECT_NEAR(At(out, 14), At(out, 13) * std::pow(1 + k.projected_rate / 100, 5),
                1e-3 * At(out, 14));
  }
  // A declining history: its trend is drawn, but no flat projection is made up for it.
  std::vector<double> declining;
  for (int i = 0; i < 6; ++i) declining.push_back(10 * std::pow(0.9, i));
  const auto out = Fit(OldestFirst(declining));
  EXPECT_NEAR(At(out, 5), -10, 1e-3);
  for (int p = 9; p <= 14; ++p) EXPECT_EQ(At(out, p), 0) << "output " << p;
  EXPECT_EQ(At(out, 4), 0);
  EXPECT_NEAR(At(out, 18), 10 * std::pow(0.9, 5), 1e-4);
}

TEST(ComputeObject, ProjectionStartsAtTheLatestYearEvenWithoutItsValue) {
  std::vector<Variant> values;
  for (int k = 0; k < 9; ++k) values.emplace_back(100 * std::pow(1.1, k));
  values.emplace_back();  // the latest year has no figure yet
  const auto out = Fit(ByYear(2016, std::move(values)));
  EXPECT_EQ(At(out, 17), 2024) << "the trend ends at the latest value";
  EXPECT_EQ(At(out, 10), 2025) << "the projection starts at the latest year";
  EXPECT_EQ(At(out, 12), 2030);
  EXPECT_NEAR(At(out, 13), 100 * std::pow(1.1, 9), 1e-2);
}

TEST(ComputeObject, TooFewPositiveYearsGiveZeros) {
  const std::vector<Variant> cases = {
      ByYear(0, {}),
      OldestFirst({-5, -4, -3, -2, -1}),
      OldestFirst({0, 3, -1, 4, 0}),
      ByYear(0, {Variant(6.0), Variant(-2.0), Variant("n/a"), Variant(), Variant(5.0)}),
      OldestFirst({1e30, -1e30, std::nan("")}),
  };
  for (const Variant& series : cases) {
    const auto out = Fit(series);
    for (float v : out) EXPECT_EQ(v, 0) << series;
  }
  // Three positive years among the bad ones are enough, and only they are fitted.
  const auto out =
      Fit(ByYear(0, {Variant(1.0), Variant(), Variant("2"), Variant(-1.0), Variant(4.0)}));
  EXPECT_NEAR(At(out, 5), 100 * (std::sqrt(2.0) - 1), 1e-3);
  EXPECT_NEAR(At(out, 6), 1, 1e-6);
  EXPECT_EQ(At(out, 15), 0);
  EXPECT_EQ(At(out, 17), 4);
}

TEST(ComputeObject, NormalizeScalesTheLargestValueIntoOneToTen) {
  struct Case {
    std::vector<double> oldest_first;
    bool flag;
    float expected;
  };
  const Case cases[] = {
      {{1200, 4500, 3000}, true, 0.001f},
      {{0.45, 0.2}, true, 10},
      {{1, 0.5}, true, 1},
      {{10}, true, 0.1f},
      {{-500, 3}, true, 1},
      {{0, 0, 0}, true, 1},
      {{}, true, 1},
      {{1200, 4500}, false, 1},
  };
  ComputeObject compute;
  for (const Case& k : cases) {
    EXPECT_FLOAT_EQ(compute.sngNormalize(OldestFirst(k.oldest_first), 0, k.flag), k.expected)
        << OldestFirst(k.oldest_first);
  }
}

TEST(ComputeObject, RejectsUnknownKindsAndNonArrays) {
  ComputeObject compute;
  std::array<float, 15> out{};
  float factor = 1;
  const Variant series = OldestFirst({1, 2, 3});
  EXPECT_EQ(ErrorOf([&] { compute.sngNormalize(series, 4, true); }), err::kInvalidCall);
  EXPECT_EQ(ErrorOf([&] { compute.sngNormalize(series, -1, true); }), err::kInvalidCall);
  EXPECT_EQ(ErrorOf([&] { compute.sngNormalize(Variant(5.0f), 0, true); }), err::kTypeMismatch);
  EXPECT_EQ(ErrorOf([&] { compute.DefaultGrowthLine(factor, 9, series, out); }), err::kInvalidCall);
  EXPECT_EQ(ErrorOf([&] { compute.DefaultGrowthLine(factor, 0, Variant(), out); }),
            err::kTypeMismatch);
  for (int kind = 0; kind <= 3; ++kind) {
    EXPECT_EQ(ErrorOf([&] { compute.DefaultGrowthLine(factor, kind, series, out); }), 0);
  }
  EXPECT_EQ(factor, 1) << "the factor is read, not changed";
}

TEST(ComputeObject, BuiltinObjectsAreRegisteredUnderBothPlatformProgIDs) {
  RegisterBuiltinServices();
  EXPECT_NE(CreateObjectAs<ICompute>(progid::kCompute), nullptr);
  EXPECT_NE(CreateObjectAs<ICompute>(progid::kComputeSP), nullptr);
  EXPECT_NE(CreateObjectAs<IValue>(progid::kValue), nullptr);
  EXPECT_NE(CreateObjectAs<IValue>(progid::kValueSP), nullptr);
  EXPECT_NE(CreateObjectAs<IDataFile>(progid::kDataFile), nullptr);
  EXPECT_NE(CreateObjectAs<IDataFile>(progid::kDataFileSP), nullptr);
}

}  // namespace
}  // namespace kwx
