// The Jet dialect of the statements the loader composes, translated into the SQL a standard
// engine speaks. A pure text-to-text translation with no engine attached, so every backend
// can put it in front of its own statement preparation.
#ifndef KWX_SERVICES_JET_DIALECT_H_
#define KWX_SERVICES_JET_DIALECT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/value_types.h"

namespace kwx {

// The text a date is stored as: ISO "yyyy-mm-dd", followed by " hh:mm:ss" when it has a time
// of day. Such texts sort and compare as the dates do, and other programs read them as dates.
// Raises err::kOverflow for a date outside the years 100 to 9999.
std::string StoredDateText(Date d);

// The date a text in the stored form (StoredDateText) names; nothing for any other text, or for
// a day the month does not have. Read without the general date parser: a load reads several
// dates per study.
std::optional<Date> ParseStoredDateText(std::string_view text);

// The collation that compares texts without regard to case in every script; an engine that
// runs translated statements registers it under this name. Texts of ASCII only are compared
// by the engine's own NOCASE instead, which an index declared NOCASE can serve.
inline constexpr const char* kNoCaseCollation = "kwx_nocase";

// Translates one Jet statement into the statement the engine runs on the stored forms of the
// values. Outside literals and identifiers:
//   "Delete * From" (any case, any blanks)  -> "DELETE FROM"
//   the words True / False (any case)       -> 1 / 0 (Booleans are stored as 1 and 0, as
//                                              other programs read them; a stored -1, Jet's
//                                              own True, still reads as True)
//   a date literal #11/22/2026#             -> '2026-11-22' (StoredDateText; kept as written
//                                              when it does not parse as a date)
//   a text that parses as a date and goes   -> its StoredDateText, so that stored dates sort
//   to a date column (an insert's value, an    and compare as dates ("1/5/2026" gives
//   assignment) or is compared with one        '2026-01-05'); a date column is one the
//                                              declared tables store dates in
//   any other text                          -> with each U+00FF turned into the apostrophe
//                                              it stands for in statements: the database
//                                              keeps the apostrophe itself
//   a text compared by = <> < > <= >=       -> the text followed by COLLATE NOCASE, or by
//   (not a date)                               COLLATE kwx_nocase when it holds more than
//                                              ASCII: Jet compares text without regard to
//                                              case, in every script
//   a double-quoted literal "O'Neil"        -> 'O''Neil' (Jet quotes identifiers with
//                                              brackets, so a double-quoted text is a value;
//                                              one glued to a "." is a qualified name and
//                                              is kept)
// Text inside '...' literals, [...] identifiers and comments is copied unchanged but for the
// stored forms above, so a value can never be turned into SQL. Everything else is copied byte
// for byte. Never fails: text it does not understand (an unterminated literal) is copied as it
// stands and left to the engine to refuse.
std::string TranslateJetSql(std::string_view jet_sql);

// One value lifted out of a statement, typed as the engine would have read the literal: a
// whole number that fits 64 bits is Integer, any other number Real, a quoted or date literal
// Text (True/False are the Integers -1/0).
struct SqlParameter {
  enum class Kind : uint8_t { Integer, Real, Text };
  Kind kind = Kind::Integer;
  int64_t integer = 0;
  double real = 0.0;
  std::string text;
};

// A translated statement split into its literal-free shape and the values taken out of it.
struct ParameterizedSql {
  // The translated text with each lifted literal replaced by "?"; statements differing only
  // in their values share one shape, so a compiled shape can be reused. Digits that follow a
  // lifted literal directly are set apart by a blank ("? 1"), so a "?" never becomes a
  // numbered placeholder and the shape is refused where the literal form is.
  std::string shape;
  // The lifted values in the order of their "?" in `shape`.
  std::vector<SqlParameter> values;
  // False when the statement is run as its plain translation instead (shape holds exactly
  // what TranslateJetSql gives and `values` is empty): it is no select, insert, update or
  // delete, or it already holds parameters of its own.
  bool lifted = false;
};

// The parameter a value written into a statement as `literal` (a number's text, a '...' text,
// True or False) is lifted into when it goes to a column that stores dates (`date_column`,
// IsDateColumn of its name) or not: the very value ParameterizeJetSql takes out of a statement
// holding it there (a text going to a date column as its stored date text, the apostrophe
// U+00FF stands for put back). False, with `value` unspecified, for any other literal, or one
// holding a NUL byte: such a value is left to the statement's text.
bool LiteralParameter(std::string_view literal, bool date_column, SqlParameter& value);
// True when a column of that name stores dates in the declared tables (names compared without
// regard to case, as the engine compares them).
bool IsDateColumn(std::string_view name);
// LiteralParameter of NumberText(v), without writing and reading the text. False for a
// number that is not finite.
bool SingleParameter(float v, SqlParameter& value);

// Translates `jet_sql` exactly as TranslateJetSql does and, in the same pass, lifts out the
// literals whose place a bound value can take without changing what the statement does or
// answers. Kept as written: the literals of a query's result columns (they name the columns
// of the row set), a text after AS (an alias), everything in ORDER BY, GROUP BY, HAVING, LIMIT
// and OFFSET (a number there is a column position or a count), numbers glued to a name or too
// large for 64 bits, and hexadecimal numbers. Never fails.
ParameterizedSql ParameterizeJetSql(std::string_view jet_sql);

// `shape` (ParameterizedSql::shape, or a text derived from it) with its placeholders numbered
// for an engine that binds values by number only: the k-th "?" outside literals, quoted names
// and comments becomes "$k". Everything else is copied byte for byte.
std::string NumberPlaceholders(std::string_view shape);

}  // namespace kwx

#endif  // KWX_SERVICES_JET_DIALECT_H_
