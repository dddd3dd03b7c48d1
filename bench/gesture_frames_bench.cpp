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

#include "BenchCanvas.h"
#include "FeelDocuments.h"
#include "model/LevelsAdjustment.h"
#include "model/OpenOpacityEdit.h"
#include "raster/SurfaceChange.h"
#include "tools/transform/FreeTransformToolHandler.h"
#include "tools/transform/MoveToolHandler.h"

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
using Begin = std::function<Gesture(BenchCanvas&)>;

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

QPointF middleOf(const Document& document) {
  return QPointF(document.canvasWidth.value(), document.canvasHeight.value()) / 2.0;
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
  // Kept until the last has been made, as the end of the edit keeps them.
  std::vector<Surface> made;
  for (const SurfaceKind kind : {SurfaceKind::pixels, SurfaceKind::mask}) {
    const std::optional<ShownSurface> shown = document.shown(*layer, kind);
    if (!shown) continue;
    const Surface& source = *shown->original;
    Surface& destination = made.emplace_back(source.format(), source.width(), source.height());
    const Clock::time_point start = Clock::now();
    applyChange(*shown->change, MetalContext::shared(), source, destination);
    sum = sum.value_or(0.0) + millisecondsSince(start);
  }
  return sum;
}

void frames(benchmark::State& state, const std::string& name, const Subject& make, const Begin& begin,
            Zoom zoom) {
  const DocumentPtr document = keptDocument(name, make);
  BenchCanvas canvas(document, zoom == Zoom::fit);
  if (zoom == Zoom::actualSize) canvas.scrollTo(middleOf(*document));
  canvas.draw();
  // As the editor does while the user reaches for a tool.
  while (!canvas.catchUp()) continue;
  std::vector<double> times;
  std::vector<double> processorTimes;
  const Gesture gesture = begin(canvas);
  for (auto _ : state) {
    const std::clock_t processorStart = std::clock();
    const Clock::time_point start = Clock::now();
    gesture.step(static_cast<int>(times.size()));
    canvas.draw();
    times.push_back(millisecondsSince(start));
    processorTimes.push_back(1e3 * static_cast<double>(std::clock() - processorStart) / CLOCKS_PER_SEC);
    state.SetIterationTime(times.back() / 1e3);
  }
  state.counters["first_ms"] = times.front();
  times.erase(times.begin());
  state.counters["median_ms"] = median(times);
  state.counters["processor_ms"] = median(processorTimes);
  state.counters["worst_ms"] = *std::ranges::max_element(times);

  if (gesture.end && !document->undoActionName()) state.SkipWithError("no gesture began");
  // The first run leaves its memory behind, as warm as the end of the gesture finds it.
  static_cast<void>(kernelMilliseconds(*document));
  const std::optional<double> kernel = kernelMilliseconds(*document);
  const Clock::time_point release = Clock::now();
  if (gesture.end) gesture.end();
  const double end = millisecondsSince(release);
  state.counters["end_ms"] = end;
  if (kernel) {
    state.counters["kernel_ms"] = *kernel;
    state.counters["of_kernel"] = end / *kernel;
  }
  canvas.draw();
  double hold = 0.0;
  for (bool isCurrent = false; !isCurrent;) {
    const Clock::time_point start = Clock::now();
    isCurrent = canvas.catchUp();
    hold = std::max(hold, millisecondsSince(start));
  }
  state.counters["hold_ms"] = hold;
  while (document->undoStack.currentIndex.value() >= 0) document->undo();
}

Gesture pan(BenchCanvas& canvas) {
  const QPointF start = canvas.document()->viewportOffset.value();
  return {[&canvas, start](int step) { canvas.scrollTo(start + QPointF(3.0 * step, 2.0 * step)); }, {}};
}

