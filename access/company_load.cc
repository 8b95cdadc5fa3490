#include "access/company_load.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "access/company_tables_internal.h"
#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/errors.h"
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

// The column of a row set that each binding of `Rec` reads: its offset within a row of the
// data, -1 when no column has its name, or kNotUsed when the platform does not use it. Names
// compare case-insensitively and the first of equal names wins, as with FieldValue.
constexpr int32_t kNotUsed = -2;

template <class Rec>
std::vector<int32_t> FindColumns(const SafeArray& names, int32_t data_lower, int32_t data_count,
                                 bool sp) {
  // The names go into an open-addressed table once (never more than half full, so a probe
  // always ends); each binding then looks its name up there.
  struct Slot {
    uint64_t hash = 0;
    int32_t column = -1;
    std::string_view name;
  };
  size_t capacity = 16;
  while (capacity < 2 * static_cast<size_t>(names.Count())) capacity *= 2;
  std::vector<Slot> slots(capacity);
  const size_t mask = capacity - 1;
  auto probe = [&](std::string_view name, uint64_t hash) -> Slot& {
    for (size_t i = hash & mask;; i = (i + 1) & mask) {
      Slot& slot = slots[i];
      if (slot.column < 0 || (slot.hash == hash && EqualsNoCase(slot.name, name))) return slot;
    }
  };
  for (int32_t i = names.LBound(); i <= names.UBound(); ++i) {
    const std::string* name = names(i).Peek<std::string>();
    const int32_t offset = i - data_lower;
    if (name == nullptr || offset < 0 || offset >= data_count) continue;
    const uint64_t hash = HashNoCase(*name);
    Slot& slot = probe(*name, hash);
    if (slot.column < 0) slot = {hash, offset, *name};
  }
  std::vector<int32_t> columns;
  columns.reserve(Rec::Bindings().size());
  for (const auto& binding : Rec::Bindings()) {
    const std::string_view name = binding.column.name;
    columns.push_back(UsedOn(binding.column.platform, sp) ? probe(name, HashNoCase(name)).column
                                                          : kNotUsed);
  }
  return columns;
}

// A row set read through the bindings of `Rec`. Every run of a statement answers the same
// names array, shared, so the columns found for the last names array are kept (with a share
// of the array, which keeps it alive and unchanged) and found again only for another.
template <class Rec>
class RowReader {
 public:
  RowReader(const RowSet& rows, bool sp) : data_(rows.data.AsArray()) {
    if (data_.dims() != 2) throw AutomationError(err::kSubscript);
    width_ = static_cast<size_t>(data_.Count(2));
    struct Found {
      Variant names;
      bool sp = false;
      std::vector<int32_t> columns;
    };
    thread_local Found last;
    if (!last.names.SharesArrayWith(rows.fields) || last.sp != sp) {
      last.columns =
          FindColumns<Rec>(rows.fields.AsArray(), data_.LBound(2), data_.Count(2), sp);
      last.names = rows.fields;
      last.sp = sp;
    }
    columns_ = &last.columns;
  }

  int32_t rows() const { return data_.Count(1); }
  // False when the platform does not use binding `k`.
  bool Reads(size_t k) const { return (*columns_)[k] != kNotUsed; }

  // The stored value binding `k` reads in row `row` (0 for the first), Empty when it reads
  // none. REQUIRES: row < rows().
  const Variant& Value(size_t k, int32_t row) const {
    static const Variant kMissing;
    const int32_t column = (*columns_)[k];
    return column < 0 ? kMissing
                      : data_.elements()[static_cast<size_t>(row) * width_ +
                                         static_cast<size_t>(column)];
  }

 private:
  const SafeArray& data_;
  size_t width_ = 0;
  const std::vector<int32_t>* columns_ = nullptr;
};

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

// Sets every column of `rec` the platform uses from row `row` (0 for the first), except the
// column at binding index `derived`, which the caller completes from its stored value itself.
template <class Rec>
void MapRow(Rec& rec, const RowReader<Rec>& reader, int32_t row,
            size_t derived = static_cast<size_t>(-1)) {
  size_t k = 0;
  for (const auto& binding : Rec::Bindings()) {
    if (!reader.Reads(k) || k == derived) {
      ++k;
      continue;
    }
    const Variant& stored = reader.Value(k++, row);
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
    const Variant id = FieldValue(Company::Table().key, rows.fields, rows.data, 0);
    if (!id.IsNull()) company.CompanyID = CLng(id);
    const RowReader<Company> reader(rows, store.sp());
    static const size_t kPmgFy = static_cast<size_t>(
        FindField(Company::Bindings(), "intLatestPMGFY") - Company::Bindings().data());
    MapRow(company, reader, 0, kPmgFy);

    // The PMG year is never after the year following the last fiscal year. A stored number no
    // 16-bit year can hold counts as no year, like a stored text, and does not stop the load.
    const int16_t year_after_fy = static_cast<int16_t>(Year(DateAdd("yyyy", 1, company.datLastFY)));
    const Variant& pmg_fy = reader.Value(kPmgFy, 0);
    std::optional<int16_t> stored;
    if (IsNumeric(pmg_fy)) ResumeNext([&] { stored = CInt(pmg_fy); });
    company.intLatestPMGFY = stored ? std::min(*stored, year_after_fy) : year_after_fy;

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
    MapRow(company.Options, RowReader<OptionsGroup>(rows, store.sp()), 0);
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
      ForEachJudgmentGroup(company, store.sp(), [&](auto& group) {
        using Group = std::remove_cvref_t<decltype(group)>;
        MapRow(group, RowReader<Group>(rows, store.sp()), 0);
      });
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
      const RowReader<Row> reader(rows, store.sp());
      std::vector<Row> loaded(static_cast<size_t>(reader.rows()));
      for (size_t i = 0; i < loaded.size(); ++i) {
        MapRow(loaded[i], reader, static_cast<int32_t>(i));
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
  // The reference columns' bindings, found once: the same four columns on every load.
  static const auto kBindings = [] {
    std::array<const FieldBinding<Company>*, 4> bindings{};
    const ReferenceCaches none;
    size_t k = 0;
    for (const auto& reference : CompanyReferences(none)) {
      bindings[k++] = FindField(Company::Bindings(), reference.column());
    }
    return bindings;
  }();
  size_t k = 0;
  for (const auto& reference : CompanyReferences(*store.caches)) {
    const FieldBinding<Company>* binding = kBindings[k++];
    try {
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
