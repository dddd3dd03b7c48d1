// The selection tools in the hand, from the event to the finished frame of a full-HD view, on documents that
// are as large as they get. One document lives at a time. `end_ms` is what the release of a moved selection
// costs.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <string>

#include "BenchCanvas.h"
#include "FeelDocuments.h"
#include "tools/selection/EllipseSelectToolHandler.h"
#include "tools/selection/LassoSelectToolHandler.h"
#include "tools/selection/MagicWandToolHandler.h"
#include "tools/selection/RectSelectToolHandler.h"

namespace orvanel {
namespace {

constexpr int photoSide = 4096;
constexpr int whiteSide = 16384;

/// With what the selection tools share.
struct SelectionCanvas : BenchCanvas {
  SelectionCanvas(const DocumentPtr& document, bool isFit) : BenchCanvas(document, isFit) {
    showOverlay(selection->dragPathLayer);
  }

  const std::shared_ptr<SelectionToolState> selection =
      std::make_shared<SelectionToolState>(MetalContext::shared());
  ToolState tools;
};

DocumentPtr documentOf(char name) {
  // One document at a time: the last one goes before the next is made.
  static char held = 0;
  static DocumentPtr document;
  if (held != name) {
    document.reset();
    document = name == 'A'   ? bench::documentA()
               : name == 'B' ? bench::documentB()
               : name == 'W' ? Document::create(QStringLiteral("White"), whiteSide, whiteSide,
                                                ColorMode::rgb16, MetalContext::shared())
                             : bench::photoDocument(photoSide, ColorMode::rgb16);
    held = name;
  }
  document->deselect();
  return document;
}

template <typename Handler>
std::unique_ptr<CanvasToolHandler> make(SelectionCanvas& canvas) {
  if constexpr (std::is_constructible_v<Handler, std::shared_ptr<SelectionToolState>, ToolState&>) {
    return std::make_unique<Handler>(canvas.selection, canvas.tools);
  } else {
    return std::make_unique<Handler>(canvas.selection);
  }
}

/// The way of a drag, which closes around most of the view.
QPointF wayPoint(int step) {
  const double angle = 0.05 * step;
  return QPointF(0.5 + 0.4 * std::cos(angle), 0.5 + 0.45 * std::sin(angle));
}

template <typename Handler>
void dragStep(benchmark::State& state, char name, bool isFit) {
  SelectionCanvas canvas(documentOf(name), isFit);
  const auto handler = make<Handler>(canvas);
  int step = 0;
  handler->mouseDown({}, canvas.context(), canvas.at(0.02, 0.02));
  for (auto _ : state) {
    const QPointF way = wayPoint(++step % 120);
    handler->mouseDragged({}, canvas.context(), canvas.at(way.x(), way.y()));
    canvas.draw();
  }
  handler->toolDeactivated(canvas.context());
}

template <typename Handler>
void commit(benchmark::State& state, char name, bool isFit) {
  const DocumentPtr document = documentOf(name);
  SelectionCanvas canvas(document, isFit);
  const auto handler = make<Handler>(canvas);
  for (auto _ : state) {
    state.PauseTiming();
    document->deselect();
    handler->mouseDown({}, canvas.context(), canvas.at(0.9, 0.5));
    QPointF last;
    for (int step = 0; step < 126; ++step) {
      const QPointF way = wayPoint(step);
      last = canvas.at(way.x(), way.y());
      handler->mouseDragged({}, canvas.context(), last);
    }
    if constexpr (!std::is_same_v<Handler, LassoSelectToolHandler>) {
      last = canvas.at(0.05, 0.05);
      handler->mouseDragged({}, canvas.context(), last);
    }
    canvas.draw();
    state.ResumeTiming();
    handler->mouseUp({}, canvas.context(), last);
    canvas.draw();
  }
}

void moveStep(benchmark::State& state, char name, bool isFit) {
  const DocumentPtr document = documentOf(name);
  {
    SelectionGesture gesture(document, QStringLiteral("Select"));
    gesture.selectShape(SelectionMode::replace, [&](Selection& shape) {
      shape.setEllipse(2000.0F, 2000.0F, 1500.0F, 1500.0F, 0.0F, document->context());
    });
    gesture.close();
  }
  SelectionCanvas canvas(document, isFit);
  const auto handler = make<RectSelectToolHandler>(canvas);
  const QPointF press = isFit ? QPointF(2000, 2000) * canvas.zoom() : QPointF(1000, 1050);
  handler->mouseDown({}, canvas.context(), press);
  int step = 0;
  for (auto _ : state) {
    ++step;
    handler->mouseDragged({}, canvas.context(), press + QPointF(step % 97, step % 61 + 1));
    canvas.draw();
  }
  const auto release = std::chrono::steady_clock::now();
  handler->mouseUp({}, canvas.context(), press);
  canvas.draw();
  const std::chrono::duration<double, std::milli> end = std::chrono::steady_clock::now() - release;
  state.counters["end_ms"] = end.count();
}

void hover(benchmark::State& state, char name, bool isFit) {
  const DocumentPtr document = documentOf(name);
  document->selectAll();
  SelectionCanvas canvas(document, isFit);
  const auto handler = make<RectSelectToolHandler>(canvas);
  int step = 0;
  for (auto _ : state) {
    const QPointF way = wayPoint(++step);
    handler->mouseMoved({}, canvas.context(), canvas.at(way.x(), way.y()));
    canvas.draw();
  }
}

/// The tolerance at which about this share of the photo is selected.
float toleranceFor(const DocumentPtr& document, const QPoint& seed, double share) {
  float least = 0.0F;
  float most = 255.0F;
  for (int i = 0; i < 12; ++i) {
    const float tolerance = (least + most) / 2.0F;
    const auto wand = MagicWand::press(document, seed.x(), seed.y(), SelectionMode::replace,
                                       {.tolerance = tolerance, .antialiased = false});
    const Surface& mask = *document->selection.value()->maskTexture->texture;
    std::int64_t selected = 0;
    for (int y = 0; y < mask.height(); y += 8) {
      for (int x = 0; x < mask.width(); x += 8) selected += mask.pixelAt(x, y) != 0 ? 64 : 0;
    }
    const bool isMore = static_cast<double>(selected) > share * mask.width() * mask.height();
    (isMore ? most : least) = tolerance;
    wand->release();
  }
  return least;
}

enum class WandStep { click, scrub };

void wand(benchmark::State& state, char name, double share, WandStep timed, bool isFit) {
  const DocumentPtr document = documentOf(name);
  const QPoint seed(document->canvasWidth.value() / 2, document->canvasHeight.value() / 2);
  const float tolerance = share > 0.0 ? toleranceFor(document, seed, share) : 0.0F;
  document->deselect();
  SelectionCanvas canvas(document, isFit);
  canvas.tools.magicWandSettings = MagicWandSettings{.tolerance = tolerance};
  const auto handler = make<MagicWandToolHandler>(canvas);
  const QPointF press = (QPointF(seed) + QPointF(0.5, 0.5)) * canvas.zoom();
  int step = 0;
  if (timed == WandStep::scrub) handler->mouseDown({}, canvas.context(), press);
  for (auto _ : state) {
    if (timed == WandStep::scrub) {
      handler->mouseDragged({}, canvas.context(), press + QPointF(++step % 2, 0));
      canvas.draw();
      continue;
    }
    handler->mouseDown({}, canvas.context(), press);
    canvas.draw();
    state.PauseTiming();
    handler->mouseUp({}, canvas.context(), press);
    document->deselect();
    state.ResumeTiming();
  }
  handler->toolDeactivated(canvas.context());
  document->deselect();
}

void addBenchmark(const std::string& name, const std::function<void(benchmark::State&)>& run) {
  benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond)->UseRealTime();
}

void addDocument(char document) {
  for (const bool isFit : {true, false}) {
    const std::string where = std::string("/") + document + (isFit ? "/fit" : "/100%");
    const auto add = [&](const char* what, auto run) {
      addBenchmark("Select" + (what + where), [=](benchmark::State& state) { run(state, document, isFit); });
    };
    add("DragRect", dragStep<RectSelectToolHandler>);
    add("DragEllipse", dragStep<EllipseSelectToolHandler>);
    add("DragLasso", dragStep<LassoSelectToolHandler>);
    add("CommitRect", commit<RectSelectToolHandler>);
    add("CommitEllipse", commit<EllipseSelectToolHandler>);
    add("CommitLasso", commit<LassoSelectToolHandler>);
    add("Move3000", moveStep);
    add("Hover", hover);
  }
}

const bool isRegistered = [] {
  struct WandCase {
    std::string name;
    char document;
    double share;
  };
  for (const WandCase& c : {WandCase{"small", 'P', 0.0}, {"60%", 'P', 0.6}, {"white", 'W', 0.0}}) {
    for (const bool isFit : {true, false}) {
      const auto add = [&](const std::string& what, WandStep step) {
        addBenchmark(what + c.name + (isFit ? "/fit" : "/100%"), [c, step, isFit](benchmark::State& state) {
          wand(state, c.document, c.share, step, isFit);
        });
      };
      add("WandClick/", WandStep::click);
      add("WandScrub/", WandStep::scrub);
    }
  }
  addDocument('A');
  addDocument('B');
  return true;
}();

}  // namespace
}  // namespace orvanel
