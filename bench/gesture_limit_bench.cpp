// What the memory alone allows a frame of a rotation at fit: each sample of the view reads the two by two
// pixels at its place in the rotated layer and its mask, from wherever they stand, and nothing else is done.
// Compare with GestureFrame/*/rotate/fit, which reads the samples of the other layers besides.
#include <benchmark/benchmark.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "BenchView.h"
#include "FeelDocuments.h"
#include "raster/Prefetch.h"

namespace orvanel {
namespace {

/// Where the upper pixel pair and the lower one of each sample of a row stand; one read of a pair fetches its
/// cache line.
void findPairs(const Surface& surface, const QTransform& toLayer, int y,
               std::vector<const std::byte*>& pairs) {
  const auto pixelBytes = static_cast<std::size_t>(surface.pixelBytes());
  QPointF place = toLayer.map(QPointF(0.0, y));
  const QPointF step(toLayer.m11(), toLayer.m12());
  for (int x = 0; x < viewHeight; ++x, place += step) {
    const int left = static_cast<int>(place.x());
    const int top = static_cast<int>(place.y());
    if (left < 0 || top < 0 || left >= surface.width() - 1 || top >= surface.height() - 1) continue;
    for (const int row : {top, top + 1}) {
      const Tile& tile = surface.tile(surface.tileIndex(left / tileSide, row / tileSide));
      const auto index = static_cast<std::size_t>(row % tileSide * tileSide + left % tileSide);
      pairs.push_back(tile.data() + index * pixelBytes);
    }
  }
}

int readRow(const Surface& pixels, const Surface* mask, const QTransform& toLayer, int y) {
  thread_local std::vector<const std::byte*> pairs;
  pairs.clear();
  findPairs(pixels, toLayer, y, pairs);
  if (mask != nullptr) findPairs(*mask, toLayer, y, pairs);
  constexpr std::size_t ahead = 64;
  int sum = 0;
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    prefetch(pairs[std::min(i + ahead, pairs.size() - 1)]);
    sum += std::to_integer<int>(*pairs[i]);
  }
  return sum;
}

void limitOfRotatedReads(benchmark::State& state, DocumentPtr (*makeDocument)()) {
  const DocumentPtr document = makeDocument();
  const std::shared_ptr<Layer> layer = document->activeLayer();
  const ConstTexture pixels = layer->texture.value();
  const std::shared_ptr<LayerMask> mask = layer->mask.value();
  const double scale = pixels->height() / static_cast<double>(viewHeight);
  int step = 0;
  for (auto _ : state) {
    const double middle = pixels->height() / 2.0;
    const QTransform toLayer = QTransform()
                                   .translate(middle, middle)
                                   .rotateRadians(0.03 * (++step % 100))
                                   .translate(-middle, -middle)
                                   .scale(scale, scale);
    tbb::parallel_for(0, viewHeight, [&](int y) {
      const Surface* masked = mask != nullptr ? mask->maskTexture->texture.get() : nullptr;
      benchmark::DoNotOptimize(readRow(*pixels, masked, toLayer, y));
    });
  }
}
BENCHMARK_CAPTURE(limitOfRotatedReads, A, bench::documentA)
    ->Name("LimitRotatedReads/A")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(limitOfRotatedReads, B, bench::documentB)
    ->Name("LimitRotatedReads/B")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace orvanel
