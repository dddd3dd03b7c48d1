// What an image file's own header says of its pixels, where the platform's readers hide it: they spread
// grey with alpha into colour and cut what they can't hold. Any thread; the bytes are not trusted.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>
#include <optional>

#include "io/image/FlatImage.h"

namespace orvanel {

/// Of a PNG or TIFF file; nothing for any other, or for a header that tells nothing more.
[[nodiscard]] std::optional<ImageTraits> traitsOfHeader(const QString& path);

[[nodiscard]] std::optional<ImageTraits> traitsOfPng(const QByteArray& start);
/// `file` stands at its start and can be read anywhere.
[[nodiscard]] std::optional<ImageTraits> traitsOfTiff(QIODevice& file);

}  // namespace orvanel
