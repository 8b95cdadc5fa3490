#include "model/schema.h"

#include "model/column_lists.h"
#include "model/record.h"

namespace kwx {
namespace {

constexpr ColumnDef kSectorColumns[] = {KWX_SECTOR_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kExchangeColumns[] = {KWX_EXCHANGE_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kDataSourceColumns[] = {KWX_DATA_SOURCE_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kIndustryColumns[] = {KWX_INDUSTRY_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kCompanyColumns[] = {KWX_COMPANY_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kNotesColumns[] = {KWX_NOTES_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kOptionsColumns[] = {KWX_OPTIONS_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kYearlyColumns[] = {KWX_YEARLY_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kQuarterlyColumns[] = {KWX_QUARTERLY_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kMonthlyColumns[] = {KWX_MONTHLY_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kJudgmentPMGColumns[] = {KWX_JUDGMENT_PMG_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kJudgmentPERTColumns[] = {KWX_JUDGMENT_PERT_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kJudgmentGraphColumns[] = {KWX_JUDGMENT_GRAPH_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kJudgmentAnalysisColumns[] = {KWX_JUDGMENT_ANALYSIS_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kJudgmentCheckListColumns[] = {
    KWX_JUDGMENT_CHECK_LIST_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kJudgmentPrefProcColumns[] = {
    KWX_JUDGMENT_PREF_PROC_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kJudgmentAssessmentColumns[] = {
    KWX_JUDGMENT_ASSESSMENT_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kJudgmentStockReportColumns[] = {
    KWX_JUDGMENT_STOCK_REPORT_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kComparisonColumns[] = {KWX_COMPARISON_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kComparisonCompanyColumns[] = {
    KWX_COMPARISON_COMPANY_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kPERTReportColumns[] = {KWX_PERT_REPORT_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kPERTReportCompanyColumns[] = {
    KWX_PERT_REPORT_COMPANY_COLUMNS(KWX_COLUMN_DEF)};
constexpr ColumnDef kDJAveragesColumns[] = {KWX_DJ_AVERAGES_COLUMNS(KWX_COLUMN_DEF)};

using enum TableKind;
using enum PlatformUse;

// Indexed by TableId; the order is the creation order and must match the enumeration.
constexpr TableDef kTables[] = {
    {"Sector", "SectorID", Reference, kSectorColumns},
    {"Exchange", "ExchangeID", Reference, kExchangeColumns},
    {"DataSource", "DataSourceID", Reference, kDataSourceColumns},
    {"Industry", "IndustryID", Reference, kIndustryColumns},
    {"Company", "CompanyID", Company, kCompanyColumns},
    {"Notes", "CompanyID", PerCompanyRow, kNotesColumns},
    {"Options", "CompanyID", PerCompanyRow, kOptionsColumns},
    // The load orders are persisted statement texts: must not change.
    {"Yearly", "YearlyID", Series, kYearlyColumns, Both, " order by YearlyID asc"},
    {"Quarterly", "QuarterlyID", Series, kQuarterlyColumns, Both,
     " order by Year desc, QuarterlyID asc"},
    {"Monthly", "MonthlyID", Series, kMonthlyColumns, Both, " order by MonthlyID asc"},
    {"JudgmentPMG", "JudgmentPMGID", Series, kJudgmentPMGColumns, Both,
     " order by Year asc, JudgmentPMGID asc"},
    {"JudgmentPERT", "JudgmentPERTID", Series, kJudgmentPERTColumns, Both,
     " order by GraphType asc"},
    {"JudgmentGraph", "CompanyID", PerCompanyRow, kJudgmentGraphColumns},
    {"JudgmentAnalysis", "CompanyID", PerCompanyRow, kJudgmentAnalysisColumns},
    {"JudgmentCheckList", "CompanyID", PerCompanyRow, kJudgmentCheckListColumns, PlainOnly},
    {"JudgmentPrefProc", "CompanyID", PerCompanyRow, kJudgmentPrefProcColumns},
    {"JudgmentAssessment", "CompanyID", PerCompanyRow, kJudgmentAssessmentColumns, SPOnly},
    {"JudgmentStockReport", "CompanyID", PerCompanyRow, kJudgmentStockReportColumns,
     PlainOnly},
    {"Comparison", "ComparisonID", Shared, kComparisonColumns},
    {"ComparisonCompany", "ComparisonCompanyID", Shared, kComparisonCompanyColumns},
    {"PERTReport", "PERTReportID", Shared, kPERTReportColumns},
    {"PERTReportCompany", "PERTReportCompanyID", Shared, kPERTReportCompanyColumns},
    {"DJAverages", "", Shared, kDJAveragesColumns},
};

static_assert(std::size(kTables) == static_cast<size_t>(TableId::DJAverages) + 1);
static_assert(std::size(kCompanyColumns) == 107);

}  // namespace

std::span<const TableDef> AllTables() noexcept { return kTables; }

const TableDef& GetTable(TableId id) noexcept { return kTables[static_cast<size_t>(id)]; }

const TableDef* FindTable(std::string_view name) noexcept {
  for (const TableDef& table : kTables) {
    if (SameFieldName(table.name, name)) return &table;
  }
  return nullptr;
}

const ColumnDef* FindColumn(const TableDef& table, std::string_view name) noexcept {
  for (const ColumnDef& column : table.columns) {
    if (SameFieldName(column.name, name)) return &column;
  }
  return nullptr;
}

}  // namespace kwx
