// The declared shape of every database table: its columns, their types and their statement
// orders. SQL text, the schema of a new database, import, export, JSON and by-name access are
// all loops over these declarations.
#ifndef KWX_MODEL_TABLE_DEF_H_
#define KWX_MODEL_TABLE_DEF_H_

#include <cstdint>
#include <span>
#include <string_view>

namespace kwx {

// How a column's value is held in memory and written into SQL text.
enum class ColumnType : uint8_t {
  Text,       // str...: text, written quoted with the apostrophe substitution
  Single,     // sng...: single-precision number
  Integer,    // int...: 16-bit integer
  Long,       // 32-bit integer (keys, foreign keys, GraphType, IndustryCode)
  Boolean,    // bln...: written True / False
  Date,       // dat...: written quoted in the "Short Date" form
  Variant,    // vnt...: any value, written by the text/date writer
  Flags,      // a struck-out item list: a Boolean array in memory, a text of 1/0 in the table
  Reference,  // SectorID, ExchangeID, IndustryID, DataSourceID: a name in memory, a row ID
              // (32-bit integer) in the table
};

// Which program platform writes and reads a column or a table.
enum class PlatformUse : uint8_t { Both, PlainOnly, SPOnly };

struct ColumnDef {
  std::string_view name;
  ColumnType type;
  // 1-based position in the insert statement's column list; equals the update position except
  // where the two statements order the columns differently (Company, Options). Persisted in
  // statement texts: must not change.
  int16_t insert_position;
  PlatformUse platform = PlatformUse::Both;
};

enum class TableKind : uint8_t {
  Company,        // the company record, key CompanyID assigned by the database
  PerCompanyRow,  // at most one row per company, keyed by CompanyID (Options, Notes, judgments)
  Series,         // many rows per company: own autonumbered key plus a CompanyID column
  Reference,      // shared lookup table with an autonumbered key
  Shared,         // other shared tables (comparisons, PERT reports, market averages)
};

struct TableDef {
  std::string_view name;
  // The key column: autonumbered for Company, Series, Reference and most Shared tables;
  // "CompanyID" for PerCompanyRow tables; empty for a table without one (DJAverages).
  std::string_view key;
  TableKind kind;
  // The value columns in update-statement order, without the key and without the CompanyID
  // column of a Series or PerCompanyRow table.
  std::span<const ColumnDef> columns;
  PlatformUse platform = PlatformUse::Both;
  // For a Series table, the load statement's ordering (" order by YearlyID asc").
  std::string_view load_order = {};
};

}  // namespace kwx

#endif  // KWX_MODEL_TABLE_DEF_H_
