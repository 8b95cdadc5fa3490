#include "services/postgres_database.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <span>
#include <thread>
#include <utility>
#include <vector>

#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "common/helpers.h"
#include "model/schema.h"
#include "services/jet_dialect.h"
#include "services/libpq_library_internal.h"
#include "services/schema_ddl_internal.h"
#include "services/schema_upgrade_internal.h"
#include "services/series_keys_internal.h"

namespace kwx {
namespace {

using Kind = PostgresDatabase::Kind;

constexpr const char* kSecondStatement =
    "the text holds a second statement (nothing of it was run)";

// The one lock every writing transaction of a study database takes (per database on the
// server; the number spells "kwx_lock").
constexpr const char* kBeginWriting = "BEGIN; SELECT pg_advisory_xact_lock(7743469010145734507)";
constexpr const char* kSavepoint = "SAVEPOINT kwx_trans";
constexpr const char* kRelease = "RELEASE SAVEPOINT kwx_trans";
constexpr const char* kRollback = "ROLLBACK TO SAVEPOINT kwx_trans; RELEASE SAVEPOINT kwx_trans";

// How often a statement outside a transaction runs again after a serialization failure or a
// deadlock, and how long it waits first (times the attempt).
constexpr int kRetries = 5;
constexpr std::chrono::milliseconds kRetryPause{20};

// The mark a laid-out database carries on its company table.
std::string VersionMark() {
  return "kwx schema version " + std::to_string(CurrentSchemaVersion());
}

// libpq's functions. Every call comes after a connection was made, which loaded them.
const libpq::Functions& Pq() noexcept { return *libpq::library.Loaded(); }

struct ResultCloser {
  void operator()(PGresult* r) const noexcept { Pq().PQclear(r); }
};
using Result = std::unique_ptr<PGresult, ResultCloser>;

// Connects to `uri`; nullptr with the reason in `error`.
PGconn* Connect(const std::string& uri, std::string& error) {
  if (!IsPostgresUri(uri)) {
    error = "not a PostgreSQL URI";
    return nullptr;
  }
  if (libpq::library.Load(error) == nullptr) return nullptr;
  // A server that does not answer must not hang the caller: 10 seconds unless told otherwise.
  const bool own_timeout = std::getenv("PGCONNECT_TIMEOUT") == nullptr;
  const char* keys[] = {"connect_timeout", "fallback_application_name", "dbname", nullptr};
  const char* values[] = {"10", "kwx", uri.c_str(), nullptr};
  PGconn* conn = Pq().PQconnectdbParams(own_timeout ? keys : keys + 1,
                                        own_timeout ? values : values + 1, /*expand_dbname=*/1);
  if (conn == nullptr || Pq().PQstatus(conn) != CONNECTION_OK) {
    error = conn != nullptr ? Trim(Pq().PQerrorMessage(conn)) : "out of memory";
    Pq().PQfinish(conn);
    return nullptr;
  }
  // Texts travel as UTF-8; a date text the dialect left as written reads month first.
  if (Pq().PQsetClientEncoding(conn, "UTF8") != 0) {
    error = Trim(Pq().PQerrorMessage(conn));
    Pq().PQfinish(conn);
    return nullptr;
  }
  Result set(Pq().PQexec(conn, "SET datestyle = 'ISO, MDY'"));
  if (Pq().PQresultStatus(set.get()) != PGRES_COMMAND_OK) {
    error = Trim(Pq().PQerrorMessage(conn));
    Pq().PQfinish(conn);
    return nullptr;
  }
  return conn;
}

// The primary message of a failed result (or of the connection).
std::string ErrorOf(PGconn* conn, const PGresult* result) {
  const char* primary =
      result != nullptr ? Pq().PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY) : nullptr;
  if (primary != nullptr) return primary;
  return Trim(Pq().PQerrorMessage(conn));
}

bool Retryable(const PGresult* result) {
  const char* state = Pq().PQresultErrorField(result, PG_DIAG_SQLSTATE);
  return state != nullptr && (std::strcmp(state, "40001") == 0 || std::strcmp(state, "40P01") == 0);
}

// The server refuses to run a prepared query whose result columns changed since.
bool ResultChanged(const PGresult* result) {
  const char* state = Pq().PQresultErrorField(result, PG_DIAG_SQLSTATE);
  return state != nullptr && std::strcmp(state, "0A000") == 0;
}

bool IsMultipleCommands(const PGresult* result) {
  const char* primary = Pq().PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
  return primary != nullptr && std::strstr(primary, "multiple commands") != nullptr;
}

// True when the company table exists in the database's search path; `comment` then holds its
// mark (empty when none).
std::optional<bool> HasStudyTables(PGconn* conn, std::string& comment, std::string& error) {
  Result r(Pq().PQexec(conn,
                       "SELECT to_regclass('company') IS NOT NULL, "
                       "coalesce(obj_description(to_regclass('company'), 'pg_class'), '')"));
  if (Pq().PQresultStatus(r.get()) != PGRES_TUPLES_OK || Pq().PQntuples(r.get()) != 1) {
    error = ErrorOf(conn, r.get());
    return std::nullopt;
  }
  comment = Pq().PQgetvalue(r.get(), 0, 1);
  return std::strcmp(Pq().PQgetvalue(r.get(), 0, 0), "t") == 0;
}

// The declared name of every table and column, found by its lower-case form (the server's).
const std::string_view* DeclaredName(std::string_view server_name) {
  static const auto* const kNames = [] {
    auto* names = new std::unordered_map<std::string, std::string_view>();
    auto add = [names](std::string_view n) {
      if (!n.empty()) names->emplace(FoldCase(n), n);
    };
    for (const TableDef& t : AllTables()) {
      add(t.name);
      add(t.key);
      add(GetTable(TableId::Company).key);
      for (const ColumnDef& c : t.columns) add(c.name);
    }
    return names;
  }();
  const auto found = kNames->find(std::string(server_name));
  return found == kNames->end() ? nullptr : &found->second;
}

// `server_name` as the statement `sql` spells it: the first word of the statement outside its
// literals that equals it without regard to case ("" for none). The server folds the names of
// a query's columns to lower case, a SQLite file keeps them as written; an alias such as
// "count(*) as Members" comes back as "Members" on both.
std::string_view SpelledName(std::string_view sql, std::string_view server_name) {
  for (size_t i = 0; i < sql.size();) {
    const char c = sql[i];
    if (c == '\'' || c == '"') {
      const size_t close = sql.find(c, i + 1);
      if (close == std::string_view::npos) return {};
      i = close + 1;
    } else if (std::isalpha(static_cast<unsigned char>(c)) || c == '_') {
      size_t end = i;
      while (end < sql.size() &&
             (std::isalnum(static_cast<unsigned char>(sql[end])) || sql[end] == '_')) {
        ++end;
      }
      const std::string_view word = sql.substr(i, end - i);
      if (EqualsNoCase(word, server_name)) return word;
      i = end;
    } else {
      ++i;
    }
  }
  return {};
}

// How values of the server's type `oid` are read.
Kind KindOfServerType(Oid oid) {
  switch (oid) {
    case 16: return Kind::ServerBool;
    case 20: case 23: return Kind::Long;
    case 21: return Kind::Integer;
    case 700: return Kind::Single;
    case 701: case 1700: return Kind::Double;
    default: return Kind::Text;
  }
}

void AppendWhole(std::vector<Variant>& out, int64_t v) {
  if (v >= std::numeric_limits<int32_t>::min() && v <= std::numeric_limits<int32_t>::max()) {
    out.emplace_back(static_cast<int32_t>(v));
  } else {
    out.emplace_back(static_cast<double>(v));
  }
}

template <class T>
bool ReadNumber(std::string_view text, T& value) {
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  return ec == std::errc() && end == text.data() + text.size();
}

// The value of one result cell, typed as the SQLite engine types its column.
void AppendValue(std::vector<Variant>& out, std::string_view text, Kind kind) {
  int64_t whole = 0;
  double real = 0;
  switch (kind) {
    case Kind::Integer:
      if (!ReadNumber(text, whole)) break;
      if (whole >= INT16_MIN && whole <= INT16_MAX) {
        out.emplace_back(static_cast<int16_t>(whole));
      } else {
        AppendWhole(out, whole);
      }
      return;
    case Kind::Long:
      if (!ReadNumber(text, whole)) break;
      AppendWhole(out, whole);
      return;
    case Kind::Boolean:
      if (!ReadNumber(text, real)) break;
      out.emplace_back(real != 0.0);
      return;
    case Kind::ServerBool:
      out.emplace_back(text == "t");
      return;
    case Kind::Single:
      // strtof reads the server's shortest exact text of a real back to the same value.
      out.emplace_back(std::strtof(std::string(text).c_str(), nullptr));
      return;
    case Kind::Double:
      out.emplace_back(std::strtod(std::string(text).c_str(), nullptr));
      return;
    case Kind::Date:
      // A number in a date column is a serial date, as a file keeps it.
      if (ReadNumber(text, real)) {
        out.emplace_back(Date{real});
        return;
      }
      if (std::optional<Date> d = ParseStoredDateText(text)) {
        out.emplace_back(*d);
        return;
      }
      if (std::optional<Date> d = ParseDate(text)) {
        out.emplace_back(*d);
        return;
      }
      break;
    case Kind::Text:
      break;
  }
  out.emplace_back(std::string(text));
}

// `sql`, composed here from the declarations with its names quoted in their own case, with
// the quotes taken off: the server keeps the names in lower case (schema_ddl_internal.h).
std::string UnquotedNames(std::string sql) {
  for (const TableDef& t : AllTables()) {
    ReplaceText(sql, Quoted(t.name), t.name);
    if (!t.key.empty()) ReplaceText(sql, Quoted(t.key), t.key);
  }
  ReplaceText(sql, Quoted(GetTable(TableId::Company).key), GetTable(TableId::Company).key);
  return sql;
}

// The first word of `sql`, in lower case.
std::string FirstWord(std::string_view sql) {
  size_t i = 0;
  while (i < sql.size() && std::isspace(static_cast<unsigned char>(sql[i]))) ++i;
  size_t end = i;
  while (end < sql.size() && std::isalpha(static_cast<unsigned char>(sql[end]))) ++end;
  return FoldCase(sql.substr(i, end - i));
}

bool IsChange(std::string_view sql) {
  const std::string word = FirstWord(sql);
  return word == "insert" || word == "update" || word == "delete";
}

}  // namespace

