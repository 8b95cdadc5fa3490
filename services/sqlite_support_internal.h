// SQLite helpers of the database object, kept out of its public header: typed column values,
// the Jet functions registered on each connection, and the one-statement check.
#ifndef KWX_SERVICES_SQLITE_SUPPORT_INTERNAL_H_
#define KWX_SERVICES_SQLITE_SUPPORT_INTERNAL_H_

#include <sqlite3.h>

#include <string_view>

#include "automation/variant.h"

namespace kwx {
namespace sqlite_support {

// How a declared column type (sqlite3_column_decltype) is read back.
enum class DeclaredKind : uint8_t { None, Text, Single, Double, Integer, Long, Boolean, Date };

// The kind of a declared type name, case-insensitively; None for a null or unknown name.
DeclaredKind KindOfDeclaredType(const char* decltype_name);

// The value of `column` in the current row of `stmt`, typed by `kind` (see SqliteDatabase for
// the rules). Never raises.
Variant ColumnValue(sqlite3_stmt* stmt, int column, DeclaredKind kind);

// Registers datediff(interval, date1, date2) on `db`: the count of interval boundaries from
// date1 to date2 (kwx::DateDiff). A date is a serial number or a text that ParseDate reads;
// answers NULL when either date is missing or does not parse, and an SQL error for an
// interval DateDiff refuses. False when SQLite refuses the registration.
bool RegisterJetFunctions(sqlite3* db);

// True when `tail` (what sqlite3_prepare_v2 left unparsed) holds only blanks, semicolons and
// comments, so no second statement follows.
bool TailIsEmpty(std::string_view tail);

}  // namespace sqlite_support
}  // namespace kwx

#endif  // KWX_SERVICES_SQLITE_SUPPORT_INTERNAL_H_
