// The Python module `kwxloader`: a study database and data files from Python. A study is a dict
// of exactly the shape `kwx show --json` prints (json/company_json.h), with dates as
// datetime.date; a series is a list of row dicts, ready for pandas.DataFrame.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "access/sql_text.h"
#include "automation/dates.h"
#include "automation/safe_array.h"
#include "automation/value_types.h"
#include "json/company_json.h"
#include "json/json_values.h"
#include "kwxloader/kwxloader.h"
#include "services/sqlite_database.h"
#include "studies/study_import.h"
#include "studies/study_index.h"

namespace py = pybind11;

namespace kwx {
namespace {

// ---- Values between JSON and Python ----

py::object DateObject(std::string_view iso) {
  const std::optional<Date> date = ParseDate(iso);
  if (!date) return py::str(std::string(iso));
  py::module_ datetime = py::module_::import("datetime");
  if (HasTime(*date)) {
    return datetime.attr("datetime")(Year(*date), Month(*date), Day(*date), Hour(*date),
                                      Minute(*date), Second(*date));
  }
  return datetime.attr("date")(Year(*date), Month(*date), Day(*date));
}

py::object ToPython(const nlohmann::json& j, bool date) {
  switch (j.type()) {
    case nlohmann::json::value_t::null: return py::none();
    case nlohmann::json::value_t::boolean: return py::bool_(j.get<bool>());
    case nlohmann::json::value_t::number_integer: return py::int_(j.get<int64_t>());
    case nlohmann::json::value_t::number_unsigned: return py::int_(j.get<uint64_t>());
    case nlohmann::json::value_t::number_float: return py::float_(j.get<double>());
    case nlohmann::json::value_t::string:
      return date ? DateObject(j.get<std::string>()) : py::str(j.get<std::string>());
    case nlohmann::json::value_t::array: {
      py::list out;
      for (const nlohmann::json& e : j) out.append(ToPython(e, date));
      return out;
    }
    case nlohmann::json::value_t::object: {
      py::dict out;
      for (const auto& [key, value] : j.items()) out[py::str(key)] = ToPython(value, false);
      return out;
    }
    default: return py::none();
  }
}

// A field of `part` ("" for the study's own fields) as Python, a date column as a date.
py::object FieldToPython(const nlohmann::json& value, std::string_view part,
                         std::string_view column) {
  return ToPython(value, StudyFieldType(part, column) == ColumnType::Date);
}

py::dict RowToPython(const nlohmann::json& row, std::string_view part) {
  py::dict out;
  for (const auto& [column, value] : row.items()) {
    out[py::str(column)] = FieldToPython(value, part, column);
  }
  return out;
}

py::list RowsToPython(const nlohmann::json& rows, std::string_view part) {
  py::list out;
  for (const nlohmann::json& row : rows) out.append(RowToPython(row, part));
  return out;
}

// The study as a dict of the CompanyJson shape.
py::dict StudyToPython(const Company& company) {
  const nlohmann::json j = CompanyJson(company);
  py::dict out;
  for (const auto& [key, value] : j.items()) {
    if (value.is_object()) {
      out[py::str(key)] = RowToPython(value, key);
    } else if (value.is_array() && StudyFieldType("", key) == std::nullopt) {
      out[py::str(key)] = RowsToPython(value, key);
    } else {
      out[py::str(key)] = FieldToPython(value, "", key);
    }
  }
  return out;
}

nlohmann::json FromPython(py::handle value, const std::string& where) {
  if (value.is_none()) return nullptr;
  if (py::isinstance<py::bool_>(value)) return value.cast<bool>();
  if (py::isinstance<py::int_>(value)) return value.cast<int64_t>();
  if (py::isinstance<py::float_>(value)) return value.cast<double>();
  if (py::isinstance<py::str>(value)) return value.cast<std::string>();
  py::module_ datetime = py::module_::import("datetime");
  if (py::isinstance(value, datetime.attr("date"))) {
    return value.attr("isoformat")().cast<std::string>();
  }
  if (py::isinstance<py::dict>(value)) {
    nlohmann::json out = nlohmann::json::object();
    for (auto [k, v] : value.cast<py::dict>()) {
      const std::string key = py::str(k).cast<std::string>();
      out[key] = FromPython(v, key);
    }
    return out;
  }
  if (py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value)) {
    nlohmann::json out = nlohmann::json::array();
    for (py::handle e : value) out.push_back(FromPython(e, where));
    return out;
  }
  throw py::value_error("'" + where + "': a study field cannot hold a " +
                        std::string(py::str(value.get_type().attr("__name__"))));
}

// ---- Errors ----

// The layout named by `format` ("ssg" or "kwx"), else by the file's extension.
enumDataFile LayoutFor(const std::string& path, const std::optional<std::string>& format) {
  const std::optional<enumDataFile> layout = format ? LayoutNamed(*format) : LayoutOfFile(path);
  if (layout) return *layout;
  throw py::value_error(format ? "format must be 'ssg' or 'kwx', not '" + *format + "'"
                               : "cannot tell the layout of '" + path +
                                     "' from its extension (give format='ssg' or 'kwx')");
}

// Raises the Python exception for a read that gave no study.
void RaiseForImport(const ImportStatus& status) {
  if (status.ok()) return;
  if (status.problem == ImportProblem::kNoSuchFile) {
    PyErr_SetString(PyExc_FileNotFoundError, status.message.c_str());
    throw py::error_already_set();
  }
  throw py::value_error(status.message);
}

// Raises RuntimeError with the store's reports when the latest call made any.
void RaiseReports(kwxLoader& loader) {
  if (loader.ErrorReports().empty()) return;
  std::string text;
  for (const ErrorReport& r : loader.ErrorReports()) text += (text.empty() ? "" : "\n") + r.Text();
  loader.ClearErrorReports();
  throw std::runtime_error(text);
}

Company ReadFile(kwxLoader& loader, const std::string& path,
                 const std::optional<std::string>& format) {
  Company company;
  RaiseForImport(ReadStudyFile(loader, path, LayoutFor(path, format), company));
  return company;
}

// ---- The database ----

class Database {
 public:
  // Opens an existing study database: a path, or an SQLite URI ("file:studies.db?mode=ro").
  explicit Database(const std::string& path_or_uri) : path_(path_or_uri) {
    const bool uri = path_or_uri.rfind("file:", 0) == 0;
    if (!uri && !std::filesystem::exists(path_or_uri)) {
      PyErr_SetString(PyExc_FileNotFoundError,
                      ("no study database at '" + path_or_uri + "'").c_str());
      throw py::error_already_set();
    }
    if (!open_->Access_blnOpenDatabase(path_or_uri)) {
      std::string why;
      if (const auto* sqlite = dynamic_cast<const SqliteDatabase*>(open_->database().get())) {
        if (!sqlite->LastErrorMessage().empty()) why = ": " + sqlite->LastErrorMessage();
      }
      throw py::value_error("cannot open '" + path_or_uri + "' as a study database" + why);
    }
  }