// A prepared shape: its name on the connection and what its results are.
struct PostgresDatabase::Prepared {
  std::string name;
  SeriesShape series;
  bool described = false;
  Variant names;
  std::vector<Kind> kinds;
};

// A table of the database: the declared type and name of each column, by column number
// (index 0 unused; a column the declarations do not know has none).
struct PostgresDatabase::Table {
  std::vector<std::optional<ColumnType>> types;
  std::vector<std::string_view> names;
};

bool IsPostgresUri(std::string_view path) noexcept {
  return path.starts_with("postgresql://") || path.starts_with("postgres://");
}

Status CreatePostgresDatabase(const std::string& uri) {
  std::string error;
  PGconn* conn = Connect(uri, error);
  if (conn == nullptr) return Status::Error("CreateDatabase: " + uri + ": " + error);
  std::unique_ptr<PGconn, void (*)(PGconn*)> owner(conn, Pq().PQfinish);
  std::string comment;
  const std::optional<bool> has = HasStudyTables(conn, comment, error);
  if (!has) return Status::Error("CreateDatabase: " + uri + ": " + error);
  if (*has) return Status::Error("CreateDatabase: " + uri + " " + kAlreadyAStudyDatabase);
  auto run = [&](const std::string& sql) {
    Result r(Pq().PQexec(conn, sql.c_str()));
    if (Pq().PQresultStatus(r.get()) == PGRES_COMMAND_OK) return true;
    error = sql.substr(0, sql.find('\n')) + ": " + ErrorOf(conn, r.get());
    return false;
  };
  // One transaction: the database holds the whole schema or nothing of it.
  bool ok = run("BEGIN");
  for (const std::string& statement : SchemaStatements(AllTables(), SqlEngine::kPostgres)) {
    ok = ok && run(statement);
  }
  ok = ok && run("COMMENT ON TABLE company IS '" + VersionMark() + "'") && run("COMMIT");
  if (!ok) {
    Pq().PQclear(Pq().PQexec(conn, "ROLLBACK"));
    return Status::Error("CreateDatabase: " + uri + ": " + error);
  }
  return Status::OK();
}

