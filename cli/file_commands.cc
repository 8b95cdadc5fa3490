// kwx import FILE... | kwx read FILE --json | kwx export ID|SYMBOL EXCHANGE OUT
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "automation/text.h"
#include "cli/commands.h"
#include "cli/company_json.h"
#include "cli/context.h"
#include "cli/progress.h"
#include "cli/study_lookup.h"
#include "import/layout_check.h"
#include "model/company.h"
#include "services/data_file.h"

namespace kwx::cli {
namespace {

// The name that stands for standard input.
constexpr const char* kStandardInput = "-";

// The layout of `path`: `forced` when given, else the file's extension. Raises CommandError
// (exit 2) when neither names one.
enumDataFile FormatOf(const std::string& path, const std::string& forced) {
  std::string name = forced;
  if (name.empty()) {
    if (path == kStandardInput) return idSSG;  // a stream without a format is SSG
    name = std::filesystem::path(path).extension().string();
    if (!name.empty()) name.erase(0, 1);
  }
  if (EqualsNoCase(name, "ssg")) return idSSG;
  if (EqualsNoCase(name, "kwx")) return idKWX;
  throw CommandError("cannot tell the layout of '" + path + "' (use --format ssg|kwx)", 2);
}

// The field array `path` (or standard input, whose text is kept in `stream`) gives: the
// reader's for a file, the stream's split of the decoded text for standard input, which is
// decoded and split as a file is.
Variant FieldsOf(Context& ctx, kwxLoader& loader, const std::string& path, std::string& stream) {
  if (path == kStandardInput) {
    const std::string bytes(std::istreambuf_iterator<char>(*ctx.in), {});
    stream = StreamTextOfDataFile(bytes);
    return SplitStreamFields(stream);
  }
  if (!loader.reader()) return Variant();
  std::string name = path;
  return loader.reader()->vntImportB(name);
}

// Reads one study from `path` (or standard input) into `company`. The loader is silent about
// files it cannot read, so a study without a symbol counts as nothing imported. A file whose
// fields have the other layout is refused before anything is mapped, with the reason written
// to `err`.
bool ReadStudy(Context& ctx, kwxLoader& loader, const std::string& path, enumDataFile format,
               Company& company) {
  std::string stream;
  const Variant fields = FieldsOf(ctx, loader, path, stream);
  if (fields.IsArray() && !FieldsHaveLayout(fields, format)) {
    *ctx.err << "kwx: '" << path << "' does not have the " << LayoutName(format)
             << " layout (is --format right?)\n";
    return false;
  }
  if (path == kStandardInput) {
    loader.Stream_Get(stream, company, format);
  } else if (format == idKWX) {
    loader.KWX_Get(path, company);
  } else {
    loader.SSG_Get(path, company);
  }
  return !company.strSymbol.empty();
}

// Studies saved per outer transaction of a bulk import. Each study's own save nests inside
// and rolls back alone; a batch commits whole studies only.
constexpr size_t kImportBatch = 50;

struct ImportArgs {
  std::vector<std::string> files;
  std::string format;
  bool defaults = false;
};

struct ReadArgs {
  std::string file;
  std::string format;
  bool json = false;
  bool defaults = false;
};

// The KWX layout carries the industry's name but, unlike SSG, the loader adds no Industry row
// for it, and a save resolves a name the table lacks to no industry. The command adds the row
// so that an imported study keeps its industry.
void KeepIndustry(kwxLoader& loader, const Company& company) {
  if (!company.IndustryID.empty()) loader.Access_AddIndustry(company.IndustryID);
}

// Imports and saves one file; answers the saved study's ID, 0 when nothing was saved (the
// reason already written to `err`).
int32_t ImportOne(Context& ctx, kwxLoader& loader, const std::string& file,
                  const ImportArgs& args) {
  Company company;
  const enumDataFile format = FormatOf(file, args.format);
  if (!ReadStudy(ctx, loader, file, format, company)) {
    *ctx.err << "kwx: nothing imported from '" << file << "'\n";
    return 0;
  }
  if (args.defaults) loader.ComputeDefaults(company);
  if (format == idKWX) KeepIndustry(loader, company);  // the SSG import stored it already
  loader.Access_Update(company);
  PrintErrorReports(loader, *ctx.err);
  if (company.CompanyID < 1) {
    *ctx.err << "kwx: '" << file << "' could not be saved\n";
    return 0;
  }
  *ctx.out << company.CompanyID << "\t" << company.strSymbol << "\t" << company.strName << "\n";
  return company.CompanyID;
}

struct ExportArgs {
  std::vector<std::string> words;  // the study's ID or symbol and exchange, then the file
};

}  // namespace

void AddFileCommands(CLI::App& app, Context& ctx) {
  const auto formats = CLI::IsMember({"ssg", "kwx"});

  auto im = std::make_shared<ImportArgs>();
  auto* import = app.add_subcommand(
      "import", "import SSG or KWX files ('-' reads standard input) and save each study");
  import->add_option("FILE", im->files, "data files (.ssg or .kwx)")->required();
  import->add_option("--format", im->format, "the layout of every file")->check(formats);
  import->add_flag("--defaults", im->defaults,
                   "fill each study's unset analysis defaults before saving it");
  import->callback([&ctx, im] {
    kwxLoader& loader = ctx.OpenLoader();
    IDatabase* db = loader.database().get();
    const size_t total = im->files.size();
    ProgressBar bar(*ctx.err, ctx.err_is_terminal && total > 1, total);
    size_t failed = 0;
    for (size_t i = 0; i < total; ++i) {
      if (db && i % kImportBatch == 0) db->BeginTrans();
      bar.Clear();
      if (ImportOne(ctx, loader, im->files[i], *im) == 0) ++failed;
      ctx.out->flush();
      if (db && (i % kImportBatch == kImportBatch - 1 || i + 1 == total)) db->CommitTrans();
      bar.Update(i + 1);
    }
    bar.Clear();
    if (total > 1) {
      char rate[32];
      std::snprintf(rate, sizeof rate, "%.1f", bar.Rate(total));
      *ctx.err << "kwx: imported " << (total - failed) << " of " << total << " files ("
               << rate << " studies/s)\n";
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
    if (!ReadStudy(ctx, loader, rd->file, FormatOf(rd->file, rd->format), company)) {
      throw CommandError("nothing imported from '" + rd->file + "'");
    }
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
  exp->add_option("STUDY_AND_FILE", ex->words, "ID OUT, or SYMBOL EXCHANGE OUT")
      ->required()
      ->expected(2, 3);
  exp->callback([&ctx, ex] {
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
