// The shifted copy shared by several kernels. Called on the main thread; runs in parallel over tiles.
#pragma once

#include "raster/Surface.h"

namespace orvanel::kernels {

/// destination(x + dx, y + dy) = source(x, y); what comes from outside is all zero. Formats agree.
void translatePixels(const Surface& source, Surface& destination, int dx, int dy);

}  // namespace orvanel::kernels
