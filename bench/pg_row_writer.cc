#include "bench/pg_row_writer.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

#include "automation/text.h"
#include "model/schema.h"
#include "services/schema_ddl_internal.h"

namespace kwx::bench {

namespace {

constexpr std::string_view kCompanyKey = "CompanyID";
// Statement names are per connection, shared by every writer on it.
int writers = 0;

}  // namespace

// The captured rows of one table (as the server's texts), the column each value goes to, and
// the name of its prepared insert.
struct PgRowWriter::Table {
  std::string name;
  std::string statement;
  std::vector<std::string> columns;  // the company's own key is not among them
  std::vector<Oid> types;
  int company_column = -1;  // where the new company's ID goes
  int key_column = -1;      // a series row's key, kept in its study's block
  int symbol_column = -1;   // Company's strSymbol
  bool upsert = false;      // the shared market-averages row: updated in place
  std::vector<std::vector<std::optional<std::string>>> rows;

  // The insert, or for the market averages an update that inserts only when no row of that
  // day is stored yet: one statement, so that it needs no answer before the next is sent.
  std::string Sql() const {
    std::string names, marks, sets;
    for (size_t c = 0; c < columns.size(); ++c) {
      const std::string mark = "$" + std::to_string(c + 1);
      names += (c == 0 ? "" : ", ") + columns[c];
      marks += (c == 0 ? "" : ", ") + mark;
      if (c > 0) sets += (c == 1 ? "" : ", ") + columns[c] + " = " + mark;
    }
    if (upsert) {
      return "WITH changed AS (UPDATE " + name + " SET " + sets + " WHERE " + columns[0] +
             " = $1 RETURNING 1) INSERT INTO " + name + " (" + names + ") SELECT " + marks +
             " WHERE NOT EXISTS (SELECT 1 FROM changed)";
    }
    return "INSERT INTO " + name + " (" + names + ") VALUES (" + marks + ")" +
           (company_column < 0 ? " RETURNING " + std::string(kCompanyKey) : "");
  }
};

PgRowWriter::PgRowWriter() = default;
PgRowWriter::~PgRowWriter() = default;

size_t PgRowWriter::size() const noexcept {
  size_t n = 0;
  for (const auto& t : tables_) n += t->rows.size();
  return n;
}

bool PgRowWriter::Capture(const std::string& uri, int64_t id, std::string& error) {
  tables_.clear();
  prepared_on_.clear();
  PgPipeline source(uri);
  const std::string prefix = "raw_insert_" + std::to_string(++writers) + "_";
  const std::string id_text = std::to_string(id);
  for (const TableDef& def : AllTables()) {
    const bool company = def.kind == TableKind::Company;
    const bool upsert = def.kind == TableKind::Shared && def.key.empty();
    if (!company && !upsert && def.kind != TableKind::PerCompanyRow &&
        def.kind != TableKind::Series) {
      continue;
    }
    auto t = std::make_unique<Table>();
    t->name = std::string(def.name);
    t->upsert = upsert;
    t->statement = prefix + std::to_string(tables_.size());
    const std::string query = "select_" + t->name;
    std::vector<const char*> values;
    if (!upsert) values.push_back(id_text.c_str());
    source.Prepare(query,
                   "SELECT * FROM " + t->name +
                       (upsert ? std::string() : " WHERE " + std::string(kCompanyKey) + " = $1"),
                   {});
    Table* table = t.get();
    source.Run(query, values, [&def, table, company](const PGresult* r) {
      std::vector<int> taken;
      for (int c = 0; c < PQnfields(r); ++c) {
        const std::string_view column = PQfname(r, c);
        // The company's key is the server's to assign; a series row's key follows from it.
        if (company && EqualsNoCase(column, kCompanyKey)) continue;
        const int at = static_cast<int>(table->columns.size());
        if (EqualsNoCase(column, kCompanyKey)) table->company_column = at;
        if (def.kind == TableKind::Series && EqualsNoCase(column, def.key)) table->key_column = at;
        if (company && EqualsNoCase(column, "strSymbol")) table->symbol_column = at;
        table->columns.emplace_back(column);
        table->types.push_back(PQftype(r, c));
        taken.push_back(c);
      }
      for (int row = 0; row < PQntuples(r); ++row) {
        std::vector<std::optional<std::string>> values;
        for (int c : taken) {
          if (PQgetisnull(r, row, c)) {
            values.emplace_back();
          } else {
            values.emplace_back(std::string(PQgetvalue(r, row, c),
                                            static_cast<size_t>(PQgetlength(r, row, c))));
          }
        }
        table->rows.push_back(std::move(values));
      }
    });
    tables_.push_back(std::move(t));
  }
  if (!source.Sync()) {
    error = source.error();
    return false;
  }
  if (tables_.empty() || tables_.front()->rows.size() != 1) {
    error = "company " + id_text + " is not stored";
    return false;
  }
  return true;
}

int64_t PgRowWriter::Save(PgPipeline& pipe, std::string_view symbol, bool own_transaction) {
  if (std::find(prepared_on_.begin(), prepared_on_.end(), pipe.serial()) == prepared_on_.end()) {
    for (const auto& t : tables_) {
      if (!t->rows.empty()) pipe.Prepare(t->statement, t->Sql(), t->types);
    }
    prepared_on_.push_back(pipe.serial());
  }
  const std::string new_symbol(symbol);
  int64_t id = 0;
  std::string id_text;
  std::vector<std::string> keys;
  std::vector<const char*> values;
  pipe.Command(own_transaction ? "BEGIN" : "SAVEPOINT study");
  for (const auto& t : tables_) {
    for (const auto& row : t->rows) {
      values.clear();
      keys.clear();
      keys.reserve(row.size());
      for (int c = 0; c < static_cast<int>(row.size()); ++c) {
        if (c == t->company_column) {
          values.push_back(id_text.c_str());
        } else if (c == t->key_column && row[c]) {
          // The same place in the new study's key block as in the captured one's.
          const int64_t key = std::atoll(row[c]->c_str());
          keys.push_back(std::to_string(id * kSeriesKeyBlock + key % kSeriesKeyBlock));
          values.push_back(keys.back().c_str());
        } else if (c == t->symbol_column) {
          values.push_back(new_symbol.c_str());
        } else {
          values.push_back(row[c] ? row[c]->c_str() : nullptr);
        }
      }
      if (t->company_column < 0 && !t->upsert) {
        // Every other row needs the company's key: the only answer waited for.
        pipe.Run(t->statement, values,
                 [&id](const PGresult* r) { id = std::atoll(PQgetvalue(r, 0, 0)); });
        if (!pipe.Wait() || id == 0) return 0;
        id_text = std::to_string(id);
      } else {
        pipe.Run(t->statement, values);
      }
    }
  }
  pipe.Command(own_transaction ? "COMMIT" : "RELEASE SAVEPOINT study");
  if (own_transaction && !pipe.Sync()) return 0;
  return pipe.ok() ? id : 0;
}

}  // namespace kwx::bench
