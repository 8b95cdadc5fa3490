#include "cli/progress.h"

#include <cstdio>
#include <string>

namespace kwx::cli {

ProgressBar::ProgressBar(std::ostream& err, bool enabled, size_t total, const char* items)
    : err_(err),
      enabled_(enabled),
      total_(total),
      items_(items),
      start_(std::chrono::steady_clock::now()) {}

double ProgressBar::Rate(size_t done) const {
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  return seconds > 0 ? static_cast<double>(done) / seconds : 0.0;
}

void ProgressBar::Update(size_t done) {
  if (!enabled_ || total_ == 0) return;
  const auto now = std::chrono::steady_clock::now();
  if (drawn_ && done < total_ && now - last_draw_ < std::chrono::milliseconds(100)) return;
  last_draw_ = now;
  constexpr size_t kWidth = 30;
  const size_t filled = kWidth * done / total_;
  const double rate = Rate(done);
  const long left = rate > 0 ? static_cast<long>(static_cast<double>(total_ - done) / rate) : 0;
  char line[160];
  std::snprintf(line, sizeof line, "\r[%s%s] %zu/%zu %s  %.1f studies/s  %ld:%02ld left ",
                std::string(filled, '#').c_str(), std::string(kWidth - filled, ' ').c_str(), done,
                total_, items_, rate, left / 60, left % 60);
  err_ << line << std::flush;
  drawn_ = true;
}

void ProgressBar::Clear() {
  if (!drawn_) return;
  err_ << "\r\033[K" << std::flush;
  drawn_ = false;
}

}  // namespace kwx::cli