PostgresDatabase::PostgresDatabase() : series_keys_(std::make_unique<SeriesKeyMemo>()) {}

PostgresDatabase::~PostgresDatabase() { Close(); }

void PostgresDatabase::Close() noexcept {
  // Closing ends the session: its prepared statements and an open transaction go with it.
  if (conn_ != nullptr) Pq().PQfinish(conn_);
  conn_ = nullptr;
  prepared_.clear();
  tables_.clear();
  highest_key_.clear();
  depth_ = 0;
  series_keys_->Forget();
}

bool PostgresDatabase::blnOpenDatabase(std::string& uri) {
  Close();
  last_error_.clear();
  PGconn* conn = Connect(uri, last_error_);
  if (conn == nullptr) return false;
  std::string comment;
  const std::optional<bool> has = HasStudyTables(conn, comment, last_error_);
  if (!has || (*has && comment != VersionMark())) {
    if (has) last_error_ = "the study tables carry '" + comment + "', not '" + VersionMark() + "'";
    Pq().PQfinish(conn);
    return false;
  }
  conn_ = conn;
  if (*has && upgrade_allowed_) AddSeriesIndexes();
  return true;
}

void PostgresDatabase::AddSeriesIndexes() {
  // A database laid out before the series indexes named the key has them by the study alone:
  // the keyed ones are added once, by a program that may write. Only a speed matter, so a
  // member whose role may not add an index still opens the database. The schema's indexes are
  // read in one round trip.
  Result found(
      Pq().PQexec(conn_, "SELECT indexname FROM pg_indexes WHERE schemaname = current_schema()"));
  if (Pq().PQresultStatus(found.get()) != PGRES_TUPLES_OK) return;
  std::vector<std::string> held;
  for (int row = 0; row < Pq().PQntuples(found.get()); ++row) {
    held.emplace_back(Pq().PQgetvalue(found.get(), row, 0));
  }
  for (const TableDef& t : AllTables()) {
    if (t.kind != TableKind::Series) continue;
    const std::string name = SeriesIndexName(t, SqlEngine::kPostgres);
    if (std::find(held.begin(), held.end(), name) != held.end()) continue;
    Result made(Pq().PQexec(conn_, SeriesIndexStatement(t, SqlEngine::kPostgres).c_str()));
  }
}

