#include "io/files/Parallel.h"

#include <tbb/parallel_for.h>

#include <atomic>
#include <mutex>

#include "raster/Background.h"

namespace orvanel {

Described<void> forEachInBackground(std::size_t count,
                                    const std::function<Described<void>(std::size_t)>& body) {
  Described<void> result;
  std::mutex mutex;
  std::atomic<bool> hasFailed{false};
  std::atomic<std::size_t> next{0};
  // Each task takes the next index, so that the pieces are begun in order and end at about one time; between
  // two a worker can turn to what a user waits for.
  const auto takeNext = [&] {
    const std::size_t index = next++;
    if (hasFailed.load()) return;
    if (auto outcome = body(index); !outcome) {
      const std::lock_guard lock(mutex);
      if (!hasFailed.exchange(true)) result = std::move(outcome);
    }
  };
  backgroundArena().execute([&] {
    tbb::parallel_for(
        std::size_t{0}, count, [&](std::size_t) { takeNext(); }, tbb::simple_partitioner());
  });
  return result;
}

}  // namespace orvanel
