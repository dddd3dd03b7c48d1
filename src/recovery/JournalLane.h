// The threads that write journals, all of low priority. Each journal has a lane, whose work is done in order.
// However many lanes there are, only a few are at work at once, and long work lets others go first between
// two pieces, so that a huge record of one document doesn't keep the small ones of others waiting. Nobody has
// to wait for a lane: a thread that hangs in the system keeps what it needs. Any thread.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace orvanel {

/// Processor time of the calling thread: what work costs, however busy the machine is.
[[nodiscard]] std::chrono::nanoseconds threadTime();

/// Who may be at work: first come, first served. Shared by all lanes.
class JournalTurns {
 public:
  explicit JournalTurns(std::uint64_t atOnce = 2) : mayBegin_(atOnce) {}

  /// A turn at work, from its making, which waits for it, to its end.
  class Turn {
   public:
    explicit Turn(JournalTurns& turns) : turns_(turns) { turns_.enter(); }
    ~Turn() { turns_.leave(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    /// Between two pieces of work: lets those who wait go first. False if the work is to be left undone.
    [[nodiscard]] bool pass();

   private:
    JournalTurns& turns_;
  };

  /// The program ends: no work goes on beyond its piece.
  void end();
  [[nodiscard]] bool hasEnded() const;

  void addTime(std::chrono::nanoseconds time) { used_ += time.count(); }
  /// Processor time of all work so far.
  [[nodiscard]] std::chrono::nanoseconds timeUsed() const { return std::chrono::nanoseconds(used_.load()); }

 private:
  void enter();
  void leave();

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t next_ = 0;
  /// How many, in the order of their coming, have been let in so far.
  std::uint64_t mayBegin_;
  bool hasEnded_ = false;
  std::atomic<std::int64_t> used_{0};
};

class JournalLane : public std::enable_shared_from_this<JournalLane> {
 public:
  using Clock = std::chrono::steady_clock;

  explicit JournalLane(std::shared_ptr<JournalTurns> turns) : turns_(std::move(turns)) {}

  /// False if no thread can be started now. The work stays, for `wake` or other work to try again.
  bool run(std::function<void()> work);
  enum class Wake {
    noThread,   ///< none can be started now
    started,    ///< what waits is only beginning
    wasAtWork,  ///< or nothing waits
  };
  /// Tries again to start a thread for what waits.
  Wake wake();
  /// For what can wait: done when there is nothing else, and left undone once the program ends.
  void runWhenIdle(std::function<void()> work);
  /// Whether all work is done that can't wait, at that time at the latest; at once if there is no thread for
  /// it.
  [[nodiscard]] bool waitForWork(Clock::time_point deadline);
  /// Whether the lane's thread is at rest, at that time at the latest.
  [[nodiscard]] bool waitForRest(Clock::time_point deadline);

 private:
  // With the mutex held.
  [[nodiscard]] bool needsThread() const { return !hasThread_ && !(due_.empty() && spare_.empty()); }
  bool startIfNeeded();
  void workOff();
  /// Empty if there is none.
  [[nodiscard]] std::function<void()> next();

  std::shared_ptr<JournalTurns> turns_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> due_;
  std::deque<std::function<void()>> spare_;
  bool hasThread_ = false;
  bool isDoingDue_ = false;
};

}  // namespace orvanel
