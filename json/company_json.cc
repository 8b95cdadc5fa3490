#include "json/company_json.h"

#include <functional>
#include <initializer_list>
#include <map>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "automation/dates.h"
#include "automation/safe_array.h"
#include "json/json_values.h"
#include "model/record.h"

namespace kwx {
namespace {

// The columns, then the lists a group carries that its table does not keep: the JSON shows
// the study as it is in memory, whatever the database would keep of it.
template <class Rec>
nlohmann::json RecordJson(const Rec& rec) {
  nlohmann::json out = nlohmann::json::object();
  for (auto bindings : {Rec::Bindings(), UnstoredBindings<Rec>()}) {
    for (const FieldBinding<Rec>& b : bindings) {
      out[std::string(b.column.name)] = ToJson(GetField(rec, b));
    }
  }
  return out;
}

template <class Row>
nlohmann::json RecordJson(const std::vector<Row>& rows) {
  nlohmann::json out = nlohmann::json::array();
  for (const Row& row : rows) out.push_back(RecordJson(row));
  return out;
}

// The record type a part of a study holds: the group itself, or a series' row.
template <class Part>
struct PartRecord {
  using type = Part;
};
template <class Row>
struct PartRecord<std::vector<Row>> {
  using type = Row;
};

// The groups and series of a study, each under its table's name in the JSON: the one list of
// them that writing and reading the shape go over.
template <class C, class F>
void ForEachPart(C& company, F&& f) {
  auto part = [&](auto& member) {
    using Record = typename PartRecord<std::remove_cvref_t<decltype(member)>>::type;
    f(std::string(Record::Table().name), member);
  };
  part(company.Options);
  part(company.JudgmentGraph);
  part(company.JudgmentAnalysis);
  part(company.JudgmentCheckList);
  part(company.JudgmentPrefProc);
  part(company.JudgmentAssessment);
  part(company.JudgmentStockReport);
  part(company.Yearly);
  part(company.Quarterly);
  part(company.Monthly);
  part(company.JudgmentPMG);
  part(company.JudgmentPERT);
}

// A JSON value as the Variant a field of `type` takes: a date text as a Date, an array as a
// zero-based array, null as Empty.
Variant FieldValue(const nlohmann::json& value, ColumnType type, const std::string& key) {
  switch (value.type()) {
    case nlohmann::json::value_t::null: return Variant();
    case nlohmann::json::value_t::boolean: return Variant(value.get<bool>());
    case nlohmann::json::value_t::number_integer:
    case nlohmann::json::value_t::number_unsigned: return Variant(value.get<double>());
    case nlohmann::json::value_t::number_float: return Variant(value.get<double>());
    case nlohmann::json::value_t::string: {
      const std::string text = value.get<std::string>();
      if (type != ColumnType::Date || text.empty()) return Variant(text);
      if (const std::optional<Date> date = ParseDate(text)) return Variant(*date);
      throw std::invalid_argument("'" + key + "': '" + text + "' is no date (yyyy-mm-dd)");
    }
    case nlohmann::json::value_t::array: {
      if (value.empty()) return Variant();
      SafeArray items = SafeArray::Vector(0, static_cast<int32_t>(value.size()) - 1);
      for (size_t i = 0; i < value.size(); ++i) {
        items(static_cast<int32_t>(i)) = FieldValue(value[i], type, key);
      }
      return Variant(std::move(items));
    }
    default: break;
  }
  throw std::invalid_argument("'" + key + "' cannot hold " + value.dump());
}

template <class Rec>
const FieldBinding<Rec>* FindAnyField(std::string_view name) {
  if (const auto* b = FindField(Rec::Bindings(), name)) return b;
  return FindField(UnstoredBindings<Rec>(), name);
}

template <class Rec>
void SetFieldFromJson(Rec& rec, const std::string& key, const nlohmann::json& value,
                      const std::string& where) {
  const FieldBinding<Rec>* b = FindAnyField<Rec>(key);
  if (!b) throw std::invalid_argument("a study has no field '" + where + key + "'");
  try {
    SetField(rec, *b, FieldValue(value, b->column.type, where + key));
  } catch (const std::invalid_argument&) {
    throw;
  } catch (const std::exception& e) {
    throw std::invalid_argument("'" + where + key + "' cannot hold " + value.dump() + " (" +
                                e.what() + ")");
  }
}

template <class Rec>
void RecordFromJson(const nlohmann::json& object, Rec& rec, const std::string& where) {
  if (!object.is_object()) throw std::invalid_argument("'" + where + "' is not an object");
  for (const auto& [key, value] : object.items()) SetFieldFromJson(rec, key, value, where + ".");
}

template <class Row>
void RecordFromJson(const nlohmann::json& rows, std::vector<Row>& series,
                    const std::string& where) {
  if (!rows.is_array()) throw std::invalid_argument("'" + where + "' is not an array of rows");
  std::vector<Row> read(rows.size());
  for (size_t i = 0; i < rows.size(); ++i) {
    RecordFromJson(rows[i], read[i], where + "[" + std::to_string(i) + "]");
  }
  series = std::move(read);
}

template <class Rec>
void AddTypes(std::map<std::pair<std::string, std::string>, ColumnType, std::less<>>& types,
              const std::string& part) {
  for (auto bindings : {Rec::Bindings(), UnstoredBindings<Rec>()}) {
    for (const FieldBinding<Rec>& b : bindings) {
      types.emplace(std::pair(part, std::string(b.column.name)), b.column.type);
    }
  }
}

}  // namespace

nlohmann::json CompanyJson(const Company& company) {
  nlohmann::json out = nlohmann::json::object();
  out["CompanyID"] = company.CompanyID;
  for (const FieldBinding<Company>& b : Company::Bindings()) {
    out[std::string(b.column.name)] = ToJson(GetField(company, b));
  }
  out["Notes"] = company.Notes;
  ForEachPart(company,
              [&](const std::string& name, const auto& part) { out[name] = RecordJson(part); });
  return out;
}

void CompanyFromJson(const nlohmann::json& study, Company& company) {
  if (!study.is_object()) throw std::invalid_argument("a study is an object of its fields");
  for (const auto& item : study.items()) {
    // Named, not bound: a lambda below refers to them.
    const std::string& key = item.key();
    const nlohmann::json& value = item.value();
    if (key == "CompanyID") {
      if (!value.is_number_integer()) throw std::invalid_argument("'CompanyID' is a whole number");
      company.CompanyID = value.get<int32_t>();
    } else if (key == "Notes") {
      company.Notes = value.is_null() ? "" : value.get<std::string>();
    } else {
      bool part_found = false;
      ForEachPart(company, [&](const std::string& name, auto& part) {
        if (key != name) return;
        part_found = true;
        RecordFromJson(value, part, key);
      });
      if (!part_found) SetFieldFromJson(company, key, value, "");
    }
  }
}

std::optional<ColumnType> StudyFieldType(std::string_view part, std::string_view column) {
  using Types = std::map<std::pair<std::string, std::string>, ColumnType, std::less<>>;
  static const Types types = [] {
    Types t;
    AddTypes<Company>(t, "");
    Company company;
    ForEachPart(company, [&](const std::string& name, auto& p) {
      AddTypes<typename PartRecord<std::remove_cvref_t<decltype(p)>>::type>(t, name);
    });
    return t;
  }();
  const auto it = types.find(std::pair(std::string(part), std::string(column)));
  if (it == types.end()) return std::nullopt;
  return it->second;
}

}  // namespace kwx
