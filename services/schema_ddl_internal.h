// The statements that lay out a new database, generated from the table declarations.
#ifndef KWX_SERVICES_SCHEMA_DDL_INTERNAL_H_
#define KWX_SERVICES_SCHEMA_DDL_INTERNAL_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/table_def.h"

namespace kwx {

// The declared SQL type of a column of `type`. The database object reads values back typed
// by these names (sqlite_support_internal.h), so the two must stay in step.
std::string_view DeclaredTypeName(ColumnType type) noexcept;

// Series rows are keyed in per-study blocks: study C's rows of a series table hold the keys
// C * kSeriesKeyBlock to C * kSeriesKeyBlock + kSeriesKeyBlock - 1, and an inserted row takes
// the lowest free key of its study's block, whatever key the insert asked for. A save reaches
// a study's rows as "the smallest key plus i" (i below 32768, the most elements a series
// holds), so it can only ever reach rows of that study; another study's rows are out of reach.
inline constexpr int64_t kSeriesKeyBlock = 65536;

// The trigger that gives each row inserted into the Series table `table` its key in its
// study's block (see kSeriesKeyBlock). The insert fails when the block has no free key.
std::string SeriesKeyTrigger(const TableDef& table);

// CREATE TABLE statements for `tables` in their order, then the CREATE INDEX statements, then
// the key triggers of the Series tables.
//   Company, Series, Reference and keyed Shared tables: the key autonumbered
//     (INTEGER PRIMARY KEY AUTOINCREMENT);
//   PerCompanyRow tables: CompanyID as primary key;
//   Series and PerCompanyRow tables: CompanyID referring to Company, rows deleted with it;
//   Shared tables: a 32-bit column named after the key of the company table or of another
//     shared table refers to it, rows deleted with it (a comparison's members go with the
//     comparison and with the company);
//   reference columns (SectorID ...) get no foreign key, so reference rows stay deletable.
// Indexes: Company by (strSymbol, ExchangeID), and every referring column that is not the
// primary key.
std::vector<std::string> SchemaStatements(std::span<const TableDef> tables);

}  // namespace kwx

#endif  // KWX_SERVICES_SCHEMA_DDL_INTERNAL_H_