Gesture zoomSteps(BenchCanvas& canvas) {
  const DocumentPtr& document = canvas.document();
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
Gesture opacity(BenchCanvas& canvas) {
  const std::shared_ptr<OpenOpacityEdit> open =
      OpenOpacityEdit::begin(canvas.document(), node(*canvas.document()));
  return {[=](int step) { open->show(0.2F + 0.01F * static_cast<float>(step)); }, [=] { open->keep(); }};
}

template <Node node>
Gesture blendMode(BenchCanvas& canvas) {
  const DocumentPtr& document = canvas.document();
  const QUuid id = node(*document);
  return {[=](int step) {
            document->setBlendMode(id,
                                   allBlendModes[static_cast<std::size_t>(step + 1) % allBlendModes.size()]);
          },
          {}};
}

template <Node node>
Gesture visibility(BenchCanvas& canvas) {
  const DocumentPtr& document = canvas.document();
  const QUuid id = node(*document);
  return {[=](int step) { document->setVisible(id, step % 2 != 0); }, {}};
}

/// A place in the ring around the handle at this point, in view points.
QPointF ringAt(const BenchCanvas& canvas, QPointF documentPoint) {
  constexpr QPointF intoTheRing(9.0, 9.0);
  return *canvas.documentToView(documentPoint) + intoTheRing;
}

QPointF turned(QPointF point, QPointF centre, double angle) {
  return centre + QTransform().rotateRadians(angle).map(point - centre);
}

using Way = std::function<QPointF(int step)>;

/// A drag from the way's place at step 0. The layer's content fills the canvas.
Gesture drag(BenchCanvas& canvas, const std::shared_ptr<CanvasToolHandler>& tool, const Way& way) {
  tool->mouseDown({}, canvas.context(), way(0));
  return {[=, &canvas](int step) { tool->mouseDragged({}, canvas.context(), way(step + 1)); },
          [=, &canvas] { tool->mouseUp({}, canvas.context(), {}); }};
}

Gesture dragWithMoveTool(BenchCanvas& canvas, const Way& way) {
  const auto tool = std::make_shared<MoveToolHandler>(MetalContext::shared());
  canvas.showOverlay(tool->overlayLayer());
  tool->toolActivated(canvas.context());
  return drag(canvas, tool, way);
}

Gesture move(BenchCanvas& canvas) {
  return dragWithMoveTool(canvas, [&](int step) {
    return *canvas.documentToView(middleOf(*canvas.document()) + QPointF(7.0, 3.0) * step);
  });
}

Gesture scale(BenchCanvas& canvas) {
  return dragWithMoveTool(canvas,
                          [&](int step) { return *canvas.documentToView(QPointF(21.0, 17.0) * step); });
}

Gesture rotate(BenchCanvas& canvas) {
  const QPointF ring = ringAt(canvas, {0.0, 0.0});
  const QPointF centre = *canvas.documentToView(middleOf(*canvas.document()));
  return dragWithMoveTool(canvas, [=](int step) { return turned(ring, centre, 0.03 * step); });
}

/// Content that has been made smaller, from its upper left corner, is turned.
Gesture freeTransform(BenchCanvas& canvas) {
  struct Hand {
    ToolState tools;
    FreeTransformToolHandler tool{MetalContext::shared(), tools};
  };
  const auto hand = std::make_shared<Hand>();
  const std::shared_ptr<CanvasToolHandler> tool(hand, &hand->tool);
  canvas.showOverlay(tool->overlayLayer());
  tool->toolActivated(canvas.context());
  const QPointF corner(300.0, 300.0);
  const Gesture scaling =
      drag(canvas, tool, [&](int step) { return *canvas.documentToView(step == 0 ? QPointF() : corner); });
  scaling.step(0);
  scaling.end();
  const QPointF ring = ringAt(canvas, corner);
  const QPointF centre = *canvas.documentToView(middleOf(*canvas.document()) + corner / 2.0);
  Gesture turning = drag(canvas, tool, [=](int step) { return turned(ring, centre, 0.03 * step); });
  turning.end = [=, &canvas] {
    tool->keyDown({.key = keyCode::returnKey, .characters = {}}, canvas.context());
  };
  return turning;
}

Gesture levels(BenchCanvas& canvas) {
  const auto open = std::make_shared<LevelsAdjustment>(LevelsAdjustment::begin(canvas.document()).value());
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
