// Synthetic photographs: smooth gradients, fine texture and sensor noise, from fixed seeds.
#pragma once

#include <QImage>
#include <cstdint>

#include "raster/Surface.h"

namespace orvanel::bench {

/// Whether a layer holds values from an 8-bit file, or the full precision that edits leave.
enum class Depth { fromEightBits, full };

/// An `rgba16Float` surface, opaque.
[[nodiscard]] Texture photoLayer(int width, int height, Depth depth, std::uint32_t seed);

/// The same as an 8-bit image.
[[nodiscard]] QImage photoImage(int width, int height, std::uint32_t seed);

}  // namespace orvanel::bench
