// kwxLoader: price updates, record checks, deletion, comparisons and PERT reports.
#include "access/comparisons.h"
#include "access/maintenance.h"
#include "automation/safe_array.h"
#include "loader/kwx_loader.h"

namespace kwx {
namespace {

// The key pair of a member delete as the parallel name and value arrays the keyed delete takes.
void DeleteMember(const StoreContext& store, std::string_view table, std::string_view header_key,
                  int32_t header_id, int32_t company_id) {
  const Variant names(SafeArray::FromValues({Variant(header_key), Variant("CompanyID")}));
  const Variant values(SafeArray::FromValues({Variant(header_id), Variant(company_id)}));
  mdlAccess_Delete(store, table, names, values);
}

}  // namespace

bool kwxLoader::Access_UpdateCompanyPrice(int32_t lnCompanyID, float sngCurPrice,
                                          Date dtPriceUpdate, float sng52WkHigh,
                                          float sng52WkLow) {
  return UpdateCompanyPrice(Store(), lnCompanyID, sngCurPrice, dtPriceUpdate, sng52WkHigh,
                            sng52WkLow);
}

bool kwxLoader::Access_DoesRecordExist(int32_t lnRecordID, const std::string& strTableName,
                                       const std::string& strFieldName) {
  return DoesRecordExist(Store(), lnRecordID, strTableName, strFieldName);
}

void kwxLoader::Access_Delete(int32_t lngCompanyID) { DeleteCompany(Store(), lngCompanyID); }

void kwxLoader::Access_UpdateComparison(Comparison& objComparison) {
  UpdateComparison(Store(), objComparison);
}

void kwxLoader::Access_GetComparison(Comparison& objComparison) {
  QueryComparison(Store(), objComparison);
}

void kwxLoader::Access_DeleteComparison(int32_t lngComparisonID) {
  mdlAccess_Delete(Store(), "Comparison", Variant("ComparisonID"), Variant(lngComparisonID));
}

void kwxLoader::Access_DeleteComparisonCompany(int32_t lngComparisonID, int32_t lngCompanyID) {
  DeleteMember(Store(), "ComparisonCompany", "ComparisonID", lngComparisonID, lngCompanyID);
}

void kwxLoader::Access_UpdatePERTReport(PERTReport& objPERTReport) {
  UpdatePERTReport(Store(), objPERTReport);
}

void kwxLoader::Access_GetPERTReport(PERTReport& objPERTReport) {
  QueryPERTReport(Store(), objPERTReport);
}

void kwxLoader::Access_DeletePERTReport(int32_t lngPERTReportID) {
  mdlAccess_Delete(Store(), "PERTReport", Variant("PERTReportID"), Variant(lngPERTReportID));
}

void kwxLoader::Access_DeletePERTReportCompany(int32_t lngPERTReportID, int32_t lngCompanyID) {
  DeleteMember(Store(), "PERTReportCompany", "PERTReportID", lngPERTReportID, lngCompanyID);
}

}  // namespace kwx
