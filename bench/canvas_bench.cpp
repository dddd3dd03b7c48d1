// Frames of a full-HD view of a large document, and frames in which nothing changed. The limit of the machine
// is measured beside them: filling such a view with all threads.
#include <benchmark/benchmark.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "BenchView.h"

namespace orvanel {
namespace {

/// Noise of plausible values; half of the tiles are partly transparent.
void fillTile(Surface& surface, int index) {
  auto* words = reinterpret_cast<std::uint16_t*>(surface.overwriteTile(index));
  const std::size_t count = surface.tileBytes() / 2;
  const bool isFloat = isFloatFormat(surface.format());
  auto state = static_cast<std::uint32_t>(index) * 2654435761U + 1U;
  for (std::size_t i = 0; i < count; ++i) {
    state = state * 1664525U + 1013904223U;
    const std::uint32_t value = state >> 16U;
    const bool isOpaqueAlpha = index % 2 == 0 && i % (isFloat ? 4 : 2) == (isFloat ? 3U : 1U);
    if (isFloat) {
      words[i] = static_cast<std::uint16_t>(isOpaqueAlpha ? 0x3C00U : 0x2C00U + value % 0x1000U);
    } else {
      words[i] = static_cast<std::uint16_t>(isOpaqueAlpha ? value | 0xFF00U : value);
    }
  }
}

DocumentPtr makeFullDocument(int side, ColorMode mode) {
  const Texture pixels = MetalContext::shared().makeTexture(layerPixelFormat(mode), side, side);
  tbb::parallel_for(0, pixels->tileCount(), [&](int index) { fillTile(*pixels, index); });
  const auto layer = std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Photo")}, pixels);
  return Document::create({.name = QStringLiteral("Bench"),
                           .width = side,
                           .height = side,
                           .colorMode = mode,
                           .rootNodes = {layer}},
                          MetalContext::shared());
}

void canvasDraw(benchmark::State& state, ColorMode mode, double zoom) {
  constexpr int side = 4096;
  const DocumentPtr document = makeFullDocument(side, mode);
  // The fit leaves forty points free around the canvas.
  document->zoomFitOnScreen(40.0 + zoom * side, 40.0 + zoom * side);
  CanvasRenderer renderer(MetalContext::shared());
  renderer.document = document;
  BenchView view;
  double step = 0.0;
  // Flattened in advance, however long that takes.
  static_cast<void>(document->composite());
  renderer.drawInMTKView(view);
  for (auto _ : state) {
    // Every frame pans by one device pixel, so that all of it is drawn.
    step = step < 100.0 ? step + 1.0 : 0.0;
    document->setViewportOffset(QPointF(100.0 + step / zoom, 100.0 + step / zoom) *
                                (zoom > 0.25 ? 1.0 : 0.01));
    if (renderer.drawInMTKView(view) != FrameResult::drawn) state.SkipWithError("the frame wasn't drawn");
  }
  state.SetBytesProcessed(state.iterations() * viewWidth * viewHeight * 4);
  state.counters["megapixels"] = viewWidth * viewHeight / 1e6;
}

void canvasFillLimit(benchmark::State& state) {
  BenchView view;
  std::uint32_t value = 0;
  for (auto _ : state) {
    ++value;
    tbb::parallel_for(0, viewHeight / 30, [&](int band) {
      std::fill_n(view.pixels.data() + std::size_t{30} * viewWidth * static_cast<std::size_t>(band),
                  30 * viewWidth, value);
    });
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * viewWidth * viewHeight * 4);
}

void canvasFrameUnchanged(benchmark::State& state) {
  const DocumentPtr document = makeFullDocument(static_cast<int>(state.range(0)), ColorMode::rgb16);
  for (int i = 1; i < state.range(1); ++i) document->addLayer(QString::number(i));
  CanvasRenderer renderer(MetalContext::shared());
  renderer.document = document;
  BenchView view;
  // Flattened in advance, however long that takes.
  static_cast<void>(document->composite());
  renderer.drawInMTKView(view);
  for (auto _ : state) {
    if (renderer.drawInMTKView(view) != FrameResult::unchanged) state.SkipWithError("the frame was drawn");
  }
}

BENCHMARK(canvasFillLimit)->Name("CanvasFillLimit")->Unit(benchmark::kMillisecond)->UseRealTime();
#define ORVANEL_DRAW(name, mode, zoom) \
  BENCHMARK_CAPTURE(canvasDraw, zoom, mode, zoom)->Name(name)->Unit(benchmark::kMillisecond)->UseRealTime()
ORVANEL_DRAW("CanvasDraw/zoom:0.1", ColorMode::rgb16, 0.1);
ORVANEL_DRAW("CanvasDraw/zoom:0.25", ColorMode::rgb16, 0.25);
ORVANEL_DRAW("CanvasDraw/zoom:0.5", ColorMode::rgb16, 0.5);
ORVANEL_DRAW("CanvasDraw/zoom:1", ColorMode::rgb16, 1.0);
ORVANEL_DRAW("CanvasDraw/zoom:7", ColorMode::rgb16, 7.0);
ORVANEL_DRAW("CanvasDraw/zoom:64", ColorMode::rgb16, 64.0);
ORVANEL_DRAW("CanvasDraw/rgb8/zoom:0.25", ColorMode::rgb8, 0.25);
ORVANEL_DRAW("CanvasDraw/rgb8/zoom:1", ColorMode::rgb8, 1.0);
BENCHMARK(canvasFrameUnchanged)
    ->Name("CanvasFrameUnchanged")
    ->ArgNames({"side", "layers"})
    ->Args({4096, 1})
    ->Args({4096, 1000})
    ->Args({16384, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace orvanel
