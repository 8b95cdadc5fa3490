// The interfaces of the service objects the loader creates by ProgID: the database object,
// the data-file object, the compute object and the value object. Member names are those the
// loader calls late-bound; every member may raise an AutomationError, which the caller treats
// as the member failing.
#ifndef KWX_AUTOMATION_SERVICES_H_
#define KWX_AUTOMATION_SERVICES_H_

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "automation/object.h"
#include "automation/variant.h"

namespace kwx {

// ProgIDs. The plain build and the SP build of each service.
namespace progid {
inline constexpr const char* kDatabase = "iKWX_DB.KWXDB";
inline constexpr const char* kDatabaseSP = "iKWX_SP_DB.KWXDB";
inline constexpr const char* kDataFile = "iKWX_SSG.KWXSSG";
inline constexpr const char* kDataFileSP = "iKWX_SP_SSG.KWXSSG";
inline constexpr const char* kCompute = "iKWX_Compute.KWXCompute";
inline constexpr const char* kComputeSP = "iKWX_SP_Compute.KWXCompute";
inline constexpr const char* kValue = "iKWX_Values.KWXValue";
inline constexpr const char* kValueSP = "iKWX_SP_Values.KWXValue";
}  // namespace progid

// The fixed text of a statement the loader composes again and again with other values: piece i
// comes before value i and the last piece ends the statement. Templates are made once and live
// as long as the program; each has an `id` of its own, which a database may remember it by.
struct StatementTemplate {
  uint64_t id = 0;
  std::vector<std::string> pieces;   // one more than the values
  std::vector<std::string> columns;  // the column each value is written to ("" for none)

  // A template with a new id.
  StatementTemplate();
};

// A statement as its template and the texts of its values, each written as the statement text
// holds it (a number's text, a quoted text, True). Text() is exactly that statement text.
struct ComposedStatement {
  const StatementTemplate* shape = nullptr;
  std::vector<std::string> literals;
  // Per value (when not empty), a finite Single kept as its number: its literal is then
  // NumberText of it, written only when Literal() or Text() asks, so that a database binding
  // the values need not write a text to read it back.
  std::vector<std::optional<float>> singles;

  // Value `i` as the number `v` of a Single column.
  void SetSingle(size_t i, float v);
  // Value `i`'s text (its literal, or NumberText of its number).
  std::string Literal(size_t i) const;
  std::string Text() const;
};

// Executes SQL text and hands query results back as arrays.
class IDatabase : public Object {
 public:
  // Opens the database file at `path`; true when open. A path that does not exist answers
  // false and creates nothing.
  virtual bool blnOpenDatabase(std::string& path) = 0;
  // Closes the open database, then compacts the file at `path`; true on success.
  virtual bool CloseNCompact(std::string& path) = 0;
  // Executes one statement. For a query, `fields` receives a zero-based 1-D array of the
  // column names and `data` a 2-D array indexed (row, column) from (0, 0); a query with no rows
  // leaves them not arrays (Empty). Answers true on success; false when the statement fails,
  // holds more than one statement or holds a NUL byte (nothing of it runs then).
  virtual bool blnExecute(const std::string& sql, Variant& fields, Variant& data) = 0;
  // Executes the statement `statement.Text()` spells, with the answer blnExecute gives for that
  // text; a database may bind the values to a statement it compiled once for the template
  // instead of reading them back out of the text. This one runs the text.
  virtual bool blnExecuteComposed(const ComposedStatement& statement, Variant& fields,
                                  Variant& data) {
    return blnExecute(statement.Text(), fields, data);
  }
  // Rows of the last query, or rows changed by the last action statement.
  virtual int32_t lngRowCount() = 0;
  // Transactions nest: an inner Begin/Commit is a savepoint of the outer one, and an inner
  // Rollback undoes only what the inner level did.
  virtual void BeginTrans() = 0;
  virtual void CommitTrans() = 0;
  virtual void RollbackTrans() = 0;
};

// Reads a data file into a field array and writes a field array to a file.
class IDataFile : public Object {
 public:
  // The file's field array: a zero-based 1-D array of texts, one per line. Answers a
  // non-array (Empty) when the file cannot be read.
  virtual Variant vntImportB(std::string& path) = 0;
  // Writes one field per line; true when the file was written whole.
  virtual bool blnExport(std::string& path, Variant& fields) = 0;
};

// Curve fitting for the default growth lines.
class ICompute : public Object {
 public:
  // The scale factor that brings `series` (a yearly series, an array) onto the common graph.
  // `kind`: 0 EPS, 1 revenue, 2 pre-tax income, 3 high price.
  virtual float sngNormalize(const Variant& series, int32_t kind, bool flag) = 0;
  // Fits the growth line of `series`. `outputs[k]` is output position k + 4 (outputs[0] the
  // default projected growth rate, outputs[1] the historical growth rate, outputs[2] its
  // R-squared, ... outputs[14] the trend line's second Y).
  virtual void DefaultGrowthLine(float& factor, int32_t kind, const Variant& series,
                                 std::array<float, 15>& outputs) = 0;
};

// Dividend figures.
class IValue : public Object {
 public:
  // The default common dividend of the company held (as an object) in `company`. The member
  // may replace the reference held in `company`.
  virtual float sngCommonDiv(Variant& company) = 0;
};

}  // namespace kwx

#endif  // KWX_AUTOMATION_SERVICES_H_
