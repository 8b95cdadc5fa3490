#include "services/jet_dialect.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "automation/conversions.h"
#include "services/sqlite_support_internal.h"

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
      {"  DELETE\t*\n FROM X", "  DELETE FROM X"},
      {"Delete From X", "Delete From X"},
      {"select 'Delete * From X'", "select 'Delete * From X'"},
      // True / False as whole words outside literals.
      {"Update Options set blnTaxRate=True, blnRevPlot=false where CompanyID = 1",
       "Update Options set blnTaxRate=1, blnRevPlot=0 where CompanyID = 1"},
      {"select 'True', 'it''s False', TRUE", "select 'True', 'it''s False', 1"},
      {"select TrueValue, IsTrue, T.True, [False] from T",
       "select TrueValue, IsTrue, T.True, [False] from T"},
      {"-- True\nselect True /* False */", "-- True\nselect 1 /* False */"},
      // Dates take their stored ISO form: date literals, and texts that go to a date column or
      // are compared with one (and only those); the statement's U+00FF is an apostrophe.
      {"select #11/22/2026#", "select '2026-11-22'"},
      {"where d = #2026-01-05#", "where d = '2026-01-05'"},
      {"where datLastFY > '1/5/2026 3:04:05 PM'", "where datLastFY > '2026-01-05 15:04:05'"},
      {"Update Comparison   set Name = '1/5/2026',       LastUpdate = '1/5/2026' where x = 1",
       "Update Comparison   set Name = '1/5/2026' COLLATE NOCASE,       LastUpdate = "
       "'2026-01-05' where x = 1"},
      {"insert into Company (strName, datLastFY, strCode) select '1/5/2026','6/30/2025','O\xC3\xBFK'",
       "insert into Company (strName, datLastFY, strCode) select '1/5/2026','2025-06-30','O''K'"},
      {"insert into T (a, LastUpdate) values (f('1/2/2020', 3), '1/2/2020')",
       "insert into T (a, LastUpdate) values (f('1/2/2020', 3), '2020-01-02')"},
      {"insert into Company (datLastFY) select 'soon'", "insert into Company (datLastFY) select 'soon'"},
      {"select 'a#1/1/2020#b'", "select 'a#1/1/2020#b'"},
      {"select #1/1/2020", "select #1/1/2020"},
      // Double-quoted values become single-quoted ones, apostrophes doubled.
      {"select \"O'Neil\"", "select 'O''Neil'"},
      {"select \"say \"\"True\"\"\"", "select 'say \"True\"'"},
      {"select \"T\".x, T.\"y\" from T", "select \"T\".x, T.\"y\" from T"},
      // A compared text ignores case: the engine's NOCASE for ASCII, the collation of every
      // script beyond it; a text that is only written or selected is left alone.
      {"select a from T where Name = 'Banks'", "select a from T where Name = 'Banks' COLLATE NOCASE"},
      {"where N <> 'x' or M>='y'", "where N <> 'x' COLLATE NOCASE or M>='y' COLLATE NOCASE"},
      {"where N = '\xC5\xA0koda'", "where N = '\xC5\xA0koda' COLLATE kwx_nocase"},
      {"where N = \"O'Neil\"", "where N = 'O''Neil' COLLATE NOCASE"},
      {"insert into T (a) select 'x'", "insert into T (a) select 'x'"},
      // Unterminated text is copied and left for the engine to refuse.
      {"select 'open True", "select 'open True"},
      {"select '\xC3\xBF', True", "select '''', 1"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TranslateJetSql(c.jet), c.expected) << "input: " << c.jet;
  }
}

