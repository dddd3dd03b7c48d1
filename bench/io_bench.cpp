// Saving, loading, opening and exporting at practical sizes. The limits of the machine are measured beside
// them: writing and reading a file of that size, touching fresh memory, and decoding alone.
#include <benchmark/benchmark.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <unistd.h>
#include <zlib.h>

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
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
#include "PhotoLayers.h"
#include "ResidentMemory.h"
#include "io/archive/Deflate.h"
#include "io/document/DocumentIO.h"
#include "io/document/SaveSnapshot.h"
#include "io/files/PassingFile.h"
#include "io/image/FlatImage.h"
#include "model/Document.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

constexpr int side = 4096;
constexpr int layerCount = 20;
constexpr double mebibyte = 1024.0 * 1024.0;
constexpr int photoWidth = 6000;
constexpr int photoHeight = 4000;

bench::Depth depthOf(const benchmark::State& state) {
  return state.range(0) == 0 ? bench::Depth::fromEightBits : bench::Depth::full;
}

/// A document of photographs and the file it is saved to. Only one exists at a time.
class PhotoDocument {
 public:
  explicit PhotoDocument(bench::Depth depth) {
    DocumentContents contents{
        .name = QStringLiteral("Photos"), .width = side, .height = side, .colorMode = ColorMode::rgb16};
    for (int i = 0; i < layerCount; ++i) {
      contents.rootNodes.emplace_back(
          std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Photo %1").arg(i)},
                                  bench::photoLayer(side, side, depth, static_cast<std::uint32_t>(i))));
    }
    document_ = Document::create(std::move(contents), MetalContext::shared());
    // Flattened in advance, as a visible document is.
    static_cast<void>(document_->composite());
  }

  static PhotoDocument& of(bench::Depth depth) {
    static std::unique_ptr<PhotoDocument> current;
    static bench::Depth currentDepth = depth;
    if (current == nullptr || currentDepth != depth) {
      current.reset();
      current = std::make_unique<PhotoDocument>(depth);
      currentDepth = depth;
    }
    return *current;
  }

  [[nodiscard]] const DocumentPtr& document() const { return document_; }
  [[nodiscard]] QString path() const { return directory_.filePath(QStringLiteral("photos.tessel")); }
  [[nodiscard]] static std::int64_t rawBytes() { return std::int64_t{side} * side * 8 * layerCount; }
  void saveOnce() const {
    if (!QFile::exists(path())) {
      static_cast<void>(DocumentIO::saveSynchronously(document_, path(), MetalContext::shared()));
    }
  }

 private:
  DocumentPtr document_;
  QTemporaryDir directory_;
};

void reportRaw(benchmark::State& state) {
  state.counters["raw_MB/s"] = benchmark::Counter(static_cast<double>(PhotoDocument::rawBytes()) / 1e6,
                                                  benchmark::Counter::kIsIterationInvariantRate);
}

void SavePhotos(benchmark::State& state) {
  const PhotoDocument& photos = PhotoDocument::of(depthOf(state));
  const double before = residentBytes();
  forgetPeak();
  for (auto _ : state) {
    photos.document()->setFileMemory(nullptr);
    if (!DocumentIO::saveSynchronously(photos.document(), photos.path(), MetalContext::shared())) {
      state.SkipWithError("not saved");
    }
  }
  reportRaw(state);
  state.counters["extra_MiB"] = (peakBytes() - before) / mebibyte;
  state.counters["file_MB"] = static_cast<double>(QFileInfo(photos.path()).size()) / 1e6;
}
BENCHMARK(SavePhotos)
    ->ArgName("full_depth")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(2);

