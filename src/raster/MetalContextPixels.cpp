// The wrappers of the kernels on layer and composite pixels.
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "raster/MetalContext.h"
#include "raster/kernels/BoundsReadback.h"
#include "raster/kernels/DispatchBuilder.h"

namespace orvanel {
namespace {

constexpr float trimColorTolerance = 0.001F;

bool areAlike(const Color4& a, const Color4& b) {
  for (std::size_t channel = 0; channel < 4; ++channel) {
    if (!(std::abs(a[channel] - b[channel]) <= trimColorTolerance)) return false;
  }
  return true;
}

/// The colour that most of the uniform edges share; none when two colours lead together.
std::optional<Color4> trimColor(const std::array<std::uint32_t, 4>& flags,
                                const std::array<Color4, 4>& colors) {
  struct Group {
    Color4 color;
    int count;
  };
  std::vector<Group> groups;
  for (std::size_t edge = 0; edge < 4; ++edge) {
    if (flags[edge] != 0) continue;
    const auto found = std::find_if(groups.begin(), groups.end(),
                                    [&](const Group& group) { return areAlike(group.color, colors[edge]); });
    if (found != groups.end()) {
      ++found->count;
    } else {
      groups.push_back({colors[edge], 1});
    }
  }
  if (groups.empty()) return std::nullopt;
  std::stable_sort(groups.begin(), groups.end(),
                   [](const Group& a, const Group& b) { return a.count > b.count; });
  if (groups.size() >= 2 && groups[0].count == groups[1].count) return std::nullopt;
  return groups[0].color;
}

}  // namespace

void MetalContext::invertColors(Surface& layer, ColorMode mode, const Surface* selection) const {
  InvertParams params;
  params.colorMode = rawValue(mode);
  params.hasSelection = selection != nullptr ? 1 : 0;
  DispatchBuilder builder;
  builder.write(0, layer).bytes(0, params);
  if (selection != nullptr) builder.read(1, *selection);
  invertPipeline.function(builder.dispatch());
}

void MetalContext::fillWithSelection(Surface& layer, const Surface& selection, ColorMode mode,
                                     const Color4& color) const {
  FillParams params;
  params.color = color;
  params.colorMode = rawValue(mode);
  fillWithSelectionPipeline.function(
      DispatchBuilder().write(0, layer).read(1, selection).bytes(0, params).dispatch());
}

void MetalContext::levelsAdjust(Surface& layer, ColorMode mode, const Surface* selection, float black,
                                float white, float gamma) const {
  const LevelsParams params{rawValue(mode), selection != nullptr ? 1U : 0U, black, white, gamma, 0};
  DispatchBuilder builder;
  builder.write(0, layer).bytes(0, params);
  if (selection != nullptr) builder.read(1, *selection);
  levelsPipeline.function(builder.dispatch());
}

void MetalContext::extractMaskedPixels(const Surface& layer, Surface& destination, const Surface& selection,
                                       int originX, int originY, ColorMode mode) const {
  const ExtractParams params{originX, originY, rawValue(mode), 0};
  extractMaskedPixelsPipeline.function(
      DispatchBuilder().read(0, layer).write(1, destination).read(2, selection).bytes(0, params).dispatch());
}

void MetalContext::applyLayerMask(Surface& layer, const Surface& mask, ColorMode mode) const {
  const std::uint32_t raw = rawValue(mode);
  applyLayerMaskPipeline.function(DispatchBuilder().write(0, layer).read(1, mask).bytes(0, raw).dispatch());
}

void MetalContext::translateLayerPixels(const Surface& source, Surface& destination, int dx, int dy,
                                        ColorMode mode) const {
  const OffsetParams params{dx, dy};
  const std::uint32_t raw = rawValue(mode);
  translateLayerPixelsPipeline.function(
      DispatchBuilder().read(0, source).write(1, destination).bytes(0, params).bytes(1, raw).dispatch());
}

void MetalContext::scaleLayerRegion(const Surface& source, Surface& destination,
                                    const std::array<float, 4>& from, const std::array<float, 4>& to,
                                    ColorMode mode) const {
  ScaleParams params;
  params.source = from;
  params.destination = to;
  params.colorMode = rawValue(mode);
  scaleLayerRegionPipeline.function(
      DispatchBuilder().read(0, source).write(1, destination).bytes(0, params).dispatch());
}

void MetalContext::rotateLayerPixels(const Surface& source, Surface& destination, float centerX,
                                     float centerY, float angle, ColorMode mode) const {
  RotateParams params;
  params.centerX = centerX;
  params.centerY = centerY;
  params.angle = angle;
  params.colorMode = rawValue(mode);
  rotateLayerPixelsPipeline.function(
      DispatchBuilder().read(0, source).write(1, destination).bytes(0, params).dispatch());
}

void MetalContext::affineTransformLayerPixels(const Surface& source, Surface& destination,
                                              const std::array<float, 6>& inverse, ColorMode mode) const {
  AffineParams params;
  params.matrix = inverse;
  params.colorMode = rawValue(mode);
  affineTransformLayerPixelsPipeline.function(
      DispatchBuilder().read(0, source).write(1, destination).bytes(0, params).dispatch());
}

void MetalContext::resampleTexture(const Surface& source, Surface& destination, ResampleMethod method) const {
  ResampleParams params;
  params.sourceWidth = static_cast<std::uint32_t>(source.width());
  params.sourceHeight = static_cast<std::uint32_t>(source.height());
  params.method = static_cast<std::int32_t>(method);
  resampleTexturePipeline.function(
      DispatchBuilder().read(0, source).write(1, destination).bytes(0, params).dispatch());
}

std::optional<PixelRect> MetalContext::trimBounds(const Surface& composited) const {
  if (composited.width() <= 0 || composited.height() <= 0) return std::nullopt;
  std::array<std::uint32_t, 4> flags{};
  std::array<Color4, 4> colors{};
  checkEdgeUniformityPipeline.function(DispatchBuilder()
                                           .read(0, composited)
                                           .buffer(0, std::as_writable_bytes(std::span(flags)))
                                           .buffer(1, std::as_writable_bytes(std::span(colors)))
                                           .dispatch());
  const std::optional<Color4> color = trimColor(flags, colors);
  if (!color) return std::nullopt;
  BoundsRecord bounds;
  trimBoundingRectPipeline.function(DispatchBuilder()
                                        .read(0, composited)
                                        .buffer(0, std::as_writable_bytes(std::span(&bounds, 1)))
                                        .bytes(1, *color)
                                        .dispatch());
  return rectFromBounds(bounds, composited);
}

}  // namespace orvanel
