#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "automation/dates.h"
#include "automation/registry.h"
#include "automation/safe_array.h"
#include "automation/text.h"
#include "import/kwx_layout.h"
#include "loader/kwx_loader.h"
#include "model/company.h"
#include "services/create_database.h"
#include "tests/support/recording_database.h"
#include "tests/support/test_util.h"

namespace kwx {
namespace {

using testing::RecordingDatabase;

// A loader whose database object is a recording double, opened.
struct RecordingLoader {
  std::shared_ptr<RecordingDatabase> db = std::make_shared<RecordingDatabase>();
  ScopedRegistration guard{progid::kDatabase, [this] { return db; }};
  kwxLoader loader;
  RecordingLoader() {
    loader.Access_blnOpenDatabase("study.db");
    db->statements.clear();
  }
  std::vector<std::string> Inserts() const {
    std::vector<std::string> out;
    for (const std::string& s : db->statements) {
      if (s.rfind("insert", 0) == 0 || s.rfind("Insert", 0) == 0) out.push_back(s);
    }
    return out;
  }
};

// A KWX text with the given lines set (positions not given are empty), ended by `eol`.
std::string KwxText(std::vector<std::pair<int, std::string>> set, const std::string& eol) {
  std::vector<std::string> lines(372);
  lines[0] = "1.01";
  for (auto& [pos, text] : set) lines[pos] = text;
  std::string out;
  for (const std::string& line : lines) out += line + eol;
  return out;
}

using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;

// Gives every position the KWX layout carries a value of its kind, distinct per position.
void FillLayoutFields(Company& c) {
  auto fill = [&c](const KwxField& f) {
    Object* target = &c;
    switch (f.target) {
      case KwxTarget::kCheckList: target = &c.JudgmentCheckList; break;
      case KwxTarget::kGraph: target = &c.JudgmentGraph; break;
      case KwxTarget::kAnalysis: target = &c.JudgmentAnalysis; break;
      case KwxTarget::kPrefProc: target = &c.JudgmentPrefProc; break;
      case KwxTarget::kStockReport: target = &c.JudgmentStockReport; break;
      case KwxTarget::kAssessment: target = &c.JudgmentAssessment; break;
      case KwxTarget::kOptions: target = &c.Options; break;
      default: break;
    }
    const int p = f.position;
    switch (f.kind) {
      case KwxKind::kText: target->SetProperty(f.name, Variant("t" + std::to_string(p))); break;
      case KwxKind::kNumber:
      case KwxKind::kSingle:
      case KwxKind::kInteger:
        target->SetProperty(f.name, Variant(static_cast<float>(p % 100) + 0.5f));
        break;
      case KwxKind::kAsIs: target->SetProperty(f.name, Variant(int16_t(p % 2 ? -1 : 2))); break;
      case KwxKind::kDate:
      case KwxKind::kUpdated:
        target->SetProperty(f.name, Variant(DateSerial(2000 + p % 20, 1 + p % 12, 1 + p % 28)));
        break;
      case KwxKind::kSeries: {
        SafeArray values = SafeArray::Vector(0, f.count - 1);
        for (int i = 0; i < f.count; ++i) values(i) = Variant(static_cast<float>(p) + i * 0.25f);
        c.SetSeriesColumn(f.target == KwxTarget::kYearly      ? "Yearly"
                          : f.target == KwxTarget::kQuarterly ? "Quarterly"
                          : f.target == KwxTarget::kMonthly   ? "Monthly"
                                                              : "JudgmentPMG",
                          f.name, Variant(std::move(values)));
        break;
      }
      case KwxKind::kFlags: {
        SafeArray flags = SafeArray::Vector(0, f.count - 1);
        for (int i = 0; i < f.count; ++i) flags(i) = Variant((i + p) % 3 == 0);
        target->SetProperty(f.name, Variant(std::move(flags)));
        break;
      }
      case KwxKind::kInts: c.JudgmentStockReport.strSSR0GAP = "1\t0\t3\t-4\t5\t6\t7\t8\t9\t10\t11\t12\t13"; break;
      case KwxKind::kLatestMonth: c.datLatestMData = DateSerial(2008, 12, 31); break;
      case KwxKind::kPMGYear: c.intLatestPMGFY = 2030; break;
      case KwxKind::kNotes: c.Notes = "first line\r\nsecond line\r\n\r\nlast"; break;
      case KwxKind::kExtra: c.sngKWXExtra = 2.75f; break;
      case KwxKind::kPertCount:
      case KwxKind::kPertRows:
        c.JudgmentPERT = {{1, -0.5f, 1.5f}, {2, -1, 2}, {5, 0, 0.125f}};
        break;
    }
  };
  for (const KwxField& f : kKwxCompanyLayout) fill(f);
  for (const KwxField& f : kKwxJudgmentLayout) fill(f);
  // Derived on import: a dilution of 0 needs no share counts.
  c.sngACS = 0;
  c.sngCSO = 0;
  c.sngPotDilution = 0;
}

TEST(ImportDispatch, StreamLineEndsAndFormats) {
  const std::vector<std::pair<int, std::string>> lines = {{3, "Acme"}, {4, "ACM"}, {12, "Tools"}};
  kwxLoader loader;
  Company crlf, cr, lf_only;
  loader.Stream_Get(KwxText(lines, "\r\n"), crlf, idKWX);
  loader.Stream_Get(KwxText(lines, "\r"), cr, idKWX);
  EXPECT_EQ(crlf.strName, "Acme");
  EXPECT_EQ(DescribeDifferences(crlf, cr), "");

  // An empty text does nothing at all, not even the dilution step.
  Company untouched;
  untouched.sngPotDilution = 7;
  loader.Stream_Get("", untouched, idKWX);
  EXPECT_EQ(untouched.sngPotDilution, 7.0f);

  // Without a format the text is SSG: its industry step sets IndustryID from line 243.
  std::vector<std::string> ssg(250, "");
  ssg[243] = "Machinery";
  std::string ssg_text;
  for (const std::string& line : ssg) ssg_text += line + "\r\n";
  Company as_ssg;
  loader.Stream_Get(ssg_text, as_ssg);
  EXPECT_EQ(as_ssg.IndustryID, "Machinery");
  Company as_kwx;
  loader.Stream_Get(KwxText(lines, "\r\n"), as_kwx, idKWX);
  EXPECT_EQ(as_kwx.IndustryID, "Tools");

  // A file gives the positions a stream of its text gives, a lone LF inside a field included.
  TempDir dir;
  const std::string text = KwxText({{3, "Acme\nCorp"}, {4, "ACM"}, {12, "Tools"}}, "\r\n");
  Company from_file, from_stream;
  loader.KWX_Get(testing::WriteFile(dir.File("lf.kwx"), text), from_file);
  loader.Stream_Get(text, from_stream, idKWX);
  EXPECT_EQ(from_file.strSymbol, "ACM");
  EXPECT_EQ(DescribeDifferences(from_file, from_stream), "");
}

// A reused Company comes out of either import with exactly a file's series lengths.
TEST(ImportDispatch, ImportGivesExactlyTheSeriesLengthsOfAFile) {
  std::string ssg_text;
  for (int i = 0; i < 942; ++i) ssg_text += "1\r\n";
  kwxLoader loader;
  for (const auto& [text, format] :
       {std::pair{ssg_text, idSSG}, std::pair{KwxText({{4, "ACM"}}, "\r\n"), idKWX}}) {
    Company company;
    company.Yearly.resize(12);
    company.Quarterly.resize(3);
    company.Monthly.resize(80);
    company.JudgmentPMG.resize(7);
    loader.Stream_Get(text, company, format);
    EXPECT_EQ(company.Yearly.size(), 10u) << format;
    EXPECT_EQ(company.Quarterly.size(), 36u) << format;
    EXPECT_EQ(company.Monthly.size(), 72u) << format;
    EXPECT_EQ(company.JudgmentPMG.size(), 5u) << format;
  }
}

// The members stay silent, and the loader keeps why the latest import gave no study; a good
// import clears it.
TEST(ImportDispatch, LastImportStatusSaysWhyNothingWasRead) {
  TempDir tmp;
  std::string ssg_text;
  for (int i = 0; i < 942; ++i) ssg_text += "1\r\n";
  const std::string ssg = WriteFile(tmp.File("a.ssg"), ssg_text);
  const std::string kwx =
      WriteFile(tmp.File("a.kwx"), KwxText({{4, "ACM"}, {124, "1\t2"}}, "\r\n"));
  const std::string empty = WriteFile(tmp.File("empty.kwx"), "");
  struct Case {
    std::string path;
    enumDataFile format;
    ImportProblem problem;
    std::string message;
  };
  const Case cases[] = {
      {kwx, idKWX, ImportProblem::kNone, ""},
      {tmp.File("none.kwx"), idKWX, ImportProblem::kNoSuchFile,
       "no such file: '" + tmp.File("none.kwx") + "'"},
      {ssg, idKWX, ImportProblem::kNotThatLayout, "'" + ssg + "' does not have the KWX layout"},
      {kwx, idSSG, ImportProblem::kNotThatLayout, "'" + kwx + "' does not have the SSG layout"},
      {empty, idKWX, ImportProblem::kUnreadable, "cannot read '" + empty + "' (no text in it)"},
      {tmp.path().string(), idSSG, ImportProblem::kUnreadable,
       "cannot read '" + tmp.path().string() + "' (no text in it)"},
      {ssg, idSSG, ImportProblem::kNone, ""},
  };
  kwxLoader loader;
  for (const Case& c : cases) {
    Company company;
    if (c.format == idKWX) {
      loader.KWX_Get(c.path, company);
    } else {
      loader.SSG_Get(c.path, company);
    }
    EXPECT_EQ(loader.LastImportStatus().problem, c.problem) << c.path << " " << c.format;
    EXPECT_EQ(loader.LastImportStatus().message, c.message);
  }
  Company company;
  loader.Stream_Get("", company, idKWX);
  EXPECT_EQ(loader.LastImportStatus().message, "the text holds no fields");
  loader.Stream_Get(ssg_text, company, idKWX);
  EXPECT_EQ(loader.LastImportStatus().message, "the text does not have the KWX layout");
  EXPECT_TRUE(loader.ErrorReports().empty());
}

TEST(ImportDispatch, DilutionIsRecomputedOnEveryImport) {
  struct Case {
    float acs, cso, dilution;
  };
  const Case cases[] = {{110, 100, 10}, {0, 100, 0}, {110, 0, 0}, {-5, 100, 0}, {150, 100, 50}};
  kwxLoader loader;
  for (const Case& c : cases) {
    Company company;
    company.sngACS = c.acs;
    company.sngCSO = c.cso;
    company.sngPotDilution = 99;
    loader.Stream_Get("anything\r\n", company, static_cast<enumDataFile>(2));
    EXPECT_NEAR(company.sngPotDilution, c.dilution, 1e-4) << c.acs << "/" << c.cso;
  }
  // A KWX import takes the share counts from the file and overwrites position 23.
  Company from_file;
  loader.Stream_Get(KwxText({{18, "100"}, {19, "110"}, {23, "55"}}, "\r\n"), from_file, idKWX);
  EXPECT_NEAR(from_file.sngPotDilution, 10, 1e-4);
}

TEST(ImportDispatch, NumericSectorIsClearedAndNotAdded) {
  RecordingLoader r;
  Company company;
  r.loader.Stream_Get(KwxText({{10, "12"}, {11, "NYSE"}}, "\r\n"), company, idKWX);
  EXPECT_EQ(company.SectorID, "");
  EXPECT_EQ(company.ExchangeID, "NYSE");
  EXPECT_EQ(r.Inserts(),
            (std::vector<std::string>{"insert into Exchange(Exchange) select 'NYSE'"}));
}

TEST(ImportDispatch, KwxExportThenImportGivesBackEveryCarriedField) {
  TempDir dir;
  kwxLoader loader;
  Company original;
  FillLayoutFields(original);
  const std::string path = dir.File("study.kwx");
  ASSERT_TRUE(loader.KWX_Update(original, path));

  Company back;
  back.CompanyID = 17;
  loader.KWX_Get(path, back);
  EXPECT_EQ(DescribeDifferences(original, back), "");

  // The same array reaches the study through a stream of the file's text.
  Company streamed;
  loader.Stream_Get(Windows1252ToUtf8(ReadFile(path)), streamed, idKWX);
  EXPECT_EQ(DescribeDifferences(original, streamed), "");

  // A line break inside any text is written as one character 254, the notes' mark, so no
  // later field, option or PERT row moves; outside the notes the mark reads back as itself.
  Company broken = original;
  broken.JudgmentStockReport.strSSR1a = "first\r\nsecond";
  broken.strName = "Acme\rHoldings\n";
  ASSERT_TRUE(loader.KWX_Update(broken, path));
  Company broken_back;
  loader.KWX_Get(path, broken_back);
  broken.JudgmentStockReport.strSSR1a = "first\xC3\xBEsecond";
  broken.strName = "Acme\xC3\xBEHoldings";
  EXPECT_EQ(DescribeDifferences(broken, broken_back), "");
}

TEST(ImportDispatch, ImportSaveLoadAndExportGivesTheSameFile) {
  TempDir dir;
  const std::string db_path = dir.File("studies.db");
  ASSERT_TRUE(CreateDatabase(db_path).ok());
  kwxLoader loader;
  ASSERT_TRUE(loader.Access_blnOpenDatabase(db_path));

  Company source;
  FillLayoutFields(source);
  // What the plain platform's database does not keep: the assessment, the SP-only option, the
  // value at 101 and the struck-out lists the tables have no column for. Loading lowers the
  // PMG year to the year after datLastFY and importing raises it to that year, so only that
  // year survives both.
  source.JudgmentAssessment = JudgmentAssessmentGroup();
  source.Options.blnEPSMinProjLine = false;
  source.sngKWXExtra = 0;
  for (const auto& b : JudgmentAnalysisGroup::Unstored()) {
    SetField(source.JudgmentAnalysis, b, Variant());
  }
  for (const auto& b : JudgmentCheckListGroup::Unstored()) {
    SetField(source.JudgmentCheckList, b, Variant());
  }
  source.intLatestPMGFY = static_cast<int16_t>(Year(source.datLastFY) + 1);
  // An industry name must have its row to survive saving; a KWX import does not add one.
  loader.Access_AddIndustry(source.IndustryID);
  const std::string first = dir.File("first.kwx");
  ASSERT_TRUE(loader.KWX_Update(source, first));

  Company imported;
  loader.KWX_Get(first, imported);
  loader.Access_Update(imported);
  ASSERT_GE(imported.CompanyID, 1);
  EXPECT_TRUE(loader.ErrorReports().empty()) << loader.ErrorReports().front().Text();

  Company loaded;
  loader.Access_Get(imported.CompanyID, "", "", loaded);
  const std::string second = dir.File("second.kwx");
  ASSERT_TRUE(loader.KWX_Update(loaded, second));
  EXPECT_EQ(ReadFile(second), ReadFile(first));
}

}  // namespace
}  // namespace kwx
