#include "services/jet_dialect.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cmath>
#include <limits>
#include <optional>
#include <system_error>
#include <utility>

#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/format.h"
#include "automation/text.h"
#include "automation/value_types.h"
#include "model/schema.h"

namespace kwx {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Bytes of a UTF-8 sequence count as word characters: a non-ASCII name stays one word.
constexpr auto kWordChars = [] {
  std::array<bool, 256> table{};
  for (int u = 0; u < 256; ++u) {
    table[u] = (u >= '0' && u <= '9') || (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') ||
               u == '_' || u >= 0x80;
  }
  return table;
}();
bool IsWordChar(char c) { return kWordChars[static_cast<unsigned char>(c)]; }

char Lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool EqualsLower(std::string_view text, std::string_view lower_word) {
  if (text.size() != lower_word.size()) return false;
  for (size_t k = 0; k < text.size(); ++k) {
    if (Lower(text[k]) != lower_word[k]) return false;
  }
  return true;
}

size_t SkipBlanks(std::string_view s, size_t i) {
  while (i < s.size() && IsBlank(s[i])) ++i;
  return i;
}

size_t WordEnd(std::string_view s, size_t i) {
  while (i < s.size() && IsWordChar(s[i])) ++i;
  return i;
}

// The index just past the literal opened by s[i]; a doubled quote inside is part of the text.
// std::nullopt when the literal is never closed.
std::optional<size_t> QuotedEnd(std::string_view s, size_t i, char quote) {
  for (size_t k = i + 1; k < s.size(); ++k) {
    if (s[k] != quote) continue;
    if (k + 1 < s.size() && s[k + 1] == quote) {
      ++k;
      continue;
    }
    return k + 1;
  }
  return std::nullopt;
}

void AppendSingleQuoted(std::string& out, std::string_view text) {
  out += '\'';
  for (char c : text) {
    if (c == '\'') out += '\'';
    out += c;
  }
  out += '\'';
}

// "a""b" holds the text a"b.
std::string UndoubleQuotes(std::string_view body, char quote) {
  std::string text;
  text.reserve(body.size());
  for (size_t k = 0; k < body.size(); ++k) {
    text += body[k];
    if (body[k] == quote && k + 1 < body.size() && body[k + 1] == quote) ++k;
  }
  return text;
}

// The kinds of statement whose literals are lifted; any other (DDL, PRAGMA, transaction
// control) runs as plain text, since SQLite refuses parameters in most of them.
enum class StatementKind : uint8_t { Other, Query, Action };

StatementKind KindOf(std::string_view s) {
  size_t i = 0;
  for (;;) {
    i = SkipBlanks(s, i);
    if (s.substr(i, 2) == "--") {
      const size_t eol = s.find('\n', i);
      if (eol == std::string_view::npos) return StatementKind::Other;
      i = eol + 1;
    } else if (s.substr(i, 2) == "/*") {
      const size_t close = s.find("*/", i + 2);
      if (close == std::string_view::npos) return StatementKind::Other;
      i = close + 2;
    } else {
      break;
    }
  }
  const std::string_view word = s.substr(i, WordEnd(s, i) - i);
  if (EqualsLower(word, "select")) return StatementKind::Query;
  if (EqualsLower(word, "insert") || EqualsLower(word, "update") ||
      EqualsLower(word, "delete") || EqualsLower(word, "replace")) {
    return StatementKind::Action;
  }
  return StatementKind::Other;
}

// The end of the number starting at s[i] (digits, an optional fraction, an optional exponent),
// or i when the text there is no plain decimal number.
size_t NumberEnd(std::string_view s, size_t i) {
  size_t k = i;
  auto digits = [&] {
    const size_t from = k;
    while (k < s.size() && s[k] >= '0' && s[k] <= '9') ++k;
    return k > from;
  };
  bool any = digits();
  if (k < s.size() && s[k] == '.') {
    ++k;
    any = digits() || any;
  }
  if (!any) return i;
  if (k < s.size() && (s[k] == 'e' || s[k] == 'E')) {
    size_t e = k + 1;
    if (e < s.size() && (s[e] == '+' || s[e] == '-')) ++e;
    const size_t save = k;
    k = e;
    if (!digits()) k = save;
  }
  return k;
}

// The digits of a number's text such as "171.22" (digits and at most one point, no
// exponent) as one whole number, with the count of digits after the point (-1 without a
// point). False for any other text or more than 18 digits.
struct ShortNumber {
  uint64_t digits = 0;
  int count = 0;
  int after_point = -1;
};
bool ScanShortNumber(std::string_view text, ShortNumber& n) {
  for (char c : text) {
    if (c == '.' && n.after_point < 0) {
      n.after_point = 0;
    } else if (c >= '0' && c <= '9') {
      if (++n.count > 18) return false;
      n.digits = n.digits * 10 + static_cast<uint64_t>(c - '0');
      if (n.after_point >= 0) ++n.after_point;
    } else {
      return false;
    }
  }
  return n.count > 0;
}

// The value of a short number as a Real: with at most 15 digits the whole number is exact in
// a double, and so is the power of ten (at most 10^15) it is divided by, and one correctly
// rounded division gives exactly the double from_chars reads. False otherwise.
bool ShortDecimal(const ShortNumber& n, double& value) {
  static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                       1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  if (n.count > 15) return false;
  value = static_cast<double>(n.digits) / kPowers[n.after_point < 0 ? 0 : n.after_point];
  return true;
}

// The parameter a number's text is lifted into: a whole number as an Integer, any other as
// a finite Real; std::nullopt for a whole number beyond 64 bits or a Real that overflows.
std::optional<SqlParameter> NumberValue(std::string_view text) {
  SqlParameter p;
  // Most numbers are short: read without from_chars, to the same values.
  ShortNumber shortened;
  if (ScanShortNumber(text, shortened)) {
    if (shortened.after_point < 0) {
      p.kind = SqlParameter::Kind::Integer;
      p.integer = static_cast<int64_t>(shortened.digits);
      return p;
    }
    if (ShortDecimal(shortened, p.real)) {
      p.kind = SqlParameter::Kind::Real;
      return p;
    }
  }
  const char* const last = text.data() + text.size();
  if (text.find_first_of(".eE") == std::string_view::npos) {
    p.kind = SqlParameter::Kind::Integer;
    const auto [ptr, ec] = std::from_chars(text.data(), last, p.integer);
    if (ec == std::errc() && ptr == last) return p;
  } else {
    p.kind = SqlParameter::Kind::Real;
    const auto [ptr, ec] = std::from_chars(text.data(), last, p.real);
    if (ec == std::errc() && ptr == last && std::isfinite(p.real)) return p;
  }
  return std::nullopt;
}

// The character statements write in place of an apostrophe inside a text (U+00FF); the
// database keeps the apostrophe itself.
constexpr std::string_view kStatementApostrophe = "\xC3\xBF";

// `text` with each U+00FF turned back into the apostrophe it stands for.
std::string WithApostrophes(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  size_t from = 0;
  for (size_t at = text.find(kStatementApostrophe); at != std::string_view::npos;
       at = text.find(kStatementApostrophe, from)) {
    out.append(text.substr(from, at - from)).push_back('\'');
    from = at + kStatementApostrophe.size();
  }
  out.append(text.substr(from));
  return out;
}

// The column names of "insert into T (a, b, ...)" at the start of `s`, or none.
std::vector<std::string_view> InsertColumnsOf(std::string_view s) {
  std::vector<std::string_view> columns;
  size_t i = SkipBlanks(s, 0);
  auto word = [&] {
    const size_t begin = SkipBlanks(s, i);
    i = WordEnd(s, begin);
    return s.substr(begin, i - begin);
  };
  if (!EqualsLower(word(), "insert") || !EqualsLower(word(), "into")) return columns;
  i = SkipBlanks(s, i);
  if (i < s.size() && (s[i] == '"' || s[i] == '[')) {
    const size_t close = s.find(s[i] == '"' ? '"' : ']', i + 1);
    if (close == std::string_view::npos) return columns;
    i = close + 1;
  } else if (word().empty()) {
    return columns;
  }
  i = SkipBlanks(s, i);
  if (i >= s.size() || s[i] != '(') return columns;
  const size_t close = s.find(')', i);
  if (close == std::string_view::npos) return columns;
  std::string_view list = s.substr(i + 1, close - i - 1);
  while (!list.empty()) {
    const size_t comma = list.find(',');
    std::string_view name = list.substr(0, comma);
    const size_t first = name.find_first_not_of(" \t\r\n\"[");
    const size_t last = name.find_last_not_of(" \t\r\n\"]");
    columns.push_back(first == std::string_view::npos ? std::string_view()
                                                      : name.substr(first, last - first + 1));
    if (comma == std::string_view::npos) break;
    list.remove_prefix(comma + 1);
  }
  return columns;
}

// One pass over a Jet statement: the translation, and with `lift` the lifting of literals
// into `values`. The rules of both are those of jet_dialect.h.
class Translator {
 public:
  Translator(std::string_view s, bool lift)
      : s_(s), lift_(lift), insert_columns_(InsertColumnsOf(s)) {
    kind_ = lift ? KindOf(s) : StatementKind::Other;
    lift_ = kind_ != StatementKind::Other;
  }

  // False when the statement turned out to hold something that makes lifting unsafe.
  bool Run();

  // The translation. Text that passes unchanged is copied in runs, when the next changed
  // piece (or the end) comes, rather than a character at a time.
  std::string out;
  std::vector<SqlParameter> values;
  bool lifted() const { return lift_; }

 private:
  // A clause whose literals stay as written, open from `depth` on: a select's result columns
  // (closed by its FROM) or a trailing ORDER BY, GROUP BY, HAVING, LIMIT or OFFSET (closed
  // when its parenthesis closes).
  struct Keep {
    int depth;
    bool until_from;
  };

  bool Lifting() const { return lift_ && keeps_.empty() && !after_as_; }
  // Before a changed piece of the statement starting at `i`: the unchanged text up to it.
  void CopyTo(size_t i) {
    Append(s_.substr(copied_, i - copied_));
    copied_ = i;
  }
  // Appends text of the statement. Digits right after a placeholder would make it a numbered
  // one ("?1") and bind the value by that number; in the statement as written they stood
  // after a literal, which the engine refuses, so they are kept apart from the "?".
  void Append(std::string_view text) {
    if (after_lift_ && !text.empty() && text.front() >= '0' && text.front() <= '9') out += ' ';
    after_lift_ = false;
    out.append(text);
  }
  // After a changed piece ending at `i`: the statement up to `i` is in `out`.
  void Skip(size_t i) { copied_ = i; }
  // Writes the placeholder of a lifted value.
  void Lift(SqlParameter value) {
    Append("?");
    values.push_back(std::move(value));
    after_lift_ = true;
  }
  // `text` written as a value, in the form it is stored in: a date (a date literal, or a text
  // going to or compared with a date column) as StoredDateText, any other text with the
  // apostrophe the statement spells as U+00FF. A compared text that is no date names its
  // collation.
  void Text(std::string_view text, bool is_date = false) {
    const bool compared = ComparedHere();
    std::string stored;
    if (!is_date && IsDateColumn(compared ? ColumnBefore() : InsertColumn())) {
      if (std::optional<Date> d = ParseDate(text)) {
        stored = StoredDateText(*d);
        text = stored;
        is_date = true;
      }
    }
    if (!is_date && text.find(kStatementApostrophe) != std::string_view::npos) {
      stored = WithApostrophes(text);
      text = stored;
    }
    if (Lifting()) {
      SqlParameter p;
      p.kind = SqlParameter::Kind::Text;
      p.text = std::string(text);
      Lift(std::move(p));
    } else {
      AppendSingleQuoted(out, text);
    }
    if (compared && !is_date) {
      const bool ascii = std::all_of(text.begin(), text.end(),
                                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
      out += " COLLATE ";
      out += ascii ? "NOCASE" : kNoCaseCollation;
    }
  }
  // True when the text written so far ends in a comparison operator, so that a literal written
  // now is compared. (An assignment's "=" counts as well; the collation changes nothing there.)
  bool ComparedHere() const {
    const size_t last = out.find_last_not_of(" \t\r\n");
    if (last == std::string::npos) return false;
    const char c = out[last];
    return c == '=' || c == '<' || c == '>';
  }
  // The column named right before the comparison operator `out` ends with ("" for none).
  std::string_view ColumnBefore() const {
    size_t end = out.find_last_not_of(" \t\r\n");
    while (end != std::string::npos && (out[end] == '=' || out[end] == '<' || out[end] == '>' ||
                                         out[end] == '!')) {
      --end;
    }
    end = out.find_last_not_of(" \t\r\n", end);
    if (end == std::string::npos) return {};
    if (out[end] == '"' || out[end] == ']') {
      const size_t open = out.find_last_of(out[end] == '"' ? '"' : '[', end - 1);
      if (open == std::string::npos) return {};
      return std::string_view(out).substr(open + 1, end - open - 1);
    }
    size_t begin = end + 1;
    while (begin > 0 && IsWordChar(out[begin - 1])) --begin;
    return std::string_view(out).substr(begin, end + 1 - begin);
  }
  // The column of an insert's column list a value written now goes to ("" for none).
  std::string_view InsertColumn() const {
    if (value_index_ < 0 || depth_ != value_depth_ ||
        static_cast<size_t>(value_index_) >= insert_columns_.size()) {
      return {};
    }
    return insert_columns_[value_index_];
  }
  void DateLiteral(std::string_view body) {
    if (std::optional<Date> d = ParseDate(body)) {
      try {
        Text(StoredDateText(*d), true);
        return;
      } catch (...) {
        // A date outside the years the text form covers is kept as written below.
      }
    }
    Text(body, true);
  }
  // Follows an insert's value list: the word that opens it, the commas between its values
  // and what closes it.
  void InsertWord(std::string_view word) {
    if (insert_columns_.empty()) return;
    if (value_index_ < 0 && depth_ == 0 &&
        (EqualsLower(word, "select") || EqualsLower(word, "values"))) {
      value_index_ = 0;
      value_depth_ = EqualsLower(word, "values") ? 1 : 0;
    } else if (value_index_ >= 0 && depth_ == value_depth_ && EqualsLower(word, "from")) {
      value_index_ = -1;
      insert_columns_.clear();
    }
  }
  void Word(std::string_view word);
  void Number(size_t i, size_t end);

  std::string_view s_;
  size_t copied_ = 0;  // s_ up to here is in `out`
  bool after_lift_ = false;  // `out` ends with a placeholder
  bool lift_;
  // An insert's columns, and while its values are written the index of the value being
  // written (-1 otherwise) and the parenthesis depth its values stand at.
  std::vector<std::string_view> insert_columns_;
  StatementKind kind_ = StatementKind::Other;
  int depth_ = 0;
  std::vector<Keep> keeps_;
  bool after_as_ = false;
  int value_index_ = -1;
  int value_depth_ = 0;
  // The previous word, to see "order by" and "group by".
  std::string_view last_word_;
};

void Translator::Word(std::string_view word) {
  if (!lift_) return;
  if (EqualsLower(word, "select") && kind_ == StatementKind::Query) {
    keeps_.push_back({depth_, true});
  } else if (EqualsLower(word, "from")) {
    if (!keeps_.empty() && keeps_.back().until_from && keeps_.back().depth == depth_) {
      keeps_.pop_back();
    }
  } else if ((EqualsLower(word, "by") &&
              (EqualsLower(last_word_, "order") || EqualsLower(last_word_, "group"))) ||
             EqualsLower(word, "having") || EqualsLower(word, "limit") ||
             EqualsLower(word, "offset")) {
    keeps_.push_back({depth_, false});
  }
  last_word_ = word;
}

void Translator::Number(size_t i, size_t end) {
  const std::string_view text = s_.substr(i, end - i);
  if (Lifting()) {
    if (std::optional<SqlParameter> value = NumberValue(text)) {
      Lift(std::move(*value));
      return;
    }
  }
  // Too large for 64 bits (the engine reads it as a real of its own rounding) or kept.
  Append(text);
}

bool Translator::Run() {
  const std::string_view s = s_;
  out.reserve(s.size() + 8);
  // A literal with its separator (", ") takes at least three characters: an upper bound,
  // allocated once.
  if (lift_) values.reserve(s.size() / 3);
  const size_t n = s.size();
  size_t i = 0;
  while (i < n) {
    const char c = s[i];
    if (IsBlank(c)) {
      ++i;
      continue;
    }
    // Only a text directly after AS is an alias.
    const bool as_before = after_as_;
    if (c == '\'') {
      const std::optional<size_t> end = QuotedEnd(s, i, '\'');
      if (!end) {
        if (lift_) return false;
        i = n;
      } else {
        CopyTo(i);
        Text(UndoubleQuotes(s.substr(i + 1, *end - i - 2), '\''));
        Skip(*end);
        i = *end;
      }
    } else if (c == '[') {
      const size_t close = s.find(']', i + 1);
      i = close == std::string_view::npos ? n : close + 1;
    } else if (c == '-' && i + 1 < n && s[i + 1] == '-') {
      const size_t eol = s.find('\n', i);
      i = eol == std::string_view::npos ? n : eol;
      continue;  // a comment between AS and its alias changes nothing
    } else if (c == '/' && i + 1 < n && s[i + 1] == '*') {
      const size_t close = s.find("*/", i + 2);
      i = close == std::string_view::npos ? n : close + 2;
      continue;
    } else if (c == '"') {
      const std::optional<size_t> end = QuotedEnd(s, i, '"');
      const bool qualified =
          end && ((i > 0 && s[i - 1] == '.') || (*end < n && s[*end] == '.'));
      if (!end || qualified) {
        if (!end && lift_) return false;
        i = end.value_or(n);
      } else {
        CopyTo(i);
        Text(UndoubleQuotes(s.substr(i + 1, *end - i - 2), '"'));
        Skip(*end);
        i = *end;
      }
    } else if (c == '#') {
      const size_t close = s.find('#', i + 1);
      if (close == std::string_view::npos) {
        if (lift_) return false;
        i = n;
      } else {
        CopyTo(i);
        DateLiteral(s.substr(i + 1, close - i - 1));
        Skip(close + 1);
        i = close + 1;
      }
    } else if ((c >= '0' && c <= '9') ||
               (c == '.' && i + 1 < n && s[i + 1] >= '0' && s[i + 1] <= '9')) {
      // A digit glued to a name ("T1", "T.1") belongs to the name.
      const bool glued = i > 0 && (IsWordChar(s[i - 1]) || s[i - 1] == '.' ||
                                   s[i - 1] == ']' || s[i - 1] == '"');
      const size_t end = glued ? i : NumberEnd(s, i);
      if (end == i || (end < n && (IsWordChar(s[end]) || s[end] == '.'))) {
        i = std::max(WordEnd(s, i), i + 1);
      } else {
        CopyTo(i);
        Number(i, end);
        Skip(end);
        i = end;
      }
    } else if (IsWordChar(c)) {
      const size_t end = WordEnd(s, i);
      const std::string_view word = s.substr(i, end - i);
      // A name qualified by a table ("T.True") is a column, not the constant.
      const bool qualified = (i > 0 && s[i - 1] == '.') || (end < n && s[end] == '.');
      if (!qualified && (EqualsLower(word, "true") || EqualsLower(word, "false"))) {
        const bool yes = EqualsLower(word, "true");
        CopyTo(i);
        if (Lifting()) {
          SqlParameter p;
          p.integer = yes ? 1 : 0;
          Lift(std::move(p));
        } else {
          Append(yes ? "1" : "0");
        }
        Skip(end);
        i = end;
        after_as_ = false;
        continue;
      }
      if (EqualsLower(word, "delete")) {
        const size_t star = SkipBlanks(s, end);
        if (star < n && s[star] == '*') {
          const size_t from = SkipBlanks(s, star + 1);
          const size_t from_end = WordEnd(s, from);
          if (EqualsLower(s.substr(from, from_end - from), "from")) {
            CopyTo(i);
            out += "DELETE FROM";
            Skip(from_end);
            Word("from");
            i = from_end;
            after_as_ = false;
            continue;
          }
        }
      }
      InsertWord(word);
      Word(word);
      i = end;
      after_as_ = lift_ && EqualsLower(word, "as");
      continue;
    } else {
      // A parameter of the statement's own would shift the numbering of the lifted ones.
      if (lift_ && (c == '?' || c == ':' || c == '@' || c == '$')) return false;
      if (c == '(') ++depth_;
      if (c == ',' && value_index_ >= 0 && depth_ == value_depth_) ++value_index_;
      if (c == ')') {
        --depth_;
        if (depth_ < value_depth_) value_index_ = -1;
        while (!keeps_.empty() && keeps_.back().depth > depth_) keeps_.pop_back();
      }
      ++i;
    }
    if (as_before) after_as_ = false;
  }
  CopyTo(n);
  return true;
}

}  // namespace

std::string StoredDateText(Date d) {
  std::string text = FormatDate(d, "yyyy-mm-dd");
  if (HasTime(d)) {
    char time[16];
    std::snprintf(time, sizeof time, " %02d:%02d:%02d", Hour(d), Minute(d), Second(d));
    text += time;
  }
  return text;
}

bool IsDateColumn(std::string_view name) {
  if (name.empty()) return false;
  static const std::vector<std::string_view> kDateColumns = [] {
    std::vector<std::string_view> names;
    for (const TableDef& t : AllTables()) {
      for (const ColumnDef& column : t.columns) {
        if (column.type == ColumnType::Date) names.push_back(column.name);
      }
    }
    return names;
  }();
  return std::any_of(kDateColumns.begin(), kDateColumns.end(),
                     [&](std::string_view date) { return EqualsNoCase(date, name); });
}

bool SingleParameter(float v, SqlParameter& value) {
  if (!std::isfinite(v)) return false;
  value.kind = SqlParameter::Kind::Integer;
  value.integer = 0;
  if (v == 0) return true;
  static constexpr double kScales[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5,
                                       1e6, 1e7, 1e8, 1e9, 1e10};
  uint32_t n = 0;
  int e = 0;
  if (SingleSevenDigits(v, n, e) && e <= 6) {
    // The usual magnitudes: n / 10^(6 - e) is the decimal's value, one correctly rounded
    // division of exact values as NumberValue reads the text, trailing zeros or not. It is
    // whole exactly when the decimal is: a fraction is at least 10^(e - 6) from a whole
    // number, far more than the spacing of doubles there.
    const double q = static_cast<double>(n) / kScales[6 - e];
    if (q == std::trunc(q)) {
      value.integer = static_cast<int64_t>(q);
      if (v < 0) value.integer = -value.integer;
    } else {
      value.kind = SqlParameter::Kind::Real;
      value.real = v < 0 ? -q : q;
    }
    return true;
  }
  // Outside those magnitudes the text has an exponent part and goes by its text.
  return LiteralParameter(NumberText(v), false, value);
}

bool LiteralParameter(std::string_view literal, bool date_column, SqlParameter& value) {
  if (literal.empty() || literal.find('\0') != std::string_view::npos) return false;
  const char first = literal.front();
  if ((first >= '0' && first <= '9') || first == '-') {
    // A sign stays in the statement's shape and the number after it is lifted; the engine
    // then negates what was bound, which gives the signed number exactly.
    const bool negative = first == '-';
    std::optional<SqlParameter> number = NumberValue(literal.substr(negative ? 1 : 0));
    if (!number) return false;
    value = std::move(*number);
    if (negative) {
      if (value.kind == SqlParameter::Kind::Integer) {
        if (value.integer == std::numeric_limits<int64_t>::min()) return false;
        value.integer = -value.integer;
      } else {
        value.real = -value.real;
      }
    }
    return true;
  }
  if (EqualsLower(literal, "true") || EqualsLower(literal, "false")) {
    value.kind = SqlParameter::Kind::Integer;
    value.integer = EqualsLower(literal, "true") ? 1 : 0;
    return true;
  }
  if (literal.size() < 2 || first != '\'' || literal.back() != '\'') return false;
  const std::string_view body = literal.substr(1, literal.size() - 2);
  if (body.find('\'') != std::string_view::npos) return false;
  value.kind = SqlParameter::Kind::Text;
  if (date_column) {
    if (std::optional<Date> d = ParseDate(body)) {
      try {
        value.text = StoredDateText(*d);
        return true;
      } catch (...) {
        return false;
      }
    }
  }
  value.text = WithApostrophes(body);
  return true;
}

std::optional<Date> ParseStoredDateText(std::string_view t) {
  if (t.size() != 10 && t.size() != 19) return std::nullopt;
  int parts[6] = {0, 0, 0, 0, 0, 0};
  // Digits and the separators of "yyyy-mm-dd hh:mm:ss", one part after another.
  static constexpr char kShape[] = "dddd-dd-dd dd:dd:dd";
  int part = 0;
  for (size_t i = 0; i < t.size(); ++i) {
    if (kShape[i] == 'd') {
      if (t[i] < '0' || t[i] > '9') return std::nullopt;
      parts[part] = parts[part] * 10 + (t[i] - '0');
    } else if (t[i] != kShape[i]) {
      return std::nullopt;
    } else {
      ++part;
    }
  }
  const int year = parts[0], month = parts[1], day = parts[2];
  if (year < 100 || month < 1 || month > 12 || day < 1 || day > 31 || parts[3] > 23 ||
      parts[4] > 59 || parts[5] > 59) {
    return std::nullopt;
  }
  const Date d = DateTimeSerial(year, month, day, parts[3], parts[4], parts[5]);
  // A day the month does not have (2/30) rolls over; such a text is no stored date.
  if (Day(d) != day) return std::nullopt;
  return d;
}

std::string NumberPlaceholders(std::string_view s) {
  std::string out;
  out.reserve(s.size() + 16);
  int number = 0;
  for (size_t i = 0; i < s.size();) {
    const char c = s[i];
    size_t end = i + 1;
    if (c == '\'' || c == '"') {
      end = QuotedEnd(s, i, c).value_or(s.size());
    } else if (c == '[') {
      const size_t close = s.find(']', i + 1);
      end = close == std::string_view::npos ? s.size() : close + 1;
    } else if (c == '-' && s.substr(i, 2) == "--") {
      const size_t eol = s.find('\n', i);
      end = eol == std::string_view::npos ? s.size() : eol;
    } else if (c == '/' && s.substr(i, 2) == "/*") {
      const size_t close = s.find("*/", i + 2);
      end = close == std::string_view::npos ? s.size() : close + 2;
    } else if (c == '?') {
      out += '$';
      out += std::to_string(++number);
      ++i;
      continue;
    }
    out.append(s.substr(i, end - i));
    i = end;
  }
  return out;
}

std::string TranslateJetSql(std::string_view s) {
  Translator t(s, false);
  t.Run();
  return std::move(t.out);
}

ParameterizedSql ParameterizeJetSql(std::string_view s) {
  ParameterizedSql result;
  Translator t(s, true);
  if (t.lifted() && t.Run()) {
    result.shape = std::move(t.out);
    result.values = std::move(t.values);
    result.lifted = true;
    return result;
  }
  result.shape = TranslateJetSql(s);
  return result;
}

}  // namespace kwx
