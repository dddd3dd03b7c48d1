#include <algorithm>
#include <cmath>

#include "raster/fragments/FragmentUniforms.h"

namespace orvanel::fragments {

void background(const FragmentInvocation& invocation, const FragmentBand& band) {
  const auto color = fragmentUniforms<BackgroundUniforms>(invocation).color;
  const auto byte = [](float value) {
    return static_cast<std::uint32_t>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255.0F));
  };
  // The drawable is opaque whatever alpha the colour names; a full byte keeps it so wherever it is copied.
  const std::uint32_t pixel = 0xFF000000U | byte(color[0]) << 16U | byte(color[1]) << 8U | byte(color[2]);
  for (int row = 0; row < band.rows; ++row) std::fill_n(bandRow(band, row), band.width, pixel);
}

}  // namespace orvanel::fragments