bool PostgresDatabase::CloseNCompact(std::string& uri) {
  Close();
  PGconn* conn = Connect(uri, last_error_);
  if (conn == nullptr) return false;
  Result r(Pq().PQexec(conn, "VACUUM"));
  const bool ok = Pq().PQresultStatus(r.get()) == PGRES_COMMAND_OK;
  last_error_ = ok ? "" : ErrorOf(conn, r.get());
  r.reset();
  Pq().PQfinish(conn);
  return ok;
}

bool PostgresDatabase::Refuse(std::string message) {
  last_error_ = std::move(message);
  return false;
}

bool PostgresDatabase::blnExecute(const std::string& sql, Variant& fields, Variant& data) {
  return trace_.Run(sql, fields, data, row_count_, last_error_,
                    [&] { return ExecuteOne(sql, fields, data); });
}

const PostgresDatabase::Table* PostgresDatabase::TableOf(unsigned int oid) {
  auto found = tables_.find(oid);
  if (found != tables_.end()) return found->second.get();
  auto table = std::make_unique<Table>();
  const std::string id = std::to_string(oid);
  const char* values[] = {id.c_str()};
  Result r(
      Pq().PQexecParams(conn_,
                        "SELECT c.relname, a.attnum, a.attname FROM pg_class c JOIN pg_attribute a "
                        "ON a.attrelid = c.oid WHERE c.oid = $1::oid AND a.attnum > 0",
                        1, nullptr, values, nullptr, nullptr, 0));
  if (Pq().PQresultStatus(r.get()) == PGRES_TUPLES_OK) {
    const TableDef* def = nullptr;
    for (const TableDef& t : AllTables()) {
      if (Pq().PQntuples(r.get()) > 0 && EqualsNoCase(t.name, Pq().PQgetvalue(r.get(), 0, 0))) {
        def = &t;
      }
    }
    for (int row = 0; row < Pq().PQntuples(r.get()); ++row) {
      const size_t number = static_cast<size_t>(std::atoi(Pq().PQgetvalue(r.get(), row, 1)));
      const std::string_view column = Pq().PQgetvalue(r.get(), row, 2);
      if (table->types.size() <= number) {
        table->types.resize(number + 1);
        table->names.resize(number + 1);
      }
      if (const std::string_view* name = DeclaredName(column)) table->names[number] = *name;
      if (def == nullptr) continue;
      for (const ColumnDef& c : def->columns) {
        if (EqualsNoCase(c.name, column)) table->types[number] = c.type;
      }
    }
  }
  return tables_.emplace(oid, std::move(table)).first->second.get();
}

