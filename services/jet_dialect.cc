#include "services/jet_dialect.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <system_error>
#include <utility>

#include "automation/dates.h"
#include "automation/format.h"
#include "automation/value_types.h"

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

// One pass over a Jet statement: the translation, and with `lift` the lifting of literals
// into `values`. The rules of both are those of jet_dialect.h.
class Translator {
 public:
  Translator(std::string_view s, bool lift) : s_(s), lift_(lift) {
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
  // `text` written as a value; a compared text (not a date) names its collation.
  void Text(std::string_view text, bool is_date = false) {
    const bool compared = !is_date && ComparedHere();
    if (Lifting()) {
      SqlParameter p;
      p.kind = SqlParameter::Kind::Text;
      p.text = std::string(text);
      Lift(std::move(p));
    } else {
      AppendSingleQuoted(out, text);
    }
    if (compared) {
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
  void DateLiteral(std::string_view body) {
    if (std::optional<Date> d = ParseDate(body)) {
      try {
        Text(FormatDate(*d, "General Date"), true);
        return;
      } catch (...) {
        // A date the formatter cannot write is kept as written below.
      }
    }
    Text(body, true);
  }
  void Word(std::string_view word);
  void Number(size_t i, size_t end);

  std::string_view s_;
  size_t copied_ = 0;  // s_ up to here is in `out`
  bool after_lift_ = false;  // `out` ends with a placeholder
  bool lift_;
  StatementKind kind_ = StatementKind::Other;
  int depth_ = 0;
  std::vector<Keep> keeps_;
  bool after_as_ = false;
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
          p.integer = yes ? -1 : 0;
          Lift(std::move(p));
        } else {
          // After a minus sign "-1" would open a "--" comment.
          if (!out.empty() && out.back() == '-') out += ' ';
          Append(yes ? "-1" : "0");
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
      Word(word);
      i = end;
      after_as_ = lift_ && EqualsLower(word, "as");
      continue;
    } else {
      // A parameter of the statement's own would shift the numbering of the lifted ones.
      if (lift_ && (c == '?' || c == ':' || c == '@' || c == '$')) return false;
      if (c == '(') ++depth_;
      if (c == ')') {
        --depth_;
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
