// kwx-bench: how fast the loader saves, loads and parses studies against the raw limit of
// direct SQLite calls, how load latency grows with the database, and the peak memory of a
// bulk import. Run `kwx-bench --quick` for a run under a minute; the ratios come last as
// "ratio NAME VALUE" lines for scripts. With `--engine postgresql` the same figures are taken
// on a PostgreSQL server against raw libpq, in databases the benchmark makes and drops itself,
// and the ratios carry the prefix "pg_".
#include <fcntl.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/registry.h"
#include "automation/text.h"
#include "bench/pg_pipeline.h"
#include "bench/pg_row_writer.h"
#include "bench/pg_statement_replay.h"
#include "bench/row_writer.h"
#include "bench/scratch_databases.h"
#include "bench/statement_replay.h"
#include "loader/kwx_loader.h"
#include "model/company.h"
#include "model/schema.h"
#include "services/builtin_services.h"
#include "services/create_database.h"
#include "services/data_file.h"
#include "services/postgres_database.h"
#include "services/schema_ddl_internal.h"
#include "services/sqlite_database.h"
#include "services/sqlite_support_internal.h"

extern char** environ;

namespace kwx::bench {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point from) {
  return std::chrono::duration<double>(Clock::now() - from).count();
}

struct Sizes {
  int save = 2000;          // studies per save run
  int parse = 20000;        // field arrays per parse run
  int repeats = 3;          // runs per figure; the best counts (the machine is shared)
  int load_repeats = 9;     // load passes per side, alternating; each pass is short
  int save_repeats = 5;     // save runs per side, alternating
  int scale_small = 1000;
  int scale_large = 100000;
  int lookups = 1000;       // loads per latency pass
  int scale_repeats = 7;    // latency passes over each database
  int import_small = 1000;
  int import_large = 10000;
  std::string only;         // one section alone (for profiling), or all
  std::string pg_uri;       // the PostgreSQL server to measure on; SQLite files when empty
  bool quick = false;       // --quick: on a server, no database of scale_large studies
};

// Unwinds to main, so that the databases made on a server are dropped on the way.
[[noreturn]] void Fail(const std::string& what) { throw std::runtime_error(what); }

// The sample studies the benchmark saves over and over, as KWX texts.
std::vector<std::string> SampleTexts() {
  const char* env = std::getenv("KWX_SOURCE_DIR");
  const fs::path dir = fs::path(env != nullptr ? env : KWX_SOURCE_DIR) / "samples" / "studies";
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.path().extension() == ".kwx") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  std::vector<std::string> texts;
  for (const fs::path& f : files) {
    std::ifstream in(f, std::ios::binary);
    texts.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  if (texts.empty()) Fail("no sample studies in " + dir.string());
  return texts;
}

// A loader whose database object the benchmark can reach (for the outer transaction and the
// trace), opened on `path` (a file, or a server database by its URI), with the sample studies
// parsed on it so that their reference rows exist, always in the same order and so with the
// same IDs in every database.
class LoaderSide {
 public:
  LoaderSide(const std::string& path, const std::vector<std::string>& texts)
      : guard_(progid::kDatabase, [this, postgres = IsPostgresUri(path)] {
          if (postgres) {
            db_ = std::make_shared<PostgresDatabase>();
          } else {
            db_ = std::make_shared<SqliteDatabase>();
          }
          return db_;
        }) {
    loader_ = std::make_unique<kwxLoader>();
    if (!path.empty() && !loader_->Access_blnOpenDatabase(path)) Fail("cannot open " + path);
    for (const std::string& text : texts) {
      Company c;
      loader_->Stream_Get(text, c, idKWX);
      if (c.strSymbol.empty()) Fail("a sample study did not parse");
      studies_.push_back(std::move(c));
    }
  }
  kwxLoader& loader() { return *loader_; }
  DatabaseEngine& db() { return *db_; }
  // A copy of sample study `k` (cycling) as a new study with `symbol`.
  Company Study(size_t k, const std::string& symbol) const {
    Company c = studies_[k % studies_.size()];
    c.CompanyID = 0;
    c.strSymbol = symbol;
    return c;
  }
  std::string Exchange(size_t k) const {
    return CStr(studies_[k % studies_.size()].GetProperty("ExchangeID"));
  }
  size_t count() const { return studies_.size(); }

 private:
  ScopedRegistration guard_;
  std::shared_ptr<DatabaseEngine> db_;
  std::unique_ptr<kwxLoader> loader_;
  std::vector<Company> studies_;
};

// Studies per write transaction of a bulk save, as `kwx import` batches them.
constexpr int kBatch = 50;