bool PostgresDatabase::Command(const char* command) {
  Result r(Pq().PQexec(conn_, command));
  const ExecStatusType status = Pq().PQresultStatus(r.get());
  if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK) return true;
  last_error_ = ErrorOf(conn_, r.get());
  return false;
}

bool PostgresDatabase::ExecuteOne(const std::string& sql, Variant& fields, Variant& data) {
  if (conn_ == nullptr) return Refuse("no database is open");
  if (sql.size() > static_cast<size_t>(std::numeric_limits<int>::max())) {
    return Refuse("the statement is too long");
  }
  // A value that could not be written as one literal carries the mark (common/helpers.h).
  if (sql.find(kUnwritableValueMark) != std::string::npos) {
    return Refuse("the statement holds a NUL byte (a value that cannot be written as a literal)");
  }
  // A transaction ended by a statement.
  if (depth_ > 0 && Pq().PQtransactionStatus(conn_) == PQTRANS_IDLE) depth_ = 0;
  // What the statement before this one learned of the next series key holds for this one only.
  const std::optional<SeriesKeyMemo::Known> known = series_keys_->Take();

  ParameterizedSql lifted = ParameterizeJetSql(sql);
  Prepared* prepared = nullptr;
  std::string signature;
  std::vector<std::string> texts;
  std::vector<const char*> values;
  if (lifted.lifted) {
    // One prepared statement per shape and kinds of its values: the server types a parameter
    // once, when the shape is prepared.
    signature = lifted.shape;
    signature += '\x01';
    std::vector<Oid> types;
    for (const SqlParameter& v : lifted.values) {
      signature += static_cast<char>('0' + static_cast<int>(v.kind));
      // Numbers travel typed (an insert's select gives its values no column type to take);
      // a text is left to the server to type from its place.
      types.push_back(v.kind == SqlParameter::Kind::Integer ? 20
                      : v.kind == SqlParameter::Kind::Real  ? 701
                                                            : 0);
    }
    auto found = prepared_.find(signature);
    if (found == prepared_.end()) {
      auto entry = std::make_unique<Prepared>();
      entry->series = ClassifySeriesShape(lifted.shape, lifted.values.size());
      const bool keyed_insert = entry->series.role == SeriesShape::Role::kInsert;
      if (keyed_insert) types.push_back(20);
      const std::string text = NumberPlaceholders(
          keyed_insert ? UnquotedNames(entry->series.compiled) : lifted.shape);
      entry->name = "kwx_" + std::to_string(prepared_.size() + 1);
      // A shape the server refuses runs as its plain translation below, which decides; inside
      // a transaction the refusal must not end the transaction, so it is tried in a savepoint.
      const bool guarded = depth_ > 0 && Command("SAVEPOINT kwx_prepare");
      Result r(Pq().PQprepare(conn_, entry->name.c_str(), text.c_str(),
                              static_cast<int>(types.size()), types.data()));
      const bool ok = Pq().PQresultStatus(r.get()) == PGRES_COMMAND_OK;
      if (!ok && IsMultipleCommands(r.get())) {
        if (guarded) Command("ROLLBACK TO SAVEPOINT kwx_prepare; RELEASE SAVEPOINT kwx_prepare");
        return Refuse(kSecondStatement);
      }
      if (guarded) {
        Command(ok ? "RELEASE SAVEPOINT kwx_prepare"
                   : "ROLLBACK TO SAVEPOINT kwx_prepare; RELEASE SAVEPOINT kwx_prepare");
      }
      // A shape the server refused is not tried again: it runs as its plain translation.
      if (!ok) entry->name.clear();
      found = prepared_.emplace(signature, std::move(entry)).first;
    }
    if (!found->second->name.empty()) {
      prepared = found->second.get();
      texts.reserve(lifted.values.size() + 1);
      for (const SqlParameter& v : lifted.values) {
        switch (v.kind) {
          case SqlParameter::Kind::Integer:
            texts.push_back(std::to_string(v.integer));
            break;
          case SqlParameter::Kind::Real: {
            char buffer[32];
            const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, v.real);
            texts.emplace_back(buffer, ec == std::errc() ? end : buffer);
            break;
          }
          case SqlParameter::Kind::Text:
            texts.push_back(v.text);
            break;
        }
      }
    }
  }

  const bool change = IsChange(sql);
  std::optional<int64_t> key;
  Result result;
  for (int attempt = 0;; ++attempt) {
    // A change outside a transaction is a writing transaction of its own (see the class
    // comment).
    const bool own_transaction = change && depth_ == 0;
    if (own_transaction && !Command(kBeginWriting)) {
      Command("ROLLBACK");
      return false;
    }
    if (prepared != nullptr) {
      if (prepared->series.role == SeriesShape::Role::kInsert) {
        const SqlParameter& company = lifted.values.front();
        key = NewSeriesKey(prepared->series.table, company,
                           SeriesKeyMemo::KeyFor(known, prepared->series.table, company));
        // Without a key (a full block) the key trigger decides.
        texts.resize(lifted.values.size());
        if (key) texts.push_back(std::to_string(*key));
      }
      values.clear();
      for (const std::string& t : texts) values.push_back(t.c_str());
      if (prepared->series.role == SeriesShape::Role::kInsert && !key) values.push_back(nullptr);
      result.reset(Pq().PQexecPrepared(conn_, prepared->name.c_str(),
                                       static_cast<int>(values.size()), values.data(), nullptr,
                                       nullptr, 0));
    } else {
      const std::string text = lifted.lifted ? TranslateJetSql(sql) : lifted.shape;
      result.reset(
          Pq().PQexecParams(conn_, text.c_str(), 0, nullptr, nullptr, nullptr, nullptr, 0));
    }
    const ExecStatusType status = Pq().PQresultStatus(result.get());
    const bool ok = status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK;
    if (own_transaction) {
      if (ok && Command("COMMIT")) break;
      const std::string why = ok ? last_error_ : ErrorOf(conn_, result.get());
      Command("ROLLBACK");
      last_error_ = why;
      if (attempt < kRetries && (ok || Retryable(result.get()))) {
        std::this_thread::sleep_for(kRetryPause * (attempt + 1));
        continue;
      }
      return false;
    }
    if (ok) break;
    if (IsMultipleCommands(result.get())) return Refuse(kSecondStatement);
    if (status == PGRES_EMPTY_QUERY) return Refuse("the text holds no statement");
    if (depth_ == 0 && attempt < kRetries && Retryable(result.get())) {
      std::this_thread::sleep_for(kRetryPause * (attempt + 1));
      continue;
    }
    if (depth_ == 0 && prepared != nullptr && ResultChanged(result.get())) {
      // The shape's result columns changed since it was prepared (a column was added): the
      // statement runs again, prepared anew.
      Command(("DEALLOCATE " + prepared->name).c_str());
      prepared_.erase(signature);
      return ExecuteOne(sql, fields, data);
    }
    return Refuse(ErrorOf(conn_, result.get()));
  }

  PGresult* r = result.get();
  if (Pq().PQresultStatus(r) == PGRES_COMMAND_OK) {
    const char* changed = Pq().PQcmdTuples(r);
    row_count_ = *changed == '\0' ? 0 : static_cast<int32_t>(std::atol(changed));
    if (prepared != nullptr) {
      series_keys_->Learn(prepared->series, known, lifted.values, key, row_count_, data,
                          depth_ > 0);
    }
    return true;
  }

  // A query: the names and kinds of its columns, once per prepared shape.
  const int columns = Pq().PQnfields(r);
  Variant own_names;
  std::vector<Kind> own_kinds;
  Variant* names = &own_names;
  std::vector<Kind>* kinds = &own_kinds;
  if (prepared != nullptr) {
    names = &prepared->names;
    kinds = &prepared->kinds;
  }
  if (prepared == nullptr || !prepared->described) {
    std::vector<Variant> list;
    kinds->clear();
    for (int c = 0; c < columns; ++c) {
      const std::string_view server_name = Pq().PQfname(r, c);
      Kind kind = KindOfServerType(Pq().PQftype(r, c));
      std::string_view name = server_name;
      const Oid table = Pq().PQftable(r, c);
      const int column = Pq().PQftablecol(r, c);
      if (table != InvalidOid && column > 0) {
        const Table* t = TableOf(table);
        if (static_cast<size_t>(column) < t->types.size()) {
          if (t->types[column] == ColumnType::Boolean) kind = Kind::Boolean;
          if (t->types[column] == ColumnType::Integer) kind = Kind::Integer;
          if (t->types[column] == ColumnType::Date) kind = Kind::Date;
        }
      }
      if (const std::string_view* declared = DeclaredName(server_name)) {
        name = *declared;
      } else if (const std::string_view spelled = SpelledName(sql, server_name); !spelled.empty()) {
        name = spelled;  // an alias, as the statement writes it
      }
      list.emplace_back(std::string(name));
      kinds->push_back(kind);
    }
    *names = Variant(SafeArray::FromValues(std::move(list)));
    if (prepared != nullptr) prepared->described = true;
  }
  const int rows = Pq().PQntuples(r);
  std::vector<Variant> cells;
  cells.reserve(static_cast<size_t>(rows) * static_cast<size_t>(columns));
  for (int row = 0; row < rows; ++row) {
    for (int c = 0; c < columns; ++c) {
      if (Pq().PQgetisnull(r, row, c)) {
        cells.push_back(Variant::Null());
      } else {
        AppendValue(cells,
                    std::string_view(Pq().PQgetvalue(r, row, c),
                                     static_cast<size_t>(Pq().PQgetlength(r, row, c))),
                    (*kinds)[static_cast<size_t>(c)]);
      }
    }
  }
  fields = *names;
  if (rows > 0) data = Variant(SafeArray::FromRows(rows, columns, std::move(cells)));
  row_count_ = rows;
  if (prepared != nullptr) {
    series_keys_->Learn(prepared->series, known, lifted.values, key, row_count_, data, depth_ > 0);
  }
  return true;
}

