#include "compute/compute_defaults.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/registry.h"
#include "automation/services.h"
#include "services/builtin_services.h"

namespace kwx {
namespace {

// Factor per series kind, distinct so a test can tell which series fed which field.
float FactorOf(int32_t kind) { return 0.5f + static_cast<float>(kind); }
// Output position p of the growth line of `kind` answers 1000 * (kind + 1) + p.
float OutputOf(int32_t kind, int position) {
  return static_cast<float>(1000 * (kind + 1) + position);
}

struct ComputeLog {
  std::vector<std::string> created;              // ProgIDs, in creation order
  std::vector<int32_t> normalized;               // kinds passed to sngNormalize
  std::vector<std::pair<int32_t, float>> lines;  // (kind, factor) passed to DefaultGrowthLine
};

class ScriptedCompute : public ICompute {
 public:
  explicit ScriptedCompute(ComputeLog& log) : log_(log) {}
  float sngNormalize(const Variant& series, int32_t kind, bool flag) override {
    EXPECT_TRUE(series.IsArray());
    EXPECT_TRUE(flag);
    log_.normalized.push_back(kind);
    return FactorOf(kind);
  }
  void DefaultGrowthLine(float& factor, int32_t kind, const Variant& series,
                         std::array<float, 15>& outputs) override {
    EXPECT_TRUE(series.IsArray());
    log_.lines.emplace_back(kind, factor);
    for (int p = 4; p <= 18; ++p) outputs[p - 4] = OutputOf(kind, p);
  }

 private:
  ComputeLog& log_;
};

struct ValueLog {
  int calls = 0;
};

class ScriptedValue : public IValue {
 public:
  explicit ScriptedValue(ValueLog& log) : log_(log) {}
  float sngCommonDiv(Variant&) override {
    ++log_.calls;
    return 0.88f;
  }

 private:
  ValueLog& log_;
};

// Doubles under all four ProgIDs; a ProgID left out of `available` creates nothing.
struct Doubles {
  ComputeLog compute;
  ValueLog value;
  std::vector<std::unique_ptr<ScopedRegistration>> guards;

  explicit Doubles(std::set<std::string> available = {progid::kCompute, progid::kComputeSP,
                                                      progid::kValue, progid::kValueSP}) {
    for (const char* id :
         {progid::kCompute, progid::kComputeSP, progid::kValue, progid::kValueSP}) {
      const bool on = available.count(id) > 0;
      const bool is_value = std::string_view(id) == progid::kValue || std::string_view(id) == progid::kValueSP;
      guards.push_back(std::make_unique<ScopedRegistration>(id, [=, this]() -> ObjectRef {
        compute.created.push_back(id);
        if (!on) return nullptr;
        if (is_value) return std::make_shared<ScriptedValue>(value);
        return std::make_shared<ScriptedCompute>(compute);
      }));
    }
  }
};

float GraphField(const Company& c, const char* name) {
  return CSng(c.JudgmentGraph.GetProperty(name));
}

TEST(ComputeDefaults, FillsEachZeroFieldFromItsOutputPosition) {
  Doubles doubles;
  Company c;
  c.sngACS = 1.2f;
  c.sngCSO = 1.0f;
  ComputeDefaults(c, 0);

  // Outputs 9 to 18 of each growth line fill its ten graph fields in this order.
  const char* const lines[] = {"ProjLabel1Y", "ProjLabel1X", "ProjLabel2Y", "ProjLabel2X",
                               "ProjY1",      "ProjY2",      "TrendX1",     "TrendY1",
                               "TrendX2",     "TrendY2"};
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(GraphField(c, ("sngRev" + std::string(lines[i])).c_str()), OutputOf(1, 9 + i));
    EXPECT_EQ(GraphField(c, ("sngEPS" + std::string(lines[i])).c_str()), OutputOf(0, 9 + i));
  }
  EXPECT_EQ(c.JudgmentGraph.sngFactorRev, FactorOf(1));
  EXPECT_EQ(c.JudgmentGraph.sngFactorEPS, FactorOf(0));
  EXPECT_EQ(c.JudgmentGraph.sngFactorPTI, FactorOf(2));
  EXPECT_EQ(c.JudgmentGraph.sngFactorPrice52W, FactorOf(3));
  EXPECT_EQ(c.JudgmentGraph.sngEPSMinProjY1, 0) << "not filled by this routine";
  EXPECT_EQ(c.sngRevProjGrRate, OutputOf(1, 4));
  EXPECT_EQ(c.sngRevHistGrowth, OutputOf(1, 5));
  EXPECT_EQ(c.sngRevHist5YrGrR2, 0) << "the revenue R-squared is not stored";
  EXPECT_EQ(c.sngEPSProjGrRate, OutputOf(0, 4));
  EXPECT_EQ(c.sngEPSHistGrowth, OutputOf(0, 5));
  EXPECT_EQ(c.sngEPSHist5YrGrR2, OutputOf(0, 6));
  EXPECT_EQ(c.sngCommDiv, 0.88f);
  EXPECT_NEAR(c.sngPotDilution, 0.2, 1e-6);

