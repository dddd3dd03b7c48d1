// The kernels that change or read one layer pixel at a time: invert, levels, fill, masks of alpha,
// channels out of colour.
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "raster/HalfFloat.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/LevelsTable.h"
#include "raster/kernels/PointRows.h"
#include "raster/kernels/TileAccess.h"

namespace orvanel::kernels {
namespace {

enum class Alpha { kept, changed };

/// Applies a row function to one pixel.
template <typename Row>
std::uint64_t onePixel(const Row& row, std::uint64_t pixel, int pixelBytes, const std::uint16_t* weights) {
  alignas(64) std::array<std::byte, 16 * 8> pixels;
  fillPixels(pixels.data(), 16, pixel, pixelBytes);
  row(pixels.data(), pixels.data(), weights, 16);
  return packPixel(pixels.data(), pixelBytes);
}

/// Rewrites one tile by `row(in, out, weights, count)`. Weights of 0 leave their pixels, so a tile under
/// such weights alone isn't touched.
template <typename Row>
void editTile(Surface& layer, int index, const Surface* weights, Alpha alpha, const Row& row) {
  std::optional<TileReader> reader;
  if (weights != nullptr) reader.emplace(*weights, index);
  const bool isEven = !reader || reader->isUniform();
  if (reader && isEven && reader->pixel() == 0) return;
  const bool isFull = !reader || (isEven && reader->pixel() == halfOne);
  const auto weightsOf = [&](int y) { return isFull ? nullptr : reader->halves(y); };
  if (isEven && layer.tile(index).isUniform()) {
    const std::uint64_t pixel = TileReader(layer, index).pixel();
    return layer.setUniform(index, onePixel(row, pixel, layer.pixelBytes(), weightsOf(0)));
  }
  const bool staysOpaque = alpha == Alpha::kept && layer.tile(index).has(TileTrait::opaque);
  TileEditor editor(layer, index);
  for (int y = 0; y < tileSide; ++y) row(editor.source(y), editor.target(y), weightsOf(y), tileSide);
  if (staysOpaque) layer.setTrait(index, TileTrait::opaque);
}

/// A record's colour, limited to values that pixels can hold.
Color4 regularColor(const Color4& color) {
  Color4 regular = color;
  for (float& channel : regular) channel = sanitized(channel);
  regular[3] = std::clamp(regular[3], 0.0F, 1.0F);
  return regular;
}

bool isGreyFormat(PixelFormat format) {
  return format == PixelFormat::rg8Unorm || format == PixelFormat::rg16Unorm;
}

void extractChannelOf(const Surface& source, Surface& mask, int channel) {
  if (!fitInSize(source, mask)) return;
  forEachTile(source, [&](int index) {
    const Tile& tile = source.tile(index);
    if (channel == 3 && tile.has(TileTrait::opaque)) return mask.setUniform(index, halfOne);
    const TileReader reader(source, index);
    if (reader.isUniform()) {
      alignas(64) std::array<std::uint16_t, 16> values;
      channelRow(source.format(), reader.row(0), channel, values.data(), 16);
      return mask.setUniform(index, values[0]);
    }
    std::byte* out = mask.overwriteTile(index);
    for (int y = 0; y < tileSide; ++y) {
      channelRow(source.format(), reader.row(y), channel,
                 reinterpret_cast<std::uint16_t*>(out) + y * tileSide, tileSide);
    }
    mask.collapseIfUniform(index);
  });
}

}  // namespace

void invertColors(const Dispatch& dispatch) {
  Surface& layer = *dispatch.textures[0];
  const auto& params = inlineRecord<InvertParams>(dispatch);
  const Surface* selection = params.hasSelection != 0 ? dispatch.textures[1] : nullptr;
  if (selection != nullptr && !fitInSize(layer, *selection)) return;
  const PixelFormat format = layer.format();
  const auto row = [format](const std::byte* in, std::byte* out, const std::uint16_t* weights, int count) {
    invertRow(format, in, out, weights, count);
  };
  forEachTile(layer, [&](int index) { editTile(layer, index, selection, Alpha::kept, row); });
}

void levelsAdjust(const Dispatch& dispatch) {
  Surface& layer = *dispatch.textures[0];
  const auto& params = inlineRecord<LevelsParams>(dispatch);
  const Surface* selection = params.hasSelection != 0 ? dispatch.textures[1] : nullptr;
  if (selection != nullptr && !fitInSize(layer, *selection)) return;
  const PixelFormat format = layer.format();
  std::optional<LevelsTable> table;
  if (LevelsTable::isWorthwhile(layer, selection, params)) table.emplace(format, params);
  const auto row = [&](const std::byte* in, std::byte* out, const std::uint16_t* weights, int count) {
    if (table) return table->adjustRow(in, out, weights, count);
    levelsRow(format, in, out, weights, params, count);
  };
  forEachTile(layer, [&](int index) { editTile(layer, index, selection, Alpha::kept, row); });
}

void fillWithSelection(const Dispatch& dispatch) {
  Surface& layer = *dispatch.textures[0];
  const Surface& selection = *dispatch.textures[1];
  if (!fitInSize(layer, selection)) return;
  const PixelFormat format = layer.format();
  Color4 color = regularColor(inlineRecord<FillParams>(dispatch).color);
  // In a grey format the first component is the grey.
  if (isGreyFormat(format)) color[1] = color[2] = color[0];
  const auto row = [&](const std::byte* in, std::byte* out, const std::uint16_t* weights, int count) {
    fillRow(format, in, out, weights, color, count);
  };
  const std::uint64_t filled = onePixel(row, 0, layer.pixelBytes(), nullptr);
  forEachTile(layer, [&](int index) {
    const Tile& selected = selection.tile(index);
    if (selected.isUniform() && TileReader(selection, index).pixel() == halfOne) {
      return layer.setUniform(index, filled);
    }
    editTile(layer, index, &selection, Alpha::changed, row);
    layer.collapseIfUniform(index);
  });
}

void applyLayerMask(const Dispatch& dispatch) {
  Surface& layer = *dispatch.textures[0];
  const Surface& mask = *dispatch.textures[1];
  if (!fitInSize(layer, mask)) return;
  const PixelFormat format = layer.format();
  const auto row = [format](const std::byte* in, std::byte* out, const std::uint16_t* weights, int count) {
    maskAlphaRow(format, in, out, weights, count);
  };
  forEachTile(layer, [&](int index) {
    if (mask.tile(index).isUniform()) {
      const std::uint64_t value = TileReader(mask, index).pixel();
      if (value == halfOne) return;
      if (value == 0) return layer.setUniform(index, 0);
    }
    editTile(layer, index, &mask, Alpha::changed, row);
    layer.collapseIfUniform(index);
  });
}

void extractMaskedPixels(const Dispatch& dispatch) {
  const Surface& layer = *dispatch.textures[0];
  Surface& destination = *dispatch.textures[1];
  const Surface& selection = *dispatch.textures[2];
  const auto& params = inlineRecord<ExtractParams>(dispatch);
  if (!fitInSize(layer, selection) || !fitInFormat(layer, destination)) return;
  const auto pixelBytes = static_cast<std::size_t>(layer.pixelBytes());
  forEachTile(destination, [&](int index) {
    const PixelRect rect = destination.tileRect(index);
    // 64-bit sums, because an origin may have any value.
    const std::int64_t left = std::int64_t{rect.x} + params.originX;
    const std::int64_t top = std::int64_t{rect.y} + params.originY;
    if (left >= layer.width() || top >= layer.height() || left + rect.width <= 0 || top + rect.height <= 0) {
      return destination.setUniform(index, 0);
    }
    const PixelRect region{static_cast<int>(left), static_cast<int>(top), rect.width, rect.height};
    const PixelRect inside = region.intersected(layer.bounds());
    const std::optional<std::uint64_t> selected = uniformPixelOf(selection, inside);
    if (selected == 0U) return destination.setUniform(index, 0);
    const std::optional<std::uint64_t> pixel = uniformPixelOf(layer, inside);
    if (pixel == 0U) return destination.setUniform(index, 0);
    const std::size_t rowBytes = tileSide * pixelBytes;
    TileBuffer mask(std::size_t{tilePixels} * 2);
    std::byte* halves = mask.bytes().data();
    gatherRegion(selection, {region.x, region.y, tileSide, tileSide}, halves, std::size_t{tileSide} * 2);
    std::byte* out = destination.overwriteTile(index);
    gatherRegion(layer, {region.x, region.y, tileSide, tileSide}, out, rowBytes);
    for (int y = 0; y < tileSide; ++y) {
      std::byte* row = out + static_cast<std::size_t>(y) * rowBytes;
      maskAlphaRow(layer.format(), row, row, reinterpret_cast<const std::uint16_t*>(halves) + y * tileSide,
                   tileSide);
    }
    destination.collapseIfUniform(index);
  });
}

void extractAlpha(const Dispatch& dispatch) {
  extractChannelOf(*dispatch.textures[0], *dispatch.textures[1], 3);
}

void extractChannel(const Dispatch& dispatch) {
  const auto channel = inlineRecord<std::int32_t>(dispatch);
  if (channel < 0 || channel > 3) return;
  extractChannelOf(*dispatch.textures[0], *dispatch.textures[1], channel);
}

}  // namespace orvanel::kernels
