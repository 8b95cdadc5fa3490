// Creating a new, empty database file with the full schema.
#ifndef KWX_SERVICES_CREATE_DATABASE_H_
#define KWX_SERVICES_CREATE_DATABASE_H_

#include <string>

#include "services/status.h"

namespace kwx {

// Creates the SQLite database file `path` holding every table of the schema (model/schema.h)
// with its columns, keys, cascading company rows, indexes and series key triggers, marked with
// the current schema version and in WAL mode, ready for the database object to open. Refuses a path that already exists (the file is left untouched). On any failure
// the partly written file is removed and the Status says which path or statement failed.
// A PostgreSQL URI (IsPostgresUri) lays the same tables out in that server database instead,
// when it holds no study tables yet (CreatePostgresDatabase).
Status CreateDatabase(const std::string& path);

}  // namespace kwx

#endif  // KWX_SERVICES_CREATE_DATABASE_H_
