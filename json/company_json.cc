#include "json/company_json.h"

#include <initializer_list>
#include <string>
#include <vector>

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
nlohmann::json SeriesJson(const std::vector<Row>& rows) {
  nlohmann::json out = nlohmann::json::array();
  for (const Row& row : rows) out.push_back(RecordJson(row));
  return out;
}

}  // namespace

nlohmann::json CompanyJson(const Company& company) {
  nlohmann::json out = nlohmann::json::object();
  out["CompanyID"] = company.CompanyID;
  for (const FieldBinding<Company>& b : Company::Bindings()) {
    out[std::string(b.column.name)] = ToJson(GetField(company, b));
  }
  out["Notes"] = company.Notes;
  out["Options"] = RecordJson(company.Options);
  out["JudgmentGraph"] = RecordJson(company.JudgmentGraph);
  out["JudgmentAnalysis"] = RecordJson(company.JudgmentAnalysis);
  out["JudgmentCheckList"] = RecordJson(company.JudgmentCheckList);
  out["JudgmentPrefProc"] = RecordJson(company.JudgmentPrefProc);
  out["JudgmentAssessment"] = RecordJson(company.JudgmentAssessment);
  out["JudgmentStockReport"] = RecordJson(company.JudgmentStockReport);
  out["Yearly"] = SeriesJson(company.Yearly);
  out["Quarterly"] = SeriesJson(company.Quarterly);
  out["Monthly"] = SeriesJson(company.Monthly);
  out["JudgmentPMG"] = SeriesJson(company.JudgmentPMG);
  out["JudgmentPERT"] = SeriesJson(company.JudgmentPERT);
  return out;
}

}  // namespace kwx
