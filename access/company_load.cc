#include "access/company_load.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "access/company_tables_internal.h"
#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/text.h"
#include "common/helpers.h"
#include "model/fiscal_dates.h"
#include "model/schema.h"

namespace kwx {
namespace {

using company_internal::CachedIds;
using company_internal::CachedNames;
using company_internal::CompanyParameter;
using company_internal::CompanyReferences;
using company_internal::ForEachJudgmentGroup;
using company_internal::QueryRows;
using company_internal::RowSet;
using company_internal::UsedOn;

// The tables of the joined judgment query with their aliases, in the order of its FROM list;
// the platform filter leaves JA, JC, JG, JP, JR (plain) or JA, JR, JG, JP (SP). The aliases
// are part of the stored statement texts.
struct JoinedTable {
  TableId id;
  const char* alias;
};
constexpr JoinedTable kJudgmentJoin[] = {
    {TableId::JudgmentAnalysis, "JA"},   {TableId::JudgmentCheckList, "JC"},
    {TableId::JudgmentAssessment, "JR"}, {TableId::JudgmentGraph, "JG"},
    {TableId::JudgmentPrefProc, "JP"},   {TableId::JudgmentStockReport, "JR"},
};

std::string JudgmentQuerySql(bool sp, int32_t id) {
  std::vector<const JoinedTable*> joined;
  for (const JoinedTable& t : kJudgmentJoin) {
    if (UsedOn(GetTable(t.id).platform, sp)) joined.push_back(&t);
  }
  const std::string key(GetTable(TableId::JudgmentAnalysis).key);
  const std::string id_text = std::to_string(id);
  std::string from;
  std::string where;
  for (size_t i = 0; i < joined.size(); ++i) {
    const bool last = i + 1 == joined.size();
    from.append(i == 0 ? "  FROM " : "       ").append(GetTable(joined[i]->id).name);
    // The SP statement has always ended its table list with a blank, the plain one without.
    from.append(" AS ").append(joined[i]->alias).append(last ? (sp ? " " : "") : ", ");
    where.append(i == 0 ? " WHERE " : "   and ").append(joined[i]->alias).append(".");
    where.append(key).append(" = ").append(id_text);
  }
  return "SELECT *" + from + where;
}

// The positions of a row set's columns by name, found once per row set rather than by a scan
// of the names for every property: a load reads about a hundred columns by name per row set.
// Names compare case-insensitively and the first of equal names wins, as with FieldValue.
class ColumnIndex {
 public:
  explicit ColumnIndex(const RowSet& rows) : data_(rows.data.AsArray()) {
    if (!rows.fields.IsArray()) return;
    const SafeArray& names = rows.fields.AsArray();
    size_t capacity = 16;
    while (capacity < 2 * static_cast<size_t>(names.Count())) capacity *= 2;
    slots_.resize(capacity);
    for (int32_t i = names.LBound(); i <= names.UBound(); ++i) {
      const Variant& field = names(i);
      if (field.type() != VarType::String) continue;
      const std::string_view name = field.AsString();
      Slot& slot = Probe(name, HashNoCase(name));
      if (slot.column < 0) slot = {HashNoCase(name), i, name};
    }
  }

  // The stored value of column `name` in row `row`, or Empty when no column has that name.
  // `hash` is HashNoCase(name).
  const Variant& Value(std::string_view name, uint64_t hash, int32_t row) const {
    static const Variant kMissing;
    if (slots_.empty()) return kMissing;
    const Slot& slot = Probe(name, hash);
    return slot.column < 0 ? kMissing : data_(row, slot.column);
  }
  const Variant& Value(std::string_view name, int32_t row) const {
    return Value(name, HashNoCase(name), row);
  }

 private:
  struct Slot {
    uint64_t hash = 0;
    int32_t column = -1;
    std::string_view name;
  };

  // The slot holding `name`, or the empty slot where it would go. The table is never more
  // than half full, so a probe always ends.
  Slot& Probe(std::string_view name, uint64_t hash) {
    const size_t mask = slots_.size() - 1;
    for (size_t i = hash & mask;; i = (i + 1) & mask) {
      Slot& slot = slots_[i];
      if (slot.column < 0) return slot;
      if (slot.hash == hash && EqualsNoCase(slot.name, name)) return slot;
    }
  }
  const Slot& Probe(std::string_view name, uint64_t hash) const {
    return const_cast<ColumnIndex*>(this)->Probe(name, hash);
  }

