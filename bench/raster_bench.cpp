// Flattening, snapshots and surfaces at practical sizes. The limit of the machine is measured in the same
// run: reading the same bytes with all threads.
#include <benchmark/benchmark.h>
#include <tbb/parallel_for.h>

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "raster/CompositePlan.h"
#include "raster/MetalContext.h"

namespace orvanel {
namespace {

constexpr int side = 4096;
constexpr int layerCount = 20;

/// A tile of plausible values for the format: halves of 0 to 1, or integers of the whole range.
void fillTile(Surface& surface, int index, std::mt19937& random) {
  std::byte* bytes = surface.overwriteTile(index);
  auto* words = reinterpret_cast<std::uint16_t*>(bytes);
  const std::size_t count = surface.tileBytes() / 2;
  std::uint32_t state = random();
  for (std::size_t i = 0; i < count; ++i) {
    state = state * 1664525U + 1013904223U;
    const std::uint32_t value = state >> 16U;
    words[i] =
        static_cast<std::uint16_t>(isFloatFormat(surface.format()) ? 0x2C00U + value % 0x1000U : value);
  }
}

struct Stack {
  ColorMode mode;
  std::vector<std::unique_ptr<Surface>> layers;
  std::vector<std::unique_ptr<Surface>> masks;
  std::unique_ptr<Surface> canvas;
  std::int64_t bytes = 0;

  Stack(ColorMode colorMode, bool masked, int filledPercent) : mode(colorMode) {
    std::mt19937 random(7);
    for (int i = 0; i < layerCount; ++i) {
      layers.push_back(std::make_unique<Surface>(layerPixelFormat(mode), side, side));
      fill(*layers.back(), filledPercent, random);
      if (masked) {
        masks.push_back(std::make_unique<Surface>(maskPixelFormat, side, side));
        fill(*masks.back(), filledPercent, random);
      }
    }
    canvas = std::make_unique<Surface>(compositePixelFormat(mode), side, side);
  }

  void fill(Surface& surface, int filledPercent, std::mt19937& random) {
    for (int index = 0; index < surface.tileCount(); ++index) {
      if (static_cast<int>(random() % 100) >= filledPercent) continue;
      fillTile(surface, index, random);
      bytes += static_cast<std::int64_t>(surface.tileBytes());
    }
  }

  CompositeReport flatten(CompositeScope scope) {
    CompositePlan plan(*canvas);
    for (int i = 0; i < layerCount; ++i) {
      CompositeParams params;
      params.blendMode = rawValue(i % 2 == 0 ? BlendMode::normal : BlendMode::multiply);
      params.opacity = 0.7F;
      params.colorMode = rawValue(mode);
      params.hasMask = masks.empty() ? 0 : 1;
      plan.compositeLayer(CompositePlan::canvasTarget(), params, *layers[static_cast<std::size_t>(i)],
                          masks.empty() ? nullptr : masks[static_cast<std::size_t>(i)].get());
    }
    return plan.run(scope);
  }
};

/// Only one stack exists at a time; a full one takes 2.5 GiB.
Stack& stackOf(ColorMode mode, bool masked, int filledPercent) {
  static std::unique_ptr<Stack> current;
  static int currentKey = -1;
  const int key = static_cast<int>(rawValue(mode)) * 1000 + (masked ? 500 : 0) + filledPercent;
  if (key != currentKey) {
    current.reset();
    current = std::make_unique<Stack>(mode, masked, filledPercent);
    currentKey = key;
  }
  return *current;
}

void reportThroughput(benchmark::State& state, std::int64_t bytes) {
  state.SetBytesProcessed(state.iterations() * bytes);
  state.counters["megapixels"] = static_cast<double>(side) * side / 1e6;
}

/// Reads as fast as the machine can, with its widest vectors.
[[gnu::target_clones("avx512f", "avx2", "default"), gnu::optimize("O3")]] std::uint64_t xorOf(
    const std::uint64_t* words, std::size_t count) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < count; ++i) sum ^= words[i];
  return sum;
}

std::uint64_t readTile(const Tile& tile) {
  if (tile.isUniform()) return 0;
  return xorOf(reinterpret_cast<const std::uint64_t*>(tile.data()), tile.buffer()->bytes().size() / 8);
}

void readLimit(benchmark::State& state, ColorMode mode, bool masked, int filledPercent) {
  Stack& stack = stackOf(mode, masked, filledPercent);
  for (auto _ : state) {
    tbb::parallel_for(0, stack.canvas->tileCount(), [&](int index) {
      std::uint64_t sum = 0;
      for (const auto& layer : stack.layers) sum ^= readTile(layer->tile(index));
      for (const auto& mask : stack.masks) sum ^= readTile(mask->tile(index));
      benchmark::DoNotOptimize(sum);
    });
  }
  reportThroughput(state, stack.bytes);
}

void flatten(benchmark::State& state, ColorMode mode, bool masked, int filledPercent) {
  Stack& stack = stackOf(mode, masked, filledPercent);
  for (auto _ : state) stack.flatten(CompositeScope::allTiles);
  reportThroughput(state, stack.bytes);
}

void flattenAfterSmallEdit(benchmark::State& state) {
  Stack& stack = stackOf(ColorMode::rgb16, false, 100);
  stack.flatten(CompositeScope::changedTiles);
  Surface& edited = *stack.layers[7];
  const std::vector<std::uint64_t> patch(256 * 256, 0x3C00380034003000ULL);
  for (auto _ : state) {
    state.PauseTiming();
    edited.writeRect({1000, 1000, 256, 256}, reinterpret_cast<const std::byte*>(patch.data()), 256 * 8);
    for (int tileY = 7; tileY <= 9; ++tileY) {
      for (int tileX = 7; tileX <= 9; ++tileX) (void)edited.editTile(edited.tileIndex(tileX, tileY));
    }
    state.ResumeTiming();
    state.counters["tiles"] = stack.flatten(CompositeScope::changedTiles).tilesMade;
  }
}

void flattenUnchanged(benchmark::State& state) {
  Stack& stack = stackOf(ColorMode::rgb16, false, 100);
  stack.flatten(CompositeScope::changedTiles);
  for (auto _ : state) state.counters["tiles"] = stack.flatten(CompositeScope::changedTiles).tilesMade;
}

#define ORVANEL_FLATTEN(name, ...)                                                               \
  BENCHMARK_CAPTURE(readLimit, name, __VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime(); \
  BENCHMARK_CAPTURE(flatten, name, __VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()

ORVANEL_FLATTEN(rgb16, ColorMode::rgb16, false, 100);
BENCHMARK(flattenAfterSmallEdit)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(50);
BENCHMARK(flattenUnchanged)->Unit(benchmark::kMillisecond)->UseRealTime();
ORVANEL_FLATTEN(rgb16Masked, ColorMode::rgb16, true, 100);
ORVANEL_FLATTEN(rgb16MostlyEmpty, ColorMode::rgb16, false, 20);
ORVANEL_FLATTEN(rgb8, ColorMode::rgb8, false, 100);
ORVANEL_FLATTEN(rgb8Masked, ColorMode::rgb8, true, 100);
ORVANEL_FLATTEN(grayscale16, ColorMode::grayscale16, false, 100);
ORVANEL_FLATTEN(grayscale16Masked, ColorMode::grayscale16, true, 100);
ORVANEL_FLATTEN(grayscale8, ColorMode::grayscale8, false, 100);
ORVANEL_FLATTEN(grayscale8Masked, ColorMode::grayscale8, true, 100);

}  // namespace
}  // namespace orvanel
