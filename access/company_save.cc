#include "access/company_save.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "access/company_tables_internal.h"
#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/dates.h"
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

// The column every per-company and series table ties its rows to the company with.
std::string_view CompanyKey() { return Company::Table().key; }

template <class Rec>
using Columns = std::vector<const FieldBinding<Rec>*>;

// The columns of `Rec` the platform writes, in update order or (`insert_order`) by their
// insert positions. The four lists are made once.
template <class Rec>
const Columns<Rec>& ColumnsOf(bool sp, bool insert_order = false) {
  static const std::array<Columns<Rec>, 4> lists = [] {
    std::array<Columns<Rec>, 4> made;
    for (size_t k = 0; k < made.size(); ++k) {
      const bool on_sp = (k & 1) != 0;
      for (const auto& binding : Rec::Bindings()) {
        if (UsedOn(binding.column.platform, on_sp)) made[k].push_back(&binding);
      }
      if ((k & 2) != 0) {
        std::stable_sort(made[k].begin(), made[k].end(), [](const auto* a, const auto* b) {
          return a->column.insert_position < b->column.insert_position;
        });
      }
    }
    return made;
  }();
  return lists[(sp ? 1 : 0) + (insert_order ? 2 : 0)];
}

// A member appended by the rule of its column type straight from its C++ type, without a
// Variant between; false when the pair is not one of the plain ones (the caller then goes
// through the Variant). The texts are those of AppendSqlValue.
bool AppendMember(std::string& out, const std::string& value, ColumnType type) {
  if (type != ColumnType::Text) return false;
  AppendSqlText(out, value);
  return true;
}
bool AppendMember(std::string& out, float value, ColumnType type) {
  // An infinite single takes the conversion's overflow.
  if (type != ColumnType::Single || std::isinf(value)) return false;
  out.append(NumberText(value));
  return true;
}
bool AppendMember(std::string& out, int16_t value, ColumnType type) {
  if (type != ColumnType::Integer) return false;
  AppendSqlInteger(out, value);
  return true;
}
bool AppendMember(std::string& out, int32_t value, ColumnType type) {
  if (type != ColumnType::Long) return false;
  AppendSqlInteger(out, value);
  return true;
}
bool AppendMember(std::string& out, bool value, ColumnType type) {
  if (type != ColumnType::Boolean) return false;
  out.append(value ? "True" : "False");
  return true;
}
bool AppendMember(std::string& out, const Variant& value, ColumnType type) {
  AppendSqlValue(out, value, type);
  return true;
}
bool AppendMember(std::string&, Date, ColumnType) { return false; }

// A field appended by the rule of its column type.
template <class Rec>
void AppendPlainValue(std::string& out, const Rec& rec, const FieldBinding<Rec>& binding) {
  const ColumnType type = binding.column.type;
  const bool appended = std::visit(
      [&](auto member) { return AppendMember(out, rec.*member, type); }, binding.member);
  if (!appended) AppendSqlValue(out, GetField(rec, binding), type);
}

template <class Rec>
std::string PlainValue(const Rec& rec, const FieldBinding<Rec>& binding) {
  std::string out;
  AppendPlainValue(out, rec, binding);
  return out;
}

// A statement template written piece by piece: text, then the place of a value, and so on.
// Templates that spell the same text are one template, made once for the program's life, so
// that a database binds each spelling's values to one compiled statement.
class TemplateText {
 public:
  explicit TemplateText(std::string_view head) { made_.pieces.emplace_back(head); }
  TemplateText& operator<<(std::string_view text) {
    made_.pieces.back().append(text);
    return *this;
  }
  // The place of a value written to `column`.
  TemplateText& Value(std::string_view column) {
    made_.columns.emplace_back(column);
    made_.pieces.emplace_back();
    return *this;
  }
  template <class Rec>
  TemplateText& Names(const Columns<Rec>& columns, std::string_view separator) {
    for (size_t i = 0; i < columns.size(); ++i) {
      if (i > 0) *this << separator;
      *this << columns[i]->column.name;
    }
    return *this;
  }
  // A value's place per column, separated by ",".
  template <class Rec>
  TemplateText& Values(const Columns<Rec>& columns) {
    for (size_t i = 0; i < columns.size(); ++i) {
      if (i > 0) *this << ",";
      Value(columns[i]->column.name);
    }
    return *this;
  }
  // "COLUMN=VALUE" per column, separated by ",", with `equals` between name and value.
  template <class Rec>
  TemplateText& Assignments(const Columns<Rec>& columns, std::string_view equals) {
    for (size_t i = 0; i < columns.size(); ++i) {
      if (i > 0) *this << ",";
      *this << columns[i]->column.name << equals;
      Value(columns[i]->column.name);
    }
    return *this;
  }