  const SafeArray& data_;
  std::vector<Slot> slots_;
};

// HashNoCase of each column name of `Rec`, in binding order: the names are fixed, so they are
// hashed once rather than for every row read.
template <class Rec>
const std::vector<uint64_t>& BindingHashes() {
  static const std::vector<uint64_t> hashes = [] {
    std::vector<uint64_t> out;
    for (const auto& binding : Rec::Bindings()) out.push_back(HashNoCase(binding.column.name));
    return out;
  }();
  return hashes;
}

// Sets a text field from its stored value, the apostrophe substitution undone.
template <class Rec>
void SetText(Rec& rec, const FieldBinding<Rec>& binding, const Variant& stored) {
  // Most texts hold no substitute; they are taken as they are, without a copy.
  if (stored.type() == VarType::String &&
      stored.AsString().find("\xC3\xBF") == std::string::npos) {
    SetField(rec, binding, stored);
  } else {
    SetField(rec, binding, Variant(TextFromSql(stored)));
  }
}

// Sets every column of `rec` the platform uses from row `row`, each read by its own name.
template <class Rec>
void MapRow(Rec& rec, const ColumnIndex& columns, int32_t row, bool sp) {
  const std::vector<uint64_t>& hashes = BindingHashes<Rec>();
  size_t k = 0;
  for (const auto& binding : Rec::Bindings()) {
    const uint64_t hash = hashes[k++];
    if (!UsedOn(binding.column.platform, sp)) continue;
    const Variant& stored = columns.Value(binding.column.name, hash, row);
    switch (binding.column.type) {
      case ColumnType::Text:
      case ColumnType::Reference:
        // A Null or Empty text reads as "", never as "no value".
        SetText(rec, binding, stored);
        continue;
      case ColumnType::Flags:
      case ColumnType::Variant:
        if (stored.type() == VarType::String) {
          SetText(rec, binding, stored);
          continue;
        }
        break;
      default:
        break;
    }
    // A stored Null leaves the property as it was.
    if (!stored.IsNull()) SetField(rec, binding, stored);
  }
}

void ParseCompany(const StoreContext& store, const RowSet& rows, Company& company) {
  try {
    const ColumnIndex columns(rows);
    const Variant& id = columns.Value(Company::Table().key, 0);
    if (!id.IsNull()) company.CompanyID = CLng(id);
    MapRow(company, columns, 0, store.sp());

    const int16_t year_after_fy =
        static_cast<int16_t>(Year(DateAdd("yyyy", 1, company.datLastFY)));
    const Variant& pmg_fy = columns.Value("intLatestPMGFY", 0);
    company.intLatestPMGFY =
        IsNumeric(pmg_fy) ? std::min(CInt(pmg_fy), year_after_fy) : year_after_fy;

    // The same derivation the KWX import uses when a file carries no month.
    if (!IsValidDate(company.datLatestMData)) {
      company.datLatestMData = LatestMonthlyDataFrom(company.datLastFY);
    }
  } catch (...) {
    store.ReportCurrent("m_ParseCompany");
  }
}

void ParseOptions(const StoreContext& store, const RowSet& rows, Company& company) {
  try {
    MapRow(company.Options, ColumnIndex(rows), 0, store.sp());
  } catch (...) {
    store.ReportCurrent("m_ParseOptions");
  }
}

// The company record, notes and options. True when the record's row came back.
bool QueryCompany(const StoreContext& store, int32_t id, std::string_view symbol,
                  int32_t exchange_id, Company& company) {
  try {
    if (id < 1 && (symbol.empty() || exchange_id < 1)) return false;
    const std::string key(Company::Table().key);
    std::string sql = LoadTableSql(Company::Table().name);
    if (id >= 1) {
      sql.append(" where ").append(key).append(" = ").append(std::to_string(id));
    } else {
      sql.append(" where strSymbol = ").append(QuoteSQLText(symbol));
      sql.append("   and ExchangeID = ").append(std::to_string(exchange_id));
    }
    IDatabase& db = store.database();
    RowSet rows;
    if (!QueryRows(db, sql, rows)) return false;
    ParseCompany(store, rows, company);
    if (company.CompanyID <= 0) return true;

    const std::string where = " where " + key + " = " + std::to_string(company.CompanyID);
    const TableDef& notes = GetTable(TableId::Notes);
    const std::string_view notes_column = notes.columns[0].name;
    RowSet note;
    std::string notes_sql = "select ";
    notes_sql.append(notes_column).append(" from ").append(notes.name).append(where);
    if (QueryRows(db, notes_sql, note)) {
      company.Notes = TextFromSql(FieldValue(notes_column, note.fields, note.data, 0));
    }

    RowSet options;
    if (QueryRows(db, LoadTableSql(OptionsGroup::Table().name) + where, options)) {
      ParseOptions(store, options, company);
    }
    return true;
  } catch (...) {
    store.ReportCurrent("", CompanyParameter(id));
    return false;
  }
}

void QueryJudgment(const StoreContext& store, Company& company) {
  if (company.CompanyID <= 0) return;
  try {
    RowSet rows;
    if (!QueryRows(store.database(), JudgmentQuerySql(store.sp(), company.CompanyID), rows)) {
      return;
    }
    try {
      // A column name shared by two joined tables reads from the first; only CompanyID is.
      const ColumnIndex columns(rows);
      ForEachJudgmentGroup(company, store.sp(),
                           [&](auto& group) { MapRow(group, columns, 0, store.sp()); });
    } catch (...) {
      store.ReportCurrent("m_ParseJudgment");
    }
  } catch (...) {
    store.ReportCurrent("mdlAccess_QueryJudgment", CompanyParameter(company.CompanyID));
  }
}

// One series: as many elements as rows came back, row 0 the first element. A query with no
// rows leaves the series as it was; so does a row that cannot be read.
template <class Row>
void QuerySeries(const StoreContext& store, int32_t id, std::vector<Row>& series,
                 const char* query_location, const char* parse_location) {
  try {
    const TableDef& table = Row::Table();
    std::string sql = LoadTableSql(table.name);
    sql.append(" where CompanyID = ").append(std::to_string(id)).append(table.load_order);
    RowSet rows;
    if (!QueryRows(store.database(), sql, rows)) return;
    try {
      const int32_t first = rows.data.AsArray().LBound(1);
      const ColumnIndex columns(rows);
      std::vector<Row> loaded(static_cast<size_t>(rows.Count()));
      for (size_t i = 0; i < loaded.size(); ++i) {
        MapRow(loaded[i], columns, first + static_cast<int32_t>(i), store.sp());
      }
      series = std::move(loaded);
    } catch (...) {
      store.ReportCurrent(parse_location);
    }
  } catch (...) {
    store.ReportCurrent(query_location, CompanyParameter(id));
  }
}

// Replaces the row IDs the record brought with the names of those rows.
void ResolveNames(const StoreContext& store, Company& company) {
  for (const auto& reference : CompanyReferences(*store.caches)) {
    try {
      const FieldBinding<Company>* binding = FindField(Company::Bindings(), reference.column());
      const Variant stored = GetField(company, *binding);
      const int32_t id = IsNumeric(stored) ? CLng(stored) : 0;
      const ReferenceTable& t = *reference.table;
      SetField(company, *binding,
               Variant(LookupNameByID(id, t.id_column, t.name_column, t.table,
                                      CachedIds(reference), CachedNames(reference),
                                      store.database())));
    } catch (...) {
      store.ReportCurrent("", CompanyParameter(company.CompanyID));
    }
  }
}

}  // namespace

void LoadCompany(const StoreContext& store, int32_t lngCompanyID, std::string_view strSymbol,
                 std::string_view strExchange, Company& company) noexcept {
  int32_t exchange_id = 0;
  if (lngCompanyID < 1) {
    if (strSymbol.empty() || strExchange.empty()) return;
    try {
      exchange_id = LookupIDByName(strExchange, kExchangeTable.id_column,
                                   kExchangeTable.name_column, kExchangeTable.table,
                                   store.caches->exchange.ids, store.caches->exchange.names,
                                   store.database());
    } catch (...) {
      store.ReportCurrent("", CompanyParameter(lngCompanyID));
    }
    if (exchange_id < 1) return;
  }

  const bool found = QueryCompany(store, lngCompanyID, strSymbol, exchange_id, company);
  QueryJudgment(store, company);
  QuerySeries(store, company.CompanyID, company.Yearly, "mdlAccess_QueryYearly",
              "m_ParseYearly");
  QuerySeries(store, company.CompanyID, company.Monthly, "mdlAccess_QueryMonthly",
              "m_ParseMonthly");
  QuerySeries(store, company.CompanyID, company.Quarterly, "mdlAccess_QueryQuarterly",
              "m_ParseQuarterly");
  // The caller's ID, not the record's: a study found by symbol reads no PMG or PERT rows.
  QuerySeries(store, lngCompanyID, company.JudgmentPMG, "mdlAccess_QueryPMG", "m_ParsePMG");
  QuerySeries(store, lngCompanyID, company.JudgmentPERT, "mdlAccess_QueryPERT", "m_ParsePERT");
  // A study that was not found still holds names, not IDs.
  if (found) ResolveNames(store, company);
}

}  // namespace kwx
