#include "services/data_file.h"

#include <unistd.h>

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

std::string DecodeText(std::string_view bytes) {
  if (bytes.starts_with(kUtf8Bom)) bytes.remove_prefix(kUtf8Bom.size());
  if (IsValidUtf8(bytes)) return std::string(bytes);
  // Files written by older programs carry the Windows code page.
  return Windows1252ToUtf8(bytes);
}

std::string EncodeText(const std::string& text) {
  std::string narrow;
  if (Utf8ToWindows1252(text, narrow)) return narrow;
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

Variant SplitDataFileLines(std::string_view text) {
  if (text.empty()) return Variant();
  std::vector<Variant> lines;
  size_t start = 0;
  size_t i = 0;
  while (i < text.size()) {
    char c = text[i];
    if (c != '\r' && c != '\n') {
      ++i;
      continue;
    }
    lines.emplace_back(std::string(text.substr(start, i - start)));
    i += (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ? 2 : 1;
    start = i;
  }
  if (start < text.size()) lines.emplace_back(std::string(text.substr(start)));
  return Variant(SafeArray::FromValues(std::move(lines)));
}

Variant DataFile::vntImportB(std::string& path) {
  std::string bytes;
  if (!ReadWholeFile(path, bytes)) return Variant();
  return SplitDataFileLines(DecodeText(bytes));
}

bool DataFile::blnExport(std::string& path, Variant& fields) {
  if (!fields.IsArray() || fields.AsArray().dims() != 1) return false;
  std::string text;
  for (const Variant& field : fields.AsArray().elements()) {
    if (!ResumeNext([&] { text += CStr(field); })) return false;
    text += "\r\n";
  }
  const std::string bytes = EncodeText(text);

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
