// A surface ("texture"): a grid of copied-on-write tiles. Copying a surface copies no pixels.
// A surface belongs to one thread at a time; kernels may write different tiles of it in parallel.
// Background work takes a copy, whose tiles are immutable while they are shared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "raster/PixelFormat.h"
#include "raster/Tile.h"

namespace orvanel {

/// A rectangle of whole pixels; empty when a side is not positive.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  [[nodiscard]] bool isEmpty() const { return width <= 0 || height <= 0; }
  [[nodiscard]] PixelRect intersected(const PixelRect& other) const;
  friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

class Surface {
 public:
  /// All pixels zero, no pixel memory. Both sides are at least 1; the format is of at most 8 bytes a pixel.
  Surface(PixelFormat format, int width, int height);

  [[nodiscard]] PixelFormat format() const { return format_; }
  [[nodiscard]] int width() const { return width_; }
  [[nodiscard]] int height() const { return height_; }
  [[nodiscard]] PixelRect bounds() const { return {0, 0, width_, height_}; }
  [[nodiscard]] int pixelBytes() const { return bytesPerPixel(format_); }
  /// Bytes of the pixels as packed rows, whatever memory the tiles take.
  [[nodiscard]] std::int64_t byteSize() const;

  [[nodiscard]] int tilesAcross() const { return tilesAcross_; }
  [[nodiscard]] int tilesDown() const { return tilesDown_; }
  [[nodiscard]] int tileCount() const { return static_cast<int>(tiles_.size()); }
  [[nodiscard]] int tileIndex(int tileX, int tileY) const { return tileY * tilesAcross_ + tileX; }
  /// The part of the canvas under a tile, clipped to the surface.
  [[nodiscard]] PixelRect tileRect(int index) const;
  [[nodiscard]] std::size_t tileBytes() const {
    return static_cast<std::size_t>(tilePixels) * static_cast<std::size_t>(pixelBytes());
  }
  [[nodiscard]] const Tile& tile(int index) const { return tiles_[static_cast<std::size_t>(index)]; }

  /// Puts a tile in place, sharing its bytes.
  void setTile(int index, Tile tile);
  void setUniform(int index, std::uint64_t pixel) { setTile(index, Tile::uniform(pixel)); }
  /// Every tile uniform with this pixel; takes no memory.
  void fill(std::uint64_t pixel);

  /// The tile's bytes for changing: unshared, a uniform tile spread out, under a new version.
  [[nodiscard]] std::byte* editTile(int index);
  /// As `editTile`, for a caller that writes every pixel; the old contents are lost.
  [[nodiscard]] std::byte* overwriteTile(int index);
  /// Sets what is known of the bytes just written. The tile is a data tile.
  void setTrait(int index, TileTrait trait) {
    tiles_[static_cast<std::size_t>(index)].buffer_->trait = trait;
  }
  /// Makes a data tile uniform if all its visible pixels are equal.
  void collapseIfUniform(int index);

  /// Copies rows [y, y + rows) of the columns [x, x + columns) out, `bytesPerRow` apart.
  void readRect(const PixelRect& rect, std::byte* destination, std::size_t bytesPerRow) const;
  /// Copies packed rows in. Rectangle and surface must agree; whole tiles written with one value become
  /// uniform.
  void writeRect(const PixelRect& rect, const std::byte* source, std::size_t bytesPerRow);
  /// One pixel's bytes, zero outside.
  [[nodiscard]] std::uint64_t pixelAt(int x, int y) const;

  /// True when both surfaces have the same format, size and pixels.
  [[nodiscard]] bool equals(const Surface& other) const;

  /// The hash of the inputs that a derived tile was computed from, to decide whether it is out of date. Any
  /// change of the tile resets it to 0, which means unknown.
  [[nodiscard]] std::uint64_t recipe(int index) const {
    return recipes_.empty() ? 0 : recipes_[static_cast<std::size_t>(index)];
  }
  /// Allocates the recipes of all tiles, so that tiles can be derived in parallel.
  void rememberRecipes();
  void setRecipe(int index, std::uint64_t recipe) { recipes_[static_cast<std::size_t>(index)] = recipe; }

 private:
  void forgetRecipe(int index) {
    if (!recipes_.empty()) recipes_[static_cast<std::size_t>(index)] = 0;
  }

  PixelFormat format_;
  int width_;
  int height_;
  int tilesAcross_;
  int tilesDown_;
  std::vector<Tile> tiles_;
  std::vector<std::uint64_t> recipes_;
};

/// Surfaces are shared between the model, the renderer and undo records under this name.
using Texture = std::shared_ptr<Surface>;

[[nodiscard]] inline bool haveSameSize(const Surface& a, const Surface& b) {
  return a.width() == b.width() && a.height() == b.height();
}

/// Checks by `expectThat` that a kernel was given surfaces of the same size, or of the same format.
[[nodiscard]] bool fitInSize(const Surface& a, const Surface& b);
[[nodiscard]] bool fitInFormat(const Surface& a, const Surface& b);

/// Copies `rect` of `source` so that its corner lands on (x, y) of `destination`; both are clipped. Whole
/// tiles that line up are shared. The formats agree.
void copyPixels(const Surface& source, const PixelRect& rect, Surface& destination, int x, int y);

/// Fills a row of `count` pixels with one value.
void fillPixels(std::byte* destination, std::size_t count, std::uint64_t pixel, int pixelBytes);

}  // namespace orvanel
