#include "studies/study_index.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "automation/text.h"

namespace kwx {
namespace {

// A symbol as a load reads it: trimmed, with U+00FF read as the apostrophe statements write it
// for, whichever of the two the file holds.
std::string ReadSymbol(const Variant& symbol) { return Trim(TextFromSql(symbol)); }

}  // namespace

StudyIndex::StudyIndex(kwxLoader& loader) : loader_(loader) {
  Read("select CompanyID, strSymbol, ExchangeID from Company");
}

void StudyIndex::Refresh() {
  Read("select CompanyID, strSymbol, ExchangeID from Company where CompanyID > " +
       std::to_string(highest_));
}

void StudyIndex::Read(const std::string& sql) {
  // No word the user typed reaches the statement: they are compared here, so no text of theirs
  // can change what the statement reads.
  Variant data, fields;
  loader_.Access_GetCompanies(sql, data, fields);
  if (!fields.IsArray()) throw std::runtime_error("cannot read the saved studies");
  if (!data.IsArray()) return;
  const SafeArray& rows = data.AsArray();
  for (int32_t r = rows.LBound(1); r <= rows.UBound(1); ++r) {
    const Variant& symbol = rows(r, 1);
    const Variant& exchange = rows(r, 2);
    const int32_t id = CLng(rows(r, 0));
    highest_ = std::max(highest_, id);
    if (symbol.IsNull() || symbol.IsEmpty()) continue;
    const int32_t exchange_id = exchange.IsNull() || exchange.IsEmpty() ? 0 : CLng(exchange);
    studies_[Key{exchange_id, ReadSymbol(symbol)}].push_back(id);
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
  highest_ = std::max(highest_, id);
  const std::string read = ReadSymbol(Variant(std::string(symbol)));
  for (int32_t exchange_id : ExchangeIds(exchange)) studies_[Key{exchange_id, read}].push_back(id);
}

}  // namespace kwx
