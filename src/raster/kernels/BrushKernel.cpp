// One dab of a brush: a round spot of colour laid over a layer. Only the tiles under the spot are touched.
#include <algorithm>
#include <array>
#include <cmath>

#include "raster/HalfFloat.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/PointRows.h"
#include "raster/kernels/TileAccess.h"

namespace orvanel::kernels {
namespace {

/// 1 in the hard core, falling linearly to 0 at the rim; a rim is never sharper than one pixel.
float dabCoverage(const BrushParams& params, float x, float y) {
  const float distance = std::hypot(x - params.centerX, y - params.centerY);
  const float core = params.radius * std::clamp(params.hardness, 0.0F, 1.0F);
  const float soft = std::max(params.radius - core, 1.0F);
  return std::clamp((params.radius + 0.5F - distance) / soft, 0.0F, 1.0F) *
         std::clamp(params.flow, 0.0F, 1.0F);
}

}  // namespace

void brushStroke(const Dispatch& dispatch) {
  Surface& layer = *dispatch.textures[0];
  const auto& params = inlineRecord<BrushParams>(dispatch);
  const float reach = params.radius + 1.0F;
  if (!(params.radius > 0.0F) || !std::isfinite(params.centerX + params.centerY + reach)) return;
  Color4 color = params.color;
  for (float& channel : color) channel = sanitized(channel);
  if (layer.pixelBytes() == 2 || layer.format() == PixelFormat::rg16Unorm) color[1] = color[2] = color[0];
  forEachTile(layer, [&](int index) {
    const PixelRect rect = layer.tileRect(index);
    const auto left = static_cast<float>(rect.x);
    const auto top = static_cast<float>(rect.y);
    if (params.centerX + reach < left || params.centerX - reach > left + tileSide ||
        params.centerY + reach < top || params.centerY - reach > top + tileSide) {
      return;
    }
    TileEditor editor(layer, index);
    alignas(64) std::array<std::uint16_t, tileSide> weights;
    for (int y = 0; y < tileSide; ++y) {
      for (int x = 0; x < tileSide; ++x) {
        const float amount =
            dabCoverage(params, left + static_cast<float>(x) + 0.5F, top + static_cast<float>(y) + 0.5F);
        weights[static_cast<std::size_t>(x)] = floatToHalf(amount);
      }
      fillRow(layer.format(), editor.source(y), editor.target(y), weights.data(), color, tileSide);
    }
  });
}

}  // namespace orvanel::kernels
