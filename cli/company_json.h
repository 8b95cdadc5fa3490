// A study as one JSON object, the shape every command that prints a company uses, and the
// loader's error reports as the study commands print them.
#ifndef KWX_CLI_COMPANY_JSON_H_
#define KWX_CLI_COMPANY_JSON_H_

#include <nlohmann/json.hpp>
#include <ostream>

#include "loader/kwx_loader.h"
#include "model/company.h"

namespace kwx::cli {

// One object: "CompanyID", every record property under its column name (SectorID, ExchangeID,
// IndustryID and DataSourceID as the names the study holds), "Notes", then the groups under
// their table names: "Options" and the six judgment groups as objects of their columns (a
// group's struck-out lists that its table does not keep follow its columns, by name),
// "Yearly", "Quarterly", "Monthly", "JudgmentPMG" and "JudgmentPERT" as arrays of row objects
// in series order. Values are written by ToJson (dates ISO, Booleans true/false, struck-out
// item lists as arrays of Booleans, Empty and Null as null). Never raises for a valid study.
nlohmann::json CompanyJson(const Company& company);

// Prints each error report the loader collected as one line on `err` ("kwx: error 13 (Type
// mismatch) in m_ParseCompany, lngCompanyID: 7"), oldest first, then forgets them. The study
// commands call it after every loader call whose failures are only reported.
void PrintErrorReports(kwxLoader& loader, std::ostream& err);

}  // namespace kwx::cli

#endif  // KWX_CLI_COMPANY_JSON_H_
