// Loading one stock study from the database into a Company.
#ifndef KWX_ACCESS_COMPANY_LOAD_H_
#define KWX_ACCESS_COMPANY_LOAD_H_

#include <cstdint>
#include <string_view>

#include "access/store_context.h"
#include "model/company.h"

namespace kwx {

// Fills `company` from the database of `store`: the company record, notes and options, the
// judgment groups of the store's platform, the Yearly, Monthly and Quarterly series (for the
// CompanyID the record brought), the JudgmentPMG and JudgmentPERT series (for `lngCompanyID`
// exactly as given, so a load by symbol reads none), and finally the names of the sector,
// exchange, data source and industry in place of their row IDs.
//
// The study is found by `lngCompanyID` when it is 1 or more, else by `strSymbol` and the row
// ID of the exchange named `strExchange` in the store's exchange cache. Nothing happens when
// the ID is below 1 and the symbol or exchange is empty, or the exchange is unknown.
//
// Each part is read by column name; a query that fails or returns no row leaves its part of
// the object as it was (a study that is not found keeps its reference names). A stored Null
// leaves a number, date or Boolean property as it was and reads as "" for a text. Errors are
// reported to the store's sink with their location and the load goes on; never raises.
void LoadCompany(const StoreContext& store, int32_t lngCompanyID, std::string_view strSymbol,
                 std::string_view strExchange, Company& company) noexcept;

}  // namespace kwx

#endif  // KWX_ACCESS_COMPANY_LOAD_H_
