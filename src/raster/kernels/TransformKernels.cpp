// The kernels that scale, rotate and transform: every destination pixel is mapped into the source and
// sampled there bilinearly, transparent outside. Where the source shrinks below half, a pixel takes a grid
// of samples, and where that would be many of them, the mean of what it covers. Each destination tile
// gathers its source region first; tiles that meet no content are empty.
#include <hwy/aligned_allocator.h>
#include <tbb/enumerable_thread_specific.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "raster/ColorMode.h"
#include "raster/KernelRecords.h"
#include "raster/kernels/Footprint.h"
#include "raster/kernels/Kernels.h"
#include "raster/kernels/PixelAccess.h"
#include "raster/kernels/PremultipliedRows.h"
#include "raster/kernels/TileAccess.h"
#include "raster/kernels/Translate.h"

namespace orvanel::kernels {
namespace {

/// From the destination into the source, row vectors: u = a x + c y + tx, v = b x + d y + ty.
struct Matrix {
  double a = 1.0;
  double b = 0.0;
  double c = 0.0;
  double d = 1.0;
  double tx = 0.0;
  double ty = 0.0;

  [[nodiscard]] double u(double x, double y) const { return a * x + c * y + tx; }
  [[nodiscard]] double v(double x, double y) const { return b * x + d * y + ty; }
  /// The way back from the source: the destination's point of (u, v). Infinite for a singular matrix.
  [[nodiscard]] std::array<double, 2> destinationOf(double sourceU, double sourceV) const {
    const double determinant = a * d - b * c;
    const double du = sourceU - tx;
    const double dv = sourceV - ty;
    return {(du * d - dv * c) / determinant, (dv * a - du * b) / determinant};
  }
  [[nodiscard]] bool isFinite() const { return std::isfinite(a + b + c + d + tx + ty); }
  [[nodiscard]] bool isWholeShift() const {
    return a == 1.0 && b == 0.0 && c == 0.0 && d == 1.0 && tx == std::round(tx) && ty == std::round(ty) &&
           std::abs(tx) <= maximumCanvasSide && std::abs(ty) <= maximumCanvasSide;
  }
};

/// Samples along one axis of a destination pixel, whose steps in the source are this long.
int samplesFor(double sourceStep) {
  if (!(sourceStep > 2.0)) return 1;
  return static_cast<int>(std::min(std::ceil(sourceStep), static_cast<double>(maximumCanvasSide)));
}

/// The destination's pixels that the source can reach at all; all of them where a singular matrix can't tell.
PixelRect reachedFrom(const PixelRect& source, const Matrix& matrix, const PixelRect& destination) {
  double left = std::numeric_limits<double>::infinity();
  double right = -left;
  double top = left;
  double bottom = -left;
  // A sample takes from pixels whose centres are less than one pixel away.
  for (const double u : {source.x - 1.0, source.x + source.width + 1.0}) {
    for (const double v : {source.y - 1.0, source.y + source.height + 1.0}) {
      const auto [x, y] = matrix.destinationOf(u, v);
      if (!std::isfinite(x) || !std::isfinite(y)) return destination;
      left = std::min(left, x);
      right = std::max(right, x);
      top = std::min(top, y);
      bottom = std::max(bottom, y);
    }
  }
  const auto whole = [](double value) { return static_cast<int>(std::clamp(value, -1e6, 1e6)); };
  const int x = whole(std::floor(left));
  const int y = whole(std::floor(top));
  return PixelRect{x, y, whole(std::ceil(right)) - x, whole(std::ceil(bottom)) - y}.intersected(destination);
}

/// Memory that grows to the largest need and is kept from tile to tile: asking for it anew each time would
/// have the system clear its pages.
template <typename Value>
class Scratch {
 public:
  Value* ofSize(std::size_t count) {
    if (size_ < count) {
      memory_ = hwy::AllocateAligned<Value>(count);
      size_ = count;
    }
    return memory_.get();
  }

