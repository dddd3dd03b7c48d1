// The image of a `CompositePlan` at the samples of a view, bit for bit what flattening the whole canvas gives
// there. Costs what is seen: pixels of sources that stay are kept at the samples from one evaluation to the
// next, and only what has changed is composited again.
// Owned by the renderer; main thread only. The work spreads over all cores and is complete on return.
#pragma once

#include <hwy/aligned_allocator.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "raster/CompositePlan.h"
#include "raster/KeptSamples.h"
#include "raster/SampleGrid.h"
#include "raster/SampleLayout.h"
#include "raster/Surface.h"

namespace orvanel {

struct SampledPlan;

class SampledComposite {
 public:
  SampledComposite();
  ~SampledComposite();
  SampledComposite(const SampledComposite&) = delete;
  SampledComposite& operator=(const SampledComposite&) = delete;

  /// A pixel for each sample of the grid, which isn't empty, in the format of the plan's canvas. Good until
  /// the next evaluation.
  const Surface& evaluate(const CompositePlan& plan, const SampleGrid& grid);
  /// Gathers what an evaluation of this plan will keep, for about this long; the next call continues from
  /// there. True once nothing is missing, so that whatever step then changes costs what the steps after it
  /// do.
  bool prepare(const CompositePlan& plan, const SampleGrid& grid, std::chrono::milliseconds budget);
  /// Lets go of everything kept.
  void forget();

  /// Tiles' parts composited by the last evaluation.
  [[nodiscard]] int blocksMade() const { return blocksMade_; }
  /// Bytes of pixels kept at the samples.
  [[nodiscard]] std::size_t keptBytes() const;

  /// More bytes than this are not kept, but gathered each time.
  std::size_t mostKept = std::size_t{512} << 20U;

 private:
  void arrange(const SampleGrid& grid, PixelFormat format);
  /// What is kept of each surface that the sources read at the samples; null for one that there is no room
  /// for.
  [[nodiscard]] std::map<const Surface*, KeptPixels*> keepStanding(const SampledPlan& plan);
  KeptPixels* keep(const Surface& surface);
  [[nodiscard]] bool makeRoomFor(std::size_t bytes);
  /// Memory for the whole image, which the system clears when it is first written to. False if time ran out.
  bool makeRoomForImage(std::chrono::steady_clock::time_point end);

  std::optional<SampleLayout> layout_;
  std::optional<Surface> image_;
  std::vector<std::uint64_t> recipes_;  ///< of each block of the image
  std::unordered_map<const Surface*, KeptPixels> kept_;
  KeptBelow below_;
  std::uint64_t evaluations_ = 0;
  int blocksMade_ = 0;
  struct Workers;
  std::unique_ptr<Workers> workers_;
};

}  // namespace orvanel
