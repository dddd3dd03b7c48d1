#include "canvas/CanvasRenderer.h"

#include <chrono>
#include <cmath>
#include <utility>

#include "raster/SampleGrid.h"

namespace orvanel {
namespace {

/// Phase units per second.
constexpr float selectionAnimationSpeed = 20.0F;
/// Period of the outline's pattern, in phase units. A large phase is reduced by whole periods.
constexpr float selectionPatternLength = 8.0F;
constexpr float largestAnimationOffset = 8000.0F;

/// The tiles that flattening a document may read.
std::int64_t tilesToFlatten(const Document& document) {
  return std::int64_t{document.compositedTexture.value()->tileCount()} * document.layerCount();
}

}  // namespace

double steadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

CanvasRenderer::CanvasRenderer(MetalContext& context, MediaClock mediaClock)
    : mediaClock_(std::move(mediaClock)),
      selectionOverlayLayer_(std::make_shared<SelectionOverlayLayer>(context)),
      layers_{std::make_shared<BackgroundLayer>(context), std::make_shared<CheckerboardLayer>(context),
              std::make_shared<DocumentLayer>(context), std::make_shared<PixelGridLayer>(context),
              selectionOverlayLayer_} {}

FrameResult CanvasRenderer::drawInMTKView(MTKView& view) {
  const std::shared_ptr<Document> shown = document.lock();
  if (shown == nullptr || shown->compositedTexture.value() == nullptr) return FrameResult::stopped;
  const std::optional<Drawable> drawable = view.currentDrawable();
  if (!drawable) return FrameResult::stopped;

  viewportSize_ = view.drawableSize();
  scaleFactor_ = view.backingScaleFactor().value_or(1.0);
  advanceSelectionAnimation();
  if (shown->isSettled() && tilesToFlatten(*shown) <= tilesFlattenedAtOnce) {
    static_cast<void>(shown->composite());
  }
  const bool isCurrent = shown->isCompositeCurrent();
  CanvasViewContext context = makeViewContext(*shown);
  if (!isCurrent) {
    context.samples = shown->sampleComposite(samples_, SampleGrid::ofView(viewUniforms(context)));
  }

  RenderEncoder encoder(*drawable);
  for (const auto* passes : {&std::as_const(layers_), &std::as_const(toolOverlayLayers)}) {
    for (const auto& pass : *passes) {
      if (pass == selectionOverlayLayer_) encoder.endBackdrop();
      if (pass->shouldRender(context, shown.get())) pass->render(encoder, context, shown.get());
    }
  }
  const std::uint64_t fingerprint = encoder.fingerprint();
  bool isNew = lastFrameFingerprint_ != fingerprint;
  if (isNew) {
    lastFrameFingerprint_ = fingerprint;
    ants_.beginWholeFrame(encoder);
    encoder.endEncoding(backdrop_);
    view.present();
  } else if (const auto moved = ants_.advance(encoder, *drawable); !moved.empty()) {
    isNew = true;
    view.presentOnly(moved);
  }
  if (!isCurrent) return FrameResult::unfinished;
  return isNew ? FrameResult::drawn : FrameResult::unchanged;
}

bool CanvasRenderer::catchUp() {
  const std::shared_ptr<Document> shown = document.lock();
  if (shown == nullptr) return true;
  if (!shown->isCompositeCurrent()) {
    static_cast<void>(shown->advanceComposite(workPerTurn));
    return false;
  }
  const bool isPrepared =
      tilesToFlatten(*shown) <= tilesFlattenedAtOnce ||
      shown->prepareSamples(samples_, SampleGrid::ofView(viewUniforms(makeViewContext(*shown))), workPerTurn);
  if (isPrepared) readyFingerprint_ = lastFrameFingerprint_;
  return isPrepared;
}

void CanvasRenderer::forgetFrames() {
  samples_.forget();
  backdrop_.forget();
  readyFingerprint_.reset();
}

void CanvasRenderer::advanceSelectionAnimation() {
  const double now = mediaClock_();
  if (lastFrameTime_ > 0.0) {
    selectionAnimationOffset_ += static_cast<float>(now - lastFrameTime_) * selectionAnimationSpeed;
    if (selectionAnimationOffset_ > largestAnimationOffset) {
      selectionAnimationOffset_ = std::fmod(selectionAnimationOffset_, selectionPatternLength);
    }
  }
  lastFrameTime_ = now;
  selectionOverlayLayer_->selectionAnimationOffset = selectionAnimationOffset_;
}

CanvasViewContext CanvasRenderer::makeViewContext(const Document& shown) const {
  const QPointF offset = shown.viewportOffset.value();
  return {viewportSize_.width(),
          viewportSize_.height(),
          static_cast<double>(shown.canvasWidth.value()),
          static_cast<double>(shown.canvasHeight.value()),
          offset.x(),
          offset.y(),
          shown.zoom(),
          scaleFactor_,
          nullptr};
}

}  // namespace orvanel
