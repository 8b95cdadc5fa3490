// Saving, loading and the statement texts of comparisons (a named side-by-side study of several
// companies) and PERT reports (a named list of companies). Deleting them goes through the keyed
// delete of access/maintenance.h.
//
// A member's SelectedFields is stored as a text of 1/0 digits, one per flag from index 1 (the
// flags writer of the SQL text layer), and loads back as a Boolean array with lower bound 1,
// so a loaded comparison saves the same text again. FieldData is stored as the member's texts
// joined with "," and loads back split at ",": a text holding a comma comes back as two texts,
// and a trailing empty text is dropped.
#ifndef KWX_ACCESS_COMPARISONS_H_
#define KWX_ACCESS_COMPARISONS_H_

#include <cstdint>
#include <string>

#include "access/error_report.h"
#include "access/store_context.h"
#include "automation/variant.h"
#include "model/comparison.h"
#include "model/pert_report.h"

namespace kwx {

// ---- Statement builders ------------------------------------------------------------------
// `blnUpdate` true gives the update form, false the insert form. Texts and dates are written by
// SqlText (apostrophes become U+00FF; blanks around a text are trimmed), numbers as decimal
// text. A value that cannot be written is reported to `errors` (when given) at the builder's
// own location ("m_strComparison", ...) and the builder answers "", which no database runs.

// "Update Comparison   set Name = V,       Description = V, ... StudiedSection = N where
// ComparisonID = N", or "Insert into Comparison (Name, Description, Field27, Field28,
// UpdatePerson, StudiedSection, LastUpdate) select V,V,V,V,V,N,V".
std::string m_strComparison(const Comparison& objComparison, bool blnUpdate,
                            ErrorSink* errors = nullptr);
// "Update PERTReport   set Name = V,       Description = V,       LastUpdate = V where
// PERTReportID = N", or "Insert into PERTReport (Name, Description, LastUpdate) select V,V,V".
std::string m_strPERTReport(const PERTReport& objPERTReport, bool blnUpdate,
                            ErrorSink* errors = nullptr);
// The member row of `member` in comparison `lngComparisonID`: SelectedFields as the flags text,
// FieldData as the texts joined with ",".
std::string m_strComparisonCompany(int32_t lngComparisonID, const ComparisonMember& member,
                                   bool blnUpdate, ErrorSink* errors = nullptr);
// The member row of company `lngCompanyID` in PERT report `lngPERTReportID`. The update form
// sets CompanyID to itself: it only tells, by its row count, whether the row exists.
std::string m_strPERTReportCompany(int32_t lngPERTReportID, int32_t lngCompanyID, bool blnUpdate,
                                   ErrorSink* errors = nullptr);

// ---- Saving ------------------------------------------------------------------------------

// Saves the header (update; when that fails or changes no row, ComparisonID becomes 0 and the
// header is inserted), reads ComparisonID back by Name (the first row of that name wins), then
// saves each member whose CompanyID is above 0 (update, else insert). Members missing from the
// object are left in the table. No transaction: a failure part-way keeps what was written.
// Errors are reported at "mdlAccess_UpdateComparison"; nothing is raised.
void UpdateComparison(const StoreContext& store, Comparison& objComparison);
// The same for a PERT report, reporting at "mdlAccess_UpdatePERTReport".
void UpdatePERTReport(const StoreContext& store, PERTReport& objPERTReport);

// ---- Loading -----------------------------------------------------------------------------

// The statement that loads comparison `lngComparisonID` with its members in member order.
std::string QueryComparisonSql(int32_t lngComparisonID);
// The statement that loads PERT report `lngPERTReportID` with its members' names; members
// whose company no longer exists drop out of the join.
std::string QueryPERTReportSql(int32_t lngPERTReportID);

// Fills the comparison selected by its ComparisonID: the header from the first row, the
// members (replacing those the object held) from every row in order. A comparison with no
// member rows (or none of that ID) leaves the object as it was. A Null value leaves its
// property as it was. Errors are reported at "mdlAccess_QueryComparison" or
// "m_ParseComparison" with "lngComparisonID: <id>"; nothing is raised.
void QueryComparison(const StoreContext& store, Comparison& objComparison);
// The same for a PERT report selected by its PERTReportID, reporting at
// "mdlAccess_QueryPERTReport" or "m_ParsePERTReport" with "lngPERTReportID: <id>".
void QueryPERTReport(const StoreContext& store, PERTReport& objPERTReport);

}  // namespace kwx

#endif  // KWX_ACCESS_COMPARISONS_H_
