#include "services/sqlite_support_internal.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/text.h"
#include "automation/value_types.h"
#include "services/jet_dialect.h"
#include "services/split_write_vfs_internal.h"

namespace kwx {
namespace sqlite_support {
namespace {

// The value's text as SQLite holds it, valid until the next step or read of the column.
std::string_view ValueView(sqlite3_value* value) {
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
  if (bytes == nullptr) return {};
  return std::string_view(bytes, static_cast<size_t>(sqlite3_value_bytes(value)));
}

void AppendText(std::vector<Variant>& out, sqlite3_value* value) {
  out.emplace_back(std::string(ValueView(value)));
}

void AppendWhole(std::vector<Variant>& out, int64_t v) {
  if (v >= std::numeric_limits<int32_t>::min() && v <= std::numeric_limits<int32_t>::max()) {
    out.emplace_back(static_cast<int32_t>(v));
  } else {
    out.emplace_back(static_cast<double>(v));
  }
}

void AppendShort(std::vector<Variant>& out, int64_t v) {
  if (v >= std::numeric_limits<int16_t>::min() && v <= std::numeric_limits<int16_t>::max()) {
    out.emplace_back(static_cast<int16_t>(v));
  } else {
    AppendWhole(out, v);
  }
}

constexpr double kFirstSerial = -657434;  // 1/1/100
constexpr double kLastSerial = 2958465;   // 12/31/9999

std::optional<Date> DateArgument(sqlite3_value* v) {
  switch (sqlite3_value_type(v)) {
    case SQLITE_INTEGER:
    case SQLITE_FLOAT: {
      // Serials outside the years 100 to 9999 name no date the date arithmetic can count in.
      const double serial = sqlite3_value_double(v);
      if (!(serial >= kFirstSerial && serial < kLastSerial + 1)) return std::nullopt;
      return Date{serial};
    }
    case SQLITE_TEXT: {
      const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(v));
      return ParseDate(std::string_view(text, static_cast<size_t>(sqlite3_value_bytes(v))));
    }
    default:
      return std::nullopt;
  }
}

void DateDiffFunction(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
    sqlite3_result_null(ctx);
    return;
  }
  const auto* interval = reinterpret_cast<const char*>(sqlite3_value_text(argv[0]));
  const std::optional<Date> from = DateArgument(argv[1]);
  const std::optional<Date> to = DateArgument(argv[2]);
  if (interval == nullptr || !from || !to) {
    sqlite3_result_null(ctx);
    return;
  }
  try {
    sqlite3_result_int64(ctx, DateDiff(interval, *from, *to));
  } catch (const AutomationError& e) {
    sqlite3_result_error(ctx, e.description(), -1);
  } catch (...) {
    sqlite3_result_error(ctx, "datediff failed", -1);
  }
}

}  // namespace

DeclaredKind KindOfDeclaredType(const char* decltype_name) {
  if (decltype_name == nullptr) return DeclaredKind::None;
  const std::string name = FoldCase(Trim(decltype_name));
  if (name == "datetime" || name == "date" || name == "timestamp") return DeclaredKind::Date;
  if (name == "bit" || name == "boolean" || name == "yesno") return DeclaredKind::Boolean;
  if (name == "single" || name == "real" || name == "float") return DeclaredKind::Single;
  if (name == "double" || name == "numeric" || name == "decimal") return DeclaredKind::Double;
  if (name == "smallint" || name == "short") return DeclaredKind::Integer;
  if (name == "integer" || name == "int" || name == "long" || name == "counter") {
    return DeclaredKind::Long;
  }
  if (name.find("char") != std::string::npos || name.find("text") != std::string::npos ||
      name.find("clob") != std::string::npos || name == "memo") {
    return DeclaredKind::Text;
  }
  return DeclaredKind::None;
}

