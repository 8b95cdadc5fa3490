// The trace of executed statements both database engines write: one JSON line per statement,
// to a file and to a callback.
#ifndef KWX_SERVICES_STATEMENT_TRACE_H_
#define KWX_SERVICES_STATEMENT_TRACE_H_

#include <cstdint>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "automation/errors.h"
#include "automation/variant.h"

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

  // True when a line written now goes somewhere (a file or a callback): a statement that is
  // not text yet need only be spelled out then.
  bool on() const noexcept { return file_open_ || static_cast<bool>(callback_); }

  // blnExecute's answer as both engines give it: clears the answer, runs `execute` (which
  // fills `fields`, `data` and `row_count` and answers success, keeping a failure's reason in
  // `last_error`), turns an exception into a failure, and empties the answer of a failure
  // (with a reason always given).
  template <class Execute>
  static bool Answer(Variant& fields, Variant& data, int32_t& row_count, std::string& last_error,
                     Execute&& execute) {
    fields = Variant();
    data = Variant();
    row_count = 0;
    last_error.clear();
    bool ok = false;
    try {
      ok = execute();
    } catch (const std::exception& e) {
      last_error = e.what();
    } catch (...) {
      last_error = "the statement failed";
    }
    if (!ok) {
      if (last_error.empty()) last_error = "the statement failed";
      fields = Variant();
      data = Variant();
      row_count = 0;
    }
    return ok;
  }

  // Answer, then the trace line of `sql`.
  template <class Execute>
  bool Run(const std::string& sql, Variant& fields, Variant& data, int32_t& row_count,
           std::string& last_error, Execute&& execute) {
    const bool ok = Answer(fields, data, row_count, last_error, std::forward<Execute>(execute));
    // A failing trace sink must not change the statement's answer.
    ResumeNext([&] { Write(sql, ok, row_count); });
    return ok;
  }

 private:
  std::ofstream file_;
  // Whether file_ is open, kept beside it: asked once per statement, and the stream answers
  // through a call into the library.
  bool file_open_ = false;
  Callback callback_;
};

}  // namespace kwx

#endif  // KWX_SERVICES_STATEMENT_TRACE_H_
