#include "services/schema_ddl_internal.h"

#include "automation/text.h"
#include "model/schema.h"
#include "services/jet_dialect.h"

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

// A name as the statements of `engine` write it (see SchemaStatements).
std::string Name(std::string_view name, SqlEngine engine) {
  return engine == SqlEngine::kPostgres ? std::string(name) : Quoted(name);
}

std::string CascadeTo(std::string_view table, std::string_view key, SqlEngine engine) {
  return " REFERENCES " + Name(table, engine) + "(" + Name(key, engine) + ") ON DELETE CASCADE";
}

// A column of an index; `nocase` orders it as the statements compare ASCII text, without
// regard to case, so that a lookup by such a text can use the index.
struct IndexColumn {
  std::string_view name;
  bool nocase = false;
};

std::string IndexStatement(std::string_view table, std::initializer_list<IndexColumn> cols,
                           SqlEngine engine) {
  std::string name(table);
  std::string list;
  for (const IndexColumn& c : cols) {
    name += '_';
    name += c.name;
    if (!list.empty()) list += ", ";
    list += Name(c.name, engine);
    if (c.nocase) list += " COLLATE NOCASE";
  }
  return "CREATE INDEX " + Name(name, engine) + " ON " + Name(table, engine) + " (" + list + ")";
}

// What the loader's statements need on PostgreSQL beyond the tables. Texts compared in a
// statement carry COLLATE NOCASE or COLLATE kwx_nocase (jet_dialect.h): both are ICU's
// comparison at the second strength, which ignores case in every script (and is what an
// index on such a column is ordered by). datediff counts interval boundaries between two
// dates given as stored or M/d/yyyy texts, as the SQLite engine's function does; a date that
// does not read answers NULL.
std::vector<std::string> PostgresPrelude() {
  std::vector<std::string> out;
  for (const char* collation : {"NOCASE", kNoCaseCollation}) {
    out.push_back(std::string("CREATE COLLATION ") + collation +
                  " (provider = icu, locale = 'und-u-ks-level2', deterministic = false)");
  }
  out.push_back(R"(CREATE FUNCTION datediff(unit text, date1 text, date2 text) RETURNS bigint
LANGUAGE plpgsql STABLE AS $$
DECLARE a timestamp; b timestamp;
BEGIN
  IF unit IS NULL OR date1 IS NULL OR date2 IS NULL THEN RETURN NULL; END IF;
  BEGIN
    a := date1::timestamp;
    b := date2::timestamp;
  EXCEPTION WHEN others THEN RETURN NULL;
  END;
  CASE lower(unit)
    WHEN 'd', 'y' THEN RETURN b::date - a::date;
    WHEN 'm' THEN RETURN (extract(year FROM b) * 12 + extract(month FROM b))
                       - (extract(year FROM a) * 12 + extract(month FROM a));
    WHEN 'q' THEN RETURN (extract(year FROM b) * 4 + extract(quarter FROM b))
                       - (extract(year FROM a) * 4 + extract(quarter FROM a));
    WHEN 'yyyy' THEN RETURN extract(year FROM b) - extract(year FROM a);
    WHEN 'h' THEN RETURN floor(extract(epoch FROM b) / 3600) - floor(extract(epoch FROM a) / 3600);
    WHEN 'n' THEN RETURN floor(extract(epoch FROM b) / 60) - floor(extract(epoch FROM a) / 60);
    WHEN 's' THEN RETURN floor(extract(epoch FROM b)) - floor(extract(epoch FROM a));
    ELSE RAISE EXCEPTION 'datediff: unknown interval %', unit;
  END CASE;
END $$)");
  // Dates given as serial numbers (days since 12/30/1899), as the SQLite engine reads them.
  out.push_back(R"(CREATE FUNCTION datediff(unit text, date1 double precision, date2 double precision)
RETURNS bigint LANGUAGE sql STABLE AS $$
SELECT CASE WHEN date1 BETWEEN -657434 AND 2958465.99999 AND date2 BETWEEN -657434 AND 2958465.99999
  THEN datediff(unit, (timestamp '1899-12-30' + date1 * interval '1 day')::text,
                (timestamp '1899-12-30' + date2 * interval '1 day')::text) END
$$)");
  return out;
}