 private:
  hwy::AlignedFreeUniquePtr<Value[]> memory_;
  std::size_t size_ = 0;
};

/// Computes destination tiles one after the other. One for each thread.
class TileTransform {
 public:
  /// Pixels of the source outside `sourceClip` count as transparent, those of the destination outside
  /// `destinationClip` stay empty.
  TileTransform(const Surface& source, const Matrix& matrix, const PixelRect& sourceClip,
                const PixelRect& destinationClip)
      : source_(source),
        matrix_(matrix),
        sourceClip_(sourceClip.intersected(source.bounds())),
        destinationClip_(reachedFrom(sourceClip_, matrix, destinationClip)),
        samplesAcross_(samplesFor(std::hypot(matrix.a, matrix.b))),
        samplesDown_(samplesFor(std::hypot(matrix.c, matrix.d))) {}

  void run(Surface& destination, int index) {
    tile_ = destination.tileRect(index);
    const PixelRect block = tile_.intersected(destinationClip_);
    if (block.isEmpty() || !meetsContent(block)) return destination.setUniform(index, 0);
    sums_ = sumMemory_.ofSize(std::size_t{tilePixels} * 4);
    std::fill_n(sums_, std::size_t{tilePixels} * 4, 0.0F);
    if (isDense()) {
      takeMeans(block);
    } else {
      addBlock(block);
      divideBySamples();
    }
    std::byte* out = destination.overwriteTile(index);
    for (int y = 0; y < tileSide; ++y, out += tileSide * destination.pixelBytes()) {
      unpremultiplyRow(destination.format(), sumRow(y), out, tileSide, ColorRange::any);
    }
    destination.collapseIfUniform(index);
  }

 private:
  // A gathered region of this many pixels, 4 MiB of them, stays in cache.
  static constexpr std::int64_t largestRegion = 512 * 512;

  [[nodiscard]] double samples() const { return static_cast<double>(samplesAcross_) * samplesDown_; }

  /// Whether a grid would take many more samples than the pixel covers, or more than floats add up without
  /// a loss that anybody could see. It does where a picture is squashed along a slanting direction: both
  /// sides of a pixel's footprint are long then, and nearly parallel.
  [[nodiscard]] bool isDense() const {
    constexpr double mostFloatSamples = 256;
    constexpr double worthwhile = 8;
    const double covered = std::abs(matrix_.a * matrix_.d - matrix_.b * matrix_.c);
    return samples() > mostFloatSamples || samples() > worthwhile * (covered + 1.0);
  }

  void takeMeans(const PixelRect& block) {
    for (int y = block.y; y < block.y + block.height; ++y) {
      float* out = sumRow(y - tile_.y) + 4 * static_cast<std::size_t>(block.x - tile_.x);
      for (int x = block.x; x < block.x + block.width; ++x, out += 4) {
        const Parallelogram footprint{
            matrix_.u(x, y), matrix_.v(x, y), {matrix_.a, matrix_.b}, {matrix_.c, matrix_.d}};
        std::ranges::copy(meanOver(source_, sourceClip_, footprint), out);
      }
    }
  }

  void divideBySamples() {
    const auto share = static_cast<float>(1.0 / samples());
    if (share == 1.0F) return;
    for (std::size_t i = 0; i < std::size_t{tilePixels} * 4; ++i) sums_[i] *= share;
  }

  [[nodiscard]] float* sumRow(int y) { return sums_ + static_cast<std::size_t>(y) * tileSide * 4; }

  [[nodiscard]] static double offsetOf(int sample, int samples) { return (sample + 0.5) / samples; }

  /// Every source pixel that the block may need, within the source's clip.
  [[nodiscard]] PixelRect regionOf(const PixelRect& block) const {
    const double left = block.x;
    const double right = block.x + block.width;
    const double top = block.y;
    const double bottom = block.y + block.height;
    const auto us = std::minmax(
        {matrix_.u(left, top), matrix_.u(right, top), matrix_.u(left, bottom), matrix_.u(right, bottom)});
    const auto vs = std::minmax(
        {matrix_.v(left, top), matrix_.v(right, top), matrix_.v(left, bottom), matrix_.v(right, bottom)});
    const auto whole = [](double value) { return static_cast<int>(std::clamp(value, -1e6, 1e6)); };
    const int x = whole(std::floor(us.first - 0.5));
    const int y = whole(std::floor(vs.first - 0.5));
    const PixelRect region{x, y, whole(std::floor(us.second - 0.5)) + 2 - x,
                           whole(std::floor(vs.second - 0.5)) + 2 - y};
    return region.intersected(sourceClip_);
  }

