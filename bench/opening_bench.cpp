// From asking for a file to its picture on the screen, in a window of usual size, and to its last pixel.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QTemporaryDir>
#include <QThreadPool>
#include <memory>

#include "PhotoLayers.h"
#include "app/DocumentFiles.h"
#include "app/MainWindow.h"
#include "app/dialogs/WindowDialogs.h"
#include "canvas/CanvasPaneView.h"
#include "io/document/DocumentIO.h"

namespace orvanel {
namespace {

constexpr int side = 4096;
constexpr double patience = 60000.0;

double milliseconds(const QElapsedTimer& timer) {
  return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// Takes the time of the first frame that shows a picture.
class FirstPicture : public QObject {
 public:
  FirstPicture(LoadingView& view, const QElapsedTimer& timer) : view_(view), timer_(timer) {
    view_.installEventFilter(this);
  }
  double shownAfter = 0.0;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::Paint || !view_.showsPicture() || shownAfter > 0.0) return false;
    view_.removeEventFilter(this);
    QApplication::sendEvent(watched, event);
    shownAfter = milliseconds(timer_);
    return true;
  }

 private:
  LoadingView& view_;
  const QElapsedTimer& timer_;
};

QString writePhotos(const QString& folder, int layers) {
  DocumentContents contents{
      .name = QStringLiteral("Photos"), .width = side, .height = side, .colorMode = ColorMode::rgb16};
  for (int i = 0; i < layers; ++i) {
    contents.rootNodes.emplace_back(std::make_shared<Layer>(
        NodeValues{.name = QStringLiteral("Photo %1").arg(i)},
        bench::photoLayer(side, side, bench::Depth::fromEightBits, static_cast<std::uint32_t>(i))));
  }
  const QString path = folder + QStringLiteral("/photos.tessel");
  static_cast<void>(DocumentIO::saveSynchronously(
      Document::create(std::move(contents), MetalContext::shared()), path, MetalContext::shared()));
  return path;
}

/// A document of so many layers of 4096 x 4096, or a JPEG of that number of megapixels.
void openAndShow(benchmark::State& state, const QString& path) {
  AppState app(MetalContext::shared());
  WindowDialogs dialogs;
  DocumentFiles files(app, dialogs);
  MainWindow window(app, files, dialogs, [] {});
  window.show();
  QApplication::processEvents();
  double shown = 0.0;
  for (auto _ : state) {
    QElapsedTimer timer;
    timer.start();
    FirstPicture first(window.contentView().canvasPane().loadingView(), timer);
    files.open({path});
    while (app.windowState.documents.value().empty() && milliseconds(timer) < patience) {
      QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    state.PauseTiming();
    shown += first.shownAfter;
    app.windowState.closeAllDocuments();
    QApplication::processEvents();
    QThreadPool::globalInstance()->waitForDone();
    state.ResumeTiming();
  }
  state.counters["picture_ms"] = shown / static_cast<double>(state.iterations());
}

void OpenDocumentToPicture(benchmark::State& state) {
  const QTemporaryDir folder;
  openAndShow(state, writePhotos(folder.path(), static_cast<int>(state.range(0))));
}
BENCHMARK(OpenDocumentToPicture)
    ->ArgName("layers")
    ->Arg(4)
    ->Arg(12)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

void OpenJpegToPicture(benchmark::State& state) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("photo.jpg"));
  constexpr int width = 4800;
  constexpr int height = 3200;
  bench::photoImage(width, height, 1).save(path, "jpeg", 92);
  openAndShow(state, path);
}
BENCHMARK(OpenJpegToPicture)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

}  // namespace
}  // namespace orvanel
