// The database schema: every table the store reads and writes, declared once.
#ifndef KWX_MODEL_SCHEMA_H_
#define KWX_MODEL_SCHEMA_H_

#include <cstdint>
#include <span>
#include <string_view>

#include "model/table_def.h"

namespace kwx {

// The tables, in creation order: a table comes after every table whose rows it refers to.
// The values index AllTables().
enum class TableId : uint8_t {
  Sector,
  Exchange,
  DataSource,
  Industry,
  Company,
  Notes,
  Options,
  Yearly,
  Quarterly,
  Monthly,
  JudgmentPMG,
  JudgmentPERT,
  JudgmentGraph,
  JudgmentAnalysis,
  JudgmentCheckList,
  JudgmentPrefProc,
  JudgmentAssessment,
  JudgmentStockReport,
  Comparison,
  ComparisonCompany,
  PERTReport,
  PERTReportCompany,
  DJAverages,
};

// Every table of the database, in TableId (creation) order. The storage is static.
std::span<const TableDef> AllTables() noexcept;

// The declaration of table `id`.
const TableDef& GetTable(TableId id) noexcept;

// The table named `name` (case-insensitive), or nullptr when the schema has none.
const TableDef* FindTable(std::string_view name) noexcept;

// The column named `name` (case-insensitive) among the value columns of `table`, or nullptr.
// The key and the CompanyID column of a series or per-company table are not value columns.
const ColumnDef* FindColumn(const TableDef& table, std::string_view name) noexcept;

}  // namespace kwx

#endif  // KWX_MODEL_SCHEMA_H_
