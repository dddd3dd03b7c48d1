#include "raster/fragments/SelectionOutline.h"

namespace orvanel::fragments {

void selectionOverlay(const FragmentInvocation& invocation, const FragmentBand& band) {
  const Surface* mask = invocation.textures[0];
  if (mask == nullptr) return;
  const auto uniforms = fragmentUniforms<SelectionOverlayUniforms>(invocation);
  const OutlineColors colors(uniforms.selectionAnimationOffset, uniforms.view.scale);
  colors.draw(findOutline(uniforms.view, *mask, band), band);
}

}  // namespace orvanel::fragments
