#include "raster/kernels/TileTransform.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include "raster/Prefetch.h"
#include "raster/Regularity.h"
#include "raster/kernels/Footprint.h"
#include "raster/kernels/PixelAccess.h"
#include "raster/kernels/TileAccess.h"

namespace orvanel::kernels {
namespace {

/// Samples along one axis of a destination pixel, whose steps in the source are this long.
int samplesFor(double sourceStep) {
  if (!(sourceStep > 2.0)) return 1;
  return static_cast<int>(std::min(std::ceil(sourceStep), static_cast<double>(maximumCanvasSide)));
}

int wholeNumber(double value) {
  return static_cast<int>(std::clamp(value, -1e6, 1e6));
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
  const int x = wholeNumber(std::floor(left));
  const int y = wholeNumber(std::floor(top));
  return PixelRect{x, y, wholeNumber(std::ceil(right)) - x, wholeNumber(std::ceil(bottom)) - y}.intersected(
      destination);
}

constexpr FixedPoint fixedPixel = FixedPoint{1} << fixedPointBits;

/// Positions far outside any surface are as good as any other.
FixedPoint fixedPoint(double value) {
  constexpr double farthest = 1e6;
  const double scaled = std::clamp(value, -farthest, farthest) * 0x1p32;
  // Rounded without a call, which would cost a row of a few samples more than they do.
  return static_cast<FixedPoint>(scaled + std::copysign(0.5, scaled));
}

FixedPoint quotientRoundedUp(FixedPoint value, FixedPoint divisor) {
  const FixedPoint quotient = value / divisor;
  return value % divisor > 0 ? quotient + 1 : quotient;
}

/// The positions at which a sample takes anything from `size` pixels from `first` on. What lies this close to
/// the outer rim has no weight worth telling.
struct Reach {
  static constexpr FixedPoint rim = fixedPixel >> 20;

  Reach(int first, int size)
      : begin((FixedPoint{first} - 1) * fixedPixel + rim),
        end((FixedPoint{first} + size) * fixedPixel - rim) {}

  [[nodiscard]] bool holds(FixedPoint position) const { return position >= begin && position < end; }

