// Loading and saving a study: the loader hands its database, platform, caches and error log
// to the store routines.
#include "access/company_load.h"
#include "access/company_save.h"
#include "loader/kwx_loader.h"

namespace kwx {

void kwxLoader::Access_Get(int32_t lngCompanyID, const std::string& strSymbol,
                           const std::string& strExchange, Company& objCompany) {
  LoadCompany(Store(), lngCompanyID, strSymbol, strExchange, objCompany);
}

void kwxLoader::Access_Update(Company& objCompany, bool blnUpdateJudgment) {
  last_update_committed_ = SaveCompany(Store(), objCompany, blnUpdateJudgment);
}

}  // namespace kwx
