// Frames while something changes: from the event to the finished frame of a full-HD view, on the main thread.
// Every step is timed by itself; `median` and `worst` leave out the first, in which samples are gathered.
// `processor` is the median of what all threads used: on a machine with other work, look at that. `end` is
// what the release of the button costs, `kernel` what its kernels need alone, `of_kernel` their ratio, and
// `hold` the longest turn of the flattening that follows.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BenchView.h"
#include "FeelDocuments.h"
#include "model/LevelsAdjustment.h"
#include "raster/SurfaceChange.h"
#include "tools/transform/LayerTransform.h"

namespace orvanel {
namespace {

using Clock = std::chrono::steady_clock;
using Subject = std::function<DocumentPtr()>;

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// One gesture on a document: performs its steps, and keeps open what must stay open between them.
struct Gesture {
  std::function<void(int step)> step;
  std::function<void()> end;
};
using Begin = std::function<Gesture(const DocumentPtr&)>;

enum class Zoom { fit, actualSize };

/// The document of the running benchmarks: the large ones don't fit into memory together.
DocumentPtr keptDocument(const std::string& name, const Subject& make) {
  static std::string keptName;
  static DocumentPtr kept;
  if (keptName != name) {
    kept = nullptr;
    kept = make();
    keptName = name;
  }
  return kept;
}

void show(const DocumentPtr& document, Zoom zoom) {
  if (zoom == Zoom::fit) {
    document->zoomFitOnScreen(viewWidth, viewHeight);
    document->setViewportOffset({0.0, 0.0});
  } else {
    document->zoomActualSize();
    const double middle = document->canvasWidth.value() / 2.0;
    document->setViewportOffset({middle, middle});
  }
}

double median(std::vector<double> times) {
  const auto middle = times.begin() + std::ssize(times) / 2;
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

/// The kernels alone that the end of an open edit runs, into fresh surfaces. Nothing without an open edit.
std::optional<double> kernelMilliseconds(const Document& document) {
  const std::shared_ptr<Layer> layer = document.activeLayer();
  std::optional<double> sum;
  for (const SurfaceKind kind : {SurfaceKind::pixels, SurfaceKind::mask}) {
    const std::optional<ShownSurface> shown = document.shown(*layer, kind);
    if (!shown) continue;
    const Surface& source = *shown->original;
    Surface destination(source.format(), source.width(), source.height());
    const Clock::time_point start = Clock::now();
    applyChange(*shown->change, MetalContext::shared(), source, destination);
    sum = sum.value_or(0.0) + millisecondsSince(start);
  }
  return sum;
}

void frames(benchmark::State& state, const std::string& name, const Subject& make, const Begin& begin,
            Zoom zoom) {
  const DocumentPtr document = keptDocument(name, make);
  show(document, zoom);
  static_cast<void>(document->composite());
  CanvasRenderer renderer(MetalContext::shared());
  renderer.document = document;
  BenchView view;
  renderer.drawInMTKView(view);
  // As the editor does while the user reaches for a slider.
  while (!renderer.catchUp()) continue;
  std::vector<double> times;
  std::vector<double> processorTimes;
  const Gesture gesture = begin(document);
  for (auto _ : state) {
    const std::clock_t processorStart = std::clock();
    const Clock::time_point start = Clock::now();
    gesture.step(static_cast<int>(times.size()));
    renderer.drawInMTKView(view);
    times.push_back(millisecondsSince(start));
    processorTimes.push_back(1e3 * static_cast<double>(std::clock() - processorStart) / CLOCKS_PER_SEC);
    state.SetIterationTime(times.back() / 1e3);
  }
  state.counters["first_ms"] = times.front();
  times.erase(times.begin());
  state.counters["median_ms"] = median(times);
  state.counters["processor_ms"] = median(processorTimes);
  state.counters["worst_ms"] = *std::ranges::max_element(times);

  const std::optional<double> kernel = kernelMilliseconds(*document);
  const Clock::time_point release = Clock::now();
  if (gesture.end) gesture.end();
  const double end = millisecondsSince(release);
  state.counters["end_ms"] = end;
  if (kernel) {
    state.counters["kernel_ms"] = *kernel;
    state.counters["of_kernel"] = end / *kernel;
  }
  renderer.drawInMTKView(view);
  double hold = 0.0;
  for (bool isCurrent = false; !isCurrent;) {
    const Clock::time_point start = Clock::now();
    isCurrent = renderer.catchUp();
    hold = std::max(hold, millisecondsSince(start));
  }
  state.counters["hold_ms"] = hold;
  while (document->undoStack.currentIndex.value() >= 0) document->undo();
}

Gesture pan(const DocumentPtr& document) {
  const QPointF start = document->viewportOffset.value();
  return {[=](int step) { document->setViewportOffset(start + QPointF(3.0 * step, 2.0 * step)); }, {}};
}

Gesture zoomSteps(const DocumentPtr& document) {
  return {[=](int step) { step % 2 == 0 ? document->zoomIn() : document->zoomOut(); }, {}};
}

/// The node that changes: the lowest layer has the most above it, the top node is a folder in document A.
QUuid bottomLayer(const Document& document) {
  return document.allLayers().front()->id;
}
QUuid topNode(const Document& document) {
  return document.rootNodes.value().back().id();
}
using Node = QUuid (*)(const Document&);

template <Node node>
Gesture opacity(const DocumentPtr& document) {
  const QUuid id = node(*document);
  return {[=](int step) { document->setOpacity(id, 0.2F + 0.01F * static_cast<float>(step)); }, {}};
}

template <Node node>
Gesture blendMode(const DocumentPtr& document) {
  const QUuid id = node(*document);
  return {[=](int step) {
            document->setBlendMode(id,
                                   allBlendModes[static_cast<std::size_t>(step + 1) % allBlendModes.size()]);
          },
          {}};
}

template <Node node>
Gesture visibility(const DocumentPtr& document) {
  const QUuid id = node(*document);
  return {[=](int step) { document->setVisible(id, step % 2 != 0); }, {}};
}

Begin transforming(const std::function<void(LayerTransform&, int)>& change) {
  return [change](const DocumentPtr& document) -> Gesture {
    const std::shared_ptr<LayerTransform> open = LayerTransform::begin(document, QStringLiteral("Transform"));
    return {[=](int step) { change(*open, step + 1); }, [=] { open->commit(); }};
  };
}

const Begin move = transforming([](LayerTransform& open, int step) { open.translate(7 * step, 3 * step); });
const Begin scale = transforming([](LayerTransform& open, int step) {
  const PixelRect& rect = open.contentRect();
  open.scaleTo({10.0 * step, 6.0 * step, rect.width - 31.0 * step, rect.height - 23.0 * step});
});
const Begin rotate =
    transforming([](LayerTransform& open, int step) { open.rotate(0.03F * static_cast<float>(step)); });
const Begin freeTransform = transforming([](LayerTransform& open, int step) {
  open.transform(
      QTransform(1.0 - 0.01 * step, 0.008 * step, -0.011 * step, 1.0 + 0.004 * step, 3.0 * step, 0.0));
});

Gesture levels(const DocumentPtr& document) {
  const auto open = std::make_shared<LevelsAdjustment>(LevelsAdjustment::begin(document).value());
  return {
      [=](int step) {
        open->apply({.blackPoint = 2.0F * static_cast<float>(step + 1), .whitePoint = 240.0F, .gamma = 1.3F});
      },
      [=] { open->commit(); }};
}

struct NamedGesture {
  const char* name;
  Begin begin;
};

struct NamedSubject {
  std::string name;
  Subject make;
};

const std::vector<NamedGesture> everyGesture{
    {"pan", pan},
    {"zoom", zoomSteps},
    {"opacity", opacity<bottomLayer>},
    {"blendMode", blendMode<bottomLayer>},
    {"visibility", visibility<bottomLayer>},
    {"topNodeOpacity", opacity<topNode>},
    {"topNodeBlendMode", blendMode<topNode>},
    {"topNodeVisibility", visibility<topNode>},
    {"move", move},
    {"scale", scale},
    {"rotate", rotate},
    {"freeTransform", freeTransform},
    {"levels", levels},
};

void registerFrames(const NamedSubject& subject, const NamedGesture& gesture) {
  for (const Zoom zoom : {Zoom::fit, Zoom::actualSize}) {
    const std::string name =
        "GestureFrame/" + subject.name + "/" + gesture.name + (zoom == Zoom::fit ? "/fit" : "/actualSize");
    benchmark::RegisterBenchmark(
        name.c_str(),
        [=](benchmark::State& state) { frames(state, subject.name, subject.make, gesture.begin, zoom); })
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(24);
  }
}

[[maybe_unused]] const bool isRegistered = [] {
  const std::vector<NamedSubject> large{{"A", bench::documentA}, {"B", bench::documentB}};
  for (const NamedSubject& subject : large) {
    for (const NamedGesture& gesture : everyGesture) registerFrames(subject, gesture);
  }
  for (const int side : {2048, 8192, 16384}) {
    const NamedSubject photo{"photo:" + std::to_string(side),
                             [side] { return bench::photoDocument(side, ColorMode::rgb8); }};
    for (const NamedGesture& gesture :
         {NamedGesture{"move", move}, NamedGesture{"scale", scale}, NamedGesture{"rotate", rotate},
          NamedGesture{"freeTransform", freeTransform}}) {
      registerFrames(photo, gesture);
    }
  }
  return true;
}();

}  // namespace
}  // namespace orvanel
