#include "tests/support/test_util.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string_view>
#include <iterator>

#include "automation/conversions.h"
#include "automation/safe_array.h"
#include "services/postgres_database.h"

namespace kwx::testing {

Variant Array(std::vector<Variant> values) {
  return Variant(SafeArray::FromValues(std::move(values)));
}

Variant Flags(std::vector<bool> items) {
  SafeArray a = SafeArray::Vector(1, static_cast<int32_t>(items.size()));
  for (size_t i = 0; i < items.size(); ++i) a(static_cast<int32_t>(i) + 1) = Variant(bool{items[i]});
  return Variant(std::move(a));
}

std::vector<std::string> Texts(const Variant& array) {
  std::vector<std::string> out;
  if (!array.IsArray()) return out;
  for (const Variant& e : array.AsArray().elements()) {
    out.push_back(e.IsEmpty() ? "<empty>" : CStr(e));
  }
  return out;
}

bool OnServer() {
  const char* engine = std::getenv("KWX_TEST_ENGINE");
  return engine != nullptr && std::string_view(engine) == "postgresql";
}

namespace {

// The server named by KWX_TEST_PG with at most 5 seconds to answer, so that a server that went
// away fails the tests quickly instead of hanging them; empty when none is named.
std::string TestServer() {
  const char* uri = std::getenv("KWX_TEST_PG");
  if (uri == nullptr || !IsPostgresUri(uri)) return "";
  const std::string base(uri);
  return base + (base.find('?') == std::string::npos ? "?" : "&") + "connect_timeout=5";
}

bool RunOnServer(const std::string& sql) {
  PostgresDatabase db;
  std::string server = TestServer();
  Variant fields, data;
  return !server.empty() && db.blnOpenDatabase(server) && db.blnExecute(sql, fields, data);
}

}  // namespace

std::string TempDir::Database(const std::string& name) const {
  if (!OnServer()) return File(name);
  static int made = 0;
  const std::string schema = "kwx_test_" + std::to_string(::getpid()) + "_" + std::to_string(++made);
  if (!RunOnServer("CREATE SCHEMA " + schema)) return "";
  schemas_.push_back(schema);
  return TestServer() + "&options=-csearch_path%3D" + schema;
}

TempDir::TempDir() {
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string name = "kwx_" + std::to_string(::getpid());
  if (info != nullptr) name += std::string("_") + info->test_suite_name() + "_" + info->name();
  path_ = std::filesystem::temp_directory_path() / name;
  std::filesystem::remove_all(path_);
  std::filesystem::create_directories(path_);
}

TempDir::~TempDir() {
  for (const std::string& schema : schemas_) RunOnServer("DROP SCHEMA " + schema + " CASCADE");
  std::error_code ec;
  std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                               std::filesystem::perm_options::add, ec);
  std::filesystem::remove_all(path_, ec);
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

std::vector<std::string> ReadLines(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<std::vector<std::string>> ReadCsv(const std::string& text) {
  std::vector<std::vector<std::string>> records;
  std::vector<std::string> record;
  std::string field;
  size_t i = 0;
  while (i < text.size()) {
    if (text[i] == '"' && field.empty()) {
      for (++i;; ++i) {
        if (i >= text.size()) return {};
        if (text[i] == '"') {
          if (i + 1 < text.size() && text[i + 1] == '"') {
            field += text[++i];
            continue;
          }
          ++i;
          break;
        }
        field += text[i];
      }
      if (i < text.size() && text[i] != ',' && text[i] != '\r' && text[i] != '\n') return {};
      continue;
    }
    const char c = text[i++];
    if (c == '"') return {};
    if (c == ',') {
      record.push_back(std::move(field));
      field.clear();
    } else if (c == '\r' || c == '\n') {
      if (c == '\r' && i < text.size() && text[i] == '\n') ++i;
      record.push_back(std::move(field));
      field.clear();
      records.push_back(std::move(record));
      record.clear();
    } else {
      field += c;
    }
  }
  if (!field.empty() || !record.empty()) {
    record.push_back(std::move(field));
    records.push_back(std::move(record));
  }
  return records;
}

}  // namespace kwx::testing
