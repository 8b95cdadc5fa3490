#include "automation/text.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <unicode/uchar.h>

#include "automation/errors.h"

namespace kwx {

namespace {

// One decoded character: its code point and the number of bytes it took. A byte that does not
// start a well-formed sequence decodes as itself with length 1 and `valid` false, so counting
// and slicing never stall on damaged text.
struct Decoded {
  uint32_t code;
  size_t length;
  bool valid;
};

Decoded DecodeAt(std::string_view s, size_t i) {
  const auto b0 = static_cast<unsigned char>(s[i]);
  if (b0 < 0x80) return {b0, 1, true};
  size_t length;
  uint32_t code;
  uint32_t min;
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    length = 2, code = b0 & 0x1F, min = 0x80;
  } else if (b0 >= 0xE0 && b0 <= 0xEF) {
    length = 3, code = b0 & 0x0F, min = 0x800;
  } else if (b0 >= 0xF0 && b0 <= 0xF4) {
    length = 4, code = b0 & 0x07, min = 0x10000;
  } else {
    return {b0, 1, false};
  }
  if (i + length > s.size()) return {b0, 1, false};
  for (size_t k = 1; k < length; ++k) {
    const auto b = static_cast<unsigned char>(s[i + k]);
    if ((b & 0xC0) != 0x80) return {b0, 1, false};
    code = (code << 6) | (b & 0x3F);
  }
  // Overlong forms, UTF-16 surrogates and codes past U+10FFFF are not characters.
  if (code < min || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF) {
    return {b0, 1, false};
  }
  return {code, length, true};
}

void AppendUtf8(uint32_t code, std::string& out) {
  if (code < 0x80) {
    out.push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (code >> 6)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else if (code < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (code >> 12)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (code >> 18)));
    out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

// Bytes 0x80 to 0x9F of Windows-1252. The five bytes the code page leaves undefined (0x81,
// 0x8D, 0x8F, 0x90, 0x9D) map to the control characters of the same number, so that every
// byte survives a round trip through UTF-8.
constexpr std::array<uint16_t, 32> kWindows1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80-87
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88-8F
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90-97
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98-9F
};

char AsciiLower(unsigned char b) { return static_cast<char>(b >= 'A' && b <= 'Z' ? b + 0x20 : b); }

// A byte that starts no well-formed character compares as this plus the byte: above every
// character, and equal only to the same byte.
constexpr uint32_t kStrayByte = 0x110000;

// The folded code of the character starting at byte `i`, and `i` moved past it.
uint32_t FoldedCodeAt(std::string_view s, size_t& i) {
  const auto b = static_cast<unsigned char>(s[i]);
  if (b < 0x80) {
    ++i;
    return static_cast<unsigned char>(AsciiLower(b));
  }
  const Decoded d = DecodeAt(s, i);
  i += d.length;
  if (!d.valid) return kStrayByte + b;
  return static_cast<uint32_t>(u_foldCase(static_cast<UChar32>(d.code), U_FOLD_CASE_DEFAULT));
}

// The hash of HashNoCase over bytes as they stand. Setting bit 0x20 of every byte makes ASCII
// capitals hash as their lower case without decoding; `high` collects the bytes' top bits, so
// the caller learns whether the text was ASCII. Eight bytes at a time, as the names hashed are
// column names read by the hundred.
uint64_t HashBytes(std::string_view text, uint64_t& high) {
  constexpr uint64_t kCaseBits = 0x2020202020202020ull;
  constexpr uint64_t kMultiplier = 0x9E3779B97F4A7C15ull;
  uint64_t hash = text.size() * kMultiplier;
  high = 0;
  size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) {
    uint64_t word;
    std::memcpy(&word, text.data() + i, 8);
    high |= word;
    hash = (hash ^ (word | kCaseBits)) * kMultiplier;
    hash ^= hash >> 29;
  }
  uint64_t tail = 0;
  if (i < text.size()) std::memcpy(&tail, text.data() + i, text.size() - i);
  high |= tail;
  hash = (hash ^ (tail | kCaseBits)) * kMultiplier;
  return hash ^ (hash >> 32);
}

}  // namespace

std::string ChrW(uint32_t code) {
  if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
    throw AutomationError(err::kInvalidCall);
  }
  std::string out;
  AppendUtf8(code, out);
  return out;
}

uint32_t AscW(std::string_view text) {
  if (text.empty()) return 0;
  return DecodeAt(text, 0).code;
}

