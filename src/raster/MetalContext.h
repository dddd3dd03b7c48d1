// The one raster context: every kernel of the program under its name, and the making of textures.
// One shared instance, made on first use and kept to the end. Main thread only; background work holds
// surfaces, never the context's pipelines. Every wrapper is complete when it returns.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "raster/ColorMode.h"
#include "raster/FatalFault.h"
#include "raster/KernelRecords.h"
#include "raster/ShaderLibrary.h"
#include "raster/Surface.h"

namespace orvanel {

/// A kernel that has been found by its name.
struct ComputePipeline {
  std::string_view name;
  KernelFunction function = nullptr;
};

/// A pass of the on-screen picture. With blending, premultiplied "over"; without, it replaces.
struct RenderPipeline {
  std::string name;
  FragmentFunction function = nullptr;
  bool blending = false;
};

struct PolygonPoint {
  float x = 0.0F;
  float y = 0.0F;
};

class MetalContext {
 public:
  static MetalContext& shared();
  /// Finds all 35 kernels in the order below; a missing one is fatal with its name.
  explicit MetalContext(ShaderLibrary shaderLibrary);
  MetalContext(const MetalContext&) = delete;
  MetalContext& operator=(const MetalContext&) = delete;

  const ShaderLibrary library;

  const ComputePipeline compositingPipeline = pipeline("compositeLayer");
  const ComputePipeline clearPipeline = pipeline("clearTexture");
  const ComputePipeline brushPipeline = pipeline("brushStroke");
  const ComputePipeline checkerboardPipeline = pipeline("drawCheckerboard");
  const ComputePipeline invertPipeline = pipeline("invertColors");
  const ComputePipeline fillMaskPipeline = pipeline("fillMask");
  const ComputePipeline invertMaskPipeline = pipeline("invertMask");
  const ComputePipeline fillRectMaskPipeline = pipeline("fillRectMask");
  const ComputePipeline fillWithSelectionPipeline = pipeline("fillWithSelection");
  const ComputePipeline fillMaskWithSelectionPipeline = pipeline("fillMaskWithSelection");
  const ComputePipeline fillEllipseMaskPipeline = pipeline("fillEllipseMask");
  const ComputePipeline intersectMasksPipeline = pipeline("intersectMasks");
  const ComputePipeline addMasksPipeline = pipeline("addMasks");
  const ComputePipeline subtractMasksPipeline = pipeline("subtractMasks");
  const ComputePipeline unionMasksPipeline = pipeline("unionMasks");
  const ComputePipeline magicWandNonContiguousPipeline = pipeline("magicWandNonContiguous");
  const ComputePipeline magicWandEligibilityPipeline = pipeline("magicWandEligibility");
  const ComputePipeline magicWandAntialiasPipeline = pipeline("magicWandAntialias");
  const ComputePipeline levelsPipeline = pipeline("levelsAdjust");
  const ComputePipeline convertTexturePipeline = pipeline("convertTexture");
  const ComputePipeline translateMaskPipeline = pipeline("translateMask");
  const ComputePipeline selectionBoundingRectPipeline = pipeline("selectionBoundingRect");
  const ComputePipeline fillPolygonMaskPipeline = pipeline("fillPolygonMask");
  const ComputePipeline extractMaskedPixelsPipeline = pipeline("extractMaskedPixels");
  const ComputePipeline layerContentBoundingRectPipeline = pipeline("layerContentBoundingRect");
  const ComputePipeline translateLayerPixelsPipeline = pipeline("translateLayerPixels");
  const ComputePipeline scaleLayerRegionPipeline = pipeline("scaleLayerRegion");
  const ComputePipeline rotateLayerPixelsPipeline = pipeline("rotateLayerPixels");
  const ComputePipeline affineTransformLayerPixelsPipeline = pipeline("affineTransformLayerPixels");
  const ComputePipeline applyLayerMaskPipeline = pipeline("applyLayerMask");
  const ComputePipeline extractAlphaPipeline = pipeline("extractAlpha");
  const ComputePipeline extractChannelPipeline = pipeline("extractChannel");
  const ComputePipeline resampleTexturePipeline = pipeline("resampleTexture");
  const ComputePipeline checkEdgeUniformityPipeline = pipeline("checkEdgeUniformity");
  const ComputePipeline trimBoundingRectPipeline = pipeline("trimBoundingRect");

