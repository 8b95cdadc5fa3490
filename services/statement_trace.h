// The trace of executed statements both database engines write: one JSON line per statement,
// to a file and to a callback.
#ifndef KWX_SERVICES_STATEMENT_TRACE_H_
#define KWX_SERVICES_STATEMENT_TRACE_H_

#include <cstdint>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

namespace kwx {

class StatementTrace {
 public:
  // Receives each trace line (the JSON text, without the line end).
  using Callback = std::function<void(std::string_view json_line)>;

  // Starts appending to the file the environment variable KWX_TRACE_SQL names, if any.
  StatementTrace();

  // Appends lines to the file at `path` from now on; an empty path stops file tracing. False
  // when the file cannot be opened for appending.
  bool SetFile(const std::string& path);
  // Hands every line to `callback` as well; an empty callback stops it.
  void SetCallback(Callback callback) { callback_ = std::move(callback); }
  // Records one statement: {"sql": <text as received>, "ok": <bool>, "rows": <row count>}.
  // Text that is not valid UTF-8 has its bad bytes replaced in the line only.
  void Write(const std::string& sql, bool ok, int32_t rows);

 private:
  std::ofstream file_;
  Callback callback_;
};

}  // namespace kwx

#endif  // KWX_SERVICES_STATEMENT_TRACE_H_
