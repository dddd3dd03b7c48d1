#include "raster/Surface.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "raster/Regularity.h"

namespace orvanel {
namespace {

int tilesFor(int pixels) {
  return (pixels + tileSide - 1) / tileSide;
}

/// True when rows of `columns` pixels, `stride` bytes apart, all hold `pixel`.
bool rowsHold(const std::byte* rows, std::size_t stride, int columns, int count, std::uint64_t pixel,
              int pixelBytes) {
  const std::size_t rowBytes = static_cast<std::size_t>(columns) * static_cast<std::size_t>(pixelBytes);
  if (packPixel(rows, pixelBytes) != pixel) return false;
  // Each pixel equals its left neighbour, then each row equals the first: memcmp runs at memory speed.
  const auto step = static_cast<std::size_t>(pixelBytes);
  if (std::memcmp(rows, rows + step, rowBytes - step) != 0) return false;
  for (int row = 1; row < count; ++row) {
    if (std::memcmp(rows, rows + static_cast<std::size_t>(row) * stride, rowBytes) != 0) return false;
  }
  return true;
}

/// True when the caller holds the only reference and nobody can revive the old bytes any more.
bool takeForWriting(TileBuffer& buffer) {
  if (buffer.isShared()) return false;
  // A twin in the history may take a reference until it has been told, so it is told before the last look.
  if (const auto follower = buffer.companion.lock()) follower->bufferDying(buffer);
  if (buffer.isShared()) return false;
  buffer.companion.reset();
  return true;
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
  const std::size_t stride = static_cast<std::size_t>(tileSide) * static_cast<std::size_t>(pixelBytes());
  std::vector<std::byte> mine(tileBytes());
  std::vector<std::byte> theirs(tileBytes());
  for (int index = 0; index < tileCount(); ++index) {
    if (tile(index) == other.tile(index)) continue;
    const PixelRect rect = tileRect(index);
    readRect(rect, mine.data(), stride);
    other.readRect(rect, theirs.data(), stride);
    const std::size_t rowBytes =
        static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(pixelBytes());
    for (int row = 0; row < rect.height; ++row) {
      const std::size_t at = static_cast<std::size_t>(row) * stride;
      if (std::memcmp(mine.data() + at, theirs.data() + at, rowBytes) != 0) return false;
    }
  }
  return true;
}

void Surface::rememberRecipes() {
  if (recipes_.empty()) recipes_.resize(tiles_.size());
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
  const bool linedUp = shiftX % tileSide == 0 && shiftY % tileSide == 0;
  const std::size_t stride =
      static_cast<std::size_t>(tileSide) * static_cast<std::size_t>(source.pixelBytes());
  std::vector<std::byte> rows;
  for (int tileY = target.y / tileSide; tileY <= (target.y + target.height - 1) / tileSide; ++tileY) {
    for (int tileX = target.x / tileSide; tileX <= (target.x + target.width - 1) / tileSide; ++tileX) {
      const int index = destination.tileIndex(tileX, tileY);
      const PixelRect whole = destination.tileRect(index);
      const PixelRect part = whole.intersected(target);
      if (linedUp && part == whole) {
        const int sourceX = tileX - shiftX / tileSide;
        const int sourceY = tileY - shiftY / tileSide;
        destination.setTile(index, source.tile(source.tileIndex(sourceX, sourceY)));
        continue;
      }
      if (rows.empty()) rows.resize(source.tileBytes());
      source.readRect({part.x - shiftX, part.y - shiftY, part.width, part.height}, rows.data(), stride);
      destination.writeRect(part, rows.data(), stride);
      if (isFloatFormat(source.format())) markIfIrregular(destination, index);
    }
  }
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