  // The template this text spells, made once for the program's life.
  const StatementTemplate* Template() const {
    static std::mutex lock;
    static std::unordered_map<std::string, std::unique_ptr<const StatementTemplate>> made;
    std::string key;
    for (const std::string& piece : made_.pieces) key.append(piece).push_back('\0');
    for (const std::string& column : made_.columns) key.append(column).push_back('\0');
    const std::lock_guard<std::mutex> hold(lock);
    auto& kept = made[key];
    if (!kept) kept = std::make_unique<const StatementTemplate>(made_);
    return kept.get();
  }

 private:
  StatementTemplate made_;
};

// The template a call site writes, kept per platform (whose column lists differ): the text is
// written on the site's first save only, and later saves take the template made then. Every
// other input of the text must be the same on each call of the site.
class SiteTemplate {
 public:
  // The statement of `write()`, a TemplateText, with its values still to write.
  template <class Write>
  ComposedStatement Made(bool sp, Write write) {
    std::atomic<const StatementTemplate*>& kept = kept_[sp ? 1 : 0];
    const StatementTemplate* made = kept.load(std::memory_order_acquire);
    if (made == nullptr) {
      // Two saves racing here make the same template (TemplateText::Template).
      made = write().Template();
      kept.store(made, std::memory_order_release);
    }
    return ComposedStatement{made, std::vector<std::string>(made->columns.size()), {}};
  }

 private:
  std::array<std::atomic<const StatementTemplate*>, 2> kept_{};
};

// Writes the values of `rec`'s columns, each by `value(out, rec, binding)`, into the values of
// `statement` from place `from` on; a finite Single member of a Single column is kept as its
// number instead, which `value` would write as its NumberText (AppendMember).
template <class Rec, class ValueFn>
void WriteValues(ComposedStatement& statement, size_t from, const Rec& rec,
                 const Columns<Rec>& columns, ValueFn value) {
  for (size_t i = 0; i < columns.size(); ++i) {
    const FieldBinding<Rec>& binding = *columns[i];
    const float* single = nullptr;
    if (binding.column.type == ColumnType::Single) {
      if (auto member = std::get_if<float Rec::*>(&binding.member)) single = &(rec.**member);
    }
    if (single != nullptr && std::isfinite(*single)) {
      statement.SetSingle(from + i, *single);
      continue;
    }
    if (!statement.singles.empty()) statement.singles[from + i].reset();
    std::string& out = statement.literals[from + i];
    out.clear();
    value(out, rec, binding);
  }
}

// Moves `count` values of `from`, from its place `from_at` on, to `to` from its place `to_at`
// on: an insert that follows an update which found no row takes the update's values of the
// same columns instead of writing them again.
void MoveValues(ComposedStatement& from, size_t from_at, ComposedStatement& to, size_t to_at,
                size_t count) {
  for (size_t i = 0; i < count; ++i) {
    to.literals[to_at + i] = std::move(from.literals[from_at + i]);
  }
  if (from.singles.empty() && to.singles.empty()) return;
  to.singles.resize(to.literals.size());
  for (size_t i = 0; i < count; ++i) {
    to.singles[to_at + i] = from.singles.empty() ? std::nullopt : from.singles[from_at + i];
  }
}

// Runs an action statement; true when it succeeded and changed at least one row.
bool Wrote(IDatabase& db, const std::string& sql) {
  Variant fields, data;
  return db.blnExecute(sql, fields, data) && db.lngRowCount() > 0;
}
bool Wrote(IDatabase& db, const ComposedStatement& statement) {
  Variant fields, data;
  return db.blnExecuteComposed(statement, fields, data) && db.lngRowCount() > 0;
}

