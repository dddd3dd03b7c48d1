// A thumbnail of a document for file managers: the composite scaled to fit 512 x 512 pixels, as PNG.
// Any thread; the surface must not change during the call.
#pragma once

#include <QByteArray>
#include <QSize>

#include "raster/Surface.h"

namespace orvanel {

inline constexpr int previewSide = 512;

/// The size of the preview of a canvas: never larger than the canvas, each side at least 1.
[[nodiscard]] QSize previewSize(int canvasWidth, int canvasHeight);

[[nodiscard]] QByteArray previewPng(const Surface& composite);

}  // namespace orvanel
