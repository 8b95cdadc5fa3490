#include "studies/study_import.h"

#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "access/sql_text.h"
#include "automation/errors.h"
#include "automation/text.h"
#include "import/layout_check.h"
#include "model/schema.h"
#include "services/data_file.h"

namespace kwx {
namespace {

// A transaction level of the study's own: rolled back unless kept, so that clearing the old
// rows of a refreshed study and saving it again succeed or fail together.
class StudyLevel {
 public:
  explicit StudyLevel(IDatabase& db) : db_(db) { db_.BeginTrans(); }
  ~StudyLevel() {
    if (open_) ResumeNext([&] { db_.RollbackTrans(); });
  }
  StudyLevel(const StudyLevel&) = delete;
  StudyLevel& operator=(const StudyLevel&) = delete;
  void Keep() {
    open_ = false;
    db_.CommitTrans();
  }

 private:
  IDatabase& db_;
  bool open_ = true;
};

// Deletes the series rows of a saved study, so that its next save writes exactly the rows it
// holds (a file with fewer PERT rows than the store must not leave the others behind).
bool ClearSeriesRows(IDatabase& db, int32_t company_id) {
  const std::string condition = "CompanyID = " + std::to_string(company_id);
  for (const TableDef& table : AllTables()) {
    if (table.kind != TableKind::Series) continue;
    Variant fields, data;
    if (!db.blnExecute(DeleteWhereSql(table.name, std::span(&condition, 1)), fields, data)) {
      return false;
    }
  }
  return true;
}

// `fields` refused unless of `format` (`has_layout`, when the caller checked that already);
// else the loader's word on `read`, which maps them.
template <class Read>
ImportStatus ReadChecked(kwxLoader& loader, const Variant& fields, enumDataFile format,
                         const std::string& name, Company& company, Read read,
                         std::optional<bool> has_layout = std::nullopt) {
  if (fields.IsArray() && !(has_layout ? *has_layout : FieldsHaveLayout(fields, format))) {
    return {ImportProblem::kNotThatLayout,
            name + " does not have the " + std::string(LayoutName(format)) + " layout"};
  }
  read();
  if (!loader.LastImportStatus().ok()) return loader.LastImportStatus();
  if (company.strSymbol.empty()) {
    return {ImportProblem::kUnreadable, name + " holds no study (it gives no symbol)"};
  }
  return {};
}

}  // namespace

std::optional<enumDataFile> LayoutNamed(std::string_view name) {
  if (EqualsNoCase(name, "ssg")) return idSSG;
  if (EqualsNoCase(name, "kwx")) return idKWX;
  return std::nullopt;
}

std::optional<enumDataFile> LayoutOfFile(std::string_view path) {
  std::string extension = std::filesystem::path(path).extension().string();
  if (extension.empty()) return std::nullopt;
  return LayoutNamed(std::string_view(extension).substr(1));
}

ImportStatus ReadStudyFile(kwxLoader& loader, const std::string& path, enumDataFile format,
                           Company& company) {
  Variant fields;
  if (loader.reader()) {
    std::string name = path;
    ResumeNext([&] { fields = loader.reader()->vntImportB(name); });
  }
  return ReadStudyFields(loader, fields, path, format, company);
}

ImportStatus ReadStudyFields(kwxLoader& loader, const Variant& fields, const std::string& path,
                             enumDataFile format, Company& company) {
  // The fields read once: the loader maps them as KWX_Get and SSG_Get map the file.
  return ReadChecked(loader, fields, format, "'" + path + "'", company,
                     [&] { loader.Fields_Get(fields, path, company, format); });
}

ImportStatus ReadMappedStudyFields(kwxLoader& loader, const Variant& fields,
                                   const std::string& path, enumDataFile format, Company& company,
                                   bool has_layout, bool mapped) {
  return ReadChecked(
      loader, fields, format, "'" + path + "'", company,
      [&] { loader.MappedFields_Get(fields, path, company, format, mapped, has_layout); },
      has_layout);
}

ImportStatus ReadStudyText(kwxLoader& loader, const std::string& text, enumDataFile format,
                           const std::string& name, Company& company) {
  return ReadChecked(loader, SplitStreamFields(text), format, name, company,
                     [&] { loader.Stream_Get(text, company, format); });
}

ImportSave SaveImportedStudy(kwxLoader& loader, StudyIndex* saved, enumDataFile format,
                             Company& company) {
  ImportSave result;
  // The KWX layout carries the industry's name but, unlike SSG, the loader adds no Industry
  // row for it, and a save resolves a name the table lacks to no industry.
  if (format == idKWX && !company.IndustryID.empty()) loader.Access_AddIndustry(company.IndustryID);
  int32_t existing = 0;
  if (saved) {
    const std::vector<int32_t> found = saved->Find(company.strSymbol, company.ExchangeID);
    if (found.size() > 1) {
      std::string list;
      for (int32_t id : found) list += (list.empty() ? "" : ", ") + std::to_string(id);
      result.outcome = ImportSave::Outcome::kAmbiguous;
      result.message = company.strSymbol + " on " + company.ExchangeID + " names " +
                       std::to_string(found.size()) + " saved studies (IDs " + list + ")";
      return result;
    }
    if (!found.empty()) existing = found.front();
  }

  company.CompanyID = existing;
  result = SaveWholeStudy(loader, company);
  if (result.outcome == ImportSave::Outcome::kSaved && saved && existing == 0) {
    saved->Add(company.CompanyID, company.strSymbol, company.ExchangeID);
  }
  return result;
}

ImportSave SaveWholeStudy(kwxLoader& loader, Company& company) {
  ImportSave result;
  if (!loader.database()) {
    result.message = "no database object";
    return result;
  }
  IDatabase& db = *loader.database();
  const int32_t existing = company.CompanyID > 0 ? company.CompanyID : 0;
  // A refreshed study's old rows are cleared and its save made in one level of their own; a
  // new study's save is a level by itself already.
  std::optional<StudyLevel> level;
  if (existing > 0) {
    level.emplace(db);
    if (!ClearSeriesRows(db, existing)) {
      result.message =
          "the old rows of study " + std::to_string(existing) + " could not be cleared";
      return result;
    }
  }
  company.CompanyID = existing;
  loader.Access_Update(company);
  if (!loader.LastUpdateCommitted() || company.CompanyID < 1) return result;
  if (level) level->Keep();
  result.outcome = ImportSave::Outcome::kSaved;
  result.refreshed = existing > 0;
  return result;
}

}  // namespace kwx
