#include "tools/CanvasViewLayer.h"

namespace orvanel {

CanvasViewUniforms viewUniforms(const CanvasViewContext& context) {
  return {static_cast<float>(context.viewportWidth),
          static_cast<float>(context.viewportHeight),
          static_cast<float>(context.canvasWidth),
          static_cast<float>(context.canvasHeight),
          static_cast<float>(context.viewportOffsetX),
          static_cast<float>(context.viewportOffsetY),
          static_cast<float>(context.zoom),
          static_cast<float>(context.scaleFactor)};
}

}  // namespace orvanel
