#include "access/maintenance.h"

#include <algorithm>
#include <array>

#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/dates.h"
#include "automation/errors.h"
#include "automation/format.h"
#include "automation/safe_array.h"
#include "common/helpers.h"

namespace kwx {
namespace {

constexpr std::string_view kTrailingAnd = " and ";

// The months of the Monthly series a dated price may land in: month 0 is the month of the
// latest monthly data, month 71 the oldest one kept.
constexpr int kMonthlyWindow = 72;

// The number types a key condition takes: every number type but Byte.
bool IsKeyNumber(const Variant& v) { return v.IsNumberType() && v.type() != VarType::Byte; }

// The price update's columns in the select; the positions are read by index.
enum PriceColumn : int32_t {
  kPriceCompanyID = 0,
  kStoredPrice = 1,
  kStoredPE = 6,
  kStoredLatestMData = 7,
};

}  // namespace

std::string KeyCondition(std::string_view field, const Variant& value) {
  if (IsKeyNumber(value)) {
    return std::string(field) + "=" + SqlDouble(value);
  }
  if (value.type() == VarType::String) return std::string(field) + "=" + SqlText(value);
  return {};
}

void mdlAccess_Delete(const StoreContext& store, std::string_view strTable,
                      const Variant& vntFields, const Variant& vntValues) {
  if (strTable.empty()) return;
  try {
    std::string condition;
    if (vntValues.IsArray()) {
      const SafeArray& values = vntValues.AsArray();
      bool looped = false;
      for (int32_t i = values.LBound(); i <= values.UBound(); ++i) {
        if (!vntFields.IsArray()) throw AutomationError(err::kTypeMismatch);
        // Replaced, not accumulated: only the last pair survives the loop.
        condition = KeyCondition(CStr(vntFields.AsArray()(i)), values(i)) +
                    std::string(kTrailingAnd);
        looped = true;
      }
      if (looped) condition.resize(condition.size() - kTrailingAnd.size());
    } else if (IsKeyNumber(vntValues) || vntValues.type() == VarType::String) {
      condition = KeyCondition(CStr(vntFields), vntValues);
    }
    const std::array<std::string, 1> conditions{condition};
    Variant fields;
    Variant data;
    store.database().blnExecute(DeleteWhereSql(strTable, conditions), fields, data);
  } catch (...) {
    store.ReportCurrent("mdlAccess_Delete", "strTable: " + std::string(strTable));
  }
}

void DeleteCompany(const StoreContext& store, int32_t lngCompanyID) {
  mdlAccess_Delete(store, "Company", Variant("CompanyID"), Variant(lngCompanyID));
}

bool DoesRecordExist(const StoreContext& store, int32_t lnRecordID, std::string_view strTableName,
                     std::string_view strFieldName) {
  try {
    const std::string field(strFieldName);
    const std::string sql = "Select " + field + " from " + std::string(strTableName) +
                            " Where " + field + " = " + std::to_string(lnRecordID) + ";";
    IDatabase& db = store.database();
    Variant fields;
    Variant data;
    if (!db.blnExecute(sql, fields, data)) return false;
    if (db.lngRowCount() <= 0) return false;
    return CLng(data.AsArray()(0, 0)) == lnRecordID;
  } catch (...) {
    return false;
  }
}

bool UpdateCompanyPrice(const StoreContext& store, int32_t lnCompanyID, float sngCurPrice,
                        Date dtPriceUpdate, float sng52WkHigh, float sng52WkLow) {
  const std::string id = std::to_string(lnCompanyID);
  bool updated = false;
  try {
    IDatabase& db = store.database();
    Variant fields;
    Variant data;
    const std::string select =
        "SELECT CompanyID, sngCurPrice, sngHighPrice52W, sngLowPrice52W, datLastFY, "
        "datDataUpdated, sngCurPE, datLatestMData "
        "FROM Company "
        "WHERE CompanyID = " + id + " ;";
    if (!db.blnExecute(select, fields, data) || !data.IsArray()) return false;
    // A copy: `data` is reused by the statements below.
    const SafeArray row = data.AsArray();

    // The ratio scales the stored P/E with the price. A stored price of 0 (or none) leaves no
    // ratio to scale by; the stored P/E is kept rather than wiped out.
    const Variant& stored_pe = row(0, kStoredPE);
    std::string pe_text = stored_pe.IsNull() ? "Null" : SqlSingle(stored_pe);
    const Variant& stored_price = row(0, kStoredPrice);
    if (!stored_price.IsNull()) {
      const Variant ratio = SafeDivide(Variant(sngCurPrice), stored_price, true, Variant(""),
                                       false, Variant());
      if (ratio.IsNumberType() && !stored_pe.IsNull()) {
        pe_text = SqlSingle(Variant(CSng(ratio) * CSng(stored_pe)));
      }
    }

    const float high = std::max(sng52WkHigh, sngCurPrice);
    const float low = std::min(sng52WkLow, sngCurPrice);
    const std::string price = NumberText(sngCurPrice);
    const std::string update = "UPDATE Company "
                               "SET sngCurPrice = " + price + ", " +
                               "sngHighPrice52W = " + NumberText(high) + ", " +
                               "sngLowPrice52W = " + NumberText(low) + ", " +
                               "datDataUpdated = '" + FormatDate(dtPriceUpdate, "medium date") +
                               "', " + "sngCurPE = " + pe_text + " " +
                               "WHERE CompanyID = " + id + ";";
    if (!db.blnExecute(update, fields, data)) return false;
    updated = true;

    // A study without monthly data has no month for the price to land in.
    const Variant& latest = row(0, kStoredLatestMData);
    if (latest.IsNull() || latest.IsEmpty()) return true;
    const int16_t month = CInt(Variant(
        static_cast<double>(DateDiff("m", dtPriceUpdate, CDate(latest)))));
    if (month >= 0 && month < kMonthlyWindow) {
      db.blnExecute("UPDATE Monthly SET ClosingPrice = " + price + " WHERE CompanyID = " + id +
                        " AND Month = " + std::to_string(month) + ";",
                    fields, data);
    }
  } catch (...) {
    store.ReportCurrent("Access_UpdateCompanyPrice", "lngCompanyID: " + id);
  }
  return updated;
}

}  // namespace kwx
