#include "bench/statement_replay.h"

#include <cstdio>

namespace kwx::bench {

void StatementReplay::Add(const std::string& jet_sql) {
  steps_.push_back(ParameterizeJetSql(jet_sql));
}

void StatementReplay::Reset() noexcept {
  for (auto& [shape, stmt] : compiled_) sqlite3_finalize(stmt);
  compiled_.clear();
}

sqlite3_stmt* StatementReplay::Compiled(sqlite3* db, const std::string& shape) {
  auto found = compiled_.find(shape);
  if (found != compiled_.end()) return found->second;
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v3(db, shape.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &stmt, nullptr) !=
      SQLITE_OK) {
    return nullptr;
  }
  compiled_.emplace(shape, stmt);
  return stmt;
}

bool StatementReplay::Bind(sqlite3_stmt* stmt, const std::vector<SqlParameter>& values,
                           int64_t id, std::string_view symbol) {
  int index = 1;
  for (const SqlParameter& v : values) {
    int rc = SQLITE_OK;
    switch (v.kind) {
      case SqlParameter::Kind::Integer:
        rc = sqlite3_bind_int64(stmt, index, v.integer == kCaptureCompanyID ? id : v.integer);
        break;
      case SqlParameter::Kind::Real:
        rc = sqlite3_bind_double(stmt, index, v.real);
        break;
      case SqlParameter::Kind::Text:
        if (v.text == kCaptureSymbol) {
          rc = sqlite3_bind_text(stmt, index, symbol.data(), static_cast<int>(symbol.size()),
                                 SQLITE_STATIC);
        } else {
          rc = sqlite3_bind_text(stmt, index, v.text.data(), static_cast<int>(v.text.size()),
                                 SQLITE_STATIC);
        }
        break;
    }
    if (rc != SQLITE_OK) return false;
    ++index;
  }
  return true;
}

int64_t StatementReplay::Load(sqlite3* db, int64_t id) {
  int64_t values = 0;
  std::string text;
  for (const ParameterizedSql& step : steps_) {
    sqlite3_stmt* stmt = Compiled(db, step.shape);
    if (stmt == nullptr || !Bind(stmt, step.values, id, kCaptureSymbol)) return -1;
    const int columns = sqlite3_column_count(stmt);
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
      for (int c = 0; c < columns; ++c) {
        // Each value taken out as its storage holds it, as a host object would keep it.
        switch (sqlite3_column_type(stmt, c)) {
          case SQLITE_INTEGER:
            values += sqlite3_column_int64(stmt, c) != 0;
            break;
          case SQLITE_FLOAT:
            values += sqlite3_column_double(stmt, c) != 0.0;
            break;
          case SQLITE_TEXT:
            text.assign(reinterpret_cast<const char*>(sqlite3_column_text(stmt, c)),
                        static_cast<size_t>(sqlite3_column_bytes(stmt, c)));
            values += !text.empty();
            break;
          default:
            break;
        }
      }
    }
    sqlite3_reset(stmt);
    sqlite3_clear_bindings(stmt);
    if (rc != SQLITE_DONE) return -1;
  }
  return values;
}

}  // namespace kwx::bench
