// The database object's engine for a study database on a PostgreSQL server: executes the
// loader's Jet-dialect statements there and hands query results back as arrays, exactly as
// the SQLite engine does for a file.
#ifndef KWX_SERVICES_POSTGRES_DATABASE_H_
#define KWX_SERVICES_POSTGRES_DATABASE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "automation/variant.h"
#include "services/database_engine.h"
#include "services/statement_trace.h"
#include "services/status.h"

struct pg_conn;

namespace kwx {
class SeriesKeyMemo;
struct SqlParameter;

// True when `path` names a PostgreSQL database (a libpq URI: it starts with "postgresql://"
// or "postgres://") rather than a SQLite file.
bool IsPostgresUri(std::string_view path) noexcept;

// Lays out the study tables (the same declarations as a new SQLite file: schema_ddl_internal.h)
// in the PostgreSQL database `uri`, in one transaction, marked with the current schema
// version. Refuses a database that holds a study table already (nothing is changed then).
// What CreatePostgresDatabase's message says of a server database that holds the study tables
// already.
inline constexpr const char* kAlreadyAStudyDatabase = "already holds a study database";
Status CreatePostgresDatabase(const std::string& uri);

// One connection at a time, opened from a libpq URI; "postgresql://" alone takes every setting
// from the PG* environment variables. Without a connect_timeout of its own (in the URI or
// PGCONNECT_TIMEOUT) a connection attempt gives up after 10 seconds.
//
// Statements are translated as for SQLite (jet_dialect.h: the same dates, Booleans 1/0,
// apostrophes, case-insensitive comparison through the collations the schema creates), their
// literals lifted into parameters, and each shape prepared once per connection. Results come
// back with the column names in the declarations' own case (the server keeps them in lower
// case) and values typed as the SQLite engine types them, from the declared type of the
// table column a result column comes from, else from the server's type.
//
// Many writers: every writing transaction (the outermost BeginTrans, and an insert, update or
// delete run outside one) first takes one transaction lock of the database, as a SQLite
// writer takes the file's write lock, and keeps it to its end. Writers therefore never
// interleave (a study's new key read back by symbol, a series block's highest key are only
// ever seen by the one writer), never wait on each other in a cycle, and readers never wait.
// Under READ COMMITTED no serialization failure arises between them; a statement outside a
// transaction that still meets one or a deadlock (a foreign program's lock) is run again, up
// to five times. Inside a transaction the first failure ends it on the server: every later
// statement of it fails until it is rolled back (the loader rolls a save back at its first
// failure anyway).
//
// Series keys: the loader's insert of a series row takes its key in its study's block
// (schema_ddl_internal.h) as on SQLite; any other insert is moved there by the key trigger.
//
// Not thread-safe: one caller at a time, as the loader uses it.
class PostgresDatabase final : public DatabaseEngine {
 public:
  PostgresDatabase();
  ~PostgresDatabase() override;
  PostgresDatabase(const PostgresDatabase&) = delete;
  PostgresDatabase& operator=(const PostgresDatabase&) = delete;

  // Closes any open connection, then connects to `uri`. A database without study tables
  // opens (kwx init lays them out); one marked with another schema version does not. False
  // when the server cannot be reached or refuses; LastErrorMessage then says why.
  bool blnOpenDatabase(std::string& uri) override;
  // Closes the connection (an open transaction is rolled back), then vacuums the database
  // `uri`. False when it cannot be reached or vacuumed.
  bool CloseNCompact(std::string& uri) override;
  // As SqliteDatabase::blnExecute: exactly one statement; a text holding a NUL byte or a
  // second statement is refused before anything of it runs.
  bool blnExecute(const std::string& sql, Variant& fields, Variant& data) override;
  // Rows returned by the last query, or rows changed by the last action statement; 0 after a
  // failed statement.
  int32_t lngRowCount() override { return row_count_; }
  // Opens a transaction level: the outermost is a transaction holding the write lock, an
  // inner one a savepoint. Nothing happens without an open connection.
  void BeginTrans() override;
  // Keeps the innermost level's work (the outermost level commits).
  void CommitTrans() override;
  // Undoes the innermost level's work only and closes that level.
  void RollbackTrans() override;

  bool SetTraceFile(const std::string& path) override { return trace_.SetFile(path); }
  void SetTraceCallback(TraceCallback callback) override {
    trace_.SetCallback(std::move(callback));
  }
  // A server database is always laid out at the current version; nothing to switch.
  void SetUpgradeAllowed(bool allowed) noexcept override { upgrade_allowed_ = allowed; }
  int TransactionDepth() const noexcept override { return depth_; }
  const std::string& LastErrorMessage() const noexcept override { return last_error_; }

  // Column kinds of a result (how a value's text is read back).
  enum class Kind : uint8_t { Text, Integer, Long, Single, Double, Boolean, Date, ServerBool };

 private:
  struct Prepared;
  struct Table;

  void Close() noexcept;
  bool ExecuteOne(const std::string& sql, Variant& fields, Variant& data);
  bool Refuse(std::string message);
  // Adds the series indexes by study and key that a database laid out earlier lacks.
  void AddSeriesIndexes();
  // Runs `command` (transaction control) as a plain command; false with last_error_ set.
  bool Command(const char* command);
  // Forgets the series keys a statement handed on (another program may write between
  // transactions) and answers whether a transaction level is open to end.
  bool LevelOpen();
  // The declared kinds of the columns of the table with that object id, by column number.
  const Table* TableOf(unsigned int oid);
  // The key the loader's insert of a row of series `table` for the study `company` takes;
  // `known` is the key what the statement before told gives it, if any.
  std::optional<int64_t> NewSeriesKey(int table, const SqlParameter& company,
                                      std::optional<int64_t> known);

  pg_conn* conn_ = nullptr;
  std::unordered_map<std::string, std::unique_ptr<Prepared>> prepared_;
  std::unordered_map<unsigned int, std::unique_ptr<Table>> tables_;
  std::vector<std::string> highest_key_;  // prepared statement names, per series table
  int32_t row_count_ = 0;
  int depth_ = 0;
  // What the last statement learned of the key the next insert of a series row takes.
  std::unique_ptr<SeriesKeyMemo> series_keys_;
  std::string last_error_;
  bool upgrade_allowed_ = true;
  StatementTrace trace_;
};

}  // namespace kwx

#endif  // KWX_SERVICES_POSTGRES_DATABASE_H_
