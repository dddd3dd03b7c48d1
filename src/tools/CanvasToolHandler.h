// A tool's behaviour on the canvas, and its interface to the view. The view owns one handler per tool and
// forwards its events; handlers never see widgets. Main thread only.
#pragma once

#include <QPointF>
#include <QSizeF>
#include <memory>
#include <optional>
#include <set>

#include "model/Document.h"
#include "tools/CanvasViewLayer.h"
#include "tools/CursorShape.h"
#include "tools/EventRecord.h"

namespace orvanel {

/// The canvas as seen by tools. View points have their origin at the top left.
class ToolCanvas {
 public:
  virtual ~ToolCanvas() = default;

  [[nodiscard]] virtual QSizeF viewSize() const = 0;
  /// Converts a view point to document coordinates; none without a document.
  [[nodiscard]] virtual std::optional<QPointF> viewToDocument(QPointF viewPoint) const = 0;
  /// Moves the viewport as close to `documentOffset` as its bounds allow.
  virtual void scrollTo(QPointF documentOffset) = 0;
  /// The reverse of `viewToDocument`.
  [[nodiscard]] virtual std::optional<QPointF> documentToView(QPointF documentPoint) const = 0;
  /// The modifier bits held down now, which may differ from those of the event being handled.
  [[nodiscard]] virtual std::uint32_t currentModifiers() const = 0;
  virtual void showCursor(CursorShape cursor) = 0;
  /// Requests a frame.
  virtual void requestRedraw() = 0;
};

/// Made for each event; `view` is borrowed for the call.
struct ToolContext {
  ToolCanvas* view = nullptr;
  std::weak_ptr<Document> document;
};

class CanvasToolHandler {
 public:
  virtual ~CanvasToolHandler() = default;

  [[nodiscard]] virtual std::set<Tool> supportedTools() const = 0;
  [[nodiscard]] virtual std::shared_ptr<CanvasViewLayer> overlayLayer() const { return nullptr; }
  /// Whether a drag needs every position of the pointer. Otherwise it gets the last one for each frame.
  [[nodiscard]] virtual bool needsEveryPosition() const { return false; }
  virtual void toolActivated(const ToolContext& context) { (void)context; }
  virtual void toolDeactivated(const ToolContext& context) { (void)context; }
  [[nodiscard]] virtual CursorShape cursor(std::uint32_t modifiers, const ToolContext& context) const = 0;

  virtual void mouseDown(const EventRecord&, const ToolContext&, QPointF viewPoint) { (void)viewPoint; }
  virtual void mouseDragged(const EventRecord&, const ToolContext&, QPointF viewPoint) { (void)viewPoint; }
  virtual void mouseUp(const EventRecord&, const ToolContext&, QPointF viewPoint) { (void)viewPoint; }
  virtual void mouseMoved(const EventRecord&, const ToolContext&, QPointF viewPoint) { (void)viewPoint; }

  /// Returns true if the key was consumed. One that is declined may be offered again, first ahead of the
  /// editor's commands and then as the canvas's own, so declining must have no effect that adds up.
  virtual bool keyDown(const EventRecord&, const ToolContext&) { return false; }
  virtual bool keyUp(const EventRecord&, const ToolContext&) { return false; }
  /// Whether a gesture goes on while no button is down.
  [[nodiscard]] virtual bool hasOpenGesture(const ToolContext& context) {
    (void)context;
    return false;
  }
  virtual void flagsChanged(const EventRecord&, const ToolContext&) {}
};

}  // namespace orvanel