// The PostgreSQL form of SeriesKeyTrigger: before a row goes in with a key outside its study's
// block (or none), it takes the lowest free key of the block.
std::vector<std::string> PostgresSeriesKeyTrigger(const TableDef& t) {
  const std::string table(t.name);
  const std::string key(t.key);
  const std::string function = table + "_key_block";
  const std::string base = "NEW." + std::string(kCompanyKey) + "::bigint * " +
                           std::to_string(kSeriesKeyBlock);
  const std::string last = base + " + " + std::to_string(kSeriesKeyBlock - 1);
  return {
      "CREATE FUNCTION " + function + "() RETURNS trigger LANGUAGE plpgsql AS $$\nBEGIN\n" +
          "  IF NEW." + key + " IS NULL OR NEW." + key + " NOT BETWEEN " + base + " AND " + last +
          " THEN\n    NEW." + key + " := (SELECT min(free) FROM (SELECT " + base +
          " AS free UNION ALL SELECT " + key + " + 1 FROM " + table + " WHERE " + key +
          " >= " + base + " AND " + key + " < " + last + ") AS candidates WHERE NOT EXISTS " +
          "(SELECT 1 FROM " + table + " AS held WHERE held." + key + " = free));\n" +
          "    IF NEW." + key + " IS NULL THEN\n" +
          "      RAISE EXCEPTION 'no free series key left in the study''s block';\n" +
          "    END IF;\n  END IF;\n  RETURN NEW;\nEND $$",
      "CREATE TRIGGER " + function + " BEFORE INSERT ON " + table + " FOR EACH ROW EXECUTE FUNCTION " +
          function + "()"};
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

std::string_view DeclaredTypeName(ColumnType type, SqlEngine engine) noexcept {
  const bool pg = engine == SqlEngine::kPostgres;
  switch (type) {
    case ColumnType::Text:
    case ColumnType::Variant:  // written as quoted text, so it is stored and read as text
    case ColumnType::Flags:
      return "TEXT";
    case ColumnType::Single:
      return pg ? "REAL" : "SINGLE";
    case ColumnType::Integer:
      // The server refuses a number a SMALLINT cannot hold, where a file keeps it; the
      // database object still reads such a column as 16-bit.
      return pg ? "INTEGER" : "SMALLINT";
    case ColumnType::Long:
    case ColumnType::Reference:
      return "INTEGER";
    case ColumnType::Boolean:
      return pg ? "SMALLINT" : "BIT";
    case ColumnType::Date:
      return pg ? "TEXT" : "DATETIME";
  }
  return "TEXT";
}

// A study's rows by its ID, in key order: the first key of a study's block is then one step
// into the index. Without the key named on the server, finding the smallest key of a study
// that has no rows yet walks the whole key index.
std::string SeriesIndexName(const TableDef& t, SqlEngine engine) {
  std::string name = std::string(t.name) + "_" + std::string(kCompanyKey);
  if (engine == SqlEngine::kPostgres) name += "_" + std::string(t.key);
  return engine == SqlEngine::kPostgres ? FoldCase(name) : name;
}

std::string SeriesIndexStatement(const TableDef& t, SqlEngine engine) {
  return engine == SqlEngine::kPostgres ? IndexStatement(t.name, {{kCompanyKey}, {t.key}}, engine)
                                        : IndexStatement(t.name, {{kCompanyKey}}, engine);
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

std::vector<std::string> SchemaStatements(std::span<const TableDef> tables, SqlEngine engine) {
  const bool pg = engine == SqlEngine::kPostgres;
  auto name = [engine](std::string_view n) { return Name(n, engine); };
  std::vector<std::string> tables_ddl = pg ? PostgresPrelude() : std::vector<std::string>{};
  std::vector<std::string> indexes;
  std::vector<std::string> triggers;
  for (const TableDef& t : tables) {
    std::vector<std::string> defs;
    const bool per_company = t.kind == TableKind::PerCompanyRow;
    const bool series = t.kind == TableKind::Series;
    if (per_company) {
      defs.push_back(name(kCompanyKey) + " INTEGER PRIMARY KEY" +
                     CascadeTo("Company", kCompanyKey, engine));
    } else if (!t.key.empty()) {
      defs.push_back(name(t.key) +
                     (!pg       ? " INTEGER PRIMARY KEY AUTOINCREMENT"
                      : series  ? " BIGINT GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY"
                                : " INTEGER GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY"));
    }
    if (series) {
      defs.push_back(name(kCompanyKey) + " INTEGER NOT NULL" +
                     CascadeTo("Company", kCompanyKey, engine));
      indexes.push_back(SeriesIndexStatement(t, engine));
      if (pg) {
        const std::vector<std::string> trigger = PostgresSeriesKeyTrigger(t);
        triggers.insert(triggers.end(), trigger.begin(), trigger.end());
      } else {
        triggers.push_back(SeriesKeyTrigger(t));
      }
    }
    for (const ColumnDef& c : t.columns) {
      // The key and a series' CompanyID are declared above.
      if (c.name == t.key || ((per_company || series) && c.name == kCompanyKey)) continue;
      std::string def = name(c.name) + " " + std::string(DeclaredTypeName(c.type, engine));
      if (const TableDef* parent = ReferredTable(t, c, tables)) {
        def += CascadeTo(parent->name, parent->key, engine);
        indexes.push_back(IndexStatement(t.name, {{c.name}}, engine));
      }
      defs.push_back(std::move(def));
    }
    if (t.kind == TableKind::Company) {
      indexes.push_back(IndexStatement(t.name, {{"strSymbol", true}, {"ExchangeID"}}, engine));
    }

    std::string ddl = "CREATE TABLE " + name(t.name) + " (";
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
