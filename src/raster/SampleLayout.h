// How a view's samples fall on the tiles of the canvas. Immutable; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "raster/SampleGrid.h"
#include "raster/kernels/SampleRows.h"

namespace orvanel {

struct SampleLayout {
  /// Strips start at multiples of this many samples, so that pixels of every format are aligned to 64 bytes.
  static constexpr std::size_t alignment = 32;

  /// Consecutive rows of a block; few enough samples for one accumulator.
  struct Strip {
    int rowBegin = 0;  ///< places in the grid
    int rowEnd = 0;
    /// Where all strips stand one after the other: the place of its first sample, and the room it has.
    std::size_t first = 0;
    std::size_t room = 0;
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

  [[nodiscard]] kernels::SampleBlock samplesOf(const Block& block) const;
  [[nodiscard]] kernels::SampleBlock samplesOf(const Block& block, const Strip& strip) const;

  SampleGrid grid;
  std::vector<Block> blocks;
  std::size_t samples = 0;  ///< of all strips, with their padding
  /// Whether neighbouring samples are further apart in the canvas than in a row of their own.
  bool isSparse = false;
};

}  // namespace orvanel
