#include "canvas/ScrollableMTKView.h"

#include <QAction>
#include <QMimeData>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QUrl>
#include <chrono>
#include <cmath>

#include "canvas/FileDrop.h"
#include "tools/navigation/EyedropperToolHandler.h"
#include "tools/navigation/ZoomToolHandler.h"
#include "tools/selection/EllipseSelectToolHandler.h"
#include "tools/selection/LassoSelectToolHandler.h"
#include "tools/selection/MagicWandToolHandler.h"
#include "tools/selection/PolyLassoSelectToolHandler.h"
#include "tools/selection/RectSelectToolHandler.h"

namespace orvanel {
namespace {

/// Shown where no frame could be drawn: the grey around the canvas.
const QColor clearColor = QColor::fromRgbF(0.5803922F, 0.5803922F, 0.6117647F);

/// How long a document must stay as it is before it is flattened: longer than between two steps of a drag.
constexpr std::chrono::milliseconds restBeforeFlattening{100};
/// How long samples are kept for the next gesture.
constexpr std::chrono::seconds restBeforeForgetting{60};

bool mayChangeImage(const DocumentChanges& changes) {
  return contains<change::PixelsChanged>(changes) || contains<change::PreviewChanged>(changes) ||
         contains<change::NodePropertyChanged>(changes) || contains<change::NodeInserted>(changes) ||
         contains<change::NodeRemoved>(changes) || contains<change::NodeMoved>(changes) ||
         contains<change::CanvasChanged>(changes);
}

}  // namespace

ScrollableMTKView::ScrollableMTKView(CanvasRenderer& renderer, ToolState& toolState, QWidget* parent)
    : QWidget(parent),
      renderer_(renderer),
      toolState_(toolState),
      moveHandler_(std::make_shared<MoveToolHandler>(MetalContext::shared())),
      freeTransformHandler_(std::make_shared<FreeTransformToolHandler>(MetalContext::shared(), toolState)),
      pacer_([this] {
        deliverDrag();
        drawFrame();
      }) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAttribute(Qt::WA_NoSystemBackground);
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
  setAcceptDrops(true);
  catchUpTimer_.setSingleShot(true);
  restTimer_.setSingleShot(true);
  QObject::connect(&catchUpTimer_, &QTimer::timeout, this, [this] { catchUp(); });
  QObject::connect(&restTimer_, &QTimer::timeout, this, [this] { renderer_.forgetFrames(); });
  registerToolHandler(std::make_shared<HandToolHandler>());
  registerToolHandler(std::make_shared<ZoomToolHandler>(MetalContext::shared(), toolState));
  registerToolHandler(std::make_shared<EyedropperToolHandler>());
  registerToolHandler(moveHandler_);
  registerToolHandler(std::make_shared<RectSelectToolHandler>(selectionToolState_, toolState));
  registerToolHandler(std::make_shared<EllipseSelectToolHandler>(selectionToolState_, toolState));
  registerToolHandler(std::make_shared<LassoSelectToolHandler>(selectionToolState_));
  registerToolHandler(std::make_shared<PolyLassoSelectToolHandler>(selectionToolState_));
  registerToolHandler(std::make_shared<MagicWandToolHandler>(selectionToolState_, toolState));
  registerToolHandler(freeTransformHandler_);
  collectOverlays();
  observeNotifications();
  handleToolChange();
}

ScrollableMTKView::~ScrollableMTKView() = default;

void ScrollableMTKView::setDocument(const std::shared_ptr<Document>& document) {
  changes_ = {};
  const auto previous = document_.lock();
  // The document shown before may be gone.
  const auto newID = document != nullptr ? std::optional(document->id) : std::nullopt;
  const bool isOther = std::exchange(documentID_, newID) != newID;
  // A gesture belongs to the document it began on.
  if (isOther) leaveTool();
  if (isOther && previous != nullptr) previous->setCursorDocumentPosition(std::nullopt);
  document_ = document;
  catchUpTimer_.stop();
  renderer_.forgetFrames();
  if (document != nullptr) {
    changes_ =
        document->changes().observe([this](const DocumentChanges& changes) { documentChanged(changes); });
  }
  if (isOther) toolChanged();
  tryInitialZoom();
  updateCursorPosition();
  requestRedraw();
}

