#include "raster/Background.h"

#include <algorithm>

namespace orvanel {

tbb::task_arena& backgroundArena() {
  // One slot is kept for a thread that comes to work through a job of its own, as a save does. Never
  // destroyed: work may still be under way when main returns.
  static auto* arena = new tbb::task_arena(std::max(2, tbb::this_task_arena::max_concurrency()), 1,
                                           tbb::task_arena::priority::low);
  return *arena;
}

}  // namespace orvanel
