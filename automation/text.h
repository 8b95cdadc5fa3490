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

// Case-insensitive comparison, as text is compared throughout the system: each character is
// replaced by its Unicode simple case folding (A/a, É/é, Š/š, Œ/œ, Σ/σ/ς, Д/д, the Kelvin sign
// and k), so every pair of texts that differ only in the case of their letters compare equal.
// Folding keeps the number of characters but may change a text's byte length. A byte that
// starts no well-formed UTF-8 character stays as it is and matches only itself.
std::string FoldCase(std::string_view text);
bool EqualsNoCase(std::string_view a, std::string_view b);
// Orders the folded texts by code point (bytes that start no character after all characters).
int CompareNoCase(std::string_view a, std::string_view b);
// A hash for lookup tables keyed by case-insensitive names: texts EqualsNoCase calls equal
// hash equal. An ASCII text is hashed in place, without folding.
uint64_t HashNoCase(std::string_view text);
// Byte offset of the first case-insensitive occurrence of `needle` at or after byte `from`,
// or std::string::npos. `from` must be at a character boundary. When found and `matched` is
// given, it receives the byte length of the occurrence in `haystack`, which may differ from
// the needle's (the Kelvin sign is three bytes, the k it matches one).
size_t FindNoCase(std::string_view haystack, std::string_view needle, size_t from = 0,
                  size_t* matched = nullptr);

// Encodings for data files.
bool IsValidUtf8(std::string_view bytes);
std::string Windows1252ToUtf8(std::string_view bytes);
// Answers false (and leaves `out` unspecified) when a character has no Windows-1252 byte.
bool Utf8ToWindows1252(std::string_view text, std::string& out);

}  // namespace kwx

#endif  // KWX_AUTOMATION_TEXT_H_