// A raw connection with the settings a program that only stores rows would choose
// (ApplyRawSettings), opened like the database object's, without SQLite's connection mutex.
struct RawDb {
  explicit RawDb(const std::string& path) {
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                        nullptr) != SQLITE_OK) {
      Fail("cannot open " + path);
    }
    ApplyRawSettings(db);
    // The loads replayed compare texts the way the database object's statements do.
    sqlite_support::RegisterJetFunctions(db);
  }
  ~RawDb() { sqlite3_close_v2(db); }
  void Exec(const char* sql) {
    if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
      Fail(std::string(sql) + ": " + sqlite3_errmsg(db));
    }
  }
  sqlite3* db = nullptr;
};

class Bench {
 public:
  Bench(Sizes sizes, fs::path dir) : sizes_(sizes), dir_(std::move(dir)), texts_(SampleTexts()) {
    // Stream_Get takes the text of a file, decoded as an import decodes the file's bytes.
    for (const std::string& bytes : texts_) streams_.push_back(StreamTextOfDataFile(bytes));
    if (!sizes_.pg_uri.empty()) {
      pg_ = std::make_unique<ScratchDatabases>(sizes_.pg_uri);
      if (!pg_->ok()) Fail(pg_->error());
    }
  }

  void Run() {
    Capture();
    auto wanted = [&](const char* section) {
      return sizes_.only.empty() || sizes_.only == section;
    };
    if (wanted("parse")) Parse();
    if (wanted("save")) Save();
    if (wanted("load")) Load();
    // Memory before scale: the import runs in a child started from this process, whose
    // peak counts from this process's size at the start, which the scale databases inflate.
    if (wanted("memory")) Memory();
    if (wanted("scale")) Scale();
    std::printf("\n");
    if (pg_) {
      std::printf("ratio pg_save_per_study %.2f\n", save_per_study_);
      std::printf("ratio pg_save_batched %.2f\n", save_batched_);
      std::printf("ratio pg_load %.2f\n", load_);
      std::printf("ratio pg_import %.2f\n",
                  import_raw_program_rate_ > 0 ? import_rate_ / import_raw_program_rate_ : 0);
      if (load_scale_ > 0) std::printf("ratio pg_load_scale_1k_to_100k %.2f\n", load_scale_);
      return;
    }
    std::printf("ratio save_per_study %.2f\n", save_per_study_);
    std::printf("ratio save_batched %.2f\n", save_batched_);
    std::printf("ratio load %.2f\n", load_);
    std::printf("ratio load_scale_1k_to_100k %.2f\n", load_scale_);
    // Both sides whole programs: `kwx import` is timed from its start to its exit.
    std::printf("ratio import %.2f\n",
                import_raw_program_rate_ > 0 ? import_rate_ / import_raw_program_rate_ : 0);
    std::printf("ratio import_vs_python %.2f\n", python_rate_ > 0 ? import_rate_ / python_rate_ : 0);
  }

 private:
  // A new, empty study database: a file in the work folder, or a database of its own on the
  // server.
  std::string FreshDb(const std::string& name) {
    if (pg_) {
      const std::string uri = pg_->Fresh(fs::path(name).stem().string());
      if (uri.empty()) Fail(pg_->error());
      return uri;
    }
    return FreshFile(name);
  }
  std::string FreshFile(const std::string& name) {
    const std::string path = (dir_ / name).string();
    for (const char* suffix : {"", "-wal", "-shm"}) fs::remove(path + suffix);
    const Status created = CreateDatabase(path);
    if (!created.ok()) Fail(created.message());
    return path;
  }

