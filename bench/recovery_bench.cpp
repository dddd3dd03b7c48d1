// What the journal of a large document costs while it is edited: bytes, background work, and the main thread.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include "PhotoLayers.h"
#include "io/document/DocumentIO.h"
#include "recovery/Recovery.h"

namespace orvanel {
namespace {

constexpr int side = 4096;
constexpr int layerCount = 20;
constexpr int editCount = 100;
constexpr int editSide = 300;

DocumentPtr photos() {
  DocumentContents contents{
      .name = QStringLiteral("Photos"), .width = side, .height = side, .colorMode = ColorMode::rgb16};
  for (int i = 0; i < layerCount; ++i) {
    contents.rootNodes.emplace_back(
        std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Photo %1").arg(i)},
                                bench::photoLayer(side, side, bench::Depth::full, static_cast<unsigned>(i))));
  }
  return Document::create(std::move(contents), MetalContext::shared());
}

/// Inverts a square in one of the layers.
void edit(Document& document, int number) {
  document.selectNode(document.rootNodes.value()[static_cast<std::size_t>(number % layerCount)].id());
  const Texture mask = MetalContext::shared().makeTexture(maskPixelFormat, side, side);
  const std::vector<std::uint16_t> ones(editSide * editSide, 0x3C00);
  const int corner = 37 * number % (side - editSide);
  mask->writeRect({corner, side - editSide - corner, editSide, editSide},
                  reinterpret_cast<const std::byte*>(ones.data()), editSide * 2);
  document.selectMask(LayerMask(QUuid::createUuid(), std::make_shared<MaskTexture>(mask), true));
  document.invertActive();
}

void waitForRecord(const Recovery& recovery, std::int64_t count) {
  while (recovery.figures().records < count) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

double milliseconds(std::chrono::nanoseconds time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

/// Each of the edits has a record of its own. Unsaved, the document is written whole at first.
void JournalOfEdits(benchmark::State& state) {
  const DocumentPtr document = photos();
  const QTemporaryDir directory;
  if (state.range(0) == 1) {
    const QString path = directory.filePath(QStringLiteral("photos.tessel"));
    static_cast<void>(DocumentIO::saveSynchronously(document, path, MetalContext::shared()));
  }
  RecoverySettings settings;
  settings.folder = directory.filePath(QStringLiteral("recovery"));
  settings.interval = std::chrono::milliseconds(1);
  for (auto _ : state) {
    Recovery recovery(settings);
    document->setDirty(true);
    recovery.follow(document);
    waitForRecord(recovery, 1);
    recovery.recordNow();
    const RecoveryFigures first = recovery.figures();
    for (int number = 0; number < editCount; ++number) {
      const std::int64_t before = recovery.figures().records;
      edit(*document, number);
      waitForRecord(recovery, before + 1);
    }
    recovery.recordNow();
    const RecoveryFigures all = recovery.figures();
    state.counters["first_MB"] = static_cast<double>(first.bytesWritten) / 1e6;
    state.counters["first_cpu_ms"] = milliseconds(first.backgroundWork);
    state.counters["edits_MB"] = static_cast<double>(all.bytesWritten - first.bytesWritten) / 1e6;
    state.counters["edits_cpu_ms"] = milliseconds(all.backgroundWork - first.backgroundWork);
    state.counters["longest_hold_ms"] = milliseconds(all.longestHold);
    recovery.closed(*document);
  }
}
BENCHMARK(JournalOfEdits)
    ->ArgName("saved")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);

}  // namespace
}  // namespace orvanel
