// The SQL text layer of the database store. Every statement is composed as complete text with
// its values written in place; these are the rules that turn values into that text and back,
// the statements shared by the reference-table and deletion code, the by-name access to a
// query's row set and the ID/name lookups against a reference table.
//
// Values in text: apostrophes inside a text value become the character U+00FF (ChrW(255)) and
// the value is enclosed in apostrophes; nothing is ever doubled. Reading turns U+00FF back
// into apostrophes.
#ifndef KWX_ACCESS_SQL_TEXT_H_
#define KWX_ACCESS_SQL_TEXT_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "access/error_report.h"
#include "automation/services.h"
#include "automation/variant.h"
#include "common/helpers.h"
#include "model/table_def.h"

namespace kwx {

// ---- Writing values ----------------------------------------------------------------------

// The text/date writer. Text: every apostrophe replaced by U+00FF, then trimmed of blanks and
// enclosed in apostrophes (QuoteSQLText with the apostrophe prescribed): "O'Neil" gives
// "'OÿNeil'". A date: its "Short Date" form enclosed in apostrophes ("'11/22/2026'"). Any other
// variant type, Empty and Null included, gives "''". Never raises.
std::string SqlText(const Variant& value);

// "True" or "False" for the value converted to Boolean. Raises the conversion's error
// (err::kInvalidUseOfNull for Null, err::kTypeMismatch for text that is no Boolean).
std::string SqlBoolean(const Variant& value);

// The value converted to a 16-bit (SqlInteger) or 32-bit (SqlLong) integer, rounded half to
// even, as plain decimal. Raises the conversion's error (err::kOverflow when out of range).
std::string SqlInteger(const Variant& value);
std::string SqlLong(const Variant& value);

// The value converted to single (at most 7 significant digits) or double (at most 15)
// precision, written by NumberText. Raises the conversion's error.
std::string SqlSingle(const Variant& value);
std::string SqlDouble(const Variant& value);

// The text of a Boolean array: "1" for each True and "0" for each False element, from index 1
// (not the lower bound) to the upper bound. Not an array, or an array whose upper bound is 0,
// gives "". Raises the conversion's error for an element that is no Boolean (Null).
std::string FlagsText(const Variant& flags);
// FlagsText written by SqlText: "'0110'", or "''" for a value that is not an array.
std::string SqlFlags(const Variant& flags);

// The value written by the rule of a column of type `type`: Text, Date and Variant by
// SqlText; Flags by SqlFlags; Single by SqlSingle; Integer by SqlInteger; Long and Reference
// (a row ID in the table) by SqlLong; Boolean by SqlBoolean. Raises as the chosen writer.
std::string SqlValue(const Variant& value, ColumnType type);

// The same writers appending to `out`, for composing a statement without a string per value.
// AppendSqlText writes `text` by the text rule of SqlText; AppendSqlInteger writes plain
// decimal; AppendSqlValue writes by SqlValue's rule and raises as SqlValue (`out` may then
// hold part of the value).
void AppendSqlText(std::string& out, std::string_view text);
void AppendSqlInteger(std::string& out, int64_t value);
void AppendSqlValue(std::string& out, const Variant& value, ColumnType type);

// The text of a key written into a statement as it stands ("text of the ID"): a value's text
// by CStr, kept as it is when it is a number's text (digits with an optional sign, point and
// exponent) or empty. Any other text would be read as SQL and change the statement's shape; it
// is answered behind kUnwritableValueMark (common/helpers.h), so the statement it goes into is
// refused as a whole, as a statement with a key the database cannot read fails. Raises the
// conversion's error (err::kInvalidUseOfNull for Null).
std::string SqlKeyText(const Variant& key);

// ---- Reading values ----------------------------------------------------------------------

// A text value read from the database: the value as text with every U+00FF turned back into
// an apostrophe. Null and Empty (a missing value) give "". Raises err::kTypeMismatch for an
// array or an object.
std::string TextFromSql(const Variant& value);

// The value of column `name` in row `row` of a row set: `fields` the one-dimensional array of
// column names, `data` the two-dimensional array indexed (row, column). Names compare
// case-insensitively and the first matching column wins. Answers Empty when `fields` holds no
// array or no column matches. Raises err::kTypeMismatch when `data` holds no array and
// err::kSubscript when it has no element (row, column).
Variant FieldValue(std::string_view name, const Variant& fields, const Variant& data, int32_t row);

// ---- Statements --------------------------------------------------------------------------
// Every piece is inserted verbatim: table, field and key names as given, QUOTED values as
// already written by the caller (QuoteSQLText with the apostrophe for reference names, or one
// of the value writers above), IDs and keys as plain decimal text.

// "select " NAMEFIELD "  from " TABLE " where " IDFIELD "=" ID ";"
std::string NameOfIdSql(std::string_view name_field, std::string_view table,
                        std::string_view id_field, int32_t id);
// "select " IDFIELD "  from " TABLE " where " NAMEFIELD "=" QUOTED NAME (no semicolon).
std::string IdOfNameSql(std::string_view id_field, std::string_view table,
                        std::string_view name_field, std::string_view quoted_name);
// "select * from " TABLE
std::string LoadTableSql(std::string_view table);
// "Delete * From " TABLE " Where " FIELD "=" VALUE ";"
std::string DeleteRowsSql(std::string_view table, std::string_view field, std::string_view value);
// "Update " TABLE "   set " FIELD "=" QUOTED VALUE " Where " KEYFIELD "=" KEY ";"
std::string UpdateFieldSql(std::string_view table, std::string_view field,
                           std::string_view quoted_value, std::string_view key_field,
                           std::string_view key);
// "Insert into " TABLE "(" FIELD ")" "     select " QUOTED VALUE ";"
std::string InsertRowSql(std::string_view table, std::string_view field,
                         std::string_view quoted_value);
// "delete * from " TABLE, then " where " and the conditions joined with " and " when there is
// at least one non-empty condition. Empty conditions are skipped.
std::string DeleteWhereSql(std::string_view table, std::span<const std::string> conditions);

// ---- Reference lookups -------------------------------------------------------------------

// The name of row `id` of a reference table. When `ids` or `names` holds no array (no cache),
// runs NameOfIdSql through `db` and answers the text of data (0, 0), or "" when the statement
// fails or returns no rows. With both caches, never touches `db`: walks `ids` from its lower to
// its upper bound, reads each entry by Val (the leading number of its text, so "12abc" is 12)
// and answers the name at the first index equal to `id`, or "" when none is. Any error (a Null
// name, a short names array, a failing database object) answers "". Never raises.
std::string LookupNameByID(int32_t id, std::string_view id_field, std::string_view name_field,
                           std::string_view table, const Variant& ids, const Variant& names,
                           IDatabase& db);

// The row ID of `name` in a reference table. With both caches (arrays), never touches `db`:
// answers the ID at the first index of `names` equal to `name` case-insensitively (`name` as
// given, not trimmed), rounded to a 32-bit integer; 0 when no entry matches. Without them,
// runs IdOfNameSql (apostrophe quoting) through `db` and answers the number in data (0, 0), or
// 0 when the statement fails or returns no rows. Any error answers 0. Never raises.
int32_t LookupIDByName(std::string_view name, std::string_view id_field,
                       std::string_view name_field, std::string_view table, const Variant& ids,
                       const Variant& names, IDatabase& db);

}  // namespace kwx

#endif  // KWX_ACCESS_SQL_TEXT_H_
