// The database object backed by an SQLite file: executes the loader's Jet-dialect statements
// and hands query results back as arrays.
#ifndef KWX_SERVICES_SQLITE_DATABASE_H_
#define KWX_SERVICES_SQLITE_DATABASE_H_

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "automation/services.h"
#include "services/database_engine.h"
#include "automation/variant.h"
#include "services/statement_trace.h"

struct sqlite3;
struct sqlite3_stmt;

namespace kwx {
class SeriesKeyMemo;
struct SqlParameter;
namespace sqlite_support {
class StatementCache;
struct StatementSlot;
class WalCheckpointer;
}  // namespace sqlite_support

// One database connection at a time. Statements arrive in the Jet dialect and are translated
// (jet_dialect.h) before SQLite sees them. Values come back typed from the declared column
// types of the schema (create_database.h writes those types):
//   DATETIME -> Date (stored as ISO yyyy-mm-dd text, StoredDateText; a number is a serial;
//               text that does not parse comes back as text)   BIT -> Boolean (stored 1/0)
//   SINGLE -> Single   SMALLINT -> Integer   INTEGER -> Long   TEXT -> String   NULL -> Null
// and, without a declared type (max(...)), by storage: whole numbers as Long when they fit
// (else Double), reals as Double, text as String.
//
// Speed: the values written into a statement's text are lifted out again (ParameterizeJetSql)
// and bound to a compiled statement kept by the literal-free shape, so the loader's repeated
// statements are compiled once per connection. A shape SQLite refuses to compile runs as its
// plain translation, so lifting never changes a statement's answer.
//
// Safety: every connection runs with synchronous=FULL, so each committed transaction is on disk
// when the commit returns and a power loss cannot undo it (NORMAL under WAL could lose the last
// commits); foreign keys are enforced. New files are created in WAL mode (create_database.h);
// opening never changes a file's journal mode. The write-ahead log is copied back into the
// file by a second connection on a thread of its own (wal_checkpointer_internal.h). Every statement waits for another program's
// lock (up to 30 seconds) instead of failing at once, from the first statement on, and the
// outermost BeginTrans takes the write lock at once (BEGIN IMMEDIATE).
//
// Statement texts holding a NUL byte (kUnwritableValueMark, common/helpers.h) are refused
// before anything runs: that byte marks a value that could not be written as one literal.
//
// Series keys: inserted series rows take their key in their study's block
// (schema_ddl_internal.h). A file written before that rule is upgraded when it is opened, in
// one transaction (schema_upgrade_internal.h); a file that cannot be upgraded is not opened.
//
// The environment variable KWX_TRACE_SQL, read when the object is created, names a file to
// which every executed statement is appended as one JSON line:
//   {"sql": <text as received>, "ok": <bool>, "rows": <lngRowCount after it>}
// Not thread-safe: one caller at a time, as the loader uses it.
class SqliteDatabase final : public DatabaseEngine {
 public:
  SqliteDatabase();
  ~SqliteDatabase() override;
  SqliteDatabase(const SqliteDatabase&) = delete;
  SqliteDatabase& operator=(const SqliteDatabase&) = delete;

  // Closes any open database, then opens the existing SQLite file at `path` with foreign keys
  // enforced, upgrading a study database written by older code. False (and nothing created)
  // when the file does not exist, is not a database or cannot be upgraded; LastErrorMessage
  // then says why.
  bool blnOpenDatabase(std::string& path) override;
  // Closes the open database (an open transaction is rolled back), then compacts the file at
  // `path` in place. False when that file cannot be opened or compacted.
  bool CloseNCompact(std::string& path) override;
  // Executes exactly one statement. False when no database is open, the statement fails, or
  // the text holds a second statement (then nothing of it runs). A query sets `fields` to the
  // zero-based column names (even with no rows) and `data` to a (row, column) array from
  // (0, 0), or Empty when there are no rows; an action statement or a failure sets both Empty.
  bool blnExecute(const std::string& sql, Variant& fields, Variant& data) override;
  // The statement `statement.Text()` spells, answered as blnExecute answers that text (and
  // traced as that text), with its values bound to the statement compiled once for the
  // template. A value not certain to bind as its literal would be read sends the whole
  // statement through blnExecute.
  bool blnExecuteComposed(const ComposedStatement& statement, Variant& fields,
                          Variant& data) override;
  // Rows returned by the last query, or rows changed by the last action statement; 0 after a
  // failed statement.
  int32_t lngRowCount() override;
  // Opens a transaction level (a savepoint inside an open one). Nothing happens without an
  // open database.
  void BeginTrans() override;
  // Keeps the innermost level's work (the outermost level commits). Nothing open: nothing.
  void CommitTrans() override;
  // Undoes the innermost level's work only and closes that level. Nothing open: nothing.
  void RollbackTrans() override;

