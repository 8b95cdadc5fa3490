#include "import/kwx_import.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "common/helpers.h"
#include "import/kwx_layout.h"
#include "import/series_shape.h"
#include "model/fiscal_dates.h"

namespace kwx {
namespace {

constexpr std::string_view kTab = "\t";
// The character that stands for a line break inside the notes position.
constexpr uint32_t kNoteBreak = 254;

// The element's text; raises err::kSubscript past the array's end.
std::string TextAt(const Variant& fields, int16_t position) {
  return CStr(fields.AsArray()(position));
}

}  // namespace

float KwxFieldsVersion(const Variant& fields) {
  if (!fields.IsArray()) return 0;
  float version = 0;
  ResumeNext([&] { version = static_cast<float>(Val(TextAt(fields, 0))); });
  return version;
}

namespace {

// The leading number of `text` as a single; raises err::kOverflow when a single cannot hold
// it, so the position is skipped and its property keeps its value.
float SingleOf(const std::string& text) { return CSng(Variant(Val(text))); }

// Position 104: the PMG year is never before the year after the last fiscal year. A number no
// 16-bit year can hold is no year the file gives, and that year is taken as for a text.
int16_t PMGYearFrom(const std::string& text, Date last_fy) {
  const auto year_after = static_cast<int16_t>(Year(DateAdd("yyyy", 1, last_fy)));
  std::optional<int16_t> year;
  if (IsNumeric(Variant(text))) ResumeNext([&] { year = CInt(Variant(text)); });
  return year && *year > year_after ? *year : year_after;
}

// A date the common check accepts, or nothing.
bool CheckedDate(const std::string& text, Date& out) {
  std::optional<Date> date = ParseDate(text);
  if (!date || !IsValidDate(*date)) return false;
  out = *date;
  return true;
}

// A list of `count` values of `type`; raises err::kTypeMismatch when a piece did not convert
// (the split keeps such a piece as its text).
Variant TypedList(const std::string& text, int16_t count, VarType type) {
  const Variant zero = type == VarType::Boolean ? Variant(false)
                       : type == VarType::Integer ? Variant(int16_t{0})
                                                  : Variant(0.0f);
  Variant list = SplitToTypedArray(kTab, text, count, zero, static_cast<int32_t>(type));
  for (const Variant& v : list.AsArray().elements()) {
    if (v.type() != type) throw AutomationError(err::kTypeMismatch);
  }
  return list;
}

// Binary replacement: the case-insensitive helper would also take the capital letter of the
// break character for a break.
std::string NotesFromField(const std::string& text) {
  const std::string mark = ChrW(kNoteBreak);
  std::string out;
  size_t start = 0;
  for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, start)) {
    out.append(text, start, at - start).append("\r\n");
    start = at + mark.size();
  }
  return out.append(text, start);
}

// The fresh objects MapKwxJudgment fills before they replace the company's.
struct FreshGroups {
  JudgmentCheckListGroup check_list;
  JudgmentGraphGroup graph;
  JudgmentAnalysisGroup analysis;
  JudgmentPrefProcGroup pref_proc;
  JudgmentStockReportGroup stock_report;
  JudgmentAssessmentGroup assessment;
  OptionsGroup options;
  std::vector<JudgmentPERTRow> pert;
  int32_t pert_count = -1;  // -1 while position 370 has not been read

  Object* Of(KwxTarget target) {
    switch (target) {
      case KwxTarget::kCheckList: return &check_list;
      case KwxTarget::kGraph: return &graph;
      case KwxTarget::kAnalysis: return &analysis;
      case KwxTarget::kPrefProc: return &pref_proc;
      case KwxTarget::kStockReport: return &stock_report;
      case KwxTarget::kAssessment: return &assessment;
      case KwxTarget::kOptions: return &options;
      default: return nullptr;
    }
  }
};

// The PERT rows of 371 once 370 gave their number.
std::vector<JudgmentPERTRow> PertRowsFrom(const std::string& text, int32_t count) {
  if (count < 0 || count > 32767 / 3) throw AutomationError(err::kOverflow);
  Variant values = TypedList(text, static_cast<int16_t>(count * 3), VarType::Single);
  const SafeArray& v = values.AsArray();
  std::vector<JudgmentPERTRow> rows(static_cast<size_t>(count));
  for (int32_t i = 0; i < count; ++i) {
    rows[i].GraphType = CLng(v(3 * i));
    rows[i].ScaleFactorPositive = v(3 * i + 1).AsSingle();
    rows[i].ScaleFactorNegative = v(3 * i + 2).AsSingle();
  }
  return rows;
}

