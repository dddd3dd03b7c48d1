#include "model/edit/EditCost.h"

#include <algorithm>
#include <utility>

#include "model/DocumentCompositor.h"
#include "model/NodeWalk.h"
#include "raster/HalfFloat.h"
#include "raster/TileContribution.h"

namespace orvanel::editCost {
namespace {

constexpr std::uint64_t tilePixelCount = tilePixels;

std::uint64_t bytesPerTile(PixelFormat format) {
  return tilePixelCount * static_cast<std::uint64_t>(bytesPerPixel(format));
}

std::uint64_t tilesUnder(int width, int height) {
  const auto along = [](int side) { return static_cast<std::uint64_t>((side + tileSide - 1) / tileSide); };
  return along(width) * along(height);
}

std::uint64_t dataTileCount(const Surface& surface) {
  std::uint64_t count = 0;
  for (int index = 0; index < surface.tileCount(); ++index) count += surface.tile(index).isUniform() ? 0 : 1;
  return count;
}

bool isUnder(const Surface& weight, int index) {
  const Tile& tile = weight.tile(index);
  return !tile.isUniform() || tile.pixel() != 0;
}

/// Tiles of a resized surface that can hold data: all of them or, if all tiles are uniform, those cut by the
/// old canvas's edges.
std::uint64_t tilesMadeFrom(const Surface& old, std::uint64_t newTiles) {
  const auto edges = 2 * static_cast<std::uint64_t>(old.tilesAcross() + old.tilesDown());
  return dataTileCount(old) > 0 ? newTiles : std::min(newTiles, edges);
}

bool isBlended(const Surface& surface, const Surface& weight, int index) {
  const Tile& under = weight.tile(index);
  return !under.isUniform() || (under.pixel() != floatToHalf(1.0F) && !surface.tile(index).isUniform());
}

/// Every tile that `mayChange`, and whether it can be data then.
template <typename MayChange, typename IsData>
ChangedTiles tilesChanged(const Surface& surface, const MayChange& mayChange, const IsData& isData) {
  ChangedTiles changed;
  for (int index = 0; index < surface.tileCount(); ++index) {
    if (mayChange(index)) (isData(index) ? changed.data : changed.uniform).push_back(index);
  }
  return changed;
}

constexpr auto everywhere = [](int) { return true; };
constexpr auto nowhere = [](int) { return false; };

/// Tests the tiles of a layer's surface, never those of a mask.
auto isSeen(const Surface& surface) {
  return [&surface](int index) { return !isTransparent(surface.tile(index), surface.format()); };
}

}  // namespace

ChangedTiles tilesRewritten(const Surface& surface, const Surface* weight) {
  const auto isData = [&](int index) {
    return !surface.tile(index).isUniform() || (weight != nullptr && !weight->tile(index).isUniform());
  };
  const bool isMask = surface.format() == maskPixelFormat;
  const auto mayChange = [&](int index) {
    const bool isReached = weight == nullptr || isUnder(*weight, index);
    return isReached && (isMask || isData(index) || isSeen(surface)(index));
  };
  return tilesChanged(surface, mayChange, isData);
}

ChangedTiles tilesBlended(const Surface& surface, const Surface& weight) {
  return tilesChanged(
      surface, [&](int index) { return isUnder(weight, index); },
      [&](int index) { return isBlended(surface, weight, index); });
}

ChangedTiles tilesMasked(const Surface& surface, const Surface& mask) {
  // A transparent tile that has a colour loses it where the mask is empty.
  const auto isData = [&](int index) {
    const Tile& tile = surface.tile(index);
    const bool isEmpty = tile.isUniform() && tile.pixel() == 0;
    return !isEmpty && isUnder(mask, index) && isBlended(surface, mask, index);
  };
  return tilesChanged(
      surface, [&](int index) { return isData(index) || isSeen(surface)(index); }, isData);
}

ChangedTiles tilesFilled(const Surface& surface) {
  return tilesChanged(surface, everywhere, nowhere);
}

ChangedTiles tilesCleared(const Surface& surface) {
  return tilesChanged(surface, isSeen(surface), nowhere);
}

ChangedTiles tilesHidden(const Surface& pixels, const Surface& mask) {
  return tilesChanged(pixels, isSeen(pixels), [&](int index) {
    return !pixels.tile(index).isUniform() || !mask.tile(index).isUniform();
  });
}

std::uint64_t ofTiles(const Document& document, const Surface& surface, const PixelChange& change) {
  return change.tiles.data.size() * surface.tileBytes() + ofFlattening(document, change);
}

std::uint64_t ofNewFlattening(const Document& document, int width, int height, ColorMode mode,
                              std::uint64_t dataTiles) {
  std::uint64_t surfaces = 1;
  forEachNode(document.rootNodes.value(), [&](const LayerNode& node) {
    const std::shared_ptr<LayerFolder> folder = node.folder();
    if (folder != nullptr && folder->isIsolating()) ++surfaces;
  });
  // A temporary holds data where one of its own layers does.
  const std::uint64_t tiles = std::min(dataTiles, tilesUnder(width, height)) +
                              std::min(dataTiles, (surfaces - 1) * tilesUnder(width, height));
  return tiles * bytesPerTile(compositePixelFormat(mode));
}

std::uint64_t ofCanvas(const Document& document, int width, int height, ColorMode mode) {
  const std::uint64_t tiles = tilesUnder(width, height);
  std::uint64_t bytes = 0;
  std::uint64_t made = 0;
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) {
    for (const SurfaceKind kind : {SurfaceKind::pixels, SurfaceKind::mask}) {
      const ConstTexture surface = layer->surface(kind);
      if (surface == nullptr) continue;
      const std::uint64_t count = tilesMadeFrom(*surface, tiles);
      bytes +=
          count * (kind == SurfaceKind::mask ? surface->tileBytes() : bytesPerTile(layerPixelFormat(mode)));
      made += count;
    }
  }
  return bytes + ofNewFlattening(document, width, height, mode, made);
}