std::optional<int64_t> PostgresDatabase::NewSeriesKey(int table, const SqlParameter& company,
                                                      std::optional<int64_t> known) {
  if (company.kind != SqlParameter::Kind::Integer || !HasStudyBlock(company.integer)) {
    return std::nullopt;  // no block to take a key in: the key trigger decides
  }
  const int64_t id = company.integer;
  // Rows a save inserts one after another take the keys one after another (nothing else
  // writes while its transaction holds the write lock), as does a row an update just found
  // missing, or the first row of a series the study has no rows of.
  if (known) return known;
  if (static_cast<size_t>(table) >= highest_key_.size()) highest_key_.resize(table + 1);
  std::string& name = highest_key_[table];
  if (name.empty()) {
    // HighestKeySql names its one parameter "?1", which the server spells "$1".
    std::string text = UnquotedNames(HighestKeySql(table));
    ReplaceText(text, "?1", "$1");
    const std::string candidate = "kwx_highest_" + std::to_string(table);
    const Oid types[] = {20};
    Result r(Pq().PQprepare(conn_, candidate.c_str(), text.c_str(), 1, types));
    if (Pq().PQresultStatus(r.get()) != PGRES_COMMAND_OK) return std::nullopt;
    name = candidate;
  }
  const std::string id_text = std::to_string(id);
  const char* values[] = {id_text.c_str()};
  Result r(Pq().PQexecPrepared(conn_, name.c_str(), 1, values, nullptr, nullptr, 0));
  if (Pq().PQresultStatus(r.get()) != PGRES_TUPLES_OK || Pq().PQntuples(r.get()) != 1)
    return std::nullopt;
  int64_t key = id * kSeriesKeyBlock;
  if (!Pq().PQgetisnull(r.get(), 0, 0)) key = std::atoll(Pq().PQgetvalue(r.get(), 0, 0)) + 1;
  if (!InStudyBlock(key, id)) return std::nullopt;
  return key;
}

