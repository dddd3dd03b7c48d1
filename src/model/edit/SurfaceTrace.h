// The identities of a surface's tiles at one moment: enough to find the tiles that have changed since,
// without reading pixels. A plain value; any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "raster/Surface.h"

namespace orvanel {

class SurfaceTrace {
 public:
  SurfaceTrace() = default;
  explicit SurfaceTrace(const Surface& surface);

  /// Indices of the tiles of `now` that may hold other pixels, in ascending order; all of them if its size or
  /// format differs.
  [[nodiscard]] std::vector<int> changedTiles(const Surface& now) const;

 private:
  struct TileIdentity {
    std::uint64_t value = 0;  ///< the pixel of a uniform tile, otherwise the version
    bool isUniform = true;
    friend bool operator==(const TileIdentity&, const TileIdentity&) = default;
  };
  [[nodiscard]] static TileIdentity identityOf(const Tile& tile);

  PixelFormat format_ = PixelFormat::rgba8Unorm;
  int width_ = 0;
  int height_ = 0;
  std::vector<TileIdentity> tiles_;
};

/// The indices of all tiles of a surface.
[[nodiscard]] std::vector<int> allTiles(const Surface& surface);

}  // namespace orvanel
