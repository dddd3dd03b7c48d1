// What an image file's own header says of its pixels, where the platform's readers hide it: they spread
// grey with alpha into colour and cut what they can't hold. Any thread; the bytes are not trusted.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <optional>

#include "io/image/FlatImage.h"

namespace orvanel {

/// Of a PNG or TIFF file; nothing for any other, or for a header that tells nothing more.
[[nodiscard]] std::optional<ImageTraits> traitsOfHeader(QIODevice& file);

[[nodiscard]] std::optional<ImageTraits> traitsOfPng(const QByteArray& start);
[[nodiscard]] std::optional<ImageTraits> traitsOfTiff(QIODevice& file);

}  // namespace orvanel
