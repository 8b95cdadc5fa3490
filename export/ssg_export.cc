// The SSG writer: loops over the layout the SSG reader uses (import/ssg_layout_internal.h,
// which lists every position), so what one writes the other reads back.
#include "export/ssg_export.h"

#include <cmath>
#include <string>
#include <string_view>
#include <utility>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/format.h"
#include "automation/safe_array.h"
#include "common/helpers.h"
#include "export/field_text.h"
#include "import/ssg_layout_internal.h"

namespace kwx {
namespace {

// A struck-out list as the reader takes it back: one "1" or "0" per item, the first first.
std::string FlagsText(const SafeArray& flags) {
  std::string text;
  for (const Variant& flag : flags.elements()) text += CBool(flag) ? '1' : '0';
  return text;
}

// A date as "M/d/yyyy", followed by its time of day when it has one (to the second).
std::string DateText(Date date) {
  const std::string day = FormatDate(date, "Short Date");
  const double seconds = std::round(std::fabs(date.serial - std::trunc(date.serial)) * 86400);
  if (seconds == 0 || seconds == 86400) return day;
  // The general form gives the time alone on day 0, the date and the time on other days.
  const std::string general = FormatDate(date, "General Date");
  return general.starts_with(day) ? general : day + " " + general;
}

std::string FieldText(const Variant& value) {
  std::string text;
  ResumeNext([&] {
    if (value.type() == VarType::Date) {
      text = DateText(value.AsDate());
    } else if (value.type() == VarType::Single) {
      text = ShortestSingleText(value.AsSingle());
    } else if (value.IsArray()) {
      text = FlagsText(value.AsArray());
    } else {
      text = CStr(value);
    }
  });
  return text;
}

const Object* JudgmentGroup(const Company& company, std::string_view group) {
  if (group == "JudgmentAnalysis") return &company.JudgmentAnalysis;
  if (group == "JudgmentGraph") return &company.JudgmentGraph;
  if (group == "JudgmentPrefProc") return &company.JudgmentPrefProc;
  if (group == "JudgmentAssessment") return &company.JudgmentAssessment;
  return nullptr;
}

class FieldWriter {
 public:
  FieldWriter() : fields_(SafeArray::Vector(0, ssg::kFieldCount - 1)) {
    for (Variant& field : fields_.elements()) field = Variant(std::string());
  }
  // Every field is one line, whatever text reaches it.
  void Put(int16_t position, const std::string& text) {
    fields_(position) = Variant(OneLineText(text));
  }
  void Put(int16_t position, const Variant& value) { Put(position, FieldText(value)); }
  Variant Take() { return Variant(std::move(fields_)); }

 private:
  SafeArray fields_;
};

void WriteCompanyFields(const Company& company, FieldWriter& out) {
  for (const ssg::CompanyField& row : ssg::kCompanyLayout) {
    Variant value;
    ResumeNext([&] { value = company.GetProperty(row.property); });
    out.Put(row.position, value);
  }
  out.Put(ssg::kCurYieldField, Variant(company.sngCurYield));
  out.Put(ssg::kCurYieldAltField, Variant(company.sngCurYield));
  out.Put(ssg::kEPSProjGrField, Variant(company.sngEPSProjGrRate));
  out.Put(ssg::kEPSProjGrAltField, Variant(company.sngEPSProjGrRate));
  out.Put(ssg::kPrefDivAltField, Variant(company.sngPrefDiv));
  const Date quarter_end = company.datLatestQEnding;
  out.Put(ssg::kLatestQMonthDayField,
          std::to_string(Month(quarter_end)) + "/" + std::to_string(Day(quarter_end)));
  out.Put(ssg::kLatestQYearField, std::to_string(Year(quarter_end)));
  // Only a real year-end gives its month; the reader would otherwise rebuild a date from it.
  if (IsValidDate(company.datLastFY)) {
    out.Put(ssg::kFiscalYearEndMonthField, std::to_string(Month(company.datLastFY)));
  }
  out.Put(ssg::kIndustryNameField, company.IndustryID);
}

void WriteJudgmentFields(const Company& company, FieldWriter& out) {
  for (const ssg::JudgmentField& row : ssg::kJudgmentLayout) {
    const Object* group = JudgmentGroup(company, row.group);
    if (group == nullptr) continue;
    Variant value;
    ResumeNext([&] { value = group->GetProperty(row.property); });
    out.Put(row.position, value);
  }
}

void WriteSeries(const Company& company, FieldWriter& out) {
  for (const ssg::YearlyBlock& block : ssg::kYearlyLayout) {
    const int16_t latest = block.first + ssg::kYearsPerBlock - 1;
    for (int16_t i = 0; i < ssg::kYearsPerBlock && i < std::ssize(company.Yearly); ++i) {
      out.Put(latest - i, GetByName(company.Yearly[i], block.column));
    }
  }
  for (int16_t i = 0; i < ssg::kQuarterlyCount && i < std::ssize(company.Quarterly); ++i) {
    const int16_t record =
        ssg::kQuarterlyFirst + (ssg::kQuarterlyCount - 1 - i) * ssg::kQuarterlyStride;
    for (int16_t c = 0; c < ssg::kQuarterlyStride; ++c) {
      out.Put(record + c, GetByName(company.Quarterly[i], ssg::kQuarterlyColumns[c]));
    }
  }
  for (int16_t i = 0; i < ssg::kMonthlyCount && i < std::ssize(company.Monthly); ++i) {
    out.Put(ssg::kMonthlyFirst + ssg::kMonthlyCount - 1 - i, Variant(company.Monthly[i].ClosingPrice));
  }
}

}  // namespace

Variant BuildSsgFields(const Company& company) {
  FieldWriter out;
  WriteCompanyFields(company, out);
  WriteJudgmentFields(company, out);
  WriteSeries(company, out);
  return out.Take();
}

}  // namespace kwx