  static std::unique_ptr<Database> Create(const std::string& path) {
    if (std::filesystem::exists(path)) {
      PyErr_SetString(PyExc_FileExistsError, ("'" + path + "' exists already").c_str());
      throw py::error_already_set();
    }
    const Status made = CreateDatabase(path);
    if (!made.ok()) throw std::runtime_error(made.message());
    return std::make_unique<Database>(path);
  }

  int32_t ImportFile(const std::string& path, const std::optional<std::string>& format) {
    const enumDataFile layout = LayoutFor(path, format);
    Company company = ReadFile(loader(), path, format);
    StudyIndex saved(loader());
    const ImportSave save = SaveImportedStudy(loader(), &saved, layout, company);
    if (save.outcome == ImportSave::Outcome::kAmbiguous) throw py::value_error(save.message);
    if (save.outcome != ImportSave::Outcome::kSaved) {
      RaiseReports(loader());
      throw std::runtime_error("'" + path + "' could not be saved" +
                               (save.message.empty() ? "" : " (" + save.message + ")"));
    }
    loader().ClearErrorReports();
    return company.CompanyID;
  }

  Company Load(int32_t company_id) {
    Company company;
    loader().Access_Get(company_id, "", "", company);
    RaiseReports(loader());
    // A load that matched nothing leaves the study untouched, so its ID stays 0.
    if (company.CompanyID < 1) {
      throw py::key_error("no study with CompanyID " + std::to_string(company_id));
    }
    return company;
  }

  int32_t IdOf(const std::string& symbol, const std::string& exchange) {
    const std::vector<int32_t> found = StudyIndex(loader()).Find(symbol, exchange);
    const std::string named = symbol + " on " + exchange;
    if (found.empty()) throw py::key_error("no study for " + named);
    if (found.size() > 1) {
      throw py::value_error(named + " names " + std::to_string(found.size()) +
                            " studies: get it by CompanyID");
    }
    return found.front();
  }

  py::list List() {
    Variant data, fields;
    loader().Access_GetCompanies(kStudyListSql, data, fields);
    RaiseReports(loader());
    if (!fields.IsArray()) throw std::runtime_error("cannot read the study list");
    py::list out;
    const int32_t rows = data.IsArray() ? data.AsArray().UBound(1) + 1 : 0;
    for (int32_t r = 0; r < rows; ++r) {
      py::dict item;
      for (const char* column : kStudyListColumns) {
        const Variant v = FieldValue(column, fields, data, r);
        const nlohmann::json value =
            v.type() == VarType::String ? nlohmann::json(TextFromSql(v)) : ToJson(v);
        item[py::str(column)] = ToPython(value, v.type() == VarType::Date);
      }
      out.append(std::move(item));
    }
    return out;
  }