  // Records, for each sample study, the statements the loader runs to save it as a new study
  // and to load it by ID: the raw side replays exactly those rows.
  void Capture() {
    // Taken on a file whatever the engine measured: the ID trick below is SQLite's.
    const std::string path = FreshFile("capture.db");
    LoaderSide side(path, streams_);
    Variant fields, data;
    for (size_t k = 0; k < side.count(); ++k) {
      // The study saved before the captured one takes the ID below it, so the captured one
      // gets the ID the replay recognises.
      const std::string pad = "insert into Company (CompanyID, strName) select " +
                              std::to_string(kCaptureCompanyID - 2) + ", 'pad'";
      side.db().blnExecute("Delete * From Company", fields, data);
      side.db().blnExecute("delete from sqlite_sequence where name = 'Company'", fields, data);
      if (!side.db().blnExecute(pad, fields, data)) Fail("cannot prepare the capture");
      Company warm = side.Study(k, "WARM");
      side.loader().Access_Update(warm);

      std::vector<std::string> lines;
      side.db().SetTraceCallback([&](std::string_view line) { lines.emplace_back(line); });
      Company captured = side.Study(k, std::string(kCaptureSymbol));
      side.loader().Access_Update(captured);
      if (captured.CompanyID != kCaptureCompanyID) Fail("the captured save got another ID");
      saves_.push_back(std::make_unique<RowWriter>());
      {
        RawDb reader(path);
        if (!saves_.back()->Capture(reader.db, kCaptureCompanyID)) Fail("cannot capture rows");
      }
      lines.clear();
      Company loaded;
      side.loader().Access_Get(kCaptureCompanyID, "", "", loaded);
      loads_.push_back(std::make_unique<StatementReplay>());
      if (pg_) pg_loads_.emplace_back();
      for (const std::string& line : lines) {
        const auto entry = nlohmann::json::parse(line);
        const std::string sql = entry["sql"];
        if (entry["ok"] && IsQuery(sql)) {
          loads_.back()->Add(sql);
          if (pg_) pg_loads_.back().Add(sql);
        }
      }
      side.db().SetTraceCallback(nullptr);
    }
    if (pg_) {
      CapturePg();
      return;
    }
    std::printf("kwx-bench: %zu sample studies; a save stores %zu rows, a load reads %zu "
                "queries\n",
                side.count(), saves_[0]->size(), loads_[0]->size());
    std::printf("raw side: the same rows by prepared inserts, journal_mode=WAL, "
                "synchronous=FULL, foreign_keys=ON, %s, a 2 MB page cache; a "
                "savepoint per study, %d studies per durable commit when batched\n\n",
                SetUpRawSqlite() ? "statement journals in memory in one 1 MB block"
                                 : "temp_store=MEMORY",
                kBatch);
  }

  // The rows the loader stores for each sample study on the server, taken from a database it
  // saved them in. (The queries of a load are the same texts on either engine: they were
  // taken on the file above.)
  void CapturePg() {
    const std::string uri = FreshDb("capture");
    LoaderSide side(uri, streams_);
    for (size_t k = 0; k < side.count(); ++k) {
      Company study = side.Study(k, std::string(kCaptureSymbol));
      side.loader().Access_Update(study);
      if (study.CompanyID < 1) Fail("the loader did not save a study on the server");
      pg_saves_.push_back(std::make_unique<PgRowWriter>());
      std::string error;
      if (!pg_saves_.back()->Capture(uri, study.CompanyID, error)) Fail(error);
    }
    std::printf("kwx-bench on PostgreSQL: %zu sample studies; a save stores %zu rows, a load "
                "reads %zu queries\n",
                side.count(), pg_saves_[0]->size(), pg_loads_[0].size());
    std::printf("raw side: libpq in pipeline mode (statements sent without waiting for the one "
                "before; a save waits once, for the new study's key, a load once for all its "
                "queries), every statement prepared once per connection; the same rows, a "
                "savepoint per study, %d studies per commit when batched\n\n",
                kBatch);
  }

  static bool IsQuery(const std::string& sql) {
    return sql.size() >= 6 && EqualsNoCase(std::string_view(sql).substr(0, 6), "select");
  }

  void Parse() {
    LoaderSide side("", streams_);
    double best = 0;
    for (int r = 0; r < sizes_.repeats; ++r) {
      const auto start = Clock::now();
      for (int i = 0; i < sizes_.parse; ++i) {
        Company c;
        side.loader().Stream_Get(streams_[i % streams_.size()], c, idKWX);
      }
      best = std::max(best, sizes_.parse / Seconds(start));
    }
    std::printf("parse  Stream_Get (KWX, no database)   %10.0f field arrays/s\n\n", best);
  }

