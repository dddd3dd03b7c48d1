// Levels by looking up: what a curve makes of every value that a channel can hold, computed once for a
// layer. Built where the kernel runs; immutable afterwards and safe on any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "raster/KernelRecords.h"
#include "raster/Surface.h"

namespace orvanel::kernels {

class LevelsTable {
 public:
  /// True when the curve is bent and so many pixels are to be adjusted that a table pays. Null selects all.
  [[nodiscard]] static bool isWorthwhile(const Surface& layer, const Surface* selection,
                                         const LevelsParams& params);

  LevelsTable(PixelFormat format, const LevelsParams& params);

  /// Exactly what `levelsRow` makes of the row.
  void adjustRow(const std::byte* in, std::byte* out, const std::uint16_t* weights, int count) const;

 private:
  void adjustWhole(const std::byte* in, std::byte* out, int count) const;

  PixelFormat format_;
  std::vector<float> curve_;            ///< for mixing
  std::vector<std::uint16_t> rounded_;  ///< the same as channels hold it
};

}  // namespace orvanel::kernels
