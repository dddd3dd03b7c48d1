// Reads properties of an image file that the platform's readers don't report: these expand grey with alpha to
// colour and reduce unsupported depths. Any thread; the bytes are not trusted.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <optional>

#include "io/image/FlatImage.h"
#include "io/image/ImageMetadata.h"

namespace orvanel {

/// For a PNG or TIFF file; nothing for other formats, or when the header adds nothing.
[[nodiscard]] std::optional<ImageTraits> traitsOfHeader(QIODevice& file);

[[nodiscard]] bool isTiff(QIODevice& file);

/// The pixel density in the header of a PNG, JPEG or BMP file. Nothing if it has no unit of length.
[[nodiscard]] std::optional<PixelDensity> densityOfHeader(QIODevice& file);
/// The EXIF block of a PNG; empty when there is none.
[[nodiscard]] QByteArray exifOfPng(QIODevice& file);

/// The number of frames that an animated PNG announces; 1 for any other file.
[[nodiscard]] int framesOfPng(QIODevice& file);

/// Whether a PNG's values are to be taken as sRGB: it is tagged as sRGB, or it has a gamma of about 1/2.2 and
/// no chromaticities other than those of sRGB. That gamma approximates the sRGB curve; converting from one to
/// the other would change most values.
[[nodiscard]] bool isPngForDisplay(QIODevice& file);

[[nodiscard]] std::optional<ImageTraits> traitsOfPng(const QByteArray& start);
[[nodiscard]] std::optional<ImageTraits> traitsOfTiff(QIODevice& file);

}  // namespace orvanel
