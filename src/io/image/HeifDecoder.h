// Reads HEIC files through libheif, which is opened when a file first asks for it. Any thread.
#pragma once

#include <QByteArray>
#include <QImage>

#include "io/files/FileError.h"

namespace orvanel {

struct HeifImage {
  /// Upright, straight RGBA8888 with its colour profile.
  QImage image;
  /// Of the file; the image holds the upper eight.
  int bitsPerComponent = 8;
};

/// The file's primary image.
[[nodiscard]] Described<HeifImage> decodeHeif(const QByteArray& file);

}  // namespace orvanel
