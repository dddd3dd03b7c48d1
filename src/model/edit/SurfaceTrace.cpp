#include "model/edit/SurfaceTrace.h"

#include <numeric>

namespace orvanel {

SurfaceTrace::SurfaceTrace(const Surface& surface)
    : format_(surface.format()), width_(surface.width()), height_(surface.height()) {
  tiles_.reserve(static_cast<std::size_t>(surface.tileCount()));
  for (int index = 0; index < surface.tileCount(); ++index) tiles_.push_back(identityOf(surface.tile(index)));
}

SurfaceTrace::TileIdentity SurfaceTrace::identityOf(const Tile& tile) {
  return {.value = tile.isUniform() ? tile.pixel() : tile.version(), .isUniform = tile.isUniform()};
}

std::vector<int> SurfaceTrace::changedTiles(const Surface& now) const {
  if (now.format() != format_ || now.width() != width_ || now.height() != height_) return allTiles(now);
  std::vector<int> changed;
  for (int index = 0; index < now.tileCount(); ++index) {
    if (identityOf(now.tile(index)) != tiles_[static_cast<std::size_t>(index)]) changed.push_back(index);
  }
  return changed;
}

std::vector<int> allTiles(const Surface& surface) {
  std::vector<int> tiles(static_cast<std::size_t>(surface.tileCount()));
  std::iota(tiles.begin(), tiles.end(), 0);
  return tiles;
}

}  // namespace orvanel