size_t Len(std::string_view text) {
  size_t count = 0;
  for (size_t i = 0; i < text.size(); i += DecodeAt(text, i).length) ++count;
  return count;
}

std::string Mid(std::string_view text, size_t start, size_t length) {
  if (start < 1) throw AutomationError(err::kInvalidCall);
  size_t i = 0;
  for (size_t skipped = 1; skipped < start && i < text.size(); ++skipped) {
    i += DecodeAt(text, i).length;
  }
  size_t end = i;
  for (size_t taken = 0; taken < length && end < text.size(); ++taken) {
    end += DecodeAt(text, end).length;
  }
  return std::string(text.substr(i, end - i));
}

std::string Trim(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return std::string();
  const size_t last = text.find_last_not_of(' ');
  return std::string(text.substr(first, last - first + 1));
}

std::string FoldCase(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    const size_t at = i;
    const uint32_t code = FoldedCodeAt(text, i);
    if (code >= kStrayByte) {
      out.push_back(text[at]);
    } else {
      AppendUtf8(code, out);
    }
  }
  return out;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  // Names usually come back spelt as they were declared.
  if (a == b) return true;
  size_t i = 0;
  size_t j = 0;
  while (i < a.size() && j < b.size()) {
    const auto x = static_cast<unsigned char>(a[i]);
    const auto y = static_cast<unsigned char>(b[j]);
    if ((x | y) < 0x80) {
      if (AsciiLower(x) != AsciiLower(y)) return false;
      ++i, ++j;
    } else if (FoldedCodeAt(a, i) != FoldedCodeAt(b, j)) {
      return false;
    }
  }
  return i == a.size() && j == b.size();
}

int CompareNoCase(std::string_view a, std::string_view b) {
  size_t i = 0;
  size_t j = 0;
  while (i < a.size() && j < b.size()) {
    const uint32_t x = FoldedCodeAt(a, i);
    const uint32_t y = FoldedCodeAt(b, j);
    if (x != y) return x < y ? -1 : 1;
  }
  return (i < a.size()) - (j < b.size());
}

uint64_t HashNoCase(std::string_view text) {
  uint64_t high = 0;
  const uint64_t hash = HashBytes(text, high);
  if ((high & 0x8080808080808080ull) == 0) return hash;
  // Beyond ASCII, texts that fold alike can differ in more than bit 0x20, or in length: the
  // folded text is hashed instead. For an ASCII text the two hashes agree, as folding then only
  // sets bit 0x20 of capitals.
  return HashBytes(FoldCase(text), high);
}

size_t FindNoCase(std::string_view haystack, std::string_view needle, size_t from,
                  size_t* matched) {
  if (from > haystack.size()) return std::string::npos;
  for (size_t at = from; at <= haystack.size(); ++at) {
    // A match must begin on a character, not inside one.
    if (at < haystack.size() && (static_cast<unsigned char>(haystack[at]) & 0xC0) == 0x80) {
      continue;
    }
    size_t i = at;
    size_t j = 0;
    bool same = true;
    while (same && j < needle.size()) {
      same = i < haystack.size() && FoldedCodeAt(haystack, i) == FoldedCodeAt(needle, j);
    }
    if (same) {
      if (matched != nullptr) *matched = i - at;
      return at;
    }
  }
  return std::string::npos;
}

bool IsValidUtf8(std::string_view bytes) {
  for (size_t i = 0; i < bytes.size();) {
    const Decoded d = DecodeAt(bytes, i);
    if (!d.valid) return false;
    i += d.length;
  }
  return true;
}

std::string Windows1252ToUtf8(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (const char c : bytes) {
    const auto b = static_cast<unsigned char>(c);
    if (b >= 0x80 && b <= 0x9F) {
      AppendUtf8(kWindows1252High[b - 0x80], out);
    } else {
      AppendUtf8(b, out);
    }
  }
  return out;
}

bool Utf8ToWindows1252(std::string_view text, std::string& out) {
  out.clear();
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    const Decoded d = DecodeAt(text, i);
    if (!d.valid) return false;
    i += d.length;
    if (d.code < 0x80 || (d.code >= 0xA0 && d.code <= 0xFF)) {
      out.push_back(static_cast<char>(d.code));
      continue;
    }
    const auto* hit = std::find(kWindows1252High.begin(), kWindows1252High.end(), d.code);
    if (hit == kWindows1252High.end()) return false;
    out.push_back(static_cast<char>(0x80 + (hit - kWindows1252High.begin())));
  }
  return true;
}

}  // namespace kwx
