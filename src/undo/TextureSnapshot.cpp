#include "undo/TextureSnapshot.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <mutex>
#include <utility>

#include "raster/Background.h"
#include "raster/TileMemory.h"
#include "undo/CompressedTile.h"

namespace orvanel {
namespace {

// Few enough that a core busy with the history is free for the frame within a millisecond or two.
constexpr std::size_t tilesPerTask = 4;

}  // namespace

/// The tiles under the region, row by row, shared with the background work. Each is raw at first, then
/// uniform or compressed.
struct TextureSnapshot::Contents {
  int firstTileX = 0;
  int firstTileY = 0;
  int tilesAcross = 0;
  int pixelBytes = 0;

  mutable std::mutex lock;  ///< guards what follows
  std::vector<Tile> tiles;  ///< raw or uniform; empty where only the compressed twin is held
  std::vector<std::shared_ptr<CompressedTile>> compressed;
  bool isCompressed = false;
  bool isReady = false;
  std::int64_t sumOfShares = 0;  ///< as of `sumGeneration`
  std::uint64_t sumGeneration = ~std::uint64_t{0};

  ~Contents() {
    for (const auto& twin : compressed) {
      if (twin != nullptr) twin->removeHolder();
    }
  }

  [[nodiscard]] std::size_t tileCount() const { return compressed.size(); }

  void compressTile(std::size_t index) {
    Tile raw;
    {
      const std::lock_guard guard(lock);
      raw = tiles[index];
    }
    if (raw.isUniform()) return;
    std::shared_ptr<CompressedTile> twin = CompressedTile::of(raw, pixelBytes);
    twin->addHolder();
    const std::lock_guard guard(lock);
    compressed[index] = std::move(twin);
    if (!isReady) tiles[index] = Tile();
  }

  /// A held tile; a compressed one that equals `standing` is not decompressed.
  [[nodiscard]] Tile tileLike(std::size_t index, const Tile& standing) {
    std::shared_ptr<CompressedTile> twin;
    {
      const std::lock_guard guard(lock);
      if (compressed[index] == nullptr || !tiles[index].isUniform()) return tiles[index];
      twin = compressed[index];
    }
    const bool isStanding = !standing.isUniform() && standing.version() == twin->version();
    Tile tile = isStanding ? standing : twin->restored();
    const std::lock_guard guard(lock);
    if (isReady) tiles[index] = tile;
    return tile;
  }

  void setReady(bool ready) {
    const std::lock_guard guard(lock);
    if (std::exchange(isReady, ready) == ready || ready) return;
    for (std::size_t index = 0; index < tileCount(); ++index) {
      if (compressed[index] != nullptr) tiles[index] = Tile();
    }
  }