bool Ran(IDatabase& db, const ComposedStatement& statement) {
  Variant fields, data;
  return db.blnExecuteComposed(statement, fields, data);
}

// The row IDs of the reference names the company holds.
class ReferenceIds {
 public:
  ReferenceIds(const StoreContext& store, const Company& company) {
    size_t i = 0;
    for (const auto& reference : CompanyReferences(*store.caches)) {
      const FieldBinding<Company>* binding = FindField(Company::Bindings(), reference.column());
      const ReferenceTable& t = *reference.table;
      ids_[i++] = {reference.column(),
                   LookupIDByName(GetField(company, *binding).AsString(), t.id_column,
                                  t.name_column, t.table, CachedIds(reference),
                                  CachedNames(reference), store.database())};
    }
  }

  int32_t Of(std::string_view column) const {
    for (const auto& [name, id] : ids_) {
      if (SameFieldName(name, column)) return id;
    }
    return 0;
  }

  // Appends a company field written by its column rule, reference columns as their row IDs.
  void operator()(std::string& out, const Company& company,
                  const FieldBinding<Company>& binding) const {
    if (binding.column.type == ColumnType::Reference) {
      AppendSqlInteger(out, Of(binding.column.name));
    } else {
      AppendPlainValue(out, company, binding);
    }
  }

 private:
  std::array<std::pair<std::string_view, int32_t>, 4> ids_{};
};

bool SaveNotes(const StoreContext& store, IDatabase& db, const Company& company) {
  const TableDef& table = GetTable(TableId::Notes);
  const std::string_view column = table.columns[0].name;
  const std::string id = std::to_string(company.CompanyID);
  std::string text;
  AppendSqlText(text, company.Notes);
  static SiteTemplate update_site, insert_site;
  ComposedStatement update = update_site.Made(store.sp(), [&] {
    TemplateText made("update ");
    made << table.name << " set " << column << " = ";
    made.Value(column) << " where " << CompanyKey() << " = ";
    return made.Value(CompanyKey());
  });
  update.literals = {text, id};
  if (Wrote(db, update)) return true;
  ComposedStatement insert = insert_site.Made(store.sp(), [&] {
    TemplateText made("insert into ");
    made << table.name << "(" << CompanyKey() << ", " << column << ") select ";
    made.Value(CompanyKey()) << ",";
    return made.Value(column);
  });
  insert.literals = {id, std::move(text)};
  return Wrote(db, insert);
}

bool SaveOptions(const StoreContext& store, IDatabase& db, const Company& company) {
  ComposedStatement update, insert;
  try {
    const OptionsGroup& options = company.Options;
    const std::string_view table = OptionsGroup::Table().name;
    const std::string id = std::to_string(company.CompanyID);
    const Columns<OptionsGroup>& columns = ColumnsOf<OptionsGroup>(store.sp());
    static SiteTemplate update_site, insert_site;
    update = update_site.Made(store.sp(), [&] {
      TemplateText text("Update ");
      text << table << "   set ";
      text.Assignments(columns, "=") << " where " << CompanyKey() << " = ";
      return text.Value(CompanyKey());
    });
    WriteValues(update, 0, options, columns, AppendPlainValue<OptionsGroup>);
    update.literals.back() = id;
    const Columns<OptionsGroup>& insert_columns = ColumnsOf<OptionsGroup>(store.sp(), true);
    insert = insert_site.Made(store.sp(), [&] {
      TemplateText text("insert into ");
      text << table << " (" << CompanyKey() << ",";
      text.Names(insert_columns, ",") << ") select ";
      text.Value(CompanyKey()) << ",";
      return text.Values(insert_columns);
    });
    insert.literals.front() = id;
    WriteValues(insert, 1, options, insert_columns, AppendPlainValue<OptionsGroup>);
  } catch (...) {
    store.ReportCurrent("m_strOptionSQL", CompanyParameter(company.CompanyID));
    return false;
  }
  return Wrote(db, update) || Wrote(db, insert);
}

