// The slow truth of flattening: the whole canvas, node by node, in double precision. An isolated folder
// gets a picture of its own, rounded to the format that its temporary has.
#pragma once

#include <vector>

#include "model/Document.h"
#include "raster/CompositeTwin.h"

namespace orvanel::test {

/// Row by row.
using Picture = std::vector<twin::Pixel>;

[[nodiscard]] Picture flattenReference(const Document& document);

/// The largest excess of any channel over what it may differ from the truth; at most 0 when all agree.
/// `slack` widens the tolerance, in units of the format's own rounding.
[[nodiscard]] double largestExcess(const Surface& composite, const Picture& truth, double slack);

}  // namespace orvanel::test
