#include "io/archive/ChunkPipeline.h"

#include <tbb/task_arena.h>

#include <algorithm>

#include "raster/Background.h"

namespace orvanel {

struct ChunkPipeline::State {
  std::mutex mutex;
  std::condition_variable changed;
  std::function<Chunk(int)> make;
  std::vector<std::optional<Chunk>> ring;  // chunk i waits at i modulo the window
  int count = 0;
  int taken = 0;
  int claimed = 0;
  int workers = 0;
  int making = 0;
  bool isCancelled = false;

  [[nodiscard]] int window() const { return static_cast<int>(ring.size()); }
  [[nodiscard]] bool hasWork() const { return !isCancelled && claimed < count && claimed < taken + window(); }
  std::optional<Chunk>& place(int index) { return ring[static_cast<std::size_t>(index % window())]; }

  /// Makes one chunk; called and left with the lock held.
  void makeOne(std::unique_lock<std::mutex>& lock) {
    const int index = claimed++;
    ++making;
    lock.unlock();
    Chunk chunk = make(index);
    lock.lock();
    place(index) = std::move(chunk);
    --making;
    changed.notify_all();
  }

  /// One chunk a task, so that urgent work can run in between.
  static void work(const std::shared_ptr<State>& state) {
    std::unique_lock lock(state->mutex);
    if (state->hasWork()) state->makeOne(lock);
    if (state->hasWork()) {
      enqueueBackgroundTask([state] { work(state); });
    } else {
      --state->workers;
    }
  }

  /// Starts as many workers as there are cores beside the consumer; called with the lock held.
  static void callWorkers(const std::shared_ptr<State>& state) {
    const int wanted = std::max(1, tbb::this_task_arena::max_concurrency() - 1);
    while (state->workers < wanted && state->hasWork()) {
      ++state->workers;
      enqueueBackgroundTask([state] { work(state); });
    }
  }
};

ChunkPipeline::ChunkPipeline(int count, int window, std::function<Chunk(int)> make)
    : state_(std::make_shared<State>()) {
  state_->make = std::move(make);
  state_->ring.resize(static_cast<std::size_t>(std::max(1, window)));
  state_->count = count;
  const std::lock_guard lock(state_->mutex);
  State::callWorkers(state_);
}

ChunkPipeline::~ChunkPipeline() {
  std::unique_lock lock(state_->mutex);
  state_->isCancelled = true;
  state_->changed.wait(lock, [this] { return state_->making == 0; });
  state_->ring.clear();
}

void ChunkPipeline::waitForNext() {
  std::unique_lock lock(state_->mutex);
  State::callWorkers(state_);
  while (!state_->place(state_->taken).has_value()) {
    if (state_->hasWork()) {
      state_->makeOne(lock);
    } else {
      state_->changed.wait(lock);
    }
  }
}

Chunk ChunkPipeline::take() {
  waitForNext();
  const std::lock_guard lock(state_->mutex);
  std::optional<Chunk>& place = state_->place(state_->taken);
  Chunk chunk = std::move(*place);
  place.reset();
  ++state_->taken;
  State::callWorkers(state_);
  return chunk;
}

}  // namespace orvanel
