#include "model/edit/MoveCost.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "model/edit/FlatteningCost.h"
#include "raster/TileContribution.h"

namespace orvanel::editCost {
namespace {

/// Numbers of tiles.
struct Reached {
  std::uint64_t data = 0;  ///< that can be data
  std::uint64_t seen = 0;  ///< that can be anything but transparent
};

/// A place of a surface's grid or beside it, where everything is transparent.
struct Place {
  bool isData = false;
  std::uint64_t pixel = 0;
};

Place placeAt(const Surface& surface, int tileX, int tileY) {
  if (tileX < 0 || tileX >= surface.tilesAcross() || tileY < 0 || tileY >= surface.tilesDown()) return {};
  const int index = surface.tileIndex(tileX, tileY);
  const Tile& tile = surface.tile(index);
  if (!tile.isUniform()) return {.isData = true};
  const PixelRect rect = surface.tileRect(index);
  const bool isWhole = rect.width == tileSide && rect.height == tileSide;
  // The rest of a tile at the edge is transparent.
  return {.isData = !isWhole && tile.pixel() != 0, .pixel = tile.pixel()};
}

/// After a shift by whole pixels a tile takes from two times two neighbouring ones, and no other tile takes
/// from the same.
Reached reachedByShifts(const Surface& surface) {
  Reached reached;
  for (int y = -1; y < surface.tilesDown(); ++y) {
    for (int x = -1; x < surface.tilesAcross(); ++x) {
      const std::array<Place, 4> from{placeAt(surface, x, y), placeAt(surface, x + 1, y),
                                      placeAt(surface, x, y + 1), placeAt(surface, x + 1, y + 1)};
      const bool isData = std::ranges::any_of(
          from, [&](const Place& place) { return place.isData || place.pixel != from[0].pixel; });
      const bool isSeen = isData || from[0].pixel != 0;
      reached.data += isData ? 1 : 0;
      reached.seen += isSeen ? 1 : 0;
    }
  }
  const auto all = static_cast<std::uint64_t>(surface.tileCount());
  return {.data = std::min(reached.data, all), .seen = std::min(reached.seen, all)};
}

std::vector<int> seenTiles(const Surface& pixels) {
  std::vector<int> seen;
  for (int index = 0; index < pixels.tileCount(); ++index) {
    if (!isTransparent(pixels.tile(index), pixels.format())) seen.push_back(index);
  }
  return seen;
}

}  // namespace

MoveCost ofMoves(const Document& document, const Layer& layer, const std::vector<SurfaceKind>& kinds) {
  const Surface& pixels = *layer.surface(SurfaceKind::pixels);
  const FlatteningOfMoves flattening(document, layer.id, seenTiles(pixels));
  // A mask that moves alone is seen where the layer has pixels.
  const bool movesPixels = std::ranges::find(kinds, SurfaceKind::pixels) != kinds.end();
  const auto all = static_cast<std::uint64_t>(pixels.tileCount());
  // Where it was flattened last, and where it comes to next.
  const std::uint64_t seen = movesPixels ? 2 * reachedByShifts(pixels).seen : 0;
  MoveCost cost{.shifted = flattening.bytesFor(seen), .anywhere = flattening.bytesFor(movesPixels ? all : 0)};
  for (const SurfaceKind kind : kinds) {
    const Surface& surface = *layer.surface(kind);
    cost.shifted += reachedByShifts(surface).data * surface.tileBytes();
    cost.anywhere += all * surface.tileBytes();
  }
  return cost;
}

std::uint64_t ofMove(const Document& document, const Layer& layer,
                     const std::vector<MovedSurface>& surfaces) {
  const Surface& standing = *layer.surface(SurfaceKind::pixels);
  PixelChange flattened{.tiles = {.data = seenTiles(standing), .uniform = {}}, .layerID = layer.id};
  std::uint64_t bytes = 0;
  std::vector<int> coloredLater;
  std::vector<int> maskedLater;
  for (const MovedSurface& moved : surfaces) {
    SurfaceForecast forecast = forecastOf(moved.change, moved.original);
    bytes += forecast.data.size() * moved.original.tileBytes();
    if (moved.kind != SurfaceKind::pixels) {
      maskedLater = std::move(forecast.data);
      continue;
    }
    std::vector<int>& uniform = flattened.tiles.uniform;
    uniform = seenTiles(moved.original);
    for (const std::vector<int>& more : {flattened.tiles.data, forecast.uniform}) {
      uniform.insert(uniform.end(), more.begin(), more.end());
    }
    flattened.tiles.data = std::move(forecast.data);
    coloredLater = std::move(forecast.uniform);
  }
  // One colour under a mask's data is flattened to data.
  std::ranges::set_intersection(coloredLater, maskedLater, std::back_inserter(flattened.tiles.data));
  return bytes + ofFlattening(document, flattened);
}

}  // namespace orvanel::editCost