  [[nodiscard]] bool meetsContent(const PixelRect& block) const {
    const PixelRect region = regionOf(block);
    if (region.isEmpty()) return false;
    const std::optional<std::uint64_t> pixel = uniformPixelOf(source_, region);
    return !pixel || colorOfPixel(*pixel, source_.format())[3] > 0.0F;
  }

  void addBlock(const PixelRect& block) {
    const PixelRect region = regionOf(block);
    if (region.isEmpty()) return;
    const bool isDivisible = block.width > 1 || block.height > 1;
    if (isDivisible && std::int64_t{region.width} * region.height > largestRegion) return addHalves(block);
    gather(region);
    const RingedBlock pixels{gathered_, region.width, region.height};
    for (int y = block.y; y < block.y + block.height; ++y) {
      for (int sampleY = 0; sampleY < samplesDown_; ++sampleY) {
        const double atY = y + offsetOf(sampleY, samplesDown_);
        for (int sampleX = 0; sampleX < samplesAcross_; ++sampleX) {
          addSamples(pixels, region, block, y, block.x + offsetOf(sampleX, samplesAcross_), atY);
        }
      }
    }
  }

  void addHalves(const PixelRect& block) {
    PixelRect one = block;
    PixelRect other = block;
    if (block.width >= block.height) {
      one.width = block.width / 2;
      other.x += one.width;
      other.width -= one.width;
    } else {
      one.height = block.height / 2;
      other.y += one.height;
      other.height -= one.height;
    }
    addBlock(one);
    addBlock(other);
  }

  /// One sample of every pixel of a row of the block; `x` and `y` are the first one's place.
  void addSamples(const RingedBlock& pixels, const PixelRect& region, const PixelRect& block, int row,
                  double x, double y) {
    const double u = matrix_.u(x, y) - 0.5 - region.x;
    const double v = matrix_.v(x, y) - 0.5 - region.y;
    // Only the stretch of the row that falls into the region is walked.
    double first = 0.0;
    double last = block.width - 1.0;
    narrow(u, matrix_.a, region.width, first, last);
    narrow(v, matrix_.b, region.height, first, last);
    if (first > last) return;
    const int begin = std::max(static_cast<int>(first) - 1, 0);
    const int end = std::min(static_cast<int>(last) + 2, block.width);
    float* out = sumRow(row - tile_.y) + 4 * static_cast<std::size_t>(block.x - tile_.x + begin);
    addBilinearRow(pixels, u + begin * matrix_.a, v + begin * matrix_.b, matrix_.a, matrix_.b, out,
                   end - begin);
  }

  /// Narrows [first, last] to where start + i * step lies in (-1, size).
  static void narrow(double start, double step, double size, double& first, double& last) {
    if (std::abs(step) < 1e-12) {
      if (start <= -1.0 || start >= size) last = -1.0;
      return;
    }
    const auto ends = std::minmax({(-1.0 - start) / step, (size - start) / step});
    first = std::max(first, ends.first);
    last = std::min(last, ends.second);
  }

  void gather(const PixelRect& region) {
    const std::size_t padded = (static_cast<std::size_t>(region.width) + 15) / 16 * 16;
    const auto pixelBytes = static_cast<std::size_t>(source_.pixelBytes());
    const std::size_t stride = 4 * (static_cast<std::size_t>(region.width) + 2);
    const std::size_t rows = static_cast<std::size_t>(region.height) + 2;
    gathered_ = gatheredMemory_.ofSize(stride * rows + 4 * padded);
    std::byte* straight = straightMemory_.ofSize(padded * pixelBytes);
    std::fill_n(straight, padded * pixelBytes, std::byte{0});
    std::fill_n(gathered_, stride, 0.0F);
    float* row = gathered_ + stride;
    for (int y = 0; y < region.height; ++y, row += stride) {
      gatherRegion(source_, {region.x, region.y + y, region.width, 1}, straight, padded * pixelBytes);
      // The padding spills over into the rows below, which come after.
      premultiplyRow(source_.format(), straight, row + 4, static_cast<int>(padded));
      std::fill_n(row, 4, 0.0F);
      std::fill_n(row + stride - 4, 4, 0.0F);
    }
    std::fill_n(row, stride, 0.0F);
  }

