// Moves the outline around the selection without drawing the frame again: finds the outline's pixels once and
// then repaints only these. Owned by the renderer; called inside a frame on the main thread.
#pragma once

#include <vector>

#include "raster/RenderEncoder.h"
#include "raster/fragments/SelectionOutline.h"

namespace orvanel {

class MarchingAnts {
 public:
  /// A whole frame is about to be drawn, in which everything may lie elsewhere.
  void beginWholeFrame(const RenderEncoder& encoder);
  /// Brings the outline in a drawable that holds the frame recorded, at whatever phase, to the phase
  /// recorded. The result is that of drawing the whole frame. Returns what has changed, in device pixels.
  [[nodiscard]] std::vector<PixelRect> advance(const RenderEncoder& encoder, const Drawable& drawable);
  /// True while the last frame shows an outline that moves.
  [[nodiscard]] bool isShown() const { return isShown_; }

 private:
  /// The outline in one band.
  struct Band {
    std::vector<OutlinePixel> pixels;
    /// Those with something drawn above them, which has to be drawn again when they change.
    std::vector<OutlinePixel> covered;
  };
  using Draws = std::span<const RenderEncoder::Draw>;

  void find(const RenderEncoder::Draw& outline, Draws above, const Drawable& drawable);
  void findDamage(const Drawable& drawable);

  bool isShown_ = false;
  bool isFound_ = false;
  float phase_ = 0.0F;
  std::vector<Band> bands_;
  std::vector<PixelRect> damage_;
};

}  // namespace orvanel