  // Studies per second written by the loader, and by the raw writer, into fresh files;
  // batched, kBatch studies share each durable commit as in a bulk import.
  double SaveLoader(bool batched, int n) {
    LoaderSide side(FreshDb("save-loader.db"), streams_);
    const auto start = Clock::now();
    for (int i = 0; i < n; ++i) {
      if (batched && i % kBatch == 0) side.db().BeginTrans();
      Company c = side.Study(i, "L" + std::to_string(i));
      side.loader().Access_Update(c);
      if (c.CompanyID < 1) Fail("the loader did not save a study");
      if (batched && (i % kBatch == kBatch - 1 || i + 1 == n)) side.db().CommitTrans();
    }
    return n / Seconds(start);
  }
  // Fills the raw database `raw` with n studies numbered on from `first`.
  void FillRaw(RawDb& raw, bool batched, int n, const char* prefix) {
    for (int i = 0; i < n; ++i) {
      if (batched && i % kBatch == 0) raw.Exec("BEGIN IMMEDIATE");
      if (saves_[i % saves_.size()]->Save(raw.db, prefix + std::to_string(i + 1), !batched) ==
          0) {
        Fail(std::string("the raw save failed: ") + sqlite3_errmsg(raw.db));
      }
      if (batched && (i % kBatch == kBatch - 1 || i + 1 == n)) raw.Exec("COMMIT");
    }
  }
  // The same on the server: one pipeline, the batch's BEGIN and COMMIT queued like the rest.
  void FillRawPg(PgPipeline& raw, bool batched, int n, const char* prefix) {
    for (int i = 0; i < n; ++i) {
      if (batched && i % kBatch == 0) raw.Command("BEGIN");
      if (pg_saves_[i % pg_saves_.size()]->Save(raw, prefix + std::to_string(i + 1), !batched) ==
          0) {
        Fail("the raw save failed: " + raw.error());
      }
      if (batched && (i % kBatch == kBatch - 1 || i + 1 == n)) {
        raw.Command("COMMIT");
        if (!raw.Sync()) Fail("the raw save failed: " + raw.error());
      }
    }
  }
  // Studies per second of the raw save. A whole program's figure counts opening and closing
  // the database as well, as the figure of `kwx import` (a program timed from start to exit)
  // does: closing an SQLite file copies what its write-ahead log still holds into the file.
  double SaveRaw(bool batched, int n, bool round_trip_each = false, bool whole_program = false) {
    const std::string path = FreshDb("save-raw.db");
    { LoaderSide refs(path, streams_); }
    auto start = Clock::now();
    double seconds = 0;
    if (pg_) {
      PgPipeline raw(path, round_trip_each);
      if (!raw.ok()) Fail(raw.error());
      if (!whole_program) start = Clock::now();
      FillRawPg(raw, batched, n, "R");
      seconds = Seconds(start);
    } else {
      RawDb raw(path);
      if (!whole_program) start = Clock::now();
      FillRaw(raw, batched, n, "R");
      seconds = Seconds(start);
      for (auto& s : saves_) s->Reset();
    }
    // The connection is closed by now: a whole program's figure includes the close.
    return n / (whole_program ? Seconds(start) : seconds);
  }

  void Save() {
    for (bool batched : {false, true}) {
      // Per-study commits wait for the disk: fewer of them keep the run short.
      const int n = batched ? sizes_.save : std::max(150, sizes_.save / 4);
      double loader = 0, raw = 0, unpipelined = 0;
      for (int r = 0; r < sizes_.save_repeats; ++r) {
        loader = std::max(loader, SaveLoader(batched, n));
        raw = std::max(raw, SaveRaw(batched, n));
        if (pg_) unpipelined = std::max(unpipelined, SaveRaw(batched, n, true));
      }
      std::printf("save   %-28s loader %8.0f studies/s   raw %8.0f studies/s   (%d studies)\n",
                  batched ? "one outer transaction" : "a transaction per study", loader, raw, n);
      if (pg_) {
        std::printf("       raw with a round trip per statement       %8.0f studies/s\n",
                    unpipelined);
      }
      (batched ? save_batched_ : save_per_study_) = loader / raw;
    }
    std::printf("\n");
  }

