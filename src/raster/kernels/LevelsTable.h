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
  /// True when the curve is bent and the layer so large that a table pays.
  [[nodiscard]] static bool isWorthwhile(const Surface& layer, const LevelsParams& params);

  LevelsTable(PixelFormat format, const LevelsParams& params);

  /// Exactly what `levelsRow` makes of the row without weights.
  void adjustRow(const std::byte* in, std::byte* out, int count) const;

 private:
  PixelFormat format_;
  std::vector<std::uint16_t> values_;
};

}  // namespace orvanel::kernels
