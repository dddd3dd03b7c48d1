// A change of a whole surface as a value: what a gesture shows before it is written. Immutable; any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

#include "raster/KernelRecords.h"
#include "raster/Tile.h"

namespace orvanel {

class MetalContext;
class Surface;

/// Levels under a selection, or everywhere without one. The selection must not change any more.
struct LevelsChange {
  LevelsParams params;
  std::shared_ptr<const Surface> selection;
};

struct SurfaceChange {
  /// The arguments of the kernel that makes the change.
  std::variant<OffsetParams, ScaleParams, RotateParams, AffineParams, LevelsChange> arguments;
  /// A number that no other change and no tile has had.
  std::uint64_t version = nextTileVersion();
};

/// Writes the changed pixels of `source` into `destination`. The surfaces are of one size and format.
void applyChange(const SurfaceChange& change, const MetalContext& context, const Surface& source,
                 Surface& destination);

/// What a change makes of a surface's tiles, in ascending order; the others are transparent.
struct SurfaceForecast {
  std::vector<int> data;  ///< those that can be data
  std::vector<int> uniform;
};
/// Told without reading a pixel.
[[nodiscard]] SurfaceForecast forecastOf(const SurfaceChange& change, const Surface& source);

}  // namespace orvanel
