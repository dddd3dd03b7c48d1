#include "FeelDocuments.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "PhotoLayers.h"
#include "raster/HalfFloat.h"

namespace orvanel::bench {
namespace {

constexpr int patternSide = 1024;

/// A photo that repeats every `patternSide` pixels, in memory of its own throughout.
Texture repeated(const Surface& pattern, int side) {
  auto photo = std::make_shared<Surface>(pattern.format(), side, side);
  tbb::parallel_for(0, photo->tileCount(), [&](int index) {
    const int x = index % photo->tilesAcross() % pattern.tilesAcross();
    const int y = index / photo->tilesAcross() % pattern.tilesDown();
    const Tile& tile = pattern.tile(pattern.tileIndex(x, y));
    std::memcpy(photo->overwriteTile(index), tile.data(), photo->tileBytes());
  });
  return photo;
}

Texture photo(int side, ColorMode mode, std::uint32_t seed) {
  const Texture pattern = photoLayer(patternSide, patternSide, Depth::full, seed);
  if (mode == ColorMode::rgb16) return repeated(*pattern, side);
  Surface converted(layerPixelFormat(mode), patternSide, patternSide);
  MetalContext::shared().convertTexture(*pattern, converted, ColorMode::rgb16, mode);
  return repeated(converted, side);
}

/// A gradient from left to right.
std::shared_ptr<LayerMask> gradientMask(int side) {
  auto surface = std::make_shared<Surface>(maskPixelFormat, side, side);
  tbb::parallel_for(0, surface->tileCount(), [&](int index) {
    const PixelRect rect = surface->tileRect(index);
    auto* out = reinterpret_cast<std::uint16_t*>(surface->overwriteTile(index));
    for (int i = 0; i < tilePixels; ++i) {
      out[i] = floatToHalf(static_cast<float>(rect.x + i % tileSide) / static_cast<float>(side));
    }
  });
  return std::make_shared<LayerMask>(QUuid::createUuid(), std::make_shared<MaskTexture>(std::move(surface)));
}

DocumentPtr documentOf(LayerNodeList nodes, const std::shared_ptr<Layer>& active, int side, ColorMode mode) {
  return Document::create({.name = QStringLiteral("Feel"),
                           .width = side,
                           .height = side,
                           .colorMode = mode,
                           .rootNodes = std::move(nodes),
                           .selectedNodeID = active->id},
                          MetalContext::shared());
}

}  // namespace

DocumentPtr documentA() {
  constexpr int side = 8192;
  LayerNodeList folders;
  std::shared_ptr<Layer> active;
  for (std::uint32_t f = 0; f < 2; ++f) {
    LayerNodeList children;
    for (std::uint32_t i = f * 5; i < f * 5 + 5; ++i) {
      const NodeValues values{.name = QString::number(i),
                              .opacity = 0.8F,
                              .blendMode = i % 2 == 1 ? BlendMode::multiply : BlendMode::normal};
      active = std::make_shared<Layer>(values, photo(side, ColorMode::rgb16, i + 1),
                                       i % 4 == 1 ? gradientMask(side) : nullptr);
      children.emplace_back(active);
    }
    folders.emplace_back(std::make_shared<LayerFolder>(NodeValues{.name = QString::number(f)}, children));
  }
  return documentOf(folders, active, side, ColorMode::rgb16);
}

DocumentPtr documentB() {
  constexpr int side = 16384;
  LayerNodeList layers;
  std::shared_ptr<Layer> active;
  for (std::uint32_t i = 0; i < 3; ++i) {
    active = std::make_shared<Layer>(NodeValues{.name = QString::number(i), .opacity = 0.8F},
                                     photo(side, ColorMode::rgb8, i + 1));
    layers.emplace_back(active);
  }
  return documentOf(layers, active, side, ColorMode::rgb8);
}

DocumentPtr photoDocument(int side, ColorMode mode) {
  const auto layer =
      std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Photo")}, photo(side, mode, 1));
  return documentOf({layer}, layer, side, mode);
}

}  // namespace orvanel::bench
