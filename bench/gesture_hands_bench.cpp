// From the press of the button to a gesture that is ready to follow the pointer, on the largest documents:
// moving and free transform. Such a press finds the bounds of the content and keeps the original.
#include <benchmark/benchmark.h>

#include <optional>
#include <utility>

#include "BenchView.h"
#include "FeelDocuments.h"
#include "tools/CanvasToolHandler.h"
#include "tools/transform/FreeTransformToolHandler.h"
#include "tools/transform/MoveToolHandler.h"

namespace orvanel {
namespace {

/// A canvas fitted to a full-HD view.
class FittedCanvas : public ToolCanvas {
 public:
  explicit FittedCanvas(DocumentPtr shown) : document_(std::move(shown)) {
    document_->zoomFitOnScreen(viewWidth, viewHeight);
  }
  [[nodiscard]] QSizeF viewSize() const override { return {viewWidth, viewHeight}; }
  [[nodiscard]] std::optional<QPointF> viewToDocument(QPointF viewPoint) const override {
    return viewPoint / document_->zoom();
  }
  [[nodiscard]] std::optional<QPointF> documentToView(QPointF documentPoint) const override {
    return documentPoint * document_->zoom();
  }
  void scrollTo(QPointF documentOffset) override { document_->setViewportOffset(documentOffset); }
  [[nodiscard]] std::uint32_t currentModifiers() const override { return 0; }
  void showCursor(CursorShape cursor) override { (void)cursor; }
  void requestRedraw() override {}

  [[nodiscard]] ToolContext context() { return {this, document_}; }

 private:
  DocumentPtr document_;
};

constexpr QPointF middle(viewHeight / 2.0, viewHeight / 2.0);
const EventRecord escape{.key = keyCode::escape, .characters = {}};

void gesturePress(benchmark::State& state, DocumentPtr (*makeDocument)(), Tool tool) {
  FittedCanvas canvas(makeDocument());
  ToolState tools;
  MoveToolHandler move(MetalContext::shared());
  FreeTransformToolHandler freeTransform(MetalContext::shared(), tools);
  CanvasToolHandler& handler = tool == Tool::move ? static_cast<CanvasToolHandler&>(move) : freeTransform;
  for (auto _ : state) {
    // The free transform opens with its tool, the move with the button.
    if (tool == Tool::freeTransform) handler.toolActivated(canvas.context());
    handler.mouseDown({}, canvas.context(), middle);
    state.PauseTiming();
    if (!handler.keyDown(escape, canvas.context())) state.SkipWithError("no gesture began");
    state.ResumeTiming();
  }
}

#define ORVANEL_PRESS(name, document, tool)             \
  BENCHMARK_CAPTURE(gesturePress, name, document, tool) \
      ->Name("GesturePress/" name)                      \
      ->Unit(benchmark::kMillisecond)                   \
      ->UseRealTime()
ORVANEL_PRESS("move/A", bench::documentA, Tool::move);
ORVANEL_PRESS("freeTransform/A", bench::documentA, Tool::freeTransform);
ORVANEL_PRESS("move/B", bench::documentB, Tool::move);
ORVANEL_PRESS("freeTransform/B", bench::documentB, Tool::freeTransform);

}  // namespace
}  // namespace orvanel
