// Stream_Get of arbitrary bytes, in both layouts, through a loader with a database open. The
// mapping may add reference names, but never saves or changes a study, and never crashes (the
// fuzz build runs under AddressSanitizer and UndefinedBehaviorSanitizer).
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "loader/kwx_loader.h"
#include "model/company.h"
#include "services/create_database.h"
#include "tests/fuzz/scratch_dir.h"

namespace {

std::string StudiesDatabase() {
  const std::filesystem::path dir = kwx::fuzz::ScratchDir("kwx_fuzz_stream");
  const std::string path = (dir / "studies.db").string();
  if (!kwx::CreateDatabase(path).ok()) std::abort();
  return path;
}

std::string Studies(kwx::kwxLoader& loader) {
  kwx::Variant data, fields;
  loader.Access_GetCompanies("select count(*) from Company", data, fields);
  return data.IsArray() ? kwx::CStr(data.AsArray()(0, 0)) : "none";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  static const std::string path = StudiesDatabase();
  static kwx::kwxLoader* loader = new kwx::kwxLoader();
  // The names an input adds are rolled back with it; the loader's caches, which keep them,
  // are read afresh now and then, so neither the tables nor the caches grow without end.
  static int runs = 0;
  if (runs++ % 200 == 0 && !loader->Access_blnOpenDatabase(path)) std::abort();
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  const std::string before = Studies(*loader);
  loader->database()->BeginTrans();
  for (kwx::enumDataFile layout : {kwx::idSSG, kwx::idKWX}) {
    kwx::Company company;
    loader->Stream_Get(text, company, layout);
  }
  if (Studies(*loader) != before) {
    std::fprintf(stderr, "finding: Stream_Get changed the saved studies\n");
    std::abort();
  }
  loader->database()->RollbackTrans();
  loader->ClearErrorReports();
  return 0;
}
