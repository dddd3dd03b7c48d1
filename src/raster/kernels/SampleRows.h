// Pixels of a surface at crossings of columns and rows, packed row after row. Safe on any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "raster/KernelRecords.h"
#include "raster/Surface.h"

namespace orvanel::kernels {

/// Columns and rows of a canvas within one tile, both ascending and not empty.
struct SampleBlock {
  std::span<const std::int32_t> columns;
  std::span<const std::int32_t> rows;

  [[nodiscard]] std::size_t count() const { return columns.size() * rows.size(); }
  [[nodiscard]] bool isContiguous() const {
    return columns.back() - columns.front() + 1 == static_cast<std::int32_t>(columns.size()) &&
           rows.back() - rows.front() + 1 == static_cast<std::int32_t>(rows.size());
  }
};

/// Copies the regular pixels at the samples of the surface moved by `shift`; outside it they are zero.
void gatherSamples(const Surface& surface, const SampleBlock& samples, const OffsetParams& shift,
                   std::byte* out);

}  // namespace orvanel::kernels
