// Tells which ranges of two files are the same blocks on the disk, as the file system maps them. Plain values
// once made; any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "io/files/FileOperations.h"

namespace orvanel {

class SharedExtents {
 public:
  /// Asks the file system. What it doesn't tell, or not for certain, counts as not shared.
  [[nodiscard]] static SharedExtents between(int first, int second);
  /// Whether every byte of the range stands where the one of the other file does.
  [[nodiscard]] bool areSame(std::uint64_t firstOffset, std::uint64_t secondOffset,
                             std::uint64_t length) const;

 private:
  using Extents = std::vector<FileExtent>;
  SharedExtents(Extents first, Extents second);

  Extents first_;
  Extents second_;
};

}  // namespace orvanel
