#include "model/company.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "common/helpers.h"
#include "model/schema.h"

namespace kwx {
namespace {

std::string_view CompanyIDName() { return GetTable(TableId::Company).key; }
std::string_view NotesName() { return GetTable(TableId::Notes).columns[0].name; }

// Calls `f` with the series of `company` (const or not) named `table`, or raises
// err::kNoSuchMember.
template <class C, class F>
decltype(auto) WithSeries(C& company, std::string_view table, F&& f) {
  if (SameFieldName(YearlyRow::Table().name, table)) return f(company.Yearly);
  if (SameFieldName(QuarterlyRow::Table().name, table)) return f(company.Quarterly);
  if (SameFieldName(MonthlyRow::Table().name, table)) return f(company.Monthly);
  if (SameFieldName(JudgmentPMGRow::Table().name, table)) return f(company.JudgmentPMG);
  if (SameFieldName(JudgmentPERTRow::Table().name, table)) return f(company.JudgmentPERT);
  throw AutomationError(err::kNoSuchMember);
}

template <class Row>
const FieldBinding<Row>& RequireField(std::string_view column) {
  const FieldBinding<Row>* binding = FindField<Row>(Row::Bindings(), column);
  if (binding == nullptr) throw AutomationError(err::kNoSuchMember);
  return *binding;
}

template <class Row>
Variant ColumnOf(const std::vector<Row>& rows, std::string_view column) {
  const FieldBinding<Row>& binding = RequireField<Row>(column);
  SafeArray values = SafeArray::Vector(0, static_cast<int32_t>(rows.size()) - 1);
  for (size_t i = 0; i < rows.size(); ++i) {
    values(static_cast<int32_t>(i)) = GetField(rows[i], binding);
  }
  return Variant(std::move(values));
}

template <class Row>
void SetColumnOf(std::vector<Row>& rows, std::string_view column, const Variant& values) {
  const FieldBinding<Row>& binding = RequireField<Row>(column);
  if (!values.IsArray()) throw AutomationError(err::kTypeMismatch);
  const SafeArray& array = values.AsArray();
  // Written into a copy so that an element the conversion rejects leaves the series whole.
  std::vector<Row> updated = rows;
  size_t count = std::min(updated.size(), static_cast<size_t>(array.Count(1)));
  for (size_t i = 0; i < count; ++i) {
    SetField(updated[i], binding, array(array.LBound(1) + static_cast<int32_t>(i)));
  }
  rows = std::move(updated);
}

template <class Row>
void AppendSeriesDifferences(std::string& out, std::string_view name,
                             const std::vector<Row>& a, const std::vector<Row>& b) {
  std::string prefix(name);
  if (a.size() != b.size()) {
    AppendDifference(out, prefix + ".", "Count", Variant(static_cast<int32_t>(a.size())),
                     Variant(static_cast<int32_t>(b.size())));
  }
  for (size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    AppendRecordDifferences(out, prefix + "(" + std::to_string(i) + ").", a[i], b[i]);
  }
}

template <class Group>
void AppendGroupDifferences(std::string& out, const Group& a, const Group& b) {
  AppendRecordDifferences(out, std::string(Group::Table().name) + ".", a, b);
}

}  // namespace

const TableDef& Company::Table() noexcept { return GetTable(TableId::Company); }

std::span<const FieldBinding<Company>> Company::Bindings() noexcept {
  using BoundRecord = Company;
  static constexpr FieldBinding<BoundRecord> kBindings[] = {
      KWX_COMPANY_COLUMNS(KWX_BIND_FIELD)};
  return kBindings;
}

Variant Company::GetProperty(std::string_view name) const {
  if (SameFieldName(CompanyIDName(), name)) return Variant(CompanyID);
  if (SameFieldName(NotesName(), name)) return Variant(Notes);
  if (const FieldBinding<Company>* binding = FindField<Company>(Bindings(), name)) {
    return GetField(*this, *binding);
  }
  // The groups are members, not separately owned objects: a reference to one shares the
  // company's ownership, so it can only be handed out when the company is itself shared.
  const Object* groups[] = {&Options,           &JudgmentGraph,      &JudgmentAnalysis,
                            &JudgmentCheckList, &JudgmentPrefProc,   &JudgmentAssessment,
                            &JudgmentStockReport};
  std::string_view group_names[] = {GetTable(TableId::Options).name,
                                    JudgmentGraphGroup::Table().name,
                                    JudgmentAnalysisGroup::Table().name,
                                    JudgmentCheckListGroup::Table().name,
                                    JudgmentPrefProcGroup::Table().name,
                                    JudgmentAssessmentGroup::Table().name,
                                    JudgmentStockReportGroup::Table().name};
  for (size_t i = 0; i < std::size(groups); ++i) {
    if (!SameFieldName(group_names[i], name)) continue;
    std::shared_ptr<const Object> self = weak_from_this().lock();
    if (self == nullptr) throw AutomationError(err::kObjectNotSet);
    auto owner = std::const_pointer_cast<Object>(std::move(self));
    return Variant(ObjectRef(std::move(owner), const_cast<Object*>(groups[i])));
  }
  throw AutomationError(err::kNoSuchMember);
}

void Company::SetProperty(std::string_view name, const Variant& value) {
  if (SameFieldName(CompanyIDName(), name)) {
    ConvertInto(value, CompanyID);
  } else if (SameFieldName(NotesName(), name)) {
    ConvertInto(value, Notes);
  } else {
    SetByName(*this, name, value);
  }
}

Variant Company::SeriesColumn(std::string_view table, std::string_view column) const {
  return WithSeries(*this, table, [&](const auto& rows) { return ColumnOf(rows, column); });
}

Variant Company::YearlyByFiscalYear(std::string_view column) const {
  const FieldBinding<YearlyRow>& binding = RequireField<YearlyRow>(column);
  const auto count = static_cast<int32_t>(Yearly.size());
  const int32_t latest = IsValidDate(datLastFY) ? Year(datLastFY) : count - 1;
  SafeArray values = SafeArray::Vector(latest - count + 1, latest);
  for (int32_t i = 0; i < count; ++i) values(latest - i) = GetField(Yearly[i], binding);
  return Variant(std::move(values));
}

void Company::SetSeriesColumn(std::string_view table, std::string_view column,
                              const Variant& values) {
  WithSeries(*this, table, [&](auto& rows) { SetColumnOf(rows, column, values); });
}

std::string DescribeDifferences(const Company& a, const Company& b) {
  std::string out;
  if (a.CompanyID != b.CompanyID) {
    AppendDifference(out, "", CompanyIDName(), Variant(a.CompanyID), Variant(b.CompanyID));
  }
  AppendRecordDifferences(out, "", a, b);
  AppendGroupDifferences(out, a.Options, b.Options);
  if (a.Notes != b.Notes) {
    AppendDifference(out, "", NotesName(), Variant(a.Notes), Variant(b.Notes));
  }
  AppendSeriesDifferences(out, YearlyRow::Table().name, a.Yearly, b.Yearly);
  AppendSeriesDifferences(out, QuarterlyRow::Table().name, a.Quarterly, b.Quarterly);
  AppendSeriesDifferences(out, MonthlyRow::Table().name, a.Monthly, b.Monthly);
  AppendSeriesDifferences(out, JudgmentPMGRow::Table().name, a.JudgmentPMG, b.JudgmentPMG);
  AppendSeriesDifferences(out, JudgmentPERTRow::Table().name, a.JudgmentPERT, b.JudgmentPERT);
  AppendGroupDifferences(out, a.JudgmentGraph, b.JudgmentGraph);
  AppendGroupDifferences(out, a.JudgmentAnalysis, b.JudgmentAnalysis);
  AppendGroupDifferences(out, a.JudgmentCheckList, b.JudgmentCheckList);
  AppendGroupDifferences(out, a.JudgmentPrefProc, b.JudgmentPrefProc);
  AppendGroupDifferences(out, a.JudgmentAssessment, b.JudgmentAssessment);
  AppendGroupDifferences(out, a.JudgmentStockReport, b.JudgmentStockReport);
  AppendGroupDifferences(out, a.DJAverages, b.DJAverages);
  if (!SameValue(Variant(a.sngKWXExtra), Variant(b.sngKWXExtra))) {
    AppendDifference(out, "", "sngKWXExtra", Variant(a.sngKWXExtra), Variant(b.sngKWXExtra));
  }
  return out;
}

bool SameStudy(const Company& a, const Company& b) { return DescribeDifferences(a, b).empty(); }

}  // namespace kwx