TEST(JetDialect, LiftsValuesButKeepsLiteralsThatShapeTheAnswer) {
  struct Case {
    std::string jet;
    std::string shape;
    size_t values;
  };
  const Case cases[] = {
      {"select * from T where a = 5 and b = 'x''y' and c = True and d = #1/2/2020#",
       "select * from T where a = ? and b = ? COLLATE NOCASE and c = ? and d = ?", 4},
      {"Update T   set a=1.5, b=\"O'Neil\" Where K=7;",
       "Update T   set a=?, b=? COLLATE NOCASE Where K=?;", 3},
      {"Insert into T(a, b)     select 'v', -2e3;", "Insert into T(a, b)     select ?, -?;", 2},
      // Result columns name the row set's fields; ORDER BY 1 is a position; LIMIT a count.
      {"select 'x', 5, a+1 from T where a > 2 order by 1 limit 3",
       "select 'x', 5, a+1 from T where a > ? order by 1 limit 3", 1},
      {"select (select max(b) from U where c = 1) from T where d in (select e from V where f = 2)",
       "select (select max(b) from U where c = 1) from T where d in (select e from V where f = ?)",
       1},
      {"select datediff('d',DJDate,'11/22/2026') from T where datediff('d',DJDate,'1/1/2020') = 0",
       "select datediff('d',DJDate,'11/22/2026') from T where datediff(?,DJDate,?) = ?", 3},
      // Names with digits, qualified names, hexadecimal and oversized numbers stay.
      {"update T1 set x2 = T1.y3 + 0x10 + 99999999999999999999 where T1.z = .5",
       "update T1 set x2 = T1.y3 + 0x10 + 99999999999999999999 where T1.z = ?", 1},
      // Statements of other kinds, and those with parameters of their own, are not lifted.
      {"create table X (a INTEGER DEFAULT 5)", "create table X (a INTEGER DEFAULT 5)", 0},
      {"select * from T where a = ? and b = 5", "select * from T where a = ? and b = 5", 0},
      // Digits glued to a literal stay apart from its placeholder: "?1" would be a numbered
      // placeholder, and the statement would run where its literal form is refused.
      {"select * from T where a = \"O'N\"1", "select * from T where a = ? COLLATE NOCASE 1", 1},
      {"select * from T where a = #1/2/2020#2", "select * from T where a = ??", 2},
  };
  for (const Case& c : cases) {
    const ParameterizedSql p = ParameterizeJetSql(c.jet);
    EXPECT_EQ(p.shape, c.shape) << "input: " << c.jet;
    EXPECT_EQ(p.values.size(), c.values) << "input: " << c.jet;
  }
  const ParameterizedSql typed =
      ParameterizeJetSql("update T set a = 7, b = 2.5, c = 'it''s', d = False, e = #2026-01-05#");
  ASSERT_EQ(typed.values.size(), 5u);
  EXPECT_EQ(typed.values[0].kind, SqlParameter::Kind::Integer);
  EXPECT_EQ(typed.values[0].integer, 7);
  EXPECT_EQ(typed.values[1].kind, SqlParameter::Kind::Real);
  EXPECT_EQ(typed.values[1].real, 2.5);
  EXPECT_EQ(typed.values[2].text, "it's");
  EXPECT_EQ(typed.values[3].integer, 0);
  EXPECT_EQ(typed.values[4].text, "2026-01-05");
  // A lifted decimal is the double nearest its text, by whichever way it is read.
  for (const char* text : {"0.1", "171.22", "5.", ".5", "123456789.012345", "0.30000000000000004",
                           "9007199254740993.5"}) {
    const ParameterizedSql p = ParameterizeJetSql(std::string("select * from T where a = ") + text);
    double expected = 0;
    std::from_chars(text, text + std::strlen(text), expected);
    ASSERT_EQ(p.values.size(), 1u) << text;
    EXPECT_EQ(p.values[0].real, expected) << text;
  }
}

// Executing a statement's literal translation and its lifted shape with the values bound must
// give the same rows, names and stored values.
class LiftedEquivalence {
 public:
  LiftedEquivalence() {
    for (sqlite3** db : {&plain_, &lifted_}) {
      sqlite3_open(":memory:", db);
      sqlite_support::RegisterJetFunctions(*db);
      sqlite3_exec(*db,
                   "create table T (K INTEGER PRIMARY KEY, s TEXT, f SINGLE, i SMALLINT, "
                   "l INTEGER, b BIT, d DATETIME, n)",
                   nullptr, nullptr, nullptr);
    }
  }
  ~LiftedEquivalence() {
    sqlite3_close(plain_);
    sqlite3_close(lifted_);
  }

