// The most memory that moving a layer's pixels, or its mask, can take: the tiles that data comes to, and the
// flattened image there and where it was. A part of `editCost`. Main thread only.
#pragma once

#include <cstdint>
#include <vector>

#include "model/Document.h"
#include "raster/SurfaceChange.h"

namespace orvanel::editCost {

/// Before it is known where the surfaces of a layer move to.
struct MoveCost {
  std::uint64_t shifted = 0;   ///< by whole pixels, one place after the other
  std::uint64_t anywhere = 0;  ///< by any transforms, one after the other
};
[[nodiscard]] MoveCost ofMoves(const Document& document, const Layer& layer,
                               const std::vector<SurfaceKind>& kinds);

/// A surface as it was before the edit, and how it moves.
struct MovedSurface {
  SurfaceKind kind;
  const Surface& original;
  const SurfaceChange& change;
};
/// Writing these moves in the place of what the layer's surfaces hold.
[[nodiscard]] std::uint64_t ofMove(const Document& document, const Layer& layer,
                                   const std::vector<MovedSurface>& surfaces);

}  // namespace orvanel::editCost
