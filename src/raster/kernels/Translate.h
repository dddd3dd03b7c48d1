// The shifted copy shared by several kernels. Called on the main thread; runs in parallel over tiles.
#pragma once

#include <cstdint>
#include <optional>

#include "raster/KernelRecords.h"
#include "raster/Surface.h"

namespace orvanel::kernels {

/// destination(x + dx, y + dy) = source(x, y); what comes from outside is all zero. Formats agree.
void translatePixels(const Surface& source, Surface& destination, int dx, int dy);

/// The pixel that a tile of the moved surface gets because its source is uniform.
[[nodiscard]] std::optional<std::uint64_t> uniformPixelMoved(const Surface& source, const PixelRect& tile,
                                                             const OffsetParams& move);

}  // namespace orvanel::kernels
