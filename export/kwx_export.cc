#include "export/kwx_export.h"

#include <cstdint>
#include <string>
#include <string_view>

#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/format.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "common/helpers.h"
#include "export/field_text.h"
#include "import/kwx_layout.h"

namespace kwx {
namespace {

constexpr std::string_view kTab = "\t";
constexpr std::string_view kDateFormat = "MMM/DD/YYYY";

// The element type codes of the list joiner.
constexpr int32_t kJoinIntegers = 2;
constexpr int32_t kJoinNumbers = 4;
constexpr int32_t kJoinFlags = 11;

std::string JoinAll(const Variant& list, int32_t type_code) {
  // The joiner widens these to the array's own bounds.
  int16_t first = INT16_MIN;
  int16_t last = INT16_MIN;
  return JoinArrayText(list, kTab, first, last, type_code);
}

std::string CheckedDateText(Date date) {
  return IsValidDate(date) ? FormatDate(date, kDateFormat) : std::string();
}

std::string PertRowsText(const Company& company) {
  std::string out;
  for (const JudgmentPERTRow& row : company.JudgmentPERT) {
    if (!out.empty()) out += kTab;
    out += CStr(Variant(row.GraphType));
    out += kTab;
    out += CStr(Variant(row.ScaleFactorPositive));
    out += kTab;
    out += CStr(Variant(row.ScaleFactorNegative));
  }
  return out;
}

const Object& SourceOf(const Company& company, KwxTarget target) {
  switch (target) {
    case KwxTarget::kCheckList: return company.JudgmentCheckList;
    case KwxTarget::kGraph: return company.JudgmentGraph;
    case KwxTarget::kAnalysis: return company.JudgmentAnalysis;
    case KwxTarget::kPrefProc: return company.JudgmentPrefProc;
    case KwxTarget::kStockReport: return company.JudgmentStockReport;
    case KwxTarget::kAssessment: return company.JudgmentAssessment;
    case KwxTarget::kOptions: return company.Options;
    default: return company;
  }
}

// The text of one position; raises when the value cannot be read or written.
std::string FieldText(const KwxField& f, const Company& company) {
  const Object& source = SourceOf(company, f.target);
  switch (f.kind) {
    case KwxKind::kText:
    case KwxKind::kNumber:
    case KwxKind::kInteger:
    case KwxKind::kSingle:
    case KwxKind::kAsIs:
      return CStr(source.GetProperty(f.name));
    case KwxKind::kDate:
      return CheckedDateText(CDate(source.GetProperty(f.name)));
    case KwxKind::kSeries: {
      const std::string_view table = SeriesTable(f.target);
      return JoinAll(company.SeriesColumn(table, f.name), kJoinNumbers);
    }
    case KwxKind::kFlags:
      return JoinAll(source.GetProperty(f.name), kJoinFlags);
    case KwxKind::kInts: {
      // The group keeps the integers as one text; the file always carries all of them.
      Variant ints = SplitToTypedArray(kTab, CStr(source.GetProperty(f.name)), f.count,
                                       Variant(int16_t{0}), kJoinIntegers);
      return JoinAll(ints, kJoinIntegers);
    }
    case KwxKind::kUpdated:
      return CheckedDateText(company.datDataUpdated);
    case KwxKind::kLatestMonth:
      return FormatDate(company.datLatestMData, kDateFormat);
    case KwxKind::kPMGYear:
      return CStr(Variant(company.intLatestPMGFY));
    case KwxKind::kNotes:
      return company.Notes;
    case KwxKind::kExtra:
      return CStr(Variant(company.sngKWXExtra));
    case KwxKind::kPertCount:
      return CStr(Variant(static_cast<int32_t>(company.JudgmentPERT.size())));
    case KwxKind::kPertRows:
      return PertRowsText(company);
  }
  return {};
}

template <size_t N>
void BuildPositions(const KwxField (&layout)[N], const Company& company, SafeArray& fields) {
  for (const KwxField& f : layout) {
    // No text may break its line (the notes' line breaks included).
    ResumeNext([&] { fields(f.position) = Variant(OneLineText(FieldText(f, company))); });
  }
}

void BuildKwxCompanyFields(const Company& company, SafeArray& fields) {
  fields(0) = Variant(std::string(kKwxVersionText));
  BuildPositions(kKwxCompanyLayout, company, fields);
}

void BuildKwxJudgmentFields(const Company& company, SafeArray& fields) {
  BuildPositions(kKwxJudgmentLayout, company, fields);
}

}  // namespace

Variant BuildKwxFields(const Company& company) {
  SafeArray fields = SafeArray::Vector(0, kKwxLastPosition);
  BuildKwxCompanyFields(company, fields);
  BuildKwxJudgmentFields(company, fields);
  return Variant(std::move(fields));
}

}  // namespace kwx
