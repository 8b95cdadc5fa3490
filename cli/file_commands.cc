// kwx import FILE... | kwx read FILE --json | kwx export ID|SYMBOL EXCHANGE OUT
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/errors.h"
#include "automation/registry.h"
#include "cli/commands.h"
#include "cli/context.h"
#include "cli/error_reports.h"
#include "cli/progress.h"
#include "cli/read_ahead.h"
#include "cli/study_lookup.h"
#include "import/layout_check.h"
#include "json/company_json.h"
#include "model/company.h"
#include "services/data_file.h"
#include "studies/study_import.h"

namespace kwx::cli {
namespace {

// The name that stands for standard input.
constexpr const char* kStandardInput = "-";

// Why `path` cannot be a data file to read ("'x': no such file", "'x' is a directory, not a
// data file"), or "" when it may be one. Standard input always may.
std::string NotADataFile(const std::string& path) {
  if (path == kStandardInput) return "";
  std::error_code ec;
  if (!std::filesystem::exists(path, ec)) return "'" + path + "': no such file";
  if (std::filesystem::is_directory(path, ec)) {
    return "'" + path + "' is a directory, not a data file";
  }
  return "";
}

// The layout of `path`: `forced` when given, else the file's extension. Raises CommandError
// (exit 2) when neither names one.
enumDataFile FormatOf(const std::string& path, const std::string& forced) {
  std::error_code ec;
  if (path != kStandardInput && std::filesystem::is_directory(path, ec)) {
    throw CommandError(NotADataFile(path), 2);
  }
  if (forced.empty() && path == kStandardInput) return idSSG;  // a stream without a format is SSG
  if (const auto format = forced.empty() ? LayoutOfFile(path) : LayoutNamed(forced)) {
    return *format;
  }
  throw CommandError("cannot tell the layout of '" + path + "' (use --format ssg|kwx)", 2);
}

// A data file read, split and mapped ahead of its save, on the reading thread.
struct FileAhead {
  std::string not_a_file;   // NotADataFile of the path
  Variant fields;           // Empty for a file that could not be read
  Company study;            // the fields mapped onto a fresh study (kwxLoader::MapFields)
  bool has_layout = false;  // FieldsHaveLayout of the fields and the file's format
  bool mapped = false;      // MapFields' answer, when they have it
};

// Reads one study from `path` into `company`: from `ahead` when the file was read ahead (then
// `company` is the study mapped ahead, taken from it), else by reading it; standard input
// ("-") is decoded and split as a file is. Answers "" on success, else why nothing was read.
// A file whose fields have the other layout is refused before any reference row is added for
// it.
std::string ReadStudy(Context& ctx, kwxLoader& loader, const std::string& path, enumDataFile format,
                      Company& company, FileAhead* ahead = nullptr) {
  if (std::string why = ahead ? ahead->not_a_file : NotADataFile(path); !why.empty()) return why;
  ImportStatus status;
  if (path == kStandardInput) {
    const std::string bytes(std::istreambuf_iterator<char>(*ctx.in), {});
    status = ReadStudyText(loader, StreamTextOfDataFile(bytes), format, "'" + path + "'", company);
  } else if (ahead != nullptr) {
    status = ReadMappedStudyFields(loader, ahead->fields, path, format, company,
                                   ahead->has_layout, ahead->mapped);
  } else {
    status = ReadStudyFile(loader, path, format, company);
  }
  if (status.problem == ImportProblem::kNotThatLayout) {
    return "'" + path + "' does not have the " + std::string(LayoutName(format)) +
           " layout (is --format right?); nothing imported";
  }
  return status.ok() ? "" : status.message;
}

// Studies saved per outer transaction of a bulk import. Each study's own save nests inside
// and rolls back alone; a batch commits whole studies only, and a study is reported as
// imported only once the batch holding it has committed.
constexpr size_t kImportBatch = 50;

struct ImportArgs {
  std::vector<std::string> files;
  std::string format;
  bool defaults = false;
  bool new_study = false;
  bool quiet = false;
};

struct ReadArgs {
  std::string file;
  std::string format;
  bool json = false;
  bool defaults = false;
};

// Imports and saves one file in a transaction level of its own inside the open batch. A study
// whose symbol and exchange are saved already is refreshed in place (same CompanyID) unless
// `saved` is null (--new asks for a second one). Answers the line to print once the batch has
// committed, or nothing when the file was not saved (the reason already written to `err`).
// `ahead` is the file as read ahead.
std::optional<std::string> ImportOne(Context& ctx, kwxLoader& loader, StudyIndex* saved,
                                     const std::string& file, enumDataFile format,
                                     const ImportArgs& args, FileAhead* ahead) {
  // A study mapped ahead is saved where it lies (it goes back to the reading thread to be
  // freed), not made afresh only to be replaced.
  std::optional<Company> own;
  Company& company = ahead != nullptr ? ahead->study : own.emplace();
  if (std::string why = ReadStudy(ctx, loader, file, format, company, ahead); !why.empty()) {
    *ctx.err << "kwx: " << why << "\n";
    return std::nullopt;
  }
  if (args.defaults) loader.ComputeDefaults(company);
  const ImportSave save = SaveImportedStudy(loader, saved, format, company);
  PrintErrorReports(loader, *ctx.err);
  switch (save.outcome) {
    case ImportSave::Outcome::kAmbiguous:
      *ctx.err << "kwx: '" << file << "' not imported: " << save.message
               << "; delete the extra ones, or import with --new\n";
      return std::nullopt;
    case ImportSave::Outcome::kNotSaved:
      *ctx.err << "kwx: '" << file << "' could not be saved"
               << (save.message.empty() ? "" : " (" + save.message + ")") << "\n";
      return std::nullopt;
    case ImportSave::Outcome::kSaved:
      break;
  }
  return std::to_string(company.CompanyID) + "\t" + company.strSymbol + "\t" + company.strName +
         (save.refreshed ? "\tupdated" : "") + "\n";
}

// Sends the context's error stream to `to` while it lives.
class ErrTo {
 public:
  ErrTo(Context& ctx, std::ostream& to) : ctx_(ctx), saved_(ctx.err) { ctx.err = &to; }
  ~ErrTo() { ctx_.err = saved_; }
  ErrTo(const ErrTo&) = delete;
  ErrTo& operator=(const ErrTo&) = delete;

