// What a surface held at one moment, by the identities of its tiles: enough to tell later which tiles have
// other contents, without a look at any pixel. A plain value; any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "raster/Surface.h"

namespace orvanel {

class SurfaceTrace {
 public:
  SurfaceTrace() = default;
  explicit SurfaceTrace(const Surface& surface);

  /// Indices of the tiles of `now` that may hold other pixels, in ascending order; all of them when it has
  /// another size or format.
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
