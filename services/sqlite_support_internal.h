// SQLite helpers of the database object, kept out of its public header: typed column values,
// the Jet functions registered on each connection, the one-statement check and the cache of
// compiled statements.
#ifndef KWX_SERVICES_SQLITE_SUPPORT_INTERNAL_H_
#define KWX_SERVICES_SQLITE_SUPPORT_INTERNAL_H_

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "automation/variant.h"
#include "services/series_keys_internal.h"

namespace kwx {
namespace sqlite_support {

// How a declared column type (sqlite3_column_decltype) is read back.
enum class DeclaredKind : uint8_t { None, Text, Single, Double, Integer, Long, Boolean, Date };

// The kind of a declared type name, case-insensitively; None for a null or unknown name.
DeclaredKind KindOfDeclaredType(const char* decltype_name);

// Appends to `out` the values of every column of the current row of `stmt`, column c typed
// by kinds[c] (see SqliteDatabase for the rules); kinds.size() must be the statement's column
// count. Raises only what growing `out` raises (std::bad_alloc).
void AppendRow(std::vector<Variant>& out, sqlite3_stmt* stmt,
               const std::vector<DeclaredKind>& kinds);

// The size up to which a statement journal stays in memory, held as one block (see
// PrepareSqliteLibrary). A study saved inside a batch journals well under a quarter of it.
inline constexpr int kStatementJournalSpill = 1 << 20;

// Sets SQLite up for the process, once, before its first connection:
// - memory statistics off: with them on, every allocation SQLite makes takes one process-wide
//   mutex, a cost on every row a save writes;
// - statement journals kept in memory up to kStatementJournalSpill, as one block. Every
//   insert into a table with a trigger journals the pages it changes, so that the statement
//   can be undone alone; a journal kept in memory otherwise grows and shrinks by the kilobyte,
//   several allocations per statement (a fifth of a bulk import's time), and one kept in a
//   file costs a small write per page. A journal that outgrows the block goes on in a
//   temporary file, written through the file layer of split_write_vfs_internal.h, which
//   becomes the process's default.
// Answers whether the journals are set so; not when the process had set SQLite up already (a
// host that uses SQLite itself keeps its own settings then).
bool PrepareSqliteLibrary();

// Registers datediff(interval, date1, date2) on `db`: the count of interval boundaries from
// date1 to date2 (kwx::DateDiff). A date is a serial number or a text that ParseDate reads;
// answers NULL when either date is missing or does not parse, and an SQL error for an
// interval DateDiff refuses. Registers too the collation kNoCaseCollation (jet_dialect.h), which
// compares texts as CompareNoCase does. False when SQLite refuses a registration.
bool RegisterJetFunctions(sqlite3* db);

// True when `tail` (what sqlite3_prepare_v2 left unparsed) holds only blanks, semicolons and
// comments, so no second statement follows.
bool TailIsEmpty(std::string_view tail);

// Compiled statements kept by their literal-free shape, the least recently used one dropped
// when the cache is full. Owns the statements it holds and finalizes them when they are
// dropped, cleared or the cache is destroyed, so it must be cleared before its connection
// is closed.
class StatementCache {
 public:
  // A compiled shape and what the last run learned about its result columns.
  struct Entry {
    sqlite3_stmt* stmt = nullptr;
    // Column names (the zero-based array every run answers) and declared kinds, valid while
    // `described` and the statement has not been recompiled since (SQLite recompiles a
    // statement by itself when the schema changes).
    Variant names;
    std::vector<DeclaredKind> kinds;
    bool described = false;
    int recompiles = 0;
    // Values the last run answered: the next run of the same shape usually answers as many,
    // so its buffer is sized once instead of growing (and moving every value) as rows come.
    size_t last_values = 0;
    // What the shape does to a series table's rows (series_keys_internal.h).
    SeriesShape series;
  };

  // REQUIRES: capacity >= 1.
  explicit StatementCache(size_t capacity) : capacity_(capacity) {}
  ~StatementCache() { Clear(); }
  StatementCache(const StatementCache&) = delete;
  StatementCache& operator=(const StatementCache&) = delete;

  using Order = std::list<std::pair<std::string, Entry>>;
  // Where a caller that runs one shape again and again keeps its entry between runs, so that
  // the shape's text is not hashed and compared each time. Valid while the entry is held.
  struct Slot {
    Order::iterator at;
    uint64_t generation = 0;  // the cache's generation when `at` was kept; 0 for none
  };

  // The entry of `shape`, now the most recently used; nullptr when the shape is not held.
  // With a `slot`, the entry it keeps when that is still held, and the entry found is kept
  // in it.
  Entry* Find(const std::string& shape, Slot* slot = nullptr);
  // Takes ownership of `stmt`, compiled from `shape` (which must not be held yet), dropping
  // the least recently used entry when full. Answers the new entry, kept in `slot` if given.
  Entry* Insert(const std::string& shape, sqlite3_stmt* stmt, Slot* slot = nullptr);
  // Finalizes and forgets every statement.
  void Clear() noexcept;
  size_t size() const noexcept { return index_.size(); }

 private:
  size_t capacity_;
  Order order_;  // most recently used first
  std::unordered_map<std::string_view, Order::iterator> index_;  // keys view order_'s texts
  // Changes whenever an entry is dropped, which makes every slot kept before it stale.
  uint64_t generation_ = 1;
};

// A template's place in a connection's cache (StatementCache::Slot), kept with the template.
struct StatementSlot {
  StatementCache::Slot slot;
};

}  // namespace sqlite_support
}  // namespace kwx

#endif  // KWX_SERVICES_SQLITE_SUPPORT_INTERNAL_H_
