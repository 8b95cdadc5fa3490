// A study as one JSON object: the shape `kwx show --json` prints and the Python module hands
// out, written in one place so that the two never differ.
#ifndef KWX_JSON_COMPANY_JSON_H_
#define KWX_JSON_COMPANY_JSON_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>

#include "model/company.h"
#include "model/table_def.h"

namespace kwx {

// One object: "CompanyID", every record property under its column name (SectorID, ExchangeID,
// IndustryID and DataSourceID as the names the study holds), "Notes", then the groups under
// their table names: "Options" and the six judgment groups as objects of their columns (a
// group's struck-out lists that its table does not keep follow its columns, by name),
// "Yearly", "Quarterly", "Monthly", "JudgmentPMG" and "JudgmentPERT" as arrays of row objects
// in series order. Values are written by ToJson (dates ISO, Booleans true/false, struck-out
// item lists as arrays of Booleans, Empty and Null as null). Never raises for a valid study.
nlohmann::json CompanyJson(const Company& company);

// Fills `company` from an object of the CompanyJson shape: each key it holds sets that field
// (dates as ISO "yyyy-mm-dd" texts, struck-out lists as arrays of Booleans, null as an empty
// value), keys it lacks leave their fields as they were, and a series array replaces the whole
// series. Raises std::invalid_argument naming the key for a key the shape lacks or a value its
// field rejects; fields set before it keep their new values.
void CompanyFromJson(const nlohmann::json& study, Company& company);

// The type of the field `column` of `part` in the CompanyJson shape: part "" for the study's own
// fields, else "Options", "Yearly" and the other group and series names. Nothing for a name the
// shape lacks, and for CompanyID and Notes.
std::optional<ColumnType> StudyFieldType(std::string_view part, std::string_view column);

}  // namespace kwx

#endif  // KWX_JSON_COMPANY_JSON_H_
