#include "model/edit/EditCost.h"

#include <algorithm>
#include <utility>

#include "model/DocumentCompositor.h"
#include "model/NodeWalk.h"
#include "raster/HalfFloat.h"

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

std::uint64_t countOf(const std::vector<bool>& flags) {
  return static_cast<std::uint64_t>(std::ranges::count(flags, true));
}

std::uint64_t dataTileCount(const Surface& surface) {
  return dataTiles(surface).size();
}

/// Marks the tiles where the layer makes its target data.
void markData(const Layer& layer, std::vector<bool>& flags) {
  const ConstTexture pixels = layer.surface(SurfaceKind::pixels);
  const ConstTexture mask = layer.surface(SurfaceKind::mask);
  if (pixels == nullptr) return;
  for (int index = 0; index < pixels->tileCount(); ++index) {
    const Tile& tile = pixels->tile(index);
    const bool isTransparent = tile.isUniform() && tile.pixel() == 0;
    const bool isMasked = mask != nullptr && !mask->tile(index).isUniform() && !isTransparent;
    if (!tile.isUniform() || isMasked) flags[static_cast<std::size_t>(index)] = true;
  }
}

/// Data tiles of the composite and of the temporaries of isolating folders, were the document flattened.
std::uint64_t tilesToFlatten(const Document& document, const std::vector<int>& touched,
                             const std::optional<QUuid>& isolated) {
  std::vector<bool> none(static_cast<std::size_t>(document.compositedTexture.value()->tileCount()));
  for (const int tile : touched) none[static_cast<std::size_t>(tile)] = true;
  const auto isIsolating = [&](const LayerFolder& folder) {
    return folder.isIsolating() || isolated == folder.id;
  };
  std::uint64_t count = 0;
  std::vector<std::vector<bool>> targets{none};
  const auto finishTarget = [&] {
    const std::vector<bool> finished = std::move(targets.back());
    targets.pop_back();
    count += countOf(finished);
    if (targets.empty()) return;
    for (std::size_t i = 0; i < finished.size(); ++i) targets.back()[i] = targets.back()[i] || finished[i];
  };
  walkNodes(
      document.rootNodes.value(),
      [&](const LayerNode& node, const std::shared_ptr<LayerFolder>&, int) {
        if (const auto layer = node.layer()) markData(*layer, targets.back());
        if (const auto folder = node.folder(); folder != nullptr && isIsolating(*folder)) {
          targets.push_back(none);
        }
        return WalkStep::descend;
      },
      [&](const LayerFolder& folder) {
        if (isIsolating(folder)) finishTarget();
      });
  finishTarget();
  return count;
}

std::uint64_t tilesFlattened(const Document& document) {
  std::uint64_t count = dataTileCount(*document.compositedTexture.value());
  for (const ConstTexture& temporary : document.compositor().texturePool()) {
    count += dataTileCount(*temporary);
  }
  return count;
}

/// Tiles of a resized surface that can hold data: all of them or, if all tiles are uniform, those cut by the
/// old canvas's edges.
std::uint64_t tilesMadeFrom(const Surface& old, std::uint64_t newTiles) {
  const auto edges = 2 * static_cast<std::uint64_t>(old.tilesAcross() + old.tilesDown());
  return dataTileCount(old) > 0 ? newTiles : std::min(newTiles, edges);
}

template <typename Predicate>
std::vector<int> tilesWhere(const Surface& surface, const Predicate& is) {
  std::vector<int> tiles;
  for (int index = 0; index < surface.tileCount(); ++index) {
    if (is(index)) tiles.push_back(index);
  }
  return tiles;
}

}  // namespace

std::vector<int> dataTiles(const Surface& surface) {
  return tilesWhere(surface, [&](int index) { return !surface.tile(index).isUniform(); });
}

std::vector<int> tilesRewritten(const Surface& surface, const Surface* weight) {
  if (weight == nullptr) return dataTiles(surface);
  return tilesWhere(surface, [&](int index) {
    const Tile& under = weight->tile(index);
    return !under.isUniform() || (under.pixel() != 0 && !surface.tile(index).isUniform());
  });
}

std::vector<int> tilesBlended(const Surface& surface, const Surface& weight) {
  const std::uint64_t full = floatToHalf(1.0F);
  std::vector<int> tiles = tilesRewritten(surface, &weight);
  std::erase_if(tiles, [&](int index) {
    const Tile& under = weight.tile(index);
    return under.isUniform() && under.pixel() == full;
  });
  return tiles;
}

std::vector<int> tilesMoved(const Surface& surface) {
  if (dataTileCount(surface) == 0) return {};
  return tilesWhere(surface, [](int) { return true; });
}

std::uint64_t ofTiles(const Document& document, const Surface& surface, const std::vector<int>& tiles) {
  return tiles.size() * surface.tileBytes() + ofFlattening(document, tiles);
}

std::uint64_t ofFlattening(const Document& document, const std::vector<int>& tiles,
                           const std::optional<QUuid>& isolated) {
  const std::uint64_t needed = tilesToFlatten(document, tiles, isolated);
  const std::uint64_t standing = tilesFlattened(document);
  const std::uint64_t growth = needed > standing ? needed - standing : 0;
  return growth * bytesPerTile(compositePixelFormat(document.colorMode.value()));
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
  const std::uint64_t tiles = 4 * tilesRewritten(pixels, &weight).size();
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
  return step.bytes + ofFlattening(document, step.tiles);
}

}  // namespace orvanel::editCost
