// Records the passes of one frame and draws them band by band into a drawable, each band through all its
// passes while it is in cache. Lives for one frame, on the main thread; drawing is done when
// `endEncoding` returns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "raster/Backdrop.h"
#include "raster/MetalContext.h"

namespace orvanel {

/// Memory that a frame is drawn into: premultiplied 8-bit BGRA, in device pixels.
struct Drawable {
  std::uint32_t* pixels = nullptr;
  std::size_t pixelsPerRow = 0;
  int width = 0;
  int height = 0;
};

class RenderEncoder {
 public:
  struct Draw {
    FragmentFunction function;
    std::vector<std::byte> uniforms;
    const Surface* texture;
    std::vector<std::byte> points;
    /// How many of the uniforms' first bytes don't change as time goes on.
    std::size_t stillBytes;
  };

  explicit RenderEncoder(const Drawable& drawable) : drawable_(drawable) {}

  /// Adds a full-view draw. Uniforms and points are copied; the texture must live until `endEncoding`.
  void draw(const RenderPipeline& pipeline, std::span<const std::byte> uniforms,
            const Surface* texture = nullptr, std::span<const std::byte> points = {});
  /// Adds a full-view draw whose uniforms change as time goes on, except for their first `stillBytes`.
  void drawAnimated(const RenderPipeline& pipeline, std::span<const std::byte> uniforms,
                    std::size_t stillBytes, const Surface* texture);
  /// Says that what was recorded until now is the picture's backdrop.
  void endBackdrop();
  /// A hash of everything the recorded picture depends on, except for time: drawable, passes, uniforms,
  /// points and the tiles of the textures. Equal fingerprints draw pictures that are equal but for their
  /// animation; no pixel is read.
  [[nodiscard]] std::uint64_t fingerprint() const;
  /// Draws what was recorded and forgets it.
  void endEncoding();
  /// The same, but the backdrop is taken from `backdrop` if that holds it.
  void endEncoding(Backdrop& backdrop);
  /// The rows that are drawn at once; bands are counted from the top.
  [[nodiscard]] static int bandCount(const Drawable& drawable);
  [[nodiscard]] static FragmentBand band(const Drawable& drawable, int index);

  /// What has been recorded, in drawing order.
  [[nodiscard]] const std::vector<Draw>& draws() const { return draws_; }

 private:
  Drawable drawable_;
  std::vector<Draw> draws_;
  std::size_t backdropDraws_ = 0;
  std::uint64_t backdropFingerprint_ = 0;
};

}  // namespace orvanel
