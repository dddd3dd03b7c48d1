// An immutable copy of a rectangle of a surface, from which an undo record puts the pixels back.
// Capture shares tiles and copies no pixels; compression runs in the background and then lets go of the
// raw tiles. Made, restored and dropped on the main thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "raster/MetalContext.h"
#include "raster/Surface.h"
#include "undo/ChangedTiles.h"

namespace orvanel {

class SnapshotContents;

class TextureSnapshot {
 public:
  /// Captures `region` (or all) of `texture`. Null when the region is empty or not within the surface, or
  /// memory is refused.
  [[nodiscard]] static std::shared_ptr<TextureSnapshot> capture(const Surface& texture,
                                                                const MetalContext& context);
  [[nodiscard]] static std::shared_ptr<TextureSnapshot> capture(const Surface& texture,
                                                                const PixelRect& region,
                                                                const MetalContext& context);
  /// As `capture`, and ready at once: for records that are about to be pushed.
  [[nodiscard]] static std::shared_ptr<TextureSnapshot> captureReady(const Surface& texture,
                                                                     const MetalContext& context);
  ~TextureSnapshot();
  TextureSnapshot(const TextureSnapshot&) = delete;
  TextureSnapshot& operator=(const TextureSnapshot&) = delete;

  [[nodiscard]] const PixelRect& region() const { return region_; }
  [[nodiscard]] PixelFormat pixelFormat() const { return pixelFormat_; }
  [[nodiscard]] int width() const { return region_.width; }
  [[nodiscard]] int height() const { return region_.height; }
  /// Bytes of the packed rows.
  [[nodiscard]] std::int64_t uncompressedSize() const;
  /// Number of tiles that aren't uniform.
  [[nodiscard]] std::size_t dataTileCount() const;
  /// Bytes of the tiles that aren't uniform: what restoring can take.
  [[nodiscard]] std::uint64_t dataBytes() const;
  /// Tiles of `standing` that restoring would replace, in ascending order, except transparent ones that stay
  /// so. No pixels are compared.
  [[nodiscard]] ChangedTiles tilesUnlike(const Surface& standing) const;
  /// True once background compression has finished, whether or not it saved bytes.
  [[nodiscard]] bool isCompressed() const;
  /// Bytes that exist because of this snapshot now: uniform tiles none, a raw tile its bytes until the
  /// compressed form replaces it, and nothing while a surface holds it too. What n snapshots share counts
  /// 1/n for each. Raw tiles kept ready count as well.
  [[nodiscard]] std::int64_t compressedSize() const;

  /// Puts the pixels back where they were captured. Unchanged tiles cost nothing.
  /// The format is the captured one; a region beyond the destination is clipped.
  void restore(Surface& destination, const MetalContext& context) const;
  /// Whether raw tiles are kept beside the compressed ones from now on, so that restoring puts tiles back
  /// without decompressing. Off by default, and never on for more than `mostReadyBytes`.
  void setReady(bool isReady);
  static constexpr std::int64_t mostReadyBytes = std::int64_t{256} << 20;

  /// The packed raw rows.
  [[nodiscard]] std::vector<std::byte> decompressedData() const;

  /// Blocks until all compression, and any other background work, has ended. For exact memory figures.
  static void waitForCompression();
  /// Compresses what is waiting on all cores; returns when it is done, when `isEnough`, or soon after
  /// `limit`.
  static void helpCompression(std::chrono::milliseconds limit, const std::function<bool()>& isEnough);

 private:
  TextureSnapshot(const Surface& texture, const PixelRect& region, bool isReady);
  [[nodiscard]] static std::shared_ptr<TextureSnapshot> captured(const Surface& texture,
                                                                 const PixelRect& region, bool isReady);
  [[nodiscard]] bool mayBeReady() const { return uncompressedSize() <= mostReadyBytes; }

  PixelRect region_;
  PixelFormat pixelFormat_;
  std::shared_ptr<SnapshotContents> contents_;
};

}  // namespace orvanel
