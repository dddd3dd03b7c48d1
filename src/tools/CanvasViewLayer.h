// A pass of the on-screen picture, and the view state shared by all passes. Passes are owned by the renderer
// or by the tool whose overlay they draw, and are called inside a frame on the main thread.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "model/Document.h"
#include "raster/RenderEncoder.h"
#include "raster/fragments/Fragments.h"

namespace orvanel {

/// The placement of the document in the view for one frame.
struct CanvasViewContext {
  double viewportWidth = 0.0;    ///< device pixels
  double viewportHeight = 0.0;   ///< device pixels
  double canvasWidth = 0.0;      ///< document pixels
  double canvasHeight = 0.0;     ///< document pixels
  double viewportOffsetX = 0.0;  ///< document pixels
  double viewportOffsetY = 0.0;  ///< document pixels
  double zoom = 1.0;             ///< view points per document pixel
  double scaleFactor = 1.0;      ///< device pixels per view point
  /// The flattened image at the view's samples, where the document's own isn't current.
  const Surface* samples = nullptr;
};

/// The vertex function of every pass.
inline constexpr std::string_view layerVertexFunction = "layerVertexShader";

/// The common part of every pass's uniforms.
[[nodiscard]] CanvasViewUniforms viewUniforms(const CanvasViewContext& context);

/// A pass's uniforms as the encoder takes them.
template <typename Uniforms>
[[nodiscard]] std::span<const std::byte> uniformBytes(const Uniforms& uniforms) {
  return std::as_bytes(std::span(&uniforms, 1));
}

class CanvasViewLayer {
 public:
  virtual ~CanvasViewLayer() = default;

  [[nodiscard]] virtual std::string name() const = 0;
  /// `document` is null if none is shown.
  [[nodiscard]] virtual bool shouldRender(const CanvasViewContext& context,
                                          const Document* document) const = 0;
  /// Records the draw. Everything the picture depends on must go through the encoder, which uses it to decide
  /// whether a redraw is needed.
  virtual void render(RenderEncoder& encoder, const CanvasViewContext& context,
                      const Document* document) const = 0;
};

}  // namespace orvanel
