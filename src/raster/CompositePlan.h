// A run of "compositeLayer" dispatches, recorded first and then carried out tile by tile: all layers of a
// tile while its accumulator is in cache, and only the tiles whose inputs have changed.
// Built and run on the main thread; the work spreads over both cores and is complete when `run` returns.
#pragma once

#include <cstdint>
#include <vector>

#include "raster/KernelRecords.h"
#include "raster/Surface.h"
#include "raster/SurfaceChange.h"

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

  /// A surface of a layer, seen through a change that isn't written yet, or as it is.
  struct Source {
    const Surface* surface = nullptr;
    const SurfaceChange* change = nullptr;
  };

  /// Composites `source` over `target`. `mask` has no surface when `params.hasMask` is 0.
  void compositeLayer(Target target, const CompositeParams& params, const Source& source, const Source& mask);
  void compositeLayer(Target target, const CompositeParams& params, const Surface& source,
                      const Surface* mask) {
    compositeLayer(target, params, Source{&source, nullptr}, Source{mask, nullptr});
  }
  /// Composites the finished `source` target over `target`.
  void compositeTarget(Target target, const CompositeParams& params, Target source);

  /// Brings the targets up to date. All changes have been written: only `SampledComposite` sees through them.
  CompositeReport run(CompositeScope scope);
  /// The same for `count` tiles of the canvas from `firstTile` on.
  CompositeReport run(CompositeScope scope, int firstTile, int count);
  [[nodiscard]] int tileCount() const { return targets_.front().surface->tileCount(); }

  // What a run would do, told without doing it. The canvas and the temporaries stay as they are.

  /// The tiles of the canvas that are out of date, in ascending order.
  [[nodiscard]] std::vector<int> staleTiles() const;
  /// The most data tiles, of all targets together, that a run from `firstTile` on writes.
  [[nodiscard]] std::uint64_t dataTilesToMake(int firstTile) const;

  struct Step {
    CompositeParams params;
    Source source;
    Source mask;
    Target nested = -1;  ///< in the place of a source
  };
  struct TargetPlan {
    Surface* surface = nullptr;
    std::vector<Step> steps;
  };

  [[nodiscard]] const std::vector<TargetPlan>& targets() const { return targets_; }

 private:
  std::vector<TargetPlan> targets_;
};

}  // namespace orvanel
