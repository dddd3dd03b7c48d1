// The renderer's interface to the view it draws into. Main thread only.
#pragma once

#include <QSizeF>
#include <optional>
#include <vector>

#include "raster/RenderEncoder.h"

namespace orvanel {

class MTKView {
 public:
  virtual ~MTKView() = default;

  /// The memory for the next frame, still holding the last one; none while nothing can be shown.
  [[nodiscard]] virtual std::optional<Drawable> currentDrawable() = 0;
  /// In device pixels.
  [[nodiscard]] virtual QSizeF drawableSize() const = 0;
  /// Device pixels per view point of the window or, failing that, of the screen; none without either.
  [[nodiscard]] virtual std::optional<double> backingScaleFactor() const = 0;
  /// Puts the drawn frame on the screen.
  virtual void present() = 0;
  /// Puts parts of the drawn frame on the screen; the rest hasn't changed. In device pixels.
  virtual void presentOnly(const std::vector<PixelRect>& changed) = 0;
};

}  // namespace orvanel
