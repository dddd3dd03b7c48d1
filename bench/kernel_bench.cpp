// The raster kernels one by one on a photo of 4096 x 4096 pixels. The limits of the machine are measured in
// the same run: copying, or reading, the same bytes with all threads.
#include <benchmark/benchmark.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

#include "PhotoLayers.h"
#include "raster/HalfFloat.h"
#include "raster/MetalContext.h"

namespace orvanel {
namespace {

constexpr int side = 4096;

MetalContext& context() {
  return MetalContext::shared();
}

/// The pixels and bytes that one iteration processes.
void report(benchmark::State& state, const Surface& surface) {
  const double pixels = static_cast<double>(surface.width()) * surface.height() / 1e6;
  state.counters["megapixels"] = benchmark::Counter(pixels, benchmark::Counter::kIsIterationInvariantRate);
  state.SetBytesProcessed(state.iterations() * surface.byteSize());
}

const Surface& photo() {
  static const Texture layer = bench::photoLayer(side, side, bench::Depth::full, 1);
  return *layer;
}

/// A mask without uniform tiles.
const Surface& photoMask(int channel) {
  static const auto masks = [] {
    std::array<Surface, 2> made{Surface(maskPixelFormat, side, side), Surface(maskPixelFormat, side, side)};
    for (int c = 0; c < 2; ++c) context().extractChannel(photo(), made[static_cast<std::size_t>(c)], c);
    return made;
  }();
  return masks[static_cast<std::size_t>(channel)];
}

/// An ellipse over most of the canvas, with a wide soft rim.
const Surface& softSelection() {
  static const auto selection = [] {
    Surface mask(maskPixelFormat, side, side);
    context().fillEllipseMask(mask, side / 2.0F, side / 2.0F, side * 0.4F, side * 0.35F, 300.0F);
    return mask;
  }();
  return selection;
}

void copyTile(const Surface& source, Surface& destination, int index) {
  const Tile& tile = source.tile(index);
  if (tile.isUniform()) return destination.setUniform(index, tile.pixel());
  std::memcpy(destination.overwriteTile(index), tile.data(), source.tileBytes());
}

/// An unshared copy whose memory has been touched.
Surface unsharedCopy(const Surface& source) {
  Surface copy(source.format(), source.width(), source.height());
  tbb::parallel_for(0, source.tileCount(), [&](int index) { copyTile(source, copy, index); });
  return copy;
}

/// Runs a kernel in place; every iteration begins with the same pixels in unshared tiles.
template <typename Kernel>
void inPlace(benchmark::State& state, const Surface& pixels, const Kernel& kernel) {
  Surface layer = unsharedCopy(pixels);
  for (auto _ : state) {
    kernel(layer);
    state.PauseTiming();
    tbb::parallel_for(0, pixels.tileCount(), [&](int index) { copyTile(pixels, layer, index); });
    state.ResumeTiming();
  }
  report(state, layer);
}

// The limits.

void copySurface(benchmark::State& state, const Surface& source) {
  Surface copy = unsharedCopy(source);
  for (auto _ : state) {
    tbb::parallel_for(0, source.tileCount(), [&](int index) { copyTile(source, copy, index); });
  }
  report(state, source);
}

/// Reads as fast as the machine can, with its widest vectors.
[[gnu::target_clones("avx512f", "avx2", "default"), gnu::optimize("O3")]] std::uint64_t xorOf(
    const std::uint64_t* words, std::size_t count) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < count; ++i) sum ^= words[i];
  return sum;
}

void readSurface(benchmark::State& state, const Surface& source) {
  for (auto _ : state) {
    tbb::parallel_for(0, source.tileCount(), [&](int index) {
      benchmark::DoNotOptimize(
          xorOf(reinterpret_cast<const std::uint64_t*>(source.tile(index).data()), source.tileBytes() / 8));
    });
  }
  report(state, source);
}

