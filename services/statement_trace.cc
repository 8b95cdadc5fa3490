#include "services/statement_trace.h"

#include <cstdlib>
#include <nlohmann/json.hpp>

namespace kwx {

StatementTrace::StatementTrace() {
  if (const char* path = std::getenv("KWX_TRACE_SQL"); path != nullptr && *path != '\0') {
    SetFile(path);
  }
}

bool StatementTrace::SetFile(const std::string& path) {
  file_.close();
  file_.clear();
  file_open_ = false;
  if (path.empty()) return true;
  file_.open(path, std::ios::out | std::ios::app | std::ios::binary);
  file_open_ = file_.is_open();
  return file_open_;
}

void StatementTrace::Write(const std::string& sql, bool ok, int32_t rows) {
  if (!on()) return;
  nlohmann::ordered_json entry;
  entry["sql"] = sql;
  entry["ok"] = ok;
  entry["rows"] = rows;
  const std::string line = entry.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  if (file_open_) {
    file_ << line << '\n';
    file_.flush();
  }
  if (callback_) callback_(line);
}

}  // namespace kwx