  const Surface& source_;
  const Matrix& matrix_;
  PixelRect sourceClip_;
  PixelRect destinationClip_;
  int samplesAcross_;
  int samplesDown_;
  PixelRect tile_;
  float* sums_ = nullptr;
  float* gathered_ = nullptr;
  Scratch<float> sumMemory_;
  Scratch<float> gatheredMemory_;
  Scratch<std::byte> straightMemory_;
};

void transform(const Surface& source, Surface& destination, const Matrix& matrix, const PixelRect& sourceClip,
               const PixelRect& destinationClip) {
  if (!fitInFormat(source, destination)) return;
  if (!matrix.isFinite()) return destination.fill(0);
  tbb::enumerable_thread_specific<TileTransform> transforms(
      [&] { return TileTransform(source, matrix, sourceClip, destinationClip); });
  forEachTile(destination, [&](int index) { transforms.local().run(destination, index); });
}

void transformWhole(const Surface& source, Surface& destination, const Matrix& matrix) {
  if (matrix.isWholeShift()) {
    return translatePixels(source, destination, static_cast<int>(-matrix.tx), static_cast<int>(-matrix.ty));
  }
  transform(source, destination, matrix, source.bounds(), destination.bounds());
}

/// The pixels whose centres lie in a rectangle of any position.
PixelRect pixelsWithin(const std::array<float, 4>& rect, const Surface& surface) {
  const auto bound = [](double edge, int limit) {
    return static_cast<int>(std::clamp(std::ceil(edge - 0.5), 0.0, static_cast<double>(limit)));
  };
  const auto x = static_cast<double>(rect[0]);
  const auto y = static_cast<double>(rect[1]);
  const int left = bound(x, surface.width());
  const int top = bound(y, surface.height());
  return {left, top, bound(x + static_cast<double>(rect[2]), surface.width()) - left,
          bound(y + static_cast<double>(rect[3]), surface.height()) - top};
}

/// Sines of quarter turns come out a little off; such a rotation should move pixels exactly.
double snapped(double value) {
  const double whole = std::round(value);
  return std::abs(value - whole) < 1e-6 ? whole : value;
}

}  // namespace

void scaleLayerRegion(const Dispatch& dispatch) {
  const Surface& source = *dispatch.textures[0];
  Surface& destination = *dispatch.textures[1];
  const auto& params = inlineRecord<ScaleParams>(dispatch);
  std::array<double, 4> from{};
  std::array<double, 4> to{};
  bool isSound = true;
  for (std::size_t i = 0; i < 4; ++i) {
    from[i] = static_cast<double>(params.source[i]);
    to[i] = static_cast<double>(params.destination[i]);
    isSound = isSound && std::isfinite(from[i]) && std::isfinite(to[i]);
  }
  if (!isSound || from[2] <= 0.0 || from[3] <= 0.0 || to[2] <= 0.0 || to[3] <= 0.0) {
    return destination.fill(0);
  }
  Matrix matrix;
  matrix.a = from[2] / to[2];
  matrix.d = from[3] / to[3];
  matrix.tx = from[0] - to[0] * matrix.a;
  matrix.ty = from[1] - to[1] * matrix.d;
  transform(source, destination, matrix, pixelsWithin(params.source, source),
            pixelsWithin(params.destination, destination));
}

void rotateLayerPixels(const Dispatch& dispatch) {
  const auto& params = inlineRecord<RotateParams>(dispatch);
  const auto angle = static_cast<double>(params.angle);
  const auto centerX = static_cast<double>(params.centerX);
  const auto centerY = static_cast<double>(params.centerY);
  const double cosine = snapped(std::cos(angle));
  const double sine = snapped(std::sin(angle));
  // The way back from the turned picture: by the opposite angle about the same centre.
  Matrix matrix{cosine, -sine, sine, cosine, 0.0, 0.0};
  matrix.tx = centerX - matrix.u(centerX, centerY);
  matrix.ty = centerY - matrix.v(centerX, centerY);
  transformWhole(*dispatch.textures[0], *dispatch.textures[1], matrix);
}

void affineTransformLayerPixels(const Dispatch& dispatch) {
  const auto& m = inlineRecord<AffineParams>(dispatch).matrix;
  const Matrix matrix{static_cast<double>(m[0]), static_cast<double>(m[1]), static_cast<double>(m[2]),
                      static_cast<double>(m[3]), static_cast<double>(m[4]), static_cast<double>(m[5])};
  transformWhole(*dispatch.textures[0], *dispatch.textures[1], matrix);
}

}  // namespace orvanel::kernels