  EXPECT_EQ(doubles.compute.normalized, (std::vector<int32_t>{1, 0, 2, 3}));
  EXPECT_EQ(doubles.compute.created, (std::vector<std::string>{progid::kCompute, progid::kValue}));
}

TEST(ComputeDefaults, KeepsWhatTheAnalystSetButReplacesThreeFactors) {
  Doubles doubles;
  Company c;
  c.JudgmentGraph.sngFactorRev = 7;
  c.JudgmentGraph.sngFactorEPS = 7;
  c.JudgmentGraph.sngFactorPTI = 7;
  c.JudgmentGraph.sngFactorPrice52W = 7;
  c.JudgmentGraph.sngRevTrendY2 = -3;
  c.JudgmentGraph.sngEPSProjLabel2X = 4;
  c.sngRevHistGrowth = 12.5f;
  c.sngEPSProjGrRate = 9;
  c.sngEPSHist5YrGrR2 = 0.5f;
  c.sngCommDiv = 0.25f;
  ComputeDefaults(c, 0);

  EXPECT_EQ(c.JudgmentGraph.sngFactorRev, 7) << "the analyst's revenue factor is kept";
  EXPECT_EQ(c.JudgmentGraph.sngFactorEPS, FactorOf(0));
  EXPECT_EQ(c.JudgmentGraph.sngFactorPTI, FactorOf(2));
  EXPECT_EQ(c.JudgmentGraph.sngFactorPrice52W, FactorOf(3));
  EXPECT_EQ(c.JudgmentGraph.sngRevTrendY2, -3);
  EXPECT_EQ(c.JudgmentGraph.sngEPSProjLabel2X, 4);
  EXPECT_EQ(c.JudgmentGraph.sngRevTrendX2, OutputOf(1, 17)) << "its unset neighbours are filled";
  EXPECT_EQ(c.sngRevHistGrowth, 12.5f);
  EXPECT_EQ(c.sngRevProjGrRate, OutputOf(1, 4));
  EXPECT_EQ(c.sngEPSProjGrRate, 9);
  EXPECT_EQ(c.sngEPSHistGrowth, OutputOf(0, 5));
  EXPECT_EQ(c.sngEPSHist5YrGrR2, 0.5f);
  EXPECT_EQ(c.sngCommDiv, 0.25f);
  EXPECT_EQ(doubles.value.calls, 0) << "a set common dividend is not asked for";
  // The growth lines run on the freshly computed factors, not on the stored revenue factor.
  const std::vector<std::pair<int32_t, float>> lines = {{1, FactorOf(1)}, {0, FactorOf(0)}};
  EXPECT_EQ(doubles.compute.lines, lines);
}

TEST(ComputeDefaults, DilutionIsAFractionRecomputedEveryTime) {
  struct Case {
    float acs, cso, before, expected;
  };
  const Case cases[] = {
      {1.2f, 1.0f, 20.0f, 1.2f - 1.0f},
      {3.0f, 2.0f, 0.0f, 0.5f},
      {0.0f, 1.0f, 5.0f, 0.0f},
      {1.0f, 0.0f, 5.0f, 0.0f},
      {-1.0f, 2.0f, 5.0f, -1.5f},  // negative operands and results are not checked
  };
  for (const Case& k : cases) {
    Doubles doubles;
    Company c;
    c.sngACS = k.acs;
    c.sngCSO = k.cso;
    c.sngPotDilution = k.before;
    ComputeDefaults(c, 0);
    EXPECT_EQ(c.sngPotDilution, k.expected) << k.acs << " / " << k.cso;
  }
}

TEST(ComputeDefaults, CallingTwiceEqualsCallingOnce) {
  Doubles doubles;
  Company once;
  once.strName = "Twice Inc";
  once.sngACS = 2;
  once.sngCSO = 1.5f;
  Company twice = once;
  ComputeDefaults(once, 0);
  ComputeDefaults(twice, 0);
  ComputeDefaults(twice, 0);
  EXPECT_EQ(DescribeDifferences(once, twice), "");
}

TEST(ComputeDefaults, WithoutAComputeObjectTheStudyIsUntouched) {
  Doubles doubles({progid::kValue, progid::kValueSP});
  Company c;
  c.sngACS = 1.2f;
  c.sngCSO = 1.0f;
  c.sngPotDilution = 20;
  const Company before = c;
  ComputeDefaults(c, 0);
  EXPECT_EQ(DescribeDifferences(before, c), "");
  EXPECT_EQ(doubles.compute.created, std::vector<std::string>{progid::kCompute})
      << "the value object is not even tried";
}

TEST(ComputeDefaults, TheSPPlatformUsesOnlyItsOwnObjects) {
  {
    Doubles doubles({progid::kCompute, progid::kValue});
    Company c;
    c.sngACS = 1.2f;
    c.sngCSO = 1.0f;
    const Company before = c;
    ComputeDefaults(c, 1);
    EXPECT_EQ(DescribeDifferences(before, c), "") << "no fallback to the plain objects";
    EXPECT_EQ(doubles.compute.created, std::vector<std::string>{progid::kComputeSP});
  }
  Doubles doubles;
  Company c;
  ComputeDefaults(c, 1);
  EXPECT_EQ(doubles.compute.created,
            (std::vector<std::string>{progid::kComputeSP, progid::kValueSP}));
  EXPECT_EQ(c.sngCommDiv, 0.88f);
}

TEST(ComputeDefaults, WithoutAValueObjectTheGrowthLinesStand) {
  Doubles doubles({progid::kCompute});
  Company c;
  c.sngACS = 1.2f;
  c.sngCSO = 1.0f;
  c.sngPotDilution = 20;
  ComputeDefaults(c, 0);
  EXPECT_EQ(c.sngRevProjGrRate, OutputOf(1, 4));
  EXPECT_EQ(c.JudgmentGraph.sngFactorPrice52W, FactorOf(3));
  EXPECT_EQ(c.sngCommDiv, 0);
  EXPECT_EQ(c.sngPotDilution, 20) << "the dilution needs the value object's step";
}

TEST(ComputeDefaults, BuiltInObjectsFillAStudyGrowingTenPercent) {
  RegisterBuiltinServices();
  Company c;
  // Yearly row 0 is the latest fiscal year: sales of 100 nine years ago, growing 10 % a year.
  for (size_t i = 0; i < c.Yearly.size(); ++i) {
    const int age = static_cast<int>(i);
    c.Yearly[i].Sales = static_cast<float>(100 * std::pow(1.1, 9 - age));
    c.Yearly[i].EPS = static_cast<float>(2 * std::pow(1.05, 9 - age));
    c.Yearly[i].PretaxIncome = 12;
    c.Yearly[i].HighPrice = 45;
  }
  c.Yearly[0].DPS = 0.6f;
  c.sngACS = 110;
  c.sngCSO = 100;
  c.datLastFY = DateSerial(2025, 6, 30);
  ComputeDefaults(c, 0);

  EXPECT_NEAR(c.sngRevHistGrowth, 10, 1e-3);
  EXPECT_NEAR(c.sngRevProjGrRate, 10, 1e-3);
  EXPECT_NEAR(c.sngEPSHistGrowth, 5, 1e-3);
  EXPECT_NEAR(c.sngEPSHist5YrGrR2, 1, 1e-5);
  const JudgmentGraphGroup& g = c.JudgmentGraph;
  EXPECT_FLOAT_EQ(g.sngFactorRev, 0.01f);
  EXPECT_FLOAT_EQ(g.sngFactorEPS, 1);
  EXPECT_FLOAT_EQ(g.sngFactorPTI, 0.1f);
  EXPECT_FLOAT_EQ(g.sngFactorPrice52W, 0.1f);
  EXPECT_NEAR(g.sngRevTrendY2, 100 * std::pow(1.1, 9) * 0.01, 1e-4);
  EXPECT_NEAR(g.sngRevProjY2, g.sngRevProjY1 * std::pow(1.1, 5), 1e-4);
  EXPECT_NEAR(g.sngEPSProjY1, 2 * std::pow(1.05, 9), 1e-4);
  // The lines stand on the fiscal years: ten of history, five projected.
  EXPECT_EQ(g.sngRevTrendX1, 2016);
  EXPECT_EQ(g.sngRevTrendX2, 2025);
  EXPECT_EQ(g.sngEPSProjLabel1X, 2025);
  EXPECT_EQ(g.sngEPSProjLabel2X, 2030);
  EXPECT_EQ(c.sngCommDiv, 0.6f);
  EXPECT_NEAR(c.sngPotDilution, 0.1, 1e-6);
}

}  // namespace
}  // namespace kwx
