#include "recovery/JournalLane.h"

#include <sys/resource.h>
#include <unistd.h>

#include <ctime>
#include <system_error>
#include <thread>
#include <utility>

namespace orvanel {
namespace {

/// Everything that a user waits for comes first.
constexpr int niceness = 10;

}  // namespace

std::chrono::nanoseconds threadTime() {
  timespec time{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// Turns.

void JournalTurns::enter() {
  std::unique_lock guard(mutex_);
  const std::uint64_t ticket = next_++;
  changed_.wait(guard, [&] { return ticket < mayBegin_ || hasEnded_; });
}

void JournalTurns::leave() {
  const std::lock_guard guard(mutex_);
  ++mayBegin_;
  changed_.notify_all();
}

void JournalTurns::end() {
  const std::lock_guard guard(mutex_);
  hasEnded_ = true;
  changed_.notify_all();
}

bool JournalTurns::hasEnded() const {
  const std::lock_guard guard(mutex_);
  return hasEnded_;
}

bool JournalTurns::Turn::pass() {
  const bool doOthersWait = [this] {
    const std::lock_guard guard(turns_.mutex_);
    return turns_.next_ > turns_.mayBegin_;
  }();
  if (doOthersWait) {
    turns_.leave();
    turns_.enter();
  }
  return !turns_.hasEnded();
}

// Lanes.

bool JournalLane::run(std::function<void()> work) {
  const std::lock_guard guard(mutex_);
  due_.push_back(std::move(work));
  return startIfNeeded();
}

void JournalLane::runWhenIdle(std::function<void()> work) {
  const std::lock_guard guard(mutex_);
  spare_.push_back(std::move(work));
  startIfNeeded();
}

JournalLane::Wake JournalLane::wake() {
  const std::lock_guard guard(mutex_);
  if (!needsThread()) return Wake::wasAtWork;
  return startIfNeeded() ? Wake::started : Wake::noThread;
}

bool JournalLane::startIfNeeded() {
  if (!needsThread()) return true;
  try {
    std::thread([self = shared_from_this()] { self->workOff(); }).detach();
    hasThread_ = true;
  } catch (const std::system_error&) {
    // There are too many threads, or too little memory for another.
  }
  return hasThread_;
}

std::function<void()> JournalLane::next() {
  const std::lock_guard guard(mutex_);
  if (turns_->hasEnded()) spare_.clear();
  isDoingDue_ = !due_.empty();
  auto& queue = isDoingDue_ ? due_ : spare_;
  std::function<void()> work;
  if (queue.empty()) {
    hasThread_ = false;
  } else {
    work = std::move(queue.front());
    queue.pop_front();
  }
  changed_.notify_all();
  return work;
}

void JournalLane::workOff() {
  ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), niceness);
  auto start = threadTime();
  while (auto work = next()) {
    std::exchange(work, {})();
    const auto now = threadTime();
    turns_->addTime(now - std::exchange(start, now));
  }
}

bool JournalLane::waitForWork(Clock::time_point deadline) {
  std::unique_lock guard(mutex_);
  if (!startIfNeeded()) return false;
  return changed_.wait_until(guard, deadline, [this] { return due_.empty() && !isDoingDue_; });
}

bool JournalLane::waitForRest(Clock::time_point deadline) {
  std::unique_lock guard(mutex_);
  return changed_.wait_until(guard, deadline, [this] { return !hasThread_; });
}

}  // namespace orvanel
