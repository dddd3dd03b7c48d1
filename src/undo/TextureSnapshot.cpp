#include "undo/TextureSnapshot.h"

#include <tbb/parallel_for.h>

#include <utility>

#include "raster/Background.h"
#include "raster/TileContribution.h"
#include "raster/TileMemory.h"
#include "undo/CompressionQueue.h"
#include "undo/SnapshotContents.h"

namespace orvanel {

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
  std::shared_ptr<TextureSnapshot> snapshot(new TextureSnapshot(texture, region, isReady));
  compressionQueue::add(snapshot->contents_);
  return snapshot;
}

TextureSnapshot::TextureSnapshot(const Surface& texture, const PixelRect& region, bool isReady)
    : region_(region), pixelFormat_(texture.format()) {
  contents_ = std::make_shared<SnapshotContents>(texture, region, isReady && mayBeReady());
}

TextureSnapshot::~TextureSnapshot() = default;

std::int64_t TextureSnapshot::uncompressedSize() const {
  return static_cast<std::int64_t>(region_.width) * bytesPerPixel(pixelFormat_) * region_.height;
}

std::size_t TextureSnapshot::dataTileCount() const {
  return contents_->dataTileCount();
}

std::uint64_t TextureSnapshot::dataBytes() const {
  return dataTileCount() * tilePixels * static_cast<std::uint64_t>(bytesPerPixel(pixelFormat_));
}

ChangedTiles TextureSnapshot::tilesUnlike(const Surface& standing) const {
  ChangedTiles tiles;
  for (int index = 0; index < contents_->tileCount(); ++index) {
    const int tileX = contents_->tileX(index);
    const int tileY = contents_->tileY(index);
    if (tileX >= standing.tilesAcross() || tileY >= standing.tilesDown()) continue;
    const int tile = standing.tileIndex(tileX, tileY);
    if (!contents_->isUnlike(index, standing.tile(tile))) continue;
    if (contents_->isData(index)) {
      tiles.data.push_back(tile);
    } else if (!isTransparent(standing.tile(tile), pixelFormat_) ||
               !isTransparent(Tile::uniform(contents_->pixel(index)), pixelFormat_)) {
      tiles.uniform.push_back(tile);
    }
  }
  return tiles;
}

bool TextureSnapshot::isCompressed() const {
  return contents_->isCompressed();
}

std::int64_t TextureSnapshot::compressedSize() const {
  return contents_->heldBytes();
}

void TextureSnapshot::restore(Surface& destination, const MetalContext& /*context*/) const {
  if (destination.format() != pixelFormat_) return;
  SnapshotContents& contents = *contents_;
  tbb::parallel_for(0, contents.tileCount(), [&](int index) {
    const int tileX = contents.tileX(index);
    const int tileY = contents.tileY(index);
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
  contents_->setReady(isReady && mayBeReady());
}

std::vector<std::byte> TextureSnapshot::decompressedData() const {
  SnapshotContents& contents = *contents_;
  const auto pixelBytes = static_cast<std::size_t>(bytesPerPixel(pixelFormat_));
  const std::size_t rowBytes = static_cast<std::size_t>(region_.width) * pixelBytes;
  std::vector<std::byte> rows(rowBytes * static_cast<std::size_t>(region_.height));
  for (int index = 0; index < contents.tileCount(); ++index) {
    const int left = contents.tileX(index) * tileSide;
    const int top = contents.tileY(index) * tileSide;
    const PixelRect part = PixelRect{left, top, tileSide, tileSide}.intersected(region_);
    Surface tile(pixelFormat_, tileSide, tileSide);
    tile.setTile(0, contents.tileLike(index, Tile()));
    std::byte* out = rows.data() + static_cast<std::size_t>(part.y - region_.y) * rowBytes +
                     static_cast<std::size_t>(part.x - region_.x) * pixelBytes;
    tile.readRect({part.x - left, part.y - top, part.width, part.height}, out, rowBytes);
  }
  return rows;
}

void TextureSnapshot::waitForCompression() {
  waitForBackgroundWork();
}

void TextureSnapshot::helpCompression(std::chrono::milliseconds limit,
                                      const std::function<bool()>& isEnough) {
  compressionQueue::help(limit, isEnough);
}

}  // namespace orvanel
