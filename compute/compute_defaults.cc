#include "compute/compute_defaults.h"

#include <array>
#include <memory>
#include <string_view>

#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/registry.h"
#include "automation/services.h"
#include "automation/variant.h"
#include "common/helpers.h"

namespace kwx {
namespace {

// The fifteen growth-line outputs; element k holds output position k + 4.
using GrowthOutputs = std::array<float, 15>;

// Series kind codes the compute object understands. Part of its calling convention.
constexpr int32_t kKindEPS = 0;
constexpr int32_t kKindRevenue = 1;
constexpr int32_t kKindPretaxIncome = 2;
constexpr int32_t kKindHighPrice = 3;

// Output positions of DefaultGrowthLine (argument positions, 4 to 18).
constexpr int kProjGrowthRate = 4;
constexpr int kHistGrowth = 5;
constexpr int kHistGrowthR2 = 6;

// One graph field of a growth line and the output position it is filled from.
struct LineField {
  std::string_view name;
  int position;
};

// The graph fields of each line in the order they are filled. The two orders differ in the
// label fields (X before Y for revenue, Y before X for EPS); both are kept as they are.
constexpr std::array<LineField, 10> kRevenueLine = {{
    {"sngRevProjY1", 13},
    {"sngRevProjY2", 14},
    {"sngRevProjLabel1X", 10},
    {"sngRevProjLabel1Y", 9},
    {"sngRevProjLabel2X", 12},
    {"sngRevProjLabel2Y", 11},
    {"sngRevTrendX1", 15},
    {"sngRevTrendY1", 16},
    {"sngRevTrendX2", 17},
    {"sngRevTrendY2", 18},
}};
constexpr std::array<LineField, 10> kEPSLine = {{
    {"sngEPSProjY1", 13},
    {"sngEPSProjY2", 14},
    {"sngEPSProjLabel1Y", 9},
    {"sngEPSProjLabel1X", 10},
    {"sngEPSProjLabel2Y", 11},
    {"sngEPSProjLabel2X", 12},
    {"sngEPSTrendX1", 15},
    {"sngEPSTrendY1", 16},
    {"sngEPSTrendX2", 17},
    {"sngEPSTrendY2", 18},
}};

float Output(const GrowthOutputs& outputs, int position) { return outputs[position - 4]; }

// A value read from a study counts as unset when it compares equal to 0; Empty does too.
bool IsZero(const Variant& value) { return Equals(value, Variant(int32_t{0})); }

// The series as the compute object reads it: indexed by fiscal year, so the lines it fits
// carry fiscal years as their X.
Variant YearlySeries(const Company& company, std::string_view column) {
  return company.YearlyByFiscalYear(column);
}

// Fills each zero field of one growth line from the outputs, one statement per field.
void FillLine(Object& graph, const std::array<LineField, 10>& line, const GrowthOutputs& outputs) {
  for (const LineField& field : line) {
    ResumeNext([&] {
      if (IsZero(graph.GetProperty(field.name))) {
        graph.SetProperty(field.name, Variant(Output(outputs, field.position)));
      }
    });
  }
}

// The company as an object reference for the value object. A study the host holds in a
// shared_ptr is shared as such; any other is referenced without ownership, which is safe
// because the value object lives only for this call.
ObjectRef CompanyReference(Company& company) {
  if (ObjectRef owned = company.weak_from_this().lock()) return owned;
  return std::shared_ptr<Company>(std::shared_ptr<Company>(), &company);
}

// The value object may hand back another study in the by-reference argument; the caller's
// study then takes its values, as the caller's reference would have been replaced.
void TakeBackCompany(const Variant& argument, Company& company) {
  if (!argument.IsObject()) return;
  auto* returned = dynamic_cast<const Company*>(argument.AsObject().get());
  if (returned != nullptr && returned != &company) company = *returned;
}

}  // namespace

void ComputeDefaults(Company& company, int32_t platform) noexcept {
  const bool sp = platform == 1;
  std::shared_ptr<ICompute> compute;
  ResumeNext(
      [&] { compute = CreateObjectAs<ICompute>(sp ? progid::kComputeSP : progid::kCompute); });
  if (!compute) return;

  Object& graph = company.JudgmentGraph;
  // One factor and one set of outputs serve both lines: a growth-line call that fails leaves
  // them as the previous call set them.
  float factor = 0;
  GrowthOutputs outputs{};

  // Revenue: an analyst's own revenue factor is kept, but the fresh factor drives the line.
  ResumeNext(
      [&] { factor = compute->sngNormalize(YearlySeries(company, "Sales"), kKindRevenue, true); });
  ResumeNext([&] {
    if (IsZero(graph.GetProperty("sngFactorRev")))
      graph.SetProperty("sngFactorRev", Variant(factor));
  });
  ResumeNext([&] {
    compute->DefaultGrowthLine(factor, kKindRevenue, YearlySeries(company, "Sales"), outputs);
  });
  if (company.sngRevHistGrowth == 0) company.sngRevHistGrowth = Output(outputs, kHistGrowth);
  if (company.sngRevProjGrRate == 0) company.sngRevProjGrRate = Output(outputs, kProjGrowthRate);
  FillLine(graph, kRevenueLine, outputs);

  // EPS: the factor is replaced on every call, unlike the revenue factor.
  ResumeNext([&] {
    const float eps_factor = compute->sngNormalize(YearlySeries(company, "EPS"), kKindEPS, true);
    factor = eps_factor;
    graph.SetProperty("sngFactorEPS", Variant(eps_factor));
  });
  ResumeNext(
      [&] { compute->DefaultGrowthLine(factor, kKindEPS, YearlySeries(company, "EPS"), outputs); });
  if (company.sngEPSHistGrowth == 0) company.sngEPSHistGrowth = Output(outputs, kHistGrowth);
  if (company.sngEPSProjGrRate == 0) company.sngEPSProjGrRate = Output(outputs, kProjGrowthRate);
  if (company.sngEPSHist5YrGrR2 == 0) company.sngEPSHist5YrGrR2 = Output(outputs, kHistGrowthR2);
  FillLine(graph, kEPSLine, outputs);

  ResumeNext([&] {
    graph.SetProperty("sngFactorPTI",
                      Variant(compute->sngNormalize(YearlySeries(company, "PretaxIncome"),
                                                    kKindPretaxIncome, true)));
  });
  ResumeNext([&] {
    graph.SetProperty(
        "sngFactorPrice52W",
        Variant(compute->sngNormalize(YearlySeries(company, "HighPrice"), kKindHighPrice, true)));
  });

  compute.reset();
  std::shared_ptr<IValue> value;
  ResumeNext([&] { value = CreateObjectAs<IValue>(sp ? progid::kValueSP : progid::kValue); });
  if (!value) return;

  ResumeNext([&] {
    if (company.sngCommDiv != 0) return;
    Variant argument(CompanyReference(company));
    float dividend = 0;
    try {
      dividend = value->sngCommonDiv(argument);
    } catch (...) {
      // A by-reference argument keeps what the callee put there even when it then fails.
      TakeBackCompany(argument, company);
      throw;
    }
    TakeBackCompany(argument, company);
    company.sngCommDiv = dividend;
  });

  // The dilution is a fraction here ((ACS - CSO) / CSO), not the percentage an import writes.
  ResumeNext([&] {
    const float acs = company.sngACS;
    const float cso = company.sngCSO;
    if (acs == 0 || cso == 0) {
      company.sngPotDilution = 0;
      return;
    }
    const float difference = acs - cso;
    company.sngPotDilution = CSng(SafeDivide(Variant(difference), Variant(cso), true,
                                             Variant(int32_t{0}), false, Variant(std::string())));
  });
}

}  // namespace kwx
