// Copied pixels: a rectangle and its original position. A plain value that outlives its document and is
// shared by all documents.
#pragma once

#include <cstdint>
#include <memory>

#include "raster/PixelFormat.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {

struct PixelClipboard {
  /// The rectangle's pixels; transparent outside the selection they were copied under.
  std::shared_ptr<const TextureSnapshot> snapshot;
  /// Left and top of the rectangle on the source canvas.
  std::int64_t originX = 0;
  std::int64_t originY = 0;
  std::int64_t width = 0;
  std::int64_t height = 0;
  /// The layer format of the source document.
  PixelFormat pixelFormat = PixelFormat::rgba8Unorm;

  friend bool operator==(const PixelClipboard&, const PixelClipboard&) = default;
};

}  // namespace orvanel