  void Load() {
    const int n = sizes_.save;
    const std::string path = FreshDb("load.db");
    LoaderSide side(path, streams_);
    std::vector<int> ids;
    side.db().BeginTrans();
    for (int i = 0; i < n; ++i) {
      Company c = side.Study(i, "L" + std::to_string(i));
      side.loader().Access_Update(c);
      ids.push_back(c.CompanyID);
    }
    side.db().CommitTrans();
    // Study ids[i] is a copy of sample i (cycling), whose load was captured as loads_[i].
    std::unique_ptr<RawDb> raw;
    std::unique_ptr<PgPipeline> raw_pg, unpipelined_pg;
    if (pg_) {
      raw_pg = std::make_unique<PgPipeline>(path);
      unpipelined_pg = std::make_unique<PgPipeline>(path, true);
      if (!raw_pg->ok() || !unpipelined_pg->ok()) Fail(raw_pg->error() + unpipelined_pg->error());
    } else {
      raw = std::make_unique<RawDb>(path);
    }
    double loader = 0, raw_rate = 0, unpipelined = 0;
    for (int r = 0; r < sizes_.load_repeats; ++r) {
      if (pg_) {
        const auto start = Clock::now();
        for (size_t i = 0; i < ids.size(); ++i) {
          if (pg_loads_[i % pg_loads_.size()].Load(*unpipelined_pg, ids[i]) <= 0) {
            Fail("the raw load failed: " + unpipelined_pg->error());
          }
        }
        unpipelined = std::max(unpipelined, n / Seconds(start));
      }
      auto start = Clock::now();
      for (int id : ids) {
        Company c;
        side.loader().Access_Get(id, "", "", c);
        if (c.CompanyID != id) Fail("the loader did not load study " + std::to_string(id));
      }
      loader = std::max(loader, n / Seconds(start));
      start = Clock::now();
      for (size_t i = 0; i < ids.size(); ++i) {
        const int64_t read = raw_pg ? pg_loads_[i % pg_loads_.size()].Load(*raw_pg, ids[i])
                                    : loads_[i % loads_.size()]->Load(raw->db, ids[i]);
        // A study always has values to read: none means the replay reads nothing.
        if (read <= 0) Fail("the raw load failed" + (raw_pg ? ": " + raw_pg->error() : ""));
      }
      raw_rate = std::max(raw_rate, n / Seconds(start));
    }
    for (auto& l : loads_) l->Reset();
    std::printf("load   by ID                         loader %8.0f studies/s   raw %8.0f studies/s   "
                "(%d studies)\n",
                loader, raw_rate, n);
    if (pg_) {
      std::printf("       raw with a round trip per statement       %8.0f studies/s\n",
                  unpipelined);
    }
    std::printf("\n");
    load_ = loader / raw_rate;
  }

