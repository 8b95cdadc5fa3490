// The texts both data-file writers put into a field: one line each, numbers that read back to
// the same value.
#ifndef KWX_EXPORT_FIELD_TEXT_H_
#define KWX_EXPORT_FIELD_TEXT_H_

#include <string>
#include <string_view>

namespace kwx {

// The character a line break inside a text field is written as (þ, U+00FE).
inline constexpr uint32_t kFieldLineBreak = 254;

// `text` as one line. A data file holds one field per line, so a line break written inside a
// field would move every later field. Every text is written the way the KWX notes position
// always has been: each line feed dropped and each carriage return written as the character
// kFieldLineBreak, so a CR LF pair becomes one such character. The KWX reader turns it back
// into CR LF in the notes; in every other text position (of either layout) it reads back as
// the character itself, and the study's other fields stay where they were.
std::string OneLineText(std::string_view text);

// The shortest decimal text that the readers' leading-number parse (a double rounded to
// single precision) turns back into `value` exactly: 1234.5678f gives "1234.5677", 0.1f
// gives "0.1", 1e20f gives "1e+20". Values that are not finite give their NumberText.
std::string ShortestSingleText(float value);

}  // namespace kwx

#endif  // KWX_EXPORT_FIELD_TEXT_H_
