// The shifted copy that several kernels come down to. Called on the main thread, spreads over tiles.
#pragma once

#include "raster/Surface.h"

namespace orvanel::kernels {

/// destination(x + dx, y + dy) = source(x, y); what comes from outside is all zero. Formats agree.
void translatePixels(const Surface& source, Surface& destination, int dx, int dy);

}  // namespace orvanel::kernels
