// A full-HD view without a window: frames are drawn into its memory.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "canvas/CanvasRenderer.h"

namespace orvanel {

inline constexpr int viewWidth = 1920;
inline constexpr int viewHeight = 1080;

class BenchView : public MTKView {
 public:
  std::optional<Drawable> currentDrawable() override {
    return Drawable{pixels.data(), viewWidth, viewWidth, viewHeight};
  }
  [[nodiscard]] QSizeF drawableSize() const override { return {viewWidth, viewHeight}; }
  [[nodiscard]] std::optional<double> backingScaleFactor() const override { return 1.0; }
  void present() override {}
  void presentOnly(const std::vector<PixelRect>& changed) override { static_cast<void>(changed); }

  std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(std::size_t{viewWidth} * viewHeight);
};

}  // namespace orvanel
