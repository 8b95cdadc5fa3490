// A folder of a fuzz target's own for its database files, removed when the fuzzer ends.
#ifndef KWX_TESTS_FUZZ_SCRATCH_DIR_H_
#define KWX_TESTS_FUZZ_SCRATCH_DIR_H_

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace kwx::fuzz {

// A fresh, empty folder named after `target` and the process; one per target and process.
inline std::filesystem::path ScratchDir(std::string_view target) {
  const std::filesystem::path dir = std::filesystem::temp_directory_path() /
                                    (std::string(target) + "_" + std::to_string(getpid()));
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir);
  static std::string made;
  made = dir.string();
  std::atexit([] {
    std::error_code ec;
    std::filesystem::remove_all(made, ec);
  });
  return dir;
}

}  // namespace kwx::fuzz

#endif  // KWX_TESTS_FUZZ_SCRATCH_DIR_H_
