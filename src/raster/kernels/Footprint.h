// The mean of a surface over a parallelogram: the footprint of one pixel of a strongly reduced image. The
// cost is proportional to the covered area, even for thin, slanted footprints. Safe on any thread.
#pragma once

#include <array>

#include "raster/Surface.h"

namespace orvanel::kernels {

/// A corner and the two edges that leave it, in pixels of the source, whose centres lie at halves.
struct Parallelogram {
  double u = 0.0;
  double v = 0.0;
  std::array<double, 2> edge{};
  std::array<double, 2> otherEdge{};
};

/// Premultiplied colour. What lies outside `clip`, a part of the source, is transparent.
[[nodiscard]] std::array<float, 4> meanOver(const Surface& source, const PixelRect& clip,
                                            const Parallelogram& footprint);

}  // namespace orvanel::kernels
