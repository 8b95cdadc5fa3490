// Telling the SSG and KWX layouts apart from a field array, so that a file given as the wrong
// layout is refused before anything is mapped (the mappings themselves accept any array).
#ifndef KWX_IMPORT_LAYOUT_CHECK_H_
#define KWX_IMPORT_LAYOUT_CHECK_H_

#include <cstdint>
#include <string_view>

#include "automation/variant.h"

namespace kwx {

// Whether `fields` has the shape of the layout `format` (0 SSG, 1 KWX: the loader's
// enumDataFile). The tests rest on what each layout carries at the KWX series positions (the
// yearly, quarterly and monthly lists, 124 to 156), where an SSG file has single numbers:
//  - KWX: position 0 is a layout version (a leading number other than 0); no position after
//    371, the last the layout has, holds text (an SSG file has 942 lines); the date positions
//    of the company record (1, 5, 6, 9, 106) hold no plain number (in an SSG file they are
//    prices); every series position that holds text holds a tab-separated list.
//  - SSG: no KWX series position holds a tab.
// Positions past the array's end count as empty. Answers false for anything but a
// one-dimensional array and for another format. Never raises.
bool FieldsHaveLayout(const Variant& fields, int32_t format);

// The layout's name as the command line spells it: "SSG", "KWX", or "" for another format.
std::string_view LayoutName(int32_t format);

}  // namespace kwx

#endif  // KWX_IMPORT_LAYOUT_CHECK_H_