void copyLimit(benchmark::State& state) {
  copySurface(state, photo());
}
void maskCopyLimit(benchmark::State& state) {
  copySurface(state, photoMask(0));
}
void readLimit(benchmark::State& state) {
  readSurface(state, photo());
}
void maskReadLimit(benchmark::State& state) {
  readSurface(state, photoMask(0));
}

// One pixel at a time.

enum class Selected { everything, softEllipse };

void invert(benchmark::State& state, Selected selected) {
  const Surface* selection = selected == Selected::softEllipse ? &softSelection() : nullptr;
  inPlace(state, photo(),
          [&](Surface& layer) { context().invertColors(layer, ColorMode::rgb16, selection); });
}

void fillSelected(benchmark::State& state) {
  const Color4 color{0.8F, 0.1F, 0.4F, 1.0F};
  const Surface& selection = softSelection();
  inPlace(state, photo(),
          [&](Surface& layer) { context().fillWithSelection(layer, selection, ColorMode::rgb16, color); });
}

void levels(benchmark::State& state, Selected selected, float gamma) {
  const Surface* selection = selected == Selected::softEllipse ? &softSelection() : nullptr;
  inPlace(state, photo(), [&](Surface& layer) {
    context().levelsAdjust(layer, ColorMode::rgb16, selection, 0.05F, 0.9F, gamma);
  });
}

void convert(benchmark::State& state, ColorMode to) {
  Surface destination(layerPixelFormat(to), side, side);
  for (auto _ : state) context().convertTexture(photo(), destination, ColorMode::rgb16, to);
  report(state, photo());
}

void clearEverything(benchmark::State& state) {
  inPlace(state, photo(), [](Surface& layer) {
    context().clearTexture(layer, ColorMode::rgb16, {1.0F, 1.0F, 1.0F, 1.0F});
  });
}

// Masks.

void fillWholeMask(benchmark::State& state) {
  inPlace(state, photoMask(0), [](Surface& mask) { context().fillMask(mask, 0.5F); });
}

void addMasks(benchmark::State& state) {
  inPlace(state, photoMask(0), [](Surface& mask) { context().addMasks(mask, photoMask(1)); });
}
void subtractMasks(benchmark::State& state) {
  inPlace(state, photoMask(0), [](Surface& mask) { context().subtractMasks(mask, photoMask(1)); });
}
void intersectMasks(benchmark::State& state) {
  inPlace(state, photoMask(0), [](Surface& mask) { context().intersectMasks(mask, photoMask(1)); });
}

/// Data tiles that are empty except for a dot in the middle, so that each must be scanned.
Surface allButEmpty(PixelFormat format) {
  Surface surface(format, side, side);
  for (int index = 0; index < surface.tileCount(); ++index) (void)surface.editTile(index);
  const std::uint64_t dot = 0x3C003C003C003C00ULL;
  surface.writeRect({side / 2, side / 2, 1, 1}, reinterpret_cast<const std::byte*>(&dot), 8);
  return surface;
}

void selectionBounds(benchmark::State& state) {
  const Surface mask = allButEmpty(maskPixelFormat);
  for (auto _ : state) benchmark::DoNotOptimize(context().selectionBounds(mask));
  report(state, mask);
}

void layerContentBounds(benchmark::State& state) {
  const Surface layer = allButEmpty(PixelFormat::rgba16Float);
  for (auto _ : state) benchmark::DoNotOptimize(context().layerContentBounds(layer, ColorMode::rgb16, false));
  report(state, layer);
}

void ellipse(benchmark::State& state, float feather) {
  Surface mask(maskPixelFormat, side, side);
  for (auto _ : state) {
    context().fillEllipseMask(mask, side / 2.0F, side / 2.0F, side / 2.0F, side / 2.0F, feather);
  }
  report(state, mask);
}

/// The largest canvas, feathered as widely as the tools allow.
void rectFeather1000(benchmark::State& state) {
  constexpr int largest = 16384;
  Surface mask(maskPixelFormat, largest, largest);
  for (auto _ : state) {
    context().fillRectMask(mask, {largest / 4, largest / 4, largest / 2, largest / 2}, 1000.0F);
  }
  report(state, mask);
}

