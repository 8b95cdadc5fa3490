// Saving one stock study from a Company into the database.
#ifndef KWX_ACCESS_COMPANY_SAVE_H_
#define KWX_ACCESS_COMPANY_SAVE_H_

#include "access/store_context.h"
#include "model/company.h"

namespace kwx {

// Writes `company` into the database of `store` inside one transaction: the company record
// (updated when CompanyID is 1 or more, else inserted and its new CompanyID set on the
// object), notes and options, the Yearly (10), Quarterly (36), Monthly (72), JudgmentPMG (5)
// and JudgmentPERT (one per element) series, and, with `update_judgment`, the platform's
// judgment groups followed by the day's DJAverages row.
//
// The reference columns are written as the row IDs of the names the object holds (looked up
// in the store's caches, Industry in its table; 0 for an unknown name); the object keeps the
// names. A series shorter than its written length is padded with zero-valued elements (their
// Year, Quarter and Month columns still derived); elements beyond the length are not written.
// Series rows already stored are overwritten in key order from the company's smallest key.
//
// Answers true when the transaction was committed; false when a step failed, everything was
// rolled back and CompanyID is as it was before (the DJAverages row never decides that).
// Errors are reported to the store's sink with their location; never raises.
bool SaveCompany(const StoreContext& store, Company& company, bool update_judgment) noexcept;

}  // namespace kwx

#endif  // KWX_ACCESS_COMPANY_SAVE_H_
