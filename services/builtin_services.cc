#include "services/builtin_services.h"

#include <memory>

#include "automation/registry.h"
#include "automation/services.h"
#include "services/compute_object.h"
#include "services/data_file.h"
#include "services/database_object.h"
#include "services/value_object.h"

namespace kwx {

void RegisterBuiltinServices() {
  ObjectRegistry& registry = ObjectRegistry::Instance();
  // Both platform builds use the same database object: the schema serves both. The path it
  // opens decides the engine (a SQLite file or a PostgreSQL server).
  for (const char* prog_id : {progid::kDatabase, progid::kDatabaseSP}) {
    registry.RegisterIfAbsent(prog_id, [] { return std::make_shared<DatabaseObject>(); });
  }
  for (const char* prog_id : {progid::kDataFile, progid::kDataFileSP}) {
    registry.RegisterIfAbsent(prog_id, [] { return std::make_shared<DataFile>(); });
  }
  for (const char* prog_id : {progid::kCompute, progid::kComputeSP}) {
    registry.RegisterIfAbsent(prog_id, [] { return std::make_shared<ComputeObject>(); });
  }
  for (const char* prog_id : {progid::kValue, progid::kValueSP}) {
    registry.RegisterIfAbsent(prog_id, [] { return std::make_shared<ValueObject>(); });
  }
}

}  // namespace kwx
