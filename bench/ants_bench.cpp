// The cost of the moving outline around a selection: one step of it, a whole frame with it, and a window that
// shows it for some seconds. The selections are an ellipse and what the wand finds in a photo, fitted to a
// full-HD view.
#include <benchmark/benchmark.h>

#include <QEventLoop>
#include <QTimer>
#include <ctime>
#include <map>

#include "BenchView.h"
#include "FeelDocuments.h"
#include "canvas/CanvasPaneView.h"
#include "tools/selection/MagicWand.h"

namespace orvanel {
namespace {

constexpr int side = 4096;
/// What the canvas asks for.
constexpr double stepsPerSecond = 15.0;

enum class Selected { nothing, ellipse, wand };

const DocumentPtr& photo(Selected selected) {
  static std::map<Selected, DocumentPtr> documents;
  DocumentPtr& document = documents[selected];
  if (document != nullptr) return document;
  document = bench::photoDocument(side, ColorMode::rgb16);
  document->zoomFitOnScreen(viewWidth, viewHeight);
  if (selected == Selected::ellipse) {
    SelectionGesture gesture(document, QStringLiteral("Ellipse"));
    gesture.selectShape(SelectionMode::replace, [](Selection& shape) {
      shape.setEllipse(side / 2.0F, side / 2.0F, side * 0.45F, side * 0.4F, 0.0F, MetalContext::shared());
    });
    gesture.close();
  } else if (selected == Selected::wand) {
    MagicWandSettings settings;
    settings.contiguous = false;
    const auto wand = MagicWand::press(document, side / 2, side / 2, SelectionMode::replace, settings);
    wand->select(settings);
    wand->release();
  }
  static_cast<void>(document->composite());
  return document;
}

double processorSeconds() {
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

void antsStep(benchmark::State& state, Selected selected) {
  double now = 1.0;
  CanvasRenderer renderer(MetalContext::shared(), [&now] { return now; });
  renderer.document = photo(selected);
  BenchView view;
  renderer.drawInMTKView(view);
  const double before = processorSeconds();
  for (auto _ : state) {
    now += 1.0 / stepsPerSecond;
    if (renderer.drawInMTKView(view) != FrameResult::drawn) state.SkipWithError("the frame wasn't drawn");
  }
  const double secondsPerStep = (processorSeconds() - before) / static_cast<double>(state.iterations());
  state.counters["percent_of_a_core"] = secondsPerStep * stepsPerSecond * 100.0;
}

void antsWholeFrame(benchmark::State& state, Selected selected) {
  CanvasRenderer renderer(MetalContext::shared());
  const DocumentPtr& document = photo(selected);
  renderer.document = document;
  BenchView view;
  double step = 0.0;
  for (auto _ : state) {
    step = step < 5.0 ? step + 0.1 : 0.0;
    document->setViewportOffset(QPointF(step, step));
    if (renderer.drawInMTKView(view) != FrameResult::drawn) state.SkipWithError("the frame wasn't drawn");
  }
  document->setViewportOffset(QPointF(0.0, 0.0));
}

enum class Window { visible, hidden, minimised };

void antsInAWindow(benchmark::State& state, Selected selected, Window window) {
  constexpr double seconds = 5.0;
  const auto wait = [](double duration) {
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(duration * 1000.0), &loop, &QEventLoop::quit);
    loop.exec();
  };
  ToolState tools;
  CanvasPaneView pane(MetalContext::shared(), tools);
  pane.resize(viewWidth, viewHeight);
  pane.setDocument(photo(selected));
  pane.show();
  // Work in the background on the new selection ends first.
  wait(3.0);
  if (window == Window::hidden) pane.hide();
  if (window == Window::minimised) pane.setWindowState(Qt::WindowMinimized);
  wait(1.0);
  for (auto _ : state) {
    const double before = processorSeconds();
    wait(seconds);
    state.counters["percent_of_a_core"] = (processorSeconds() - before) * 100.0 / seconds;
  }
}

BENCHMARK_CAPTURE(antsStep, ellipse, Selected::ellipse)
    ->Name("AntsStep/ellipse")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(antsStep, wand, Selected::wand)->Name("AntsStep/wand")->Unit(benchmark::kMicrosecond);
#define ORVANEL_WHOLE(name, selected)                   \
  BENCHMARK_CAPTURE(antsWholeFrame, selected, selected) \
      ->Name("AntsWholeFrame/" name)                    \
      ->Unit(benchmark::kMillisecond)                   \
      ->UseRealTime()
ORVANEL_WHOLE("nothing", Selected::nothing);
ORVANEL_WHOLE("ellipse", Selected::ellipse);
ORVANEL_WHOLE("wand", Selected::wand);
#define ORVANEL_WINDOW(name, selected, window)               \
  BENCHMARK_CAPTURE(antsInAWindow, window, selected, window) \
      ->Name("AntsInAWindow/" name)                          \
      ->Unit(benchmark::kMillisecond)                        \
      ->UseRealTime()                                        \
      ->Iterations(1)
ORVANEL_WINDOW("nothing", Selected::nothing, Window::visible);
ORVANEL_WINDOW("ellipse", Selected::ellipse, Window::visible);
ORVANEL_WINDOW("wand", Selected::wand, Window::visible);
ORVANEL_WINDOW("wand/hidden", Selected::wand, Window::hidden);
ORVANEL_WINDOW("wand/minimised", Selected::wand, Window::minimised);

}  // namespace
}  // namespace orvanel
