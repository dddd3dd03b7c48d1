// Loading, opening and exporting at practical sizes. The limits of the machine are measured beside them:
// touching fresh memory, and decoding alone.
#include <benchmark/benchmark.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <unistd.h>

#include <QBuffer>
#include <QImageReader>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "BenchView.h"
#include "PhotoDocument.h"
#include "io/archive/Deflate.h"
#include "io/document/DocumentIO.h"
#include "io/document/SavedFile.h"
#include "io/image/FlatImage.h"
#include "model/Document.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using bench::PhotoDocument;
using bench::reportRaw;

constexpr int photoWidth = 6000;
constexpr int photoHeight = 4000;

/// One layer, which is read in several places at once, with this many cores.
void LoadOneLayer(benchmark::State& state) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("layer.tessel"));
  constexpr int layerSide = 8192;
  {
    const auto layer =
        std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Photo")},
                                bench::photoLayer(layerSide, layerSide, bench::Depth::full, 0));
    const DocumentPtr document = Document::create({.name = QStringLiteral("Layer"),
                                                   .width = layerSide,
                                                   .height = layerSide,
                                                   .colorMode = ColorMode::rgb16,
                                                   .rootNodes = {layer}},
                                                  MetalContext::shared());
    if (!DocumentIO::saveSynchronously(document, path, MetalContext::shared()))
      state.SkipWithError("not saved");
  }
  const tbb::global_control cores(tbb::global_control::max_allowed_parallelism,
                                  static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    const auto loaded = DocumentIO::loadSynchronously(path, MetalContext::shared());
    if (!loaded) state.SkipWithError("not loaded");
  }
  state.SetBytesProcessed(state.iterations() * std::int64_t{layerSide} * layerSide * 8);
}
BENCHMARK(LoadOneLayer)
    ->ArgName("cores")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

/// Memory for the document's pixels, touched by all cores and given back.
void touchFreshMemory() {
  constexpr std::size_t blockBytes = std::size_t{128} << 10U;
  std::vector<std::byte*> blocks(static_cast<std::size_t>(PhotoDocument::rawBytes()) / blockBytes);
  tbb::parallel_for(std::size_t{0}, blocks.size(), [&](std::size_t index) {
    constexpr std::size_t pageBytes = 4096;
    blocks[index] = tileMemory::allocate(blockBytes);
    for (std::size_t at = 0; at < blockBytes; at += pageBytes) blocks[index][at] = std::byte{1};
  });
  for (std::byte* block : blocks) tileMemory::release(block, blockBytes);
  tileMemory::trim();
}

