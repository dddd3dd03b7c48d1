// The kernels that find rectangles: where a mask or layer has content, and what a canvas has beyond an
// even border.
#include <tbb/parallel_for_each.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <vector>

#include "raster/KernelRecords.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/PixelAccess.h"
#include "raster/kernels/PointRows.h"
#include "raster/kernels/TileAccess.h"

namespace orvanel::kernels {
namespace {

/// A rectangle that tasks widen together.
class SharedBounds {
 public:
  explicit SharedBounds(BoundsRecord& record) : record_(record) {}

  void include(const PixelRect& rect) {
    lower(record_.minX, rect.x);
    lower(record_.minY, rect.y);
    raise(record_.maxX, rect.x + rect.width - 1);
    raise(record_.maxY, rect.y + rect.height - 1);
  }

  /// True when nothing in `rect` could widen the bounds any more.
  [[nodiscard]] bool holds(const PixelRect& rect) const {
    return load(record_.minX) <= static_cast<std::uint32_t>(rect.x) &&
           load(record_.minY) <= static_cast<std::uint32_t>(rect.y) &&
           load(record_.maxX) >= static_cast<std::uint32_t>(rect.x + rect.width - 1) &&
           load(record_.maxY) >= static_cast<std::uint32_t>(rect.y + rect.height - 1);
  }

 private:
  static std::uint32_t load(std::uint32_t& field) {
    return std::atomic_ref(field).load(std::memory_order_relaxed);
  }
  static void lower(std::uint32_t& field, int to) {
    const auto value = static_cast<std::uint32_t>(to);
    std::atomic_ref shared(field);
    std::uint32_t held = shared.load(std::memory_order_relaxed);
    while (value < held && !shared.compare_exchange_weak(held, value)) {
    }
  }
  static void raise(std::uint32_t& field, int to) {
    const auto value = static_cast<std::uint32_t>(to);
    std::atomic_ref shared(field);
    std::uint32_t held = shared.load(std::memory_order_relaxed);
    while (value > held && !shared.compare_exchange_weak(held, value)) {
    }
  }

