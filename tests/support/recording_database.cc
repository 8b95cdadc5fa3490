#include "tests/support/recording_database.h"

#include "automation/safe_array.h"

namespace kwx::testing {

ScriptedResult QueryResult(std::vector<std::string> columns,
                           std::vector<std::vector<Variant>> rows) {
  ScriptedResult r;
  r.rows = static_cast<int32_t>(rows.size());
  SafeArray names = SafeArray::Vector(0, static_cast<int32_t>(columns.size()) - 1);
  for (size_t c = 0; c < columns.size(); ++c) names(static_cast<int32_t>(c)) = Variant(columns[c]);
  r.fields = Variant(std::move(names));
  if (!rows.empty()) {
    SafeArray data = SafeArray::Matrix(0, static_cast<int32_t>(rows.size()) - 1, 0,
                                       static_cast<int32_t>(columns.size()) - 1);
    for (size_t i = 0; i < rows.size(); ++i) {
      for (size_t c = 0; c < rows[i].size() && c < columns.size(); ++c) {
        data(static_cast<int32_t>(i), static_cast<int32_t>(c)) = rows[i][c];
      }
    }
    r.data = Variant(std::move(data));
  }
  return r;
}

void RecordingDatabase::Answer(std::string prefix, ScriptedResult result) {
  answers_.emplace_back(std::move(prefix), std::move(result));
}

bool RecordingDatabase::blnOpenDatabase(std::string& path) {
  opened_paths.push_back(path);
  return open_answer;
}

bool RecordingDatabase::CloseNCompact(std::string& path) {
  statements.push_back("<CloseNCompact " + path + ">");
  return true;
}

bool RecordingDatabase::blnExecute(const std::string& sql, Variant& fields, Variant& data) {
  statements.push_back(sql);
  ScriptedResult r;
  // Like every database object, refuses a text holding a NUL byte whatever the script says.
  bool answered = false;
  if (sql.find('\0') != std::string::npos) {
    r.ok = false;
    answered = true;
  }
  for (const auto& [prefix, result] : answers_) {
    if (answered) break;
    if (sql.compare(0, prefix.size(), prefix) == 0) {
      r = result;
      answered = true;
      break;
    }
  }
  if (!answered && responder_) r = responder_(sql);
  fields = r.fields;
  data = r.data;
  row_count_ = r.rows;
  return r.ok;
}

}  // namespace kwx::testing
