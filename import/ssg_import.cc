// The SSG reader. The layout it reads, one row per position, and the rules for the values
// drawn from more than one position (R1 to R8) are written down at the top of
// ssg_layout_internal.h, which the SSG writer shares.
#include "import/ssg_import.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "common/helpers.h"
#include "import/series_shape.h"
#include "import/ssg_layout_internal.h"

namespace kwx {
namespace {

using ssg::Conversion;

// The field at `position`; raises err::kSubscript beyond the end of the array, which the
// caller's ResumeNext turns into a skipped assignment.
const Variant& FieldAt(const SafeArray& fields, int16_t position) { return fields(position); }

double FieldNumber(const SafeArray& fields, int16_t position) {
  return Val(CStr(FieldAt(fields, position)));
}

// The numeric value at `position`, or nothing when the array is shorter.
std::optional<double> NumberAt(const SafeArray& fields, int16_t position) {
  std::optional<double> value;
  ResumeNext([&] { value = FieldNumber(fields, position); });
  return value;
}

// The date at `position` when the field is there and converts to a date.
std::optional<Date> DateAt(const SafeArray& fields, int16_t position) {
  std::optional<Date> value;
  ResumeNext([&] { value = CDate(FieldAt(fields, position)); });
  return value;
}

bool IsPlausible(const std::optional<Date>& date) { return date && IsValidDate(*date); }

// The value handed to the property setter. The setter converts it to the property's type with
// the strict conversions, so a whole number or date field it rejects raises there.
Variant Converted(const Variant& field, Conversion conversion) {
  switch (conversion) {
    case Conversion::kNumber:
      return Variant(Val(CStr(field)));
    case Conversion::kText:
      return Variant(CStr(field));
    case Conversion::kFlags:
      // A list whatever the property's type, so a list held as a variant stays a list.
      return FlagsFrom(Variant(CStr(field)));
    case Conversion::kWhole:
    case Conversion::kDate:
      break;
  }
  return field;
}

void SetNumber(Object& target, std::string_view property, double value) {
  ResumeNext([&] { target.SetProperty(property, Variant(value)); });
}

// R1: the first positive yield, the second source otherwise.
void MapCurrentYield(Company& company, const SafeArray& fields) {
  std::optional<double> first = NumberAt(fields, ssg::kCurYieldField);
  std::optional<double> second = NumberAt(fields, ssg::kCurYieldAltField);
  std::optional<double> yield = (first && *first > 0) ? first : second ? second : first;
  if (yield) SetNumber(company, "sngCurYield", *yield);
}

// R2: the cautious one of two positive estimates.
void MapEPSProjectedGrowth(Company& company, const SafeArray& fields) {
  std::optional<double> first = NumberAt(fields, ssg::kEPSProjGrField);
  std::optional<double> second = NumberAt(fields, ssg::kEPSProjGrAltField);
  std::optional<double> rate;
  if (first && second && *first > 0 && *second > 0) {
    rate = std::min(*first, *second);
  } else if (first && *first != 0) {
    rate = first;
  } else {
    rate = second ? second : first;
  }
  if (rate) SetNumber(company, "sngEPSProjGrRate", *rate);
}

// R3: the second source when the first gave no preferred dividend.
void MapPreferredDividend(Company& company, const SafeArray& fields) {
  if (company.sngPrefDiv != 0) return;
  if (std::optional<double> dividend = NumberAt(fields, ssg::kPrefDivAltField)) {
    SetNumber(company, "sngPrefDiv", *dividend);
  }
}

// R4: the latest quarter end from its month/day and year fields when the date field fails.
void MapLatestQuarterEnding(Company& company, const SafeArray& fields) {
  if (IsPlausible(DateAt(fields, ssg::kLatestQEndingField))) return;
  ResumeNext([&] {
    std::string text = CStr(FieldAt(fields, ssg::kLatestQMonthDayField)) + "/" +
                       CStr(FieldAt(fields, ssg::kLatestQYearField));
    std::optional<Date> ending = ParseDate(text);
    if (IsPlausible(ending)) company.datLatestQEnding = *ending;
  });
}

// R5: the end of the fiscal year from its month and intLastFY when the date field fails.
void MapLastFiscalYear(Company& company, const SafeArray& fields) {
  if (IsPlausible(DateAt(fields, ssg::kLastFYField))) return;
  std::optional<double> month = NumberAt(fields, ssg::kFiscalYearEndMonthField);
  // The range first: converting a month far beyond int's range would be undefined.
  if (!month || *month < 1 || *month > 12 || *month != static_cast<int>(*month)) return;
  const int year = company.intLastFY;
  if (year <= 1900 || year >= 2999) return;
  // Day 0 of the next month is the last day of the year-end month.
  ResumeNext([&] { company.datLastFY = DateSerial(year, static_cast<int>(*month) + 1, 0); });
}

bool HoldsNoCase(std::string_view text, std::string_view part) {
  return FindNoCase(text, part) != std::string::npos;
}

// The first routine: the company record and per-share data, then the rules R1 to R8.
void MapCompanyFields(Company& company, const SafeArray& fields) {
  for (const ssg::CompanyField& row : ssg::kCompanyLayout) {
    ResumeNext([&] {
      company.SetProperty(row.property, Converted(FieldAt(fields, row.position), row.conversion));
    });
  }
  // A bare "S" is how some files name the S & P data service.
  if (EqualsNoCase(company.DataSourceID, "S")) company.DataSourceID = "S & P";

  MapPreferredDividend(company, fields);
  MapCurrentYield(company, fields);
  MapEPSProjectedGrowth(company, fields);
  MapLatestQuarterEnding(company, fields);
  MapLastFiscalYear(company, fields);

  OptionsGroup& options = company.Options;
  options.blnEPSProjLine = company.sngEPSProjGrRate != 0;
  options.blnRevProjLine = company.sngRevProjGrRate != 0;
  options.blnEPSTrendLine = company.sngEPSHistGrowth != 0;
  options.blnRevTrendLine = company.sngRevHistGrowth != 0;

  if (IsValidDate(company.datLastFY)) {
    ResumeNext([&] {
      company.intLatestPMGFY = static_cast<int16_t>(Year(DateAdd("yyyy", 1, company.datLastFY)));
    });
  }
  company.intPMGGraphDisplay = 0;
  company.datLatestQData = company.datLatestQEnding;

  std::string source = company.DataSourceID;
  ReplaceText(source, " ", "");
  if (HoldsNoCase(source, "S&P") || HoldsNoCase(source, "SP")) {
    // S & P studies carry no tax-rate history worth showing but do carry book values.
    options.blnTaxRate = false;
    options.blnBookVal = true;
  } else if (HoldsNoCase(source, "ValueLine") || HoldsNoCase(source, "VL")) {
    options.blnTaxRate = true;
    options.blnBookVal = true;
  }
}

// The judgment group named `group`; the assessment only on the SP platform.
Object* JudgmentGroup(Company& company, std::string_view group) {
  if (group == "JudgmentAnalysis") return &company.JudgmentAnalysis;
  if (group == "JudgmentGraph") return &company.JudgmentGraph;
  if (group == "JudgmentPrefProc") return &company.JudgmentPrefProc;
  if (group == "JudgmentAssessment") return &company.JudgmentAssessment;
  return nullptr;
}

// The second routine: the judgment values.
void MapJudgmentFields(Company& company, const SafeArray& fields, int32_t platform) {
  for (const ssg::JudgmentField& row : ssg::kJudgmentLayout) {
    if (row.use == ssg::JudgmentUse::kSPOnly && platform != 1) continue;
    Object* group = JudgmentGroup(company, row.group);
    if (group == nullptr) continue;
    ResumeNext([&] {
      group->SetProperty(row.property, Converted(FieldAt(fields, row.position), row.conversion));
    });
  }
}

// The third routine: the ten-year blocks, then the common equity each year implies.
void MapYearlySeries(Company& company, const SafeArray& fields) {
  for (const ssg::YearlyBlock& block : ssg::kYearlyLayout) {
    const int16_t latest = block.first + ssg::kYearsPerBlock - 1;
    for (int16_t i = 0; i < ssg::kYearsPerBlock; ++i) {
      ResumeNext([&] {
        SetByName(company.Yearly[i], block.column, Variant(FieldNumber(fields, latest - i)));
      });
    }
  }
  // A year without its own share count falls back on the current one.
  const double current_shares = company.sngCSO;
  for (int16_t i = 0; i < ssg::kYearsPerBlock; ++i) {
    YearlyRow& year = company.Yearly[i];
    const double shares = year.CSO != 0 ? year.CSO : current_shares;
    ResumeNext([&] { SetByName(year, "CommonEquity", Variant(year.BookValue * shares)); });
  }
}

// The fourth routine: the quarterly records and the monthly closing prices, oldest first.
void MapShortPeriodSeries(Company& company, const SafeArray& fields) {
  for (int16_t i = 0; i < ssg::kQuarterlyCount; ++i) {
    const int16_t record = ssg::kQuarterlyFirst + (ssg::kQuarterlyCount - 1 - i) * ssg::kQuarterlyStride;
    for (int16_t c = 0; c < ssg::kQuarterlyStride; ++c) {
      ResumeNext([&] {
        SetByName(company.Quarterly[i], ssg::kQuarterlyColumns[c],
                  Variant(FieldNumber(fields, record + c)));
      });
    }
  }
  for (int16_t i = 0; i < ssg::kMonthlyCount; ++i) {
    const int16_t position = ssg::kMonthlyFirst + ssg::kMonthlyCount - 1 - i;
    ResumeNext([&] {
      SetByName(company.Monthly[i], "ClosingPrice", Variant(FieldNumber(fields, position)));
    });
  }
}

}  // namespace

void MapSsgFields(Company& company, const Variant& fields, int32_t platform) {
  if (!fields.IsArray()) return;
  const SafeArray& array = fields.AsArray();
  MapCompanyFields(company, array);
  MapJudgmentFields(company, array, platform);
  ShapeSeriesForImport(company);
  MapYearlySeries(company, array);
  MapShortPeriodSeries(company, array);
}

}  // namespace kwx
