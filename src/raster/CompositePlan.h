// A run of "compositeLayer" dispatches, recorded first and then carried out tile by tile: all layers of a
// tile while its accumulator is in cache, and only the tiles whose inputs have changed.
// Built and run on the main thread; the work spreads over both cores and is complete when `run` returns.
#pragma once

#include <cstdint>
#include <vector>

#include "raster/KernelRecords.h"
#include "raster/Surface.h"

namespace orvanel {

/// Which tiles a run recomputes.
enum class CompositeScope {
  changedTiles,  ///< those whose recipe differs
  allTiles,      ///< every tile
};

struct CompositeReport {
  int tilesMade = 0;  ///< of all targets together
};

class CompositePlan {
 public:
  using Target = int;

  /// `canvas` gets the flattened image. Its format decides the rounding.
  explicit CompositePlan(Surface& canvas);

  /// The outermost target: the canvas.
  [[nodiscard]] static constexpr Target canvasTarget() { return 0; }

  /// A further target, cleared before its first dispatch: a folder's temporary.
  [[nodiscard]] Target addTarget(Surface& temporary);

  /// Composites `source` over `target`. `mask` is null when `params.hasMask` is 0.
  void compositeLayer(Target target, const CompositeParams& params, const Surface& source,
                      const Surface* mask);
  /// Composites the finished `source` target over `target`.
  void compositeTarget(Target target, const CompositeParams& params, Target source);

  CompositeReport run(CompositeScope scope);

  struct Step {
    CompositeParams params;
    const Surface* source = nullptr;
    const Surface* mask = nullptr;
    Target nested = -1;
  };
  struct TargetPlan {
    Surface* surface = nullptr;
    std::vector<Step> steps;
  };

 private:
  std::vector<TargetPlan> targets_;
};

}  // namespace orvanel
