// One stock study: the company record, its options and notes, the five series, the six
// judgment groups and the values that saving needs beyond the tables.
#ifndef KWX_MODEL_COMPANY_H_
#define KWX_MODEL_COMPANY_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "automation/object.h"
#include "automation/variant.h"
#include "model/column_lists.h"
#include "model/judgment_groups.h"
#include "model/market_averages.h"
#include "model/options_group.h"
#include "model/record.h"
#include "model/series_rows.h"
#include "model/table_def.h"

namespace kwx {

class Company : public Object {
 public:
  // The series lengths a new study starts with, which are also the lengths saving writes.
  static constexpr size_t kYearlyRows = 10;
  static constexpr size_t kQuarterlyRows = 36;
  static constexpr size_t kMonthlyRows = 72;
  static constexpr size_t kJudgmentPMGRows = 5;

  // The database's ID of the study; 0 until the company row is first inserted.
  int32_t CompanyID = 0;

  // The 107 record properties, named and typed as the columns of table Company. SectorID,
  // ExchangeID, IndustryID and DataSourceID hold the referenced row's name.
  KWX_COMPANY_COLUMNS(KWX_DECLARE_FIELD)

  // Display and study options (table Options).
  OptionsGroup Options;
  // The free-text notes (table Notes).
  std::string Notes;

  // The series; element 0 of Yearly is the latest fiscal year. Yearly, Quarterly, Monthly and
  // JudgmentPMG start at their saved lengths, every value zero; JudgmentPERT starts empty.
  std::vector<YearlyRow> Yearly = std::vector<YearlyRow>(kYearlyRows);
  std::vector<QuarterlyRow> Quarterly = std::vector<QuarterlyRow>(kQuarterlyRows);
  std::vector<MonthlyRow> Monthly = std::vector<MonthlyRow>(kMonthlyRows);
  std::vector<JudgmentPMGRow> JudgmentPMG = std::vector<JudgmentPMGRow>(kJudgmentPMGRows);
  std::vector<JudgmentPERTRow> JudgmentPERT;

  // The judgment groups, one per table of the same name.
  JudgmentGraphGroup JudgmentGraph;
  JudgmentAnalysisGroup JudgmentAnalysis;
  JudgmentCheckListGroup JudgmentCheckList;
  JudgmentPrefProcGroup JudgmentPrefProc;
  JudgmentAssessmentGroup JudgmentAssessment;
  JudgmentStockReportGroup JudgmentStockReport;

  // The market averages (and their day) saved into table DJAverages with the judgments.
  MarketAverages DJAverages;

  // The single value of KWX position 101, which the database does not keep.
  float sngKWXExtra = 0;

  // The declaration of table Company.
  static const TableDef& Table() noexcept;
  // One binding per record column, in update order (CompanyID and Notes are not included).
  static std::span<const FieldBinding<Company>> Bindings() noexcept;

  // Reads CompanyID (Long), Notes (String) or a record property by name, case-insensitively.
  // When the company is owned by a shared_ptr, the names of the options and judgment groups
  // (Options, JudgmentGraph, ...) answer that group as an object sharing the company's
  // ownership; otherwise they raise err::kObjectNotSet. Other names raise err::kNoSuchMember.
  Variant GetProperty(std::string_view name) const override;
  // Writes CompanyID, Notes or a record property by name, converted to its type. Raises
  // err::kNoSuchMember for other names and the conversion's error, leaving the property
  // unchanged, for a value it rejects.
  void SetProperty(std::string_view name, const Variant& value) override;

  // One column of a series as a zero-based 1-D array, element i from row i, e.g.
  // SeriesColumn("Yearly", "Sales"). Names are case-insensitive; an unknown series or column
  // raises err::kNoSuchMember. An empty series answers an array with no elements.
  Variant SeriesColumn(std::string_view table, std::string_view column) const;
  // One yearly column indexed by fiscal year, oldest first: the element at index y is the row
  // a save stores with Year y (the year of datLastFY minus the row's place), so the upper
  // bound is the latest fiscal year. Without a plausible datLastFY the rows are counted from 0
  // (the oldest) instead. Raises err::kNoSuchMember for an unknown column.
  Variant YearlyByFiscalYear(std::string_view column) const;
  // Sets row i of the column from values(LBound + i) for every i below both the series length
  // and the element count; the series length does not change. Raises err::kNoSuchMember for
  // an unknown name, err::kTypeMismatch when `values` is not an array, and a conversion's
  // error for an element it rejects; on any error the series is left unchanged.
  void SetSeriesColumn(std::string_view table, std::string_view column, const Variant& values);
};

// One line per difference between two studies, "<where>: <a> vs <b>", where is the property
// ("strName"), the group and column ("Options.intUnit"), the series row and column
// ("Yearly(3).Sales") or the series length ("Yearly.Count"). Empty when they are the same.
std::string DescribeDifferences(const Company& a, const Company& b);

// True when every value of the two studies is the same (DescribeDifferences is empty).
bool SameStudy(const Company& a, const Company& b);

}  // namespace kwx

#endif  // KWX_MODEL_COMPANY_H_
