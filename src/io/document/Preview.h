// A small picture of a document for file managers: the composite within a box of 512 pixels, as PNG.
// Any thread, on surfaces that nobody changes meanwhile.
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
