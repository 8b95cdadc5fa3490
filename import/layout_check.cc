#include "import/layout_check.h"

#include <string>

#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "import/kwx_layout.h"

namespace kwx {
namespace {

constexpr int32_t kSsg = 0;
constexpr int32_t kKwx = 1;

// The text at `position` as the mappings address it; "" past the array's bounds or when the
// element has no text.
std::string TextAt(const SafeArray& fields, int16_t position) {
  std::string text;
  if (position >= fields.LBound() && position < fields.LBound() + fields.Count()) {
    ResumeNext([&] { text = CStr(fields(position)); });
  }
  return text;
}

bool IsSeriesPosition(const KwxField& f) {
  return f.kind == KwxKind::kSeries && !SeriesTable(f.target).empty() &&
         f.target != KwxTarget::kPMG;
}

bool IsDatePosition(const KwxField& f) {
  return f.kind == KwxKind::kDate || f.kind == KwxKind::kUpdated;
}

bool LooksLikeKwx(const SafeArray& fields) {
  if (Val(TextAt(fields, 0)) == 0) return false;
  const int32_t end = fields.LBound() + fields.Count();
  for (int32_t p = kKwxLastPosition + 1; p < end && p <= INT16_MAX; ++p) {
    if (!TextAt(fields, static_cast<int16_t>(p)).empty()) return false;
  }
  for (const KwxField& f : kKwxCompanyLayout) {
    const std::string text = TextAt(fields, f.position);
    if (IsDatePosition(f) && IsNumeric(Variant(text))) return false;
    if (IsSeriesPosition(f) && !text.empty() && text.find('\t') == std::string::npos) {
      return false;
    }
  }
  return true;
}

bool LooksLikeSsg(const SafeArray& fields) {
  for (const KwxField& f : kKwxCompanyLayout) {
    if (IsSeriesPosition(f) && TextAt(fields, f.position).find('\t') != std::string::npos) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool FieldsHaveLayout(const Variant& fields, int32_t format) {
  if (!fields.IsArray() || fields.AsArray().dims() != 1) return false;
  if (format == kKwx) return LooksLikeKwx(fields.AsArray());
  if (format == kSsg) return LooksLikeSsg(fields.AsArray());
  return false;
}

std::string_view LayoutName(int32_t format) {
  return format == kSsg ? "SSG" : format == kKwx ? "KWX" : "";
}

}  // namespace kwx
