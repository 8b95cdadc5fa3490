#include "services/schema_ddl_internal.h"

#include "model/schema.h"

namespace kwx {
namespace {

constexpr std::string_view kCompanyKey = "CompanyID";


// The table whose rows a column named `column` of `owner` refers to, or nullptr.
const TableDef* ReferredTable(const TableDef& owner, const ColumnDef& column,
                              std::span<const TableDef> tables) {
  if (owner.kind != TableKind::Shared || column.type != ColumnType::Long) return nullptr;
  for (const TableDef& t : tables) {
    if (&t == &owner || t.key.empty() || t.key != column.name) continue;
    if (t.kind == TableKind::Company || t.kind == TableKind::Shared) return &t;
  }
  return nullptr;
}

std::string CascadeTo(std::string_view table, std::string_view key) {
  return " REFERENCES " + Quoted(table) + "(" + Quoted(key) + ") ON DELETE CASCADE";
}

// A column of an index; `nocase` orders it as the statements compare ASCII text, without
// regard to case, so that a lookup by such a text can use the index.
struct IndexColumn {
  std::string_view name;
  bool nocase = false;
};

std::string IndexStatement(std::string_view table, std::initializer_list<IndexColumn> cols) {
  std::string name(table);
  std::string list;
  for (const IndexColumn& c : cols) {
    name += '_';
    name += c.name;
    if (!list.empty()) list += ", ";
    list += Quoted(c.name);
    if (c.nocase) list += " COLLATE NOCASE";
  }
  return "CREATE INDEX " + Quoted(name) + " ON " + Quoted(table) + " (" + list + ")";
}

}  // namespace

std::string Quoted(std::string_view name) {
  std::string out;
  out.reserve(name.size() + 2);
  out += '"';
  out += name;
  out += '"';
  return out;
}

std::string_view DeclaredTypeName(ColumnType type) noexcept {
  switch (type) {
    case ColumnType::Text:
    case ColumnType::Variant:  // written as quoted text, so it is stored and read as text
    case ColumnType::Flags:
      return "TEXT";
    case ColumnType::Single:
      return "SINGLE";
    case ColumnType::Integer:
      return "SMALLINT";
    case ColumnType::Long:
    case ColumnType::Reference:
      return "INTEGER";
    case ColumnType::Boolean:
      return "BIT";
    case ColumnType::Date:
      return "DATETIME";
  }
  return "TEXT";
}

std::string SeriesKeyTrigger(const TableDef& t) {
  const std::string table = Quoted(t.name);
  const std::string key = Quoted(t.key);
  const std::string base = "NEW." + Quoted(kCompanyKey) + " * " + std::to_string(kSeriesKeyBlock);
  const std::string last = base + " + " + std::to_string(kSeriesKeyBlock - 1);
  // The lowest key of the block no other row holds: the block's first key, or one past a key
  // held, whichever is smallest and free. The new row's own key does not count as held.
  // A row the database object inserted took its key in the block already; only others (a
  // host's own insert, a full block) are moved.
  return "CREATE TRIGGER " + Quoted(std::string(t.name) + "_key_block") + " AFTER INSERT ON " +
         table + " WHEN NEW." + key + " NOT BETWEEN " + base + " AND " + last + " BEGIN UPDATE " + table + " SET " + key + " = coalesce((SELECT min(free) FROM (" +
         "SELECT " + base + " AS free UNION ALL SELECT " + key + " + 1 FROM " + table +
         " WHERE " + key + " >= " + base + " AND " + key + " < " + last + " AND " + key +
         " <> NEW." + key + ") WHERE NOT EXISTS (SELECT 1 FROM " + table + " AS held WHERE held." +
         key + " = free AND held." + key + " <> NEW." + key +
         ")), RAISE(ABORT, 'no free series key left in the study''s block')) WHERE " + key +
         " = NEW." + key + "; END";
}

std::vector<std::string> SchemaStatements(std::span<const TableDef> tables) {
  std::vector<std::string> tables_ddl;
  std::vector<std::string> indexes;
  std::vector<std::string> triggers;
  for (const TableDef& t : tables) {
    std::vector<std::string> defs;
    const bool per_company = t.kind == TableKind::PerCompanyRow;
    const bool series = t.kind == TableKind::Series;
    if (per_company) {
      defs.push_back(Quoted(kCompanyKey) + " INTEGER PRIMARY KEY" +
                     CascadeTo("Company", kCompanyKey));
    } else if (!t.key.empty()) {
      defs.push_back(Quoted(t.key) + " INTEGER PRIMARY KEY AUTOINCREMENT");
    }
    if (series) {
      defs.push_back(Quoted(kCompanyKey) + " INTEGER NOT NULL" +
                     CascadeTo("Company", kCompanyKey));
      indexes.push_back(IndexStatement(t.name, {{kCompanyKey}}));
      triggers.push_back(SeriesKeyTrigger(t));
    }
    for (const ColumnDef& c : t.columns) {
      // The key and a series' CompanyID are declared above.
      if (c.name == t.key || ((per_company || series) && c.name == kCompanyKey)) continue;
      std::string def = Quoted(c.name) + " " + std::string(DeclaredTypeName(c.type));
      if (const TableDef* parent = ReferredTable(t, c, tables)) {
        def += CascadeTo(parent->name, parent->key);
        indexes.push_back(IndexStatement(t.name, {{c.name}}));
      }
      defs.push_back(std::move(def));
    }
    if (t.kind == TableKind::Company) {
      indexes.push_back(IndexStatement(t.name, {{"strSymbol", true}, {"ExchangeID"}}));
    }

    std::string ddl = "CREATE TABLE " + Quoted(t.name) + " (";
    for (size_t i = 0; i < defs.size(); ++i) {
      ddl += i == 0 ? "\n  " : ",\n  ";
      ddl += defs[i];
    }
    ddl += "\n)";
    tables_ddl.push_back(std::move(ddl));
  }
  tables_ddl.insert(tables_ddl.end(), std::make_move_iterator(indexes.begin()),
                    std::make_move_iterator(indexes.end()));
  tables_ddl.insert(tables_ddl.end(), std::make_move_iterator(triggers.begin()),
                    std::make_move_iterator(triggers.end()));
  return tables_ddl;
}

}  // namespace kwx
