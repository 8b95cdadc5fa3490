// A fresh study database (a file in a temporary folder of its own, or a schema of its own on
// the PostgreSQL server the tests run on: TempDir::Database), opened on the real database
// object.
#ifndef KWX_TESTS_SUPPORT_TEST_DATABASE_H_
#define KWX_TESTS_SUPPORT_TEST_DATABASE_H_

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "automation/conversions.h"
#include "automation/variant.h"
#include "services/create_database.h"
#include "services/database_object.h"
#include "tests/support/test_util.h"

namespace kwx {

class DatabaseTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tmp_ = std::make_unique<testing::TempDir>();
    dir_ = tmp_->path();
    path_ = tmp_->Database("study.db");
    if (path_.empty()) GTEST_SKIP() << "no PostgreSQL server to test on (KWX_TEST_PG)";
    const Status created = CreateDatabase(path_);
    ASSERT_TRUE(created.ok()) << created.message();
    ASSERT_TRUE(db_.blnOpenDatabase(path_));
  }
  void TearDown() override {
    std::string none;
    db_.blnOpenDatabase(none);  // closes the file before it is removed
    tmp_.reset();
  }

  bool Exec(const std::string& sql) {
    Variant fields, data;
    return db_.blnExecute(sql, fields, data);
  }
  // The data array of a query (Empty when it failed or found no rows).
  Variant Query(const std::string& sql) {
    Variant fields, data;
    EXPECT_TRUE(db_.blnExecute(sql, fields, data)) << sql;
    return data;
  }
  // The one value of a one-row, one-column query.
  Variant Scalar(const std::string& sql) {
    Variant data = Query(sql);
    if (!data.IsArray()) return Variant();
    return data.AsArray()(0, 0);
  }

  // The first column of a query's rows as one text, each value followed by ";".
  std::string Column(const std::string& sql) {
    Variant data = Query(sql);
    std::string out;
    if (!data.IsArray()) return out;
    for (int32_t i = 0; i <= data.AsArray().UBound(1); ++i) out += CStr(data.AsArray()(i, 0)) + ";";
    return out;
  }

  std::unique_ptr<testing::TempDir> tmp_;
  std::filesystem::path dir_;
  std::string path_;
  DatabaseObject db_;
};

}  // namespace kwx

#endif  // KWX_TESTS_SUPPORT_TEST_DATABASE_H_