// The company record, its notes and its options.
bool SaveRecord(const StoreContext& store, IDatabase& db, Company& company,
                const ReferenceIds& ids) {
  try {
    const int32_t id = company.CompanyID;
    const std::string_view table = Company::Table().name;
    const Columns<Company>& columns = ColumnsOf<Company>(store.sp(), /*insert_order=*/id < 1);
    ComposedStatement record;
    static SiteTemplate update_site, insert_site;
    if (id >= 1) {
      record = update_site.Made(store.sp(), [&] {
        TemplateText text("Update ");
        text << table << " set ";
        text.Assignments(columns, "=") << " where " << CompanyKey() << " = ";
        return text.Value(CompanyKey());
      });
      record.literals.back() = std::to_string(id);
    } else {
      record = insert_site.Made(store.sp(), [&] {
        TemplateText text("insert into ");
        text << table << " (";
        text.Names(columns, ",") << ") select ";
        return text.Values(columns);
      });
    }
    WriteValues(record, 0, company, columns, ids);
    if (!Ran(db, record)) return false;

    if (id < 1) {
      // The database assigned the key; the study is found again by symbol and exchange.
      std::string find = "select max(";
      find.append(CompanyKey()).append(")").append("  from ").append(table);
      find.append(" where strSymbol = ").append(SqlText(Variant(company.strSymbol)));
      find.append("   and ExchangeID = ").append(std::to_string(ids.Of("ExchangeID")));
      find.append("    or ").append(CompanyKey()).append(" = ").append(std::to_string(id));
      RowSet rows;
      if (!QueryRows(db, find, rows)) return false;
      const SafeArray& data = rows.data.AsArray();
      company.CompanyID = CLng(data(data.LBound(1), data.LBound(2)));
    }

    if (!SaveNotes(store, db, company)) return false;
    return SaveOptions(store, db, company);
  } catch (...) {
    store.ReportCurrent("mdlAccess_UpdateCompany", CompanyParameter(company.CompanyID));
    return false;
  }
}

// What a series save does with an element whose row (the smallest key plus its place) holds
// nothing: leaves the element out, or inserts it as a new row.
enum class MissingRow : bool { kSkip, kInsert };

// How an update writes its "COLUMN=VALUE" pairs: the sign alone, or with a blank each side.
enum class Pairs : bool { kTight, kSpaced };

// One series by the shared scheme: the company's rows, found from its smallest key, are
// overwritten element by element; with no rows yet, one row per element is inserted.
// `derive(row, i)` sets the columns computed from the element's place. The database keeps a
// study's series rows in a key block of its own, so "the smallest key plus i" is always a row
// of this study or no row at all, never another study's row. The pairs are a template
// argument: each instantiation keeps the templates it writes (SiteTemplate), whose text
// depends on them.
template <Pairs kPairs, class Row, class Derive>
bool SaveSeries(const StoreContext& store, int32_t company_id, const std::vector<Row>& series,
                size_t count, Derive derive, const char* location,
                MissingRow missing = MissingRow::kSkip) {
  try {
    IDatabase& db = store.database();
    const TableDef& table = Row::Table();
    const std::string id = std::to_string(company_id);
    static SiteTemplate first_key_site;
    ComposedStatement first_key_query = first_key_site.Made(store.sp(), [&] {
      TemplateText text("select min(");
      text << table.key << ") from " << table.name << " where " << CompanyKey() << " = ";
      return text.Value(CompanyKey());
    });
    first_key_query.literals.front() = id;
    RowSet rows;
    if (!db.blnExecuteComposed(first_key_query, rows.fields, rows.data)) return false;
    double first_key = 0;
    if (rows.Count() > 0) {
      const SafeArray& data = rows.data.AsArray();
      const Variant& least = data(data.LBound(1), data.LBound(2));
      // No rows yet reads as Null; that is "none" like a key below 1.
      if (!least.IsNull()) first_key = CDbl(least);
    }

    const Columns<Row>& columns = ColumnsOf<Row>(store.sp());
    // Every insert starts alike: the table, the column list and the company's ID.
    static SiteTemplate insert_site;
    ComposedStatement insert = insert_site.Made(store.sp(), [&] {
      TemplateText text("insert into ");
      text << table.name << " (" << CompanyKey() << ",";
      text.Names(columns, ",") << ") select ";
      text.Value(CompanyKey()) << ",";
      return text.Values(columns);
    });
    insert.literals.front() = id;
    static SiteTemplate update_site;
    ComposedStatement update = update_site.Made(store.sp(), [&] {
      TemplateText text("Update ");
      text << table.name << " set ";
      text.Assignments(columns, kPairs == Pairs::kSpaced ? " = " : "=")
          << " where " << table.key << " = ";
      return text.Value(table.key);
    });
    Row row;
    for (size_t i = 0; i < count; ++i) {
      row = i < series.size() ? series[i] : Row{};
      derive(row, static_cast<int>(i));
      if (first_key >= 1) {
        // Keys are assumed consecutive from the smallest; a missing one is simply not written.
        WriteValues(update, 0, row, columns, AppendPlainValue<Row>);
        std::string& key = update.literals.back();
        key.clear();
        AppendSqlInteger(key, static_cast<int64_t>(first_key) + static_cast<int64_t>(i));
        if (missing == MissingRow::kSkip) {
          if (!Ran(db, update)) return false;
          continue;
        }
        if (Wrote(db, update)) continue;
        MoveValues(update, 0, insert, 1, columns.size());
      } else {
        WriteValues(insert, 1, row, columns, AppendPlainValue<Row>);
      }
      if (!Ran(db, insert)) return false;
    }
    return true;
  } catch (...) {
    store.ReportCurrent(location, CompanyParameter(company_id));
    return false;
  }
}

