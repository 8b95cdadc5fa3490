// kwx copy TARGET: everything in the --db database (reference tables, studies, comparisons and
// PERT reports with their members) copied into another, new or empty, study database.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "access/reference_tables.h"
#include "access/sql_text.h"
#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "cli/commands.h"
#include "cli/context.h"
#include "cli/error_reports.h"
#include "cli/progress.h"
#include "json/company_json.h"
#include "model/company.h"
#include "model/comparison.h"
#include "model/pert_report.h"
#include "model/schema.h"
#include "services/create_database.h"
#include "services/postgres_database.h"

namespace kwx::cli {
namespace {

// The rows of one query through the loader's own list member; raises CommandError when it
// fails, so that a copy never goes on with a list it could not read.
struct Rows {
  Variant fields;
  Variant data;
  int32_t Count() const { return data.IsArray() ? data.AsArray().UBound(1) + 1 : 0; }
  Variant Value(std::string_view name, int32_t row) const {
    return FieldValue(name, fields, data, row);
  }
};

Rows Query(kwxLoader& loader, const std::string& sql) {
  Rows rows;
  loader.Access_GetCompanies(sql, rows.data, rows.fields);
  if (!rows.fields.IsArray()) throw CommandError("the query failed: " + sql);
  return rows;
}

// The keys of `table` in ascending order (the order the rows were made in).
std::vector<int32_t> Keys(kwxLoader& loader, const TableDef& table) {
  const std::string key(table.key);
  const Rows rows = Query(
      loader, "select " + key + " from " + std::string(table.name) + " order by " + key + " asc");
  std::vector<int32_t> keys;
  for (int32_t r = 0; r < rows.Count(); ++r) keys.push_back(CLng(rows.Value(key, r)));
  return keys;
}

// The CompanyIDs with a judgment row in every judgment table `platform` reads: the studies whose
// judgments a loader on that platform loads (it loads none for a study that misses one table).
std::set<int32_t> StudiesWithJudgments(kwxLoader& loader, int32_t platform) {
  const PlatformUse other = platform == kPlatformSP ? PlatformUse::PlainOnly : PlatformUse::SPOnly;
  std::set<int32_t> found;
  bool first = true;
  for (const TableDef& table : AllTables()) {
    if (table.kind != TableKind::PerCompanyRow || !table.name.starts_with("Judgment") ||
        table.platform == other) {
      continue;
    }
    const Rows rows = Query(loader, "select CompanyID from " + std::string(table.name));
    std::set<int32_t> here;
    for (int32_t r = 0; r < rows.Count(); ++r) here.insert(CLng(rows.Value("CompanyID", r)));
    if (first) {
      found = std::move(here);
      first = false;
    } else {
      std::erase_if(found, [&](int32_t id) { return !here.contains(id); });
    }
  }
  return found;
}

// True when a table or column of the database is read and written only on the platform other
// than `platform`: a study then has data a loader on `platform` alone does not carry.
bool OtherPlatformHasData(int32_t platform) {
  const PlatformUse other = platform == kPlatformSP ? PlatformUse::PlainOnly : PlatformUse::SPOnly;
  for (const TableDef& table : AllTables()) {
    if (table.platform == other) return true;
    for (const ColumnDef& column : table.columns) {
      if (column.platform == other) return true;
    }
  }
  return false;
}

// The reference tables, every row, by name: a study's names then resolve in the target as in
// the source. Industry rows keep their codes.
void CopyReferenceTables(kwxLoader& from, kwxLoader& to) {
  using Get = void (kwxLoader::*)(Variant&, Variant&) const;
  using Add = void (kwxLoader::*)(const std::string&);
  const std::pair<Get, Add> cached[] = {
      {&kwxLoader::Access_GetSector, &kwxLoader::Access_AddSector},
      {&kwxLoader::Access_GetExchange, &kwxLoader::Access_AddExchange},
      {&kwxLoader::Access_GetDataSource, &kwxLoader::Access_AddDataSource},
  };
  for (const auto& [get, add] : cached) {
    Variant ids, names;
    (from.*get)(ids, names);
    if (!names.IsArray()) continue;
    for (const Variant& name : names.AsArray().elements()) {
      if (!name.IsEmpty()) (to.*add)(TextFromSql(name));
    }
  }
  const Rows industries = Query(from, LoadTableSql(kIndustryTable.table));
  for (int32_t r = 0; r < industries.Count(); ++r) {
    StoreIndustryCode(to.database().get(), CLng(industries.Value("IndustryCode", r)),
                      TextFromSql(industries.Value(kIndustryTable.name_column, r)));
  }
}

// Loads study `id` from `from` and saves it into `to` as study `new_id` (0: a new study);
// answers the CompanyID it was saved under. Raises CommandError when the save did not commit.
int32_t CopyStudy(kwxLoader& from, kwxLoader& to, int32_t id, int32_t new_id, bool judgments) {
  Company study;
  from.Access_Get(id, "", "", study);
  if (study.CompanyID != id)
    throw CommandError("study " + std::to_string(id) + " could not be read");
  study.CompanyID = new_id;
  to.Access_Update(study, judgments);
  if (!to.LastUpdateCommitted() || study.CompanyID < 1) {
    throw CommandError("study " + std::to_string(id) + " could not be saved in the target");
  }
  return study.CompanyID;
}

// A saved list of studies (a comparison or a PERT report) and how to copy one of its kind.
template <class List>
struct ListCopy {
  const TableDef& table;
  int32_t List::*id;
  // The member's CompanyID of each member.
  int32_t& (*member_company)(typename decltype(List::Members)::value_type&);
  void (kwxLoader::*get)(List&);
  void (kwxLoader::*update)(List&);
};

int32_t& ComparisonMemberCompany(ComparisonMember& m) { return m.CompanyID; }
int32_t& PERTMemberCompany(PERTReportMember& m) { return m.CompanyID; }

// Copies every list of one kind, its members following their studies through `new_ids`; a
// member whose study the source does not hold is left out (and said so on `err`). The saved
// list finds its ID by name, so a name copied once already is saved under a name of its own
// first and renamed once its members are in.
template <class List>
std::vector<int32_t> CopyLists(kwxLoader& from, kwxLoader& to, const ListCopy<List>& kind,
                               const std::map<int32_t, int32_t>& new_ids, std::ostream& err,
                               ProgressBar& bar, size_t& done) {
  const Rows headers = Query(from, LoadTableSql(kind.table.name));
  std::set<std::string> names_used;
  std::vector<int32_t> copied;
  for (int32_t r = 0; r < headers.Count(); ++r) {
    const int32_t old_id = CLng(headers.Value(kind.table.key, r));
    List list;
    list.*kind.id = old_id;
    (from.*kind.get)(list);
    // A list without members loads nothing, not even its header: that comes from the row.
    for (const auto& b : List::Bindings()) {
      const Variant v = headers.Value(b.column.name, r);
      if (!v.IsNull() && !v.IsEmpty()) {
        SetField(list, b, b.column.type == ColumnType::Text ? Variant(TextFromSql(v)) : v);
      }
    }
    auto& members = list.Members;
    std::erase_if(members, [&](auto& m) {
      const int32_t company = kind.member_company(m);
      if (new_ids.contains(company)) return false;
      err << "kwx: " << kind.table.name << " " << old_id << " names study " << company
          << ", which does not exist; that member is left out\n";
      return true;
    });
    for (auto& m : members) kind.member_company(m) = new_ids.at(kind.member_company(m));
    const std::string name = list.Name;
    const bool repeated = !names_used.insert(FoldCase(Trim(name))).second;
    if (repeated) list.Name = name + " (copy of " + std::to_string(old_id) + ")";
    list.*kind.id = 0;
    // The save reports a failed member row but goes on; any report fails the copy.
    const size_t reports = to.ErrorReports().size();
    (to.*kind.update)(list);
    if (list.*kind.id < 1 || to.ErrorReports().size() != reports) {
      throw CommandError(std::string(kind.table.name) + " " + std::to_string(old_id) +
                         " could not be saved in the target");
    }
    if (repeated) {
      Variant fields, data;
      const std::string id_text = std::to_string(list.*kind.id);
      if (!to.database()->blnExecute(
              UpdateFieldSql(kind.table.name, "Name", SqlText(name), kind.table.key, id_text),
              fields, data) ||
          to.database()->lngRowCount() != 1) {
        throw CommandError(std::string(kind.table.name) + " " + std::to_string(old_id) +
                           " could not be named in the target");
      }
    }
    copied.push_back(list.*kind.id);
    bar.Update(++done);
  }
  return copied;
}

// Tables whose rows make a database no longer empty for a copy.
constexpr TableId kFilledBy[] = {TableId::Company, TableId::Comparison, TableId::PERTReport};

// Removes the database file `path` made for the copy, with the engine's side files.
void RemoveDatabaseFile(const std::string& path) {
  std::error_code ec;
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
    std::filesystem::remove(path + suffix, ec);
  }
}

// Copies the --db database into `to_path` (see AddCopyCommands); raises on failure, after
// which the target holds what it held before.
// Copies the --db database into `to_path` (see AddCopyCommands); raises on failure, after
// which the target holds what it held before.
void CopyDatabase(Context& ctx, const std::string& to_path) {
  ctx.reads_only = true;
  kwxLoader& source = ctx.OpenLoader();

  std::error_code ec;
  if (std::filesystem::exists(to_path, ec) &&
      std::filesystem::equivalent(to_path, ctx.options.db_path, ec)) {
    throw CommandError("'" + to_path + "' is the database being copied", 2);
  }
  const int32_t platform = source.ProgramPlatform();
  const int32_t other = platform == kPlatformSP ? kPlatformPlain : kPlatformSP;

  // A database the copy makes is removed again unless the copy completes; one that existed
  // (empty) gets back its empty state from the rolled-back transaction or, for the second
  // platform's pass, by deleting what the copy added.
  const bool made = to_path.find("://") == std::string::npos &&
                    !std::filesystem::exists(std::filesystem::symlink_status(to_path, ec));
  if (made) InitDatabase(to_path);
  if (IsPostgresUri(to_path)) {
    // A server database holds no study tables until it is initialised; one that holds them
    // already is checked below like a file.
    const Status created = CreateDatabase(to_path);
    if (!created.ok() && created.message().find(kAlreadyAStudyDatabase) == std::string::npos) {
      throw CommandError("cannot prepare '" + to_path + "' for the copy: " +
                         CreationReason(created));
    }
  }
  struct Cleanup {
    const std::string& path;
    bool made;
    bool done = false;
    std::unique_ptr<kwxLoader> to;
    std::unique_ptr<kwxLoader> to_other;
    // What the first pass committed: CompanyIDs, comparison and PERT report IDs.
    std::vector<int32_t> studies, comparisons, reports;
    ~Cleanup() {
      if (done) return;
      to_other.reset();
      if (made) {
        to.reset();
        RemoveDatabaseFile(path);
      } else if (to) {
        for (int32_t id : comparisons) to->Access_DeleteComparison(id);
        for (int32_t id : reports) to->Access_DeletePERTReport(id);
        for (int32_t id : studies) to->Access_Delete(id);
      }
    }
  } cleanup{to_path, made, false, nullptr, nullptr, {}, {}, {}};
  cleanup.to = ctx.OpenAnother(to_path, platform, false);
  kwxLoader& to = *cleanup.to;
  IDatabase& db = *to.database();
  for (TableId id : kFilledBy) {
    const TableDef& table = GetTable(id);
    if (Query(to, "select " + std::string(table.key) + " from " + std::string(table.name)).Count() >
        0) {
      throw CommandError("'" + to_path +
                         "' holds studies, comparisons or PERT reports already; copy into a new "
                         "file or an empty database (kwx init)");
    }
  }

  const std::vector<int32_t> studies = Keys(source, GetTable(TableId::Company));
  const std::set<int32_t> judged = StudiesWithJudgments(source, platform);
  // The other platform's groups and columns need a second pass through loaders on that
  // platform, for the studies that have any of its judgments (the options always, when that
  // platform has columns of its own).
  std::unique_ptr<kwxLoader> source_other;
  std::set<int32_t> judged_other;
  if (OtherPlatformHasData(platform) && !studies.empty()) {
    source_other = ctx.OpenAnother(ctx.options.db_path, other, true);
    judged_other = StudiesWithJudgments(*source_other, other);
  }
  const size_t lists =
      static_cast<size_t>(Query(source, LoadTableSql(GetTable(TableId::Comparison).name)).Count() +
                          Query(source, LoadTableSql(GetTable(TableId::PERTReport).name)).Count());
  const size_t total = studies.size() * (source_other ? 2 : 1) + lists;
  ProgressBar bar(*ctx.err, ctx.err_is_terminal && total > 1, total, "studies");
  size_t done = 0;

  // First pass: everything, in one transaction of the target.
  std::map<int32_t, int32_t> new_ids;
  std::vector<int32_t> comparisons, reports;
  db.BeginTrans();
  try {
    CopyReferenceTables(source, to);
    if (!to.ErrorReports().empty()) throw CommandError("the reference tables could not be copied");
    for (int32_t id : studies) {
      new_ids[id] = CopyStudy(source, to, id, 0, judged.contains(id));
      bar.Update(++done);
    }
    comparisons = CopyLists<Comparison>(
        source, to,
        {GetTable(TableId::Comparison), &Comparison::ComparisonID, &ComparisonMemberCompany,
         &kwxLoader::Access_GetComparison, &kwxLoader::Access_UpdateComparison},
        new_ids, *ctx.err, bar, done);
    reports = CopyLists<PERTReport>(
        source, to,
        {GetTable(TableId::PERTReport), &PERTReport::PERTReportID, &PERTMemberCompany,
         &kwxLoader::Access_GetPERTReport, &kwxLoader::Access_UpdatePERTReport},
        new_ids, *ctx.err, bar, done);
    db.CommitTrans();
  } catch (...) {
    bar.Clear();
    ResumeNext([&] { db.RollbackTrans(); });
    throw;
  }
  for (const auto& [old_id, new_id] : new_ids) cleanup.studies.push_back(new_id);
  cleanup.comparisons = comparisons;
  cleanup.reports = reports;

  // Second pass: the other platform's judgments and columns onto the same studies.
  if (source_other) {
    cleanup.to_other = ctx.OpenAnother(to_path, other, false);
    IDatabase& other_db = *cleanup.to_other->database();
    other_db.BeginTrans();
    try {
      for (int32_t id : studies) {
        CopyStudy(*source_other, *cleanup.to_other, id, new_ids.at(id), judged_other.contains(id));
        bar.Update(++done);
      }
      other_db.CommitTrans();
    } catch (...) {
      bar.Clear();
      ResumeNext([&] { other_db.RollbackTrans(); });
      throw;
    }
  }
  bar.Clear();
  PrintErrorReports(source, *ctx.err);
  PrintErrorReports(to, *ctx.err);
  cleanup.done = true;
  *ctx.out << "copied " << studies.size() << " studies, " << comparisons.size()
           << " comparisons and " << reports.size() << " PERT reports into " << to_path << "\n";
}

}  // namespace

void AddCopyCommands(CLI::App& app, Context& ctx) {
  auto target = std::make_shared<std::string>();
  auto* copy = app.add_subcommand(
      "copy",
      "copy every study, reference table, comparison and PERT report of --db into TARGET, a new "
      "or empty study database (created when missing); CompanyIDs are new, and the members of "
      "comparisons and PERT reports follow their studies");
  copy->add_option("TARGET", *target, "the database to copy into")->required();
  copy->callback([&ctx, target] {
    try {
      CopyDatabase(ctx, *target);
    } catch (const CommandError&) {
      throw;
    } catch (const std::exception& e) {
      // The engine's words for a failed statement; a lock here is most likely the target's.
      throw CommandError(ctx.Reason(e.what(), *target));
    }
  });
}

}  // namespace kwx::cli
