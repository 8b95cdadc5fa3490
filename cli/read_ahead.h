// Reading the data files of a bulk import ahead of their saves, on a thread of its own, so that
// reading, splitting and mapping the next files overlaps saving the one before them.
#ifndef KWX_CLI_READ_AHEAD_H_
#define KWX_CLI_READ_AHEAD_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace kwx::cli {

template <class Result>
class ReadAhead {
 public:
  // Starts reading: `read(index)` runs on the reading thread for each index below `count` in
  // order, at most `depth` results ahead of Take. A read that raises gives a Result made by
  // default, as a file that cannot be read does. `read` must use nothing the caller's thread
  // uses meanwhile.
  ReadAhead(size_t count, std::function<Result(size_t)> read, size_t depth = 16)
      : count_(count), read_(std::move(read)), depth_(depth == 0 ? 1 : depth) {
    worker_ = std::thread([this] { Work(); });
  }
  // Stops the reading thread and waits for it.
  ~ReadAhead() {
    {
      const std::lock_guard<std::mutex> hold(lock_);
      stop_ = true;
    }
    room_.notify_all();
    worker_.join();
  }
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  // The result for `index`; the results before it that were not taken are dropped (and freed
  // by the reading thread). Null for an index taken already or out of range. Results travel
  // as pointers: a study read ahead is large, and moving it costs the saving thread.
  std::unique_ptr<Result> Take(size_t index) {
    std::unique_lock<std::mutex> hold(lock_);
    if (index < taken_ || index >= count_) return nullptr;
    while (true) {
      if (ready_.empty()) {
        taker_waits_ = true;
        arrived_.wait(hold, [&] { return !ready_.empty(); });
        taker_waits_ = false;
      }
      std::unique_ptr<Result> result = std::move(ready_.front());
      ready_.pop_front();
      ++taken_;
      if (reader_waits_ && ready_.size() <= depth_ / 2) room_.notify_one();
      if (taken_ > index) return result;
      spent_.push_back(std::move(result));
    }
  }

  // Hands a result back to be destroyed on the reading thread, so that the caller's thread
  // does not spend its time freeing what the reading thread allocated.
  void Discard(std::unique_ptr<Result> result) {
    if (result == nullptr) return;
    const std::lock_guard<std::mutex> hold(lock_);
    spent_.push_back(std::move(result));
  }

 private:
  void Work() {
    for (size_t index = 0; index < count_; ++index) {
      std::vector<std::unique_ptr<Result>> spent;
      {
        // Once full, the reader sleeps until half the results are taken and then reads on in
        // a burst: one wake-up per half a queue, not one per file.
        std::unique_lock<std::mutex> hold(lock_);
        spent.swap(spent_);
        if (ready_.size() >= depth_) {
          reader_waits_ = true;
          room_.wait(hold, [&] { return stop_ || ready_.size() <= depth_ / 2; });
          reader_waits_ = false;
        }
        if (stop_) return;
      }
      spent.clear();
      std::unique_ptr<Result> result;
      try {
        result = std::make_unique<Result>(read_(index));
      } catch (...) {
        result = std::make_unique<Result>();
      }
      bool wake = false;
      {
        const std::lock_guard<std::mutex> hold(lock_);
        ready_.push_back(std::move(result));
        wake = taker_waits_;
      }
      if (wake) arrived_.notify_one();
    }
  }

  const size_t count_;
  const std::function<Result(size_t)> read_;
  const size_t depth_;
  std::mutex lock_;
  std::condition_variable room_;     // the reader waits for room in the queue
  std::condition_variable arrived_;  // Take waits for a result
  std::deque<std::unique_ptr<Result>> ready_;
  std::vector<std::unique_ptr<Result>> spent_;  // handed back or skipped, destroyed by the reader
  size_t taken_ = 0;
  bool stop_ = false;
  bool reader_waits_ = false;
  bool taker_waits_ = false;
  std::thread worker_;  // started last, once everything it uses exists
};

}  // namespace kwx::cli

#endif  // KWX_CLI_READ_AHEAD_H_
