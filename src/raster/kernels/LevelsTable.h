// A lookup table for levels: the curve's result for every value a channel can hold, computed once per layer.
// Immutable once built; safe on any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "raster/KernelRecords.h"
#include "raster/Surface.h"

namespace orvanel::kernels {

class LevelsTable {
 public:
  /// True when the curve is nonlinear and enough pixels are adjusted to repay a table. A null selection means
  /// all pixels.
  [[nodiscard]] static bool isWorthwhile(const Surface& layer, const Surface* selection,
                                         const LevelsParams& params);

  LevelsTable(PixelFormat format, const LevelsParams& params);

  /// The same result as `levelsRow`, bit for bit.
  void adjustRow(const std::byte* in, std::byte* out, const std::uint16_t* weights, int count) const;

 private:
  void adjustWhole(const std::byte* in, std::byte* out, int count) const;

  PixelFormat format_;
  std::vector<float> curve_;            ///< for mixing
  std::vector<std::uint16_t> rounded_;  ///< the same as channels hold it
};

}  // namespace orvanel::kernels
