#include "cli/study_lookup.h"

#include <algorithm>
#include <limits>

#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "cli/error_reports.h"

namespace kwx::cli {
namespace {

// Why a word is no ID, or "" when it is one; `value` receives the ID.
std::string IdProblem(std::string_view word, int32_t& value) {
  const bool digits = !word.empty() && std::all_of(word.begin(), word.end(),
                                                   [](char c) { return c >= '0' && c <= '9'; });
  if (!digits) return "'" + std::string(word) + "' is not a whole number";
  int64_t n = 0;
  for (char c : word) {
    n = n * 10 + (c - '0');
    if (n > std::numeric_limits<int32_t>::max()) return "'" + std::string(word) + "' is too large";
  }
  value = static_cast<int32_t>(n);
  return "";
}

// A symbol as a load reads it: trimmed, with U+00FF read as the apostrophe statements write it
// for, whichever of the two the file holds.
std::string ReadSymbol(const Variant& symbol) { return Trim(TextFromSql(symbol)); }

}  // namespace

int32_t ParseId(std::string_view word, std::string_view what) {
  int32_t value = 0;
  const std::string problem = IdProblem(word, value);
  if (!problem.empty()) {
    throw CommandError(problem + ": " + std::string(what) + " is a whole number such as 12", 2);
  }
  return value;
}

CLI::Validator WholeNumberId() {
  return CLI::Validator(
      [](std::string& word) {
        int32_t value = 0;
        const std::string problem = IdProblem(word, value);
        return problem.empty() ? problem : problem + " (IDs are whole numbers such as 12)";
      },
      "ID");
}

StudyIndex::StudyIndex(kwxLoader& loader) : loader_(loader) {
  // No word the user typed reaches the statement: they are compared here, so no text of theirs
  // can change what the statement reads.
  Variant data, fields;
  loader.Access_GetCompanies("select CompanyID, strSymbol, ExchangeID from Company", data, fields);
  if (!fields.IsArray()) throw CommandError("cannot read the saved studies");
  if (!data.IsArray()) return;
  const SafeArray& rows = data.AsArray();
  for (int32_t r = rows.LBound(1); r <= rows.UBound(1); ++r) {
    const Variant& symbol = rows(r, 1);
    const Variant& exchange = rows(r, 2);
    if (symbol.IsNull() || symbol.IsEmpty()) continue;
    const int32_t exchange_id = exchange.IsNull() || exchange.IsEmpty() ? 0 : CLng(exchange);
    studies_[Key{exchange_id, ReadSymbol(symbol)}].push_back(CLng(rows(r, 0)));
  }
}

size_t StudyIndex::KeyHash::operator()(const Key& key) const noexcept {
  return static_cast<size_t>(HashNoCase(key.symbol) * 31 + static_cast<uint32_t>(key.exchange_id));
}

bool StudyIndex::KeyEqual::operator()(const Key& a, const Key& b) const noexcept {
  return a.exchange_id == b.exchange_id && EqualsNoCase(a.symbol, b.symbol);
}

// The IDs of the exchanges whose cached name is `name`; a blank name stands for no exchange,
// which a study is saved with when its exchange name had no row.
std::vector<int32_t> StudyIndex::ExchangeIds(std::string_view name) const {
  const std::string wanted = Trim(name);
  if (wanted.empty()) return {0};
  Variant ids, names;
  loader_.Access_GetExchange(ids, names);
  std::vector<int32_t> found;
  if (!ids.IsArray() || !names.IsArray()) return found;
  const SafeArray& id_list = ids.AsArray();
  const SafeArray& name_list = names.AsArray();
  for (int32_t i = name_list.LBound(); i <= name_list.UBound(); ++i) {
    const Variant& cached = name_list(i);
    if (cached.IsEmpty() || cached.IsNull()) continue;
    if (EqualsNoCase(Trim(CStr(cached)), wanted)) found.push_back(CLng(id_list(i)));
  }
  return found;
}

std::vector<int32_t> StudyIndex::Find(std::string_view symbol, std::string_view exchange) const {
  std::vector<int32_t> studies;
  const std::string wanted = ReadSymbol(Variant(std::string(symbol)));
  for (int32_t exchange_id : ExchangeIds(exchange)) {
    const auto it = studies_.find(Key{exchange_id, wanted});
    if (it != studies_.end()) studies.insert(studies.end(), it->second.begin(), it->second.end());
  }
  std::sort(studies.begin(), studies.end());
  return studies;
}

void StudyIndex::Add(int32_t id, std::string_view symbol, std::string_view exchange) {
  const std::string read = ReadSymbol(Variant(std::string(symbol)));
  for (int32_t exchange_id : ExchangeIds(exchange)) studies_[Key{exchange_id, read}].push_back(id);
}

int32_t ResolveStudy(Context& ctx, const std::vector<std::string>& words) {
  if (words.size() == 1) return ParseId(words[0]);
  if (words.size() != 2) throw CommandError("give a company ID, or a symbol and an exchange", 2);
  kwxLoader& loader = ctx.OpenLoader();
  const std::vector<int32_t> found = StudyIndex(loader).Find(words[0], words[1]);
  const std::string named = words[0] + " on " + words[1];
  if (found.empty()) throw CommandError("no study found for " + named);
  if (found.size() > 1) {
    std::string list;
    for (int32_t id : found) list += (list.empty() ? "" : ", ") + std::to_string(id);
    throw CommandError(named + " names " + std::to_string(found.size()) + " studies (IDs " + list +
                           "): give the company ID",
                       2);
  }
  return found.front();
}

Company LoadStudy(Context& ctx, const std::vector<std::string>& words) {
  const int32_t id = ResolveStudy(ctx, words);
  kwxLoader& loader = ctx.OpenLoader();
  Company company;
  // By ID even when the user gave a symbol: a load by symbol reads no PMG or PERT rows, and a
  // study saved or exported from such a load would lose them.
  loader.Access_Get(id, "", "", company);
  PrintErrorReports(loader, *ctx.err);
  // Loading leaves the object untouched when nothing matched, so its ID stays 0.
  if (company.CompanyID < 1) throw CommandError("no study found for ID " + std::to_string(id));
  return company;
}

}  // namespace kwx::cli
