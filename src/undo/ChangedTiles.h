// The tiles of a surface that a change writes, by index: what it needs memory for, and where the flattened
// image is made again. A value.
#pragma once

#include <vector>

namespace orvanel {

struct ChangedTiles {
  /// Those that can be data afterwards.
  std::vector<int> data;
  /// Those that are uniform afterwards, or stay as they are.
  std::vector<int> uniform;
};

}  // namespace orvanel
