// A canvas for tests of tools: converts points as it is told, and remembers what tools asked of it.
#pragma once

#include <optional>
#include <vector>

#include "tools/CanvasToolHandler.h"

namespace orvanel::test {

class FakeCanvas : public ToolCanvas {
 public:
  explicit FakeCanvas(std::weak_ptr<Document> shown = {}) : document(std::move(shown)) {}

  std::weak_ptr<Document> document;
  std::optional<double> zoom;     ///< view points per document pixel; else the document's
  std::optional<QPointF> offset;  ///< the document point at `imageOrigin`; else the document's
  QPointF imageOrigin{0.0, 0.0};  ///< view points
  QSizeF size{400.0, 300.0};
  std::uint32_t modifiers = 0;

  std::vector<CursorShape> cursors;
  std::vector<QPointF> scrolls;
  int redraws = 0;

  [[nodiscard]] ToolContext context() { return {this, document}; }

  [[nodiscard]] QSizeF viewSize() const override { return size; }
  [[nodiscard]] std::optional<QPointF> viewToDocument(QPointF viewPoint) const override {
    const DocumentPtr shown = document.lock();
    if (shown == nullptr) return std::nullopt;
    return (viewPoint - imageOrigin) / zoomOf(*shown) + offsetOf(*shown);
  }
  [[nodiscard]] std::optional<QPointF> documentToView(QPointF documentPoint) const override {
    const DocumentPtr shown = document.lock();
    if (shown == nullptr) return std::nullopt;
    return (documentPoint - offsetOf(*shown)) * zoomOf(*shown) + imageOrigin;
  }
  void scrollTo(QPointF documentOffset) override {
    scrolls.push_back(documentOffset);
    if (const DocumentPtr shown = document.lock()) shown->setViewportOffset(documentOffset);
  }
  [[nodiscard]] std::uint32_t currentModifiers() const override { return modifiers; }
  void showCursor(CursorShape cursor) override { cursors.push_back(cursor); }
  void requestRedraw() override { ++redraws; }

 private:
  [[nodiscard]] double zoomOf(const Document& shown) const { return zoom.value_or(shown.zoom()); }
  [[nodiscard]] QPointF offsetOf(const Document& shown) const {
    return offset.value_or(shown.viewportOffset.value());
  }
};

/// Operates one tool on a fake canvas, as the view would. The modifiers are the canvas's.
class ToolInHand {
 public:
  ToolInHand(CanvasToolHandler& handler, FakeCanvas& canvas) : handler_(handler), canvas_(canvas) {}

  void press(QPointF viewPoint, int clickCount = 1) {
    handler_.mouseDown(event(clickCount), canvas_.context(), viewPoint);
  }
  void drag(QPointF viewPoint) { handler_.mouseDragged(event(), canvas_.context(), viewPoint); }
  void release(QPointF viewPoint) { handler_.mouseUp(event(), canvas_.context(), viewPoint); }
  void hover(QPointF viewPoint) { handler_.mouseMoved(event(), canvas_.context(), viewPoint); }
  void click(QPointF viewPoint, int clickCount = 1) {
    press(viewPoint, clickCount);
    release(viewPoint);
  }
  void dragFromTo(QPointF from, QPointF to) {
    press(from);
    drag(to);
    release(to);
  }
  bool keyDown(int key) { return handler_.keyDown(keyEvent(key), canvas_.context()); }
  bool keyUp(int key) { return handler_.keyUp(keyEvent(key), canvas_.context()); }
  void holdModifiers(std::uint32_t modifiers) {
    canvas_.modifiers = modifiers;
    handler_.flagsChanged(event(), canvas_.context());
  }
  void changeTool() { handler_.toolDeactivated(canvas_.context()); }
  [[nodiscard]] CursorShape cursor() { return handler_.cursor(canvas_.modifiers, canvas_.context()); }

 private:
  [[nodiscard]] EventRecord event(int clickCount = 0) const {
    EventRecord record;
    record.modifiers = canvas_.modifiers;
    record.clickCount = clickCount;
    return record;
  }
  [[nodiscard]] EventRecord keyEvent(int key) const {
    EventRecord record = event();
    record.key = key;
    return record;
  }

  CanvasToolHandler& handler_;
  FakeCanvas& canvas_;
};

}  // namespace orvanel::test
