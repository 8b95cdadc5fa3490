// Reading the data files of a bulk import ahead of their saves, on a thread of its own, so that
// reading and splitting the next files overlaps saving the one before them.
#ifndef KWX_CLI_READ_AHEAD_H_
#define KWX_CLI_READ_AHEAD_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "automation/variant.h"

namespace kwx::cli {

class ReadAhead {
 public:
  // Starts reading: `read(path)` runs on the reading thread for each of `paths` in order, at
  // most `depth` results ahead of Take. A read that raises gives Empty, as a file that cannot
  // be read does. `read` must use nothing the caller's thread uses meanwhile.
  ReadAhead(std::vector<std::string> paths, std::function<Variant(const std::string&)> read,
            size_t depth = 16);
  // Stops the reading thread and waits for it.
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  // The result for paths[index]; the results of the paths before it that were not taken are
  // dropped. Empty for an index taken already or out of range.
  Variant Take(size_t index);

 private:
  void Work();

  const std::vector<std::string> paths_;
  const std::function<Variant(const std::string&)> read_;
  const size_t depth_;
  std::mutex lock_;
  std::condition_variable room_;     // the reader waits for room in the queue
  std::condition_variable arrived_;  // Take waits for a result
  std::deque<Variant> ready_;
  size_t taken_ = 0;
  bool stop_ = false;
  bool reader_waits_ = false;
  bool taker_waits_ = false;
  std::thread worker_;  // last: started once everything it uses exists
};

}  // namespace kwx::cli

#endif  // KWX_CLI_READ_AHEAD_H_