std::uint64_t ofCopy(const Surface& pixels, const Surface& weight, const PixelRect& bounds) {
  // The copy has a grid of its own, in which a tile can lie in four.
  const std::uint64_t tiles = 4 * tilesRewritten(pixels, &weight).data.size();
  return std::min(tiles, tilesUnder(bounds.width, bounds.height)) * pixels.tileBytes();
}

std::uint64_t ofPaste(const Document& document, const PixelClipboard& clipboard) {
  const ColorMode mode = document.colorMode.value();
  const auto width = static_cast<int>(clipboard.width);
  const auto height = static_cast<int>(clipboard.height);
  const std::uint64_t copied = clipboard.snapshot->dataTileCount();
  // In the layer's grid a copied tile can lie in four tiles, and the rectangle's edges cut uniform ones.
  const auto acrossAndDown = static_cast<std::uint64_t>(width / tileSide + height / tileSide + 4);
  const std::uint64_t placed =
      std::min(4 * copied + 2 * acrossAndDown, tilesUnder(width + 2 * tileSide, height + 2 * tileSide));
  const std::uint64_t layerTile = bytesPerTile(layerPixelFormat(mode));
  return copied * (bytesPerTile(clipboard.pixelFormat) + layerTile) + placed * layerTile +
         ofFlattening(document) +
         ofNewFlattening(document, width + 2 * tileSide, height + 2 * tileSide, mode, placed);
}

std::uint64_t ofMaskLike(const Surface& source) {
  return dataTileCount(source) * bytesPerTile(maskPixelFormat);
}

std::uint64_t ofStep(const Document& document, const UndoableOperation::StepCost& step) {
  // A step of the tree or a property tells of flattening itself.
  if (step.tiles.data.empty() && step.tiles.uniform.empty()) return step.bytes;
  return step.bytes + ofFlattening(document, {.tiles = step.tiles});
}

}  // namespace orvanel::editCost