/// What no save can be faster than: copying a file of that size, bringing it to the disk and reading it back.
double copyTime(const QString& from, const QString& to) {
  const auto start = std::chrono::steady_clock::now();
  QFile::remove(to);
  auto file = AtomicFile::create(to);
  const auto source = FileHandle::openForReading(QFile::encodeName(from).toStdString());
  if (!file || !source) return 0.0;
  static_cast<void>((*file)->append(source->descriptor(), 0, static_cast<std::uint64_t>(source->size())));
  static_cast<void>((*file)->commit([](const std::string& path) -> Described<void> {
    const auto written = FileHandle::openForReading(path);
    if (!written) return because(written.error());
    constexpr std::int64_t pieceBytes = std::int64_t{1} << 20U;
    const std::int64_t pieces = written->size() / pieceBytes;
    tbb::parallel_for(std::int64_t{0}, pieces, [&](std::int64_t piece) {
      thread_local ByteBuffer bytes(pieceBytes);
      static_cast<void>(readPassing(written->descriptor(), bytes.span(), piece * pieceBytes));
    });
    return {};
  }));
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Saving again after a change of the tree alone, and after an edit of 300 x 300 pixels in one layer.
void SavePhotosAgain(benchmark::State& state) {
  const PhotoDocument& photos = PhotoDocument::of(bench::Depth::full);
  photos.saveOnce();
  Document& document = *photos.document();
  const bool isEdit = state.range(0) == 1;
  if (document.fileMemory() == nullptr) {
    static_cast<void>(
        DocumentIO::saveSynchronously(photos.document(), photos.path(), MetalContext::shared()));
  }
  const std::shared_ptr<Layer> layer = document.rootNodes.value().back().layer();
  constexpr int editSide = 300;
  const Texture mask = MetalContext::shared().makeTexture(maskPixelFormat, side, side);
  const std::vector<std::uint16_t> ones(editSide * editSide, 0x3C00);
  mask->writeRect({900, 900, editSide, editSide}, reinterpret_cast<const std::byte*>(ones.data()),
                  editSide * 2);
  document.selectNode(layer->id);
  int round = 0;
  double limit = 0.0;
  for (auto _ : state) {
    state.PauseTiming();
    if (isEdit) {
      document.selectMask(LayerMask(QUuid::createUuid(), std::make_shared<MaskTexture>(mask), true));
      document.invertActive();
      document.deselect();
    } else {
      document.rename(layer->id, QStringLiteral("Photo %1").arg(++round));
    }
    static_cast<void>(document.composite());
    limit += copyTime(photos.path(), photos.path() + QStringLiteral(".copy"));
    state.ResumeTiming();
    if (!DocumentIO::saveSynchronously(photos.document(), photos.path(), MetalContext::shared())) {
      state.SkipWithError("not saved");
    }
  }
  QFile::remove(photos.path() + QStringLiteral(".copy"));
  state.counters["limit_ms"] = limit * 1e3 / static_cast<double>(state.iterations());
}
BENCHMARK(SavePhotosAgain)
    ->ArgName("edit")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(3);

/// How large zlib's level 6 makes the rows of a layer that `SavePhotos` writes, and how large they are here.
void SizeBesideZlib6(benchmark::State& state) {
  const Texture layer = bench::photoLayer(side, side, depthOf(state), 0);
  constexpr int rows = 512;
  std::vector<std::byte> raw(std::size_t{side} * rows * 8);
  layer->readRect({0, 0, side, rows}, raw.data(), std::size_t{side} * 8);
  std::vector<unsigned char> packed(compressBound(raw.size()));
  constexpr std::size_t chunkBytes = std::size_t{1} << 20U;
  std::size_t ours = 0;
  for (std::size_t at = 0; at < raw.size(); at += chunkBytes) {
    ours += deflateChunk(std::span(raw).subspan(at, chunkBytes)).size();
  }
  uLongf theirs = packed.size();
  for (auto _ : state) {
    theirs = packed.size();
    compress2(packed.data(), &theirs, reinterpret_cast<const Bytef*>(raw.data()), raw.size(), 6);
  }
  state.counters["of_zlib6"] = static_cast<double>(ours) / static_cast<double>(theirs);
}
BENCHMARK(SizeBesideZlib6)
    ->ArgName("full_depth")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

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

/// The part of a save that runs on the main thread.
void SaveOnMainThread(benchmark::State& state) {
  const PhotoDocument& photos = PhotoDocument::of(depthOf(state));
  for (auto _ : state) benchmark::DoNotOptimize(SaveSnapshot::take(*photos.document()));
}
BENCHMARK(SaveOnMainThread)->ArgName("full_depth")->Arg(1)->Unit(benchmark::kMillisecond);

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
  const PhotoDocument& photos = PhotoDocument::of(depthOf(state));
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
  const PhotoDocument& photos = PhotoDocument::of(depthOf(state));
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

/// The limit: writing a file of the same size, flushing it to the disk and reading it again.
void LimitWriteSyncRead(benchmark::State& state) {
  const PhotoDocument& photos = PhotoDocument::of(depthOf(state));
  photos.saveOnce();
  const std::int64_t size = QFileInfo(photos.path()).size();
  const QByteArray block(4 << 20, 'x');
  QByteArray readBack(block.size(), Qt::Uninitialized);
  for (auto _ : state) {
    QFile file(photos.path() + QStringLiteral(".limit"));
    if (!file.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Unbuffered)) return;
    for (std::int64_t done = 0; done < size; done += block.size()) file.write(block);
    fsync(file.handle());
    file.seek(0);
    while (file.read(readBack.data(), readBack.size()) > 0) benchmark::ClobberMemory();
    file.remove();
  }
  reportRaw(state);
}
BENCHMARK(LimitWriteSyncRead)
    ->ArgName("full_depth")
    ->Arg(0)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Iterations(1);

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
