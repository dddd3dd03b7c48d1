// The most memory that the mask of a shape can take: that of the tiles that its edge, softened by a feather,
// passes through. All others are uniform. Main thread only.
#pragma once

#include <cstdint>
#include <span>

#include "model/Document.h"

namespace orvanel::shapeCost {

/// `rect` lies within the canvas.
[[nodiscard]] std::uint64_t ofRect(const Document& document, const PixelRect& rect, float feather);
[[nodiscard]] std::uint64_t ofEllipse(const Document& document, float centerX, float centerY, float radiusX,
                                      float radiusY, float feather);
[[nodiscard]] std::uint64_t ofPolygon(const Document& document, std::span<const PolygonPoint> points);
/// A mask moved by whole pixels.
[[nodiscard]] std::uint64_t ofMove(const Surface& mask, int dx, int dy);

}  // namespace orvanel::shapeCost