  int32_t Save(const py::dict& study) {
    Company company;
    try {
      CompanyFromJson(FromPython(study, ""), company);
    } catch (const std::invalid_argument& e) {
      throw py::value_error(e.what());
    }
    if (company.CompanyID > 0) Load(company.CompanyID);  // KeyError for a study not saved
    const ImportSave save = SaveWholeStudy(loader(), company);
    if (save.outcome != ImportSave::Outcome::kSaved) {
      RaiseReports(loader());
      throw std::runtime_error("the study could not be saved" +
                               (save.message.empty() ? "" : " (" + save.message + ")"));
    }
    loader().ClearErrorReports();
    return company.CompanyID;
  }

  void Delete(int32_t company_id) {
    Load(company_id);
    loader().Access_Delete(company_id);
    RaiseReports(loader());
  }

  void Export(int32_t company_id, const std::string& path) {
    Company company = Load(company_id);
    const enumDataFile layout = LayoutFor(path, std::nullopt);
    const bool written = layout == idKWX ? loader().KWX_Update(company, path)
                                         : loader().SSG_Update(company, path);
    if (!written) throw std::runtime_error("cannot write '" + path + "'");
  }

  py::list Series(int32_t company_id, const char* part) {
    const nlohmann::json j = CompanyJson(Load(company_id));
    return RowsToPython(j.at(part), part);
  }

  const std::string& path() const { return path_; }

  // Closes the file; every later call raises ValueError.
  void Close() { open_.reset(); }

 private:
  kwxLoader& loader() {
    if (!open_) throw py::value_error("the database '" + path_ + "' is closed");
    return *open_;
  }

  std::string path_;
  std::unique_ptr<kwxLoader> open_ = std::make_unique<kwxLoader>();
};

}  // namespace
}  // namespace kwx

PYBIND11_MODULE(kwxloader, m) {
  using kwx::Database;
  m.doc() =
      "Stock studies in a kwxloader database and in SSG and KWX data files. A study is a dict "
      "of the shape `kwx show --json` prints, with dates as datetime.date.";

  m.def(
      "read",
      [](const std::string& path, std::optional<std::string> format) {
        kwx::kwxLoader loader;
        return kwx::StudyToPython(kwx::ReadFile(loader, path, format));
      },
      py::arg("path"), py::arg("format") = py::none(),
      "Reads the study in an SSG or KWX data file without a database. `format` is 'ssg' or "
      "'kwx' (default: the file's extension). FileNotFoundError for no such file, ValueError "
      "for a file that holds no study of that layout.");

  py::class_<Database> database(m, "Database",
                                "A study database. Database(path_or_uri) opens an existing "
                                "one (FileNotFoundError when there is none).");
  database.def(py::init<const std::string&>(), py::arg("path_or_uri"))
      .def_static("create", &Database::Create, py::arg("path"),
                  "Creates a new, empty study database and opens it (FileExistsError when the "
                  "path exists).")
      .def_property_readonly("path", &Database::path)
      .def("close", &Database::Close, "Closes the database file; later calls raise ValueError.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](Database& db, py::args) { db.Close(); })
      .def("import_file", &Database::ImportFile, py::arg("path"), py::arg("format") = py::none(),
           "Imports an SSG or KWX file and saves the study: a study saved already under the "
           "same symbol and exchange is refreshed in place. Returns its CompanyID.")
      .def(
          "get", [](Database& db, int32_t id) { return kwx::StudyToPython(db.Load(id)); },
          py::arg("company_id"), "The saved study (KeyError when there is none).")
      .def(
          "get",
          [](Database& db, const std::string& symbol, const std::string& exchange) {
            return kwx::StudyToPython(db.Load(db.IdOf(symbol, exchange)));
          },
          py::arg("symbol"), py::arg("exchange"),
          "The study saved under a symbol and exchange (case ignored).")
      .def("list", &Database::List,
           "The saved studies: dicts of CompanyID, strSymbol, Exchange, strName, sngCurPrice, "
           "datDataUpdated, ordered by symbol.")
      .def("save", &Database::Save, py::arg("study"),
           "Saves a study dict (the shape get returns; fields left out keep their defaults). A "
           "CompanyID of 1 or more overwrites that saved study; otherwise a new one is added. "
           "Returns the CompanyID.")
      .def("delete", &Database::Delete, py::arg("company_id"),
           "Deletes a saved study with all its rows (KeyError when there is none).")
      .def("export", &Database::Export, py::arg("company_id"), py::arg("path"),
           "Writes a saved study as a data file; the extension (.kwx or .ssg) names the layout.");
  // The series, each a list of row dicts under its own method.
  const std::pair<const char*, const char*> series[] = {
      {"yearly", "Yearly"}, {"quarterly", "Quarterly"}, {"monthly", "Monthly"},
      {"pmg", "JudgmentPMG"}, {"pert", "JudgmentPERT"}};
  for (const auto& [method, part] : series) {
    database.def(
        method, [part = part](Database& db, int32_t id) { return db.Series(id, part); },
        py::arg("company_id"),
        (std::string("The ") + part + " rows of a saved study, as a list of dicts.").c_str());
  }
}
