// The inner work of kernels that scale, rotate and transform: every destination pixel is mapped into the
// source and sampled there bilinearly, transparent outside. Where the source shrinks below half, a pixel
// takes a grid of samples, and where that would be many of them, the mean of what it covers. A pixel comes
// out the same whether its whole tile is made or only some pixels of it. One object for each thread.
#pragma once

#include <hwy/aligned_allocator.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

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

  /// The pixel that a whole tile of the destination gets because its source is uniform.
  [[nodiscard]] std::optional<std::uint64_t> uniformPixel(const PixelRect& tile) const;
  /// Makes one tile.
  void run(Surface& destination, int index);
  /// Makes the pixels at the samples of a tile, row after row. `out` is aligned to 64 bytes and has room for
  /// a multiple of 16 pixels.
  void sample(const PixelRect& tile, const SampleBlock& samples, std::byte* out);

 private:
  /// Samples whose neighbours have been asked for.
  struct Batch {
    static constexpr int most = 128;
    std::array<CollectedSample, most> samples{};
    std::array<const std::byte*, most> corners{};  ///< null if the neighbours aren't adjacent in memory
    int count = 0;
  };

  [[nodiscard]] double samplesOfPixel() const { return static_cast<double>(samplesAcross_) * samplesDown_; }
  [[nodiscard]] bool wouldBeDense() const;
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
  void collect(std::span<const std::int32_t> columns, const SampleLine& line, std::uint32_t output,
               float* sums);
  [[nodiscard]] const std::byte* cornerWithinTile(int x, int y);
  void prefetchNeighbours(const std::byte* corner) const;
  void prefetchEachNeighbour(int x, int y) const;
  template <std::size_t pixelBytes>
  void readAllNeighbours(const Batch& batch);
  template <std::size_t pixelBytes>
  void readNeighbours(const CollectedSample& sample, const std::byte* corner, std::byte* out) const;
  void add(Batch& batch, float* sums);

  const Surface& source_;
  std::ptrdiff_t pixelBytes_;
  Matrix matrix_;
  PixelRect sourceClip_;
  PixelRect destinationClip_;
  int samplesAcross_;
  int samplesDown_;
  bool isDense_;
  FixedPoint stepU_;
  FixedPoint stepV_;
  PixelRect tile_;
  float* sums_ = nullptr;
  float* gathered_ = nullptr;
  TransformScratch& scratch_;

  /// Samples are collected in one batch while the pixels of the other are on their way.
  std::array<Batch, 2> batches_;
  std::size_t collecting_ = 0;
  alignas(64) std::array<std::byte, std::size_t{Batch::most} * 4 * 8> neighbours_{};
  alignas(64) std::array<float, std::size_t{Batch::most} * 4 * 4> premultiplied_{};
  /// The tile that was looked up last, and its pixels: null if they are uniform or irregular.
  int knownTile_ = -1;
  const std::byte* knownPixels_ = nullptr;
};

}  // namespace orvanel::kernels
