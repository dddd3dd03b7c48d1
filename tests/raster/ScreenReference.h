// The canvas picture as it is defined, one device pixel at a time in double precision: what the passes draw
// is compared with this.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "raster/HalfFloat.h"
#include "raster/Surface.h"
#include "raster/fragments/FragmentUniforms.h"

namespace orvanel {

struct ScreenReference {
  CanvasViewUniforms view;
  const Surface* texture = nullptr;
  std::array<float, 3> channels{1.0F, 1.0F, 1.0F};

  struct Axis {
    double viewport, canvas, offset, scaled;
    [[nodiscard]] double at(int device) const {
      const double origin = std::max(0.0, (viewport - canvas * scaled) * 0.5);
      return (device + 0.5 - origin) / scaled + offset;
    }
    [[nodiscard]] bool contains(int device) const { return at(device) >= 0.0 && at(device) < canvas; }
    [[nodiscard]] int index(int device) const { return static_cast<int>(std::floor(at(device))); }
  };

  [[nodiscard]] Axis horizontal() const {
    return {double{view.viewportWidth}, double{view.canvasWidth}, double{view.offsetX},
            double{view.zoom} * double{view.scale}};
  }
  [[nodiscard]] Axis vertical() const {
    return {double{view.viewportHeight}, double{view.canvasHeight}, double{view.offsetY},
            double{view.zoom} * double{view.scale}};
  }
  [[nodiscard]] bool isInside(int x, int y) const {
    return horizontal().contains(x) && vertical().contains(y);
  }

  /// Straight channels of a document pixel as the screen takes them: NaN is 0, the rest is clamped.
  [[nodiscard]] std::array<double, 4> documentPixel(int x, int y) const {
    const std::uint64_t bits = texture->pixelAt(x, y);
    std::array<double, 4> pixel{};
    for (std::size_t channel = 0; channel < 4; ++channel) {
      double value = 0.0;
      if (texture->format() == PixelFormat::rgba16Float) {
        value = double{halfToFloat(static_cast<std::uint16_t>(bits >> (16 * channel)))};
      } else {
        value = static_cast<double>((bits >> (8 * channel)) & 0xFFU) / 255.0;
      }
      pixel[channel] = std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 1.0);
    }
    return pixel;
  }

  /// Blue, green, red, alpha bytes of the document at a device pixel inside the canvas, premultiplied.
  [[nodiscard]] std::array<int, 4> premultiplied(int x, int y) const {
    const auto pixel = documentPixel(horizontal().index(x), vertical().index(y));
    std::array<int, 4> bytes{};
    for (std::size_t channel = 0; channel < 3; ++channel) {
      const double value = pixel[channel] * pixel[3] * (channels[channel] != 0.0F ? 1.0 : 0.0);
      bytes[2 - channel] = static_cast<int>(std::lround(value * 255.0));
    }
    bytes[3] = static_cast<int>(std::lround(pixel[3] * 255.0));
    return bytes;
  }

  [[nodiscard]] static std::uint32_t over(std::uint32_t below, const std::array<int, 4>& above) {
    std::uint32_t result = 0;
    for (int byte = 0; byte < 4; ++byte) {
      const int dst = static_cast<int>((below >> (8 * byte)) & 0xFFU);
      const double rest = dst * (255 - above[3]) / 255.0;
      const int value = above[static_cast<std::size_t>(byte)] + static_cast<int>(std::lround(rest));
      result |= static_cast<std::uint32_t>(value) << (8 * byte);
    }
    return result;
  }
};

/// The largest difference of any channel of two pictures.
inline int largestDifference(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
  int largest = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (int shift = 0; shift < 32; shift += 8) {
      const auto byte = [&](std::uint32_t pixel) { return static_cast<int>((pixel >> shift) & 0xFFU); };
      largest = std::max(largest, std::abs(byte(a[i]) - byte(b[i])));
    }
  }
  return largest;
}

}  // namespace orvanel
