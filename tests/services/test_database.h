// A fresh database file in a temporary folder of its own, for the services tests.
#ifndef KWX_TESTS_SERVICES_TEST_DATABASE_H_
#define KWX_TESTS_SERVICES_TEST_DATABASE_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "automation/variant.h"
#include "services/create_database.h"
#include "services/sqlite_database.h"

namespace kwx {

class DatabaseTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = std::filesystem::temp_directory_path() /
           ("kwx_services_" + std::to_string(::getpid()) + "_" + info->name());
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
    path_ = (dir_ / "study.db").string();
    const Status created = CreateDatabase(path_);
    ASSERT_TRUE(created.ok()) << created.message();
    ASSERT_TRUE(db_.blnOpenDatabase(path_));
  }
  void TearDown() override {
    std::string none;
    db_.blnOpenDatabase(none);  // closes the file before it is removed
    std::filesystem::remove_all(dir_);
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

  std::filesystem::path dir_;
  std::string path_;
  SqliteDatabase db_;
};

}  // namespace kwx

#endif  // KWX_TESTS_SERVICES_TEST_DATABASE_H_
