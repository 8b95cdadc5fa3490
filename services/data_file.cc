#include "services/data_file.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "automation/text.h"

namespace kwx {
namespace {

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";

bool ReadWholeFile(const std::string& path, std::string& bytes) {
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) return false;
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return !in.bad();
}

// `text` as valid UTF-8: a byte that begins no valid UTF-8 character is read as the
// Windows-1252 character it is. A study can hold such bytes from a code-page file an older
// version imported undecoded; written as they are, they would make the reader take the whole
// file for the code page.
std::string AsValidUtf8(std::string_view text) {
  if (IsValidUtf8(text)) return std::string(text);
  std::string out;
  size_t i = 0;
  while (i < text.size()) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const size_t length = lead < 0x80           ? 1
                          : (lead >> 5) == 0x06 ? 2
                          : (lead >> 4) == 0x0E ? 3
                          : (lead >> 3) == 0x1E ? 4
                                                : 0;
    if (length > 0 && i + length <= text.size() && IsValidUtf8(text.substr(i, length))) {
      out.append(text.substr(i, length));
      i += length;
    } else {
      out += Windows1252ToUtf8(text.substr(i, 1));
      ++i;
    }
  }
  return out;
}

// The bytes `text` is written as: the code page when every character has a byte there and the
// reader would decode those bytes back to the same text. Code-page bytes can happen to form
// valid UTF-8 ("CAF\xC9\xAE" reads as "CAF" U+026E), which the reader would take as UTF-8.
std::string EncodeText(const std::string& text) {
  std::string narrow;
  if (Utf8ToWindows1252(text, narrow) && DecodeDataFileBytes(narrow) == text) return narrow;
  // The mark lets the reader tell UTF-8 from the code page even when the text would pass as
  // either.
  return std::string(kUtf8Bom) + text;
}

// A name for the temporary file next to the target, unique within this process and among
// processes.
std::filesystem::path TemporaryNameFor(const std::filesystem::path& target) {
  static std::atomic<unsigned> counter{0};
  std::filesystem::path name = target;
  name += ".tmp" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
  return name;
}

}  // namespace

std::string DecodeDataFileBytes(std::string_view bytes) {
  if (bytes.starts_with(kUtf8Bom)) bytes.remove_prefix(kUtf8Bom.size());
  if (IsValidUtf8(bytes)) return std::string(bytes);
  return Windows1252ToUtf8(bytes);
}

std::string StreamTextOfDataFile(std::string_view bytes) {
  std::string text = DecodeDataFileBytes(bytes);
  if (text.find('\r') == std::string::npos) std::replace(text.begin(), text.end(), '\n', '\r');
  return text;
}

Variant SplitStreamFields(std::string_view text) {
  std::vector<Variant> fields;
  std::string field;
  bool any = false;
  for (char c : text) {
    if (c == '\n') continue;
    any = true;
    if (c == '\r') {
      fields.emplace_back(std::move(field));
      field.clear();
    } else {
      field += c;
    }
  }
  if (!any) return Variant();
  // Only the one empty piece after a final CR is dropped.
  if (!field.empty()) fields.emplace_back(std::move(field));
  return Variant(SafeArray::FromValues(std::move(fields)));
}

Variant DataFile::vntImportB(std::string& path) {
  std::string bytes;
  if (!ReadWholeFile(path, bytes)) return Variant();
  return SplitStreamFields(StreamTextOfDataFile(bytes));
}

bool DataFile::blnExport(std::string& path, Variant& fields) {
  if (!fields.IsArray() || fields.AsArray().dims() != 1) return false;
  std::string text;
  for (const Variant& field : fields.AsArray().elements()) {
    std::string line;
    if (!ResumeNext([&] { line = CStr(field); })) return false;
    if (line.find_first_of("\r\n") != std::string::npos) return false;
    text += line;
    text += "\r\n";
  }
  const std::string bytes = EncodeText(AsValidUtf8(text));

  const std::filesystem::path target(path);
  std::error_code ec;
  if (target.empty() || std::filesystem::is_directory(target, ec)) return false;
  const std::filesystem::path temporary = TemporaryNameFor(target);
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.flush();
    if (!out) {
      out.close();
      std::filesystem::remove(temporary, ec);
      return false;
    }
  }
  std::filesystem::rename(temporary, target, ec);
  if (ec) {
    std::filesystem::remove(temporary, ec);
    return false;
  }
  return true;
}

}  // namespace kwx
