// What stays the same at the samples of a view, kept from frame to frame.
// Owned by `SampledComposite`; different blocks may be used at once.
#pragma once

#include <hwy/aligned_allocator.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "raster/SampleLayout.h"
#include "raster/Surface.h"
#include "raster/kernels/CompositeStrip.h"

namespace orvanel {

/// Pixels kept at the samples of one surface.
struct KeptPixels {
  /// Whether the block's pixels would have to be gathered from the tile. Uniform tiles aren't kept.
  [[nodiscard]] bool isOutOfDate(const Tile& tile, std::size_t block) const {
    return !tile.isUniform() && versions[block] != tile.version();
  }
  /// Gathers them.
  void take(const Surface& surface, const SampleLayout& layout, std::size_t block);

  hwy::AlignedFreeUniquePtr<std::byte[]> pixels;
  std::vector<std::uint64_t> versions;  ///< of the tile that each block was taken from; 0: none
  std::size_t bytes = 0;
  std::uint64_t lastUse = 0;
};

/// What the canvas's first steps have accumulated, while a later step changes: however many layers lie below
/// the one that is dragged, they cost one read.
class KeptBelow {
 public:
  /// Prepares for a frame that evaluates these steps of the canvas; equal numbers stand for equal steps. The
  /// steps below the first that differs from the last frame are kept, once two frames agree on it.
  void begin(const SampleLayout& layout, std::vector<std::uint64_t> steps);
  /// The bytes that it takes.
  [[nodiscard]] static std::size_t bytesFor(const SampleLayout& layout);
  /// Has the memory at hand, cleared, for a canvas of so many steps. False if it was already, or isn't
  /// needed.
  bool makeRoom(const SampleLayout& layout, std::size_t steps);
  /// How many of the first steps are kept; 0 if none are.
  [[nodiscard]] std::size_t steps() const { return planes_ == nullptr ? 0 : kept_; }

  /// Whether the block holds what this recipe made.
  [[nodiscard]] bool holds(std::size_t block, std::uint64_t recipe) const {
    return recipes_[block] == recipe;
  }
  /// Names what all strips of the block have been saved from.
  void note(std::size_t block, std::uint64_t recipe) { recipes_[block] = recipe; }
  void save(const SampleLayout::Strip& strip, const kernels::StripAccumulator& accumulator,
            kernels::PlaneSet planes);
  void load(const SampleLayout::Strip& strip, kernels::StripAccumulator& accumulator,
            kernels::PlaneSet planes) const;

  [[nodiscard]] std::size_t bytes() const;
  void forget();

 private:
  void allocate(const SampleLayout& layout);

  std::vector<std::uint64_t> lastSteps_;
  /// The first step that changed in the last frame.
  std::size_t candidate_ = 0;
  std::size_t kept_ = 0;
  /// Of each block; 0: nothing is kept.
  std::vector<std::uint64_t> recipes_;
  /// Red, green, blue and alpha of a strip, then those of the next.
  hwy::AlignedFreeUniquePtr<float[]> planes_;
  std::size_t samples_ = 0;
};

}  // namespace orvanel
