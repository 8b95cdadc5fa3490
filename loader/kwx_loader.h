// kwxLoader: the public class. A host creates one loader, opens a database through it, and moves
// one Company at a time between that database, SSG and KWX data files and text streams.
#ifndef KWX_LOADER_KWX_LOADER_H_
#define KWX_LOADER_KWX_LOADER_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "access/error_report.h"
#include "access/reference_tables.h"
#include "automation/services.h"
#include "automation/value_types.h"
#include "automation/variant.h"

namespace kwx {

class Company;
class Comparison;
class PERTReport;
struct StoreContext;

// The data-file layouts.
enum enumDataFile : int32_t { idSSG = 0, idKWX = 1 };

// Why the latest SSG_Get, KWX_Get or Stream_Get gave no study (ImportStatus::problem).
enum class ImportProblem : int32_t {
  kNone = 0,       // the fields had the layout asked for and were mapped
  kNoSuchFile,     // the path names no file
  kNotThatLayout,  // the fields are not of the layout asked for (see LastImportStatus)
  kUnreadable,     // no fields: the file could not be read, holds no text, or the reader failed
};

// What the latest import found, for a host that must tell a person why nothing was read.
struct ImportStatus {
  ImportProblem problem = ImportProblem::kNone;
  // For a person, naming the file: "no such file: 'a.kwx'". Empty when problem is kNone.
  std::string message;
  bool ok() const noexcept { return problem == ImportProblem::kNone; }
};

// Program platform values: 1 selects the SP build of the service libraries; every other value
// is the plain build and is stored as 0.
inline constexpr int32_t kPlatformPlain = 0;
inline constexpr int32_t kPlatformSP = 1;

class kwxLoader {
 public:
  // Creates the plain-build database and data-file objects by ProgID; a ProgID that cannot be
  // instantiated leaves that object unset (later calls that need it fail as their members say).
  // No database is opened and no reference table is loaded.
  kwxLoader();
  ~kwxLoader();
  kwxLoader(const kwxLoader&) = delete;
  kwxLoader& operator=(const kwxLoader&) = delete;

  // ---- Platform and service objects ----

  // The stored platform: 1 (SP) or 0 (plain).
  int32_t ProgramPlatform() const noexcept { return platform_; }
  // Releases both service objects and creates them anew from the SP ProgIDs when `value` is 1,
  // else from the plain ones (storing 0). Objects are replaced even when the value does not
  // change, so a database opened before is no longer open. The caches are kept.
  void ProgramPlatform(int32_t value);

  // ---- Database ----

  // Opens `strDB` through the database object and, when that succeeds, reloads the Sector,
  // Exchange and DataSource caches in that order. Answers the database object's answer; a
  // failed open keeps the caches of an earlier open.
  bool Access_blnOpenDatabase(const std::string& strDB);
  // Closes the database and compacts the file `strDB`; answers the database object's answer.
  // The one member whose errors reach the caller: an AutomationError from the database object
  // (err::kObjectNotSet when there is none) propagates.
  bool Access_CompactDB(const std::string& strDB);

  // ---- Reference tables ----

  // Copies of the cached names arrays; Empty before a database was opened.
  Variant vntSector() const { return caches_.sector.names; }
  Variant vntExchange() const { return caches_.exchange.names; }
  Variant vntDataSource() const { return caches_.data_source.names; }
  // The industry names, read from the database on every call; Empty when that fails.
  Variant vntIndustry();
  // Kept for interface compatibility: always Empty.
  Variant vntTrend() const { return trend_; }

  // The cached IDs and names (no database access).
  void Access_GetSector(Variant& vntID, Variant& vntData) const;
  void Access_GetExchange(Variant& vntID, Variant& vntData) const;
  void Access_GetDataSource(Variant& vntID, Variant& vntData) const;
  // The Industry table as it is now in the database.
  void Access_GetIndustry(Variant& vntID, Variant& vntData);

  // Renames the rows whose IDs are in vntID to the names at the same indexes of vntData and
  // inserts the elements whose ID is 0 or unknown; then reloads that table's cache (none for
  // Industry).
  void Access_UpdateSector(const Variant& vntID, const Variant& vntData);
  void Access_UpdateExchange(const Variant& vntID, const Variant& vntData);
  void Access_UpdateDataSource(const Variant& vntID, const Variant& vntData);
  void Access_UpdateIndustry(const Variant& vntID, const Variant& vntData);

