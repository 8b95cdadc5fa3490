#include "cli/read_ahead.h"

#include <utility>

namespace kwx::cli {

ReadAhead::ReadAhead(std::vector<std::string> paths,
                     std::function<Variant(const std::string&)> read, size_t depth)
    : paths_(std::move(paths)),
      read_(std::move(read)),
      depth_(depth == 0 ? 1 : depth),
      worker_([this] { Work(); }) {}

ReadAhead::~ReadAhead() {
  {
    const std::lock_guard<std::mutex> hold(lock_);
    stop_ = true;
  }
  room_.notify_all();
  worker_.join();
}

void ReadAhead::Work() {
  for (const std::string& path : paths_) {
    {
      // Once full, the reader sleeps until half the results are taken and then reads on in a
      // burst: one wake-up per half a queue, not one per file.
      std::unique_lock<std::mutex> hold(lock_);
      if (ready_.size() >= depth_) {
        reader_waits_ = true;
        room_.wait(hold, [&] { return stop_ || ready_.size() <= depth_ / 2; });
        reader_waits_ = false;
      }
      if (stop_) return;
    }
    Variant fields;
    try {
      fields = read_(path);
    } catch (...) {
      fields = Variant();
    }
    bool wake = false;
    {
      const std::lock_guard<std::mutex> hold(lock_);
      ready_.push_back(std::move(fields));
      wake = taker_waits_;
    }
    if (wake) arrived_.notify_one();
  }
}

Variant ReadAhead::Take(size_t index) {
  std::unique_lock<std::mutex> hold(lock_);
  if (index < taken_ || index >= paths_.size()) return Variant();
  Variant fields;
  while (taken_ <= index) {
    if (ready_.empty()) {
      taker_waits_ = true;
      arrived_.wait(hold, [&] { return !ready_.empty(); });
      taker_waits_ = false;
    }
    fields = std::move(ready_.front());  // those before `index` are dropped
    ready_.pop_front();
    ++taken_;
    if (reader_waits_ && ready_.size() <= depth_ / 2) room_.notify_one();
  }
  return fields;
}

}  // namespace kwx::cli
