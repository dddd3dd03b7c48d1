// An immutable copy of a rectangle of a surface, from which an undo record puts the pixels back.
// Capture shares tiles and copies no pixels; compression runs in the background and then lets go of the
// raw tiles. Made, restored and dropped on the main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "raster/MetalContext.h"
#include "raster/Surface.h"

namespace orvanel {

class TextureSnapshot {
 public:
  /// Captures `region` (or all) of `texture` as it is now. Null when the region is empty or lies outside.
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
  /// True once background compression is through, whether or not it helped.
  [[nodiscard]] bool isCompressed() const;
  /// Bytes this snapshot adds now: its full size until compression is through; afterwards its share of
  /// the compressed tiles (a tile held by n snapshots counts 1/n). Tiles are kept whole, so the share of a
  /// region smaller than a tile can be larger than its rows.
  [[nodiscard]] std::int64_t compressedSize() const;

  /// Puts the pixels back where they were taken. Tiles that still stand unchanged cost nothing.
  /// The format is the captured one; a region beyond the destination is clipped.
  void restore(Surface& destination, const MetalContext& context) const;
  /// Whether raw tiles are kept beside the compressed ones from now on, so that restoring puts tiles back
  /// without decompressing. Not so at first, and never for more than `mostReadyBytes`. The raw tiles are a
  /// cache and don't count in `compressedSize`.
  void setReady(bool isReady);
  static constexpr std::int64_t mostReadyBytes = std::int64_t{256} << 20;

  /// The packed raw rows.
  [[nodiscard]] std::vector<std::byte> decompressedData() const;

  /// Blocks until all compression, and any other background work, has ended. For exact memory figures.
  static void waitForCompression();

 private:
  struct Contents;
  TextureSnapshot(const Surface& texture, const PixelRect& region);
  [[nodiscard]] static std::shared_ptr<TextureSnapshot> captured(const Surface& texture,
                                                                 const PixelRect& region, bool isReady);

  PixelRect region_;
  PixelFormat pixelFormat_;
  std::shared_ptr<Contents> contents_;
};

}  // namespace orvanel