template <class Group>
bool SaveGroup(IDatabase& db, const Group& group, const std::string& id, bool sp) {
  const std::string_view table = Group::Table().name;
  const Columns<Group>& columns = ColumnsOf<Group>(sp);
  static SiteTemplate update_site, insert_site;
  ComposedStatement update = update_site.Made(sp, [&] {
    TemplateText text("Update ");
    text << table << " set ";
    text.Assignments(columns, "=") << " Where " << CompanyKey() << " = ";
    return text.Value(CompanyKey());
  });
  WriteValues(update, 0, group, columns, AppendPlainValue<Group>);
  update.literals.back() = id;
  if (Wrote(db, update)) return true;
  ComposedStatement insert = insert_site.Made(sp, [&] {
    TemplateText text("Insert into ");
    text << table << " (" << CompanyKey() << ",";
    text.Names(columns, ",") << ") Select ";
    text.Value(CompanyKey()) << ",";
    return text.Values(columns);
  });
  insert.literals.front() = id;
  MoveValues(update, 0, insert, 1, columns.size());
  return Wrote(db, insert);
}

bool SaveJudgments(const StoreContext& store, const Company& company) {
  if (company.CompanyID <= 0) return true;
  try {
    IDatabase& db = store.database();
    const std::string id = std::to_string(company.CompanyID);
    bool ok = true;
    ForEachJudgmentGroup(company, store.sp(), [&](const auto& group) {
      if (ok) ok = SaveGroup(db, group, id, store.sp());
    });
    return ok;
  } catch (...) {
    store.ReportCurrent("mdlAccess_UpdateJudgment", CompanyParameter(company.CompanyID));
    return false;
  }
}

// The day's market averages: the row of that day is updated, or inserted when there is none.
// The caller ignores the outcome.
void SaveMarketAverages(const StoreContext& store, const Company& company) {
  try {
    IDatabase& db = store.database();
    const MarketAverages& averages = company.DJAverages;
    const std::string_view table = MarketAverages::Table().name;
    const Columns<MarketAverages>& columns = ColumnsOf<MarketAverages>(store.sp());
    // Column 0 is the day; the averages follow it.
    const FieldBinding<MarketAverages>& day = *columns.front();
    const std::string date = PlainValue(averages, day);
    std::string update = "Update ";
    update.append(table);
    for (size_t i = 1; i < columns.size(); ++i) {
      update.append(i == 1 ? "   set " : ",       ").append(columns[i]->column.name);
      update.append(" = ");
      AppendPlainValue(update, averages, *columns[i]);
    }
    update.append(" Where datediff(").append(SqlText(Variant("d"))).append(",");
    update.append(day.column.name).append(",").append(date).append(") = 0");
    if (Wrote(db, update)) return;
    static SiteTemplate insert_site;
    ComposedStatement insert = insert_site.Made(store.sp(), [&] {
      TemplateText text("insert into ");
      text << table << " (";
      text.Names(columns, ", ") << ") select ";
      return text.Values(columns);
    });
    WriteValues(insert, 0, averages, columns, AppendPlainValue<MarketAverages>);
    Wrote(db, insert);
  } catch (...) {
    store.ReportCurrent("Access_Update", CompanyParameter(company.CompanyID));
  }
}

