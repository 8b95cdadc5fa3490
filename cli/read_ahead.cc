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
  changed_.notify_all();
  worker_.join();
}

void ReadAhead::Work() {
  for (const std::string& path : paths_) {
    {
      std::unique_lock<std::mutex> hold(lock_);
      changed_.wait(hold, [&] { return stop_ || ready_.size() < depth_; });
      if (stop_) return;
    }
    Variant fields;
    try {
      fields = read_(path);
    } catch (...) {
      fields = Variant();
    }
    {
      const std::lock_guard<std::mutex> hold(lock_);
      ready_.push_back(std::move(fields));
    }
    changed_.notify_all();
  }
}

Variant ReadAhead::Take(size_t index) {
  std::unique_lock<std::mutex> hold(lock_);
  if (index < taken_ || index >= paths_.size()) return Variant();
  Variant fields;
  while (taken_ <= index) {
    changed_.wait(hold, [&] { return !ready_.empty(); });
    fields = std::move(ready_.front());  // those before `index` are dropped
    ready_.pop_front();
    ++taken_;
    changed_.notify_all();
  }
  return fields;
}

}  // namespace kwx::cli
