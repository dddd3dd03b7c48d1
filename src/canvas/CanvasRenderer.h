// Renders a frame of a canvas. While the document's flattened image is current, frames draw from it.
// Otherwise they flatten only what the view samples, and the whole image follows in turns between frames
// (`catchUp`); both show the same. An image of a few tiles is flattened at once. Lives as long as its view's
// binding; main thread only.
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
#include "raster/Backdrop.h"
#include "raster/MemoryBudget.h"
#include "raster/SampledComposite.h"
#include "tools/CanvasViewLayer.h"

namespace orvanel {

/// Seconds on a monotonic clock.
using MediaClock = std::function<double()>;
[[nodiscard]] double steadySeconds();

enum class FrameResult {
  stopped,    ///< nothing to draw, or no drawable
  unchanged,  ///< the last frame is still valid; no pixel was written
  drawn,
  unfinished,  ///< the last frame is valid, but the document isn't flattened yet: `catchUp`
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
  /// So many tiles of layers take less time to flatten than a view to draw.
  std::int64_t tilesFlattenedAtOnce{256};
  /// About how long a turn of `catchUp` holds the main thread.
  std::chrono::milliseconds workPerTurn{6};

  FrameResult drawInMTKView(MTKView& view);
  /// For when nothing else is to do: flattens some more of the document, then gathers for the next change
  /// what its first frame would wait for. True once nothing is left to do for the picture shown.
  bool catchUp();
  /// Identifies the picture shown, whatever the outline's phase; none before the first frame.
  [[nodiscard]] std::optional<std::uint64_t> picture() const { return lastFrameFingerprint_; }
  /// Whether `catchUp` has nothing to do for it.
  [[nodiscard]] bool isReady() const { return lastFrameFingerprint_ == readyFingerprint_; }
  /// Lets go of what is kept between frames.
  void forgetFrames();
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
  SampledComposite samples_;
  Backdrop backdrop_;
  MarchingAnts ants_;
  /// Identifies the picture in the drawable, whatever the outline's phase.
  std::optional<std::uint64_t> lastFrameFingerprint_;
  /// Of the picture that `catchUp` has completed its work for.
  std::optional<std::uint64_t> readyFingerprint_;
  /// Frames can do without what is kept between them.
  SpareMemory spare_{[this] { forgetFrames(); }};
};

}  // namespace orvanel
