// The kernels that make and convert whole textures: clear, checkerboard, colour mode conversion.
#include <tbb/parallel_for.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "raster/ColorMode.h"
#include "raster/HalfFloat.h"
#include "raster/KernelRecords.h"
#include "raster/Regularity.h"
#include "raster/kernels/ConvertRow.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/PointRows.h"

namespace orvanel::kernels {
namespace {

/// One pixel of a format with this colour; in a grey format the first component is grey, the last alpha. The
/// very arithmetic of filling under a selection, so that both give the same bytes, alpha that vanishes
/// included.
std::uint64_t pixelOfColor(const Color4& color, PixelFormat format) {
  Color4 regular = color;
  for (float& channel : regular) channel = sanitized(channel);
  if (format == PixelFormat::r16Float) return floatToHalf(regular[0]);
  regular[3] = std::clamp(regular[3], 0.0F, 1.0F);
  if (format == PixelFormat::rg8Unorm || format == PixelFormat::rg16Unorm)
    regular[1] = regular[2] = regular[0];
  alignas(64) std::array<std::byte, 16 * 8> pixels{};
  fillRow(format, pixels.data(), pixels.data(), nullptr, regular, 16);
  return packPixel(pixels.data(), bytesPerPixel(format));
}

constexpr Color4 lightSquare{1.0F, 1.0F, 1.0F, 1.0F};
constexpr Color4 darkSquare{0.8F, 0.8F, 0.8F, 1.0F};

/// Squares are counted from the canvas corner, not from the tile.
void drawCheckerTile(Surface& texture, int index, int squareSize, std::uint64_t light, std::uint64_t dark) {
  const PixelRect rect = texture.tileRect(index);
  std::byte* out = texture.overwriteTile(index);
  const int pixelBytes = texture.pixelBytes();
  for (int y = 0; y < tileSide; ++y) {
    for (int x = 0; x < tileSide;) {
      const int square = (rect.x + x) / squareSize;
      const int end = std::min(tileSide, (square + 1) * squareSize - rect.x);
      const bool isDark = ((square + (rect.y + y) / squareSize) & 1) != 0;
      fillPixels(out + static_cast<std::ptrdiff_t>(y * tileSide + x) * pixelBytes,
                 static_cast<std::size_t>(end - x), isDark ? dark : light, pixelBytes);
      x = end;
    }
  }
}

}  // namespace

void clearTexture(const Dispatch& dispatch) {
  const auto& params = inlineRecord<ClearParams>(dispatch);
  Surface& texture = *dispatch.textures[0];
  Color4 color = params.color;
  if (isGrayscale(static_cast<ColorMode>(params.colorMode))) color = {color[0], color[0], color[0], color[3]};
  texture.fill(pixelOfColor(color, texture.format()));
}

void drawCheckerboard(const Dispatch& dispatch) {
  Surface& texture = *dispatch.textures[0];
  const int squareSize = std::max(1, static_cast<int>(std::lround(inlineRecord<float>(dispatch))));
  const std::uint64_t light = pixelOfColor(lightSquare, texture.format());
  const std::uint64_t dark = pixelOfColor(darkSquare, texture.format());
  const bool repeatsEveryTile = tileSide % (2 * squareSize) == 0;
  for (int index = 0; index < texture.tileCount(); ++index) {
    if (index > 0 && repeatsEveryTile) {
      texture.setTile(index, texture.tile(0));
    } else {
      drawCheckerTile(texture, index, squareSize, light, dark);
    }
  }
}

void convertTexture(const Dispatch& dispatch) {
  const Surface& source = *dispatch.textures[0];
  Surface& destination = *dispatch.textures[1];
  const auto& params = inlineRecord<ConvertParams>(dispatch);
  const auto from = static_cast<ColorMode>(params.sourceMode);
  const auto to = static_cast<ColorMode>(params.destinationMode);
  if (!fitInSize(source, destination)) return;
  tbb::parallel_for(0, source.tileCount(), [&](int index) {
    const Tile& tile = source.tile(index);
    if (tile.isUniform()) {
      alignas(64) std::array<std::byte, 16 * 8> in;
      alignas(64) std::array<std::byte, 16 * 8> out;
      fillPixels(in.data(), 16, regularPixel(tile.pixel(), source.format()), source.pixelBytes());
      convertRow(in.data(), from, out.data(), to, 16);
      destination.setUniform(index, packPixel(out.data(), destination.pixelBytes()));
      return;
    }
    const std::byte* in = tile.data();
    std::optional<TileBuffer> regularCopy;
    if (tile.has(TileTrait::irregular)) {
      regularCopy.emplace(source.tileBytes());
      regularise(in, regularCopy->bytes().data(), tilePixels, source.format());
      in = regularCopy->bytes().data();
    }
    convertRow(in, from, destination.overwriteTile(index), to, tilePixels);
    if (tile.has(TileTrait::opaque)) destination.setTrait(index, TileTrait::opaque);
  });
}

}  // namespace orvanel::kernels
