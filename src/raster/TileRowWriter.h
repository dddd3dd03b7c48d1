// Fills a row of a surface's tiles from the top, a few rows of pixels at a time, so that a caller that makes
// the pixels one strip after the other needs no more memory than fits a core's cache. One thread for each row
// of tiles.
#pragma once

#include <cstddef>
#include <vector>

#include "raster/Surface.h"

namespace orvanel {

class TileRowWriter {
 public:
  /// What the tiles of the row `tileY` held is lost with the first strip.
  TileRowWriter(Surface& surface, int tileY);

  /// Writes the next `count` rows of pixels, each as wide as the surface and packed. Tiles that are written
  /// with one value become uniform.
  void write(const std::byte* rows, int count);

 private:
  [[nodiscard]] std::byte* beginTile(int index, bool isEdge);

  Surface& surface_;
  int tileY_;
  int pixelBytes_;
  int row_ = 0;                    ///< the next one, counted from the top of the tiles
  std::vector<std::byte*> tiles_;  ///< null while a tile is uniform
};

}  // namespace orvanel
