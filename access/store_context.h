// What every store routine receives from the loader: the database object, the platform, the
// reference caches and where to report trapped errors.
#ifndef KWX_ACCESS_STORE_CONTEXT_H_
#define KWX_ACCESS_STORE_CONTEXT_H_

#include <cstdint>
#include <exception>
#include <string>

#include "access/error_report.h"
#include "access/reference_tables.h"
#include "automation/errors.h"
#include "automation/services.h"

namespace kwx {

struct StoreContext {
  // The database object; null when it could not be created (every call then fails).
  IDatabase* db = nullptr;
  // 1 for the SP platform, 0 for the plain one.
  int32_t platform = 0;
  // The loader's caches; never null.
  ReferenceCaches* caches = nullptr;
  // Where trapped errors go; may be null.
  ErrorSink* errors = nullptr;

  bool sp() const noexcept { return platform == 1; }

  // The database object, raising err::kObjectNotSet when there is none.
  IDatabase& database() const {
    if (!db) throw AutomationError(err::kObjectNotSet);
    return *db;
  }

  // Reports the error being handled (call from a catch block) with its location and
  // parameter ("lngCompanyID: 7").
  void ReportCurrent(std::string location, std::string parameter = {}) const noexcept {
    if (errors) {
      errors->Report(ReportFromException(std::current_exception(), std::move(location),
                                         std::move(parameter)));
    }
  }
};

}  // namespace kwx

#endif  // KWX_ACCESS_STORE_CONTEXT_H_
