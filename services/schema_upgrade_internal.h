// The schema version a study database carries (PRAGMA user_version) and the steps that bring
// a file written by older code up to it.
#ifndef KWX_SERVICES_SCHEMA_UPGRADE_INTERNAL_H_
#define KWX_SERVICES_SCHEMA_UPGRADE_INTERNAL_H_

#include <sqlite3.h>

#include <span>
#include <string>

namespace kwx {

// One step of the upgrade: what it does to a file of version `version` - 1 to make it
// version `version`. `apply` answers false on a failure; the caller then undoes the step.
struct UpgradeStep {
  int version;
  const char* what;
  bool (*apply)(sqlite3* db);
};

// The steps in the order they run; the last one's version is the current schema version.
std::span<const UpgradeStep> UpgradeSteps() noexcept;

// The schema version a new database is created with.
int CurrentSchemaVersion() noexcept;

// Brings the open study database `db` up to the current schema version: in one transaction,
// every step above the file's version, then the new version. A file already current (or newer)
// and a file that holds no study tables are left untouched. False (the file unchanged) when a
// step fails, or when the file needs an upgrade and `allowed` is false (a program that only
// reads must not write), with the reason in `error`.
bool UpgradeSchema(sqlite3* db, bool allowed, std::string& error);

}  // namespace kwx

#endif  // KWX_SERVICES_SCHEMA_UPGRADE_INTERNAL_H_
