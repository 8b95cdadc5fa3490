// The reference (lookup) tables: sectors, exchanges, data sources and industries. Each pairs a
// database-assigned ID with a name; three of them are cached by the loader.
#ifndef KWX_ACCESS_REFERENCE_TABLES_H_
#define KWX_ACCESS_REFERENCE_TABLES_H_

#include <cstdint>
#include <string_view>

#include "automation/services.h"
#include "automation/variant.h"

namespace kwx {

// A table, its ID column and its name column (the name column is named like the table).
struct ReferenceTable {
  std::string_view table;
  std::string_view id_column;
  std::string_view name_column;
};

inline constexpr ReferenceTable kSectorTable{"Sector", "SectorID", "Sector"};
inline constexpr ReferenceTable kExchangeTable{"Exchange", "ExchangeID", "Exchange"};
inline constexpr ReferenceTable kDataSourceTable{"DataSource", "DataSourceID", "DataSource"};
inline constexpr ReferenceTable kIndustryTable{"Industry", "IndustryID", "Industry"};

// The in-memory copy of one reference table: two zero-based arrays of equal bounds, element i
// of both from the same row. Before the first load neither holds an array; a table that cannot
// be read, or is empty, gives one Empty element in each.
// Every routine takes the database object as a pointer: a null one behaves as an object whose
// every call fails, which the routine then handles by its own failure rule.
struct LookupCache {
  Variant ids;
  Variant names;
};

// The loader's cached reference tables.
struct ReferenceCaches {
  LookupCache sector;
  LookupCache exchange;
  LookupCache data_source;
};

// Reads the whole table into `cache` ("select * from T"). Continues past errors.
void LoadLookupTable(IDatabase* db, const ReferenceTable& t, LookupCache& cache);

// Renames the rows whose IDs are listed in `ids` to the names at the same indexes of `names`,
// and inserts a row for each element whose ID is 0, missing or unknown. Nothing happens unless
// both are arrays. Stops at the first error (rows already written stay written).
void SaveLookupRows(IDatabase* db, const ReferenceTable& t, const Variant& ids,
                    const Variant& names);

// Deletes the rows whose IDs are listed. Nothing happens unless `ids` is an array. Stops at the
// first error.
void DeleteLookupRows(IDatabase* db, const ReferenceTable& t, const Variant& ids);

// Makes sure a row named `name` exists: looks it up (in `cache` when it holds arrays, else in
// the database) and inserts it when missing. Answers true only when a row was inserted; the
// caller then reloads its cache. An empty name does nothing.
bool FindOrAddLookup(IDatabase* db, std::string_view name, const ReferenceTable& t,
                     const LookupCache& cache);

// Makes sure an Industry row exists for `code` (or, for a code below 1, for `name`) and carries
// `name`: renames the row of an existing code whose name differs, inserts (code, name) when
// nothing matches. Results of the statements are not checked.
void StoreIndustryCode(IDatabase* db, int32_t code, std::string_view name);

}  // namespace kwx

#endif  // KWX_ACCESS_REFERENCE_TABLES_H_
