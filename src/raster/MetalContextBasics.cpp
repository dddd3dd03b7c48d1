// The wrappers of the kernels that make and convert whole textures.
#include "raster/MetalContext.h"
#include "raster/kernels/DispatchBuilder.h"

namespace orvanel {

void MetalContext::clearTexture(Surface& texture, ColorMode mode, const Color4& color) const {
  ClearParams params;
  params.color = color;
  params.colorMode = rawValue(mode);
  clearPipeline.function(DispatchBuilder().write(0, texture).bytes(0, params).dispatch());
}

void MetalContext::drawCheckerboard(Surface& texture, float squareSize) const {
  checkerboardPipeline.function(DispatchBuilder().write(0, texture).bytes(0, squareSize).dispatch());
}

void MetalContext::convertTexture(const Surface& source, Surface& destination, ColorMode from,
                                  ColorMode to) const {
  const ConvertParams params{rawValue(from), rawValue(to)};
  convertTexturePipeline.function(
      DispatchBuilder().read(0, source).write(1, destination).bytes(0, params).dispatch());
}

}  // namespace orvanel
