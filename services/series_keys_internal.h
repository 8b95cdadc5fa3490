// The database object's part in keeping series rows in per-study key blocks
// (schema_ddl_internal.h): it recognises the statement shapes that insert a series row and that
// update one by its key, and gives the inserts their key as part of the statement itself. It
// also recognises the loader's other inserts of one row, which compile as a row of values.
#ifndef KWX_SERVICES_SERIES_KEYS_INTERNAL_H_
#define KWX_SERVICES_SERIES_KEYS_INTERNAL_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace kwx {

struct SeriesShape {
  enum class Role : uint8_t {
    kNone,
    // The loader's insert of a series row: "insert into T (CompanyID, ...) select ?, ...",
    // every value lifted, the study's ID the first. `compiled` is the shape to compile
    // instead: the same row as a values list, with the row's key added as the last column,
    // given as parameter value_count + 1.
    kInsert,
    // An update of one series row by its key: "update T set ... where KEY = ?", the key the
    // last value.
    kKeyedUpdate,
    // An insert of one row into any other table by a select of lifted values alone. `compiled`
    // is the same row as a values list.
    kRowInsert,
  };
  Role role = Role::kNone;
  int table = -1;  // the table, as its index among AllTables()
  std::string compiled;
};

// The role of the lifted statement `shape` (ParameterizeJetSql) holding `value_count` values.
SeriesShape ClassifySeriesShape(std::string_view shape, size_t value_count);

// True when study `company_id` has a key block: its ID is not negative and the whole block
// fits in a 64-bit key.
bool HasStudyBlock(int64_t company_id);

// True when `key` lies in the key block of study `company_id` (false for a study without one).
bool InStudyBlock(int64_t key, int64_t company_id);

// A query of the highest key of series table `table` (an index among AllTables()) in the block
// of the study given as parameter 1; NULL when the block is empty.
std::string HighestKeySql(int table);

}  // namespace kwx

#endif  // KWX_SERVICES_SERIES_KEYS_INTERNAL_H_
