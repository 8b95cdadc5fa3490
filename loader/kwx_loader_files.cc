// The loader's data-file and stream members and the import dispatch they share.
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "access/reference_tables.h"
#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "common/helpers.h"
#include "export/kwx_export.h"
#include "export/ssg_export.h"
#include "import/kwx_import.h"
#include "import/kwx_layout.h"
#include "import/layout_check.h"
#include "import/ssg_import.h"
#include "loader/kwx_loader.h"
#include "model/company.h"
#include "services/data_file.h"

namespace kwx {
namespace {

// The SSG position that names the study's industry.
constexpr int16_t kSsgIndustryPosition = 243;

// The dilution the shares to come would cause, in percent: 0 unless both share counts are
// positive.
float PotentialDilution(const Company& company) {
  if (!(company.sngACS > 0 && company.sngCSO > 0)) return 0;
  const bool use_float = true;
  // The quotient is rounded to single precision before 1 is taken off, so 110 / 100 gives
  // exactly the single nearest 10.
  const float quotient = CSng(SafeDivide(Variant(company.sngACS), Variant(company.sngCSO),
                                         use_float, Variant(0), false, Variant()));
  return (quotient - 1) * 100;
}

bool WriteFields(IDataFile* writer, const std::string& file_name, Variant fields) {
  if (!writer) return false;
  std::string path = file_name;
  bool written = false;
  ResumeNext([&] { written = writer->blnExport(path, fields); });
  return written;
}

// kNone when `fields` have the layout `format`, else kNotThatLayout naming `what`.
ImportStatus FieldsStatus(const Variant& fields, int32_t format, const std::string& what,
                          std::optional<bool> has_layout = std::nullopt) {
  if (has_layout ? *has_layout : FieldsHaveLayout(fields, format)) return {};
  const std::string_view layout = LayoutName(format);
  return {ImportProblem::kNotThatLayout,
          layout.empty() ? what + ": " + std::to_string(format) + " is no data-file layout"
                         : what + " does not have the " + std::string(layout) + " layout"};
}

}  // namespace

void kwxLoader::SSG_Get(const std::string& strFileName, Company& objCompany) {
  ImportDataFile(strFileName, objCompany, idSSG);
}

void kwxLoader::KWX_Get(const std::string& strFileName, Company& objCompany) {
  ImportDataFile(strFileName, objCompany, idKWX);
}

void kwxLoader::ImportDataFile(const std::string& strFileName, Company& objCompany,
                               enumDataFile format) {
  Variant fields;
  try {
    if (!reader_) throw AutomationError(err::kObjectNotSet);
    std::string path = strFileName;
    fields = reader_->vntImportB(path);
  } catch (const std::exception& e) {
    last_import_ = {ImportProblem::kUnreadable, "cannot read '" + strFileName + "': " + e.what()};
    return;
  }
  Fields_Get(fields, strFileName, objCompany, format);
}

void kwxLoader::Fields_Get(const Variant& vntFields, const std::string& strFileName,
                           Company& objCompany, enumDataFile DataFileFormat) {
  NoteFieldsStatus(vntFields, strFileName, DataFileFormat);
  ResumeNext([&] { ImportFieldArray(vntFields, objCompany, DataFileFormat); });
}

void kwxLoader::MappedFields_Get(const Variant& vntFields, const std::string& strFileName,
                                 Company& objCompany, enumDataFile DataFileFormat,
                                 bool blnMapped, std::optional<bool> blnHasLayout) {
  NoteFieldsStatus(vntFields, strFileName, DataFileFormat, blnHasLayout);
  if (blnMapped) ResumeNext([&] { ReconcileImported(vntFields, objCompany, DataFileFormat); });
}

void kwxLoader::NoteFieldsStatus(const Variant& vntFields, const std::string& strFileName,
                                 enumDataFile DataFileFormat, std::optional<bool> has_layout) {
  if (vntFields.IsArray()) {
    last_import_ = FieldsStatus(vntFields, DataFileFormat, "'" + strFileName + "'", has_layout);
  } else {
    // The reader answers Empty for every file it cannot read; the path tells the two apart.
    std::error_code ec;
    const bool exists = std::filesystem::exists(strFileName, ec);
    last_import_ = !exists && !ec
                       ? ImportStatus{ImportProblem::kNoSuchFile,
                                      "no such file: '" + strFileName + "'"}
                       : ImportStatus{ImportProblem::kUnreadable,
                                      "cannot read '" + strFileName + "' (no text in it)"};
  }
}

void kwxLoader::Stream_Get(const std::string& strData, Company& objCompany,
                           enumDataFile DataFileFormat) {
  ResumeNext([&] {
    // The data-file reader splits a file's text by the same routine, so a file and a stream of
    // its text give the same positions.
    const Variant fields = SplitStreamFields(strData);
    last_import_ = fields.IsArray() ? FieldsStatus(fields, DataFileFormat, "the text")
                                    : ImportStatus{ImportProblem::kUnreadable,
                                                   "the text holds no fields"};
    ImportFieldArray(fields, objCompany, DataFileFormat);
  });
}

bool kwxLoader::MapFields(const Variant& vntFields, Company& objCompany,
                          enumDataFile DataFileFormat, int32_t platform) noexcept {
  if (!vntFields.IsArray()) return false;
  return ResumeNext([&] {
    if (DataFileFormat == idSSG) {
      MapSsgFields(objCompany, vntFields, platform);
    } else if (DataFileFormat == idKWX) {
      auto map = [&](const Variant& checked) {
        MapKwxCompany(objCompany, checked, platform);
        MapKwxJudgment(objCompany, checked, platform);
      };
      const float version = KwxFieldsVersion(vntFields);
      if (version == kKwxFirstVersion) {
        Variant completed = vntFields;  // validation completes a 1.0 array in place: the
        if (ValidateKwxFields(completed)) map(completed);  // caller's stays as it was read
      } else if (version != 0) {
        // Any other layout is mapped as read, without a copy of its texts: validation would
        // leave it as it is.
        map(vntFields);
      }
    }
    objCompany.sngPotDilution = PotentialDilution(objCompany);
  });
}

void kwxLoader::ImportFieldArray(const Variant& fields, Company& objCompany, int32_t format) {
  if (MapFields(fields, objCompany, static_cast<enumDataFile>(format), platform_)) {
    ReconcileImported(fields, objCompany, format);
  }
}

void kwxLoader::ReconcileImported(const Variant& fields, Company& objCompany, int32_t format) {
  AddLookup(objCompany.DataSourceID, kDataSourceTable, caches_.data_source);
  AddLookup(objCompany.ExchangeID, kExchangeTable, caches_.exchange);
  if (IsNumeric(Variant(objCompany.SectorID))) {
    objCompany.SectorID.clear();
  } else {
    AddLookup(objCompany.SectorID, kSectorTable, caches_.sector);
  }

  if (format == idSSG) {
    const std::string industry = CStr(fields.AsArray()(kSsgIndustryPosition));
    StoreIndustryCode(database_.get(), 0, industry);
    objCompany.IndustryID = industry;
  }
}

bool kwxLoader::SSG_Update(Company& objCompany, const std::string& strFileName) {
  Variant fields;
  ResumeNext([&] { fields = BuildSsgFields(objCompany); });
  return WriteFields(reader_.get(), strFileName, std::move(fields));
}

bool kwxLoader::KWX_Update(Company& objCompany, const std::string& strFileName) {
  Variant fields;
  ResumeNext([&] { fields = BuildKwxFields(objCompany); });
  return WriteFields(reader_.get(), strFileName, std::move(fields));
}

}  // namespace kwx
