// Decodes an image file into memory with the platform's readers: upright, in sRGB, 8 bits a channel, and
// with what the file says of its pixels. Any thread.
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
  /// The file is damaged or ends too early: part of the image is not what it was.
  bool isIncomplete = false;
  /// What the file says beside the pixels; null when that is nothing.
  std::shared_ptr<const ImageMetadata> metadata = nullptr;
};

[[nodiscard]] Described<DecodedImage> decodeImageFile(const QString& path, const Progress& progress = {});

}  // namespace orvanel
