// Maps device pixels to document pixels along one axis, by nearest sampling at pixel centres. Plain values,
// created for each band of a frame; any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "raster/fragments/Fragments.h"

namespace orvanel {

/// Device pixels [begin, end) of one axis.
struct PixelSpan {
  int begin = 0;
  int end = 0;
  [[nodiscard]] bool isEmpty() const { return begin >= end; }
  [[nodiscard]] int length() const { return isEmpty() ? 0 : end - begin; }
};

class AxisMapping {
 public:
  /// `viewport` in device pixels, `canvas` and `offset` in document pixels, `pixelsPerDocumentPixel` in
  /// device pixels. A canvas smaller than the viewport is centred.
  AxisMapping(double viewport, double canvas, double offset, double pixelsPerDocumentPixel);

  static AxisMapping horizontal(const CanvasViewUniforms& view);
  static AxisMapping vertical(const CanvasViewUniforms& view);

  /// Document coordinate under the centre of a device pixel.
  [[nodiscard]] double documentAt(int device) const {
    return (static_cast<double>(device) + 0.5 - origin_) / pixelsPerDocumentPixel_ + offset_;
  }
  /// Device coordinate of a document coordinate: the reverse, in coordinates that count from a pixel's edge.
  [[nodiscard]] double deviceAt(double document) const {
    return (document - offset_) * pixelsPerDocumentPixel_ + origin_;
  }
  /// Index of the document pixel under the centre of a device pixel; only for pixels inside the canvas.
  [[nodiscard]] int indexAt(int device) const { return static_cast<int>(documentAt(device)); }

  /// The device pixels of [begin, end) whose centres lie inside the canvas.
  [[nodiscard]] PixelSpan inside(int begin, int end) const;
  /// The document pixel under each device pixel of a span inside the canvas.
  [[nodiscard]] std::vector<std::int32_t> indices(PixelSpan inside) const;
  /// The document pixels that a viewport of this size shows, each once.
  [[nodiscard]] std::vector<std::int32_t> samples(int viewport) const;
  /// True when the device pixel is the first one of a document pixel other than the canvas's first.
  [[nodiscard]] bool startsDocumentPixel(int device) const;

  [[nodiscard]] double pixelsPerDocumentPixel() const { return pixelsPerDocumentPixel_; }
  /// The first device pixel of the canvas, which may lie far outside the viewport.
  [[nodiscard]] std::int64_t canvasStart() const;

 private:
  double origin_;
  double offset_;
  double canvas_;
  double pixelsPerDocumentPixel_;
};

}  // namespace orvanel
