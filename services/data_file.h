// The data-file object: reads SSG and KWX data files into field arrays and writes field arrays
// back to files, one field per line.
#ifndef KWX_SERVICES_DATA_FILE_H_
#define KWX_SERVICES_DATA_FILE_H_

#include <string>
#include <string_view>

#include "automation/services.h"
#include "automation/variant.h"

namespace kwx {

class DataFile : public IDataFile {
 public:
  // Reads the file at `path` into a zero-based array of texts, one per line in order. CR LF,
  // CR and LF all end a line; a line end at the very end of the file adds no field. The bytes
  // are read as UTF-8 (a leading byte-order mark is dropped) or, when they are not valid
  // UTF-8, as Windows-1252. Answers Empty when the file cannot be read or holds no text.
  Variant vntImportB(std::string& path) override;

  // Writes every element of the one-dimensional array `fields` as one line ended by CR LF, as
  // Windows-1252 when every character has a byte there, else as UTF-8 with a byte-order mark.
  // The text goes to a temporary file in the target's folder that is then renamed onto
  // `path`, so an existing file is replaced whole or not at all. Answers false, leaving any
  // existing file unchanged, when `fields` is not an array, an element has no text, or the
  // file cannot be written or moved into place.
  bool blnExport(std::string& path, Variant& fields) override;
};

// The fields of a data file's text, split as vntImportB splits a file (exposed for the loader's
// tests and for hosts that hold a file's text already). Answers Empty for an empty text.
Variant SplitDataFileLines(std::string_view text);

}  // namespace kwx

#endif  // KWX_SERVICES_DATA_FILE_H_
