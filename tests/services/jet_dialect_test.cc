#include "services/jet_dialect.h"

#include <gtest/gtest.h>

#include <string>

namespace kwx {
namespace {

TEST(JetDialect, TranslatesOutsideLiteralsOnly) {
  struct Case {
    std::string jet;
    std::string expected;
  };
  const Case cases[] = {
      // Delete * From, any case and blanks; a plain DELETE FROM stays.
      {"Delete * From Sector Where SectorID=4;", "DELETE FROM Sector Where SectorID=4;"},
      {"delete * from Company where CompanyID=5", "DELETE FROM Company where CompanyID=5"},
      {"  DELETE\t*\n FROM X", "  DELETE FROM X"},
      {"Delete From X", "Delete From X"},
      {"select 'Delete * From X'", "select 'Delete * From X'"},
      {"select * from X", "select * from X"},
      // True / False as whole words outside literals.
      {"Update Options set blnTaxRate=True, blnRevPlot=false where CompanyID = 1",
       "Update Options set blnTaxRate=-1, blnRevPlot=0 where CompanyID = 1"},
      {"select 'True', 'it''s False', TRUE", "select 'True', 'it''s False', -1"},
      {"select TrueValue, IsTrue, T.True, [False] from T",
       "select TrueValue, IsTrue, T.True, [False] from T"},
      {"select 1 -True", "select 1 - -1"},
      {"-- True\nselect True /* False */", "-- True\nselect -1 /* False */"},
      // Date literals become the stored M/d/yyyy text.
      {"select #11/22/2026#", "select '11/22/2026'"},
      {"where d = #2026-01-05#", "where d = '1/5/2026'"},
      {"select #not a date#", "select 'not a date'"},
      {"select 'a#1/1/2020#b'", "select 'a#1/1/2020#b'"},
      {"select #1/1/2020", "select #1/1/2020"},
      // Double-quoted values become single-quoted ones, apostrophes doubled.
      {"select \"O'Neil\"", "select 'O''Neil'"},
      {"select \"say \"\"True\"\"\"", "select 'say \"True\"'"},
      {"select 'a \"b\" True'", "select 'a \"b\" True'"},
      {"select \"T\".x, T.\"y\" from T", "select \"T\".x, T.\"y\" from T"},
      {"select \"open", "select \"open"},
      // Unterminated text is copied and left for the engine to refuse.
      {"select 'open True", "select 'open True"},
      {"select datediff('d',DJDate,'11/22/2026') = 0",
       "select datediff('d',DJDate,'11/22/2026') = 0"},
      {"select '\xC3\xBF', True", "select '\xC3\xBF', -1"},
      {"", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TranslateJetSql(c.jet), c.expected) << "input: " << c.jet;
  }
}

}  // namespace
}  // namespace kwx
