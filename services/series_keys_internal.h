// The database object's part in keeping series rows in per-study key blocks
// (schema_ddl_internal.h): it recognises the statement shapes that insert a series row and that
// update one by its key, and gives the inserts their key as part of the statement itself. It
// also recognises the loader's other inserts of one row, which compile as a row of values.
#ifndef KWX_SERVICES_SERIES_KEYS_INTERNAL_H_
#define KWX_SERVICES_SERIES_KEYS_INTERNAL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kwx {

class Variant;
struct SqlParameter;

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
    // The loader's query of a series' first key for a study:
    // "select min(KEY) from T where CompanyID = ?".
    kFirstKey,
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

// What a database object knows, from the statement it ran last, of the key the next insert of
// a series row takes, for the very next statement only (see kSeriesKeyBlock).
class SeriesKeyMemo {
 public:
  struct Known {
    int table;    // the series table, as its index among AllTables()
    int64_t key;  // free
    bool run;     // the keys after it in its block are free too
  };

  // Taken as each statement starts, so that it holds for that statement alone.
  std::optional<Known> Take() noexcept { return std::exchange(known_, std::nullopt); }
  // Another program may write between transactions, and an undone level may hold rows.
  void Forget() noexcept { known_.reset(); }

  // The key an insert of a row of series `table` for study `company` (the insert's first
  // value) takes by `known`, or nothing when the table must be asked or the value is no ID.
  static std::optional<int64_t> KeyFor(const std::optional<Known>& known, int table,
                                       const SqlParameter& company);
  // After a statement that succeeded: an insert that gave its row `key` (`before` what was
  // known as it started), an update by key that found no row at `key`, a first-key query
  // that found no row of study `company`. What an insert or a query learns holds only inside a
  // transaction: outside one, another program may write before the next statement.
  void Inserted(const std::optional<Known>& before, int table, int64_t company, int64_t key,
                bool in_transaction) noexcept;
  void FoundNoRowAt(int table, int64_t key) noexcept;
  void FoundNoRowsOf(int table, int64_t company, bool in_transaction) noexcept;
  // All a statement of `series`'s role that succeeded tells, by its values, the key it gave its
  // row (`known` what was known as it started), its rows and its answer.
  void Learn(const SeriesShape& series, const std::optional<Known>& known,
             const std::vector<SqlParameter>& values, std::optional<int64_t> key, int32_t rows,
             const Variant& data, bool in_transaction);

 private:
  std::optional<Known> known_;
};

// A query of the highest key of series table `table` (an index among AllTables()) in the block
// of the study given as parameter 1; NULL when the block is empty.
std::string HighestKeySql(int table);

}  // namespace kwx

#endif  // KWX_SERVICES_SERIES_KEYS_INTERNAL_H_
