#include "raster/MetalContext.h"

#include <utility>

#include "raster/TileMemory.h"

namespace orvanel {

MetalContext& MetalContext::shared() {
  static MetalContext context{ShaderLibrary::standard()};
  return context;
}

MetalContext::MetalContext(ShaderLibrary shaderLibrary) : library(std::move(shaderLibrary)) {}

ComputePipeline MetalContext::pipeline(std::string_view name) const {
  const KernelFunction function = library.kernel(name);
  if (function == nullptr) fatalFault("Failed to find Metal function: " + std::string(name));
  return {name, function};
}

Texture MetalContext::makeTexture(PixelFormat format, int width, int height) const {
  const bool fits = width >= 1 && height >= 1 && width <= maximumCanvasSide && height <= maximumCanvasSide;
  // These two are formats of drawables and probes, which no kernel works on.
  const bool isForKernels = format != PixelFormat::bgra8Unorm && format != PixelFormat::rgba32Float;
  if (!fits || !isForKernels || !tileMemory::admitSurface()) return nullptr;
  return std::make_shared<Surface>(format, width, height);
}

RenderPipeline MetalContext::makeRenderPipeline(std::string_view vertexName, std::string_view fragmentName,
                                                bool blending) const {
  if (!library.hasVertex(vertexName)) {
    fatalFault("Failed to find vertex function: " + std::string(vertexName));
  }
  const FragmentFunction function = library.fragment(fragmentName);
  if (function == nullptr) fatalFault("Failed to find fragment function: " + std::string(fragmentName));
  return {std::string(fragmentName), function, blending};
}

}  // namespace orvanel