namespace {

// Appends the value of `column` in the current row, typed by `kind`. Inlined into AppendRow's
// loop: a load reads millions of values, and a call per value costs a fifth of reading one.
inline void AppendValue(std::vector<Variant>& out, sqlite3_stmt* stmt, int column,
                        DeclaredKind kind) {
  // Each value is constructed in its place in `out`: a load reads tens of thousands of values,
  // and a temporary Variant per value (moved, then destroyed) costs as much as the read.
  // The column is fetched once as a value and read through it: every sqlite3_column_* call
  // looks the column up and checks for errors again. Reading a column's value object this
  // way is safe on a connection one thread uses at a time, as the database object's is.
  sqlite3_value* value = sqlite3_column_value(stmt, column);
  const int storage = sqlite3_value_type(value);
  if (storage == SQLITE_NULL) {
    out.push_back(Variant::Null());
    return;
  }
  const bool number = storage == SQLITE_INTEGER || storage == SQLITE_FLOAT;
  switch (kind) {
    case DeclaredKind::Text:
      AppendText(out, value);
      return;
    case DeclaredKind::Date:
      if (number) {
        out.emplace_back(Date{sqlite3_value_double(value)});
      } else if (std::optional<Date> d = ParseStoredDateText(ValueView(value))) {
        out.emplace_back(*d);
      } else if (std::optional<Date> d = ParseDate(ValueView(value))) {
        out.emplace_back(*d);
      } else {
        AppendText(out, value);
      }
      return;
    case DeclaredKind::Boolean:
      if (number) {
        out.emplace_back(sqlite3_value_double(value) != 0.0);
      } else {
        const std::string_view text = ValueView(value);
        if (EqualsNoCase(Trim(text), "true")) {
          out.emplace_back(true);
        } else if (EqualsNoCase(Trim(text), "false")) {
          out.emplace_back(false);
        } else {
          out.emplace_back(std::string(text));
        }
      }
      return;
    case DeclaredKind::Single:
      if (number) {
        out.emplace_back(static_cast<float>(sqlite3_value_double(value)));
      } else {
        AppendText(out, value);
      }
      return;
    case DeclaredKind::Double:
      if (number) {
        out.emplace_back(sqlite3_value_double(value));
      } else {
        AppendText(out, value);
      }
      return;
    case DeclaredKind::Integer:
    case DeclaredKind::Long:
      if (storage == SQLITE_INTEGER) {
        const int64_t v = sqlite3_value_int64(value);
        if (kind == DeclaredKind::Integer) {
          AppendShort(out, v);
        } else {
          AppendWhole(out, v);
        }
      } else if (number) {
        out.emplace_back(sqlite3_value_double(value));
      } else {
        AppendText(out, value);
      }
      return;
    case DeclaredKind::None:
      break;
  }
  // Without a declared type the value is taken as its storage class holds it.
  switch (storage) {
    case SQLITE_INTEGER:
      AppendWhole(out, sqlite3_value_int64(value));
      return;
    case SQLITE_FLOAT:
      out.emplace_back(sqlite3_value_double(value));
      return;
    default:
      AppendText(out, value);
      return;
  }
}

}  // namespace

void AppendRow(std::vector<Variant>& out, sqlite3_stmt* stmt,
               const std::vector<DeclaredKind>& kinds) {
  const int columns = static_cast<int>(kinds.size());
  for (int c = 0; c < columns; ++c) AppendValue(out, stmt, c, kinds[static_cast<size_t>(c)]);
}

// Text compared as the statements expect it: letters equal whatever their case, in every
// script (the dialect names this collation where a comparison holds text beyond ASCII).
int CompareNoCaseCollation(void*, int a_size, const void* a, int b_size, const void* b) {
  return CompareNoCase(std::string_view(static_cast<const char*>(a), a_size),
                       std::string_view(static_cast<const char*>(b), b_size));
}

bool PrepareSqliteLibrary() {
  // SQLite refuses a setting (SQLITE_MISUSE) once it is initialised: the host's stand then.
  // Finding the file layer to register over initialises SQLite, so it comes last.
  static const bool journals_set = [] {
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    return sqlite3_config(SQLITE_CONFIG_STMTJRNL_SPILL, kStatementJournalSpill) == SQLITE_OK &&
           RegisterSplitWriteVfs();
  }();
  return journals_set;
}

bool RegisterJetFunctions(sqlite3* db) {
  return sqlite3_create_function_v2(db, "datediff", 3, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                    nullptr, &DateDiffFunction, nullptr, nullptr,
                                    nullptr) == SQLITE_OK &&
         sqlite3_create_collation_v2(db, kNoCaseCollation, SQLITE_UTF8, nullptr,
                                     &CompareNoCaseCollation, nullptr) == SQLITE_OK;
}

bool TailIsEmpty(std::string_view tail) {
  size_t i = 0;
  while (i < tail.size()) {
    const char c = tail[i];
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v' || c == ';') {
      ++i;
    } else if (tail.substr(i, 2) == "--") {
      const size_t eol = tail.find('\n', i);
      i = eol == std::string_view::npos ? tail.size() : eol + 1;
    } else if (tail.substr(i, 2) == "/*") {
      const size_t close = tail.find("*/", i + 2);
      // An unclosed comment runs to the end of the text, as SQLite reads it.
      i = close == std::string_view::npos ? tail.size() : close + 2;
    } else {
      return false;
    }
  }
  return true;
}

StatementCache::Entry* StatementCache::Find(const std::string& shape, Slot* slot) {
  if (slot != nullptr && slot->generation == generation_) {
    order_.splice(order_.begin(), order_, slot->at);
    return &slot->at->second;
  }
  const auto found = index_.find(shape);
  if (found == index_.end()) return nullptr;
  order_.splice(order_.begin(), order_, found->second);
  if (slot != nullptr) *slot = Slot{found->second, generation_};
  return &found->second->second;
}

StatementCache::Entry* StatementCache::Insert(const std::string& shape, sqlite3_stmt* stmt,
                                              Slot* slot) {
  if (index_.size() >= capacity_ && !order_.empty()) {
    auto& oldest = order_.back();
    sqlite3_finalize(oldest.second.stmt);
    index_.erase(oldest.first);
    order_.pop_back();
    ++generation_;
  }
  order_.emplace_front(shape, Entry{});
  order_.front().second.stmt = stmt;
  index_.emplace(order_.front().first, order_.begin());
  if (slot != nullptr) *slot = Slot{order_.begin(), generation_};
  return &order_.front().second;
}

void StatementCache::Clear() noexcept {
  for (auto& [shape, entry] : order_) sqlite3_finalize(entry.stmt);
  index_.clear();
  order_.clear();
  ++generation_;
}

}  // namespace sqlite_support
}  // namespace kwx
