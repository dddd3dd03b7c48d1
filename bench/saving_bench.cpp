// Saving at practical sizes. The limits of the machine are measured beside it: deflating alone, and writing,
// copying or sharing a file of that size.
#include <benchmark/benchmark.h>
#include <tbb/parallel_for.h>
#include <unistd.h>
#include <zlib.h>

#include <QFile>
#include <QFileInfo>
#include <chrono>
#include <memory>
#include <span>
#include <vector>

#include "PhotoDocument.h"
#include "ResidentMemory.h"
#include "io/archive/Deflate.h"
#include "io/document/DocumentIO.h"
#include "io/document/SaveSnapshot.h"
#include "io/files/Descriptor.h"
#include "io/files/FileOperations.h"
#include "io/files/PassingFile.h"
#include "model/Document.h"

namespace orvanel {
namespace {

using bench::PhotoDocument;
using bench::reportRaw;

constexpr int side = PhotoDocument::side;
constexpr double mebibyte = 1024.0 * 1024.0;

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::vector<ConstTexture> layersOf(const PhotoDocument& photos) {
  std::vector<ConstTexture> layers;
  for (const LayerNode& node : photos.document()->rootNodes.value())
    layers.push_back(node.layer()->texture.value());
  return layers;
}

/// What no first save can be faster than: deflating all pixels on all cores, in the chunks of a save.
double deflateSeconds(const PhotoDocument& photos) {
  constexpr int rows = 32;
  constexpr std::size_t grid = 4096;
  constexpr std::size_t rowBytes = std::size_t{side} * 8;
  const std::vector<ConstTexture> layers = layersOf(photos);
  const auto start = std::chrono::steady_clock::now();
  tbb::parallel_for(0, static_cast<int>(layers.size()) * side / rows, [&](int chunk) {
    thread_local ByteBuffer raw(rows * rowBytes);
    const int row = chunk * rows;
    layers[static_cast<std::size_t>(row / side)]->readRect({0, row % side, side, rows}, raw.data(), rowBytes);
    benchmark::DoNotOptimize(crc32(raw.span()));
    benchmark::DoNotOptimize(crc32(deflateChunk(raw.span(), grid).span()));
  });
  return secondsSince(start);
}

void SavePhotos(benchmark::State& state) {
  const PhotoDocument& photos = PhotoDocument::of(bench::depthOf(state));
  const double before = residentBytes();
  forgetPeak();
  double saving = 0.0;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    photos.document()->setFileMemory(nullptr);
    if (!DocumentIO::saveSynchronously(photos.document(), photos.path(), MetalContext::shared())) {
      state.SkipWithError("not saved");
    }
    saving += secondsSince(start);
  }
  reportRaw(state);
  state.counters["extra_MiB"] = (peakBytes() - before) / mebibyte;
  const double deflating = deflateSeconds(photos);
  state.counters["deflate_ms"] = deflating * 1e3;
  state.counters["deflate_share"] = deflating * static_cast<double>(state.iterations()) / saving;
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
  const double seconds = secondsSince(start);
  QFile::remove(to);
  return seconds;
}

/// The same where a file system shares the blocks of all of it; 0 where it doesn't.
double shareTime(const QString& from, const QString& to) {
  const auto start = std::chrono::steady_clock::now();
  FileOperations disk;
  const auto source = FileHandle::openForReading(QFile::encodeName(from).toStdString());
  const Descriptor target(disk.createFile(QFile::encodeName(to).toStdString(), 0600));
  constexpr std::size_t toTheEnd = 0;
  const bool isShared = source && target.isOpen() &&
                        disk.shareRange(source->descriptor(), 0, target.number(), 0, toTheEnd) == 0 &&
                        disk.sync(target.number()) == 0;
  const double seconds = secondsSince(start);
  QFile::remove(to);
  return isShared ? seconds : 0.0;
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
  double sharing = 0.0;
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
    sharing += shareTime(photos.path(), photos.path() + QStringLiteral(".copy"));
    state.ResumeTiming();
    if (!DocumentIO::saveSynchronously(photos.document(), photos.path(), MetalContext::shared())) {
      state.SkipWithError("not saved");
    }
  }
  const auto times = static_cast<double>(state.iterations());
  state.counters["limit_ms"] = limit * 1e3 / times;
  if (sharing > 0.0) state.counters["share_limit_ms"] = sharing * 1e3 / times;
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
  const Texture layer = bench::photoLayer(side, side, bench::depthOf(state), 0);
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

/// The part of a save that runs on the main thread.
void SaveOnMainThread(benchmark::State& state) {
  const PhotoDocument& photos = PhotoDocument::of(bench::depthOf(state));
  for (auto _ : state) benchmark::DoNotOptimize(SaveSnapshot::take(*photos.document()));
}
BENCHMARK(SaveOnMainThread)->ArgName("full_depth")->Arg(1)->Unit(benchmark::kMillisecond);

/// The limit: writing a file of the same size, flushing it to the disk and reading it again.
void LimitWriteSyncRead(benchmark::State& state) {
  const PhotoDocument& photos = PhotoDocument::of(bench::depthOf(state));
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

}  // namespace
}  // namespace orvanel
