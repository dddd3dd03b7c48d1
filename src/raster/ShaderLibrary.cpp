#include "raster/ShaderLibrary.h"

#include "raster/fragments/Fragments.h"
#include "raster/kernels/Kernels.h"

namespace orvanel {

ShaderLibrary ShaderLibrary::standard() {
  ShaderLibrary library;
  library.kernels_ = {
      {"compositeLayer", kernels::compositeLayer},
      {"clearTexture", kernels::clearTexture},
      {"brushStroke", kernels::brushStroke},
      {"drawCheckerboard", kernels::drawCheckerboard},
      {"invertColors", kernels::invertColors},
      {"fillMask", kernels::fillMask},
      {"invertMask", kernels::invertMask},
      {"fillRectMask", kernels::fillRectMask},
      {"fillWithSelection", kernels::fillWithSelection},
      {"fillMaskWithSelection", kernels::fillMaskWithSelection},
      {"fillEllipseMask", kernels::fillEllipseMask},
      {"intersectMasks", kernels::intersectMasks},
      {"addMasks", kernels::addMasks},
      {"subtractMasks", kernels::subtractMasks},
      {"unionMasks", kernels::unionMasks},
      {"magicWandNonContiguous", kernels::magicWandNonContiguous},
      {"magicWandEligibility", kernels::magicWandEligibility},
      {"magicWandAntialias", kernels::magicWandAntialias},
      {"levelsAdjust", kernels::levelsAdjust},
      {"convertTexture", kernels::convertTexture},
      {"translateMask", kernels::translateMask},
      {"selectionBoundingRect", kernels::selectionBoundingRect},
      {"fillPolygonMask", kernels::fillPolygonMask},
      {"extractMaskedPixels", kernels::extractMaskedPixels},
      {"layerContentBoundingRect", kernels::layerContentBoundingRect},
      {"translateLayerPixels", kernels::translateLayerPixels},
      {"scaleLayerRegion", kernels::scaleLayerRegion},
      {"rotateLayerPixels", kernels::rotateLayerPixels},
      {"affineTransformLayerPixels", kernels::affineTransformLayerPixels},
      {"applyLayerMask", kernels::applyLayerMask},
      {"extractAlpha", kernels::extractAlpha},
      {"extractChannel", kernels::extractChannel},
      {"resampleTexture", kernels::resampleTexture},
      {"checkEdgeUniformity", kernels::checkEdgeUniformity},
      {"trimBoundingRect", kernels::trimBoundingRect},
  };
  library.fragments_ = {
      {"backgroundFragmentShader", fragments::background},
      {"checkerboardFragmentShader", fragments::checkerboard},
      {"documentFragmentShader", fragments::document},
      {"pixelGridFragmentShader", fragments::pixelGrid},
      {"selectionOverlayFragmentShader", fragments::selectionOverlay},
      {"dragPathFragmentShader", fragments::dragPath},
      {"moveToolFragmentShader", fragments::moveTool},
      {"freeTransformFragmentShader", fragments::freeTransform},
  };
  library.vertices_ = {"layerVertexShader"};
  return library;
}

KernelFunction ShaderLibrary::kernel(std::string_view name) const {
  const auto found = kernels_.find(name);
  return found == kernels_.end() ? nullptr : found->second;
}

FragmentFunction ShaderLibrary::fragment(std::string_view name) const {
  const auto found = fragments_.find(name);
  return found == fragments_.end() ? nullptr : found->second;
}

bool ShaderLibrary::hasVertex(std::string_view name) const {
  return vertices_.contains(name);
}

void ShaderLibrary::remove(std::string_view name) {
  if (const auto found = kernels_.find(name); found != kernels_.end()) kernels_.erase(found);
  if (const auto found = fragments_.find(name); found != fragments_.end()) fragments_.erase(found);
  if (const auto found = vertices_.find(name); found != vertices_.end()) vertices_.erase(found);
}

}  // namespace orvanel
