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
#include "canvas/EventTranslation.h"
#include "canvas/FramePacer.h"
#include "canvas/MTKView.h"
#include "canvas/ViewGeometry.h"
#include "tools/CanvasToolHandler.h"
#include "tools/NotificationCenter.h"
#include "tools/ToolState.h"
#include "tools/navigation/HandToolHandler.h"
#include "tools/selection/SelectionToolState.h"
#include "tools/transform/FreeTransformToolHandler.h"
#include "tools/transform/MoveToolHandler.h"

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
  void presentOnly(const std::vector<PixelRect>& changed) override;

  [[nodiscard]] double scrollZoomAccumulator() const { return scrollZoomAccumulator_; }
  [[nodiscard]] double magnifyAccumulator() const { return magnifyAccumulator_; }

  /// Takes keyboard focus unless the user is typing text in the window.
  void takeFocus();
  /// Offers a key to the current tool ahead of commands that have the same key, so that a gesture in progress
  /// hears it first. Returns true if it was consumed.
  [[nodiscard]] bool offerKey(const EventRecord& record);
  /// Whether the current tool is in the middle of a gesture.
  [[nodiscard]] bool hasOpenGesture();

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
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  using ZoomStep = void (Document::*)();

  /// A position of the drag in progress that its handler hasn't been given yet.
  struct PendingDrag {
    EventRecord record;
    QPointF viewPoint;
  };

  void documentChanged(const DocumentChanges& changes);
  void keepInBounds();
  void popTemporaryHand();

  [[nodiscard]] QSize drawablePixels() const;
  [[nodiscard]] viewGeometry::Placement placementOf(const Document& document) const;
  [[nodiscard]] QPointF viewCentre() const { return QRectF(rect()).center(); }
  void drawFrame();
  /// Begins `catchUp` after a moment, if it has anything to do.
  void getReady();
  void catchUp();

  void observeNotifications();
  void whenPosted(std::string_view name, void (ScrollableMTKView::*action)());

  void zoomAbout(QPointF viewPoint, ZoomStep step);
  void zoomInAtCentre() { zoomInAbout(viewCentre()); }
  void zoomOutAtCentre() { zoomOutAbout(viewCentre()); }
  void zoomActualSize();
  void zoomFitOnScreen();
  void viewportMoved();
  void scrollZoom(const eventTranslation::WheelRecord& wheel, QPointF viewPoint);
  void magnify(double magnification, QPointF viewPoint);
  void handleNativeGesture(const QNativeGestureEvent& event);
  [[nodiscard]] bool handleViewKey(const EventRecord& record);
  void handleFlagsChanged(const EventRecord& record);
  /// Takes in the pointer's position and the modifiers of an event.
  void readPointer(const QMouseEvent& event);
  /// Brings the document's cursor position up to date after the pointer or the image moved.
  void updateCursorPosition();

  /// Whether the current tool's handler has the left button.
  [[nodiscard]] bool isGestureRunning() const;
  void deliverDrag();
  /// The image moves under a still pointer: a drag in progress takes the pointer's new place.
  void dragOnUnderPointer();
  /// Reports the release of the left button to the tool whose gesture runs.
  void endGesture(const EventRecord& record, QPointF viewPoint);
  void endPan();

  void registerToolHandler(const std::shared_ptr<CanvasToolHandler>& handler);
  void collectOverlays();
  [[nodiscard]] std::shared_ptr<CanvasToolHandler> handlerOfCurrentTool() const;
  [[nodiscard]] ToolContext toolContext();
  void handleToolChange();
  /// Ends what the tool does on the document shown.
  void leaveTool();
  void toolChanged();
  void updateMoveBox();
  void endFreeTransform(void (FreeTransformToolHandler::*end)(const ToolContext&));
  void applyFreeTransform() { endFreeTransform(&FreeTransformToolHandler::apply); }
  void cancelFreeTransform() { endFreeTransform(&FreeTransformToolHandler::cancel); }
  void resetCursor();

  CanvasRenderer& renderer_;
  ToolState& toolState_;
  std::weak_ptr<Document> document_;
  std::optional<QUuid> documentID_;
  std::shared_ptr<SelectionToolState> selectionToolState_ =
      std::make_shared<SelectionToolState>(MetalContext::shared());
  std::shared_ptr<MoveToolHandler> moveHandler_;
  std::shared_ptr<FreeTransformToolHandler> freeTransformHandler_;
  std::map<Tool, std::shared_ptr<CanvasToolHandler>> toolHandlers_;
  /// The handler of the mouse gesture in progress.
  std::shared_ptr<CanvasToolHandler> activeHandler_;
  std::shared_ptr<CanvasToolHandler> currentToolHandler_;
  std::optional<PendingDrag> pendingDrag_;
  /// The last position that the running gesture was given.
  std::optional<PendingDrag> lastDrag_;
  bool isLeftButtonDown_ = false;
  /// Pans with the middle button, whatever the tool.
  HandToolHandler panHandler_;
  bool isPanning_ = false;
  /// In view points; none while the pointer is elsewhere.
  std::optional<QPointF> pointer_;
  double scrollZoomAccumulator_ = 0.0;
  double magnifyAccumulator_ = 0.0;
  std::uint32_t modifiers_ = 0;
  /// The last frame, in device pixels.
  QImage frame_;
  bool isPainting_ = false;
  bool isFlattening_ = false;
  FramePacer pacer_;
  /// Flattens the document when nothing has changed for a moment, and gets ready for the next change.
  QTimer catchUpTimer_;
  /// Lets go of the samples of a view that has come to rest; a move of the pointer has them gathered anew.
  QTimer restTimer_;
  /// The picture that the last frame drew from the flattened document.
  std::optional<std::uint64_t> awaitedPicture_;
  ChangeStream::Subscription changes_;
  std::vector<NotificationCenter::Subscription> notificationObservers_;
  bool spaceHoldsHand_ = false;
};

}  // namespace orvanel
