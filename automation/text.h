// Text helpers on UTF-8 strings: characters are Unicode code points.
#ifndef KWX_AUTOMATION_TEXT_H_
#define KWX_AUTOMATION_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kwx {

// The character of code `code` (a Unicode code point) as UTF-8: ChrW(255) is "ÿ" (U+00FF).
std::string ChrW(uint32_t code);
// The code of the first character, 0 for empty text.
uint32_t AscW(std::string_view text);

// Number of characters (code points). Invalid UTF-8 bytes count one each.
size_t Len(std::string_view text);
// Up to `length` characters starting at character `start` (1-based); "" past the end.
// Raises err::kInvalidCall for start < 1.
std::string Mid(std::string_view text, size_t start, size_t length = std::string::npos);

// Removes leading and trailing blanks (the space character only).
std::string Trim(std::string_view text);

// Case-insensitive comparison folding ASCII and Latin-1 letters (A-Z, U+00C0-U+00DE but
// U+00D7) to lower case.
std::string FoldCase(std::string_view text);
bool EqualsNoCase(std::string_view a, std::string_view b);
int CompareNoCase(std::string_view a, std::string_view b);
// A hash for lookup tables keyed by case-insensitive names: texts EqualsNoCase calls equal
// hash equal. Computed in place, without folding the text.
uint64_t HashNoCase(std::string_view text);
// Byte offset of the first case-insensitive occurrence of `needle` at or after byte `from`,
// or std::string::npos. `from` must be at a character boundary.
size_t FindNoCase(std::string_view haystack, std::string_view needle, size_t from = 0);

// Encodings for data files.
bool IsValidUtf8(std::string_view bytes);
std::string Windows1252ToUtf8(std::string_view bytes);
// Answers false (and leaves `out` unspecified) when a character has no Windows-1252 byte.
bool Utf8ToWindows1252(std::string_view text, std::string& out);

}  // namespace kwx

#endif  // KWX_AUTOMATION_TEXT_H_
