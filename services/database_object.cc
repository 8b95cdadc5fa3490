#include "services/database_object.h"

#include "services/postgres_database.h"
#include "services/sqlite_database.h"

namespace kwx {

DatabaseObject::DatabaseObject() : engine_(std::make_unique<SqliteDatabase>()) {}

DatabaseObject::~DatabaseObject() = default;

void DatabaseObject::Choose(const std::string& path) {
  const bool postgres = IsPostgresUri(path);
  if (postgres == postgres_) return;
  // The old engine closes what it had open as it goes.
  if (postgres) {
    engine_ = std::make_unique<PostgresDatabase>();
  } else {
    engine_ = std::make_unique<SqliteDatabase>();
  }
  postgres_ = postgres;
  if (!trace_path_.empty()) engine_->SetTraceFile(trace_path_);
  if (trace_callback_) engine_->SetTraceCallback(trace_callback_);
  engine_->SetUpgradeAllowed(upgrade_allowed_);
  if (busy_timeout_ms_ >= 0) engine_->SetBusyTimeout(busy_timeout_ms_);
}

bool DatabaseObject::blnOpenDatabase(std::string& path) {
  Choose(path);
  return engine_->blnOpenDatabase(path);
}

bool DatabaseObject::CloseNCompact(std::string& path) {
  Choose(path);
  return engine_->CloseNCompact(path);
}

bool DatabaseObject::SetTraceFile(const std::string& path) {
  trace_path_ = path;
  return engine_->SetTraceFile(path);
}

void DatabaseObject::SetTraceCallback(TraceCallback callback) {
  trace_callback_ = callback;
  engine_->SetTraceCallback(std::move(callback));
}

void DatabaseObject::SetUpgradeAllowed(bool allowed) noexcept {
  upgrade_allowed_ = allowed;
  engine_->SetUpgradeAllowed(allowed);
}

void DatabaseObject::SetBusyTimeout(int milliseconds) noexcept {
  busy_timeout_ms_ = milliseconds;
  engine_->SetBusyTimeout(milliseconds);
}

}  // namespace kwx