// Stores one position into `object` (the company or a fresh group); raises when the position
// is missing, does not convert or is rejected, and the caller skips it.
void StoreField(const KwxField& f, const Variant& fields, Company& company, Object& object,
                FreshGroups* groups) {
  const std::string text = TextAt(fields, f.position);
  switch (f.kind) {
    case KwxKind::kText:
      object.SetProperty(f.name, Variant(text));
      break;
    case KwxKind::kNumber:
      object.SetProperty(f.name, Variant(SingleOf(text)));
      break;
    case KwxKind::kInteger:
      object.SetProperty(f.name, Variant(CInt(Variant(text))));
      break;
    case KwxKind::kSingle:
      object.SetProperty(f.name, Variant(CSng(Variant(text))));
      break;
    case KwxKind::kAsIs:
      object.SetProperty(f.name, fields.AsArray()(f.position));
      break;
    case KwxKind::kDate: {
      Date date;
      if (CheckedDate(text, date)) object.SetProperty(f.name, Variant(date));
      break;
    }
    case KwxKind::kSeries:
    case KwxKind::kFlags:
    case KwxKind::kInts: {
      const VarType type = f.kind == KwxKind::kSeries  ? VarType::Single
                           : f.kind == KwxKind::kFlags ? VarType::Boolean
                                                       : VarType::Integer;
      Variant list = TypedList(text, f.count, type);
      const std::string_view table = SeriesTable(f.target);
      if (!table.empty()) {
        company.SetSeriesColumn(table, f.name, list);
      } else if (f.kind == KwxKind::kInts) {
        // The group keeps its integer list as the text the file carries.
        int16_t first = 0;
        int16_t last = static_cast<int16_t>(f.count - 1);
        object.SetProperty(f.name, Variant(JoinArrayText(list, kTab, first, last, 2)));
      } else {
        object.SetProperty(f.name, list);
      }
      break;
    }
    case KwxKind::kUpdated: {
      Date date;
      if (CheckedDate(text, date)) company.datDataUpdated = date;
      break;
    }
    case KwxKind::kLatestMonth: {
      // A date here is taken as it stands; the writer does not check this one either.
      std::optional<Date> date = ParseDate(text);
      company.datLatestMData = date ? *date : LatestMonthlyDataFrom(company.datLastFY);
      break;
    }
    case KwxKind::kPMGYear:
      company.intLatestPMGFY = PMGYearFrom(text, company.datLastFY);
      break;
    case KwxKind::kNotes:
      company.Notes = NotesFromField(text);
      break;
    case KwxKind::kExtra:
      company.sngKWXExtra = SingleOf(text);
      break;
    case KwxKind::kPertCount:
      groups->pert_count = CInt(Variant(text));
      break;
    case KwxKind::kPertRows:
      groups->pert = PertRowsFrom(text, groups->pert_count);
      company.JudgmentPERT = std::move(groups->pert);
      break;
  }
}

}  // namespace

bool ValidateKwxFields(Variant& fields) {
  const float version = KwxFieldsVersion(fields);
  if (version == kKwxFirstVersion) {
    SafeArray& a = fields.AsArray();
    for (int16_t p : kKwxZeroedIn101) ResumeNext([&] { a(p) = Variant(int16_t{0}); });
    ResumeNext([&] { a(kKwxFalseIn101) = Variant(false); });
    for (int16_t p : kKwxEmptiedIn101) ResumeNext([&] { a(p) = Variant(""); });
    return true;
  }
  return version != 0;
}

void MapKwxCompany(Company& company, const Variant& fields, int32_t /*platform*/) {
  company.CompanyID = 0;
  if (KwxFieldsVersion(fields) == 0) return;
  ShapeSeriesForImport(company);
  for (const KwxField& f : kKwxCompanyLayout) {
    ResumeNext([&] { StoreField(f, fields, company, company, nullptr); });
    // Whatever position 1 held, the creation date starts as the update date; 106, stored next,
    // overrides it when it is a date.
    if (f.kind == KwxKind::kUpdated) company.datDataCreated = company.datDataUpdated;
  }
}

void MapKwxJudgment(Company& company, const Variant& fields, int32_t /*platform*/) {
  FreshGroups fresh;
  company.JudgmentPMG = std::vector<JudgmentPMGRow>(Company::kJudgmentPMGRows);
  for (const KwxField& f : kKwxJudgmentLayout) {
    ResumeNext([&] {
      Object* group = fresh.Of(f.target);
      StoreField(f, fields, company, group ? *group : static_cast<Object&>(company), &fresh);
    });
  }
  company.JudgmentCheckList = std::move(fresh.check_list);
  company.JudgmentGraph = std::move(fresh.graph);
  company.JudgmentAnalysis = std::move(fresh.analysis);
  company.JudgmentPrefProc = std::move(fresh.pref_proc);
  company.JudgmentStockReport = std::move(fresh.stock_report);
  company.JudgmentAssessment = std::move(fresh.assessment);
  company.Options = std::move(fresh.options);
}

}  // namespace kwx