  // Deletes the listed IDs; then reloads that table's cache (none for Industry). References
  // from companies are neither checked nor cleared.
  void Access_DeleteSector(const Variant& vntID);
  void Access_DeleteExchange(const Variant& vntID);
  void Access_DeleteDataSource(const Variant& vntID);
  void Access_DeleteIndustry(const Variant& vntID);

  // Reloads the exchange cache from the database.
  void Access_RefreshExchange();

  // Adds a row of that name unless the cache (or, with no cache, the database) has one, and
  // reloads the cache when a row was added. The cache comparison ignores case.
  void Access_AddSector(const std::string& strSector);
  void Access_AddExchange(const std::string& strExchange);
  void Access_AddDataSource(const std::string& strDataSource);
  // Adds an Industry row (code 0) of that name unless one of that name exists.
  void Access_AddIndustry(const std::string& strIndustry);

  // ---- Loading and saving a study ----

  // Fills `objCompany` from the database: by `lngCompanyID` when it is 1 or more, else by
  // `strSymbol` and the exchange named `strExchange`. A study that is not found leaves the
  // object as it was. Errors are reported (ErrorReports), never raised.
  void Access_Get(int32_t lngCompanyID, const std::string& strSymbol,
                  const std::string& strExchange, Company& objCompany);
  // Writes `objCompany` in one transaction (the first failure rolls everything back); a new
  // study (CompanyID below 1) is inserted and receives its database-assigned CompanyID. With
  // `blnUpdateJudgment` false the judgment groups and market averages are left alone.
  void Access_Update(Company& objCompany, bool blnUpdateJudgment = true);
  // True when the latest Access_Update committed its transaction; false before the first one
  // and when it rolled back (a failed statement is not always an error report, so a host that
  // must know whether a study was saved asks here).
  bool LastUpdateCommitted() const noexcept { return last_update_committed_; }

  // ---- Prices, lists, checks and deletion ----

  // Sets the stored price, 52-week range, update date and price/earnings ratio of a company in
  // place, and the month's closing price when the date falls in the 72-month window. True when
  // the company row was updated.
  bool Access_UpdateCompanyPrice(int32_t lnCompanyID, float sngCurPrice, Date dtPriceUpdate,
                                 float sng52WkHigh, float sng52WkLow);
  // Executes the caller's statement unchanged and hands its row set back: `vntField` the
  // zero-based field names, `vntData` the (row, column) data. Whether it succeeded is not
  // answered; a failure leaves both Empty.
  void Access_GetCompanies(const std::string& strSQL, Variant& vntData, Variant& vntField);
  // True when `strTableName` has a row whose `strFieldName` is `lnRecordID`.
  bool Access_DoesRecordExist(int32_t lnRecordID, const std::string& strTableName,
                              const std::string& strFieldName);
  // Deletes the company row; the database removes its rows in the other tables.
  void Access_Delete(int32_t lngCompanyID);

  // ---- Comparisons and PERT reports ----

  void Access_UpdateComparison(Comparison& objComparison);
  void Access_GetComparison(Comparison& objComparison);
  void Access_DeleteComparison(int32_t lngComparisonID);
  // Deletes the company from the comparison's members, and (as the keyed delete applies only
  // its last key) from every other comparison too.
  void Access_DeleteComparisonCompany(int32_t lngComparisonID, int32_t lngCompanyID);
  void Access_UpdatePERTReport(PERTReport& objPERTReport);
  void Access_GetPERTReport(PERTReport& objPERTReport);
  void Access_DeletePERTReport(int32_t lngPERTReportID);
  void Access_DeletePERTReportCompany(int32_t lngPERTReportID, int32_t lngCompanyID);

  // ---- Data files and streams ----

