// Reads HEIC files through libheif, which is loaded on first use. Any thread.
#pragma once

#include <QByteArray>
#include <QImage>

#include "io/files/FileError.h"

namespace orvanel {

struct HeifImage {
  /// Upright, straight RGBA8888 with its colour profile.
  QImage image;
  /// The depth in the file; the image has the upper eight bits.
  int bitsPerComponent = 8;
};

/// The file's primary image.
[[nodiscard]] Described<HeifImage> decodeHeif(const QByteArray& file);

}  // namespace orvanel
