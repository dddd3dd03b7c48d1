// How many edits stay undoable within the memory budget, and what adding up a long history costs.
#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <random>

#include "PhotoLayers.h"
#include "model/Document.h"
#include "tools/selection/SelectionGesture.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {
namespace {

constexpr double mebibyte = 1024.0 * 1024.0;

MetalContext& context() {
  return MetalContext::shared();
}

/// A document with one layer and a limit on the number of records.
DocumentPtr documentOf(const Texture& pixels, int maxOperations) {
  const auto layer = std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Layer")}, pixels);
  DocumentPtr document = Document::create({.name = QStringLiteral("History"),
                                           .width = pixels->width(),
                                           .height = pixels->height(),
                                           .colorMode = ColorMode::rgb16,
                                           .rootNodes = {layer},
                                           .selectedNodeID = layer->id},
                                          context());
  document->setHistoryLimits(document->undoStack.memoryBudget.value(), maxOperations);
  return document;
}

void select(const DocumentPtr& document, const std::function<void(Selection&)>& shape) {
  SelectionGesture gesture(document, QStringLiteral("Select"));
  gesture.selectShape(SelectionMode::replace, shape);
  gesture.close();
}

void report(benchmark::State& state, const DocumentPtr& document, int recorded) {
  const UndoStack& history = document->undoStack;
  state.counters["recorded"] = recorded;
  state.counters["undoable"] = static_cast<double>(history.operations().size());
  TextureSnapshot::waitForCompression();
  state.counters["MiB"] = static_cast<double>(history.totalMemoryCost()) / mebibyte;
  const auto start = std::chrono::steady_clock::now();
  benchmark::DoNotOptimize(history.totalMemoryCost());
  const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - start;
  state.counters["count_ms"] = spent.count();
}

/// Forty changes of each of four kinds on the largest canvas.
void cheapEditsOnTheLargestCanvas(benchmark::State& state) {
  constexpr int side = 16384;
  constexpr int rounds = 40;
  for (auto _ : state) {
    const DocumentPtr document =
        documentOf(context().makeTexture(PixelFormat::rgba16Float, side, side), 4 * rounds);
    for (int round = 0; round < rounds; ++round) {
      document->rename(*document->selectedNodeID.value(), QString::number(round));
      select(document, [round](Selection& shape) {
        const float radius = 5.0F + static_cast<float>(round) * 200.0F;
        shape.setEllipse(side / 2.0F, side / 2.0F, radius, radius * 0.8F, 0.0F, context());
      });
      document->fillSelection({0.02F * static_cast<float>(round), 0.5F, 0.7F, 1.0F});
      document->addLayer(QString::number(round));
    }
    report(state, document, 4 * rounds);
  }
}
BENCHMARK(cheapEditsOnTheLargestCanvas)->Unit(benchmark::kMillisecond)->Iterations(1);

enum class Pace { withPauses, withoutPauses };

/// Inverts squares of a photograph at random places. Selecting each square is a record as well.
void smallEditsOfAPhoto(benchmark::State& state, int edits, Pace pace) {
  constexpr int side = 8192;
  constexpr int editSide = 300;
  static const Texture photo = bench::photoLayer(side, side, bench::Depth::full, 7);
  for (auto _ : state) {
    const DocumentPtr document = documentOf(std::make_shared<Surface>(*photo), 2 * edits);
    std::mt19937 random(5);
    std::uniform_int_distribution<int> place(0, side - editSide);
    for (int edit = 0; edit < edits; ++edit) {
      const PixelRect rect{place(random), place(random), editSide, editSide};
      select(document, [&rect](Selection& shape) { shape.setRect(rect, 0.0F, context()); });
      document->invertActive();
      if (pace == Pace::withPauses) TextureSnapshot::waitForCompression();
    }
    report(state, document, 2 * edits);
  }
}
BENCHMARK_CAPTURE(smallEditsOfAPhoto, 200, 200, Pace::withPauses)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);
BENCHMARK_CAPTURE(smallEditsOfAPhoto, 91withPauses, 91, Pace::withPauses)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);
BENCHMARK_CAPTURE(smallEditsOfAPhoto, 91withoutPauses, 91, Pace::withoutPauses)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

}  // namespace
}  // namespace orvanel
