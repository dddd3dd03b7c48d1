// The document's commands on a photo of 4096 x 4096 pixels: doing each one, undoing it at once, and undoing
// and redoing it after the history has been compressed. Only the time that the caller waits is measured.
#include <benchmark/benchmark.h>
#include <tbb/parallel_for.h>

#include <chrono>
#include <cstring>
#include <functional>
#include <numbers>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "PhotoLayers.h"
#include "ResidentMemory.h"
#include "model/Document.h"
#include "model/LevelsAdjustment.h"
#include "tools/selection/MagicWand.h"
#include "tools/selection/SelectionGesture.h"
#include "tools/transform/LayerTransform.h"

namespace orvanel {
namespace {

constexpr int side = 4096;
constexpr double mebibyte = 1024.0 * 1024.0;

MetalContext& context() {
  return MetalContext::shared();
}

const Surface& photo() {
  static const Texture layer = bench::photoLayer(side, side, bench::Depth::full, 7);
  return *layer;
}

/// An unshared copy, so that only the history holds its bytes once an edit has replaced them.
Surface copiedPhoto() {
  Surface copy = photo();
  for (int index = 0; index < copy.tileCount(); ++index) static_cast<void>(copy.editTile(index));
  return copy;
}

/// Surfaces that share the tiles of one copy of the photo.
std::vector<Texture> photos(int count) {
  const Surface pixels = copiedPhoto();
  std::vector<Texture> surfaces;
  for (int i = 0; i < count; ++i) surfaces.push_back(std::make_shared<Surface>(pixels));
  return surfaces;
}

/// One layer for each surface; the lowest is active.
DocumentPtr documentOf(const std::vector<Texture>& surfaces) {
  DocumentContents contents{
      .name = QStringLiteral("Photo"), .width = side, .height = side, .colorMode = ColorMode::rgb16};
  for (const Texture& surface : surfaces) {
    const QString name = QString::number(contents.rootNodes.size());
    contents.rootNodes.emplace_back(std::make_shared<Layer>(NodeValues{.name = name}, surface));
  }
  contents.selectedNodeID = contents.rootNodes.front().id();
  return Document::create(std::move(contents), context());
}

void selectSoftly(const DocumentPtr& document) {
  SelectionGesture gesture(document, QStringLiteral("Ellipse Select"));
  gesture.selectShape(SelectionMode::replace, [](Selection& shape) {
    shape.setEllipse(side / 2.0F, side / 2.0F, side * 0.4F, side * 0.35F, 300.0F, context());
  });
  gesture.close();
}

using Command = std::function<void(const DocumentPtr&)>;

struct Workload {
  std::string name;
  Command command;
  int layers = 1;
  Command prepare = [](const DocumentPtr&) {};
  /// The side of the surfaces that the command has to write completely; 0 when it writes none.
  int movedSide = 0;
};

enum class Phase { doing, undoingAtOnce, undoing, redoing };

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The limit of commands that move all pixels: allocating as many tiles and copying into each once.
double limitSeconds(const Workload& workload) {
  std::vector<Texture> surfaces = photos(workload.layers);
  return secondsOf([&] {
    for (Texture& surface : surfaces) {
      const Texture from = surface;
      const auto to = std::make_shared<Surface>(from->format(), workload.movedSide, workload.movedSide);
      tbb::parallel_for(0, to->tileCount(), [&](int index) {
        const Tile& tile = from->tile(index % from->tileCount());
        std::memcpy(to->overwriteTile(index), tile.data(), to->tileBytes());
      });
      surface = to;
    }
  });
}

void measure(benchmark::State& state, const Workload& workload, Phase phase) {
  const bool hasLimit = phase == Phase::doing && workload.movedSide > 0;
  double limit = 0.0;
  for (auto _ : state) {
    // Interleaved, because fetching fresh memory affects both alike.
    if (hasLimit) limit += limitSeconds(workload);
    const DocumentPtr document = documentOf(photos(workload.layers));
    workload.prepare(document);
    TextureSnapshot::waitForCompression();
    double seconds = secondsOf([&] { workload.command(document); });
    if (phase == Phase::undoing || phase == Phase::redoing) TextureSnapshot::waitForCompression();
    if (phase != Phase::doing) seconds = secondsOf([&] { document->undo(); });
    if (phase == Phase::redoing) {
      TextureSnapshot::waitForCompression();
      seconds = secondsOf([&] { document->redo(); });
    }
    state.SetIterationTime(seconds);
    TextureSnapshot::waitForCompression();
  }
  if (hasLimit) {
    state.counters["limit_ms"] = benchmark::Counter(limit * 1e3, benchmark::Counter::kAvgIterations);
  }
}

void transform(const DocumentPtr& document, const std::function<void(LayerTransform&)>& change) {
  const auto opened = LayerTransform::begin(document, QStringLiteral("Free Transform"));
  change(*opened);
  opened->commit();
}

std::vector<Workload> workloads() {
  const Command nothing = [](const DocumentPtr&) {};
  const DisplayColor color{0.2F, 0.5F, 0.7F, 1.0F};
  return {
      {"fillEverything", [color](const DocumentPtr& d) { d->fillSelection(color); }},
      {"clearEverything", [](const DocumentPtr& d) { d->clearActive(); }},
      {"fillSelected", [color](const DocumentPtr& d) { d->fillSelection(color); }, 1, selectSoftly},
      {"invert", [](const DocumentPtr& d) { d->invertActive(); }},
      {"invertSelected", [](const DocumentPtr& d) { d->invertActive(); }, 1, selectSoftly},
      {"levels",
       [](const DocumentPtr& d) {
         auto adjustment = LevelsAdjustment::begin(d);
         adjustment->apply({.blackPoint = 10.0F, .whitePoint = 240.0F, .gamma = 1.4F});
         adjustment->commit();
       }},
      {"selectAll", [](const DocumentPtr& d) { d->selectAll(); }},
      {"deselect", [](const DocumentPtr& d) { d->deselect(); }, 1,
       [](const DocumentPtr& d) { d->selectAll(); }},
      {"addMask", [](const DocumentPtr& d) { d->addLayerMask(d->activeLayer()); }},
      {"copy", [](const DocumentPtr& d) { benchmark::DoNotOptimize(d->copyPixels()); }, 1, selectSoftly},
      {"wand",
       [](const DocumentPtr& d) {
         MagicWand::press(d, side / 2, side / 2, SelectionMode::replace, {.tolerance = 60.0F})->release();
       }},
      {"move", [](const DocumentPtr& d) { transform(d, [](LayerTransform& t) { t.translate(3, 5); }); }},
      {"rotate",
       [](const DocumentPtr& d) {
         transform(d, [](LayerTransform& t) { t.rotate(std::numbers::pi_v<float> / 18.0F); });
       }},
      {"imageSize3000", [](const DocumentPtr& d) { d->resizeImage(3000, 3000, ResampleMethod::bicubic); }},
      {"imageSize2048", [](const DocumentPtr& d) { d->resizeImage(2048, 2048, ResampleMethod::bicubic); }},
      {"crop20Layers",
       [](const DocumentPtr& d) {
         d->crop({700, 900, 2000, 2000}, QStringLiteral("Crop"));
       },
       20, nothing, 2000},
      {"canvasSize20Layers", [](const DocumentPtr& d) { d->resizeCanvas(side + 200, side + 200, 0, 0); }, 20,
       nothing, side + 200},
      {"colorModeTo8Bits", [](const DocumentPtr& d) { d->changeColorMode(ColorMode::rgb8); }},
  };
}

void registerWorkloads() {
  constexpr std::array<std::pair<const char*, Phase>, 4> phases{{{"do", Phase::doing},
                                                                 {"undoAtOnce", Phase::undoingAtOnce},
                                                                 {"undo", Phase::undoing},
                                                                 {"redo", Phase::redoing}}};
  for (const Workload& workload : workloads()) {
    for (const auto& [phaseName, phase] : phases) {
      if (workload.name == "copy" && phase != Phase::doing) continue;
      benchmark::RegisterBenchmark(
          ("command/" + workload.name + "/" + phaseName).c_str(),
          [workload, phase = phase](benchmark::State& state) { measure(state, workload, phase); })
          ->Unit(benchmark::kMillisecond)
          ->UseManualTime()
          ->Iterations(workload.layers > 1 ? 3 : 7);
    }
  }
}

[[maybe_unused]] const bool areRegistered = (registerWorkloads(), true);

/// Whole-layer edits a second apart, against their kernel on pixels that nobody shares: a second apart as
/// well, when the caches hold other things and the threads sleep, and at once one after the other. `first_ms`
/// is the edit right after the document was made, which no reserve of memory can have foreseen.
void editASecondApart(benchmark::State& state) {
  constexpr int edits = 6;
  const auto pause = [] { std::this_thread::sleep_for(std::chrono::seconds(1)); };
  for (auto _ : state) {
    double kernel = 0.0;
    double kernelAtOnce = 0.0;
    {
      Surface alone = copiedPhoto();
      const auto invert = [&] { context().invertColors(alone, ColorMode::rgb16, nullptr); };
      invert();
      for (int i = 0; i < edits; ++i) kernelAtOnce += secondsOf(invert) / edits;
      for (int i = 0; i < edits; ++i) {
        pause();
        kernel += secondsOf(invert) / edits;
      }
    }
    const DocumentPtr document = documentOf(photos(1));
    pause();
    state.counters["first_ms"] = secondsOf([&] { document->invertActive(); }) * 1e3;
    double slowest = 0.0;
    double sum = 0.0;
    for (int i = 0; i < edits; ++i) {
      pause();
      const double seconds = secondsOf([&] { document->invertActive(); });
      slowest = std::max(slowest, seconds);
      sum += seconds;
    }
    state.SetIterationTime(sum / edits);
    state.counters["kernel_ms"] = kernel * 1e3;
    state.counters["kernel_at_once_ms"] = kernelAtOnce * 1e3;
    state.counters["slowest_ms"] = slowest * 1e3;
  }
}
BENCHMARK(editASecondApart)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

/// Twenty layers of their own: what the process grows to while their mode changes.
void changeColorModeMemory(benchmark::State& state) {
  for (auto _ : state) {
    const double without = residentBytes();
    std::vector<Texture> surfaces;
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
      surfaces.push_back(bench::photoLayer(side, side, bench::Depth::full, 100 + seed));
    }
    const DocumentPtr document = documentOf(std::exchange(surfaces, {}));
    state.counters["documentMiB"] = (residentBytes() - without) / mebibyte;
    forgetPeak();
    state.SetIterationTime(secondsOf([&] { document->changeColorMode(ColorMode::rgb8); }));
    TextureSnapshot::waitForCompression();
    state.counters["peakMiB"] = (peakBytes() - without) / mebibyte;
  }
}
BENCHMARK(changeColorModeMemory)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

}  // namespace
}  // namespace orvanel
