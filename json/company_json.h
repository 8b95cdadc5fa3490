// A study as one JSON object: the shape `kwx show --json` prints and the Python module hands
// out, written in one place so that the two never differ.
#ifndef KWX_JSON_COMPANY_JSON_H_
#define KWX_JSON_COMPANY_JSON_H_

#include <nlohmann/json.hpp>

#include "model/company.h"

namespace kwx {

// One object: "CompanyID", every record property under its column name (SectorID, ExchangeID,
// IndustryID and DataSourceID as the names the study holds), "Notes", then the groups under
// their table names: "Options" and the six judgment groups as objects of their columns (a
// group's struck-out lists that its table does not keep follow its columns, by name),
// "Yearly", "Quarterly", "Monthly", "JudgmentPMG" and "JudgmentPERT" as arrays of row objects
// in series order. Values are written by ToJson (dates ISO, Booleans true/false, struck-out
// item lists as arrays of Booleans, Empty and Null as null). Never raises for a valid study.
nlohmann::json CompanyJson(const Company& company);

}  // namespace kwx

#endif  // KWX_JSON_COMPANY_JSON_H_
