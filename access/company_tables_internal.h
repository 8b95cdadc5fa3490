// What loading and saving a study share: which columns and judgment groups a platform uses,
// where the reference columns of the company record look their names up, and the row-set
// pair a query fills. Internal to the store; not part of the public headers.
#ifndef KWX_ACCESS_COMPANY_TABLES_INTERNAL_H_
#define KWX_ACCESS_COMPANY_TABLES_INTERNAL_H_

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "access/reference_tables.h"
#include "access/store_context.h"
#include "automation/safe_array.h"
#include "automation/variant.h"
#include "model/company.h"
#include "model/table_def.h"

namespace kwx::company_internal {

// True when a column or table of `use` belongs to the platform (`sp` true for the SP one).
inline bool UsedOn(PlatformUse use, bool sp) noexcept {
  return use == PlatformUse::Both || (use == PlatformUse::SPOnly) == sp;
}

// Calls `f(group)` for each judgment group of the platform, in the order saving writes them:
// Analysis, CheckList (plain), Graph, PrefProc, StockReport (plain), Assessment (SP).
// `C` is Company or const Company.
template <class C, class F>
void ForEachJudgmentGroup(C& company, bool sp, F&& f) {
  auto visit = [&](auto& group) {
    if (UsedOn(std::remove_cvref_t<decltype(group)>::Table().platform, sp)) f(group);
  };
  visit(company.JudgmentAnalysis);
  visit(company.JudgmentCheckList);
  visit(company.JudgmentGraph);
  visit(company.JudgmentPrefProc);
  visit(company.JudgmentStockReport);
  visit(company.JudgmentAssessment);
}

// A reference column of the company record (its name is the table's ID column) and the cache
// its lookups search; `cache` null for Industry, which the loader does not cache.
struct CompanyReference {
  const ReferenceTable* table;
  const LookupCache* cache;
  std::string_view column() const noexcept { return table->id_column; }
};

// The four reference columns: Sector, Exchange, DataSource, Industry.
inline std::array<CompanyReference, 4> CompanyReferences(const ReferenceCaches& caches) {
  return {{{&kSectorTable, &caches.sector},
           {&kExchangeTable, &caches.exchange},
           {&kDataSourceTable, &caches.data_source},
           {&kIndustryTable, nullptr}}};
}

// The cached arrays of a reference, or Empty ones (which make the lookups query).
inline const Variant& CachedIds(const CompanyReference& r) {
  static const Variant kNone;
  return r.cache ? r.cache->ids : kNone;
}
inline const Variant& CachedNames(const CompanyReference& r) {
  static const Variant kNone;
  return r.cache ? r.cache->names : kNone;
}

// The two arrays one executed query fills.
struct RowSet {
  Variant fields;
  Variant data;

  // Rows held: 0 unless both arrays came back.
  int32_t Count() const {
    return fields.IsArray() && data.IsArray() ? data.AsArray().Count(1) : 0;
  }
};

// Runs `sql`; true when it succeeded and returned at least one row.
inline bool QueryRows(IDatabase& db, const std::string& sql, RowSet& rows) {
  return db.blnExecute(sql, rows.fields, rows.data) && rows.Count() > 0;
}

// "lngCompanyID: 7", the parameter line of the store's reports.
inline std::string CompanyParameter(int32_t id) { return "lngCompanyID: " + std::to_string(id); }

}  // namespace kwx::company_internal

#endif  // KWX_ACCESS_COMPANY_TABLES_INTERNAL_H_
