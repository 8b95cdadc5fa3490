// A named, saved list of companies for a PERT report (tables PERTReport and
// PERTReportCompany).
#ifndef KWX_MODEL_PERT_REPORT_H_
#define KWX_MODEL_PERT_REPORT_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "automation/object.h"
#include "automation/variant.h"
#include "model/column_lists.h"
#include "model/record.h"
#include "model/table_def.h"

namespace kwx {

// One member company of a PERT report, in member order.
struct PERTReportMember {
  int32_t CompanyID = 0;
  // The company's strName, as loaded with the report.
  std::string CompanyName;
};

class PERTReport : public Object {
 public:
  // The database's ID of the report; 0 until it is first saved.
  int32_t PERTReportID = 0;
  // Name, Description, LastUpdate, named and typed as the columns of table PERTReport.
  KWX_PERT_REPORT_COLUMNS(KWX_DECLARE_FIELD)
  // Who last changed the report. The table does not keep it.
  std::string UpdatePerson;
  // The member companies in member order.
  std::vector<PERTReportMember> Members;

  // The declaration of table PERTReport.
  static const TableDef& Table() noexcept;
  // One binding per column of table PERTReport, in update order.
  static std::span<const FieldBinding<PERTReport>> Bindings() noexcept;

  // Reads PERTReportID, UpdatePerson or a header column by name (case-insensitive); other
  // names raise err::kNoSuchMember.
  Variant GetProperty(std::string_view name) const override;
  // Writes PERTReportID, UpdatePerson or a header column converted to its type; raises
  // err::kNoSuchMember for other names and the conversion's error (value unchanged) for a
  // rejected value.
  void SetProperty(std::string_view name, const Variant& value) override;
};

}  // namespace kwx

#endif  // KWX_MODEL_PERT_REPORT_H_
