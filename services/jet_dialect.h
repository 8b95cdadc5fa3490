// The Jet dialect of the statements the loader composes, translated into the SQL a standard
// engine speaks. A pure text-to-text translation with no engine attached, so every backend
// can put it in front of its own statement preparation.
#ifndef KWX_SERVICES_JET_DIALECT_H_
#define KWX_SERVICES_JET_DIALECT_H_

#include <string>
#include <string_view>

namespace kwx {

// Translates one Jet statement. Outside literals and identifiers:
//   "Delete * From" (any case, any blanks)  -> "DELETE FROM"
//   the words True / False (any case)       -> -1 / 0 (Jet's True is -1)
//   a date literal #11/22/2026#             -> '11/22/2026' (reformatted as M/d/yyyy when it
//                                              is another date form; kept as written when it
//                                              does not parse as a date)
//   a double-quoted literal "O'Neil"        -> 'O''Neil' (Jet quotes identifiers with
//                                              brackets, so a double-quoted text is a value;
//                                              one glued to a "." is a qualified name and
//                                              is kept)
// Text inside '...' literals, [...] identifiers and comments is copied unchanged, so a value
// can never be turned into SQL. Everything else is copied byte for byte. Never fails: text it
// does not understand (an unterminated literal) is copied as it stands and left to the engine
// to refuse.
std::string TranslateJetSql(std::string_view jet_sql);

}  // namespace kwx

#endif  // KWX_SERVICES_JET_DIALECT_H_
