#include "raster/Background.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

namespace orvanel {
namespace {

/// Counts unfinished tasks so that callers can wait for them.
class PendingTasks {
 public:
  void add() {
    const std::lock_guard guard(mutex_);
    ++pending_;
  }
  void remove() {
    const std::lock_guard guard(mutex_);
    if (--pending_ == 0) none_.notify_all();
  }
  void waitForNone() {
    std::unique_lock guard(mutex_);
    none_.wait(guard, [this] { return pending_ == 0; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable none_;
  int pending_ = 0;
};

// Never destroyed: work may still be running when main returns.
PendingTasks& pendingTasks() {
  static auto* tasks = new PendingTasks;
  return *tasks;
}

}  // namespace

tbb::task_arena& backgroundArena() {
  // One slot is reserved for a thread that joins the arena with a job of its own, such as a save.
  static auto* arena = new tbb::task_arena(std::max(2, tbb::this_task_arena::max_concurrency()), 1,
                                           tbb::task_arena::priority::low);
  return *arena;
}

void enqueueBackgroundTask(std::function<void()> task) {
  pendingTasks().add();
  auto held = std::make_unique<std::function<void()>>(std::move(task));
  backgroundArena().enqueue([task = held.release()] {
    {
      // Release the task's captures before anyone is told that it has finished.
      const std::unique_ptr<std::function<void()>> owned(task);
      (*owned)();
    }
    pendingTasks().remove();
  });
}

void waitForBackgroundWork() {
  pendingTasks().waitForNone();
}

}  // namespace orvanel