void ScrollableMTKView::documentChanged(const DocumentChanges& changes) {
  // Frames show what this view flattens before it is flattened. Any other change may be visible; a frame that
  // finds nothing new writes no pixels.
  const bool isOwnFlattening = isFlattening_ && changes.size() == 1 && contains<change::Composited>(changes);
  if (isOwnFlattening) return;
  if (mayChangeImage(changes)) {
    catchUpTimer_.stop();
    awaitedPicture_.reset();
  }
  requestRedraw();
  const bool hasNewCanvas = contains<change::CanvasChanged>(changes);
  if (hasNewCanvas) keepInBounds();
  const bool isMoved =
      containsAny<change::ViewChanged>(changes, ViewProperty::zoom, ViewProperty::viewportOffset);
  if (isMoved || hasNewCanvas) updateCursorPosition();
  if (isMoved) dragOnUnderPointer();
  const bool mayMoveBox = hasNewCanvas || contains<change::PixelsChanged>(changes) ||
                          containsAny<change::NodePropertyChanged>(changes, NodeProperty::isLocked);
  if (mayMoveBox && toolState_.currentTool() == Tool::move) moveHandler_->contentChanged(toolContext());
}

// The bounds depend on the sizes of the view and the canvas.
void ScrollableMTKView::keepInBounds() {
  const auto shown = document();
  if (shown == nullptr || !isVisible()) return;
  shown->setViewportOffset(viewGeometry::boundedOffset(placementOf(*shown), shown->viewportOffset.value()));
}

void ScrollableMTKView::tryInitialZoom() {
  const auto shown = document();
  // Before the window is shown the size is a meaningless default.
  if (shown == nullptr || !shown->needsInitialZoom.value() || !isVisible() || width() <= 0 || height() <= 0) {
    return;
  }
  shown->applyInitialZoom(width(), height());
  viewportMoved();
}

QSize ScrollableMTKView::drawablePixels() const {
  const double scale = devicePixelRatioF();
  return {static_cast<int>(std::lround(width() * scale)), static_cast<int>(std::lround(height() * scale))};
}

QSizeF ScrollableMTKView::drawableSize() const {
  return drawablePixels();
}

std::optional<Drawable> ScrollableMTKView::currentDrawable() {
  const QSize pixels = drawablePixels();
  if (!isVisible() || window()->isMinimized() || pixels.isEmpty()) return std::nullopt;
  if (frame_.size() != pixels) {
    frame_ = QImage(pixels, QImage::Format_RGB32);
    renderer_.drawableSizeWillChange(pixels);
  }
  if (frame_.isNull()) return std::nullopt;
  return Drawable{reinterpret_cast<std::uint32_t*>(frame_.bits()),
                  static_cast<std::size_t>(frame_.bytesPerLine()) / sizeof(std::uint32_t), frame_.width(),
                  frame_.height()};
}

void ScrollableMTKView::present() {
  if (!isPainting_) update();
}

void ScrollableMTKView::presentOnly(const std::vector<PixelRect>& changed) {
  if (isPainting_) return;
  const double scale = devicePixelRatioF();
  QRegion region;
  for (const PixelRect& rect : changed) {
    region += QRectF(rect.x / scale, rect.y / scale, rect.width / scale, rect.height / scale).toAlignedRect();
  }
  update(region);
}

void ScrollableMTKView::drawFrame() {
  pacer_.setRefreshRate(screen()->refreshRate());
  isFlattening_ = true;
  const FrameResult result = renderer_.drawInMTKView(*this);
  isFlattening_ = false;
  if (result != FrameResult::stopped && renderer_.isAnimating()) pacer_.requestAnimation();
  if (result == FrameResult::stopped) return;
  if (result != FrameResult::unfinished) {
    // Begins anew with each picture, but not with each phase of an outline.
    if (std::exchange(awaitedPicture_, renderer_.picture()) != renderer_.picture()) getReady();
    return;
  }
  restTimer_.stop();
  // A change stops the timer; panning and zooming leave it running.
  if (!catchUpTimer_.isActive()) catchUpTimer_.start(restBeforeFlattening);
}

void ScrollableMTKView::getReady() {
  if (!renderer_.isReady()) catchUpTimer_.start(restBeforeFlattening);
}

void ScrollableMTKView::catchUp() {
  const auto shown = document();
  // Whatever a gesture shows next would make the work void. Its end is a change, which asks for a frame.
  if (shown == nullptr || !shown->isSettled()) return;
  if (isGestureRunning()) return catchUpTimer_.start(restBeforeFlattening);
  isFlattening_ = true;
  const bool isReady = renderer_.catchUp();
  isFlattening_ = false;
  if (isReady) {
    restTimer_.start(restBeforeForgetting);
  } else {
    // Events that wait come first.
    catchUpTimer_.start(0);
  }
}