// The steps of a save in their order; the first that fails ends the sequence.
bool SaveSteps(const StoreContext& store, IDatabase& db, Company& company,
               const ReferenceIds& ids, bool update_judgment) {
  if (!SaveRecord(store, db, company, ids)) return false;
  const int32_t id = company.CompanyID;
  const Date last_fy = company.datLastFY;
  const Date latest_q = company.datLatestQEnding;
  auto latest_first = [&](YearlyRow& row, int i) {
    row.Year = static_cast<int16_t>(Year(last_fy) - i);
  };
  // Read when the first quarterly row needs it: what the dates raise is the quarterly save's.
  std::optional<QuarterlyElements> quarters;
  auto by_quarter = [&](QuarterlyRow& row, int i) {
    if (!quarters) quarters.emplace(latest_q, last_fy);
    const FiscalQuarter q = quarters->Of(i);
    row.Quarter = q.quarter;
    row.Year = q.year;
  };
  auto by_month = [](MonthlyRow& row, int i) { row.Month = static_cast<int16_t>(i); };
  auto as_held = [](auto&, int) {};
  const bool series_saved =
      SaveSeries<Pairs::kTight>(store, id, company.Yearly, Company::kYearlyRows, latest_first,
                                "mdlAccess_UpdateYearly") &&
      SaveSeries<Pairs::kTight>(store, id, company.Quarterly, Company::kQuarterlyRows, by_quarter,
                                "mdlAccess_UpdateQuarterly") &&
      SaveSeries<Pairs::kTight>(store, id, company.Monthly, Company::kMonthlyRows, by_month,
                                "mdlAccess_UpdateMonthly") &&
      SaveSeries<Pairs::kTight>(store, id, company.JudgmentPMG, Company::kJudgmentPMGRows, as_held,
                                "mdlAccess_UpdatePMG") &&
      // The PERT update pairs have always been written with blanks around the sign. A study
      // may hold more PERT elements than it has rows (the list grows between saves): an
      // element whose row is missing is inserted, never left out, and the new row takes the
      // next free key of the study's block, where the next save finds it.
      SaveSeries<Pairs::kSpaced>(store, id, company.JudgmentPERT, company.JudgmentPERT.size(),
                                 as_held, "mdlAccess_UpdatePERT", MissingRow::kInsert);
  if (!series_saved) return false;
  if (!update_judgment) return true;
  if (!SaveJudgments(store, company)) return false;
  SaveMarketAverages(store, company);
  return true;
}

}  // namespace

bool SaveCompany(const StoreContext& store, Company& company, bool update_judgment) noexcept {
  IDatabase* db = nullptr;
  bool began = false;
  // A rolled-back insert leaves no row behind, so the study must not keep the ID it was given
  // inside the transaction: the next save would update a row that does not exist.
  const int32_t id_before = company.CompanyID;
  try {
    db = &store.database();
    const ReferenceIds ids(store, company);
    db->BeginTrans();
    began = true;
    const bool saved = SaveSteps(store, *db, company, ids, update_judgment);
    // The transaction ends with the next call whatever that call answers; it is not retried.
    began = false;
    if (saved) {
      db->CommitTrans();
    } else {
      company.CompanyID = id_before;
      db->RollbackTrans();
    }
    return saved;
  } catch (...) {
    store.ReportCurrent("Access_Update", CompanyParameter(company.CompanyID));
    company.CompanyID = id_before;
    if (began) ResumeNext([&] { db->RollbackTrans(); });
    return false;
  }
}

}  // namespace kwx
