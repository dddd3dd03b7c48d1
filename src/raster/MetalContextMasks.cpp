// The wrappers of the kernels on masks and selections, and of those that read a rectangle back.
#include <algorithm>
#include <cstdint>
#include <span>

#include "raster/MetalContext.h"
#include "raster/WandMatch.h"
#include "raster/kernels/BoundsReadback.h"
#include "raster/kernels/DispatchBuilder.h"

namespace orvanel {
namespace {

std::span<std::byte> writable(BoundsRecord& bounds) {
  return std::as_writable_bytes(std::span(&bounds, 1));
}

bool contains(const Surface& surface, int x, int y) {
  return x >= 0 && y >= 0 && x < surface.width() && y < surface.height();
}

}  // namespace

void MetalContext::fillMask(Surface& mask, float value) const {
  fillMaskPipeline.function(DispatchBuilder().write(0, mask).bytes(0, value).dispatch());
}

void MetalContext::invertMask(Surface& mask) const {
  invertMaskPipeline.function(DispatchBuilder().write(0, mask).dispatch());
}

void MetalContext::fillRectMask(Surface& mask, const PixelRect& rect, float feather) const {
  // The record holds no negative numbers: what lies left of or above the canvas is cut off here.
  const int left = std::max(rect.x, 0);
  const int top = std::max(rect.y, 0);
  const std::int64_t right = std::int64_t{rect.x} + rect.width;
  const std::int64_t bottom = std::int64_t{rect.y} + rect.height;
  ShapeRectParams params;
  params.x = static_cast<std::uint32_t>(left);
  params.y = static_cast<std::uint32_t>(top);
  params.width = static_cast<std::uint32_t>(std::max<std::int64_t>(right - left, 0));
  params.height = static_cast<std::uint32_t>(std::max<std::int64_t>(bottom - top, 0));
  params.feather = feather;
  fillRectMaskPipeline.function(DispatchBuilder().write(0, mask).bytes(0, params).dispatch());
}

void MetalContext::fillEllipseMask(Surface& mask, float centerX, float centerY, float radiusX, float radiusY,
                                   float feather) const {
  const ShapeEllipseParams params{centerX, centerY, radiusX, radiusY, feather, 0};
  fillEllipseMaskPipeline.function(DispatchBuilder().write(0, mask).bytes(0, params).dispatch());
}

void MetalContext::fillPolygonMask(Surface& mask, std::span<const PolygonPoint> points) const {
  if (points.empty()) return;
  const PolygonParams params{static_cast<std::uint32_t>(points.size()), 0};
  fillPolygonMaskPipeline.function(
      DispatchBuilder().write(0, mask).bytes(0, std::as_bytes(points)).bytes(1, params).dispatch());
}

void MetalContext::addMasks(Surface& mask, const Surface& operand) const {
  addMasksPipeline.function(DispatchBuilder().write(0, mask).read(1, operand).dispatch());
}

void MetalContext::subtractMasks(Surface& mask, const Surface& operand) const {
  subtractMasksPipeline.function(DispatchBuilder().write(0, mask).read(1, operand).dispatch());
}

void MetalContext::intersectMasks(Surface& mask, const Surface& operand) const {
  intersectMasksPipeline.function(DispatchBuilder().write(0, mask).read(1, operand).dispatch());
}

void MetalContext::fillMaskWithSelection(Surface& mask, const Surface& selection, float value) const {
  fillMaskWithSelectionPipeline.function(
      DispatchBuilder().write(0, mask).read(1, selection).bytes(0, value).dispatch());
}

void MetalContext::translateMask(const Surface& source, Surface& destination, int dx, int dy) const {
  const OffsetParams params{dx, dy};
  translateMaskPipeline.function(
      DispatchBuilder().read(0, source).write(1, destination).bytes(0, params).dispatch());
}

void MetalContext::extractAlpha(const Surface& layer, Surface& mask, ColorMode mode) const {
  const std::uint32_t raw = rawValue(mode);
  extractAlphaPipeline.function(DispatchBuilder().read(0, layer).write(1, mask).bytes(0, raw).dispatch());
}

void MetalContext::extractChannel(const Surface& composited, Surface& mask, int channel) const {
  const std::int32_t index = channel;
  extractChannelPipeline.function(
      DispatchBuilder().read(0, composited).write(1, mask).bytes(0, index).dispatch());
}

std::optional<PixelRect> MetalContext::selectionBounds(const Surface& mask) const {
  BoundsRecord bounds;
  selectionBoundingRectPipeline.function(
      DispatchBuilder().read(0, mask).buffer(0, writable(bounds)).dispatch());
  return rectFromBounds(bounds, mask);
}

std::optional<PixelRect> MetalContext::layerContentBounds(const Surface& layer, ColorMode mode,
                                                          bool isMask) const {
  BoundsRecord bounds;
  const std::uint32_t raw = rawValue(mode);
  const std::uint32_t maskFlag = isMask ? 1 : 0;
  layerContentBoundingRectPipeline.function(DispatchBuilder()
                                                .read(0, layer)
                                                .buffer(0, writable(bounds))
                                                .bytes(1, raw)
                                                .bytes(2, maskFlag)
                                                .dispatch());
  return rectFromBounds(bounds, layer);
}

void MetalContext::magicWandNonContiguous(const Surface& sample, Surface& mask, const Color4& seed,
                                          float tolerance) const {
  WandParams params;
  params.seed = seed;
  params.tolerance = tolerance;
  magicWandNonContiguousPipeline.function(
      DispatchBuilder().read(0, sample).write(1, mask).bytes(0, params).dispatch());
}

bool MetalContext::magicWandContiguous(const Surface& sample, Surface& mask, int seedX, int seedY,
                                       const Color4& seed, float tolerance) const {
  if (!contains(sample, seedX, seedY) || !fitInSize(sample, mask)) return true;
  WandMatch match(sample);
  if (!match.flood(seedX, seedY, seed, tolerance)) return false;
  match.writeTo(mask, WandEdges::crisp);
  return true;
}

void MetalContext::magicWandAntialias(Surface& mask) const {
  const Texture copy = makeTexture(mask.format(), mask.width(), mask.height());
  if (copy == nullptr) return;
  copyPixels(mask, mask.bounds(), *copy, 0, 0);
  magicWandAntialiasPipeline.function(DispatchBuilder().write(0, mask).read(1, *copy).dispatch());
}

}  // namespace orvanel
