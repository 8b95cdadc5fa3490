#include "services/data_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "automation/safe_array.h"
#include "automation/services.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::ReadFile;

class DataFileTest : public ::testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& bytes) {
    return testing::WriteFile(tmp_.File(name), bytes);
  }
  static std::vector<std::string> Texts(const Variant& fields) {
    if (fields.IsArray()) {
      EXPECT_EQ(fields.AsArray().LBound(), 0);
    }
    return testing::Texts(fields);
  }

  testing::TempDir tmp_;
  const std::filesystem::path& dir_ = tmp_.path();
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
      {"final line end adds no field", "a\r\nb\r\n", {"a", "b"}},
      {"an empty last line stays", "a\r\n\r\n", {"a", ""}},
      // Line feeds go and carriage returns cut, as in a stream of the same text.
      {"a lone LF inside a field", "1.01\r\nab\ncd\r\nx\r\n", {"1.01", "abcd", "x"}},
      {"mixed", "a\rb\nc\r\nd", {"a", "bc", "d"}},
      {"LF only: the line ends were converted", "a\nb\n\nc\n", {"a", "b", "", "c"}},
      {"UTF-8 with BOM", "\xEF\xBB\xBFZ\xC3\xBCrich\r\n", {"Z\xC3\xBCrich"}},
      {"Windows-1252", "Z\xFCrich\r\nnote\xFE", {"Z\xC3\xBCrich", "note\xC3\xBE"}},
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
      {"plain", {Variant("1.01"), Variant(""), Variant(float(2.5)), Variant("x")},
       "1.01\r\n\r\n2.5\r\nx\r\n"},
      {"code page", {Variant("Z\xC3\xBCrich"), Variant("a\xC3\xBE" "b")},
       "Z\xFCrich\r\na\xFE" "b\r\n"},
      {"beyond the code page", {Variant("\xE6\x9D\xB1\xE4\xBA\xAC")},
       "\xEF\xBB\xBF\xE6\x9D\xB1\xE4\xBA\xAC\r\n"},
      {"empty last field", {Variant("a"), Variant("")}, "a\r\n\r\n"},
      // Code-page bytes that happen to be valid UTF-8 would read back as other letters.
      {"code page bytes read as UTF-8", {Variant("CAF\xC3\x89\xC2\xAE Holdings")},
       "\xEF\xBB\xBF" "CAF\xC3\x89\xC2\xAE Holdings\r\n"},
  };
  for (const Case& c : cases) {
    std::string path = (dir_ / "out.kwx").string();
    Variant fields = testing::Array(c.fields);
    ASSERT_TRUE(file_.blnExport(path, fields)) << c.what;
    EXPECT_EQ(ReadFile(path), c.bytes) << c.what;
    Variant back = file_.vntImportB(path);
    EXPECT_EQ(Texts(back), Texts(fields)) << c.what;
  }
  // A stray code-page byte a study may hold is written as that character; the rest of the
  // file still reads as it was.
  std::string path = (dir_ / "out.kwx").string();
  Variant stray = testing::Array({Variant("1.01"), Variant("a\xFE" "b")});
  ASSERT_TRUE(file_.blnExport(path, stray));
  EXPECT_EQ(ReadFile(path), "1.01\r\na\xFE" "b\r\n");
  EXPECT_EQ(Texts(file_.vntImportB(path)), (std::vector<std::string>{"1.01", "a\xC3\xBE" "b"}));
  // Only the target itself is left behind: no temporary file.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_),
                          std::filesystem::directory_iterator()),
            1);
}

TEST_F(DataFileTest, AFailedExportLeavesTheExistingFileWhole) {
  const std::string original = "old\r\ncontent\r\n";
  std::string path = Write("study.kwx", original);
  Variant fields = testing::Array({Variant("new")});

  Variant not_array("new");
  EXPECT_FALSE(file_.blnExport(path, not_array));
  EXPECT_EQ(ReadFile(path), original);

  Variant nested = testing::Array({Variant(SafeArray::Vector(0, 1))});
  EXPECT_FALSE(file_.blnExport(path, nested));
  EXPECT_EQ(ReadFile(path), original);

  // A line break inside a field would move every later field.
  for (const char* text : {"a\r\nb", "a\rb", "a\nb"}) {
    Variant broken = testing::Array({Variant("x"), Variant(text), Variant("y")});
    EXPECT_FALSE(file_.blnExport(path, broken)) << text;
    EXPECT_EQ(ReadFile(path), original);
  }

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
    EXPECT_EQ(ReadFile(path), original);
  }

  ASSERT_TRUE(file_.blnExport(path, fields));
  EXPECT_EQ(ReadFile(path), "new\r\n");
}

}  // namespace
}  // namespace kwx
