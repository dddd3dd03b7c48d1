// Renders a frame of a canvas: has the document flatten what is stale, then draws the passes. Lives as long
// as its view's binding; main thread only. Panning and zooming never flatten anything.
#pragma once

#include <QSizeF>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "canvas/CanvasLayers.h"
#include "canvas/MTKView.h"
#include "canvas/MarchingAnts.h"
#include "model/Document.h"
#include "tools/CanvasViewLayer.h"

namespace orvanel {

/// Seconds on a monotonic clock.
using MediaClock = std::function<double()>;
[[nodiscard]] double steadySeconds();

enum class FrameResult {
  stopped,    ///< nothing to draw, or no drawable
  unchanged,  ///< the last frame is still valid; no pixel was written
  drawn,
  unfinished,  ///< the document is only partly flattened; the next frame continues
};

class CanvasRenderer {
 public:
  /// Makes the passes; failing to make a pipeline is fatal.
  explicit CanvasRenderer(MetalContext& context, MediaClock mediaClock = steadySeconds);
  CanvasRenderer(const CanvasRenderer&) = delete;
  CanvasRenderer& operator=(const CanvasRenderer&) = delete;

  /// The document being shown.
  std::weak_ptr<Document> document;
  /// Drawn above `layers`, in order.
  std::vector<std::shared_ptr<CanvasViewLayer>> toolOverlayLayers;
  /// Time budget for flattening per frame. An unfinished image is shown as far as it has come.
  std::chrono::milliseconds flatteningPerFrame{250};

  FrameResult drawInMTKView(MTKView& view);
  void drawableSizeWillChange(QSizeF size) { viewportSize_ = size; }

  /// Bottom first; never changes.
  [[nodiscard]] const std::vector<std::shared_ptr<CanvasViewLayer>>& layers() const { return layers_; }
  /// In device pixels.
  [[nodiscard]] QSizeF viewportSize() const { return viewportSize_; }
  [[nodiscard]] double scaleFactor() const { return scaleFactor_; }
  /// Phase of the moving outline around a selection.
  [[nodiscard]] float selectionAnimationOffset() const { return selectionAnimationOffset_; }
  /// True while the last frame shows something that moves on its own, so that further frames are wanted.
  [[nodiscard]] bool isAnimating() const { return ants_.isShown(); }
  /// Media clock at the last frame; initially 0.
  [[nodiscard]] double lastFrameTime() const { return lastFrameTime_; }

 private:
  void advanceSelectionAnimation();
  [[nodiscard]] CanvasViewContext makeViewContext(const Document& shown) const;

  MediaClock mediaClock_;
  std::shared_ptr<SelectionOverlayLayer> selectionOverlayLayer_;
  std::vector<std::shared_ptr<CanvasViewLayer>> layers_;
  QSizeF viewportSize_{0.0, 0.0};
  double scaleFactor_ = 1.0;
  float selectionAnimationOffset_ = 0.0F;
  double lastFrameTime_ = 0.0;
  MarchingAnts ants_;
  /// Identifies the picture in the drawable, whatever the outline's phase.
  std::optional<std::uint64_t> lastFrameFingerprint_;
};

}  // namespace orvanel
