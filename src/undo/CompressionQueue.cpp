#include "undo/CompressionQueue.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "raster/Background.h"
#include "raster/TileMemory.h"

namespace orvanel::compressionQueue {
namespace {

using Clock = std::chrono::steady_clock;

// Few enough that a core is free for the next frame within a millisecond or two.
constexpr int tilesPerTask = 4;
// About two milliseconds on two cores.
constexpr int tilesPerHelp = 32;

class Waiting {
 public:
  void add(const std::shared_ptr<SnapshotContents>& contents) {
    const std::lock_guard guard(mutex_);
    forgetFinished();
    contents_.push_back(contents);
  }

  void finished() {
    const std::lock_guard guard(mutex_);
    forgetFinished();
    changed_.notify_all();
  }

  [[nodiscard]] std::vector<std::shared_ptr<SnapshotContents>> all() {
    const std::lock_guard guard(mutex_);
    std::vector<std::shared_ptr<SnapshotContents>> list;
    for (const auto& weak : contents_) {
      if (auto contents = weak.lock()) list.push_back(std::move(contents));
    }
    return list;
  }

  void waitFor(const std::vector<std::shared_ptr<SnapshotContents>>& list, Clock::time_point deadline) {
    std::unique_lock guard(mutex_);
    changed_.wait_until(guard, deadline, [&list] {
      return std::ranges::all_of(list, [](const auto& contents) { return contents->isCompressed(); });
    });
  }

 private:
  void forgetFinished() {
    std::erase_if(contents_, [](const std::weak_ptr<SnapshotContents>& weak) {
      const std::shared_ptr<SnapshotContents> contents = weak.lock();
      return contents == nullptr || contents->isCompressed();
    });
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::weak_ptr<SnapshotContents>> contents_;
};

// Never destroyed: background work may still be under way when main returns.
Waiting& waiting() {
  static auto* instance = new Waiting;
  return *instance;
}

void compressInBackground(const std::weak_ptr<SnapshotContents>& weak) {
  enqueueBackgroundTask([weak] {
    const std::shared_ptr<SnapshotContents> contents = weak.lock();
    if (contents == nullptr) return;
    bool isMore = true;
    for (int tile = 0; tile < tilesPerTask && isMore; ++tile) isMore = contents->compressNext();
    if (isMore) return compressInBackground(weak);
    waiting().finished();
    tileMemory::trim();
  });
}

}  // namespace

void add(const std::shared_ptr<SnapshotContents>& contents) {
  if (contents->isCompressed()) return;
  waiting().add(contents);
  compressInBackground(contents);
}

void help(std::chrono::milliseconds limit, const std::function<bool()>& isEnough) {
  const Clock::time_point deadline = Clock::now() + limit;
  const std::vector<std::shared_ptr<SnapshotContents>> list = waiting().all();
  for (const std::shared_ptr<SnapshotContents>& contents : list) {
    std::atomic<bool> isMore = true;
    while (isMore) {
      if (Clock::now() >= deadline || isEnough()) return;
      tbb::parallel_for(0, tilesPerHelp, [&](int) {
        if (!contents->compressNext()) isMore = false;
      });
    }
  }
  waiting().waitFor(list, deadline);
}

}  // namespace orvanel::compressionQueue