void PostgresDatabase::BeginTrans() {
  series_keys_->Forget();
  if (conn_ == nullptr) return;
  if (depth_ > 0 && Pq().PQtransactionStatus(conn_) == PQTRANS_IDLE) depth_ = 0;
  if (!Command(depth_ == 0 ? kBeginWriting : kSavepoint)) {
    if (depth_ == 0) Command("ROLLBACK");
    last_error_ = "BeginTrans failed: " + last_error_;
    throw AutomationError(err::kInvalidCall, last_error_);
  }
  ++depth_;
}

bool PostgresDatabase::LevelOpen() {
  series_keys_->Forget();
  if (conn_ == nullptr || depth_ == 0) return false;
  // A statement of its own (COMMIT, ROLLBACK) may have ended the transaction.
  if (Pq().PQtransactionStatus(conn_) == PQTRANS_IDLE) depth_ = 0;
  return depth_ > 0;
}

void PostgresDatabase::CommitTrans() {
  if (!LevelOpen()) return;
  const bool outermost = depth_ == 1;
  // COMMIT of a transaction a statement failed in rolls it back and still answers success.
  const bool failed = Pq().PQtransactionStatus(conn_) == PQTRANS_INERROR;
  if (!failed && Command(outermost ? "COMMIT" : kRelease)) {
    --depth_;
    return;
  }
  // A level that cannot be kept is undone, so no transaction is left dangling.
  std::string message = "CommitTrans failed: " +
                        (failed ? std::string("a statement of the transaction failed")
                                : last_error_);
  Command(outermost ? "ROLLBACK" : kRollback);
  last_error_ = message;
  --depth_;
  throw AutomationError(err::kInvalidCall, std::move(message));
}

void PostgresDatabase::RollbackTrans() {
  if (!LevelOpen()) return;
  const bool ok = Command(depth_ == 1 ? "ROLLBACK" : kRollback);
  --depth_;
  if (!ok) throw AutomationError(err::kInvalidCall, "RollbackTrans failed: " + last_error_);
}

}  // namespace kwx
