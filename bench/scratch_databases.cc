#include "bench/scratch_databases.h"

#include <libpq-fe.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>

#include "bench/pg_pipeline.h"
#include "services/create_database.h"

namespace kwx::bench {

std::string UriOfDatabase(const std::string& uri, std::string_view name) {
  // postgresql://[user[:password]@][host][:port][/database][?parameters]
  const size_t scheme = uri.find("://");
  const size_t from = scheme == std::string::npos ? uri.size() : scheme + 3;
  const size_t path = uri.find_first_of("/?", from);
  const size_t query = uri.find('?', from);
  std::string out = uri.substr(0, std::min(path, uri.size()));
  out += '/';
  out += name;
  if (query != std::string::npos) out += uri.substr(query);
  return out;
}

ScratchDatabases::ScratchDatabases(std::string uri) : uri_(std::move(uri)) {
  // A database named among the parameters would override the one a fresh URI names.
  if (uri_.find("dbname=") != std::string::npos) {
    error_ = uri_ + ": name the database in the URI's path, not by dbname=";
    return;
  }
  const char* keys[] = {"dbname", nullptr};
  const char* values[] = {uri_.c_str(), nullptr};
  conn_ = PQconnectdbParams(keys, values, /*expand_dbname=*/1);
  if (PQstatus(conn_) != CONNECTION_OK) {
    error_ = uri_ + ": " + PQerrorMessage(conn_);
    while (!error_.empty() && error_.back() == '\n') error_.pop_back();
    PQfinish(conn_);
    conn_ = nullptr;
    return;
  }
  // "does not exist, skipping" of a name not made yet is no news.
  PQsetNoticeProcessor(conn_, [](void*, const char*) {}, nullptr);
}

ScratchDatabases::~ScratchDatabases() {
  for (const std::string& name : made_) Run("DROP DATABASE IF EXISTS " + name + " WITH (FORCE)");
  PQfinish(conn_);
}

bool ScratchDatabases::Run(const std::string& sql) {
  if (conn_ == nullptr) return false;
  PgResult r(PQexec(conn_, sql.c_str()));
  if (PQresultStatus(r.get()) == PGRES_COMMAND_OK) return true;
  error_ = sql + ": " + PQresultErrorMessage(r.get());
  return false;
}

std::string ScratchDatabases::Fresh(std::string_view name) {
  std::string database = "kwxbench_" + std::to_string(::getpid()) + "_";
  for (char c : name) {
    database += std::isalnum(static_cast<unsigned char>(c))
                    ? static_cast<char>(std::tolower(static_cast<unsigned char>(c)))
                    : '_';
  }
  if (!Run("DROP DATABASE IF EXISTS " + database + " WITH (FORCE)")) return "";
  if (std::find(made_.begin(), made_.end(), database) == made_.end()) made_.push_back(database);
  if (!Run("CREATE DATABASE " + database)) return "";
  const std::string uri = UriOfDatabase(uri_, database);
  const Status laid_out = CreateDatabase(uri);
  if (!laid_out.ok()) {
    error_ = laid_out.message();
    return "";
  }
  return uri;
}

}  // namespace kwx::bench
