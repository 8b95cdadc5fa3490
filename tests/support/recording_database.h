// A database object for tests: records every statement it is handed and answers from a script.
#ifndef KWX_TESTS_SUPPORT_RECORDING_DATABASE_H_
#define KWX_TESTS_SUPPORT_RECORDING_DATABASE_H_

#include <functional>
#include <string>
#include <vector>

#include "automation/services.h"
#include "automation/variant.h"

namespace kwx::testing {

// What the double answers to one statement.
struct ScriptedResult {
  bool ok = true;
  int32_t rows = 0;  // lngRowCount after the statement
  Variant fields{};  // for a query: the field-name array
  Variant data{};    // for a query: the (row, column) data array
};

// Builds a query answer from column names and rows of values.
ScriptedResult QueryResult(std::vector<std::string> columns,
                           std::vector<std::vector<Variant>> rows);

class RecordingDatabase : public IDatabase {
 public:
  // Answers the statement; by default every statement succeeds and changes no row.
  using Responder = std::function<ScriptedResult(const std::string& sql)>;

  void set_responder(Responder r) { responder_ = std::move(r); }
  // Answers statements that start with `prefix` (first match wins) with `result`.
  void Answer(std::string prefix, ScriptedResult result);

  bool blnOpenDatabase(std::string& path) override;
  bool CloseNCompact(std::string& path) override;
  bool blnExecute(const std::string& sql, Variant& fields, Variant& data) override;
  int32_t lngRowCount() override { return row_count_; }
  void BeginTrans() override { statements.push_back("<BeginTrans>"); }
  void CommitTrans() override { statements.push_back("<CommitTrans>"); }
  void RollbackTrans() override { statements.push_back("<RollbackTrans>"); }

  // Every statement in order; transaction calls appear as "<BeginTrans>" etc.
  std::vector<std::string> statements;
  bool open_answer = true;
  std::vector<std::string> opened_paths;

 private:
  Responder responder_;
  std::vector<std::pair<std::string, ScriptedResult>> answers_;
  int32_t row_count_ = 0;
};

}  // namespace kwx::testing

#endif  // KWX_TESTS_SUPPORT_RECORDING_DATABASE_H_
