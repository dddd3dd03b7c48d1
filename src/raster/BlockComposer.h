// Composites a plan's blocks at the samples of a view, for one evaluation. `SampledPlan` is made on the main
// thread and shared by all; a composer works for one thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "raster/CompositePlan.h"
#include "raster/Hash.h"
#include "raster/KeptSamples.h"
#include "raster/SampleLayout.h"
#include "raster/Surface.h"
#include "raster/kernels/CompositeStrip.h"
#include "raster/kernels/SampleSource.h"

namespace orvanel {

/// A thread's memory.
struct SamplingMemory {
  static constexpr std::size_t stripBytes = std::size_t{kernels::stripPixels} * 8;

  kernels::StripAccumulator accumulator;
  alignas(64) std::array<std::byte, stripBytes> gatheredPixels;
  alignas(64) std::array<std::byte, stripBytes> gatheredMask;
  alignas(64) std::array<std::byte, stripBytes> changedPixels;
  alignas(64) std::array<std::byte, stripBytes> changedMask;
  alignas(64) std::array<std::byte, stripBytes> result;
  kernels::Scratch<std::byte> nested;
  kernels::TransformScratch transforms;
  std::vector<kernels::Scratch<std::byte>> resampled;
};

/// A plan made ready for one evaluation.
struct SampledPlan {
  /// A step of the plan, by the numbers of its sources.
  struct Step {
    CompositeParams params;
    int source = -1;
    int mask = -1;
    int nested = -1;
  };
  struct Target {
    PixelFormat format;
    std::vector<Step> steps;
  };

  explicit SampledPlan(const CompositePlan& plan);

  std::vector<Target> targets;
  std::vector<std::unique_ptr<const kernels::SampleSource>> sources;
  /// Null: not kept.
  std::unordered_map<const Surface*, KeptPixels*> keptOf;

 private:
  int add(const CompositePlan::Source& source);
};

class BlockComposer final : public kernels::StripReader {
 public:
  BlockComposer(const SampledPlan& plan, const SampleLayout& layout, KeptBelow& below,
                SamplingMemory& memory);

  /// Hashes of everything that decides a block's pixels.
  struct Recipes {
    std::uint64_t whole = 0;
    std::uint64_t below = 0;  ///< of the steps that are kept
  };
  [[nodiscard]] Recipes recipesOf(std::size_t block);
  /// Makes the block's pixels. `below` is its recipe, `tiles` are the image's tiles under the block.
  void make(std::size_t block, std::uint64_t below, const Surface& image, std::span<std::byte* const> tiles);

  const std::byte* standing(const Surface& surface) override;

 private:
  /// What one step contributes to one block, once uniform masks and transparent sources are settled.
  struct Contribution {
    kernels::StripSource source;
    const SampledPlan::Step* step = nullptr;
    bool readsPixels = false;
    bool readsMask = false;
  };
  /// How the accumulated first steps are used.
  enum class BelowUse { pass, save, load };

  void begin(std::size_t block);
  void foldSource(Hasher& hasher, int source) const;

  [[nodiscard]] std::optional<Contribution> contributionOf(const SampledPlan::Step& step) const;
  [[nodiscard]] bool isOpaqueCover(const Contribution& contribution) const;
  void settle();
  void settleBelow(std::uint64_t recipeBelow);
  void findNeededTargets();
  [[nodiscard]] static kernels::PlaneSet planesOf(std::span<const Contribution> contributions);

  [[nodiscard]] const std::byte* wholeRows(const Tile& tile, int pixelBytes) const;
  [[nodiscard]] const std::byte* read(int source, std::span<std::byte> scratch);
  void resample(std::size_t source, std::byte* strip);
  [[nodiscard]] std::byte* nestedStrip(std::size_t target);
  [[nodiscard]] int paddedCount() const;

  void composeStrip();
  void composeTarget(std::size_t target);
  void composite(std::span<const Contribution> contributions, kernels::PlaneSet planes);
  void write(const Surface& image, std::span<std::byte* const> tiles);

  const SampledPlan& plan_;
  const SampleLayout& layout_;
  KeptBelow& below_;
  SamplingMemory& memory_;
  std::vector<kernels::TileFacts> facts_;  ///< of each source, under the current block
  std::vector<std::unique_ptr<kernels::TileTransform>> transforms_;
  /// The block that each source has been resampled for as a whole.
  std::vector<std::size_t> resampledBlock_;
  std::vector<std::uint64_t> targetRecipes_;
  std::vector<std::vector<Contribution>> contributions_;  ///< of each target
  std::vector<bool> isNeeded_;                            ///< each target
  BelowUse belowUse_ = BelowUse::pass;
  /// How many of the canvas's contributions come from the kept steps.
  std::size_t contributionsBelow_ = 0;
  std::size_t blockIndex_ = 0;
  const SampleLayout::Block* block_ = nullptr;
  const SampleLayout::Strip* strip_ = nullptr;
  int tileIndex_ = 0;
};

}  // namespace orvanel
