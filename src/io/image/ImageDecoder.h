// Decodes an image file with the platform's readers to an upright 8-bit image in sRGB, and reports the file's
// pixel format and metadata. Any thread.
#pragma once

#include <QImage>
#include <QString>
#include <memory>

#include "io/files/FileError.h"
#include "io/files/Progress.h"
#include "io/image/FlatImage.h"
#include "io/image/ImageMetadata.h"

namespace orvanel {

struct DecodedImage {
  /// RGB32, ARGB32 or RGBA8888; straight alpha.
  QImage image;
  ImageTraits traits;
  /// The file is damaged or truncated, and part of the image is missing.
  bool isIncomplete = false;
  /// Frames or pages in the file; `image` is the first.
  int pictureCount = 1;
  /// Null when the file has none.
  std::shared_ptr<const ImageMetadata> metadata = nullptr;
  /// Of the file, before it was read.
  std::optional<FileIdentity> identity = std::nullopt;
};

[[nodiscard]] Described<DecodedImage> decodeImageFile(const QString& path, const Progress& progress = {});

/// The image at most `side` pixels wide and high, where that takes little time and memory; otherwise null.
[[nodiscard]] QImage decodeReduced(const QString& path, int side, const Progress& progress = {});

/// What is quickly known of an image, while it is being decoded.
struct ImageGlimpse {
  /// Upright; empty if the file doesn't announce it, or announces an impossible one.
  QSize size;
  /// A small picture with the proportions of the image; null if there is none that is quick to make.
  QImage picture;
};

/// Takes the thumbnail that a camera has put into a large file; a smaller JPEG is decoded to about `side`
/// pixels. Other formats take as long to reduce as to decode.
[[nodiscard]] ImageGlimpse glimpseImage(const QString& path, int side, const Progress& progress = {});

}  // namespace orvanel