  /// A new surface, all zero; nothing when a side is out of 1 ..= `maximumCanvasSide` or memory is refused.
  [[nodiscard]] Texture makeTexture(PixelFormat format, int width, int height) const;

  /// A pass found by the names of its two functions; a missing one is fatal with its name.
  [[nodiscard]] RenderPipeline makeRenderPipeline(std::string_view vertexName, std::string_view fragmentName,
                                                  bool blending) const;

  static int bytesPerPixel(const Surface& texture) { return orvanel::bytesPerPixel(texture.format()); }
  static std::int64_t byteSize(const Surface& texture) { return texture.byteSize(); }

  // Wrappers. Colours are straight alpha, 0 to 1; the mode says how four channels map onto the texture.
  void clearTexture(Surface& texture, ColorMode mode, const Color4& color) const;
  void drawCheckerboard(Surface& texture, float squareSize) const;
  void convertTexture(const Surface& source, Surface& destination, ColorMode from, ColorMode to) const;

  void fillMask(Surface& mask, float value) const;
  void invertMask(Surface& mask) const;
  void fillRectMask(Surface& mask, const PixelRect& rect, float feather) const;
  void fillEllipseMask(Surface& mask, float centerX, float centerY, float radiusX, float radiusY,
                       float feather) const;
  void fillPolygonMask(Surface& mask, std::span<const PolygonPoint> points) const;
  void addMasks(Surface& mask, const Surface& operand) const;
  void subtractMasks(Surface& mask, const Surface& operand) const;
  void intersectMasks(Surface& mask, const Surface& operand) const;
  void fillMaskWithSelection(Surface& mask, const Surface& selection, float value) const;
  void translateMask(const Surface& source, Surface& destination, int dx, int dy) const;
  void extractAlpha(const Surface& layer, Surface& mask, ColorMode mode) const;
  void extractChannel(const Surface& composited, Surface& mask, int channel) const;
  [[nodiscard]] std::optional<PixelRect> selectionBounds(const Surface& mask) const;
  [[nodiscard]] std::optional<PixelRect> layerContentBounds(const Surface& layer, ColorMode mode,
                                                            bool isMask) const;
  void magicWandNonContiguous(const Surface& sample, Surface& mask, const Color4& seed,
                              float tolerance) const;
  /// False when there was no memory for it; the mask then stays as it was.
  bool magicWandContiguous(const Surface& sample, Surface& mask, int seedX, int seedY, const Color4& seed,
                           float tolerance) const;
  void magicWandAntialias(Surface& mask) const;

  void invertColors(Surface& layer, ColorMode mode, const Surface* selection) const;
  void fillWithSelection(Surface& layer, const Surface& selection, ColorMode mode, const Color4& color) const;
  void levelsAdjust(Surface& layer, ColorMode mode, const Surface* selection, float black, float white,
                    float gamma) const;
  void extractMaskedPixels(const Surface& layer, Surface& destination, const Surface& selection, int originX,
                           int originY, ColorMode mode) const;
  void applyLayerMask(Surface& layer, const Surface& mask, ColorMode mode) const;
  void translateLayerPixels(const Surface& source, Surface& destination, int dx, int dy,
                            ColorMode mode) const;
  void scaleLayerRegion(const Surface& source, Surface& destination, const std::array<float, 4>& from,
                        const std::array<float, 4>& to, ColorMode mode) const;
  void rotateLayerPixels(const Surface& source, Surface& destination, float centerX, float centerY,
                         float angle, ColorMode mode) const;
  void affineTransformLayerPixels(const Surface& source, Surface& destination,
                                  const std::array<float, 6>& inverse, ColorMode mode) const;
  void resampleTexture(const Surface& source, Surface& destination, ResampleMethod method) const;
  [[nodiscard]] std::optional<PixelRect> trimBounds(const Surface& composited) const;

 private:
  [[nodiscard]] ComputePipeline pipeline(std::string_view name) const;
};

}  // namespace orvanel
