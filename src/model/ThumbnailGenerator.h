// Makes thumbnails by sampling a surface: only the sampled pixels are read, whatever the size of the canvas.
// Transparency lies on a board of grey squares. Pure functions; any thread that holds its own copy of the
// surface.
#pragma once

#include <QSize>
#include <vector>

#include "model/Layer.h"
#include "raster/ColorMode.h"
#include "raster/Surface.h"

namespace orvanel {

/// Pictures of one surface of colours.
struct ColorThumbnails {
  Thumbnail image;
  /// One for each colour channel, as grey.
  std::vector<Thumbnail> channels;
};

class ThumbnailGenerator {
 public:
  static constexpr int thumbnailPoints = 48;
  static constexpr int thumbnailPixels = 96;
  static constexpr int maxWidthToHeightRatio = 2;

  /// The size in pixels of a picture of this canvas: the largest within 192 x 96, each side at least 1.
  /// Thumbnails have two pixels for each view point.
  [[nodiscard]] static QSize fittedSize(int width, int height);

  /// A layer's surface or a composite, in colour.
  [[nodiscard]] static Thumbnail colorThumbnail(const Surface& surface);
  /// The same with its channels: one in grey modes, otherwise three.
  [[nodiscard]] static ColorThumbnails colorThumbnails(const Surface& surface, ColorMode mode);
  /// A mask: 0 is black, 1 white.
  [[nodiscard]] static Thumbnail maskThumbnail(const Surface& mask);
};

}  // namespace orvanel
