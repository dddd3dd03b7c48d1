// Writes a still GIF through giflib, which is loaded on first use. Any thread.
#pragma once

#include <QByteArray>
#include <QImage>
#include <optional>

#include "io/files/Progress.h"

namespace orvanel {

/// Up to 256 colours, dithered; pixels less than half covered become transparent.
[[nodiscard]] std::optional<QByteArray> encodeGif(const QImage& image, const Progress& progress = {});

}  // namespace orvanel
