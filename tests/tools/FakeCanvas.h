// A canvas for tests of tools, without a view: the placement is set by the test, and what tools ask for is
// recorded.
#pragma once

#include <utility>
#include <vector>

#include "tools/CanvasToolHandler.h"

namespace orvanel::test {

class FakeCanvas : public ToolCanvas {
 public:
  explicit FakeCanvas(DocumentPtr shown = nullptr) : document(std::move(shown)) {}

  [[nodiscard]] QSizeF viewSize() const override { return size; }
  /// The document's own zoom and offset; `origin` is the view point of the offset.
  [[nodiscard]] std::optional<QPointF> viewToDocument(QPointF viewPoint) const override {
    if (document == nullptr) return std::nullopt;
    return (viewPoint - origin) / document->zoom() + document->viewportOffset.value();
  }
  [[nodiscard]] std::optional<QPointF> documentToView(QPointF documentPoint) const override {
    if (document == nullptr) return std::nullopt;
    return (documentPoint - document->viewportOffset.value()) * document->zoom() + origin;
  }
  void scrollTo(QPointF documentOffset) override {
    scrolls.push_back(documentOffset);
    if (document != nullptr) document->setViewportOffset(documentOffset);
  }
  [[nodiscard]] std::uint32_t currentModifiers() const override { return modifiers; }
  void showCursor(CursorShape cursor) override { cursors.push_back(cursor); }
  void requestRedraw() override { ++redraws; }

  [[nodiscard]] ToolContext context() { return {this, document}; }

  DocumentPtr document;
  QSizeF size{400.0, 300.0};
  QPointF origin;
  std::uint32_t modifiers = 0;
  std::vector<CursorShape> cursors;
  std::vector<QPointF> scrolls;
  int redraws = 0;
};

}  // namespace orvanel::test