  FixedPoint begin;
  FixedPoint end;
};

/// Narrows [first, last) to the i for which start + i * step is within reach.
void narrow(FixedPoint start, FixedPoint step, const Reach& reach, int& first, int& last) {
  if (first >= last || (reach.holds(start + first * step) && reach.holds(start + (last - 1) * step))) return;
  if (step == 0) {
    last = first;
    return;
  }
  FixedPoint low = reach.begin - start;
  FixedPoint high = reach.end - start;
  if (step < 0) {
    low = start - reach.end + 1;
    high = start - reach.begin + 1;
    step = -step;
  }
  const auto bounded = [&](FixedPoint place) {
    return static_cast<int>(std::clamp<FixedPoint>(place, first, last));
  };
  const int begin = bounded(quotientRoundedUp(low, step));
  last = bounded(quotientRoundedUp(high, step));
  first = begin;
}

double offsetOf(int sample, int samples) {
  return (sample + 0.5) / samples;
}

std::uint64_t roundTrip(std::uint64_t pixel, PixelFormat format) {
  constexpr int count = 16;
  alignas(64) std::array<std::byte, std::size_t{count} * 8> straight;
  alignas(64) std::array<float, std::size_t{count} * 4> premultiplied;
  fillPixels(straight.data(), count, pixel, bytesPerPixel(format));
  premultiplyRow(format, straight.data(), premultiplied.data(), count);
  unpremultiplyRow(format, premultiplied.data(), straight.data(), count, ColorRange::any);
  return packPixel(straight.data(), bytesPerPixel(format));
}

/// A gathered region of this many pixels, 4 MiB of them, stays in cache.
constexpr std::int64_t largestRegion = 512 * 512;

}  // namespace

TileTransform::TileTransform(const Surface& source, const PixelTransform& transform,
                             TransformScratch& scratch)
    : source_(source),
      pixelBytes_(source.pixelBytes()),
      matrix_(transform.matrix),
      sourceClip_(transform.sourceClip.intersected(source.bounds())),
      destinationClip_(reachedFrom(sourceClip_, transform.matrix, transform.destinationClip)),
      samplesAcross_(samplesFor(std::hypot(matrix_.a, matrix_.b))),
      samplesDown_(samplesFor(std::hypot(matrix_.c, matrix_.d))),
      isDense_(wouldBeDense()),
      stepU_(fixedPoint(matrix_.a)),
      stepV_(fixedPoint(matrix_.b)),
      scratch_(scratch) {}

/// Whether a grid would take many more samples than the pixel covers, or more than floats add up without
/// a loss that anybody could see. It does where a picture is squashed along a slanting direction: both
/// sides of a pixel's footprint are long then, and nearly parallel.
bool TileTransform::wouldBeDense() const {
  constexpr double mostFloatSamples = 256;
  constexpr double worthwhile = 8;
  const double covered = std::abs(matrix_.a * matrix_.d - matrix_.b * matrix_.c);
  return samplesOfPixel() > mostFloatSamples || samplesOfPixel() > worthwhile * (covered + 1.0);
}

/// Every source pixel that the block may need, and one more on each side for roundings.
PixelRect TileTransform::reachOf(const PixelRect& block) const {
  const double left = block.x;
  const double right = block.x + block.width;
  const double top = block.y;
  const double bottom = block.y + block.height;
  const auto us = std::minmax(
      {matrix_.u(left, top), matrix_.u(right, top), matrix_.u(left, bottom), matrix_.u(right, bottom)});
  const auto vs = std::minmax(
      {matrix_.v(left, top), matrix_.v(right, top), matrix_.v(left, bottom), matrix_.v(right, bottom)});
  const int x = wholeNumber(std::floor(us.first - 1.5));
  const int y = wholeNumber(std::floor(vs.first - 1.5));
  return {x, y, wholeNumber(std::floor(us.second + 0.5)) + 2 - x,
          wholeNumber(std::floor(vs.second + 0.5)) + 2 - y};
}

std::optional<std::uint64_t> TileTransform::uniformPixel(const PixelRect& tile) const {
  const PixelRect block = tile.intersected(destinationClip_);
  if (block.isEmpty()) return 0;
  const PixelRect reach = reachOf(block);
  const PixelRect region = reach.intersected(sourceClip_);
  if (region.isEmpty()) return 0;
  const std::optional<std::uint64_t> pixel = uniformPixelOf(source_, region);
  if (!pixel) return std::nullopt;
  if (colorOfPixel(*pixel, source_.format())[3] == 0.0F) return 0;
  // Near the source's rim pixels mix with the transparency around it.
  if (block != tile || region != reach) return std::nullopt;
  return roundTrip(*pixel, source_.format());
}

void TileTransform::run(Surface& destination, int index) {
  tile_ = destination.tileRect(index);
  if (const std::optional<std::uint64_t> pixel = uniformPixel(tile_)) {
    return destination.setUniform(index, *pixel);
  }
  sumBlock(tile_.intersected(destinationClip_));
  std::byte* out = destination.overwriteTile(index);
  for (int y = 0; y < tileSide; ++y, out += tileSide * destination.pixelBytes()) {
    unpremultiplyRow(destination.format(), sumRow(y), out, tileSide, ColorRange::any);
  }
  destination.collapseIfUniform(index);
}

void TileTransform::sumBlock(const PixelRect& block) {
  sums_ = scratch_.sums.ofSize(std::size_t{tilePixels} * 4);
  std::fill_n(sums_, std::size_t{tilePixels} * 4, 0.0F);
  if (block.isEmpty()) return;
  if (isDense_) return takeMeans(block);
  addBlock(block);
  divideBySamples(sums_, tilePixels);
}

std::array<float, 4> TileTransform::meanAt(int x, int y) const {
  const Parallelogram footprint{
      matrix_.u(x, y), matrix_.v(x, y), {matrix_.a, matrix_.b}, {matrix_.c, matrix_.d}};
  return meanOver(source_, sourceClip_, footprint);
}

void TileTransform::takeMeans(const PixelRect& block) {
  for (int y = block.y; y < block.y + block.height; ++y) {
    float* out = sumRow(y - tile_.y) + 4 * static_cast<std::size_t>(block.x - tile_.x);
    for (int x = block.x; x < block.x + block.width; ++x, out += 4) std::ranges::copy(meanAt(x, y), out);
  }
}

void TileTransform::divideBySamples(float* sums, std::size_t pixels) const {
  const auto share = static_cast<float>(1.0 / samplesOfPixel());
  if (share == 1.0F) return;
  for (std::size_t i = 0; i < pixels * 4; ++i) sums[i] *= share;
}

/// One sample of every pixel of the tile's row `y`, from the tile's first column on.
SampleLine TileTransform::lineAt(int y, int sampleX, int sampleY) const {
  const double atX = tile_.x + offsetOf(sampleX, samplesAcross_);
  const double atY = y + offsetOf(sampleY, samplesDown_);
  return {fixedPoint(matrix_.u(atX, atY) - 0.5), fixedPoint(matrix_.v(atX, atY) - 0.5), stepU_, stepV_};
}

void TileTransform::addBlock(const PixelRect& block) {
  const PixelRect region = reachOf(block).intersected(sourceClip_);
  if (region.isEmpty()) return;
  const bool isDivisible = block.width > 1 || block.height > 1;
  if (isDivisible && std::int64_t{region.width} * region.height > largestRegion) return addHalves(block);
  gather(region);
  const RingedBlock pixels{gathered_, region.width, region.height};
  for (int y = block.y; y < block.y + block.height; ++y) {
    for (int sampleY = 0; sampleY < samplesDown_; ++sampleY) {
      for (int sampleX = 0; sampleX < samplesAcross_; ++sampleX) {
        addRow(pixels, region, block, y, lineAt(y, sampleX, sampleY));
      }
    }
  }
}

void TileTransform::addHalves(const PixelRect& block) {
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

void TileTransform::addRow(const RingedBlock& pixels, const PixelRect& region, const PixelRect& block, int y,
                           const SampleLine& line) {
  int first = block.x - tile_.x;
  int last = first + block.width;
  narrow(line.u, line.stepU, {sourceClip_.x, sourceClip_.width}, first, last);
  narrow(line.v, line.stepV, {sourceClip_.y, sourceClip_.height}, first, last);
  if (first >= last) return;
  const SampleLine fromRing{line.u + first * line.stepU - (FixedPoint{region.x} - 1) * fixedPixel,
                            line.v + first * line.stepV - (FixedPoint{region.y} - 1) * fixedPixel, line.stepU,
                            line.stepV};
  addBilinearRow(pixels, fromRing, sumRow(y - tile_.y) + 4 * static_cast<std::size_t>(first), last - first);
}

void TileTransform::gather(const PixelRect& region) {
  const std::size_t padded = (static_cast<std::size_t>(region.width) + 15) / 16 * 16;
  const auto pixelBytes = static_cast<std::size_t>(source_.pixelBytes());
  const std::size_t stride = 4 * (static_cast<std::size_t>(region.width) + 2);
  const std::size_t rows = static_cast<std::size_t>(region.height) + 2;
  gathered_ = scratch_.gathered.ofSize(stride * rows + 4 * padded);
  std::byte* straight = scratch_.straight.ofSize(padded * pixelBytes);
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

void TileTransform::sample(const PixelRect& tile, const SampleBlock& samples, std::byte* out) {
  tile_ = tile;
  if (samples.isContiguous()) return sampleTogether(samples, out);
  samplePoints(samples, out);
}

/// Neighbouring pixels share what they take from the source, so they are made together.
void TileTransform::sampleTogether(const SampleBlock& samples, std::byte* out) {
  const PixelRect wanted{samples.columns.front(), samples.rows.front(),
                         static_cast<int>(samples.columns.size()), static_cast<int>(samples.rows.size())};
  sumBlock(wanted.intersected(destinationClip_));
  alignas(64) std::array<std::byte, std::size_t{tileSide} * 8> row;
  const auto pixelBytes = static_cast<std::size_t>(source_.pixelBytes());
  const std::size_t rowBytes = samples.columns.size() * pixelBytes;
  const std::byte* first = row.data() + static_cast<std::size_t>(wanted.x - tile_.x) * pixelBytes;
  for (const std::int32_t y : samples.rows) {
    unpremultiplyRow(source_.format(), sumRow(y - tile_.y), row.data(), tileSide, ColorRange::any);
    std::memcpy(out, first, rowBytes);
    out += rowBytes;
  }
}

void TileTransform::samplePoints(const SampleBlock& samples, std::byte* out) {
  const std::size_t padded = (samples.count() + 15) / 16 * 16;
  float* sums = scratch_.sums.ofSize(padded * 4);
  std::fill_n(sums, padded * 4, 0.0F);
  for (std::size_t row = 0; row < samples.rows.size(); ++row) {
    const int y = samples.rows[row];
    if (y < destinationClip_.y || y >= destinationClip_.y + destinationClip_.height) continue;
    if (isDense_) {
      for (std::size_t i = 0; i < samples.columns.size(); ++i) {
        const int x = samples.columns[i];
        if (x < destinationClip_.x || x >= destinationClip_.x + destinationClip_.width) continue;
        std::ranges::copy(meanAt(x, y), sums + 4 * (row * samples.columns.size() + i));
      }
      continue;
    }
    for (int sampleY = 0; sampleY < samplesDown_; ++sampleY) {
      for (int sampleX = 0; sampleX < samplesAcross_; ++sampleX) {
        addPoints(samples, row, lineAt(y, sampleX, sampleY), sums);
      }
    }
  }
  add(batches_[1 - collecting_], sums);
  add(batches_[collecting_], sums);
  if (!isDense_) divideBySamples(sums, samples.count());
  unpremultiplyRow(source_.format(), sums, out, static_cast<int>(padded), ColorRange::any);
}

void TileTransform::addPoints(const SampleBlock& samples, std::size_t row, const SampleLine& line,
                              float* sums) {
  int first = std::max(destinationClip_.x - tile_.x, 0);
  int last = std::min(destinationClip_.x + destinationClip_.width - tile_.x, tileSide);
  narrow(line.u, line.stepU, {sourceClip_.x, sourceClip_.width}, first, last);
  narrow(line.v, line.stepV, {sourceClip_.y, sourceClip_.height}, first, last);
  if (first >= last) return;
  const auto begin = std::ranges::lower_bound(samples.columns, tile_.x + first);
  const auto end = std::lower_bound(begin, samples.columns.end(), tile_.x + last);
  const std::size_t output =
      row * samples.columns.size() + static_cast<std::size_t>(begin - samples.columns.begin());
  collect({begin, end}, line, static_cast<std::uint32_t>(output), sums);
}

/// Samples of a reduced view lie far apart: a batch is asked for long before it is read.
void TileTransform::collect(std::span<const std::int32_t> columns, const SampleLine& line,
                            std::uint32_t output, float* sums) {
  Batch* batch = &batches_[collecting_];
  for (const std::int32_t column : columns) {
    if (batch->count == Batch::most) {
      collecting_ = 1 - collecting_;
      batch = &batches_[collecting_];
      add(*batch, sums);
    }
    const FixedPoint i = column - tile_.x;
    const FixedPoint u = line.u + i * line.stepU;
    const FixedPoint v = line.v + i * line.stepV;
    const auto place = static_cast<std::size_t>(batch->count++);
    batch->samples[place] = {u, v, output++};
    const auto x = static_cast<int>(u >> fixedPointBits);
    const auto y = static_cast<int>(v >> fixedPointBits);
    const std::byte* corner = cornerWithinTile(x, y);
    batch->corners[place] = corner;
    if (corner != nullptr) {
      prefetchNeighbours(corner);
    } else {
      prefetchEachNeighbour(x, y);
    }
  }
}

/// Two neighbours may stand in two lines of the cache.
inline void TileTransform::prefetchNeighbours(const std::byte* corner) const {
  const std::byte* below = corner + tileSide * pixelBytes_;
  const std::ptrdiff_t lastByte = 2 * pixelBytes_ - 1;
  prefetch(corner);
  prefetch(below);
  prefetch(corner + lastByte);
  prefetch(below + lastByte);
}

void TileTransform::prefetchEachNeighbour(int x, int y) const {
  for (const int atY : {y, y + 1}) {
    for (const int atX : {x, x + 1}) {
      if (atX < 0 || atX >= source_.width() || atY < 0 || atY >= source_.height()) continue;
      const Tile& tile = source_.tile(source_.tileIndex(atX / tileSide, atY / tileSide));
      if (tile.isUniform()) continue;
      prefetch(tile.data() + (atY % tileSide * tileSide + atX % tileSide) * pixelBytes_);
    }
  }
}

/// The pixel at (x, y), if it and its three neighbours to the right and below can be read from one tile.
inline const std::byte* TileTransform::cornerWithinTile(int x, int y) {
  const bool isWithin = x >= sourceClip_.x && x + 1 < sourceClip_.x + sourceClip_.width &&
                        y >= sourceClip_.y && y + 1 < sourceClip_.y + sourceClip_.height;
  if (!isWithin) return nullptr;
  const auto column = static_cast<unsigned>(x) % tileSide;
  const auto row = static_cast<unsigned>(y) % tileSide;
  if (column == tileSide - 1 || row == tileSide - 1) return nullptr;
  const int index = source_.tileIndex(x / tileSide, y / tileSide);
  if (index != knownTile_) {
    const Tile& tile = source_.tile(index);
    knownTile_ = index;
    knownPixels_ = tile.isUniform() || tile.has(TileTrait::irregular) ? nullptr : tile.data();
  }
  if (knownPixels_ == nullptr) return nullptr;
  return knownPixels_ + static_cast<std::ptrdiff_t>(row * tileSide + column) * pixelBytes_;
}

/// Copies the four neighbours of every sample. A size that is known copies without a call.
template <std::size_t pixelBytes>
void TileTransform::readAllNeighbours(const Batch& batch) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(batch.count); ++i) {
    readNeighbours<pixelBytes>(batch.samples[i], batch.corners[i], neighbours_.data() + i * 4 * pixelBytes);
  }
}

/// Copies the four neighbours of a sample, one by one where they don't stand together.
template <std::size_t pixelBytes>
void TileTransform::readNeighbours(const CollectedSample& sample, const std::byte* corner,
                                   std::byte* out) const {
  if (corner != nullptr) {
    std::memcpy(out, corner, 2 * pixelBytes);
    std::memcpy(out + 2 * pixelBytes, corner + tileSide * pixelBytes, 2 * pixelBytes);
    return;
  }
  const auto x = static_cast<int>(sample.u >> fixedPointBits);
  const auto y = static_cast<int>(sample.v >> fixedPointBits);
  for (const int atY : {y, y + 1}) {
    for (const int atX : {x, x + 1}) {
      const bool isInside = atX >= sourceClip_.x && atX < sourceClip_.x + sourceClip_.width &&
                            atY >= sourceClip_.y && atY < sourceClip_.y + sourceClip_.height;
      const std::uint64_t pixel =
          isInside ? regularPixel(source_.pixelAt(atX, atY), source_.format()) : std::uint64_t{0};
      std::memcpy(out, &pixel, pixelBytes);
      out += pixelBytes;
    }
  }
}

void TileTransform::add(Batch& batch, float* sums) {
  if (batch.count == 0) return;
  switch (source_.pixelBytes()) {
    case 2:
      readAllNeighbours<2>(batch);
      break;
    case 4:
      readAllNeighbours<4>(batch);
      break;
    default:
      readAllNeighbours<8>(batch);
  }
  const int padded = (batch.count * 4 + 15) / 16 * 16;
  premultiplyRow(source_.format(), neighbours_.data(), premultiplied_.data(), padded);
  addCollectedSamples(premultiplied_.data(), batch.samples.data(), sums, batch.count);
  batch.count = 0;
}

}  // namespace orvanel::kernels
