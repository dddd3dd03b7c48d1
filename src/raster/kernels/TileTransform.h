// The inner work of kernels that scale, rotate and transform: every destination pixel is mapped into the
// source and sampled there bilinearly, transparent outside. Where the source shrinks below half, a pixel
// takes a grid of samples, and where that would be many of them, the mean of what it covers. A pixel comes
// out the same whether its whole tile is made or only some pixels of it. One object for each thread.
#pragma once

#include <hwy/aligned_allocator.h>

#include <array>
#include <cstdint>
#include <optional>

#include "raster/kernels/PixelTransform.h"
#include "raster/kernels/PremultipliedRows.h"
#include "raster/kernels/SampleRows.h"

namespace orvanel::kernels {

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

/// What a thread's transforms keep from one to the next.
struct TransformScratch {
  Scratch<float> sums;
  Scratch<float> gathered;
  Scratch<std::byte> straight;
};

class TileTransform {
 public:
  /// The transform is one that resamples.
  TileTransform(const Surface& source, const PixelTransform& transform, TransformScratch& scratch);

  /// The pixel that a whole tile of the destination gets because what it takes from is uniform.
  [[nodiscard]] std::optional<std::uint64_t> uniformPixel(const PixelRect& tile) const;
  /// Makes one tile.
  void run(Surface& destination, int index);
  /// Makes the pixels at the samples of a tile, row after row. `out` is aligned to 64 bytes and has room for
  /// a multiple of 16 pixels.
  void sample(const PixelRect& tile, const SampleBlock& samples, std::byte* out);

 private:
  [[nodiscard]] double samplesOfPixel() const { return static_cast<double>(samplesAcross_) * samplesDown_; }
  [[nodiscard]] bool isDense() const;
  [[nodiscard]] PixelRect reachOf(const PixelRect& block) const;
  [[nodiscard]] std::array<float, 4> meanAt(int x, int y) const;
  [[nodiscard]] SampleLine lineAt(int y, int sampleX, int sampleY) const;

  void sumBlock(const PixelRect& block);
  void takeMeans(const PixelRect& block);
  void addBlock(const PixelRect& block);
  void addHalves(const PixelRect& block);
  void addRow(const RingedBlock& pixels, const PixelRect& region, const PixelRect& block, int y,
              const SampleLine& line);
  void gather(const PixelRect& region);
  void divideBySamples(float* sums, std::size_t pixels) const;
  [[nodiscard]] float* sumRow(int y) { return sums_ + static_cast<std::size_t>(y) * tileSide * 4; }

  void sampleTogether(const SampleBlock& samples, std::byte* out);
  void samplePoints(const SampleBlock& samples, std::byte* out);
  void addPoints(const SampleBlock& samples, std::size_t row, const SampleLine& line, float* sums);
  void collect(FixedPoint u, FixedPoint v, std::uint32_t output, float* sums);
  [[nodiscard]] const std::byte* cornerWithinTile(int x, int y) const;
  template <std::size_t pixelBytes>
  void readAllNeighbours();
  template <std::size_t pixelBytes>
  void readNeighbours(const CollectedSample& sample, const std::byte* corner, std::byte* out) const;
  void addCollected(float* sums);

  const Surface& source_;
  Matrix matrix_;
  PixelRect sourceClip_;
  PixelRect destinationClip_;
  int samplesAcross_;
  int samplesDown_;
  PixelRect tile_;
  float* sums_ = nullptr;
  float* gathered_ = nullptr;
  TransformScratch& scratch_;

  static constexpr int mostCollected = 64;
  alignas(64) std::array<std::byte, std::size_t{mostCollected} * 4 * 8> neighbours_{};
  alignas(64) std::array<float, std::size_t{mostCollected} * 4 * 4> premultiplied_{};
  std::array<CollectedSample, mostCollected> collected_{};
  std::array<const std::byte*, mostCollected> corners_{};  ///< null: the neighbours don't stand together
  int collectedCount_ = 0;
};

}  // namespace orvanel::kernels