 private:
  Context& ctx_;
  std::ostream* saved_;
};

struct ExportArgs {
  std::vector<std::string> words;  // the study's ID or symbol and exchange, then the file
};

}  // namespace

void AddFileCommands(CLI::App& app, Context& ctx) {
  const auto formats = CLI::IsMember({"ssg", "kwx"});

  auto im = std::make_shared<ImportArgs>();
  auto* import = app.add_subcommand(
      "import",
      "import SSG or KWX files ('-' reads standard input) and save each study; a study saved "
      "already (same symbol and exchange) is refreshed in place");
  import->add_option("FILE", im->files, "data files (.ssg or .kwx)")->required();
  import->add_option("--format", im->format, "the layout of every file")->check(formats);
  import->add_flag("--defaults", im->defaults,
                   "fill each study's unset analysis defaults before saving it");
  import->add_flag("--new", im->new_study,
                   "save each study as a new one even when its symbol and exchange are saved "
                   "already (by default that study is refreshed in place)");
  import->add_flag("--quiet,-q", im->quiet,
                   "print only what went wrong: no line per study, no progress bar and no "
                   "summary");
  import->callback([&ctx, im] {
    const size_t total = im->files.size();
    // Every layout is settled before anything is saved: bad usage stops the command whole.
    std::vector<enumDataFile> formats;
    for (const std::string& file : im->files) formats.push_back(FormatOf(file, im->format));
    kwxLoader& loader = ctx.OpenLoader();
    if (!loader.database()) throw CommandError("no database object");
    IDatabase& db = *loader.database();
    // The saved studies a file may refresh, read once for the whole import.
    std::optional<StudyIndex> index;
    if (!im->new_study) index.emplace(loader);
    // The files are read, split and mapped on a thread of their own, a few ahead of the saves,
    // by a data-file object of the loader's kind (the loader's own serves the saves' thread).
    // What uses the database (reference rows) stays with the saves.
    std::optional<ReadAhead<FileAhead>> ahead;
    if (total > 1) {
      const int32_t platform = loader.ProgramPlatform();
      const char* kind = platform == kPlatformSP ? progid::kDataFileSP : progid::kDataFile;
      if (std::shared_ptr<IDataFile> reader = CreateObjectAs<IDataFile>(kind)) {
        ahead.emplace(total, [reader, platform, im, &formats](size_t i) {
          FileAhead file;
          if (im->files[i] == kStandardInput) return file;
          file.not_a_file = NotADataFile(im->files[i]);
          std::string name = im->files[i];
          file.fields = reader->vntImportB(name);
          file.has_layout = file.fields.IsArray() && FieldsHaveLayout(file.fields, formats[i]);
          if (file.has_layout) {
            file.mapped = kwxLoader::MapFields(file.fields, file.study, formats[i], platform);
          }
          return file;
        });
      }
    }
    ProgressBar bar(*ctx.err, !im->quiet && ctx.err_is_terminal && total > 1, total);
    size_t failed = 0;
    std::string stopped;  // why the files left cannot be imported, once that is so
    for (size_t start = 0; start < total; start += kImportBatch) {
      const size_t end = std::min(total, start + kImportBatch);
      if (!stopped.empty()) {
        bar.Clear();
        for (size_t i = start; i < end; ++i) {
          *ctx.err << "kwx: '" << im->files[i] << "' not imported: " << stopped << "\n";
        }
        failed += end - start;
        continue;
      }
      std::vector<std::pair<std::string, std::string>> saved;  // file, line to print
      try {
        db.BeginTrans();
        try {
          // With the write lock held: the studies other programs saved since the index was
          // read, so that two imports of one file at once refresh one study, not add two.
          if (index) index->Refresh();
        } catch (...) {
          ResumeNext([&] { db.RollbackTrans(); });
          throw;
        }
      } catch (const std::exception& e) {
        bar.Clear();
        for (size_t i = start; i < end; ++i) {
          *ctx.err << "kwx: '" << im->files[i] << "' not imported: " << ctx.Reason(e.what())
                   << "\n";
        }
        failed += end - start;
        bar.Update(end);
        continue;
      }
      for (size_t i = start; i < end; ++i) {
        // What the file has to say is written above the bar, which otherwise stays drawn and
        // is redrawn at its own pace rather than once per file.
        std::ostringstream notes;
        std::optional<std::string> line;
        {
          ErrTo to_notes(ctx, notes);
          try {
            std::unique_ptr<FileAhead> file = ahead ? ahead->Take(i) : nullptr;
            line = ImportOne(ctx, loader, index ? &*index : nullptr, im->files[i], formats[i],
                             *im, im->files[i] != kStandardInput ? file.get() : nullptr);
            if (ahead) ahead->Discard(std::move(file));
          } catch (const std::exception& e) {
            notes << "kwx: '" << im->files[i] << "' not imported: " << ctx.Reason(e.what()) << "\n";
          }
        }
        if (!notes.view().empty()) {
          bar.Clear();
          *ctx.err << notes.view();
        }
        if (line) {
          saved.emplace_back(im->files[i], std::move(*line));
        } else {
          ++failed;
        }
        bar.Update(i + 1);
      }
      bar.Clear();
      try {
        db.CommitTrans();
      } catch (const std::exception& e) {
        for (const auto& [file, line] : saved) {
          *ctx.err << "kwx: '" << file << "' not imported: " << ctx.Reason(e.what()) << "\n";
        }
        failed += saved.size();
        saved.clear();
        // Reference rows added inside the batch went with it; the caches must not keep them.
        loader.Access_blnOpenDatabase(ctx.options.db_path);
        try {
          if (index) index.emplace(loader);
        } catch (const std::exception& e) {
          // Without the saved studies a file would be added beside the study it refreshes.
          stopped = ctx.Reason(e.what());
        }
      }
      if (!im->quiet) {
        for (const auto& [file, line] : saved) *ctx.out << line;
      }
      ctx.out->flush();
    }
    bar.Clear();
    if (!im->quiet) {
      char rate[32];
      std::snprintf(rate, sizeof rate, "%.1f", bar.Rate(total));
      *ctx.err << "kwx: imported " << (total - failed) << " of " << total << " files (" << rate
               << " studies/s)\n";
    }
    if (failed > 0) {
      throw CommandError(std::to_string(failed) + " of " + std::to_string(total) +
                         " files not imported");
    }
  });

  auto rd = std::make_shared<ReadArgs>();
  auto* read = app.add_subcommand(
      "read", "read an SSG or KWX file ('-' for standard input) without saving it");
  read->add_option("FILE", rd->file, "the data file")->required();
  read->add_option("--format", rd->format, "the file's layout")->check(formats);
  read->add_flag("--json", rd->json, "print the whole study as JSON");
  read->add_flag("--defaults", rd->defaults, "fill the study's unset analysis defaults first");
  read->callback([&ctx, &app, rd] {
    // Names are reconciled with a database only when the user named one.
    const bool named_db = app.get_option("--db")->count() > 0 || std::getenv("KWX_DB");
    kwxLoader& loader = named_db ? ctx.OpenLoader() : ctx.Loader();
    Company company;
    const std::string why =
        ReadStudy(ctx, loader, rd->file, FormatOf(rd->file, rd->format), company);
    if (!why.empty()) throw CommandError(why);
    if (rd->defaults) loader.ComputeDefaults(company);
    if (rd->json) {
      *ctx.out << CompanyJson(company).dump(2) << "\n";
    } else {
      *ctx.out << company.strSymbol << "\t" << company.strName << "\n";
    }
  });

  auto ex = std::make_shared<ExportArgs>();
  auto* exp = app.add_subcommand(
      "export", "write a saved study (by ID, or SYMBOL EXCHANGE) to OUT.kwx or OUT.ssg");
  exp->add_option("STUDY", ex->words, "ID OUT, or SYMBOL EXCHANGE OUT")->required()->expected(1, 3);
  exp->callback([&ctx, ex] {
    if (ex->words.size() < 2) {
      throw CommandError("export needs the study (ID, or SYMBOL EXCHANGE) and the file to write",
                         2);
    }
    ctx.reads_only = true;
    const std::string out = ex->words.back();
    const enumDataFile format = FormatOf(out, "");
    Company company =
        LoadStudy(ctx, std::vector<std::string>(ex->words.begin(), ex->words.end() - 1));
    kwxLoader& loader = ctx.OpenLoader();
    const bool written = format == idKWX ? loader.KWX_Update(company, out)
                                         : loader.SSG_Update(company, out);
    if (!written) throw CommandError("cannot write '" + out + "'");
    *ctx.out << out << "\n";
  });
}

}  // namespace kwx::cli
