// Layers as photographs are: smooth light, fine texture and the noise of a sensor, from fixed seeds.
#pragma once

#include <QImage>
#include <cstdint>

#include "raster/Surface.h"

namespace orvanel::bench {

/// Whether a layer holds what a camera's 8-bit file gives, or values between as edits leave them.
enum class Depth { fromEightBits, full };

/// An `rgba16Float` surface, opaque.
[[nodiscard]] Texture photoLayer(int width, int height, Depth depth, std::uint32_t seed);

/// The same as an 8-bit image.
[[nodiscard]] QImage photoImage(int width, int height, std::uint32_t seed);

}  // namespace orvanel::bench