  // Copies studies 1..(want - have) as studies have+1.., each with a symbol of its own, until
  // the database holds `want` studies numbered from 1.
  static void Grow(RawDb& raw, int have, int want) {
    std::vector<std::string> tables;
    sqlite3_stmt* list = nullptr;
    sqlite3_prepare_v2(raw.db, "select name from sqlite_master where type = 'table'", -1,
                       &list, nullptr);
    while (sqlite3_step(list) == SQLITE_ROW) {
      tables.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(list, 0)));
    }
    sqlite3_finalize(list);
    raw.Exec("BEGIN");
    while (have < want) {
      const int add = std::min(have, want - have);
      const std::string off = std::to_string(have);
      for (const std::string& table : tables) {
        std::vector<std::string> columns;
        bool per_company = false;
        sqlite3_stmt* info = nullptr;
        sqlite3_prepare_v2(raw.db, ("PRAGMA table_info(\"" + table + "\")").c_str(), -1, &info,
                           nullptr);
        while (sqlite3_step(info) == SQLITE_ROW) {
          const std::string name = reinterpret_cast<const char*>(sqlite3_column_text(info, 1));
          const bool key = sqlite3_column_int(info, 5) != 0;
          if (name == "CompanyID") per_company = true;
          if (!key || name == "CompanyID") columns.push_back(name);
        }
        sqlite3_finalize(info);
        if (!per_company) continue;
        std::string into, select;
        for (const std::string& c : columns) {
          into += (into.empty() ? "\"" : ", \"") + c + "\"";
          std::string value = "\"" + c + "\"";
          if (c == "CompanyID") value = "CompanyID + " + off;
          if (c == "strSymbol") value = "'S' || (CompanyID + " + off + ")";
          select += (select.empty() ? "" : ", ") + value;
        }
        const std::string sql = "insert into \"" + table + "\" (" + into + ") select " + select +
                                " from \"" + table + "\" where CompanyID <= " +
                                std::to_string(add);
        raw.Exec(sql.c_str());
      }
      have += add;
    }
    raw.Exec("COMMIT");
  }

  // Seconds of one pass of loads by ID and of one by symbol, over `ids`.
  static std::pair<double, double> LoadPass(LoaderSide& side, const std::vector<int>& ids) {
    auto start = Clock::now();
    for (int id : ids) {
      Company c;
      side.loader().Access_Get(id, "", "", c);
      if (c.CompanyID != id) Fail("study " + std::to_string(id) + " not loaded");
    }
    const double by_id = Seconds(start);
    start = Clock::now();
    for (int id : ids) {
      Company c;
      side.loader().Access_Get(0, "S" + std::to_string(id), side.Exchange(id - 1), c);
      if (c.CompanyID != id) Fail("study S" + std::to_string(id) + " not loaded by symbol");
    }
    return {by_id, Seconds(start)};
  }

  // Grow on the server: series keys move to the copy's key block. The statistics are taken
  // afterwards, as the server's autovacuum would take them on a database this size.
  void GrowPg(const std::string& uri, int have, int want) {
    PgPipeline raw(uri);
    std::map<std::string, std::vector<std::string>> columns;
    raw.Command("SELECT table_name, column_name FROM information_schema.columns WHERE "
                "table_schema = current_schema() ORDER BY table_name, ordinal_position",
                [&columns](const PGresult* r) {
                  for (int row = 0; row < PQntuples(r); ++row) {
                    columns[FoldCase(PQgetvalue(r, row, 0))].emplace_back(PQgetvalue(r, row, 1));
                  }
                });
    if (!raw.Sync()) Fail(raw.error());
    raw.Command("BEGIN");
    while (have < want) {
      const int add = std::min(have, want - have);
      const std::string off = std::to_string(have);
      // Tables in creation order: a company's row comes before the rows that refer to it.
      for (const TableDef& t : AllTables()) {
        const std::vector<std::string>& names = columns[FoldCase(t.name)];
        if (std::find(names.begin(), names.end(), "companyid") == names.end()) continue;
        std::string into, select;
        for (const std::string& c : names) {
          std::string value = c;
          if (c == "companyid") value = "companyid + " + off;
          if (c == "strsymbol") value = "'S' || (companyid + " + off + ")";
          if (t.kind == TableKind::Series && EqualsNoCase(c, t.key)) {
            value = c + " + " + off + "::bigint * " + std::to_string(kSeriesKeyBlock);
          }
          into += (into.empty() ? "" : ", ") + c;
          select += (select.empty() ? "" : ", ") + value;
        }
        const std::string sql = "INSERT INTO " + std::string(t.name) + " (" + into + ") SELECT " +
                                select + " FROM " + std::string(t.name) + " WHERE companyid <= " +
                                std::to_string(add);
        raw.Command(sql.c_str());
      }
      have += add;
    }
    raw.Command("COMMIT");
    raw.Command("ANALYZE");
    if (!raw.Sync()) Fail("growing the database: " + raw.error());
  }

  // Builds the two databases the scale section loads from; the seconds it took. On the server
  // the two are filled alike rather than copied (a database is copied only while no session
  // is connected to it).
  double BuildScale(const std::string& small_path, const std::string& large_path) {
    const auto fill = Clock::now();
    if (pg_) {
      for (const std::string& uri : {small_path, large_path}) {
        { LoaderSide refs(uri, streams_); }
        PgPipeline raw(uri);
        FillRawPg(raw, true, sizes_.scale_small, "S");
      }
      GrowPg(large_path, sizes_.scale_small, sizes_.scale_large);
      PgPipeline analyze(small_path);
      analyze.Command("ANALYZE");
      if (!analyze.Sync()) Fail(analyze.error());
      return Seconds(fill);
    }
    {
      LoaderSide refs(small_path, streams_);
    }
    {
      RawDb raw(small_path);
      FillRaw(raw, true, sizes_.scale_small, "S");
      raw.Exec("PRAGMA wal_checkpoint(TRUNCATE)");
      for (auto& s : saves_) s->Reset();
    }
    fs::copy_file(small_path, large_path, fs::copy_options::overwrite_existing);
    {
      RawDb raw(large_path);
      Grow(raw, sizes_.scale_small, sizes_.scale_large);
      raw.Exec("PRAGMA wal_checkpoint(TRUNCATE)");
    }
    return Seconds(fill);
  }

  // Megabytes the database takes: its file, or its size on the server.
  double Megabytes(const std::string& path) {
    if (!pg_) return fs::file_size(path) / 1048576.0;
    PgPipeline raw(path);
    double bytes = 0;
    raw.Command("SELECT pg_database_size(current_database())",
                [&bytes](const PGresult* r) { bytes = std::atof(PQgetvalue(r, 0, 0)); });
    if (!raw.Sync()) Fail(raw.error());
    return bytes / 1048576.0;
  }

  // The same database twice, with 1,000 studies and grown to 100,000; the passes over the
  // two alternate so that whatever else the machine is doing weighs on both alike.
  void Scale() {
    if (pg_ && sizes_.quick) {
      std::printf("scale  not measured on PostgreSQL in --quick (a server database of %d "
                  "studies takes minutes to build here; the full run measures it)\n\n",
                  sizes_.scale_large);
      return;
    }
    const std::string small_path = FreshDb("scale-small.db");
    const std::string large_path = pg_ ? FreshDb("scale-large.db")
                                       : (dir_ / "scale-large.db").string();
    const double fill_seconds = BuildScale(small_path, large_path);

    LoaderSide small_side(small_path, streams_);
    LoaderSide large_side(large_path, streams_);
    std::mt19937 rng(7);
    std::vector<int> small_ids(sizes_.lookups), large_ids(sizes_.lookups);
    for (int& id : small_ids) id = 1 + static_cast<int>(rng() % sizes_.scale_small);
    for (int& id : large_ids) id = 1 + static_cast<int>(rng() % sizes_.scale_large);
    std::pair<double, double> small{1e9, 1e9}, large{1e9, 1e9};
    auto keep_best = [](std::pair<double, double>& best, std::pair<double, double> pass) {
      best = {std::min(best.first, pass.first), std::min(best.second, pass.second)};
    };
    for (int r = 0; r < sizes_.scale_repeats; ++r) {
      keep_best(small, LoadPass(small_side, small_ids));
      keep_best(large, LoadPass(large_side, large_ids));
    }
    const double n = sizes_.lookups;
    std::printf("scale  load latency          %7d studies: by ID %7.1f us   by symbol %7.1f us\n",
                sizes_.scale_small, small.first / n * 1e6, small.second / n * 1e6);
    std::printf("scale  load latency          %7d studies: by ID %7.1f us   by symbol %7.1f us\n",
                sizes_.scale_large, large.first / n * 1e6, large.second / n * 1e6);
    std::printf("       (database of %d studies, %.0f MB, built in %.0f s; best of %d passes of "
                "%d loads)\n\n",
                sizes_.scale_large, Megabytes(large_path), fill_seconds,
                sizes_.scale_repeats, sizes_.lookups);
    load_scale_ = std::max(large.first / small.first, large.second / small.second);
    if (pg_) return;  // dropped with the others at the end
    // Unlinked now; the space comes back when the two sides close.
    for (const std::string& path : {small_path, large_path}) {
      for (const char* suffix : {"", "-wal", "-shm"}) fs::remove(path + suffix);
    }
  }

  // Peak resident memory (KB) and seconds of `kwx import` of n generated files, in a child.
  std::pair<long, double> Import(int n) {
    const fs::path files = dir_ / ("import-" + std::to_string(n));
    fs::create_directories(files);
    std::vector<std::string> args = {"kwx", "--db", FreshDb("import.db"), "import"};
    for (int i = 0; i < n; ++i) {
      // Position 4 of the KWX layout is the symbol: each file a study of its own.
      std::string text = texts_[i % texts_.size()];
      size_t at = 0;
      for (int line = 0; line < 4; ++line) at = text.find('\n', at) + 1;
      const size_t end = text.find('\r', at);
      text.replace(at, end - at, "M" + std::to_string(i));
      const std::string file = (files / ("M" + std::to_string(i) + ".kwx")).string();
      std::ofstream(file, std::ios::binary) << text;
      args.push_back(file);
    }
    const char* env = std::getenv("KWX_CLI");
    const std::string program = env != nullptr ? env : KWX_CLI_PATH;
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const auto start = Clock::now();
    if (posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ) != 0) {
      Fail("cannot run " + program);
    }
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    struct rusage usage {};
    if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
      Fail("kwx import of " + std::to_string(n) + " files failed");
    }
    const double seconds = Seconds(start);
    fs::remove_all(files);
    return {usage.ru_maxrss, seconds};
  }

  void Memory() {
    // The smaller import, the raw batched save of as many studies and the Python program run
    // in turns, so that whatever else the machine does weighs on all alike; the best of each
    // counts, as the save sides' figures do, and the peak is the highest seen.
    std::pair<long, double> small{0, 1e9};
    for (int r = 0; r < sizes_.repeats; ++r) {
      const auto run = Import(sizes_.import_small);
      small = {std::max(small.first, run.first), std::min(small.second, run.second)};
      import_raw_rate_ = std::max(import_raw_rate_, SaveRaw(true, sizes_.import_small));
      import_raw_program_rate_ = std::max(import_raw_program_rate_,
                                          SaveRaw(true, sizes_.import_small, false, true));
      // Without python3 it is not tried again.
      if (!pg_ && (r == 0 || python_rate_ > 0)) {
        python_rate_ = std::max(python_rate_, PythonRate(sizes_.import_small));
      }
    }
    const auto large = Import(sizes_.import_large);
    std::printf("memory kwx import %6d files: peak %7.1f MB  (%.1f s, %.0f files/s, best of "
                "%d)\n",
                sizes_.import_small, small.first / 1024.0, small.second,
                sizes_.import_small / small.second, sizes_.repeats);
    import_rate_ = sizes_.import_small / small.second;
    std::printf("memory kwx import %6d files: peak %7.1f MB  (%.1f s)\n", sizes_.import_large,
                large.first / 1024.0, large.second);
    std::printf("raw    batched save              %6d studies: %7.0f studies/s  as a program, "
                "from opening the database to closing it (%.0f/s for the writes alone; in turns "
                "with the imports, best of %d)\n",
                sizes_.import_small, import_raw_program_rate_, import_raw_rate_,
                sizes_.repeats);
    if (pg_) return;  // the plain Python program writes SQLite files only
    if (python_rate_ > 0) {
      std::printf("python plain sqlite3 program    %6d studies: %7.0f studies/s  (the same rows "
                  "by executemany, block keys, a savepoint per study, 50 per commit)\n",
                  sizes_.import_small, python_rate_);
    }
  }

  // Studies a second that a plain Python program writes with the sqlite3 module: the rows of
  // the last captured study, `n` times, with the raw side's guarantees. 0 without python3.
  double PythonRate(int n) {
    const std::string command = "python3 '" KWX_SOURCE_DIR "/bench/plain_python_writer.py' '" +
                                (dir_ / "capture.db").string() + "' " +
                                std::to_string(kCaptureCompanyID) + " '" + FreshDb("python.db") +
                                "' " + std::to_string(n) + " 2>/dev/null";
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return 0;
    char line[64] = {};
    const bool read = std::fgets(line, sizeof line, pipe) != nullptr;
    if (::pclose(pipe) != 0 || !read) {
      std::printf("python plain sqlite3 program: not run (python3 with its sqlite3 module "
                  "is needed)\n");
      return 0;
    }
    return std::atof(line);
  }

  Sizes sizes_;
  fs::path dir_;
  std::vector<std::string> texts_;    // the sample files' bytes
  std::vector<std::string> streams_;  // their texts
  std::vector<std::unique_ptr<RowWriter>> saves_;
  std::vector<std::unique_ptr<StatementReplay>> loads_;
  std::unique_ptr<ScratchDatabases> pg_;  // the server's databases, when measuring on one
  std::vector<std::unique_ptr<PgRowWriter>> pg_saves_;
  std::vector<PgStatementReplay> pg_loads_;
  double save_per_study_ = 0, save_batched_ = 0, load_ = 0, load_scale_ = 0;
  double import_raw_rate_ = 0, import_raw_program_rate_ = 0, import_rate_ = 0, python_rate_ = 0;
};

}  // namespace
}  // namespace kwx::bench

