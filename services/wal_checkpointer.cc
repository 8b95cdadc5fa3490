#include "services/wal_checkpointer_internal.h"

#include <sqlite3.h>

#include <system_error>

namespace kwx::sqlite_support {

namespace {

// The log length at which SQLite copies it on the committing thread by its own rule: where a
// checkpointer whose thread cannot run leaves it.
constexpr int kSqliteOwnRule = 1000;

}  // namespace

WalCheckpointer::WalCheckpointer(sqlite3* writer)
    : writer_(writer), path_(sqlite3_db_filename(writer, "main") != nullptr
                                 ? sqlite3_db_filename(writer, "main")
                                 : "") {
  // A database without a file of its own has no log another connection could copy.
  failed_ = path_.empty();
  sqlite3_wal_hook(writer_, &WalCheckpointer::Committed, this);
}

WalCheckpointer::~WalCheckpointer() {
  {
    const std::lock_guard<std::mutex> hold(lock_);
    stop_ = true;
  }
  wake_.notify_one();
  if (thread_.joinable()) thread_.join();
  sqlite3_wal_autocheckpoint(writer_, kSqliteOwnRule);
}

int WalCheckpointer::Committed(void* self, sqlite3* writer, const char* schema, int pages) {
  auto& checkpointer = *static_cast<WalCheckpointer*>(self);
  // The log started over since the last request.
  if (pages < checkpointer.requested_at_) checkpointer.requested_at_ = 0;
  bool here = pages >= kInlineFrom;
  if (!here && pages - checkpointer.requested_at_ >= kBackgroundEvery) {
    // Without the thread, SQLite's own rule holds.
    if (checkpointer.Request()) {
      checkpointer.requested_at_ = pages;
    } else {
      here = pages >= kSqliteOwnRule;
    }
  }
  if (here) {
    // A long log is copied here, and the thread not woken: its copy would stand in this one's
    // way. A copy that cannot be had now (the thread's copy under way, a reader on old pages)
    // is left for a later commit, as SQLite's own rule leaves it.
    sqlite3_wal_checkpoint_v2(writer, schema, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
  }
  return SQLITE_OK;
}

bool WalCheckpointer::Request() {
  {
    const std::lock_guard<std::mutex> hold(lock_);
    if (failed_) return false;
    requested_ = true;
    if (!thread_.joinable()) {
      try {
        thread_ = std::thread([this] { Work(); });
      } catch (const std::system_error&) {
        failed_ = true;
        return false;
      }
    }
  }
  wake_.notify_one();
  return true;
}

void WalCheckpointer::Work() {
  sqlite3* db = nullptr;
  // Reading the schema opens the log, which a copy works on. The copy syncs the file as a
  // commit syncs the log.
  const bool opened =
      sqlite3_open_v2(path_.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                      nullptr) == SQLITE_OK &&
      sqlite3_exec(db, "PRAGMA synchronous = FULL", nullptr, nullptr, nullptr) == SQLITE_OK &&
      sqlite3_exec(db, "SELECT count(*) FROM sqlite_schema", nullptr, nullptr, nullptr) ==
          SQLITE_OK;
  std::unique_lock<std::mutex> hold(lock_);
  if (!opened) {
    failed_ = true;
  } else {
    while (true) {
      wake_.wait(hold, [&] { return requested_ || stop_; });
      if (stop_) break;
      requested_ = false;
      hold.unlock();
      sqlite3_wal_checkpoint_v2(db, "main", SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
      hold.lock();
    }
  }
  hold.unlock();
  // Not the last connection to the file: closing copies nothing and leaves the log to the
  // writer.
  sqlite3_close_v2(db);
}

}  // namespace kwx::sqlite_support
