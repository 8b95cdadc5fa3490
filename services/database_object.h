// The database object the loader creates by ProgID: one interface for a study database in a
// SQLite file or on a PostgreSQL server, the path given to blnOpenDatabase deciding which.
#ifndef KWX_SERVICES_DATABASE_OBJECT_H_
#define KWX_SERVICES_DATABASE_OBJECT_H_

#include <memory>
#include <string>

#include "services/database_engine.h"

namespace kwx {

// Delegates every member to its engine: a PostgresDatabase for a path that is a PostgreSQL
// URI (IsPostgresUri), else a SqliteDatabase. The engine is chosen again by every
// blnOpenDatabase and CloseNCompact; before the first, the SQLite engine answers (with no
// database open). The trace settings and the upgrade switch hold for whichever engine serves.
class DatabaseObject final : public DatabaseEngine {
 public:
  DatabaseObject();
  ~DatabaseObject() override;

  bool blnOpenDatabase(std::string& path) override;
  bool CloseNCompact(std::string& path) override;
  bool blnExecute(const std::string& sql, Variant& fields, Variant& data) override {
    return engine_->blnExecute(sql, fields, data);
  }
  bool blnExecuteComposed(const ComposedStatement& statement, Variant& fields,
                          Variant& data) override {
    return engine_->blnExecuteComposed(statement, fields, data);
  }
  int32_t lngRowCount() override { return engine_->lngRowCount(); }
  void BeginTrans() override { engine_->BeginTrans(); }
  void CommitTrans() override { engine_->CommitTrans(); }
  void RollbackTrans() override { engine_->RollbackTrans(); }

  bool SetTraceFile(const std::string& path) override;
  void SetTraceCallback(TraceCallback callback) override;
  void SetUpgradeAllowed(bool allowed) noexcept override;
  void SetBusyTimeout(int milliseconds) noexcept override;
  bool LockFailureSeen() const noexcept override { return engine_->LockFailureSeen(); }
  int TransactionDepth() const noexcept override { return engine_->TransactionDepth(); }
  const std::string& LastErrorMessage() const noexcept override {
    return engine_->LastErrorMessage();
  }

  // The engine serving now (a SqliteDatabase or a PostgresDatabase).
  DatabaseEngine& engine() noexcept { return *engine_; }

 private:
  // Makes the engine for `path` the one serving, carrying the settings over.
  void Choose(const std::string& path);

  std::unique_ptr<DatabaseEngine> engine_;
  bool postgres_ = false;
  std::string trace_path_;
  TraceCallback trace_callback_;
  bool upgrade_allowed_ = true;
  int busy_timeout_ms_ = -1;  // the engine's own until set
};

}  // namespace kwx

#endif  // KWX_SERVICES_DATABASE_OBJECT_H_
