// The one thread that writes journals: of low priority, one piece of work after the other. Owned by
// `Recovery`; the main thread hands it work.
#pragma once

#include <QThreadPool>
#include <atomic>
#include <chrono>
#include <functional>

namespace orvanel {

/// Processor time of the calling thread: what work costs, however busy the machine is.
[[nodiscard]] std::chrono::nanoseconds threadTime();

class JournalLane {
 public:
  JournalLane();
  /// Waits for all work.
  ~JournalLane();
  JournalLane(const JournalLane&) = delete;
  JournalLane& operator=(const JournalLane&) = delete;

  void run(std::function<void()> work);
  void wait() { pool_.waitForDone(); }
  /// Processor time of all work so far.
  [[nodiscard]] std::chrono::nanoseconds timeUsed() const { return std::chrono::nanoseconds(used_.load()); }

 private:
  std::atomic<std::int64_t> used_{0};
  QThreadPool pool_;
};

}  // namespace orvanel
