// What an image file's own header says of its pixels, where the platform's readers hide it: they spread
// grey with alpha into colour and cut what they can't hold. Any thread; the bytes are not trusted.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <optional>

#include "io/image/FlatImage.h"
#include "io/image/ImageMetadata.h"

namespace orvanel {

/// Of a PNG or TIFF file; nothing for any other, or for a header that tells nothing more.
[[nodiscard]] std::optional<ImageTraits> traitsOfHeader(QIODevice& file);

[[nodiscard]] bool isTiff(QIODevice& file);

/// How dense the pixels of a PNG, JPEG or BMP file lie, where its header says so in units of length.
[[nodiscard]] std::optional<PixelDensity> densityOfHeader(QIODevice& file);
/// The EXIF block of a PNG; empty when there is none.
[[nodiscard]] QByteArray exifOfPng(QIODevice& file);

/// Whether a PNG's values are meant for an sRGB display as they stand: it says so, or tells a gamma of about
/// 1/2.2 and no chromaticities but sRGB's. Applying that gamma would only exchange it for sRGB's own curve.
[[nodiscard]] bool isPngForDisplay(QIODevice& file);

[[nodiscard]] std::optional<ImageTraits> traitsOfPng(const QByteArray& start);
[[nodiscard]] std::optional<ImageTraits> traitsOfTiff(QIODevice& file);

}  // namespace orvanel
