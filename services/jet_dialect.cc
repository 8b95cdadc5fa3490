#include "services/jet_dialect.h"

#include <optional>

#include "automation/dates.h"
#include "automation/format.h"
#include "automation/value_types.h"

namespace kwx {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Bytes of a UTF-8 sequence count as word characters: a non-ASCII name stays one word.
bool IsWordChar(char c) {
  const auto u = static_cast<unsigned char>(c);
  return (u >= '0' && u <= '9') || (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') || u == '_' ||
         u >= 0x80;
}

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

// Dates are stored as the text the loader itself writes ("Short Date", M/d/yyyy), so a date
// literal must become that same text to compare and store alike.
void AppendDateLiteral(std::string& out, std::string_view body) {
  if (std::optional<Date> d = ParseDate(body)) {
    try {
      AppendSingleQuoted(out, FormatDate(*d, "General Date"));
      return;
    } catch (...) {
      // A date the formatter cannot write is kept as written below.
    }
  }
  AppendSingleQuoted(out, body);
}

}  // namespace

std::string TranslateJetSql(std::string_view s) {
  std::string out;
  out.reserve(s.size() + 8);
  const size_t n = s.size();
  size_t i = 0;
  while (i < n) {
    const char c = s[i];
    if (c == '\'') {
      const size_t end = QuotedEnd(s, i, '\'').value_or(n);
      out.append(s.substr(i, end - i));
      i = end;
    } else if (c == '[') {
      const size_t close = s.find(']', i + 1);
      const size_t end = close == std::string_view::npos ? n : close + 1;
      out.append(s.substr(i, end - i));
      i = end;
    } else if (c == '-' && i + 1 < n && s[i + 1] == '-') {
      const size_t eol = s.find('\n', i);
      const size_t end = eol == std::string_view::npos ? n : eol;
      out.append(s.substr(i, end - i));
      i = end;
    } else if (c == '/' && i + 1 < n && s[i + 1] == '*') {
      const size_t close = s.find("*/", i + 2);
      const size_t end = close == std::string_view::npos ? n : close + 2;
      out.append(s.substr(i, end - i));
      i = end;
    } else if (c == '"') {
      const std::optional<size_t> end = QuotedEnd(s, i, '"');
      const bool qualified =
          end && ((i > 0 && s[i - 1] == '.') || (*end < n && s[*end] == '.'));
      if (!end || qualified) {
        const size_t stop = end.value_or(n);
        out.append(s.substr(i, stop - i));
        i = stop;
      } else {
        AppendSingleQuoted(out, UndoubleQuotes(s.substr(i + 1, *end - i - 2), '"'));
        i = *end;
      }
    } else if (c == '#') {
      const size_t close = s.find('#', i + 1);
      if (close == std::string_view::npos) {
        out.append(s.substr(i));
        i = n;
      } else {
        AppendDateLiteral(out, s.substr(i + 1, close - i - 1));
        i = close + 1;
      }
    } else if (IsWordChar(c)) {
      const size_t end = WordEnd(s, i);
      const std::string_view word = s.substr(i, end - i);
      // A name qualified by a table ("T.True") is a column, not the constant.
      const bool qualified = (i > 0 && s[i - 1] == '.') || (end < n && s[end] == '.');
      if (!qualified && (EqualsLower(word, "true") || EqualsLower(word, "false"))) {
        // After a minus sign "-1" would open a "--" comment.
        if (!out.empty() && out.back() == '-') out += ' ';
        out += EqualsLower(word, "true") ? "-1" : "0";
        i = end;
        continue;
      }
      if (EqualsLower(word, "delete")) {
        const size_t star = SkipBlanks(s, end);
        if (star < n && s[star] == '*') {
          const size_t from = SkipBlanks(s, star + 1);
          const size_t from_end = WordEnd(s, from);
          if (EqualsLower(s.substr(from, from_end - from), "from")) {
            out += "DELETE FROM";
            i = from_end;
            continue;
          }
        }
      }
      out.append(word);
      i = end;
    } else {
      out += c;
      ++i;
    }
  }
  return out;
}

}  // namespace kwx