  // Runs `jet` both ways; "" when they agree, else what differs.
  std::string Compare(const std::string& jet) {
    const std::string a = Dump(plain_, TranslateJetSql(jet), {});
    const ParameterizedSql p = ParameterizeJetSql(jet);
    const std::string b = Dump(lifted_, p.shape, p.values);
    if (a != b) return "statement gave\n  " + a + "\nlifted\n  " + b;
    const std::string ta = Dump(plain_, "select * from T order by K", {});
    const std::string tb = Dump(lifted_, "select * from T order by K", {});
    if (ta != tb) return "table after it\n  " + ta + "\nlifted\n  " + tb;
    return "";
  }

 private:
  static std::string Dump(sqlite3* db, const std::string& sql,
                          const std::vector<SqlParameter>& values) {
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
      return std::string("error ") + sqlite3_errmsg(db);
    }
    int index = 1;
    for (const SqlParameter& v : values) {
      if (v.kind == SqlParameter::Kind::Integer) sqlite3_bind_int64(stmt, index, v.integer);
      if (v.kind == SqlParameter::Kind::Real) sqlite3_bind_double(stmt, index, v.real);
      if (v.kind == SqlParameter::Kind::Text) {
        sqlite3_bind_text(stmt, index, v.text.c_str(), -1, SQLITE_TRANSIENT);
      }
      ++index;
    }
    std::string out;
    for (int c = 0; c < sqlite3_column_count(stmt); ++c) {
      out += std::string(sqlite3_column_name(stmt, c)) + "|";
    }
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
      out += "\n";
      for (int c = 0; c < sqlite3_column_count(stmt); ++c) {
        const int type = sqlite3_column_type(stmt, c);
        out += std::to_string(type) + ":";
        if (type == SQLITE_FLOAT) {
          const double d = sqlite3_column_double(stmt, c);
          uint64_t bits;
          std::memcpy(&bits, &d, sizeof bits);
          out += std::to_string(bits);
        } else if (type != SQLITE_NULL) {
          out += reinterpret_cast<const char*>(sqlite3_column_text(stmt, c));
        }
        out += " ";
      }
    }
    out += " rc=" + std::to_string(rc) + " changes=" + std::to_string(sqlite3_changes(db));
    sqlite3_finalize(stmt);
    return out;
  }

  sqlite3* plain_ = nullptr;
  sqlite3* lifted_ = nullptr;
};

TEST(JetDialect, LiftedStatementsAnswerAsTheirLiteralForms) {
  std::mt19937 rng(20260522);
  auto pick = [&](std::initializer_list<const char*> options) {
    return std::string(options.begin()[rng() % options.size()]);
  };
  auto number = [&]() -> std::string {
    switch (rng() % 6) {
      case 0: return std::to_string(static_cast<int>(rng() % 2000) - 1000);
      case 1: return std::to_string(rng() % 100000) + "." + std::to_string(rng() % 1000);
      case 2: return std::to_string(rng() % 10) + "." + std::to_string(rng()) + std::to_string(rng() % 1000000);
      case 3: return std::to_string(rng() % 1000) + "e" + std::to_string(static_cast<int>(rng() % 40) - 20);
      case 4: return pick({"5000000000", "99999999999999999999", "0.1", ".5", "7.", "1e308"});
      default: return pick({"True", "False", "0", "-1"});
    }
  };
  auto value = [&]() -> std::string {
    switch (rng() % 4) {
      case 0: return number();
      case 1: return pick({"'abc'", "'it''s'", "\"say \"\"hi\"\"\"", "'\xC3\xBF'", "''", "'12'", "' 7 '", "'1e3'"});
      case 2: return pick({"#1/2/2020#", "#2026-01-05#", "'11/22/2026'", "#not a date#"});
      default: return "'" + std::to_string(rng() % 50) + "'";
    }
  };
  const char* columns[] = {"s", "f", "i", "l", "b", "d", "n"};
  auto column = [&] { return std::string(columns[rng() % 7]); };
  auto condition = [&]() -> std::string {
    switch (rng() % 5) {
      case 0: return column() + pick({" = ", " <> ", " < ", " >= "}) + value();
      case 1: return column() + " between " + value() + " and " + value();
      case 2: return column() + " in (" + value() + ", " + value() + ")";
      case 3: return "datediff('d', d, " + value() + ") " + pick({"<", ">", "="}) + " " + number();
      default: return column() + " like " + pick({"'a%'", "'%1%'", "'_'"});
    }
  };

  LiftedEquivalence db;
  for (int k = 0; k < 400; ++k) {
    std::string jet;
    switch (rng() % 6) {
      case 0:
        jet = "Insert into T(s, f, i, l, b, d, n)     select " + value() + ", " + value() + ", " +
              value() + ", " + value() + ", " + value() + ", " + value() + ", " + value() + ";";
        break;
      case 1:
        jet = "Update T   set " + column() + "=" + value() + " Where " + condition() + ";";
        break;
      case 2:
        jet = "select K, " + column() + ", " + value() + " from T where " + condition() +
              " order by 2, 1";
        break;
      case 3:
        jet = "select count(*), max(" + column() + ") from T where " + condition() + " or " +
              condition();
        break;
      case 4:
        jet = "select " + column() + " as 'Out' from T where K in (select K from T where " +
              condition() + ") group by 1 limit " + std::to_string(rng() % 5);
        break;
      default:
        jet = (rng() % 4 == 0 ? "Delete * From T Where " : "select * from T where ") +
              condition();
        break;
    }
    const std::string difference = db.Compare(jet);
    ASSERT_EQ(difference, "") << jet;
  }
}