  BoundsRecord& record_;
};

/// Tile indexes from the rim of the grid inwards: content that reaches the rim is found at once, and
/// everything within it need not be looked at.
std::vector<int> tilesFromTheRim(const Surface& surface) {
  const int across = surface.tilesAcross();
  const int down = surface.tilesDown();
  std::vector<int> order;
  order.reserve(static_cast<std::size_t>(surface.tileCount()));
  for (int ring = 0; 2 * ring < std::min(across, down); ++ring) {
    const int right = across - 1 - ring;
    const int bottom = down - 1 - ring;
    for (int x = ring; x <= right; ++x) order.push_back(surface.tileIndex(x, ring));
    for (int y = ring + 1; y <= bottom; ++y) {
      if (y == bottom) {
        for (int x = ring; x <= right; ++x) order.push_back(surface.tileIndex(x, y));
      } else {
        order.push_back(surface.tileIndex(ring, y));
        if (right > ring) order.push_back(surface.tileIndex(right, y));
      }
    }
  }
  return order;
}

/// Widens `bounds` by every tile that `boundsOfTile(index, rect)` finds content in.
template <typename BoundsOfTile>
void boundEveryTile(const Surface& surface, BoundsRecord& record, const BoundsOfTile& boundsOfTile) {
  SharedBounds bounds(record);
  const auto include = [&](int index) {
    const PixelRect rect = surface.tileRect(index);
    if (bounds.holds(rect)) return;
    const PixelRect content = boundsOfTile(index, rect);
    if (!content.isEmpty()) bounds.include(content);
  };
  // Content that fills the surface is bounded by its corners alone.
  const int last = surface.tileCount() - 1;
  for (const int corner : {0, last, surface.tilesAcross() - 1, last - surface.tilesAcross() + 1}) {
    include(corner);
  }
  if (bounds.holds(surface.bounds())) return;
  const std::vector<int> order = tilesFromTheRim(surface);
  tbb::parallel_for_each(order.begin(), order.end(), include);
}

/// A word's mask beside itself until it fills 64 bits.
template <typename Word>
constexpr std::uint64_t repeated(Word mask) {
  std::uint64_t bits = 0;
  for (std::size_t shift = 0; shift < 64; shift += 8 * sizeof(Word)) bits |= std::uint64_t{mask} << shift;
  return bits;
}

/// The rectangle of the words that share a bit with `mask`; `rowOf(y)` gives a row of 128 words.
template <typename Word, typename RowOf>
PixelRect boundsOfWords(const PixelRect& rect, Word mask, const RowOf& rowOf) {
  int left = rect.width;
  int right = -1;
  int top = rect.height;
  int bottom = -1;
  for (int y = 0; y < rect.height; ++y) {
    const Word* row = rowOf(y);
    const std::uint64_t bits = combinedBits(reinterpret_cast<const std::byte*>(row), tileSide * sizeof(Word));
    if ((bits & repeated(mask)) == 0) continue;
    // What was found may lie beyond the canvas.
    int first = 0;
    while (first < rect.width && (row[first] & mask) == 0) ++first;
    if (first == rect.width) continue;
    int last = rect.width - 1;
    while ((row[last] & mask) == 0) --last;
    left = std::min(left, first);
    right = std::max(right, last);
    top = std::min(top, y);
    bottom = y;
  }
  if (bottom < 0) return {};
  return {rect.x + left, rect.y + top, right - left + 1, bottom - top + 1};
}

template <typename Word>
PixelRect contentOfTile(const Surface& surface, int index, const PixelRect& rect, Word mask) {
  const Tile& tile = surface.tile(index);
  if (tile.has(TileTrait::opaque)) return rect;
  const TileReader reader(surface, index);
  if (reader.isUniform()) return (reader.pixel() & mask) != 0 ? rect : PixelRect{};
  return boundsOfWords<Word>(rect, mask, [&](int y) { return reinterpret_cast<const Word*>(reader.row(y)); });
}

/// Content is where the last channel, alpha or the mask itself, is above 0. Regular alpha is never
/// negative, so that means any bit of it.
void boundContent(const Surface& surface, BoundsRecord& record) {
  boundEveryTile(surface, record, [&](int index, const PixelRect& rect) {
    switch (surface.format()) {
      case PixelFormat::r16Float:
        return contentOfTile<std::uint16_t>(surface, index, rect, 0xFFFFU);
      case PixelFormat::rg8Unorm:
        return contentOfTile<std::uint16_t>(surface, index, rect, 0xFF00U);
      case PixelFormat::rg16Unorm:
        return contentOfTile<std::uint32_t>(surface, index, rect, 0xFFFF0000U);
      case PixelFormat::rgba16Float:
        return contentOfTile<std::uint64_t>(surface, index, rect, 0xFFFFULL << 48U);
      default:
        return contentOfTile<std::uint32_t>(surface, index, rect, 0xFF000000U);
    }
  });
}

BoundsRecord& boundsBuffer(const Dispatch& dispatch) {
  return *reinterpret_cast<BoundsRecord*>(dispatch.buffers[0].data());
}

constexpr float edgeTolerance = 0.001F;

/// Says whether all pixels of a one pixel wide strip are like its first, and which that is.
bool isEven(const Surface& surface, const PixelRect& strip, Color4& first) {
  const auto length = static_cast<std::size_t>(std::max(strip.width, strip.height));
  const auto pixelBytes = static_cast<std::size_t>(surface.pixelBytes());
  const std::size_t padded = (length + 15) / 16 * 16;
  std::vector<std::uint64_t> memory((padded * pixelBytes + 64) / 8 + 8);
  auto* pixels = reinterpret_cast<std::byte*>(memory.data());
  // Row functions want 64-byte alignment, which a vector doesn't promise.
  pixels += 64 - reinterpret_cast<std::uintptr_t>(pixels) % 64;
  gatherRegion(surface, strip, pixels, strip.width > 1 ? length * pixelBytes : pixelBytes);
  fillPixels(pixels + length * pixelBytes, padded - length, packPixel(pixels, surface.pixelBytes()),
             surface.pixelBytes());
  first = colorOfPixel(packPixel(pixels, surface.pixelBytes()), surface.format());
  std::vector<std::uint8_t> flags(padded);
  withinRow(surface.format(), pixels, first, edgeTolerance, flags.data(), static_cast<int>(padded));
  return std::all_of(flags.begin(), flags.end(), [](std::uint8_t flag) { return flag != 0; });
}

}  // namespace

void selectionBoundingRect(const Dispatch& dispatch) {
  boundContent(*dispatch.textures[0], boundsBuffer(dispatch));
}

void layerContentBoundingRect(const Dispatch& dispatch) {
  boundContent(*dispatch.textures[0], boundsBuffer(dispatch));
}

void checkEdgeUniformity(const Dispatch& dispatch) {
  const Surface& surface = *dispatch.textures[0];
  auto* flags = reinterpret_cast<std::uint32_t*>(dispatch.buffers[0].data());
  auto* colors = reinterpret_cast<Color4*>(dispatch.buffers[1].data());
  const int width = surface.width();
  const int height = surface.height();
  const std::array<PixelRect, 4> edges{PixelRect{0, 0, width, 1}, PixelRect{0, height - 1, width, 1},
                                       PixelRect{0, 0, 1, height}, PixelRect{width - 1, 0, 1, height}};
  for (std::size_t edge = 0; edge < edges.size(); ++edge) {
    if (!isEven(surface, edges[edge], colors[edge])) flags[edge] = 1;
  }
}

void trimBoundingRect(const Dispatch& dispatch) {
  const Surface& surface = *dispatch.textures[0];
  const auto& color = inlineRecord<Color4>(dispatch, 1);
  boundEveryTile(surface, boundsBuffer(dispatch), [&](int index, const PixelRect& rect) {
    const TileReader reader(surface, index);
    alignas(64) std::array<std::uint8_t, tileSide> flags;
    if (reader.isUniform()) {
      withinRow(surface.format(), reader.row(0), color, edgeTolerance, flags.data(), 16);
      return flags[0] != 0 ? PixelRect{} : rect;
    }
    return boundsOfWords<std::uint8_t>(rect, 1, [&](int y) {
      withinRow(surface.format(), reader.row(y), color, edgeTolerance, flags.data(), tileSide);
      for (std::uint8_t& flag : flags) flag ^= 1U;
      return static_cast<const std::uint8_t*>(flags.data());
    });
  });
}

}  // namespace orvanel::kernels