/// The limit of loading: inflating all chunks of the document's file, from the cache into memory that is
/// warm.
double inflateSeconds(const PhotoDocument& photos) {
  const auto saved = std::dynamic_pointer_cast<const SavedFile>(photos.document()->fileMemory());
  const auto file = saved != nullptr ? saved->open() : std::nullopt;
  if (!file) return 0.0;
  std::vector<StoredChunk> chunks;
  for (const auto& [path, surface] : saved->surfaces) {
    if (path.ends_with(".layerdata"))
      chunks.insert(chunks.end(), surface.chunks.begin(), surface.chunks.end());
  }
  const auto start = std::chrono::steady_clock::now();
  tbb::parallel_for(std::size_t{0}, chunks.size(), [&](std::size_t index) {
    const StoredChunk& chunk = chunks[index];
    thread_local std::vector<std::byte> stored;
    thread_local std::vector<std::byte> raw;
    stored.resize(std::max<std::size_t>(stored.size(), chunk.storedSize));
    raw.resize(std::max<std::size_t>(raw.size(), chunk.size));
    const auto part = std::span(stored).first(chunk.storedSize);
    static_cast<void>(
        ::pread(file->descriptor(), part.data(), part.size(), static_cast<off_t>(chunk.offset)));
    bool isGiven = false;
    InflateStream stream([&]() -> Described<std::span<const std::byte>> {
      return std::exchange(isGiven, true) ? std::span<const std::byte>() : part;
    });
    if (stream.read(std::span(raw).first(chunk.size))) benchmark::DoNotOptimize(raw.data());
  });
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// A virtual machine may have to ask its host for memory that nobody used lately, which takes longer than
/// inflating into it. Loading is measured with memory that the machine has at hand.
void LoadPhotos(benchmark::State& state) {
  const PhotoDocument& photos = PhotoDocument::of(bench::depthOf(state));
  photos.saveOnce();
  double freshSeconds = 0.0;
  double inflatingSeconds = 0.0;
  double loadSeconds = 0.0;
  const auto secondsSince = [](std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  for (auto _ : state) {
    state.PauseTiming();
    inflatingSeconds += inflateSeconds(photos);
    // The second time, the machine has the memory at hand.
    touchFreshMemory();
    const auto fresh = std::chrono::steady_clock::now();
    touchFreshMemory();
    freshSeconds += secondsSince(fresh);
    const auto load = std::chrono::steady_clock::now();
    {
      state.ResumeTiming();
      const auto loaded = DocumentIO::loadSynchronously(photos.path(), MetalContext::shared());
      state.PauseTiming();
      loadSeconds += secondsSince(load);
      if (!loaded) state.SkipWithError("not loaded");
    }
    state.ResumeTiming();
  }
  reportRaw(state);
  const auto times = static_cast<double>(state.iterations());
  state.counters["fresh_ms"] = freshSeconds * 1e3 / times;
  state.counters["inflate_ms"] = inflatingSeconds * 1e3 / times;
  state.counters["of_slower_limit"] = std::max(freshSeconds, inflatingSeconds) / loadSeconds;
}
BENCHMARK(LoadPhotos)
    ->ArgName("full_depth")
    ->Arg(1)
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(2);

/// The same in a separate process.
void LoadPhotosAsProcess(benchmark::State& state) {
  const PhotoDocument& photos = PhotoDocument::of(bench::depthOf(state));
  photos.saveOnce();
  for (auto _ : state) {
    state.PauseTiming();
    touchFreshMemory();
    state.ResumeTiming();
    QProcess info;
    info.setStandardOutputFile(QProcess::nullDevice());
    info.start(QStringLiteral(ORVANEL_CLI), {QStringLiteral("info"), photos.path()});
    if (!info.waitForFinished(-1) || info.exitCode() != 0) state.SkipWithError("not loaded");
  }
  reportRaw(state);
}
BENCHMARK(LoadPhotosAsProcess)
    ->ArgName("full_depth")
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

/// The limit of loading: memory for the same pixels, touched for the first time.
void LimitFreshMemory(benchmark::State& state) {
  for (auto _ : state) touchFreshMemory();
  reportRaw(state);
}
BENCHMARK(LimitFreshMemory)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(2);

/// A JPEG of 24 megapixels on the disk.
const QString& photoFile() {
  static const QTemporaryDir directory;
  static const QString path = [] {
    QString file = directory.filePath(QStringLiteral("photo.jpg"));
    bench::photoImage(photoWidth, photoHeight, 1).save(file, "jpeg", 92);
    return file;
  }();
  return path;
}

void LimitDecodeJpeg(benchmark::State& state) {
  const QString& path = photoFile();
  for (auto _ : state) benchmark::DoNotOptimize(QImageReader(path).read());
}
BENCHMARK(LimitDecodeJpeg)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

void OpenJpegAndShow(benchmark::State& state) {
  const QString& path = photoFile();
  for (auto _ : state) {
    const auto opened = openImage(path, MetalContext::shared());
    if (!opened) return state.SkipWithError("not opened");
    (*opened)->zoomFitOnScreen(viewWidth, viewHeight);
    CanvasRenderer renderer(MetalContext::shared());
    renderer.document = *opened;
    BenchView view;
    if (renderer.drawInMTKView(view) != FrameResult::drawn) state.SkipWithError("not shown");
  }
}
BENCHMARK(OpenJpegAndShow)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

void ExportPng(benchmark::State& state) {
  const auto document = openImage(photoFile(), MetalContext::shared());
  if (!document) return state.SkipWithError("not opened");
  const ConstTexture pixels = (*document)->rootNodes.value().front().layer()->texture.value();
  double megabytes = 0.0;
  for (auto _ : state) {
    const auto png =
        exportImage(*pixels, ColorMode::rgb8, Document::ImageFileFormat::png, MetalContext::shared());
    megabytes = png.has_value() ? static_cast<double>(png->size()) / 1e6 : 0.0;
  }
  state.counters["file_MB"] = megabytes;
}
BENCHMARK(ExportPng)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

/// The limit for size: what the image library's own writer makes at zlib's level 1.
void LimitEncodePng(benchmark::State& state) {
  const QImage image = QImageReader(photoFile()).read();
  double megabytes = 0.0;
  constexpr int level1 = 85;
  for (auto _ : state) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "png", level1);
    megabytes = static_cast<double>(buffer.size()) / 1e6;
  }
  state.counters["file_MB"] = megabytes;
}
BENCHMARK(LimitEncodePng)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(1);

}  // namespace
}  // namespace orvanel