// A Single bound straight from its number is bound as the text the statement holds for it
// would be: same kind, same bits, for every magnitude, sign and rounding edge.
TEST(JetDialect, SinglesBindAsTheirTextWouldBeLifted) {
  std::mt19937 rng(20261122);
  std::vector<float> values = {0.0f, -0.0f, 1.0f, -1.0f, 0.5f, 36.0f, 18.9f, 9999999.0f,
                               1e7f, 16777216.0f, 0.0001f, 0.00009999999f, 1e-5f, 123456.5f,
                               3.4028235e38f, 1.17549435e-38f, 1e-45f, 0.1f, 42.29f};
  for (int k = 0; k < 400000; ++k) {
    uint32_t bits = rng();
    float v;
    std::memcpy(&v, &bits, sizeof v);
    values.push_back(v);
    // Prices and ratios as studies hold them, hundredths and thousandths.
    values.push_back(static_cast<float>(static_cast<int>(rng() % 2000000) - 1000000) / 100.0f);
    values.push_back(static_cast<float>(rng() % 100000) / 1000.0f);
  }
  for (float v : values) {
    SqlParameter typed, lifted;
    const bool by_number = SingleParameter(v, typed);
    const bool by_text = LiteralParameter(NumberText(v), false, lifted);
    ASSERT_EQ(by_number, by_text && std::isfinite(v)) << NumberText(v);
    if (!by_number) continue;
    ASSERT_EQ(typed.kind, lifted.kind) << NumberText(v);
    if (typed.kind == SqlParameter::Kind::Integer) {
      ASSERT_EQ(typed.integer, lifted.integer) << NumberText(v);
    } else {
      uint64_t a, b;
      std::memcpy(&a, &typed.real, sizeof a);
      std::memcpy(&b, &lifted.real, sizeof b);
      ASSERT_EQ(a, b) << NumberText(v);
    }
  }
}

}  // namespace
}  // namespace kwx

namespace kwx {
namespace {

// An engine that binds by number sees the k-th mark as $k; marks inside literals, quoted names
// and comments are text and stay.
TEST(NumberPlaceholders, NumbersOnlyTheMarksOfTheShape) {
  EXPECT_EQ(NumberPlaceholders("select a from T where b = ? and c = '?' and \"d?\" = ? -- ?\n"
                               "and e in (?, ?) /* ? */"),
            "select a from T where b = $1 and c = '?' and \"d?\" = $2 -- ?\n"
            "and e in ($3, $4) /* ? */");
}

}  // namespace
}  // namespace kwx
