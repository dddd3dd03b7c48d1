// The image of a `CompositePlan` at the samples of a view, bit for bit what flattening the whole canvas gives
// there. Costs what is seen: pixels of sources that stay are kept at the samples from one evaluation to the
// next, and only what has changed is composited again.
// Owned by the renderer; main thread only. The work spreads over all cores and is complete on return.
#pragma once

#include <hwy/aligned_allocator.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "raster/CompositePlan.h"
#include "raster/SampleGrid.h"
#include "raster/Surface.h"

namespace orvanel {

/// How a grid's samples fall on the canvas's tiles.
struct SampleLayout {
  /// Consecutive rows of a block; few enough samples for one accumulator.
  struct Strip {
    int rowBegin = 0;  ///< places in the grid
    int rowEnd = 0;
    std::size_t first = 0;  ///< place of its first sample where all strips stand one after the other
  };
  /// The samples within one tile.
  struct Block {
    int tileX = 0;
    int tileY = 0;
    int columnBegin = 0;  ///< places in the grid
    int columnEnd = 0;
    int rowBegin = 0;
    int rowEnd = 0;
    std::vector<Strip> strips;
  };

  explicit SampleLayout(const SampleGrid& sampled);

  SampleGrid grid;
  std::vector<Block> blocks;
  std::size_t samples = 0;  ///< of all strips, with their padding
  /// Whether neighbouring samples are further apart in the canvas than in a row of their own.
  bool isSparse = false;
};

class SampledComposite {
 public:
  SampledComposite();
  ~SampledComposite();
  SampledComposite(const SampledComposite&) = delete;
  SampledComposite& operator=(const SampledComposite&) = delete;

  /// A pixel for each sample of the grid, which isn't empty, in the format of the plan's canvas. Good until
  /// the next evaluation.
  const Surface& evaluate(const CompositePlan& plan, const SampleGrid& grid);
  /// Lets go of everything kept.
  void forget();

  /// Tiles' parts composited by the last evaluation.
  [[nodiscard]] int blocksMade() const { return blocksMade_; }
  /// Bytes of pixels kept at the samples.
  [[nodiscard]] std::size_t keptBytes() const;

  /// Pixels kept at the samples of one surface.
  struct Kept {
    hwy::AlignedFreeUniquePtr<std::byte[]> pixels;
    std::vector<std::uint64_t> versions;  ///< of the tile that each block was taken from; 0: none
    std::size_t bytes = 0;
    std::uint64_t lastUse = 0;
  };
  /// More than this is not kept, but gathered each time.
  static constexpr std::size_t mostKept = std::size_t{512} << 20U;

 private:
  void arrange(const SampleGrid& grid, PixelFormat format);
  Kept* keep(const Surface& surface);

  std::optional<SampleLayout> layout_;
  std::optional<Surface> image_;
  std::vector<std::uint64_t> recipes_;  ///< of each block of the image
  std::unordered_map<const Surface*, Kept> kept_;
  std::uint64_t evaluations_ = 0;
  int blocksMade_ = 0;
  struct Workers;
  std::unique_ptr<Workers> workers_;
};

}  // namespace orvanel
