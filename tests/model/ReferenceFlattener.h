// A slow reference for flattening: the whole canvas, node by node, in double precision. An isolated folder
// gets an image of its own, rounded to its temporary's format.
#pragma once

#include <vector>

#include "model/Document.h"
#include "raster/CompositeTwin.h"

namespace orvanel::test {

/// Pixels in row order.
using Picture = std::vector<twin::Pixel>;

[[nodiscard]] Picture flattenReference(const Document& document);

/// The largest amount by which any channel exceeds its permitted deviation from the reference; at most 0 if
/// all agree. `slack` widens the tolerance, in units of the format's rounding.
[[nodiscard]] double largestExcess(const Surface& composite, const Picture& truth, double slack);

}  // namespace orvanel::test
