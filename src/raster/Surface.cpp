#include "raster/Surface.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cassert>
#include <cstring>

#include "raster/FatalFault.h"
#include "raster/Regularity.h"
#include "raster/UniformRows.h"

namespace orvanel {
namespace {

int tilesFor(int pixels) {
  return (pixels + tileSide - 1) / tileSide;
}

/// True when two tiles hold the same pixels within `rect`, which is the part of the canvas beneath them.
bool tilesAgree(const Tile& a, const Tile& b, const PixelRect& rect, int pixelBytes) {
  const auto step = static_cast<std::size_t>(pixelBytes);
  const std::size_t stride = static_cast<std::size_t>(tileSide) * step;
  if (a.isUniform() && b.isUniform()) {
    const std::uint64_t mine = a.pixel();
    const std::uint64_t theirs = b.pixel();
    return std::memcmp(&mine, &theirs, step) == 0;
  }
  if (a.isUniform()) return tilesAgree(b, a, rect, pixelBytes);
  if (b.isUniform()) return rowsHold(a.data(), stride, rect.width, rect.height, b.pixel(), pixelBytes);
  for (std::size_t row = 0; row < static_cast<std::size_t>(rect.height); ++row) {
    if (std::memcmp(a.data() + row * stride, b.data() + row * stride,
                    static_cast<std::size_t>(rect.width) * step) != 0) {
      return false;
    }
  }
  return true;
}

/// True when the caller holds the only reference and nobody can obtain the old bytes any more.
bool takeForWriting(TileBuffer& buffer) {
  if (buffer.isShared()) return false;
  // A twin in the history may take a reference until it is notified, so notify it before the final check.
  if (const auto follower = buffer.companion.lock()) follower->bufferDying(buffer);
  if (buffer.isShared()) return false;
  buffer.companion.reset();
  return true;
}

/// Calls `visit(tile, part)` for each tile under a region of the surface, with the part that it holds.
template <typename Visit>
void forEachTileUnder(const Surface& surface, const PixelRect& region, const Visit& visit) {
  for (int tileY = region.y / tileSide; tileY <= (region.y + region.height - 1) / tileSide; ++tileY) {
    for (int tileX = region.x / tileSide; tileX <= (region.x + region.width - 1) / tileSide; ++tileX) {
      const int index = surface.tileIndex(tileX, tileY);
      visit(surface.tile(index), surface.tileRect(index).intersected(region));
    }
  }
}

/// True when a tile contains, or may contain, irregular values.
bool mayBeIrregular(const Tile& tile, PixelFormat format) {
  return tile.isUniform() ? regularPixel(tile.pixel(), format) != tile.pixel()
                          : tile.has(TileTrait::irregular);
}

/// What the tiles under a region have in common.
struct RegionTraits {
  bool isUniform = true;  ///< all of them with the pixel of the first
  bool mayBeIrregular = false;
};

RegionTraits traitsOf(const Surface& surface, const PixelRect& region) {
  RegionTraits traits;
  const Tile& first = surface.tile(surface.tileIndex(region.x / tileSide, region.y / tileSide));
  forEachTileUnder(surface, region, [&](const Tile& tile, const PixelRect&) {
    traits.isUniform = traits.isUniform && tile.isUniform() && tile == first;
    traits.mayBeIrregular = traits.mayBeIrregular || mayBeIrregular(tile, surface.format());
  });
  return traits;
}

/// Copies a region of the source into a destination tile, whose first target pixel is at `out`.
void copyRows(const Surface& source, const PixelRect& region, std::byte* out) {
  const auto step = static_cast<std::size_t>(source.pixelBytes());
  const std::size_t stride = static_cast<std::size_t>(tileSide) * step;
  forEachTileUnder(source, region, [&](const Tile& tile, const PixelRect& part) {
    const auto columns = static_cast<std::size_t>(part.width);
    std::byte* to = out + static_cast<std::size_t>(part.y - region.y) * stride +
                    static_cast<std::size_t>(part.x - region.x) * step;
    const std::size_t offset = static_cast<std::size_t>(part.y % tileSide) * stride +
                               static_cast<std::size_t>(part.x % tileSide) * step;
    for (std::size_t row = 0; row < static_cast<std::size_t>(part.height); ++row, to += stride) {
      if (tile.isUniform()) {
        fillPixels(to, columns, tile.pixel(), source.pixelBytes());
      } else {
        std::memcpy(to, tile.data() + offset + row * stride, columns * step);
      }
    }
  });
}

/// Copies `region` of the source onto `part` of a destination tile, which is as large.
void copyIntoTile(const Surface& source, Surface& destination, int index, const PixelRect& part,
                  const PixelRect& region) {
  const PixelRect whole = destination.tileRect(index);
  const int sourceIndex = source.tileIndex(region.x / tileSide, region.y / tileSide);
  const bool isLinedUp = part.x % tileSide == region.x % tileSide && part.y % tileSide == region.y % tileSide;
  if (isLinedUp && part == whole) return destination.setTile(index, source.tile(sourceIndex));
  const RegionTraits traits = traitsOf(source, region);
  const Tile& held = destination.tile(index);
  if (traits.isUniform) {
    const Tile& pixel = source.tile(sourceIndex);
    if (part == whole) return destination.setTile(index, pixel);
    if (held == pixel) return;
  }
  const bool mayBecomeIrregular =
      traits.mayBeIrregular || (part != whole && mayBeIrregular(held, destination.format()));
  // An edge tile keeps its padding beyond the canvas, so that the padding stays defined.
  const bool coversTile = part.width == tileSide && part.height == tileSide;
  std::byte* out = coversTile ? destination.overwriteTile(index) : destination.editTile(index);
  const std::size_t offset = static_cast<std::size_t>((part.y - whole.y) * tileSide + part.x - whole.x);
  copyRows(source, region, out + offset * static_cast<std::size_t>(source.pixelBytes()));
  if (mayBecomeIrregular) markIfIrregular(destination, index);
  if (part == whole) destination.collapseIfUniform(index);
}

}  // namespace

PixelRect PixelRect::intersected(const PixelRect& other) const {
  const int left = std::max(x, other.x);
  const int top = std::max(y, other.y);
  const std::int64_t right = std::min(std::int64_t{x} + width, std::int64_t{other.x} + other.width);
  const std::int64_t bottom = std::min(std::int64_t{y} + height, std::int64_t{other.y} + other.height);
  if (right <= left || bottom <= top) return {};
  return {left, top, static_cast<int>(right - left), static_cast<int>(bottom - top)};
}

Surface::Surface(PixelFormat format, int width, int height)
    : format_(format),
      width_(width),
      height_(height),
      tilesAcross_(tilesFor(width)),
      tilesDown_(tilesFor(height)),
      tiles_(static_cast<std::size_t>(tilesAcross_) * static_cast<std::size_t>(tilesDown_)) {
  assert(width >= 1 && height >= 1 && bytesPerPixel(format) <= 8);
}

std::int64_t Surface::byteSize() const {
  return static_cast<std::int64_t>(width_) * height_ * bytesPerPixel(format_);
}

PixelRect Surface::tileRect(int index) const {
  const int left = index % tilesAcross_ * tileSide;
  const int top = index / tilesAcross_ * tileSide;
  return {left, top, std::min(tileSide, width_ - left), std::min(tileSide, height_ - top)};
}

void Surface::setTile(int index, Tile tile) {
  forgetRecipe(index);
  tiles_[static_cast<std::size_t>(index)] = std::move(tile);
}

void Surface::fill(std::uint64_t pixel) {
  recipes_.clear();
  std::fill(tiles_.begin(), tiles_.end(), Tile::uniform(pixel));
}

std::byte* Surface::editTile(int index) {
  forgetRecipe(index);
  Tile& tile = tiles_[static_cast<std::size_t>(index)];
  if (tile.buffer_ == nullptr) {
    auto* buffer = new TileBuffer(tileBytes());
    fillPixels(buffer->bytes().data(), tilePixels, tile.value_, pixelBytes());
    tile = Tile::adopt(buffer);
  } else if (!takeForWriting(*tile.buffer_)) {
    auto* copy = new TileBuffer(tileBytes());
    std::memcpy(copy->bytes().data(), tile.data(), tileBytes());
    if (tile.has(TileTrait::irregular)) copy->trait = TileTrait::irregular;
    tile = Tile::adopt(copy);
  } else {
    if (tile.buffer_->trait == TileTrait::opaque) tile.buffer_->trait = TileTrait::none;
    tile.value_ = nextTileVersion();
  }
  return tile.buffer_->bytes().data();
}

std::byte* Surface::overwriteTile(int index) {
  Tile& tile = tiles_[static_cast<std::size_t>(index)];
  if (tile.buffer_ == nullptr || tile.buffer_->isShared()) {
    forgetRecipe(index);
    tile = Tile::adopt(new TileBuffer(tileBytes()));
  } else {
    (void)editTile(index);
    tile.buffer_->trait = TileTrait::none;
  }
  return tile.buffer_->bytes().data();
}

void Surface::collapseIfUniform(int index) {
  const Tile& held = tile(index);
  if (held.isUniform()) return;
  const PixelRect rect = tileRect(index);
  const std::uint64_t first = packPixel(held.data(), pixelBytes());
  const std::size_t stride = static_cast<std::size_t>(tileSide) * static_cast<std::size_t>(pixelBytes());
  if (rowsHold(held.data(), stride, rect.width, rect.height, first, pixelBytes())) {
    tiles_[static_cast<std::size_t>(index)] = Tile::uniform(first);
  }
}

void Surface::readRect(const PixelRect& rect, std::byte* destination, std::size_t bytesPerRow) const {
  assert(rect == rect.intersected(bounds()));
  const auto step = static_cast<std::size_t>(pixelBytes());
  for (int top = rect.y; top < rect.y + rect.height;) {
    const int tileY = top / tileSide;
    const int bottom = std::min(rect.y + rect.height, (tileY + 1) * tileSide);
    for (int left = rect.x; left < rect.x + rect.width;) {
      const int tileX = left / tileSide;
      const int right = std::min(rect.x + rect.width, (tileX + 1) * tileSide);
      const Tile& source = tile(tileIndex(tileX, tileY));
      const auto columns = static_cast<std::size_t>(right - left);
      for (int y = top; y < bottom; ++y) {
        std::byte* out = destination + static_cast<std::size_t>(y - rect.y) * bytesPerRow +
                         static_cast<std::size_t>(left - rect.x) * step;
        if (source.isUniform()) {
          fillPixels(out, columns, source.pixel(), pixelBytes());
        } else {
          const int offset = (y - tileY * tileSide) * tileSide + left - tileX * tileSide;
          std::memcpy(out, source.data() + static_cast<std::size_t>(offset) * step, columns * step);
        }
      }
      left = right;
    }
    top = bottom;
  }
}

void Surface::writeRect(const PixelRect& rect, const std::byte* source, std::size_t bytesPerRow) {
  assert(rect == rect.intersected(bounds()));
  if (rect.isEmpty()) return;
  const auto step = static_cast<std::size_t>(pixelBytes());
  for (int tileY = rect.y / tileSide; tileY <= (rect.y + rect.height - 1) / tileSide; ++tileY) {
    for (int tileX = rect.x / tileSide; tileX <= (rect.x + rect.width - 1) / tileSide; ++tileX) {
      const int index = tileIndex(tileX, tileY);
      const PixelRect whole = tileRect(index);
      const PixelRect part = whole.intersected(rect);
      const std::byte* in = source + static_cast<std::size_t>(part.y - rect.y) * bytesPerRow +
                            static_cast<std::size_t>(part.x - rect.x) * step;
      const bool coversTile = part == whole;
      if (coversTile) {
        const std::uint64_t first = packPixel(in, pixelBytes());
        if (rowsHold(in, bytesPerRow, part.width, part.height, first, pixelBytes())) {
          setUniform(index, first);
          continue;
        }
      }
      const bool isEdge = whole.width < tileSide || whole.height < tileSide;
      std::byte* out = coversTile && !isEdge ? overwriteTile(index) : editTile(index);
      out += static_cast<std::size_t>((part.y - whole.y) * tileSide + part.x - whole.x) * step;
      for (int row = 0; row < part.height; ++row) {
        std::memcpy(out + static_cast<std::size_t>(row) * tileSide * step,
                    in + static_cast<std::size_t>(row) * bytesPerRow,
                    static_cast<std::size_t>(part.width) * step);
      }
    }
  }
}

std::uint64_t Surface::pixelAt(int x, int y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return 0;
  const Tile& held = tile(tileIndex(x / tileSide, y / tileSide));
  if (held.isUniform()) return held.pixel();
  const int offset = y % tileSide * tileSide + x % tileSide;
  return packPixel(held.data() + static_cast<std::size_t>(offset) * static_cast<std::size_t>(pixelBytes()),
                   pixelBytes());
}

bool Surface::equals(const Surface& other) const {
  if (format_ != other.format_ || width_ != other.width_ || height_ != other.height_) return false;
  for (int index = 0; index < tileCount(); ++index) {
    if (tile(index) == other.tile(index)) continue;
    if (!tilesAgree(tile(index), other.tile(index), tileRect(index), pixelBytes())) return false;
  }
  return true;
}

void Surface::rememberRecipes() {
  if (recipes_.empty()) recipes_.resize(tiles_.size());
}

bool fitInSize(const Surface& a, const Surface& b) {
  return expectThat(haveSameSize(a, b), "A kernel was given surfaces of different sizes");
}

bool fitInFormat(const Surface& a, const Surface& b) {
  return expectThat(a.format() == b.format(), "A kernel was given surfaces of different formats");
}

void copyPixels(const Surface& source, const PixelRect& rect, Surface& destination, int x, int y) {
  assert(source.format() == destination.format());
  const PixelRect clipped = rect.intersected(source.bounds());
  const int shiftX = x - rect.x;
  const int shiftY = y - rect.y;
  const PixelRect target =
      PixelRect{clipped.x + shiftX, clipped.y + shiftY, clipped.width, clipped.height}.intersected(
          destination.bounds());
  if (target.isEmpty()) return;
  const int firstX = target.x / tileSide;
  const int firstY = target.y / tileSide;
  const int across = (target.x + target.width - 1) / tileSide - firstX + 1;
  const int down = (target.y + target.height - 1) / tileSide - firstY + 1;
  const auto copyTile = [&](int place) {
    const int index = destination.tileIndex(firstX + place % across, firstY + place / across);
    const PixelRect part = destination.tileRect(index).intersected(target);
    copyIntoTile(source, destination, index, part,
                 {part.x - shiftX, part.y - shiftY, part.width, part.height});
  };
  // Handing a few tiles to another thread costs more than copying them.
  constexpr int fewTiles = 8;
  if (across * down <= fewTiles) {
    for (int place = 0; place < across * down; ++place) copyTile(place);
    return;
  }
  tbb::parallel_for(tbb::blocked_range<int>(0, across * down, fewTiles),
                    [&](const tbb::blocked_range<int>& places) {
                      for (int place = places.begin(); place < places.end(); ++place) copyTile(place);
                    });
}

void fillPixels(std::byte* destination, std::size_t count, std::uint64_t pixel, int pixelBytes) {
  switch (pixelBytes) {
    case 2:
      std::fill_n(reinterpret_cast<std::uint16_t*>(destination), count, static_cast<std::uint16_t>(pixel));
      break;
    case 4:
      std::fill_n(reinterpret_cast<std::uint32_t*>(destination), count, static_cast<std::uint32_t>(pixel));
      break;
    default:
      std::fill_n(reinterpret_cast<std::uint64_t*>(destination), count, pixel);
      break;
  }
}

}  // namespace orvanel