enum class Outline { circle, star, crossings };

/// Points about the canvas's middle, or anywhere.
std::vector<PolygonPoint> outlinePoints(Outline outline, int count) {
  std::vector<PolygonPoint> points;
  std::mt19937 random(11);
  std::uniform_real_distribution<float> anywhere(0.0F, side);
  for (int i = 0; i < count; ++i) {
    if (outline == Outline::crossings) {
      points.push_back({anywhere(random), anywhere(random)});
      continue;
    }
    const float angle = static_cast<float>(i) * 2.0F * std::numbers::pi_v<float> / static_cast<float>(count);
    const float radius = side * (outline == Outline::star && i % 2 == 1 ? 0.2F : 0.48F);
    points.push_back({side / 2.0F + radius * std::cos(angle), side / 2.0F + radius * std::sin(angle)});
  }
  return points;
}

void polygon(benchmark::State& state, Outline outline, int count) {
  const std::vector<PolygonPoint> points = outlinePoints(outline, count);
  Surface mask(maskPixelFormat, side, side);
  for (auto _ : state) context().fillPolygonMask(mask, points);
  report(state, mask);
}

/// A bright disc of 60 % of the canvas on dark ground, both with the noise of a photo; so many per cent of
/// its pixels are dark specks.
Surface blob(unsigned specks) {
  Surface layer = unsharedCopy(photo());
  const double radius = side * std::sqrt(0.6 / std::numbers::pi);
  tbb::parallel_for(0, layer.tileCount(), [&](int index) {
    const PixelRect rect = layer.tileRect(index);
    std::mt19937 random(static_cast<unsigned>(index));
    auto* halves = reinterpret_cast<std::uint16_t*>(layer.editTile(index));
    for (int y = 0; y < tileSide; ++y) {
      for (int x = 0; x < tileSide; ++x, halves += 4) {
        const bool isInside = std::hypot(rect.x + x - side / 2.0, rect.y + y - side / 2.0) < radius;
        const float base = isInside && random() % 100 >= specks ? 0.8F : 0.1F;
        for (int c = 0; c < 3; ++c) halves[c] = floatToHalf(base + 0.1F * halfToFloat(halves[c]));
      }
    }
  });
  return layer;
}

void wand(benchmark::State& state, unsigned specks) {
  const Surface layer = blob(specks);
  Surface mask(maskPixelFormat, side, side);
  for (auto _ : state) {
    context().magicWandContiguous(layer, mask, side / 2, side / 2, {0.85F, 0.85F, 0.85F, 1.0F}, 0.2F);
  }
  report(state, layer);
}

// Transforms.

void translateContent(benchmark::State& state) {
  Surface layer(PixelFormat::rgba16Float, 8192, 8192);
  copyPixels(photo(), {0, 0, 1024, 1024}, layer, 3000, 3000);
  Surface moved(PixelFormat::rgba16Float, 8192, 8192);
  for (auto _ : state) context().translateLayerPixels(layer, moved, 3, 5, ColorMode::rgb16);
  report(state, Surface(PixelFormat::rgba16Float, 1024, 1024));
}

constexpr float tenDegrees = std::numbers::pi_v<float> / 18.0F;

void rotate(benchmark::State& state) {
  Surface turned(PixelFormat::rgba16Float, side, side);
  for (auto _ : state) {
    context().rotateLayerPixels(photo(), turned, side / 2.0F, side / 2.0F, tenDegrees, ColorMode::rgb16);
  }
  report(state, photo());
}

void affine(benchmark::State& state) {
  Surface turned(PixelFormat::rgba16Float, side, side);
  const float cosine = std::cos(tenDegrees);
  const float sine = std::sin(tenDegrees);
  const float middle = side / 2.0F;
  const std::array<float, 6> inverse{
      cosine, -sine, sine, cosine, middle - (cosine + sine) * middle, middle - (cosine - sine) * middle};
  for (auto _ : state) context().affineTransformLayerPixels(photo(), turned, inverse, ColorMode::rgb16);
  report(state, photo());
}

