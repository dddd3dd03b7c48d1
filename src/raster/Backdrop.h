// The lower part of a view's picture, which stays as it is while only what is above it changes: a dragged
// rectangle, a box, an outline. It is kept from the second frame that shows it, so that a picture which
// changes with every frame costs nothing more. Owned by whoever draws the view; main thread only, but for
// bands.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "raster/ShaderLibrary.h"

namespace orvanel {

class Backdrop {
 public:
  enum class Use {
    pass,     ///< seen for the first time: draw it
    keep,     ///< draw it, then `keep` each band
    restore,  ///< `restore` each band instead of drawing it
  };

  /// What to do with a frame of this size in device pixels. Frames of one fingerprint have the same backdrop.
  [[nodiscard]] Use begin(std::uint64_t fingerprint, int width, int height);
  /// Copies between the band and what is kept. Different bands may be copied at once.
  void keep(const FragmentBand& band);
  void restore(const FragmentBand& band) const;
  /// Frees the memory.
  void forget();

 private:
  std::optional<std::uint64_t> fingerprint_;
  bool isKept_ = false;
  /// Packed rows.
  std::vector<std::uint32_t> pixels_;
};

}  // namespace orvanel