  // Read the data file through the data-file object and map it onto `objCompany` (SSG or KWX
  // layout). A file that cannot be read leaves the study untouched. Never raises.
  void SSG_Get(const std::string& strFileName, Company& objCompany);
  void KWX_Get(const std::string& strFileName, Company& objCompany);
  // Maps the field array the data-file object read from the file `strFileName` (its
  // vntImportB, read beforehand: a bulk import reads the next files while it saves) onto
  // `objCompany` exactly as SSG_Get and KWX_Get map what they read, LastImportStatus included;
  // an Empty array is a file that could not be read. Never raises.
  void Fields_Get(const Variant& vntFields, const std::string& strFileName, Company& objCompany,
                  enumDataFile DataFileFormat);
  // The database-free part of Fields_Get: maps `vntFields` onto `objCompany` (a fresh study)
  // as Fields_Get would, with the reference names not yet reconciled with their tables. Uses
  // nothing but its arguments, so a bulk import runs it on a thread of its own. False when
  // `vntFields` is no array or the mapping stopped on an error.
  static bool MapFields(const Variant& vntFields, Company& objCompany,
                        enumDataFile DataFileFormat, int32_t platform) noexcept;
  // Completes what MapFields began (`blnMapped` its answer, given ProgramPlatform()):
  // the same study and LastImportStatus as Fields_Get on the same array. `blnHasLayout`, when
  // given, is whether the array has the layout of DataFileFormat (import/layout_check.h), found
  // on the thread that mapped it. Never raises.
  void MappedFields_Get(const Variant& vntFields, const std::string& strFileName,
                        Company& objCompany, enumDataFile DataFileFormat, bool blnMapped,
                        std::optional<bool> blnHasLayout = std::nullopt);
  // Maps a text held in memory, one field per line (CR LF or CR line ends), onto `objCompany`.
  void Stream_Get(const std::string& strData, Company& objCompany,
                  enumDataFile DataFileFormat = idSSG);
  // Why the latest SSG_Get, KWX_Get or Stream_Get read no study, kNone when its fields had the
  // layout asked for (kNone too before the first import). The members themselves stay silent
  // and map as they always do: an SSG array of the wrong layout is still mapped, a KWX one is
  // not, so a host that wants nothing mapped from a wrong file checks FieldsHaveLayout first.
  const ImportStatus& LastImportStatus() const noexcept { return last_import_; }
  // Write `objCompany` as a data file; true when the data-file object wrote it.
  bool SSG_Update(Company& objCompany, const std::string& strFileName);
  bool KWX_Update(Company& objCompany, const std::string& strFileName);

  // ---- Analysis defaults ----

  // Fills the zero-valued growth rates, trend and projection lines and factors through the
  // compute and value objects of the current platform. Never raises.
  void ComputeDefaults(Company& objCompany);

  // ---- Error reports ----

  // The reports of the errors the store trapped since construction (or the last clear),
  // oldest first. Each report's Text() is the four-line report.
  const std::vector<ErrorReport>& ErrorReports() const noexcept { return errors_.reports(); }
  void ClearErrorReports() noexcept { errors_.Clear(); }
  // Also hands every new report to `callback` (an empty callback stops that).
  void SetErrorCallback(std::function<void(const ErrorReport&)> callback);

  // ---- For hosts and tests ----

  // The service objects in use (may be null when creation failed).
  const std::shared_ptr<IDatabase>& database() const noexcept { return database_; }
  const std::shared_ptr<IDataFile>& reader() const noexcept { return reader_; }

 private:
  // Collects reports and forwards them to the host's callback.
  class ErrorLog : public ErrorSink {
   public:
    void Report(const ErrorReport& report) noexcept override;
    const std::vector<ErrorReport>& reports() const noexcept { return collected_.reports(); }
    void Clear() noexcept { collected_.Clear(); }
    std::function<void(const ErrorReport&)> callback;

   private:
    ErrorCollector collected_;
  };

  void CreateServiceObjects();
  void AddLookup(std::string_view name, const ReferenceTable& t, LookupCache& cache);
  // What the store routines receive.
  StoreContext Store();
  // Maps a field array onto the study by `format` (0 SSG, 1 KWX), then recomputes the
  // dilution and reconciles the reference names with their tables.
  void ImportFieldArray(const Variant& fields, Company& objCompany, int32_t format);
  // The part of the mapping that uses the database: reference names reconciled with their
  // tables (the industry of an SSG file stored).
  void ReconcileImported(const Variant& fields, Company& objCompany, int32_t format);
  // Records in LastImportStatus what the field array read from `strFileName` says
  // (`has_layout`: whether it has DataFileFormat's layout, when that is known already).
  void NoteFieldsStatus(const Variant& vntFields, const std::string& strFileName,
                        enumDataFile DataFileFormat,
                        std::optional<bool> has_layout = std::nullopt);
  // SSG_Get and KWX_Get: reads the file through the reader object, records why it gave no
  // study, and maps what it gave.
  void ImportDataFile(const std::string& strFileName, Company& objCompany, enumDataFile format);

  int32_t platform_ = kPlatformPlain;
  std::shared_ptr<IDatabase> database_;
  std::shared_ptr<IDataFile> reader_;
  ReferenceCaches caches_;
  Variant trend_;  // never assigned
  bool last_update_committed_ = false;
  ImportStatus last_import_;
  ErrorLog errors_;
};

}  // namespace kwx

#endif  // KWX_LOADER_KWX_LOADER_H_
