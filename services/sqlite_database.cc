#include "services/sqlite_database.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "automation/errors.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "common/helpers.h"
#include "services/jet_dialect.h"
#include "services/schema_ddl_internal.h"
#include "services/schema_upgrade_internal.h"
#include "services/series_keys_internal.h"
#include "services/sqlite_support_internal.h"
#include "services/wal_checkpointer_internal.h"

namespace kwx {
namespace {

using sqlite_support::DeclaredKind;
using sqlite_support::StatementCache;
using sqlite_support::StatementSlot;
using sqlite_support::WalCheckpointer;

constexpr const char* kSecondStatement =
    "the text holds a second statement (nothing of it was run)";

// Compiled shapes kept per connection: more than the loader's distinct statements, so a save
// or a load never compiles a shape twice.
constexpr size_t kCachedStatements = 512;

// The outermost transaction level takes the write lock when it begins (waiting for it as long
// as the busy timeout allows), so two writers never both read and then fail to write.
constexpr const char* kBegin = "BEGIN IMMEDIATE";
constexpr const char* kCommit = "COMMIT";
constexpr const char* kRollbackAll = "ROLLBACK";
// Every inner level is a savepoint of this one name: SQLite resolves a repeated name to the
// innermost level, which is exactly the nesting the loader needs.
constexpr const char* kSavepoint = "SAVEPOINT kwx_trans";
constexpr const char* kRelease = "RELEASE SAVEPOINT kwx_trans";
constexpr const char* kRollbackTo = "ROLLBACK TO SAVEPOINT kwx_trans";

// 2 MB of page cache a connection: what a study's save and load touch (the rightmost pages of
// each table and index, and the inner pages above them) fits. A larger cache only fills with
// pages of studies committed already, each new page of memory costing a page fault: with
// 16 MB a bulk import of 1,000 files took 0.80 s instead of 0.74 s.
constexpr const char* kCacheSize = "PRAGMA cache_size = -2048";

struct StatementFinalizer {
  void operator()(sqlite3_stmt* stmt) const noexcept { sqlite3_finalize(stmt); }
};
using StatementPtr = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

// Opens an existing database file; never creates one. A file that exists but is not a
// database opens without complaint, so the schema is read once to find out.
sqlite3* OpenExisting(const std::string& path, int busy_timeout_ms, std::string& error) {
  if (path.empty()) {
    error = "no database file named";
    return nullptr;
  }
  sqlite_support::PrepareSqliteLibrary();
  sqlite3* db = nullptr;
  // One caller at a time uses the connection (see the class comment), so SQLite's own
  // per-call locking of it is pure cost: every column read would take and drop a mutex.
  const int rc =
      sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  // Set before the first statement of the connection: reading the schema already needs a lock.
  if (rc == SQLITE_OK) sqlite3_busy_timeout(db, busy_timeout_ms);
  if (rc != SQLITE_OK ||
      sqlite3_exec(db, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr) !=
          SQLITE_OK) {
    error = db != nullptr ? sqlite3_errmsg(db) : "out of memory";
    sqlite3_close_v2(db);
    return nullptr;
  }
  return db;
}

void Bind(sqlite3_stmt* stmt, const std::vector<SqlParameter>& values) {
  int index = 1;
  for (const SqlParameter& v : values) {
    switch (v.kind) {
      case SqlParameter::Kind::Integer:
        sqlite3_bind_int64(stmt, index, v.integer);
        break;
      case SqlParameter::Kind::Real:
        sqlite3_bind_double(stmt, index, v.real);
        break;
      case SqlParameter::Kind::Text:
        // The values outlive the run; Unbind lets go of them before they go.
        sqlite3_bind_text(stmt, index, v.text.data(), static_cast<int>(v.text.size()),
                          SQLITE_STATIC);
        break;
    }
    ++index;
  }
}

// Lets go of the texts Bind bound without a copy.
void Unbind(sqlite3_stmt* stmt, const std::vector<SqlParameter>& values) {
  for (size_t i = 0; i < values.size(); ++i) {
    if (values[i].kind == SqlParameter::Kind::Text) {
      sqlite3_bind_null(stmt, static_cast<int>(i) + 1);
    }
  }
}

// The result column names of `stmt` as the zero-based array the answer carries, and in `kinds`
// how each column's values are read.
Variant Describe(sqlite3_stmt* stmt, std::vector<DeclaredKind>& kinds) {
  const int columns = sqlite3_column_count(stmt);
  std::vector<Variant> names;
  names.reserve(columns);
  kinds.clear();
  kinds.reserve(columns);
  for (int c = 0; c < columns; ++c) {
    const char* name = sqlite3_column_name(stmt, c);
    names.emplace_back(std::string(name != nullptr ? name : ""));
    kinds.push_back(sqlite_support::KindOfDeclaredType(sqlite3_column_decltype(stmt, c)));
  }
  return Variant(SafeArray::FromValues(std::move(names)));
}

// Runs the compiled, bound `stmt` to its end and fills the answer and `row_count`. A kept
// statement's `entry` carries its result description from run to run.
bool Run(sqlite3* db, sqlite3_stmt* stmt, StatementCache::Entry* entry, int32_t& row_count,
         Variant& fields, Variant& data) {
  // sqlite3_changes keeps the count of the last data statement, so a statement that changes
  // nothing (DDL) would report a stale count; the running total tells whether this one did.
  const int64_t before = sqlite3_total_changes64(db);
  // Stepped first: a statement SQLite recompiles (after a schema change) has its new columns
  // only afterwards.
  int step = sqlite3_step(stmt);
  const int columns = sqlite3_column_count(stmt);
  if (columns == 0) {
    if (step != SQLITE_DONE) return false;
    const int64_t changed =
        sqlite3_total_changes64(db) == before ? 0 : sqlite3_changes64(db);
    row_count = static_cast<int32_t>(std::min<int64_t>(changed, INT32_MAX));
    return true;
  }
  if (step != SQLITE_ROW && step != SQLITE_DONE) return false;

  Variant own_names;
  std::vector<DeclaredKind> own_kinds;
  const Variant* names = &own_names;
  const std::vector<DeclaredKind>* kinds = &own_kinds;
  if (entry != nullptr) {
    const int recompiles = sqlite3_stmt_status(stmt, SQLITE_STMTSTATUS_REPREPARE, 0);
    if (!entry->described || entry->recompiles != recompiles) {
      entry->names = Describe(stmt, entry->kinds);
      entry->described = true;
      entry->recompiles = recompiles;
    }
    names = &entry->names;
    kinds = &entry->kinds;
  } else {
    own_names = Describe(stmt, own_kinds);
  }

  std::vector<Variant> values;
  if (step == SQLITE_ROW) {
    values.reserve(entry != nullptr && entry->last_values > 0 ? entry->last_values
                                                              : static_cast<size_t>(columns));
  }
  int32_t rows = 0;
  for (; step == SQLITE_ROW; step = sqlite3_step(stmt)) {
    if (rows == INT32_MAX) return false;
    sqlite_support::AppendRow(values, stmt, *kinds);
    ++rows;
  }
  if (step != SQLITE_DONE) return false;
  if (entry != nullptr) entry->last_values = values.size();

  // The names are the statement's own, handed out shared: every run of a shape answers the
  // same names, and copying a hundred texts per query would cost as much as reading a row.
  fields = *names;
  if (rows > 0) data = Variant(SafeArray::FromRows(rows, columns, std::move(values)));
  row_count = rows;
  return true;
}

}  // namespace

void SqliteDatabase::Closer::operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }

