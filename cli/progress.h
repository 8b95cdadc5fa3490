// A one-line progress bar for long commands, drawn only on a terminal.
#ifndef KWX_CLI_PROGRESS_H_
#define KWX_CLI_PROGRESS_H_

#include <chrono>
#include <cstddef>
#include <ostream>

namespace kwx::cli {

class ProgressBar {
 public:
  // Draws on `err` when `enabled` (the caller has checked that it is a terminal); otherwise
  // every call does nothing. `items` names what is counted ("files").
  ProgressBar(std::ostream& err, bool enabled, size_t total, const char* items = "files");
  ~ProgressBar() { Clear(); }

  // Redraws: items done of total, items per second, time left. Redraws at most ten times a
  // second, and always for the last item.
  void Update(size_t done);
  // Removes the bar from the line, so other output can be written there; the next Update draws
  // it again.
  void Clear();
  // Items per second since construction.
  double Rate(size_t done) const;

 private:
  std::ostream& err_;
  bool enabled_;
  size_t total_;
  const char* items_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point last_draw_;
};

}  // namespace kwx::cli

#endif  // KWX_CLI_PROGRESS_H_