/// A picture squashed to a hundredth along a diagonal: many source pixels for each of few.
void affineSlantingSquash(benchmark::State& state) {
  Surface squashed(PixelFormat::rgba16Float, side, side);
  constexpr float sum = (100.0F + 1.0F) / 2.0F;
  constexpr float difference = (100.0F - 1.0F) / 2.0F;
  constexpr float start = side / 2.0F * (1.0F - sum - difference);
  const std::array<float, 6> inverse{sum, difference, difference, sum, start, start};
  for (auto _ : state) context().affineTransformLayerPixels(photo(), squashed, inverse, ColorMode::rgb16);
  report(state, photo());
}

void resample(benchmark::State& state, int size) {
  Surface resized(PixelFormat::rgba16Float, size, size);
  for (auto _ : state) context().resampleTexture(photo(), resized, ResampleMethod::bicubic);
  report(state, photo());
}

void copyShifted(benchmark::State& state) {
  Surface shifted(PixelFormat::rgba16Float, side, side);
  for (auto _ : state) copyPixels(photo(), photo().bounds(), shifted, 100, 100);
  report(state, photo());
}

#define ORVANEL_KERNEL(function) \
  BENCHMARK(function)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime()
#define ORVANEL_KERNEL_OF(function, name, ...)   \
  BENCHMARK_CAPTURE(function, name, __VA_ARGS__) \
      ->Unit(benchmark::kMillisecond)            \
      ->MeasureProcessCPUTime()                  \
      ->UseRealTime()

ORVANEL_KERNEL(copyLimit);
ORVANEL_KERNEL_OF(invert, everything, Selected::everything);
ORVANEL_KERNEL_OF(invert, selection, Selected::softEllipse);
ORVANEL_KERNEL(fillSelected);
ORVANEL_KERNEL_OF(levels, linear, Selected::everything, 1.0F);
ORVANEL_KERNEL_OF(levels, gamma, Selected::everything, 2.2F);
ORVANEL_KERNEL_OF(levels, gammaSelection, Selected::softEllipse, 2.2F);
ORVANEL_KERNEL_OF(convert, rgb16ToRgb8, ColorMode::rgb8);
ORVANEL_KERNEL(clearEverything);
ORVANEL_KERNEL(fillWholeMask);
ORVANEL_KERNEL(maskCopyLimit);
ORVANEL_KERNEL(addMasks);
ORVANEL_KERNEL(subtractMasks);
ORVANEL_KERNEL(intersectMasks);
ORVANEL_KERNEL(maskReadLimit);
ORVANEL_KERNEL(selectionBounds);
ORVANEL_KERNEL(readLimit);
ORVANEL_KERNEL(layerContentBounds);
ORVANEL_KERNEL_OF(ellipse, sharp, 0.0F);
ORVANEL_KERNEL_OF(ellipse, feather50, 50.0F);
ORVANEL_KERNEL(rectFeather1000);
ORVANEL_KERNEL_OF(polygon, circle, Outline::circle, 1000);
ORVANEL_KERNEL_OF(polygon, star, Outline::star, 1000);
ORVANEL_KERNEL_OF(polygon, crossings, Outline::crossings, 1000);
ORVANEL_KERNEL_OF(polygon, scribble16000, Outline::crossings, 16000);
ORVANEL_KERNEL_OF(polygon, scribble50000, Outline::crossings, 50000);
ORVANEL_KERNEL_OF(wand, blob, 0U);
ORVANEL_KERNEL_OF(wand, noise, 10U);
ORVANEL_KERNEL(translateContent);
ORVANEL_KERNEL(rotate);
ORVANEL_KERNEL(affine);
ORVANEL_KERNEL(affineSlantingSquash);
ORVANEL_KERNEL_OF(resample, to3000, 3000);
ORVANEL_KERNEL_OF(resample, to2048, 2048);
ORVANEL_KERNEL(copyShifted);

}  // namespace
}  // namespace orvanel
