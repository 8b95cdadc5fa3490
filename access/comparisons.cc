#include "access/comparisons.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "common/helpers.h"
#include "model/record.h"

namespace kwx {
namespace {

// Reports the error being handled, when there is somewhere to report it.
void ReportTo(ErrorSink* errors, std::string location, std::string parameter = {}) noexcept {
  if (errors) {
    errors->Report(ReportFromException(std::current_exception(), std::move(location),
                                       std::move(parameter)));
  }
}

// The header statements of Comparison and PERTReport are loops over the table's columns: the
// update form sets them in binding order, the insert form lists them by insert position.
template <class Rec>
std::string HeaderUpdateSql(const Rec& rec, int32_t id) {
  const TableDef& table = Rec::Table();
  std::string sql = "Update " + std::string(table.name);
  bool first = true;
  for (const FieldBinding<Rec>& b : Rec::Bindings()) {
    sql += first ? "   set " : ",       ";
    first = false;
    sql += std::string(b.column.name) + " = " + SqlValue(GetField(rec, b), b.column.type);
  }
  return sql + " where " + std::string(table.key) + " = " + std::to_string(id);
}

template <class Rec>
std::string HeaderInsertSql(const Rec& rec) {
  std::vector<const FieldBinding<Rec>*> order;
  for (const FieldBinding<Rec>& b : Rec::Bindings()) order.push_back(&b);
  std::stable_sort(order.begin(), order.end(), [](const auto* a, const auto* b) {
    return a->column.insert_position < b->column.insert_position;
  });
  std::string columns;
  std::string values;
  for (const FieldBinding<Rec>* b : order) {
    if (!columns.empty()) {
      columns += ", ";
      values += ",";
    }
    columns += b->column.name;
    values += SqlValue(GetField(rec, *b), b->column.type);
  }
  return "Insert into " + std::string(Rec::Table().name) + " (" + columns + ") select " + values;
}

// "select <key>  from <table> where Name = V": the ID of a header by its name.
template <class Rec>
std::string IdByNameSql(const Rec& rec) {
  const TableDef& table = Rec::Table();
  return "select " + std::string(table.key) + "  from " + std::string(table.name) +
         " where Name = " + SqlText(Variant(rec.Name));
}

// Runs `sql`; true when it ran and changed (or found) at least one row.
bool ExecuteChanged(IDatabase& db, const std::string& sql) {
  Variant fields;
  Variant data;
  return db.blnExecute(sql, fields, data) && db.lngRowCount() > 0;
}

// Reads the header ID back by name into `id`; the first row of that name wins.
template <class Rec>
void ReadIdByName(IDatabase& db, const Rec& rec, int32_t& id) {
  Variant fields;
  Variant data;
  if (db.blnExecute(IdByNameSql(rec), fields, data) && data.IsArray()) {
    id = CLng(data.AsArray()(0, 0));
  }
}

// Sets the header columns from row 0 of a row set. Texts are read back with their
// apostrophes; a Null (or missing) value leaves its property as it was.
template <class Rec>
void ParseHeader(const Variant& fields, const Variant& data, Rec& rec) {
  for (const FieldBinding<Rec>& b : Rec::Bindings()) {
    const Variant value = FieldValue(b.column.name, fields, data, 0);
    if (value.IsNull() || value.IsEmpty()) continue;
    if (b.column.type == ColumnType::Text) {
      SetField(rec, b, Variant(TextFromSql(value)));
    } else {
      SetField(rec, b, value);
    }
  }
}

int32_t RowCount(const Variant& data) { return data.AsArray().UBound(1) + 1; }

// The flags text as a Boolean array whose element 1 is the first digit, the shape the flags
// writer reads from; Empty for an empty text.
Variant FlagsFromStored(std::string_view text) {
  const Variant zero_based = FlagsFromText(text, 1, 0);
  if (!zero_based.IsArray()) return zero_based;
  const SafeArray& src = zero_based.AsArray();
  SafeArray flags = SafeArray::Vector(1, src.Count());
  for (int32_t i = src.LBound(); i <= src.UBound(); ++i) flags(i + 1) = src(i);
  return Variant(std::move(flags));
}

void m_ParseComparison(const StoreContext& store, const Variant& fields, const Variant& data,
                       Comparison& objComparison) {
  const int32_t id = objComparison.ComparisonID;
  try {
    ParseHeader(fields, data, objComparison);
    const Variant key = FieldValue("ComparisonID", fields, data, 0);
    if (!key.IsNull() && !key.IsEmpty()) objComparison.ComparisonID = CLng(key);
    std::vector<ComparisonMember> members;
    for (int32_t row = 0; row < RowCount(data); ++row) {
      ComparisonMember m;
      m.CompanyID = CLng(FieldValue("CompanyID", fields, data, row));
      m.SelectedFields = FlagsFromStored(TextFromSql(FieldValue("SelectedFields", fields, data, row)));
      m.FieldData = SplitText(",", TextFromSql(FieldValue("FieldData", fields, data, row)));
      members.push_back(std::move(m));
    }
    objComparison.Members = std::move(members);
  } catch (...) {
    store.ReportCurrent("m_ParseComparison", "lngComparisonID: " + std::to_string(id));
  }
}

void m_ParsePERTReport(const StoreContext& store, const Variant& fields, const Variant& data,
                       PERTReport& objPERTReport) {
  const int32_t id = objPERTReport.PERTReportID;
  try {
    ParseHeader(fields, data, objPERTReport);
    const Variant key = FieldValue("PERTReportID", fields, data, 0);
    if (!key.IsNull() && !key.IsEmpty()) objPERTReport.PERTReportID = CLng(key);
    std::vector<PERTReportMember> members;
    for (int32_t row = 0; row < RowCount(data); ++row) {
      PERTReportMember m;
      m.CompanyID = CLng(FieldValue("CompanyID", fields, data, row));
      m.CompanyName = TextFromSql(FieldValue("strName", fields, data, row));
      members.push_back(std::move(m));
    }
    objPERTReport.Members = std::move(members);
  } catch (...) {
    store.ReportCurrent("m_ParsePERTReport", "lngPERTReportID: " + std::to_string(id));
  }
}

}  // namespace

std::string m_strComparison(const Comparison& objComparison, bool blnUpdate, ErrorSink* errors) {
  try {
    return blnUpdate ? HeaderUpdateSql(objComparison, objComparison.ComparisonID)
                     : HeaderInsertSql(objComparison);
  } catch (...) {
    ReportTo(errors, "m_strComparison");
    return {};
  }
}

std::string m_strPERTReport(const PERTReport& objPERTReport, bool blnUpdate, ErrorSink* errors) {
  try {
    return blnUpdate ? HeaderUpdateSql(objPERTReport, objPERTReport.PERTReportID)
                     : HeaderInsertSql(objPERTReport);
  } catch (...) {
    ReportTo(errors, "m_strPERTReport");
    return {};
  }
}

std::string m_strComparisonCompany(int32_t lngComparisonID, const ComparisonMember& member,
                                   bool blnUpdate, ErrorSink* errors) {
  try {
    // Out-of-range indexes are pulled to the array's bounds: the whole array is joined.
    int16_t first = std::numeric_limits<int16_t>::min();
    int16_t last = std::numeric_limits<int16_t>::min();
    const std::string selected = SqlFlags(member.SelectedFields);
    const std::string data =
        SqlText(Variant(JoinArrayText(member.FieldData, ",", first, last, 8)));
    const std::string comparison = std::to_string(lngComparisonID);
    const std::string company = std::to_string(member.CompanyID);
    if (blnUpdate) {
      return "Update ComparisonCompany   set SelectedFields = " + selected +
             ",       FieldData = " + data + " where ComparisonID = " + comparison +
             "   and CompanyID = " + company;
    }
    return "insert into ComparisonCompany (ComparisonID, CompanyID, SelectedFields, FieldData) "
           "select " + comparison + "," + company + "," + selected + "," + data;
  } catch (...) {
    ReportTo(errors, "m_strComparisonCompany");
    return {};
  }
}

std::string m_strPERTReportCompany(int32_t lngPERTReportID, int32_t lngCompanyID, bool blnUpdate,
                                   ErrorSink* errors) {
  try {
    const std::string report = std::to_string(lngPERTReportID);
    const std::string company = std::to_string(lngCompanyID);
    if (blnUpdate) {
      return "Update PERTReportCompany   set CompanyID = " + company +
             " where PERTReportID = " + report + "   and CompanyID = " + company;
    }
    return "insert into PERTReportCompany (PERTReportID, CompanyID) select " + report + "," +
           company;
  } catch (...) {
    ReportTo(errors, "m_strPERTReportCompany");
    return {};
  }
}

void UpdateComparison(const StoreContext& store, Comparison& objComparison) {
  try {
    IDatabase& db = store.database();
    if (!ExecuteChanged(db, m_strComparison(objComparison, true, store.errors))) {
      objComparison.ComparisonID = 0;
      ExecuteChanged(db, m_strComparison(objComparison, false, store.errors));
    }
    ReadIdByName(db, objComparison, objComparison.ComparisonID);
    for (const ComparisonMember& member : objComparison.Members) {
      if (member.CompanyID <= 0) continue;
      if (!ExecuteChanged(db, m_strComparisonCompany(objComparison.ComparisonID, member, true,
                                                     store.errors))) {
        ExecuteChanged(db, m_strComparisonCompany(objComparison.ComparisonID, member, false,
                                                  store.errors));
      }
    }
  } catch (...) {
    store.ReportCurrent("mdlAccess_UpdateComparison");
  }
}

void UpdatePERTReport(const StoreContext& store, PERTReport& objPERTReport) {
  try {
    IDatabase& db = store.database();
    if (!ExecuteChanged(db, m_strPERTReport(objPERTReport, true, store.errors))) {
      objPERTReport.PERTReportID = 0;
      ExecuteChanged(db, m_strPERTReport(objPERTReport, false, store.errors));
    }
    ReadIdByName(db, objPERTReport, objPERTReport.PERTReportID);
    for (const PERTReportMember& member : objPERTReport.Members) {
      if (member.CompanyID <= 0) continue;
      const int32_t id = objPERTReport.PERTReportID;
      if (!ExecuteChanged(db, m_strPERTReportCompany(id, member.CompanyID, true, store.errors))) {
        ExecuteChanged(db, m_strPERTReportCompany(id, member.CompanyID, false, store.errors));
      }
    }
  } catch (...) {
    store.ReportCurrent("mdlAccess_UpdatePERTReport");
  }
}

std::string QueryComparisonSql(int32_t lngComparisonID) {
  return "select C.ComparisonID, C.Name, C.StudiedSection, C.Description, C.Field27, C.Field28, "
         "C.UpdatePerson, C.LastUpdate, CC.CompanyID, CC.SelectedFields, CC.FieldData"
         "  from Comparison C, ComparisonCompany CC"
         " where C.ComparisonID = " + std::to_string(lngComparisonID) +
         "   and CC.ComparisonID = C.ComparisonID"
         " order by ComparisonCompanyID asc";
}

std::string QueryPERTReportSql(int32_t lngPERTReportID) {
  return "SELECT P.Name, P.Description, P.LastUpdate, P.PERTReportID, C.strName, C.CompanyID "
         "FROM (PERTReport AS P INNER JOIN PERTReportCompany AS PRC "
         "ON P.PERTReportID = PRC.PERTReportID) INNER JOIN Company AS C "
         "ON PRC.CompanyID = C.CompanyID "
         "WHERE P.PERTReportID = " + std::to_string(lngPERTReportID) + " "
         "ORDER BY PRC.PERTReportCompanyID ASC;";
}

void QueryComparison(const StoreContext& store, Comparison& objComparison) {
  const std::string id = std::to_string(objComparison.ComparisonID);
  try {
    Variant fields;
    Variant data;
    if (store.database().blnExecute(QueryComparisonSql(objComparison.ComparisonID), fields,
                                    data) &&
        data.IsArray()) {
      m_ParseComparison(store, fields, data, objComparison);
    }
  } catch (...) {
    store.ReportCurrent("mdlAccess_QueryComparison", "lngComparisonID: " + id);
  }
}

void QueryPERTReport(const StoreContext& store, PERTReport& objPERTReport) {
  const std::string id = std::to_string(objPERTReport.PERTReportID);
  try {
    Variant fields;
    Variant data;
    if (store.database().blnExecute(QueryPERTReportSql(objPERTReport.PERTReportID), fields,
                                    data) &&
        data.IsArray()) {
      m_ParsePERTReport(store, fields, data, objPERTReport);
    }
  } catch (...) {
    store.ReportCurrent("mdlAccess_QueryPERTReport", "lngPERTReportID: " + id);
  }
}

}  // namespace kwx
