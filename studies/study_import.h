// Reading one study from a data file or a text, and saving it the way `kwx import` does: a study
// already saved under the same symbol and exchange is refreshed in place. The command and the
// Python module both import through here, so the two never differ.
#ifndef KWX_STUDIES_STUDY_IMPORT_H_
#define KWX_STUDIES_STUDY_IMPORT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "loader/kwx_loader.h"
#include "model/company.h"
#include "studies/study_index.h"

namespace kwx {

// The layout a name gives: "ssg" or "kwx" in any case, or a file name by its extension (".SSG",
// ".kwx"). Nothing for any other name.
std::optional<enumDataFile> LayoutNamed(std::string_view name);
std::optional<enumDataFile> LayoutOfFile(std::string_view path);

// Reads the study in the data file `path` into `company` through the loader's members. Fields
// of the other layout are refused before anything is mapped (so no reference row is added for
// them). Answers why no study was read: the loader's LastImportStatus, kNotThatLayout for the
// refused fields, and kUnreadable for fields that give no symbol. Never raises.
ImportStatus ReadStudyFile(kwxLoader& loader, const std::string& path, enumDataFile format,
                           Company& company);
// The same for the field array the loader's data-file object read from `path` beforehand.
ImportStatus ReadStudyFields(kwxLoader& loader, const Variant& fields, const std::string& path,
                             enumDataFile format, Company& company);
// The same for fields kwxLoader::MapFields mapped onto `company` beforehand, on another
// thread: `has_layout` is FieldsHaveLayout(fields, format) found there, `mapped` MapFields'
// answer.
ImportStatus ReadMappedStudyFields(kwxLoader& loader, const Variant& fields,
                                   const std::string& path, enumDataFile format, Company& company,
                                   bool has_layout, bool mapped);
// The same for a data file's text held in memory (StreamTextOfDataFile of its bytes), which
// messages call `name`.
ImportStatus ReadStudyText(kwxLoader& loader, const std::string& text, enumDataFile format,
                           const std::string& name, Company& company);

// What SaveImportedStudy did.
struct ImportSave {
  enum class Outcome {
    kSaved,      // company.CompanyID is the saved study's ID
    kAmbiguous,  // the symbol and exchange name several saved studies; nothing written
    kNotSaved,   // the save failed and was undone (the loader's error reports say more)
  };
  Outcome outcome = Outcome::kNotSaved;
  bool refreshed = false;  // a saved study was overwritten in place (same CompanyID)
  // For a person when not saved: "ACM on NYSE names 2 saved studies (IDs 3, 9)", "the old rows
  // of study 3 could not be cleared", or "".
  std::string message;
};

// Saves a study just read from a file of `format` in a transaction level of its own (inside
// the caller's transaction when one is open, else committed on return). When `saved` is given
// and names one study of the same symbol and exchange, that study is refreshed in place: its
// series rows are cleared and it is written again under its CompanyID, so that a file with fewer
// rows leaves none of the old ones behind; a new study is added to `saved`. With `saved` null a
// new study is always added. The KWX layout's industry name gets its Industry row, as an SSG
// import gives it. On kNotSaved nothing of the study remains written. Raises what the database
// object raises when a transaction level cannot be opened.
ImportSave SaveImportedStudy(kwxLoader& loader, StudyIndex* saved, enumDataFile format,
                             Company& company);

// Saves `company` so that the store then holds exactly its rows: a CompanyID of 1 or more
// overwrites that saved study in place (its series rows cleared first, as a refresh clears
// them), else a new study is added. One transaction level, as SaveImportedStudy.
ImportSave SaveWholeStudy(kwxLoader& loader, Company& company);

}  // namespace kwx

#endif  // KWX_STUDIES_STUDY_IMPORT_H_
