#include "services/create_database.h"

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "model/schema.h"
#include "services/postgres_database.h"
#include "services/schema_ddl_internal.h"
#include "services/schema_upgrade_internal.h"
#include "services/sqlite_support_internal.h"

namespace kwx {
namespace {

struct Closer {
  void operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }
};

}  // namespace

Status CreateDatabase(const std::string& path) {
  if (path.empty()) return Status::Error("CreateDatabase: no path given");
  if (IsPostgresUri(path)) return CreatePostgresDatabase(path);
  std::error_code ec;
  if (std::filesystem::exists(std::filesystem::symlink_status(path, ec))) {
    return Status::Error("CreateDatabase: " + path + " already exists");
  }

  sqlite_support::PrepareSqliteLibrary();
  sqlite3* raw = nullptr;
  const int rc =
      sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  std::unique_ptr<sqlite3, Closer> db(raw);
  auto fail = [&](const std::string& what) {
    std::string message = "CreateDatabase: " + path + ": " + what + ": " +
                          (db ? sqlite3_errmsg(db.get()) : "out of memory");
    db.reset();
    std::filesystem::remove(path, ec);
    return Status::Error(std::move(message));
  };
  if (rc != SQLITE_OK) return fail("cannot create the file");

  // One transaction: the file holds the whole schema or, after a failure, is removed.
  if (sqlite3_exec(db.get(), "BEGIN", nullptr, nullptr, nullptr) != SQLITE_OK) {
    return fail("BEGIN");
  }
  for (const std::string& statement : SchemaStatements(AllTables())) {
    if (sqlite3_exec(db.get(), statement.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
      return fail(statement);
    }
  }
  const std::string version = "PRAGMA user_version = " + std::to_string(CurrentSchemaVersion());
  if (sqlite3_exec(db.get(), version.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    return fail(version);
  }
  if (sqlite3_exec(db.get(), "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) {
    return fail("COMMIT");
  }
  // Readers and a writer then work side by side, and a program opening the file never has to
  // change its journal mode (which needs the file to itself). A file system without shared
  // memory refuses WAL; the file then keeps its rollback journal.
  sqlite3_exec(db.get(), "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
  db.reset();
  return Status::OK();
}

}  // namespace kwx
