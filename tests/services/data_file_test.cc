#include "services/data_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "automation/registry.h"
#include "automation/safe_array.h"
#include "automation/services.h"
#include "services/builtin_services.h"

namespace kwx {
namespace {

class DataFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = std::filesystem::temp_directory_path() /
           ("kwx_datafile_" + std::to_string(::getpid()) + "_" + info->name());
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override {
    std::filesystem::permissions(dir_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add);
    std::filesystem::remove_all(dir_);
  }

  std::string Write(const std::string& name, const std::string& bytes) {
    std::string path = (dir_ / name).string();
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  static std::string Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  static std::vector<std::string> Texts(const Variant& fields) {
    std::vector<std::string> out;
    if (!fields.IsArray()) return out;
    EXPECT_EQ(fields.AsArray().LBound(), 0);
    for (const Variant& v : fields.AsArray().elements()) out.push_back(v.AsString());
    return out;
  }
  static Variant Fields(std::vector<Variant> values) {
    return Variant(SafeArray::FromValues(std::move(values)));
  }

  std::filesystem::path dir_;
  DataFile file_;
};

TEST_F(DataFileTest, ReadsEveryLineEndAndEncoding) {
  using Lines = std::vector<std::string>;
  struct Case {
    const char* what;
    std::string bytes;
    Lines fields;
  };
  const Case cases[] = {
      {"CR LF", "1.01\r\nabc\r\n\r\nx", {"1.01", "abc", "", "x"}},
      {"CR only", "1.01\rabc\r\rx", {"1.01", "abc", "", "x"}},
      {"LF only", "1.01\nabc\n\nx", {"1.01", "abc", "", "x"}},
      {"final line end adds no field", "a\r\nb\r\n", {"a", "b"}},
      {"an empty last line stays", "a\r\n\r\n", {"a", ""}},
      {"mixed", "a\rb\nc\r\nd", {"a", "b", "c", "d"}},
      {"UTF-8 with BOM", "\xEF\xBB\xBFZ\xC3\xBCrich\r\n", {"Z\xC3\xBCrich"}},
      {"UTF-8 without BOM", "Z\xC3\xBCrich", {"Z\xC3\xBCrich"}},
      {"Windows-1252", "Z\xFCrich\r\nnote\xFE", {"Z\xC3\xBCrich", "note\xC3\xBE"}},
      {"tabs kept", "1\t2\t3\r\n", {"1\t2\t3"}},
  };
  for (const Case& c : cases) {
    std::string path = Write("in.kwx", c.bytes);
    Variant fields = file_.vntImportB(path);
    EXPECT_EQ(Texts(fields), c.fields) << c.what;
  }
}

TEST_F(DataFileTest, AnswersNoArrayForWhatItCannotRead) {
  std::string missing = (dir_ / "missing.kwx").string();
  EXPECT_TRUE(file_.vntImportB(missing).IsEmpty());
  std::string folder = dir_.string();
  EXPECT_TRUE(file_.vntImportB(folder).IsEmpty());
  std::string empty = Write("empty.kwx", "");
  EXPECT_TRUE(file_.vntImportB(empty).IsEmpty());
}

TEST_F(DataFileTest, WritesCrLfInTheNarrowestEncodingAndReadsItBack) {
  struct Case {
    const char* what;
    std::vector<Variant> fields;
    std::string bytes;
  };
  const Case cases[] = {
      {"plain", {Variant("1.01"), Variant(), Variant(float(2.5)), Variant("x")},
       "1.01\r\n\r\n2.5\r\nx\r\n"},
      {"code page", {Variant("Z\xC3\xBCrich"), Variant("a\xC3\xBE" "b")},
       "Z\xFCrich\r\na\xFE" "b\r\n"},
      {"beyond the code page", {Variant("\xE6\x9D\xB1\xE4\xBA\xAC")},
       "\xEF\xBB\xBF\xE6\x9D\xB1\xE4\xBA\xAC\r\n"},
      {"empty last field", {Variant("a"), Variant("")}, "a\r\n\r\n"},
  };
  for (const Case& c : cases) {
    std::string path = (dir_ / "out.kwx").string();
    Variant fields = Fields(c.fields);
    ASSERT_TRUE(file_.blnExport(path, fields)) << c.what;
    EXPECT_EQ(Read(path), c.bytes) << c.what;
    Variant back = file_.vntImportB(path);
    ASSERT_TRUE(back.IsArray()) << c.what;
    EXPECT_EQ(back.AsArray().Count(), static_cast<int32_t>(c.fields.size())) << c.what;
  }
  // Only the target itself is left behind: no temporary file.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_),
                          std::filesystem::directory_iterator()),
            1);
}

TEST_F(DataFileTest, AFailedExportLeavesTheExistingFileWhole) {
  const std::string original = "old\r\ncontent\r\n";
  std::string path = Write("study.kwx", original);
  Variant fields = Fields({Variant("new")});

  Variant not_array("new");
  EXPECT_FALSE(file_.blnExport(path, not_array));
  EXPECT_EQ(Read(path), original);

  Variant nested = Fields({Variant(SafeArray::Vector(0, 1))});
  EXPECT_FALSE(file_.blnExport(path, nested));
  EXPECT_EQ(Read(path), original);

  std::string folder = (dir_ / "folder").string();
  std::filesystem::create_directories(folder);
  EXPECT_FALSE(file_.blnExport(folder, fields));
  EXPECT_TRUE(std::filesystem::is_directory(folder));

  std::string no_parent = (dir_ / "none" / "study.kwx").string();
  EXPECT_FALSE(file_.blnExport(no_parent, fields));

  if (::geteuid() != 0) {  // root writes into read-only folders all the same
    std::filesystem::permissions(dir_, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::remove);
    EXPECT_FALSE(file_.blnExport(path, fields));
    std::filesystem::permissions(dir_, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
    EXPECT_EQ(Read(path), original);
  }

  ASSERT_TRUE(file_.blnExport(path, fields));
  EXPECT_EQ(Read(path), "new\r\n");
}

TEST_F(DataFileTest, IsRegisteredUnderBothProgIds) {
  RegisterBuiltinServices();
  for (const char* prog_id : {progid::kDataFile, progid::kDataFileSP}) {
    EXPECT_NE(CreateObjectAs<IDataFile>(prog_id), nullptr) << prog_id;
  }
}

}  // namespace
}  // namespace kwx
