// Documents and their history: the cost of a new canvas, of a snapshot on the calling thread, and of a long
// history of small edits to a photo.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "ResidentMemory.h"
#include "model/Document.h"
#include "raster/MetalContext.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {
namespace {

constexpr double mebibyte = 1024.0 * 1024.0;

/// Half-float pixels with the smooth gradients and the fine noise of a photograph.
std::unique_ptr<Surface> photo(int side) {
  auto surface = std::make_unique<Surface>(PixelFormat::rgba16Float, side, side);
  std::mt19937 random(3);
  std::vector<std::array<std::uint16_t, 4>> rows(static_cast<std::size_t>(side) * tileSide);
  for (int top = 0; top < side; top += tileSide) {
    for (int y = 0; y < tileSide; ++y) {
      for (int x = 0; x < side; ++x) {
        const auto base = 0x3000U + static_cast<std::uint32_t>((x * 3 + (top + y) * 2) % 2048);
        const std::uint32_t noise = random();
        rows[static_cast<std::size_t>(y * side + x)] = {
            static_cast<std::uint16_t>(base + (noise & 31U)),
            static_cast<std::uint16_t>(base + (noise >> 8U & 31U)),
            static_cast<std::uint16_t>(base + (noise >> 16U & 31U)), 0x3C00};
      }
    }
    surface->writeRect({0, top, side, tileSide}, reinterpret_cast<const std::byte*>(rows.data()),
                       static_cast<std::size_t>(side) * 8);
  }
  return surface;
}

void snapshotWholeLayer(benchmark::State& state) {
  const auto layer = photo(4096);
  for (auto _ : state) {
    auto snapshot = TextureSnapshot::capture(*layer, MetalContext::shared());
    benchmark::DoNotOptimize(snapshot);
    state.PauseTiming();
    TextureSnapshot::waitForCompression();
    snapshot.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(snapshotWholeLayer)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);

/// Every iteration would grow the history, so there is only one; the counters are the result.
void fiftySnapshotsBetweenSmallEdits(benchmark::State& state) {
  const auto layer = photo(4096);
  std::mt19937 random(5);
  std::vector<std::uint64_t> patch(100 * 100);
  for (auto _ : state) {
    std::vector<std::shared_ptr<TextureSnapshot>> history;
    history.push_back(TextureSnapshot::capture(*layer, MetalContext::shared()));
    TextureSnapshot::waitForCompression();
    const auto cost = [&history] {
      std::int64_t total = 0;
      for (const auto& snapshot : history) total += snapshot->compressedSize();
      return static_cast<double>(total);
    };
    const double firstCost = cost();
    const double firstResident = residentBytes();
    for (int edit = 0; edit < 50; ++edit) {
      for (std::uint64_t& pixel : patch) pixel = 0x3C00380038003800ULL + (random() & 0x001F001F001FULL);
      const int x = static_cast<int>(random() % 3996);
      const int y = static_cast<int>(random() % 3996);
      layer->writeRect({x, y, 100, 100}, reinterpret_cast<const std::byte*>(patch.data()), 100 * 8);
      history.push_back(TextureSnapshot::capture(*layer, MetalContext::shared()));
    }
    TextureSnapshot::waitForCompression();
    state.counters["firstCopyMiB"] = firstCost / mebibyte;
    state.counters["addedCostMiB"] = (cost() - firstCost) / mebibyte;
    state.counters["addedResidentMiB"] = (residentBytes() - firstResident) / mebibyte;
  }
}
BENCHMARK(fiftySnapshotsBetweenSmallEdits)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

void newLargestDocument(benchmark::State& state) {
  MetalContext& context = MetalContext::shared();
  for (auto _ : state) {
    const double before = residentBytes();
    const auto document = Document::create(QStringLiteral("Large"), 16384, 16384, ColorMode::rgb16, context);
    state.PauseTiming();
    state.counters["residentMiB"] = (residentBytes() - before) / mebibyte;
    state.ResumeTiming();
  }
}
BENCHMARK(newLargestDocument)->Unit(benchmark::kMillisecond)->UseRealTime();

void emptyLayerInLargestDocument(benchmark::State& state) {
  const auto document =
      Document::create(QStringLiteral("Large"), 16384, 16384, ColorMode::rgb16, MetalContext::shared());
  const double before = residentBytes();
  for (auto _ : state) document->addLayer(QStringLiteral("Layer"));
  state.counters["residentMiBPerLayer"] =
      (residentBytes() - before) / mebibyte / static_cast<double>(state.iterations());
}
BENCHMARK(emptyLayerInLargestDocument)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);

}  // namespace
}  // namespace orvanel
