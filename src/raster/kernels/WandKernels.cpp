// The kernels of the magic wand. Two colours are as far apart as their most different channel, alpha
// included.
#include <algorithm>
#include <array>
#include <cstring>

#include "raster/HalfFloat.h"
#include "raster/KernelRecords.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/PointRows.h"
#include "raster/kernels/TileAccess.h"
#include "raster/kernels/Wand.h"

namespace orvanel::kernels {
namespace {

bool isEmptyTile(const Surface& mask, int tileX, int tileY) {
  if (tileX < 0 || tileY < 0 || tileX >= mask.tilesAcross() || tileY >= mask.tilesDown()) return true;
  const Tile& tile = mask.tile(mask.tileIndex(tileX, tileY));
  return tile.isUniform() && TileReader(mask, mask.tileIndex(tileX, tileY)).pixel() == 0;
}

}  // namespace

void magicWandEligibility(const Dispatch& dispatch) {
  const Surface& sample = *dispatch.textures[0];
  const auto& params = inlineRecord<WandParams>(dispatch);
  auto* flags = reinterpret_cast<std::uint8_t*>(dispatch.buffers[1].data());
  const float limit = params.tolerance + wandMargin;
  const auto width = static_cast<std::size_t>(sample.width());
  forEachTile(sample, [&](int index) {
    const PixelRect rect = sample.tileRect(index);
    const auto columns = static_cast<std::size_t>(rect.width);
    std::uint8_t* first = flags + static_cast<std::size_t>(rect.y) * width + static_cast<std::size_t>(rect.x);
    const TileReader reader(sample, index);
    alignas(64) std::array<std::uint8_t, tileSide> row;
    if (reader.isUniform()) {
      withinRow(sample.format(), reader.row(0), params.seed, limit, row.data(), 16);
      for (int y = 0; y < rect.height; ++y) {
        std::memset(first + static_cast<std::size_t>(y) * width, row[0], columns);
      }
      return;
    }
    for (int y = 0; y < rect.height; ++y) {
      withinRow(sample.format(), reader.row(y), params.seed, limit, row.data(), tileSide);
      std::memcpy(first + static_cast<std::size_t>(y) * width, row.data(), columns);
    }
  });
}

void magicWandNonContiguous(const Dispatch& dispatch) {
  const Surface& sample = *dispatch.textures[0];
  Surface& mask = *dispatch.textures[1];
  const auto& params = inlineRecord<WandParams>(dispatch);
  if (!fitInSize(sample, mask)) return;
  const float limit = params.tolerance + wandMargin;
  forEachTile(sample, [&](int index) {
    const TileReader reader(sample, index);
    alignas(64) std::array<std::uint8_t, tileSide> flags;
    if (reader.isUniform()) {
      withinRow(sample.format(), reader.row(0), params.seed, limit, flags.data(), 16);
      return mask.setUniform(index, flags[0] != 0 ? halfOne : 0);
    }
    auto* out = reinterpret_cast<std::uint16_t*>(mask.overwriteTile(index));
    for (int y = 0; y < tileSide; ++y, out += tileSide) {
      withinRow(sample.format(), reader.row(y), params.seed, limit, flags.data(), tileSide);
      for (std::size_t x = 0; x < tileSide; ++x) out[x] = flags[x] != 0 ? halfOne : std::uint16_t{0};
    }
    mask.collapseIfUniform(index);
  });
}

void magicWandAntialias(const Dispatch& dispatch) {
  Surface& mask = *dispatch.textures[0];
  const Surface& copy = *dispatch.textures[1];
  if (!fitInSize(mask, copy)) return;
  forEachTile(copy, [&](int index) {
    const int tileX = index % copy.tilesAcross();
    const int tileY = index / copy.tilesAcross();
    if (copy.tile(index).isUniform()) {
      const bool isEmpty = isEmptyTile(copy, tileX, tileY);
      const bool isLonely = isEmptyTile(copy, tileX - 1, tileY) && isEmptyTile(copy, tileX + 1, tileY) &&
                            isEmptyTile(copy, tileX, tileY - 1) && isEmptyTile(copy, tileX, tileY + 1);
      if (!isEmpty || isLonely) return;
    }
    // The tile with one pixel of its surroundings on each side; beyond the canvas nothing is selected.
    constexpr std::size_t side = tileSide + 2;
    std::array<std::uint16_t, side * side> around;
    const PixelRect rect = copy.tileRect(index);
    gatherRegion(copy, {rect.x - 1, rect.y - 1, static_cast<int>(side), static_cast<int>(side)},
                 reinterpret_cast<std::byte*>(around.data()), side * 2);
    std::array<std::uint16_t, tilePixels> result;
    bool changes = false;
    for (std::size_t y = 0; y < tileSide; ++y) {
      const std::uint16_t* here = around.data() + (y + 1) * side + 1;
      for (std::size_t x = 0; x < tileSide; ++x) {
        const std::uint16_t held = here[x];
        const int selected =
            (here[x - 1] != 0) + (here[x + 1] != 0) + (here[x - side] != 0) + (here[x + side] != 0);
        const std::uint16_t soft = selected < 2    ? std::uint16_t{0}
                                   : selected == 2 ? halfHalf
                                                   : halfThreeQuarters;
        const std::uint16_t value = held != 0 ? held : soft;
        changes |= value != held;
        result[y * tileSide + x] = value;
      }
    }
    if (!changes) return;
    std::memcpy(mask.overwriteTile(index), result.data(), sizeof(result));
    mask.collapseIfUniform(index);
  });
}

}  // namespace orvanel::kernels
