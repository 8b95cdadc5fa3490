// Files read ahead of their saves come back in the order asked for, never more than the depth
// ahead, and a reader that is dropped early stops without waiting for the rest.
#include "cli/read_ahead.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "automation/variant.h"

namespace kwx::cli {
namespace {

TEST(ReadAhead, AnswersInOrderBoundedAndStopsEarly) {
  std::vector<std::string> paths;
  for (int i = 0; i < 50; ++i) paths.push_back(std::to_string(i));
  std::atomic<int> started{0};
  std::atomic<int> taken{0};
  std::atomic<int> most_ahead{0};
  {
    ReadAhead<Variant> ahead(paths.size(), [&](size_t index) {
      const std::string& path = paths[index];
      const int ahead_now = started.fetch_add(1) + 1 - taken.load();
      int seen = most_ahead.load();
      while (ahead_now > seen && !most_ahead.compare_exchange_weak(seen, ahead_now)) {
      }
      if (path == "7") throw std::runtime_error("unreadable");
      return Variant(path);
    }, 3);
    for (int i = 0; i < 50; ++i) {
      if (i == 20) i = 30;  // ten skipped: dropped unread by the caller
      taken.store(i);
      const std::unique_ptr<Variant> got = ahead.Take(i);
      taken.store(i + 1);
      ASSERT_NE(got, nullptr);
      if (i == 7) {
        EXPECT_TRUE(got->IsEmpty()) << "a read that raises reads as nothing";
      } else {
        ASSERT_EQ(got->AsString(), std::to_string(i));
      }
    }
    EXPECT_EQ(ahead.Take(50), nullptr) << "nothing after the last path";
    EXPECT_EQ(ahead.Take(3), nullptr) << "nothing twice";
  }
  // The depth plus the one being read and the one just taken.
  EXPECT_LE(most_ahead.load(), 5);

  // Dropped after one file: the reader stops instead of reading the other 49.
  std::atomic<int> reads{0};
  {
    ReadAhead<Variant> ahead(paths.size(), [&](size_t index) {
      ++reads;
      return Variant(paths[index]);
    }, 2);
    EXPECT_EQ(ahead.Take(0)->AsString(), "0");
  }
  EXPECT_LE(reads.load(), 4);
}

// A result handed back or skipped is destroyed on the reading thread, not the caller's.
TEST(ReadAhead, DiscardedResultsAreFreedByTheReader) {
  struct Marked {
    std::shared_ptr<std::thread::id> freed_on;
    Marked() = default;
    explicit Marked(std::shared_ptr<std::thread::id> at) : freed_on(std::move(at)) {}
    Marked(Marked&&) = default;
    Marked& operator=(Marked&&) = default;
    ~Marked() {
      if (freed_on) *freed_on = std::this_thread::get_id();
    }
  };
  std::vector<std::shared_ptr<std::thread::id>> marks;
  for (int i = 0; i < 40; ++i) marks.push_back(std::make_shared<std::thread::id>());
  {
    ReadAhead<Marked> ahead(marks.size(), [&](size_t index) { return Marked(marks[index]); }, 4);
    // Every other one taken: those skipped go back to the reader as well.
    for (size_t i = 1; i < marks.size(); i += 2) ahead.Discard(ahead.Take(i));
  }
  int by_caller = 0;
  for (const auto& mark : marks) by_caller += *mark == std::this_thread::get_id() ? 1 : 0;
  // Those handed back after the reader's last read are freed with the reader itself.
  EXPECT_LE(by_caller, 8);
}

}  // namespace
}  // namespace kwx::cli
