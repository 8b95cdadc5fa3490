// Copying a database's write-ahead log back into the file on a thread of its own, so that the
// thread saving studies does not stop for it.
//
// Every commit appends the pages it changed to the log; SQLite's own rule copies them into the
// file on the committing thread once the log holds 1,000 pages, and closing copies the rest:
// a few hundredths of a bulk import's time, spent while nothing is saved. Here, each time the log
// has grown by kBackgroundEvery pages, a commit asks a second connection on a thread of its
// own to copy what it can (a passive checkpoint: it never waits for, nor holds up, a reader or
// the writer). Not after every commit: each copy syncs the file, and a study saved in a
// transaction of its own waits for its commit's sync. The log only starts over from its
// beginning when a write transaction begins on a log copied in full, which a writer that
// commits on and on rarely meets; so once the log holds kInlineFrom pages, the committing
// thread copies it itself, most of it copied already, and the log starts over with the next
// transaction. A process that writes little never starts the thread.
//
// Nothing of durability changes: a commit is in the log, synced, when it returns; a copy only
// moves pages the log holds already, and syncs the file before the log may be reused.
#ifndef KWX_SERVICES_WAL_CHECKPOINTER_INTERNAL_H_
#define KWX_SERVICES_WAL_CHECKPOINTER_INTERNAL_H_

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

struct sqlite3;

namespace kwx::sqlite_support {

class WalCheckpointer {
 public:
  static constexpr int kBackgroundEvery = 300;
  static constexpr int kInlineFrom = 2000;

  // Takes over the copying for `writer`, an open connection, by becoming its log hook.
  explicit WalCheckpointer(sqlite3* writer);
  // Stops the thread, after a copy under way, and closes its connection; `writer` must still
  // be open, and its log hook is SQLite's own again.
  ~WalCheckpointer();
  WalCheckpointer(const WalCheckpointer&) = delete;
  WalCheckpointer& operator=(const WalCheckpointer&) = delete;

 private:
  // The log hook: `pages` is how many the log holds after a commit.
  static int Committed(void* self, sqlite3* writer, const char* schema, int pages);
  // Asks the thread for a copy, starting it the first time; false when it cannot run.
  bool Request();
  void Work();

  sqlite3* const writer_;
  const std::string path_;
  std::mutex lock_;
  std::condition_variable wake_;
  bool requested_ = false;
  bool stop_ = false;
  bool failed_ = false;  // the thread or its connection could not be had: copies stay inline
  int requested_at_ = 0;  // the log's length at the last request (the committing thread's)
  std::thread thread_;
};

}  // namespace kwx::sqlite_support

#endif  // KWX_SERVICES_WAL_CHECKPOINTER_INTERNAL_H_
