// The pixels of the outline around a selection, and their colours while its dashes move. Used by the pass
// that draws whole frames and by the canvas, which repaints only these pixels as time goes on. Plain values,
// any thread.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "raster/Surface.h"
#include "raster/fragments/FragmentUniforms.h"

namespace orvanel {

/// A device pixel of the outline.
struct OutlinePixel {
  std::uint16_t x = 0;
  std::uint8_t row = 0;  ///< counted from the band's first
  /// Its place in the pattern, in 256ths of a period. It grows clockwise around what is selected.
  std::uint8_t place = 0;
  friend bool operator==(const OutlinePixel&, const OutlinePixel&) = default;
};

/// The most rows in which an outline is looked for at once.
inline constexpr int longestOutlineBand = 256;

/// Finds the outline within the rows of a band, from the top left. A document pixel counts as selected from
/// one half on, and is looked up as the view samples it. The outline is the inner edge of what is selected,
/// as wide as a view point in whole device pixels; what lies outside the canvas isn't selected. None for a
/// mask of another size than the canvas's.
[[nodiscard]] std::vector<OutlinePixel> findOutline(const CanvasViewUniforms& view, const Surface& mask,
                                                    const FragmentBand& band);

/// The opaque colour of every place of the pattern at a phase: black and white dashes of 4 view points, which
/// have moved by the phase. Equal for phases that are multiples of 8 apart.
class OutlineColors {
 public:
  OutlineColors(float phase, float scale);
  void draw(std::span<const OutlinePixel> outline, const FragmentBand& band) const;

 private:
  std::array<std::uint32_t, 256> colors_;
};

}  // namespace orvanel
