// Helpers shared by the test programs: error numbers, arrays, temporary folders and files.
#ifndef KWX_TESTS_SUPPORT_TEST_UTIL_H_
#define KWX_TESTS_SUPPORT_TEST_UTIL_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "automation/errors.h"
#include "automation/variant.h"

namespace kwx::testing {

// The error number a statement raises, or 0 when it completes.
template <class F>
int32_t ErrorOf(F&& statement) {
  try {
    statement();
  } catch (const AutomationError& e) {
    return e.number();
  }
  return 0;
}

// A zero-based one-dimensional array of the values.
Variant Array(std::vector<Variant> values);
// A struck-out list as the model keeps it: element 1 is the first item.
Variant Flags(std::vector<bool> items);
// The elements of an array as texts (CStr), "<empty>" for Empty; none for a non-array.
std::vector<std::string> Texts(const Variant& array);

// A folder of its own for the running test, removed (with its contents) at the end.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  std::string File(const std::string& name) const { return (path_ / name).string(); }
  // Where the test keeps a fresh study database, on the engine the tests run on (OnServer):
  // the file `name` in this folder (not made yet), or on PostgreSQL the URI of a new, empty
  // schema of its own in the server KWX_TEST_PG names (dropped with the folder). Empty
  // when that server is not named or cannot be reached: the test then skips.
  std::string Database(const std::string& name) const;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  mutable std::vector<std::string> schemas_;
};

// True when the database tests run on PostgreSQL: the environment variable KWX_TEST_ENGINE
// is "postgresql" (ctest runs the database suites a second time so).
bool OnServer();

std::string ReadFile(const std::string& path);
// Writes `bytes` to `path` as they are; answers the path.
std::string WriteFile(const std::string& path, const std::string& bytes);
std::vector<std::string> ReadLines(const std::string& path);

// The records of a CSV text as a reader that follows RFC 4180 sees them: fields split at
// commas, records at CRLF (or LF), a quoted field may hold commas, line breaks and doubled
// quotes. Answers nothing when a quoted field is not closed or a quote stands inside an
// unquoted field.
std::vector<std::vector<std::string>> ReadCsv(const std::string& text);

}  // namespace kwx::testing

#endif  // KWX_TESTS_SUPPORT_TEST_UTIL_H_