void ScrollableMTKView::paintEvent(QPaintEvent* event) {
  if (frame_.size() != drawablePixels()) {
    // The view may just have been resized: always present a frame of the current size.
    isPainting_ = true;
    drawFrame();
    isPainting_ = false;
  }
  QPainter painter(this);
  const bool hasFrame = document() != nullptr && frame_.size() == drawablePixels();
  const QTransform toDevice = painter.deviceTransform();
  const QPointF corner = toDevice.map(QPointF(0.0, 0.0));
  const QPointF wholeCorner(std::round(corner.x()), std::round(corner.y()));
  if (!hasFrame || corner != wholeCorner) painter.fillRect(event->rect(), clearColor);
  if (!hasFrame) return;
  // Map each frame pixel to exactly one screen pixel, at fractional scales too.
  painter.setWorldTransform(QTransform::fromTranslate(wholeCorner.x(), wholeCorner.y()) *
                            toDevice.inverted());
  painter.drawImage(QPoint(0, 0), frame_);
  // An animation that had stopped because nothing could be shown goes on.
  if (renderer_.isAnimating()) pacer_.requestAnimation();
}

void ScrollableMTKView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  tryInitialZoom();
  keepInBounds();
  updateCursorPosition();
  requestRedraw();
}

void ScrollableMTKView::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  tryInitialZoom();
  pacer_.start();
}

void ScrollableMTKView::hideEvent(QHideEvent* event) {
  pacer_.stop();
  catchUpTimer_.stop();
  awaitedPicture_.reset();
  QWidget::hideEvent(event);
}

viewGeometry::Placement ScrollableMTKView::placementOf(const Document& document) const {
  return {viewSize(), QSizeF(document.canvasWidth.value(), document.canvasHeight.value()),
          document.viewportOffset.value(), document.zoom()};
}

std::optional<QPointF> ScrollableMTKView::viewToDocument(QPointF viewPoint) const {
  const auto shown = document();
  if (shown == nullptr) return std::nullopt;
  return viewGeometry::viewToDocument(placementOf(*shown), viewPoint);
}

std::optional<QPointF> ScrollableMTKView::documentToView(QPointF documentPoint) const {
  const auto shown = document();
  if (shown == nullptr) return std::nullopt;
  return viewGeometry::documentToView(placementOf(*shown), documentPoint);
}

std::optional<QPoint> ScrollableMTKView::viewToPixel(QPointF viewPoint) const {
  const auto shown = document();
  if (shown == nullptr) return std::nullopt;
  return viewGeometry::viewToPixel(placementOf(*shown), viewPoint);
}

void ScrollableMTKView::scrollTo(QPointF documentOffset) {
  const auto shown = document();
  if (shown == nullptr) return;
  const QPointF bounded = viewGeometry::boundedOffset(placementOf(*shown), documentOffset);
  const QPointF current = shown->viewportOffset.value();
  if (bounded.x() == current.x() && bounded.y() == current.y()) return;
  shown->setViewportOffset(bounded);
  viewportMoved();
}

void ScrollableMTKView::viewportMoved() {
  requestRedraw();
  if (onScrollChanged) onScrollChanged();
}

void ScrollableMTKView::zoomAbout(QPointF viewPoint, ZoomStep step) {
  const auto shown = document();
  if (shown == nullptr) return;
  const QPointF fixedPoint = viewGeometry::viewToDocument(placementOf(*shown), viewPoint);
  (shown.get()->*step)();
  shown->setViewportOffset(viewGeometry::offsetKeeping(placementOf(*shown), fixedPoint, viewPoint));
  viewportMoved();
}

void ScrollableMTKView::zoomInAbout(QPointF viewPoint) {
  zoomAbout(viewPoint, &Document::zoomIn);
}

void ScrollableMTKView::zoomOutAbout(QPointF viewPoint) {
  zoomAbout(viewPoint, &Document::zoomOut);
}

void ScrollableMTKView::zoomActualSize() {
  const auto shown = document();
  if (shown == nullptr) return;
  shown->zoomActualSize();
  shown->setViewportOffset(viewGeometry::boundedOffset(placementOf(*shown), shown->viewportOffset.value()));
  viewportMoved();
}

void ScrollableMTKView::zoomFitOnScreen() {
  const auto shown = document();
  if (shown == nullptr) return;
  shown->zoomFitOnScreen(width(), height());
  viewportMoved();
}

void ScrollableMTKView::dragEnterEvent(QDragEnterEvent* event) {
  if (!fileDrop::localFiles(*event->mimeData()).isEmpty()) fileDrop::acceptAsCopy(*event);
}

void ScrollableMTKView::dropEvent(QDropEvent* event) {
  const QStringList files = fileDrop::localFiles(*event->mimeData());
  if (files.isEmpty()) return;
  fileDrop::acceptAsCopy(*event);
  if (openFiles) openFiles(files);
}

}  // namespace orvanel