int main(int argc, char** argv) {
  using namespace kwx::bench;
  Sizes sizes;
  std::string engine = "sqlite", uri;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--quick") == 0) {
      sizes.quick = true;
      sizes.save = 300;
      sizes.parse = 3000;
      sizes.repeats = 2;
      sizes.scale_large = 100000;
      sizes.lookups = 500;
      sizes.scale_repeats = 5;
      sizes.import_small = 200;
      sizes.import_large = 1000;
    } else if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc) {
      sizes.only = argv[++i];
    } else if (std::strcmp(argv[i], "--engine") == 0 && i + 1 < argc &&
               (std::strcmp(argv[i + 1], "sqlite") == 0 ||
                std::strcmp(argv[i + 1], "postgresql") == 0)) {
      engine = argv[++i];
    } else if (std::strcmp(argv[i], "--db") == 0 && i + 1 < argc &&
               kwx::IsPostgresUri(argv[i + 1])) {
      uri = argv[++i];
    } else {
      std::fprintf(stderr,
                   "usage: kwx-bench [--quick] [--engine sqlite|postgresql] [--db URI] "
                   "[--only parse|save|load|scale|memory]\n"
                   "  --db: the PostgreSQL server (a postgresql:// URI; default postgresql://, "
                   "the PG* environment), where the benchmark makes databases of its own and "
                   "drops them at the end\n");
      return 2;
    }
  }
  if (engine == "postgresql") {
    sizes.pg_uri = uri.empty() ? "postgresql://" : uri;
  } else if (!uri.empty()) {
    std::fprintf(stderr, "kwx-bench: --db names a PostgreSQL server: add --engine postgresql\n");
    return 2;
  }
  // Before anything opens a connection: SQLite takes process-wide settings only then.
  SetUpRawSqlite();
  kwx::RegisterBuiltinServices();
  const fs::path dir = fs::temp_directory_path() / ("kwx-bench-" + std::to_string(::getpid()));
  fs::create_directories(dir);
  int status = 0;
  try {
    Bench(sizes, dir).Run();
  } catch (const std::exception& e) {
    std::fprintf(stderr, "kwx-bench: %s\n", e.what());
    status = 1;
  }
  fs::remove_all(dir);
  return status;
}
