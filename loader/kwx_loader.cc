#include "loader/kwx_loader.h"

#include "access/store_context.h"
#include "automation/errors.h"
#include "automation/registry.h"
#include "services/builtin_services.h"

namespace kwx {

kwxLoader::kwxLoader() {
  RegisterBuiltinServices();
  CreateServiceObjects();
}

kwxLoader::~kwxLoader() = default;

StoreContext kwxLoader::Store() {
  return StoreContext{database_.get(), platform_, &caches_, &errors_};
}

void kwxLoader::ErrorLog::Report(const ErrorReport& report) noexcept {
  collected_.Report(report);
  if (callback) {
    try {
      callback(report);
    } catch (...) {
      // A host's callback must not break the store's own error handling.
    }
  }
}

void kwxLoader::SetErrorCallback(std::function<void(const ErrorReport&)> callback) {
  errors_.callback = std::move(callback);
}

void kwxLoader::CreateServiceObjects() {
  const bool sp = platform_ == kPlatformSP;
  // Release first: the old database connection closes before the new object exists.
  database_.reset();
  reader_.reset();
  database_ = CreateObjectAs<IDatabase>(sp ? progid::kDatabaseSP : progid::kDatabase);
  reader_ = CreateObjectAs<IDataFile>(sp ? progid::kDataFileSP : progid::kDataFile);
}

void kwxLoader::ProgramPlatform(int32_t value) {
  platform_ = value == kPlatformSP ? kPlatformSP : kPlatformPlain;
  CreateServiceObjects();
}

bool kwxLoader::Access_blnOpenDatabase(const std::string& strDB) {
  if (!database_) return false;
  std::string path = strDB;
  bool opened = false;
  ResumeNext([&] { opened = database_->blnOpenDatabase(path); });
  if (!opened) return false;
  LoadLookupTable(database_.get(), kSectorTable, caches_.sector);
  LoadLookupTable(database_.get(), kExchangeTable, caches_.exchange);
  LoadLookupTable(database_.get(), kDataSourceTable, caches_.data_source);
  return true;
}

bool kwxLoader::Access_CompactDB(const std::string& strDB) {
  if (!database_) throw AutomationError(err::kObjectNotSet);
  std::string path = strDB;
  return database_->CloseNCompact(path);
}

Variant kwxLoader::vntIndustry() {
  Variant ids;
  Variant names;
  if (!ResumeNext([&] { Access_GetIndustry(ids, names); })) return Variant();
  return names;
}

void kwxLoader::Access_GetCompanies(const std::string& strSQL, Variant& vntData,
                                    Variant& vntField) {
  ResumeNext([&] {
    if (!database_) throw AutomationError(err::kObjectNotSet);
    database_->blnExecute(strSQL, vntField, vntData);
  });
}

void kwxLoader::Access_GetSector(Variant& vntID, Variant& vntData) const {
  vntID = caches_.sector.ids;
  vntData = caches_.sector.names;
}

void kwxLoader::Access_GetExchange(Variant& vntID, Variant& vntData) const {
  vntID = caches_.exchange.ids;
  vntData = caches_.exchange.names;
}

void kwxLoader::Access_GetDataSource(Variant& vntID, Variant& vntData) const {
  vntID = caches_.data_source.ids;
  vntData = caches_.data_source.names;
}

void kwxLoader::Access_GetIndustry(Variant& vntID, Variant& vntData) {
  LookupCache industry;
  LoadLookupTable(database_.get(), kIndustryTable, industry);
  vntID = std::move(industry.ids);
  vntData = std::move(industry.names);
}

void kwxLoader::Access_UpdateSector(const Variant& vntID, const Variant& vntData) {
  SaveLookupRows(database_.get(), kSectorTable, vntID, vntData);
  LoadLookupTable(database_.get(), kSectorTable, caches_.sector);
}

void kwxLoader::Access_UpdateExchange(const Variant& vntID, const Variant& vntData) {
  SaveLookupRows(database_.get(), kExchangeTable, vntID, vntData);
  LoadLookupTable(database_.get(), kExchangeTable, caches_.exchange);
}

void kwxLoader::Access_UpdateDataSource(const Variant& vntID, const Variant& vntData) {
  SaveLookupRows(database_.get(), kDataSourceTable, vntID, vntData);
  LoadLookupTable(database_.get(), kDataSourceTable, caches_.data_source);
}

void kwxLoader::Access_UpdateIndustry(const Variant& vntID, const Variant& vntData) {
  SaveLookupRows(database_.get(), kIndustryTable, vntID, vntData);
}

void kwxLoader::Access_DeleteSector(const Variant& vntID) {
  DeleteLookupRows(database_.get(), kSectorTable, vntID);
  LoadLookupTable(database_.get(), kSectorTable, caches_.sector);
}

void kwxLoader::Access_DeleteExchange(const Variant& vntID) {
  DeleteLookupRows(database_.get(), kExchangeTable, vntID);
  LoadLookupTable(database_.get(), kExchangeTable, caches_.exchange);
}

void kwxLoader::Access_DeleteDataSource(const Variant& vntID) {
  DeleteLookupRows(database_.get(), kDataSourceTable, vntID);
  LoadLookupTable(database_.get(), kDataSourceTable, caches_.data_source);
}

void kwxLoader::Access_DeleteIndustry(const Variant& vntID) {
  DeleteLookupRows(database_.get(), kIndustryTable, vntID);
}

void kwxLoader::Access_RefreshExchange() {
  LoadLookupTable(database_.get(), kExchangeTable, caches_.exchange);
}

void kwxLoader::AddLookup(std::string_view name, const ReferenceTable& t, LookupCache& cache) {
  if (FindOrAddLookup(database_.get(), name, t, cache)) LoadLookupTable(database_.get(), t, cache);
}

void kwxLoader::Access_AddSector(const std::string& strSector) {
  AddLookup(strSector, kSectorTable, caches_.sector);
}

void kwxLoader::Access_AddExchange(const std::string& strExchange) {
  AddLookup(strExchange, kExchangeTable, caches_.exchange);
}

void kwxLoader::Access_AddDataSource(const std::string& strDataSource) {
  AddLookup(strDataSource, kDataSourceTable, caches_.data_source);
}

void kwxLoader::Access_AddIndustry(const std::string& strIndustry) {
  StoreIndustryCode(database_.get(), 0, strIndustry);
}

}  // namespace kwx
