#include "bench/pg_statement_replay.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

#include "bench/statement_replay.h"

namespace kwx::bench {

namespace {

// The server's type numbers of the values a statement's literals are lifted into.
constexpr Oid kInt8 = 20, kInt2 = 21, kInt4 = 23, kFloat4 = 700, kFloat8 = 701;
// Statement names are per connection, shared by every replay on it.
int replays = 0;

}  // namespace

void PgStatementReplay::Add(const std::string& jet_sql) {
  Step step;
  step.sql = ParameterizeJetSql(jet_sql);
  // Loads of another study differ only in their values: one statement per shape.
  // The server types a parameter once, when its statement is prepared: the kinds count too.
  auto same_kinds = [](const ParameterizedSql& a, const ParameterizedSql& b) {
    for (size_t k = 0; k < a.values.size(); ++k) {
      if (a.values[k].kind != b.values[k].kind) return false;
    }
    return true;
  };
  for (const Step& s : steps_) {
    if (s.sql.shape == step.sql.shape && same_kinds(s.sql, step.sql)) step.name = s.name;
  }
  if (prefix_.empty()) prefix_ = "raw_load_" + std::to_string(++replays) + "_";
  if (step.name.empty()) step.name = prefix_ + std::to_string(steps_.size());
  for (const SqlParameter& v : step.sql.values) {
    switch (v.kind) {
      case SqlParameter::Kind::Integer:
        if (v.integer == kCaptureCompanyID) step.company.push_back(step.texts.size());
        step.texts.push_back(std::to_string(v.integer));
        break;
      case SqlParameter::Kind::Real: {
        char buffer[32];
        const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, v.real);
        step.texts.emplace_back(buffer, ec == std::errc() ? end : buffer);
        break;
      }
      case SqlParameter::Kind::Text:
        step.texts.push_back(v.text);
        break;
    }
  }
  steps_.push_back(std::move(step));
}

int64_t PgStatementReplay::Load(PgPipeline& pipe, int64_t id) {
  if (std::find(prepared_on_.begin(), prepared_on_.end(), pipe.serial()) == prepared_on_.end()) {
    for (size_t k = 0; k < steps_.size(); ++k) {
      const Step& s = steps_[k];
      if (s.name != prefix_ + std::to_string(k)) continue;  // prepared with an earlier step
      std::vector<Oid> types;
      for (const SqlParameter& v : s.sql.values) {
        types.push_back(v.kind == SqlParameter::Kind::Integer ? kInt8
                        : v.kind == SqlParameter::Kind::Real  ? kFloat8
                                                              : 0);
      }
      pipe.Prepare(s.name, NumberPlaceholders(s.sql.shape), types);
    }
    prepared_on_.push_back(pipe.serial());
  }
  int64_t values = 0;
  std::string text;
  auto read = [&values, &text](const PGresult* r) {
    for (int row = 0; row < PQntuples(r); ++row) {
      for (int c = 0; c < PQnfields(r); ++c) {
        if (PQgetisnull(r, row, c)) continue;
        // Each value taken out as its type holds it, as a host object would keep it.
        const char* cell = PQgetvalue(r, row, c);
        const size_t length = static_cast<size_t>(PQgetlength(r, row, c));
        switch (PQftype(r, c)) {
          case kInt2:
          case kInt4:
          case kInt8: {
            int64_t whole = 0;
            std::from_chars(cell, cell + length, whole);
            values += whole != 0;
            break;
          }
          case kFloat4:
          case kFloat8:
            values += std::strtod(cell, nullptr) != 0.0;
            break;
          default:
            text.assign(cell, length);
            values += !text.empty();
            break;
        }
      }
    }
  };
  const std::string id_text = std::to_string(id);
  std::vector<const char*> bound;
  for (const Step& s : steps_) {
    bound.clear();
    for (const std::string& t : s.texts) bound.push_back(t.c_str());
    for (size_t k : s.company) bound[k] = id_text.c_str();
    pipe.Run(s.name, bound, read);
  }
  return pipe.Sync() ? values : -1;
}

}  // namespace kwx::bench