  // Appends trace lines to the file at `path` from now on; an empty path stops file tracing.
  // False when the file cannot be opened for appending.
  bool SetTraceFile(const std::string& path) override;
  // Hands every trace line to `callback` as well; an empty callback stops it.
  void SetTraceCallback(TraceCallback callback) override;
  // Whether opening a file written by an older version upgrades it (the default). A program
  // that only reads turns this off: such a file then does not open, and LastErrorMessage says
  // that it needs an upgrade.
  void SetUpgradeAllowed(bool allowed) noexcept override { upgrade_allowed_ = allowed; }
  // How long a statement waits for another program's lock before it fails, in milliseconds
  // (30 s unless set); a connection opened later takes the new value, as does the open one.
  void SetBusyTimeout(int milliseconds) noexcept override;
  int BusyTimeoutMs() const noexcept { return busy_timeout_ms_; }
  // True once a statement or transaction call of this object has failed because another
  // program held the database locked longer than the busy timeout.
  bool LockFailureSeen() const noexcept override { return lock_failure_; }
  // Number of transaction levels open now.
  int TransactionDepth() const noexcept override { return depth_; }
  // Why the last blnExecute, blnOpenDatabase, CloseNCompact or transaction call failed: the
  // engine's own message (such as "no such table: Nope"), or the object's reason for refusing
  // a statement text before the engine saw it. Empty after a blnExecute that succeeded.
  const std::string& LastErrorMessage() const noexcept override { return last_error_; }

 private:
  struct Closer {
    void operator()(sqlite3* db) const noexcept;
  };

  void Close() noexcept;
  // Runs one of the transaction control statements (constants of this file).
  bool RunInternal(const char* sql) noexcept;
  // Undoes the innermost savepoint level and ends it.
  bool RollbackLevel() noexcept;
  // Records a failure of the last engine call that was another program's lock.
  void NoteLockFailure() noexcept;
  bool ExecuteOne(const std::string& sql, Variant& fields, Variant& data);
  // Runs the translated `shape` with `values` bound, on the statement compiled once for it.
  // std::nullopt when SQLite does not take the shape as it stands (a value stood where it
  // takes no parameter): the statement's plain translation decides then.
  // `slot`, when given, keeps the shape's compiled statement between runs.
  std::optional<bool> RunShape(const std::string& shape, const std::vector<SqlParameter>& values,
                               Variant& fields, Variant& data,
                               sqlite_support::StatementSlot* slot = nullptr);
  // How a template's statements run: the translated shape they take (empty when they run as
  // text), and the first value standing in the condition (the piece before it says `where`),
  // from which on a text value makes the statement run as text.
  struct TemplateRun {
    std::string shape;
    size_t condition_from = 0;
    std::vector<bool> date_columns;  // per value, whether its column stores dates
    std::unique_ptr<sqlite_support::StatementSlot> slot;  // the shape's compiled statement
  };
  // How the template's statements run, or null when they run as text.
  TemplateRun* TemplateShape(const StatementTemplate& shape);
  // Keeps `message` as the last error and answers false.
  bool Refuse(std::string message);

  std::unique_ptr<sqlite3, Closer> db_;
  // Declared after db_ so it is destroyed (its statements finalized) before the connection.
  std::unique_ptr<sqlite_support::StatementCache> statements_;
  // Copies the connection's write-ahead log into the file off the saving thread; gone before
  // the connection closes (Close).
  std::unique_ptr<sqlite_support::WalCheckpointer> checkpointer_;
  int32_t row_count_ = 0;
  int depth_ = 0;
  bool upgrade_allowed_ = true;
  int busy_timeout_ms_ = 30000;
  bool lock_failure_ = false;
  // What the last statement learned of the key the next insert of a series row takes.
  std::unique_ptr<SeriesKeyMemo> series_keys_;
  // Per template (by its id), how its statements run. The values of the composed statement
  // running now.
  std::unordered_map<uint64_t, TemplateRun> template_shapes_;
  std::vector<SqlParameter> composed_values_;
  // Per series table, the compiled query of the highest key of a study's block.
  std::vector<sqlite3_stmt*> highest_key_;
  // The transaction control statements compiled so far, by their text's constant.
  std::array<std::pair<const char*, sqlite3_stmt*>, 6> control_{};
  // The key the loader's insert of a row of series `table` for the study `company` takes.
  // `known` is the key what the statement before told gives it, if any.
  std::optional<int64_t> NewSeriesKey(int table, const SqlParameter& company,
                                      std::optional<int64_t> known);
  std::string last_error_;
  StatementTrace trace_;
};

}  // namespace kwx

#endif  // KWX_SERVICES_SQLITE_DATABASE_H_
