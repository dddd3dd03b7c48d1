// A picture that one fragment function draws, in bands of any height.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "raster/fragments/FragmentUniforms.h"

namespace orvanel {

class OverlayPicture {
 public:
  OverlayPicture(int width, int height, std::uint32_t ground)
      : width_(width),
        height_(height),
        pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), ground) {}

  [[nodiscard]] int width() const { return width_; }
  [[nodiscard]] int height() const { return height_; }
  [[nodiscard]] std::uint32_t at(int x, int y) const {
    return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                   static_cast<std::size_t>(x)];
  }
  [[nodiscard]] FragmentBand band(int y, int rows) {
    return {pixels_.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_),
            static_cast<std::size_t>(width_), y, rows, width_};
  }

  template <typename Uniforms>
  void draw(FragmentFunction function, const Uniforms& uniforms, const Surface* texture = nullptr,
            std::span<const FragmentPoint> points = {}, int bandRows = 32) {
    for (int y = 0; y < height_; y += bandRows) {
      function({std::as_bytes(std::span(&uniforms, 1)), {texture}, std::as_bytes(points)},
               band(y, std::min(bandRows, height_ - y)));
    }
  }

  friend bool operator==(const OverlayPicture&, const OverlayPicture&) = default;

 private:
  int width_;
  int height_;
  std::vector<std::uint32_t> pixels_;
};

inline CanvasViewUniforms overlayView(int width, int height, int canvasWidth, int canvasHeight, float zoom,
                                      float scale) {
  return {.viewportWidth = static_cast<float>(width),
          .viewportHeight = static_cast<float>(height),
          .canvasWidth = static_cast<float>(canvasWidth),
          .canvasHeight = static_cast<float>(canvasHeight),
          .zoom = zoom,
          .scale = scale};
}

}  // namespace orvanel
