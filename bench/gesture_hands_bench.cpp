// From the press of the button to the frame of a gesture that is ready to follow the pointer, on the largest
// documents: moving and free transform. Such a press finds the bounds of the content and keeps the original.
#include <benchmark/benchmark.h>

#include "BenchCanvas.h"
#include "FeelDocuments.h"
#include "tools/transform/FreeTransformToolHandler.h"
#include "tools/transform/MoveToolHandler.h"

namespace orvanel {
namespace {

const EventRecord escape{.key = keyCode::escape, .characters = {}};

void gesturePress(benchmark::State& state, DocumentPtr (*makeDocument)(), Tool tool, bool isFit) {
  BenchCanvas canvas(makeDocument(), isFit);
  ToolState tools;
  MoveToolHandler move(MetalContext::shared());
  FreeTransformToolHandler freeTransform(MetalContext::shared(), tools);
  CanvasToolHandler& handler = tool == Tool::move ? static_cast<CanvasToolHandler&>(move) : freeTransform;
  canvas.showOverlay(handler.overlayLayer());
  for (auto _ : state) {
    // The free transform opens with its tool, the move with the button.
    if (tool == Tool::freeTransform) handler.toolActivated(canvas.context());
    handler.mouseDown({}, canvas.context(), canvas.at(0.5, 0.5));
    canvas.draw();
    state.PauseTiming();
    if (!handler.keyDown(escape, canvas.context())) state.SkipWithError("no gesture began");
    canvas.draw();
    state.ResumeTiming();
  }
}

#define ORVANEL_PRESS_AT(name, document, tool, isFit)          \
  BENCHMARK_CAPTURE(gesturePress, name, document, tool, isFit) \
      ->Name("GesturePress/" name)                             \
      ->Unit(benchmark::kMillisecond)                          \
      ->UseRealTime()
#define ORVANEL_PRESS(name, document, tool)            \
  ORVANEL_PRESS_AT(name "/fit", document, tool, true); \
  ORVANEL_PRESS_AT(name "/100%", document, tool, false)
ORVANEL_PRESS("move/A", bench::documentA, Tool::move);
ORVANEL_PRESS("freeTransform/A", bench::documentA, Tool::freeTransform);
ORVANEL_PRESS("move/B", bench::documentB, Tool::move);
ORVANEL_PRESS("freeTransform/B", bench::documentB, Tool::freeTransform);

}  // namespace
}  // namespace orvanel