SqliteDatabase::SqliteDatabase()
    : statements_(std::make_unique<StatementCache>(kCachedStatements)),
      series_keys_(std::make_unique<SeriesKeyMemo>()) {}

// Closing finalizes the compiled statements first; a connection closed with live statements
// would linger, and all its memory with it.
SqliteDatabase::~SqliteDatabase() { Close(); }

void SqliteDatabase::Close() noexcept {
  // The log's copier first: it must not copy while closing copies what the log holds.
  checkpointer_.reset();
  // The statements go first: a connection with live statements would linger unclosed.
  statements_->Clear();
  // Closing rolls back whatever transaction is still open.
  for (sqlite3_stmt*& query : highest_key_) {
    sqlite3_finalize(query);
    query = nullptr;
  }
  for (auto& [sql, stmt] : control_) {
    sqlite3_finalize(stmt);
    sql = nullptr;
    stmt = nullptr;
  }
  db_.reset();
  depth_ = 0;
  series_keys_->Forget();
}

bool SqliteDatabase::RunInternal(const char* sql) noexcept {
  if (!db_) return false;
  // Every save begins and ends a level: each of these statements is compiled once per
  // connection, found again by its constant, instead of being parsed on every run.
  auto kept = std::find_if(control_.begin(), control_.end(), [sql](const auto& control) {
    return control.first == sql || control.first == nullptr;
  });
  if (kept == control_.end()) {
    return sqlite3_exec(db_.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK;
  }
  if (kept->first == nullptr) {
    if (sqlite3_prepare_v3(db_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &kept->second,
                           nullptr) != SQLITE_OK) {
      return false;
    }
    kept->first = sql;
  }
  const int rc = sqlite3_step(kept->second);
  // The error stays the connection's for the caller to read.
  sqlite3_reset(kept->second);
  return rc == SQLITE_DONE;
}

bool SqliteDatabase::RollbackLevel() noexcept {
  // Ended only once undone: a level released without that would keep its changes.
  return RunInternal(kRollbackTo) && RunInternal(kRelease);
}

bool SqliteDatabase::blnOpenDatabase(std::string& path) {
  Close();
  last_error_.clear();
  const bool journals_in_memory = sqlite_support::PrepareSqliteLibrary();
  std::unique_ptr<sqlite3, Closer> db(OpenExisting(path, busy_timeout_ms_, last_error_));
  if (!db) return false;
  // Safety first (see the class comment): a commit is on disk when it returns. The journal
  // mode is the file's own and is left as it is: changing it needs the file to itself, and a
  // program that only reads must not need that.
  if (sqlite3_exec(db.get(), "PRAGMA foreign_keys = ON", nullptr, nullptr, nullptr) !=
          SQLITE_OK ||
      !sqlite_support::RegisterJetFunctions(db.get()) ||
      sqlite3_exec(db.get(), "PRAGMA synchronous = FULL", nullptr, nullptr, nullptr) !=
          SQLITE_OK) {
    last_error_ = sqlite3_errmsg(db.get());
    return false;
  }
  // Speed without giving up safety. A study saved inside a batch is a savepoint, and each
  // insert into a series table a statement journal of its own; those journals only serve
  // undoing a level, never durability, so they are kept in memory: in one block
  // (PrepareSqliteLibrary) or, where the process had set SQLite up before, as SQLite's own
  // in-memory journal (temp_store=MEMORY), which is slower but never writes a temporary file
  // a statement at a time. The page cache stays small (kCacheSize).
  if (!journals_in_memory) {
    sqlite3_exec(db.get(), "PRAGMA temp_store = MEMORY", nullptr, nullptr, nullptr);
  }
  sqlite3_exec(db.get(), kCacheSize, nullptr, nullptr, nullptr);
  if (!UpgradeSchema(db.get(), upgrade_allowed_, last_error_)) return false;
  db_ = std::move(db);
  checkpointer_ = std::make_unique<WalCheckpointer>(db_.get());
  return true;
}

bool SqliteDatabase::CloseNCompact(std::string& path) {
  Close();
  std::unique_ptr<sqlite3, Closer> db(OpenExisting(path, busy_timeout_ms_, last_error_));
  if (!db) return false;
  if (sqlite3_exec(db.get(), "VACUUM", nullptr, nullptr, nullptr) != SQLITE_OK) {
    last_error_ = sqlite3_errmsg(db.get());
    return false;
  }
  last_error_.clear();
  return true;
}

bool SqliteDatabase::blnExecute(const std::string& sql, Variant& fields, Variant& data) {
  const bool ok = trace_.Run(sql, fields, data, row_count_, last_error_,
                             [&] { return ExecuteOne(sql, fields, data); });
  if (!ok) NoteLockFailure();
  return ok;
}

SqliteDatabase::TemplateRun* SqliteDatabase::TemplateShape(
    const StatementTemplate& shape) {
  auto found = template_shapes_.find(shape.id);
  if (found == template_shapes_.end()) {
    // The template written with 0 for every value: each must come out as one lifted 0, in
    // order, and nothing else be lifted (a literal of the template's own would be).
    std::string text;
    for (size_t i = 0; i < shape.pieces.size(); ++i) {
      text += shape.pieces[i];
      if (i + 1 < shape.pieces.size()) text += '0';
    }
    ParameterizedSql lifted = ParameterizeJetSql(text);
    const bool usable =
        lifted.lifted && shape.columns.size() + 1 == shape.pieces.size() &&
        lifted.values.size() == shape.columns.size() &&
        std::all_of(lifted.values.begin(), lifted.values.end(), [](const SqlParameter& p) {
          return p.kind == SqlParameter::Kind::Integer && p.integer == 0;
        });
    // A text compared in the condition is compared without regard to case, which the
    // statement's own translation spells out and the shape (written with numbers) does not.
    size_t condition_from = 0;
    while (condition_from < shape.pieces.size() &&
           FindNoCase(shape.pieces[condition_from], "where") == std::string::npos) {
      ++condition_from;
    }
    std::vector<bool> date_columns;
    for (const std::string& column : shape.columns) date_columns.push_back(IsDateColumn(column));
    found = template_shapes_
                .emplace(shape.id, TemplateRun{usable ? std::move(lifted.shape) : "",
                                               condition_from, std::move(date_columns),
                                               std::make_unique<StatementSlot>()})
                .first;
  }
  return found->second.shape.empty() ? nullptr : &found->second;
}

bool SqliteDatabase::blnExecuteComposed(const ComposedStatement& statement, Variant& fields,
                                        Variant& data) {
  TemplateRun* run =
      db_ && statement.shape != nullptr ? TemplateShape(*statement.shape) : nullptr;
  if (run == nullptr || statement.literals.size() != statement.shape->columns.size()) {
    return IDatabase::blnExecuteComposed(statement, fields, data);
  }
  composed_values_.resize(statement.literals.size());
  for (size_t i = 0; i < statement.literals.size(); ++i) {
    const bool single = i < statement.singles.size() && statement.singles[i].has_value();
    if (!(single ? SingleParameter(*statement.singles[i], composed_values_[i])
                 : LiteralParameter(statement.literals[i], run->date_columns[i],
                                    composed_values_[i])) ||
        (composed_values_[i].kind == SqlParameter::Kind::Text && i >= run->condition_from)) {
      return IDatabase::blnExecuteComposed(statement, fields, data);
    }
  }
  bool compiled = true;
  const bool ok = StatementTrace::Answer(fields, data, row_count_, last_error_, [&] {
    const std::optional<bool> ran =
        RunShape(run->shape, composed_values_, fields, data, run->slot.get());
    compiled = ran.has_value();
    return ran.value_or(false);
  });
  if (!compiled) return IDatabase::blnExecuteComposed(statement, fields, data);
  if (!ok) NoteLockFailure();
  // The text is composed only for a trace that asks for it.
  if (trace_.on()) ResumeNext([&] { trace_.Write(statement.Text(), ok, row_count_); });
  return ok;
}

bool SqliteDatabase::ExecuteOne(const std::string& sql, Variant& fields, Variant& data) {
  if (!db_) return Refuse("no database is open");
  if (sql.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
    return Refuse("the statement is too long");
  }
  // A value that could not be written as one literal carries the mark (common/helpers.h); no
  // statement holding it may run, whether its values are lifted or it runs as plain text.
  if (sql.find(kUnwritableValueMark) != std::string::npos) {
    return Refuse("the statement holds a NUL byte (a value that cannot be written as a literal)");
  }
  ParameterizedSql lifted = ParameterizeJetSql(sql);
  if (lifted.lifted) {
    if (std::optional<bool> ok = RunShape(lifted.shape, lifted.values, fields, data)) return *ok;
  } else {
    // Series keys learned from the statement before hold for the next statement only.
    series_keys_->Forget();
  }

  const std::string text = lifted.lifted ? TranslateJetSql(sql) : std::move(lifted.shape);
  sqlite3_stmt* raw = nullptr;
  const char* tail = nullptr;
  const int rc = sqlite3_prepare_v2(db_.get(), text.data(), static_cast<int>(text.size()), &raw,
                                    &tail);
  StatementPtr stmt(raw);
  if (rc != SQLITE_OK) return Refuse(sqlite3_errmsg(db_.get()));
  if (!stmt) return Refuse("the text holds no statement");
  // Refuse before running anything: a value smuggled into the text must not become a
  // statement of its own.
  const char* end = text.data() + text.size();
  if (tail != nullptr && !sqlite_support::TailIsEmpty(std::string_view(tail, end - tail))) {
    return Refuse(kSecondStatement);
  }
  const bool ok = Run(db_.get(), stmt.get(), nullptr, row_count_, fields, data);
  if (!ok) last_error_ = sqlite3_errmsg(db_.get());
  return ok;
}

std::optional<bool> SqliteDatabase::RunShape(const std::string& shape,
                                             const std::vector<SqlParameter>& values,
                                             Variant& fields, Variant& data,
                                             StatementSlot* slot) {
  // What the statement before this one learned of the next series key holds for this one only.
  const std::optional<SeriesKeyMemo::Known> known = series_keys_->Take();
  StatementCache::Slot* kept = slot != nullptr ? &slot->slot : nullptr;
  StatementCache::Entry* entry = statements_->Find(shape, kept);
  if (entry == nullptr) {
    SeriesShape series = ClassifySeriesShape(shape, values.size());
    const std::string& compiled = series.compiled.empty() ? shape : series.compiled;
    const size_t parameters =
        values.size() + (series.role == SeriesShape::Role::kInsert ? 1 : 0);
    sqlite3_stmt* raw = nullptr;
    const char* tail = nullptr;
    const int rc = sqlite3_prepare_v3(db_.get(), compiled.data(),
                                      static_cast<int>(compiled.size()),
                                      SQLITE_PREPARE_PERSISTENT, &raw, &tail);
    StatementPtr stmt(raw);
    if (rc == SQLITE_OK && stmt) {
      // A second statement is refused before anything runs; the plain text holds it too.
      const char* end = compiled.data() + compiled.size();
      if (tail != nullptr && !sqlite_support::TailIsEmpty(std::string_view(tail, end - tail))) {
        return Refuse(kSecondStatement);
      }
      if (sqlite3_bind_parameter_count(stmt.get()) == static_cast<int>(parameters)) {
        entry = statements_->Insert(shape, stmt.release(), kept);
        entry->series = std::move(series);
      }
    }
    // Otherwise a literal stood where SQLite takes no value (a quoted name, too many
    // values): the plain translation below decides.
  }
  if (entry != nullptr) {
    Bind(entry->stmt, values);
    const SeriesShape::Role role = entry->series.role;
    std::optional<int64_t> key;
    if (role == SeriesShape::Role::kInsert) {
      // A key the insert takes; without one (a block that is full, a study ID out of range)
      // the key is left to the database and the key trigger.
      const SqlParameter& company = values.front();
      key = NewSeriesKey(entry->series.table, company,
                         SeriesKeyMemo::KeyFor(known, entry->series.table, company));
      const int place = static_cast<int>(values.size()) + 1;
      if (key) {
        sqlite3_bind_int64(entry->stmt, place, *key);
      } else {
        sqlite3_bind_null(entry->stmt, place);
      }
    }
    const bool ok = Run(db_.get(), entry->stmt, entry, row_count_, fields, data);
    if (!ok) {
      // Read now: binding again below clears the connection's error.
      last_error_ = sqlite3_errmsg(db_.get());
      NoteLockFailure();
    }
    if (ok) {
      series_keys_->Learn(entry->series, known, values, key, row_count_, data, depth_ > 0);
    }
    sqlite3_reset(entry->stmt);
    // Every value is bound again on the next run; only the texts, bound without a copy, must
    // not outlive theirs.
    Unbind(entry->stmt, values);
    return ok;
  }

  // Otherwise a literal stood where SQLite takes no value: the plain translation decides.
  return std::nullopt;
}

std::optional<int64_t> SqliteDatabase::NewSeriesKey(int table, const SqlParameter& company,
                                                    std::optional<int64_t> known) {
  if (company.kind != SqlParameter::Kind::Integer || !HasStudyBlock(company.integer)) {
    return std::nullopt;  // no block to take a key in: the key trigger decides
  }
  const int64_t id = company.integer;
  // A save inserts a series' rows one after another: the row after the last one inserted
  // takes the next key without asking the table again (nothing else ran in between), as does
  // a row an update just found missing, or the first row of a series the study has no rows of.
  if (known) return known;
  if (static_cast<size_t>(table) >= highest_key_.size()) highest_key_.resize(table + 1);
  sqlite3_stmt*& query = highest_key_[table];
  if (query == nullptr &&
      sqlite3_prepare_v3(db_.get(), HighestKeySql(table).c_str(), -1, SQLITE_PREPARE_PERSISTENT,
                         &query, nullptr) != SQLITE_OK) {
    return std::nullopt;
  }
  sqlite3_bind_int64(query, 1, id);
  std::optional<int64_t> key;
  if (sqlite3_step(query) == SQLITE_ROW) {
    key = sqlite3_column_type(query, 0) == SQLITE_NULL ? id * kSeriesKeyBlock
                                                       : sqlite3_column_int64(query, 0) + 1;
  }
  sqlite3_reset(query);
  if (key && !InStudyBlock(*key, id)) key.reset();
  return key;
}

bool SqliteDatabase::Refuse(std::string message) {
  last_error_ = std::move(message);
  return false;
}

int32_t SqliteDatabase::lngRowCount() { return row_count_; }

void SqliteDatabase::BeginTrans() {
  // Another program may write between transactions, and an undone level may hold the row.
  series_keys_->Forget();
  if (!db_) return;
  if (depth_ > 0 && sqlite3_get_autocommit(db_.get())) depth_ = 0;  // ended by a statement
  if (!RunInternal(depth_ == 0 ? kBegin : kSavepoint)) {
    last_error_ = std::string("BeginTrans failed: ") + sqlite3_errmsg(db_.get());
    NoteLockFailure();
    throw AutomationError(err::kInvalidCall, last_error_);
  }
  ++depth_;
}

void SqliteDatabase::CommitTrans() {
  // Another program may write between transactions, and an undone level may hold the row.
  series_keys_->Forget();
  if (!db_ || depth_ == 0) return;
  if (sqlite3_get_autocommit(db_.get())) {
    depth_ = 0;
    return;
  }
  const bool outermost = depth_ == 1;
  if (RunInternal(outermost ? kCommit : kRelease)) {
    --depth_;
    return;
  }
  // A level that cannot be kept is undone, so no transaction is left dangling; the caller
  // learns of it from the error.
  std::string message = std::string("CommitTrans failed: ") + sqlite3_errmsg(db_.get());
  last_error_ = message;
  NoteLockFailure();
  if (outermost) {
    RunInternal(kRollbackAll);
  } else {
    RollbackLevel();
  }
  --depth_;
  throw AutomationError(err::kInvalidCall, std::move(message));
}

void SqliteDatabase::RollbackTrans() {
  // Another program may write between transactions, and an undone level may hold the row.
  series_keys_->Forget();
  if (!db_ || depth_ == 0) return;
  if (sqlite3_get_autocommit(db_.get())) {
    depth_ = 0;
    return;
  }
  const bool ok = depth_ == 1 ? RunInternal(kRollbackAll) : RollbackLevel();
  --depth_;
  if (!ok) {
    throw AutomationError(err::kInvalidCall,
                          std::string("RollbackTrans failed: ") + sqlite3_errmsg(db_.get()));
  }
}

bool SqliteDatabase::SetTraceFile(const std::string& path) { return trace_.SetFile(path); }

void SqliteDatabase::NoteLockFailure() noexcept {
  if (!db_) return;
  const int code = sqlite3_errcode(db_.get()) & 0xff;
  if (code == SQLITE_BUSY || code == SQLITE_LOCKED) lock_failure_ = true;
}

void SqliteDatabase::SetBusyTimeout(int milliseconds) noexcept {
  busy_timeout_ms_ = milliseconds;
  if (db_) sqlite3_busy_timeout(db_.get(), milliseconds);
}

void SqliteDatabase::SetTraceCallback(TraceCallback callback) {
  trace_.SetCallback(std::move(callback));
}

}  // namespace kwx
