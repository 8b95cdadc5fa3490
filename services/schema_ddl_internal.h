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

// The engines a study database lives in.
enum class SqlEngine : uint8_t { kSqlite, kPostgres };

// `name` (a table, column, index or trigger name) quoted as an identifier for the statements
// that lay out and upgrade a database.
std::string Quoted(std::string_view name);

// The declared SQL type of a column of `type`. The database object reads values back typed
// by these names (sqlite_support_internal.h), so the two must stay in step.
std::string_view DeclaredTypeName(ColumnType type,
                                  SqlEngine engine = SqlEngine::kSqlite) noexcept;

// Series rows are keyed in per-study blocks: study C's rows of a series table hold the keys
// C * kSeriesKeyBlock to C * kSeriesKeyBlock + kSeriesKeyBlock - 1. A save reaches a study's rows
// as "the smallest key plus i" (i below 32768, the most elements a series holds), so it can only
// ever reach rows of that study; another study's rows are out of reach.
//
// Which key an inserted row takes: the database object gives the loader's insert of a series
// row the key after the highest of its study's block (the block's first key when it is empty),
// or, right after an update of that series found no row at key K of the block, K itself, so a
// save that fills a hole fills it where the hole is; right after the series' first-key query
// found no row of the study, inside a transaction, the block is empty and is not asked again.
// Any other insert (a host's own, or one that asked for a key outside the study's block) is
// moved by the trigger below to the lowest free key of the block.
inline constexpr int64_t kSeriesKeyBlock = 65536;

// The index of Series table `table` by study, in key order on `engine` (SQLite's index holds
// the row's key after the study's ID by itself; the server's names it): its name and the
// statement that makes it.
std::string SeriesIndexName(const TableDef& table, SqlEngine engine);
std::string SeriesIndexStatement(const TableDef& table, SqlEngine engine);

// The trigger that moves a row inserted into the Series table `table` with a key outside its
// study's block to the lowest free key of that block (see kSeriesKeyBlock). The insert fails
// when the block has no free key.
std::string SeriesKeyTrigger(const TableDef& table);

// CREATE TABLE statements for `tables` in their order, then the CREATE INDEX statements, then
// the key triggers of the Series tables, for `engine`. On PostgreSQL names are written
// unquoted (the server keeps them in lower case, so statements and other programs name them
// in any case), 16-bit integers INTEGER (read back as 16-bit), Booleans SMALLINT 1/0 and dates ISO text as in a SQLite file, series keys
// are BIGINT (a study's block starts at CompanyID * kSeriesKeyBlock), and the statements
// begin with what the loader's statements need there: the collations NOCASE and
// kNoCaseCollation (case-insensitive in every script) and the function datediff.
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
std::vector<std::string> SchemaStatements(std::span<const TableDef> tables,
                                          SqlEngine engine = SqlEngine::kSqlite);

}  // namespace kwx

#endif  // KWX_SERVICES_SCHEMA_DDL_INTERNAL_H_
