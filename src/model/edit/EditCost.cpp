#include "model/edit/EditCost.h"

#include <algorithm>

#include "model/NodeWalk.h"

namespace orvanel::editCost {
namespace {

constexpr std::uint64_t tilePixelCount = tilePixels;

/// The composite and the temporaries of isolating folders, which every edit of pixels updates.
std::uint64_t flattenedSurfaces(const Document& document) {
  std::uint64_t count = 1;
  forEachNode(document.rootNodes.value(), [&](const LayerNode& node) {
    const std::shared_ptr<LayerFolder> folder = node.folder();
    if (folder != nullptr && folder->isIsolating()) ++count;
  });
  return count;
}

std::uint64_t flattenedTileBytes(const Document& document, ColorMode mode) {
  return flattenedSurfaces(document) * tilePixelCount *
         static_cast<std::uint64_t>(bytesPerPixel(compositePixelFormat(mode)));
}

std::uint64_t tilesUnder(int width, int height) {
  const auto along = [](int side) { return static_cast<std::uint64_t>((side + tileSide - 1) / tileSide); };
  return along(width) * along(height);
}

bool holdsData(const Surface& surface) {
  for (int index = 0; index < surface.tileCount(); ++index) {
    if (!surface.tile(index).isUniform()) return true;
  }
  return false;
}

/// Tiles of a resized surface that can hold data: all of them or, if all tiles are uniform, those cut by the
/// old canvas's edges.
std::uint64_t tilesMadeFrom(const Surface& old, std::uint64_t newTiles) {
  const auto edges = 2 * static_cast<std::uint64_t>(old.tilesAcross() + old.tilesDown());
  return holdsData(old) ? newTiles : std::min(newTiles, edges);
}

}  // namespace

int tilesRewritten(const Surface& surface, const Surface* weight) {
  int count = 0;
  for (int index = 0; index < surface.tileCount(); ++index) {
    const bool isWeightUniform = weight == nullptr || weight->tile(index).isUniform();
    if (weight != nullptr && isWeightUniform && weight->tile(index).pixel() == 0) continue;
    if (!surface.tile(index).isUniform() || !isWeightUniform) ++count;
  }
  return count;
}

int tilesMoved(const Surface& surface) {
  return holdsData(surface) ? surface.tileCount() : 0;
}

std::uint64_t ofTiles(const Document& document, const Surface& surface, int tiles) {
  return static_cast<std::uint64_t>(tiles) *
         (surface.tileBytes() + flattenedTileBytes(document, document.colorMode.value()));
}

std::uint64_t ofCanvas(const Document& document, int width, int height, ColorMode mode) {
  const std::uint64_t tiles = tilesUnder(width, height);
  const auto layerTileBytes =
      tilePixelCount * static_cast<std::uint64_t>(bytesPerPixel(layerPixelFormat(mode)));
  std::uint64_t bytes = 0;
  std::uint64_t flattened = 0;
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) {
    for (const SurfaceKind kind : {SurfaceKind::pixels, SurfaceKind::mask}) {
      const ConstTexture surface = layer->surface(kind);
      if (surface == nullptr) continue;
      const std::uint64_t made = tilesMadeFrom(*surface, tiles);
      bytes += made * (kind == SurfaceKind::mask ? surface->tileBytes() : layerTileBytes);
      flattened += made;
    }
  }
  return bytes + std::min(flattened, tiles) * flattenedTileBytes(document, mode);
}

std::uint64_t ofPaste(const Document& document, const PixelClipboard& clipboard) {
  const ColorMode mode = document.colorMode.value();
  // One more tile on each side, because the rectangle needn't be aligned to the grid.
  const std::uint64_t tiles = tilesUnder(static_cast<int>(clipboard.width) + 2 * tileSide,
                                         static_cast<int>(clipboard.height) + 2 * tileSide);
  const auto layerBytes = static_cast<std::uint64_t>(bytesPerPixel(layerPixelFormat(mode)));
  const auto copiedBytes = static_cast<std::uint64_t>(bytesPerPixel(clipboard.pixelFormat));
  // The copied pixels, their conversion, the layer and the surfaces it is flattened into.
  return tiles * (tilePixelCount * (copiedBytes + 2 * layerBytes) + flattenedTileBytes(document, mode));
}

std::uint64_t ofStep(const Document& document, std::uint64_t recordBytes) {
  return recordBytes * (1 + flattenedSurfaces(document));
}

}  // namespace orvanel::editCost
