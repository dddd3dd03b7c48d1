// Reading a rectangle back after a bounding kernel: the rectangle, or nothing when no pixel qualified.
#pragma once

#include <cstdint>
#include <optional>

#include "raster/KernelRecords.h"
#include "raster/Surface.h"

namespace orvanel {

[[nodiscard]] inline std::optional<PixelRect> rectFromBounds(const BoundsRecord& bounds,
                                                             const Surface& texture) {
  if (bounds.minX >= static_cast<std::uint32_t>(texture.width())) return std::nullopt;
  return PixelRect{static_cast<int>(bounds.minX), static_cast<int>(bounds.minY),
                   static_cast<int>(bounds.maxX - bounds.minX + 1),
                   static_cast<int>(bounds.maxY - bounds.minY + 1)};
}

}  // namespace orvanel
