// Building the field array of an SSG data file from a study.
#ifndef KWX_EXPORT_SSG_EXPORT_H_
#define KWX_EXPORT_SSG_EXPORT_H_

#include "automation/variant.h"
#include "model/company.h"

namespace kwx {

// A zero-based array of texts in the SSG layout (import/ssg_layout_internal.h), one per line
// of the file, holding every position the SSG reader maps, so that MapSsgFields reads the same
// values back (a single comes back exactly when it is the nearest single to a decimal of at most
// seven significant digits, as every value read from a file or a database is): singles as
// ShortestSingleText (the shortest text that reads back to the same single), other numbers
// as NumberText, dates as "M/d/yyyy" followed by the time of day when there is one, struck-out
// lists as their "1"/"0" digits, texts as OneLineText (export/field_text.h: a line break
// becomes the character 254, so a field stays one line). Where two properties share a position the
// later one in the layout is written (sngCurDiv, datDataUpdated, strVLSafety); a value drawn
// from two positions is written at both. Positions the reader does not map hold "". The
// options, notes, PMG and PERT rows have no place in the layout and are not written.
// Never raises: a value that cannot be written as text leaves its position "".
Variant BuildSsgFields(const Company& company);

}  // namespace kwx

#endif  // KWX_EXPORT_SSG_EXPORT_H_