  /// Compresses the tiles from `first` on, a few at a time; ends quietly once the snapshot is gone.
  static void compressInBackground(const std::weak_ptr<Contents>& weak, std::size_t first) {
    enqueueBackgroundTask([weak, first] {
      const std::shared_ptr<Contents> contents = weak.lock();
      if (contents == nullptr) return;
      const std::size_t end = std::min(first + tilesPerTask, contents->tileCount());
      for (std::size_t index = first; index < end; ++index) contents->compressTile(index);
      if (end < contents->tileCount()) return compressInBackground(weak, end);
      {
        const std::lock_guard guard(contents->lock);
        contents->isCompressed = true;
      }
      tileMemory::trim();
    });
  }
};

std::shared_ptr<TextureSnapshot> TextureSnapshot::capture(const Surface& texture,
                                                          const MetalContext& context) {
  return capture(texture, texture.bounds(), context);
}

std::shared_ptr<TextureSnapshot> TextureSnapshot::capture(const Surface& texture, const PixelRect& region,
                                                          const MetalContext& /*context*/) {
  return captured(texture, region, false);
}

std::shared_ptr<TextureSnapshot> TextureSnapshot::captureReady(const Surface& texture,
                                                               const MetalContext& /*context*/) {
  return captured(texture, texture.bounds(), true);
}

std::shared_ptr<TextureSnapshot> TextureSnapshot::captured(const Surface& texture, const PixelRect& region,
                                                           bool isReady) {
  if (region.isEmpty() || region != region.intersected(texture.bounds()) || !tileMemory::admitSurface()) {
    return nullptr;
  }
  std::shared_ptr<TextureSnapshot> snapshot(new TextureSnapshot(texture, region));
  // Before compression begins: it lets go of the raw tiles of a snapshot that isn't ready.
  snapshot->setReady(isReady);
  Contents::compressInBackground(snapshot->contents_, 0);
  return snapshot;
}

TextureSnapshot::TextureSnapshot(const Surface& texture, const PixelRect& region)
    : region_(region), pixelFormat_(texture.format()), contents_(std::make_shared<Contents>()) {
  Contents& contents = *contents_;
  contents.pixelBytes = texture.pixelBytes();
  contents.firstTileX = region.x / tileSide;
  contents.firstTileY = region.y / tileSide;
  contents.tilesAcross = (region.x + region.width - 1) / tileSide - contents.firstTileX + 1;
  const int tilesDown = (region.y + region.height - 1) / tileSide - contents.firstTileY + 1;
  contents.tiles.reserve(static_cast<std::size_t>(contents.tilesAcross) *
                         static_cast<std::size_t>(tilesDown));
  for (int row = 0; row < tilesDown; ++row) {
    for (int column = 0; column < contents.tilesAcross; ++column) {
      contents.tiles.push_back(
          texture.tile(texture.tileIndex(contents.firstTileX + column, contents.firstTileY + row)));
    }
  }
  contents.compressed.resize(contents.tiles.size());
}

TextureSnapshot::~TextureSnapshot() = default;

std::int64_t TextureSnapshot::uncompressedSize() const {
  return static_cast<std::int64_t>(region_.width) * bytesPerPixel(pixelFormat_) * region_.height;
}

bool TextureSnapshot::isCompressed() const {
  const std::lock_guard guard(contents_->lock);
  return contents_->isCompressed;
}

std::int64_t TextureSnapshot::compressedSize() const {
  const std::lock_guard guard(contents_->lock);
  if (!contents_->isCompressed) return uncompressedSize();
  const std::uint64_t generation = CompressedTile::shareGeneration();
  if (contents_->sumGeneration != generation) {
    contents_->sumOfShares = 0;
    for (const auto& twin : contents_->compressed) {
      if (twin != nullptr) contents_->sumOfShares += twin->share();
    }
    contents_->sumGeneration = generation;
  }
  return contents_->sumOfShares;
}

void TextureSnapshot::restore(Surface& destination, const MetalContext& /*context*/) const {
  if (destination.format() != pixelFormat_) return;
  Contents& contents = *contents_;
  tbb::parallel_for(std::size_t{0}, contents.tileCount(), [&](std::size_t index) {
    const int tileX = contents.firstTileX + static_cast<int>(index) % contents.tilesAcross;
    const int tileY = contents.firstTileY + static_cast<int>(index) / contents.tilesAcross;
    if (tileX >= destination.tilesAcross() || tileY >= destination.tilesDown()) return;
    const int target = destination.tileIndex(tileX, tileY);
    const PixelRect whole = destination.tileRect(target);
    const PixelRect part = whole.intersected(region_);
    if (part.isEmpty()) return;
    const Tile& standing = destination.tile(target);
    Tile held = contents.tileLike(index, standing);
    if (held == standing) return;
    if (part == whole) {
      destination.setTile(target, std::move(held));
      return;
    }
    Surface tile(pixelFormat_, tileSide, tileSide);
    tile.setTile(0, std::move(held));
    copyPixels(tile, {part.x - whole.x, part.y - whole.y, part.width, part.height}, destination, part.x,
               part.y);
  });
}

void TextureSnapshot::setReady(bool isReady) {
  contents_->setReady(isReady && uncompressedSize() <= mostReadyBytes);
}

std::vector<std::byte> TextureSnapshot::decompressedData() const {
  Contents& contents = *contents_;
  const auto rowBytes =
      static_cast<std::size_t>(region_.width) * static_cast<std::size_t>(contents.pixelBytes);
  std::vector<std::byte> rows(rowBytes * static_cast<std::size_t>(region_.height));
  for (std::size_t index = 0; index < contents.tileCount(); ++index) {
    const int left = (contents.firstTileX + static_cast<int>(index) % contents.tilesAcross) * tileSide;
    const int top = (contents.firstTileY + static_cast<int>(index) / contents.tilesAcross) * tileSide;
    const PixelRect part = PixelRect{left, top, tileSide, tileSide}.intersected(region_);
    Surface tile(pixelFormat_, tileSide, tileSide);
    tile.setTile(0, contents.tileLike(index, Tile()));
    std::byte* out =
        rows.data() + static_cast<std::size_t>(part.y - region_.y) * rowBytes +
        static_cast<std::size_t>(part.x - region_.x) * static_cast<std::size_t>(contents.pixelBytes);
    tile.readRect({part.x - left, part.y - top, part.width, part.height}, out, rowBytes);
  }
  return rows;
}

void TextureSnapshot::waitForCompression() {
  waitForBackgroundWork();
}

}  // namespace orvanel
