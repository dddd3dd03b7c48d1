// The frame of a canvas: has the document flattened where it is stale, then draws the passes. Lives as long
// as its view's binding; main thread only. Panning and zooming never flatten anything.
#pragma once

#include <QSizeF>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "canvas/MTKView.h"
#include "model/Document.h"
#include "tools/CanvasViewLayer.h"

namespace orvanel {

/// Seconds of a clock that never goes back.
using MediaClock = std::function<double()>;
[[nodiscard]] double steadySeconds();

enum class FrameResult {
  stopped,    ///< there was nothing to draw, or nothing to draw it into
  unchanged,  ///< the last frame still stands; no pixel was touched
  drawn,
  unfinished,  ///< the document is flattened in part: the next frame goes on
};

class CanvasRenderer {
 public:
  /// Makes the passes; a pipeline that can't be made is fatal.
  explicit CanvasRenderer(MetalContext& context, MediaClock mediaClock = steadySeconds);
  CanvasRenderer(const CanvasRenderer&) = delete;
  CanvasRenderer& operator=(const CanvasRenderer&) = delete;

  /// The document on show.
  std::weak_ptr<Document> document;
  /// Drawn above `layers`, in order.
  std::vector<std::shared_ptr<CanvasViewLayer>> toolOverlayLayers;
  /// How long a frame works at the flattened image. What takes longer shows as far as it has come.
  std::chrono::milliseconds flatteningPerFrame{250};

  FrameResult drawInMTKView(MTKView& view);
  void drawableSizeWillChange(QSizeF size) { viewportSize_ = size; }

  /// Bottom first; never changed.
  [[nodiscard]] const std::vector<std::shared_ptr<CanvasViewLayer>>& layers() const { return layers_; }
  /// Device pixels.
  [[nodiscard]] QSizeF viewportSize() const { return viewportSize_; }
  [[nodiscard]] double scaleFactor() const { return scaleFactor_; }
  /// Running phase of the moving outline around a selection.
  [[nodiscard]] float selectionAnimationOffset() const { return selectionAnimationOffset_; }
  /// Media clock at the last frame; 0 before the first.
  [[nodiscard]] double lastFrameTime() const { return lastFrameTime_; }

 private:
  void advanceSelectionAnimation();
  [[nodiscard]] CanvasViewContext makeViewContext(const Document& shown) const;

  MediaClock mediaClock_;
  std::vector<std::shared_ptr<CanvasViewLayer>> layers_;
  QSizeF viewportSize_{0.0, 0.0};
  double scaleFactor_ = 1.0;
  float selectionAnimationOffset_ = 0.0F;
  double lastFrameTime_ = 0.0;
  /// Of the picture that stands in the drawable.
  std::optional<std::uint64_t> lastFrameFingerprint_;
};

}  // namespace orvanel
