#include "access/reference_tables.h"

#include <string>

#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "common/helpers.h"

namespace kwx {
namespace {

constexpr uint8_t kApostrophe = 39;

// Reference names go into SQL by the plain quoting rule with the apostrophe: trimmed and
// wrapped, nothing inside changed. A name holding an apostrophe therefore makes a statement the
// database refuses as a whole, and is never stored; that is the tables' long-standing behaviour.
std::string Quoted(std::string_view name) { return QuoteSQLText(name, kApostrophe); }

IDatabase& Require(IDatabase* db) {
  if (!db) throw AutomationError(err::kObjectNotSet);
  return *db;
}

bool Execute(IDatabase* db, const std::string& sql) {
  Variant fields;
  Variant data;
  return Require(db).blnExecute(sql, fields, data);
}

}  // namespace

void LoadLookupTable(IDatabase* db, const ReferenceTable& t, LookupCache& cache) {
  if (t.table.empty()) return;
  ResumeNext([&] { cache.ids = Variant(SafeArray::Vector(0, 0)); });
  ResumeNext([&] { cache.names = Variant(SafeArray::Vector(0, 0)); });

  Variant fields;
  Variant data;
  bool ok = false;
  ResumeNext([&] { ok = Require(db).blnExecute(LoadTableSql(t.table), fields, data); });
  int32_t rows = 0;
  ResumeNext([&] { rows = Require(db).lngRowCount(); });
  if (!ok || rows <= 0 || !fields.IsArray() || !data.IsArray()) return;

  const SafeArray& names = fields.AsArray();
  int32_t id_col = -1;
  int32_t name_col = -1;
  for (int32_t c = names.LBound(); c <= names.UBound(); ++c) {
    std::string column;
    ResumeNext([&] { column = CStr(names(c)); });
    if (id_col < 0 && EqualsNoCase(column, t.id_column)) id_col = c;
    if (name_col < 0 && EqualsNoCase(column, t.name_column)) name_col = c;
    if (id_col >= 0 && name_col >= 0) break;
  }
  if (id_col < 0 || name_col < 0) return;

  const SafeArray& rowset = data.AsArray();
  SafeArray ids = SafeArray::Vector(0, rowset.UBound(1));
  SafeArray values = SafeArray::Vector(0, rowset.UBound(1));
  for (int32_t r = rowset.LBound(1); r <= rowset.UBound(1); ++r) {
    ResumeNext([&] { ids(r) = rowset(r, id_col); });
    ResumeNext([&] { values(r) = rowset(r, name_col); });
  }
  cache.ids = Variant(std::move(ids));
  cache.names = Variant(std::move(values));
}

void SaveLookupRows(IDatabase* db, const ReferenceTable& t, const Variant& ids,
                    const Variant& names) {
  if (t.id_column.empty() || t.name_column.empty() || !ids.IsArray() || !names.IsArray()) return;
  // The first error ends the loop; rows already written stay written.
  ResumeNext([&] {
    const SafeArray& id_list = ids.AsArray();
    const SafeArray& name_list = names.AsArray();
    for (int32_t i = id_list.LBound(); i <= id_list.UBound(); ++i) {
      const std::string name = CStr(name_list(i));
      const std::string id = SqlKeyText(id_list(i));
      bool updated = Execute(db, UpdateFieldSql(t.table, t.name_column, Quoted(name),
                                                t.id_column, id));
      if (!updated || db->lngRowCount() <= 0) {
        Execute(db, InsertRowSql(t.table, t.name_column, Quoted(name)));
      }
    }
  });
}

void DeleteLookupRows(IDatabase* db, const ReferenceTable& t, const Variant& ids) {
  if (t.id_column.empty() || !ids.IsArray()) return;
  ResumeNext([&] {
    const SafeArray& id_list = ids.AsArray();
    for (int32_t i = id_list.LBound(); i <= id_list.UBound(); ++i) {
      Execute(db, DeleteRowsSql(t.table, t.id_column, SqlKeyText(id_list(i))));
    }
  });
}

bool FindOrAddLookup(IDatabase* db, std::string_view name, const ReferenceTable& t,
                     const LookupCache& cache) {
  if (name.empty()) return false;
  bool added = false;
  ResumeNext([&] {
    int32_t id = LookupIDByName(name, t.id_column, t.name_column, t.table, cache.ids,
                                cache.names, Require(db));
    if (id < 1) {
      added = Execute(db, "insert into " + std::string(t.table) + "(" +
                              std::string(t.name_column) + ") select " + Quoted(name));
    }
  });
  return added;
}

void StoreIndustryCode(IDatabase* db, int32_t code, std::string_view name) {
  ResumeNext([&] {
    IDatabase& database = Require(db);
    const Variant no_cache;
    if (code < 1) {
      if (LookupIDByName(name, kIndustryTable.id_column, kIndustryTable.name_column,
                         kIndustryTable.table, no_cache, no_cache, database) > 0) {
        return;
      }
    } else {
      std::string current = LookupNameByID(code, "IndustryCode", kIndustryTable.name_column,
                                           kIndustryTable.table, no_cache, no_cache, database);
      if (!current.empty()) {
        if (EqualsNoCase(current, name)) return;
        Execute(db, "update Industry   set Industry = " + Quoted(name) +
                        " where IndustryCode=" + std::to_string(code));
        return;
      }
    }
    Execute(db, "insert into Industry (IndustryCode, Industry) select " + std::to_string(code) +
                    "," + Quoted(name));
  });
}

}  // namespace kwx
