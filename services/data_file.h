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
  // Reads the file at `path` into a zero-based array of texts: the fields Stream_Get gives for
  // the file's text, SplitStreamFields(StreamTextOfDataFile(bytes)). Answers Empty when the
  // file cannot be read or holds no text.
  Variant vntImportB(std::string& path) override;

  // Writes every element of the one-dimensional array `fields` as one line ended by CR LF, as
  // Windows-1252 when every character has a byte there and those bytes decode back to the
  // same text (DecodeDataFileBytes), else as UTF-8 with a byte-order mark. A byte that begins
  // no valid UTF-8 character is written as the Windows-1252 character it is. An element
  // holding a CR or LF would move every later field and is refused (the field builders write
  // line breaks in a form a line can carry). The text goes to a temporary file in the
  // target's folder that is then renamed onto `path`, so an existing file is replaced whole
  // or not at all. Answers false, leaving any existing file unchanged, when `fields` is not
  // an array, an element has no text or holds a line break, or the file cannot be written or
  // moved into place.
  bool blnExport(std::string& path, Variant& fields) override;
};

// The text of a data file's bytes: UTF-8 (a leading byte-order mark dropped) when the bytes
// are valid UTF-8, else Windows-1252, the code page of files written by older programs. Every
// way a data file's bytes come in (a file, standard input) decodes through this one rule.
std::string DecodeDataFileBytes(std::string_view bytes);

// The text Stream_Get is to be given for a data file's bytes so that it yields the fields
// vntImportB reads from the file: the decoded text, with every LF turned into a CR when the
// text holds no CR at all (a file whose line ends were converted to LF would otherwise be one
// field).
std::string StreamTextOfDataFile(std::string_view bytes);

// The field array of a stream's text, the one splitting rule of Stream_Get and of the reader:
// every LF removed, the rest split at every CR into elements 0, 1, 2 ..., and one empty last
// piece (the text ended with a CR) dropped. Every CR cuts, however long the text. Answers
// Empty for a text that leaves nothing to split.
Variant SplitStreamFields(std::string_view text);

}  // namespace kwx

#endif  // KWX_SERVICES_DATA_FILE_H_
