// Every fragment function of the on-screen passes by name. Each maps device pixels to document pixels
// through the uniform header it is handed and draws premultiplied BGRA over the rows of its band.
#pragma once

#include "raster/ShaderLibrary.h"

namespace orvanel {

/// The header every pass's uniforms begin with.
struct CanvasViewUniforms {
  float viewportWidth = 0.0F;   ///< device pixels
  float viewportHeight = 0.0F;  ///< device pixels
  float canvasWidth = 0.0F;     ///< document pixels
  float canvasHeight = 0.0F;    ///< document pixels
  float offsetX = 0.0F;         ///< document pixels
  float offsetY = 0.0F;         ///< document pixels
  float zoom = 1.0F;            ///< view points per document pixel
  float scale = 1.0F;           ///< device pixels per view point
};
static_assert(sizeof(CanvasViewUniforms) == 32);

}  // namespace orvanel

namespace orvanel::fragments {

void background(const FragmentInvocation& invocation, const FragmentBand& band);
void checkerboard(const FragmentInvocation& invocation, const FragmentBand& band);
void document(const FragmentInvocation& invocation, const FragmentBand& band);
void pixelGrid(const FragmentInvocation& invocation, const FragmentBand& band);
void selectionOverlay(const FragmentInvocation& invocation, const FragmentBand& band);
void dragPath(const FragmentInvocation& invocation, const FragmentBand& band);
void moveTool(const FragmentInvocation& invocation, const FragmentBand& band);
void freeTransform(const FragmentInvocation& invocation, const FragmentBand& band);

}  // namespace orvanel::fragments
