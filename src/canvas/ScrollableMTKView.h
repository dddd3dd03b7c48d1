// The drawing surface of a canvas and the first receiver of its input: scrolling, zooming, keys, and the
// events it forwards to the current tool's handler. Presents what the renderer drew. Main thread only.
#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "canvas/CanvasRenderer.h"
#include "canvas/FramePacer.h"
#include "canvas/MTKView.h"
#include "canvas/ViewGeometry.h"
#include "tools/CanvasToolHandler.h"
#include "tools/NotificationCenter.h"
#include "tools/ToolState.h"

class QNativeGestureEvent;

namespace orvanel {

class ScrollableMTKView : public QWidget, public MTKView, public ToolCanvas {
 public:
  /// Both must outlive the view.
  ScrollableMTKView(CanvasRenderer& renderer, ToolState& toolState, QWidget* parent = nullptr);
  ~ScrollableMTKView() override;

  /// Called after scrolling and zooming.
  std::function<void()> onScrollChanged;
  /// Opens dropped files and reports failures to the user.
  std::function<void(const QStringList&)> openFiles;

  [[nodiscard]] std::shared_ptr<Document> document() const { return document_.lock(); }
  void setDocument(const std::shared_ptr<Document>& document);
  /// Fits a document that hasn't been fitted yet, once the view is in a visible window and has a size.
  void tryInitialZoom();
  void zoomInAbout(QPointF viewPoint);
  void zoomOutAbout(QPointF viewPoint);

  // The interface for tools.
  [[nodiscard]] QSizeF viewSize() const override { return size(); }
  [[nodiscard]] std::optional<QPointF> viewToDocument(QPointF viewPoint) const override;
  void scrollTo(QPointF documentOffset) override;
  [[nodiscard]] std::optional<QPointF> documentToView(QPointF documentPoint) const override;
  [[nodiscard]] std::uint32_t currentModifiers() const override { return modifiers_; }
  void showCursor(CursorShape cursor) override;
  void requestRedraw() override { pacer_.request(); }
  /// The whole pixel at a view point, possibly outside the canvas; none without a document.
  [[nodiscard]] std::optional<QPoint> viewToPixel(QPointF viewPoint) const;

  // The interface for the renderer.
  [[nodiscard]] std::optional<Drawable> currentDrawable() override;
  [[nodiscard]] QSizeF drawableSize() const override;
  [[nodiscard]] std::optional<double> backingScaleFactor() const override { return devicePixelRatioF(); }
  void present() override;

  [[nodiscard]] double scrollZoomAccumulator() const { return scrollZoomAccumulator_; }
  [[nodiscard]] double magnifyAccumulator() const { return magnifyAccumulator_; }

  /// Takes keyboard focus unless the user is typing text in the window.
  void takeFocus();

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  using ZoomStep = void (Document::*)();

  void popTemporaryHand();

  [[nodiscard]] QSize drawablePixels() const;
  [[nodiscard]] viewGeometry::Placement placementOf(const Document& document) const;
  [[nodiscard]] QPointF viewCentre() const { return QRectF(rect()).center(); }
  void drawFrame();
  void catchUp();

  void observeNotifications();
  void whenPosted(std::string_view name, void (ScrollableMTKView::*action)());

  void zoomAbout(QPointF viewPoint, ZoomStep step);
  void zoomInAtCentre() { zoomInAbout(viewCentre()); }
  void zoomOutAtCentre() { zoomOutAbout(viewCentre()); }
  void zoomActualSize();
  void zoomFitOnScreen();
  void viewportMoved();
  void scrollZoom(double delta, double threshold, Qt::ScrollPhase phase, QPointF viewPoint);
  void magnify(double magnification, QPointF viewPoint);
  void handleNativeGesture(const QNativeGestureEvent& event);
  [[nodiscard]] bool handleViewKey(const EventRecord& record);
  void handleFlagsChanged(const EventRecord& record);
  void updateCursorPosition(QPointF viewPoint);

  void registerToolHandler(const std::shared_ptr<CanvasToolHandler>& handler);
  void collectOverlays();
  [[nodiscard]] std::shared_ptr<CanvasToolHandler> handlerOfCurrentTool() const;
  [[nodiscard]] ToolContext toolContext();
  void handleToolChange();
  void toolChanged();
  void resetCursor();

  CanvasRenderer& renderer_;
  ToolState& toolState_;
  std::weak_ptr<Document> document_;
  std::map<Tool, std::shared_ptr<CanvasToolHandler>> toolHandlers_;
  /// The handler of the mouse gesture in progress.
  std::shared_ptr<CanvasToolHandler> activeHandler_;
  std::shared_ptr<CanvasToolHandler> currentToolHandler_;
  double scrollZoomAccumulator_ = 0.0;
  double magnifyAccumulator_ = 0.0;
  std::uint32_t modifiers_ = 0;
  /// The last frame, in device pixels.
  QImage frame_;
  bool isPainting_ = false;
  bool isFlattening_ = false;
  FramePacer pacer_;
  /// Flattens the document when nothing has changed for a moment.
  QTimer catchUpTimer_;
  /// Lets go of the samples of a view that has come to rest.
  QTimer restTimer_;
  ChangeStream::Subscription changes_;
  std::vector<NotificationCenter::Subscription> notificationObservers_;
  bool spaceHoldsHand_ = false;
};

}  // namespace orvanel
