// Small operations around the company store: the keyed delete that the comparison and PERT
// report code also uses, deleting a company, checking that a record exists, and updating a
// company's current price and 52-week range in place without loading the study.
#ifndef KWX_ACCESS_MAINTENANCE_H_
#define KWX_ACCESS_MAINTENANCE_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "access/store_context.h"
#include "automation/value_types.h"
#include "automation/variant.h"

namespace kwx {

// The condition text of one key: `field` "=" the value. A 16/32-bit integer, Single, Double,
// Currency or Decimal value is converted to a double and written as decimal text ("CompanyID=7");
// a text value is written by SqlText ("Name='AÿB'"). Any other type (Empty, Null, Boolean,
// Date, Byte, an array) answers "". Raises the conversion's error (err::kOverflow).
std::string KeyCondition(std::string_view field, const Variant& value);

// The keyed delete: "delete * from " `strTable`, then " where " and the condition when there
// is one. `vntValues` is one value of a numeric or text type (its condition with the single
// name in `vntFields`), or an array parallel to the array of names in `vntFields`. With arrays
// ONLY THE LAST PAIR restricts the delete: each round replaces the condition rather than
// adding to it, and callers (a member of one comparison removed from every comparison) rely
// on that. A value without a condition (another type, or an empty array) deletes every row of
// the table. An empty `strTable` executes nothing. The statement's own result is not checked.
// Errors (names not an array where values are, no database) are reported at
// "mdlAccess_Delete" with "strTable: <table>"; nothing is raised.
void mdlAccess_Delete(const StoreContext& store, std::string_view strTable,
                      const Variant& vntFields, const Variant& vntValues);

// Deletes the Company row `lngCompanyID` ("delete * from Company where CompanyID=<id>"); the
// database's relationships remove the study's rows in the other tables and its comparison and
// PERT report memberships. Never raises.
void DeleteCompany(const StoreContext& store, int32_t lngCompanyID);

// True when "Select FIELD from TABLE Where FIELD = ID;" succeeds, returns rows, and the first
// value of the first row, as a 32-bit integer, equals `lnRecordID`. Names are inserted as
// given. False on any failure; never raises.
bool DoesRecordExist(const StoreContext& store, int32_t lnRecordID, std::string_view strTableName,
                     std::string_view strFieldName);

// Updates the company's sngCurPrice, sngHighPrice52W (the larger of `sng52WkHigh` and the
// price), sngLowPrice52W (the smaller of `sng52WkLow` and the price), datDataUpdated (written
// in the "medium date" form) and sngCurPE (scaled by new price / stored price) in place, then,
// when `dtPriceUpdate` falls N = 0..71 months before the stored datLatestMData, the closing
// price of Monthly row Month = N. A stored price of 0 (or none) cannot scale the ratio: the
// stored sngCurPE is then kept. Answers true when the company row was updated; false when the
// company cannot be read or written. Errors are reported at "Access_UpdateCompanyPrice" with
// "lngCompanyID: <id>"; nothing is raised.
bool UpdateCompanyPrice(const StoreContext& store, int32_t lnCompanyID, float sngCurPrice,
                        Date dtPriceUpdate, float sng52WkHigh, float sng52WkLow);

}  // namespace kwx

#endif  // KWX_ACCESS_MAINTENANCE_H_
