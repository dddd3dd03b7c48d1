// Every compute kernel by its function name; contracts stand beside the wrappers in MetalContext.h and
// the records in KernelRecords.h. Each writes its destination wholly or in place and is complete on return.
#pragma once

#include "raster/ShaderLibrary.h"

namespace orvanel::kernels {

void compositeLayer(const Dispatch& dispatch);
void clearTexture(const Dispatch& dispatch);
void brushStroke(const Dispatch& dispatch);
void drawCheckerboard(const Dispatch& dispatch);
void invertColors(const Dispatch& dispatch);
void fillMask(const Dispatch& dispatch);
void invertMask(const Dispatch& dispatch);
void fillRectMask(const Dispatch& dispatch);
void fillWithSelection(const Dispatch& dispatch);
void fillMaskWithSelection(const Dispatch& dispatch);
void fillEllipseMask(const Dispatch& dispatch);
void intersectMasks(const Dispatch& dispatch);
void addMasks(const Dispatch& dispatch);
void subtractMasks(const Dispatch& dispatch);
void unionMasks(const Dispatch& dispatch);
void magicWandNonContiguous(const Dispatch& dispatch);
void magicWandEligibility(const Dispatch& dispatch);
void magicWandAntialias(const Dispatch& dispatch);
void levelsAdjust(const Dispatch& dispatch);
void convertTexture(const Dispatch& dispatch);
void translateMask(const Dispatch& dispatch);
void selectionBoundingRect(const Dispatch& dispatch);
void fillPolygonMask(const Dispatch& dispatch);
void extractMaskedPixels(const Dispatch& dispatch);
void layerContentBoundingRect(const Dispatch& dispatch);
void translateLayerPixels(const Dispatch& dispatch);
void scaleLayerRegion(const Dispatch& dispatch);
void rotateLayerPixels(const Dispatch& dispatch);
void affineTransformLayerPixels(const Dispatch& dispatch);
void applyLayerMask(const Dispatch& dispatch);
void extractAlpha(const Dispatch& dispatch);
void extractChannel(const Dispatch& dispatch);
void resampleTexture(const Dispatch& dispatch);
void checkEdgeUniformity(const Dispatch& dispatch);
void trimBoundingRect(const Dispatch& dispatch);

/// The argument record a caller bound at `index`; the caller packs exactly this record.
template <typename Record>
[[nodiscard]] const Record& inlineRecord(const Dispatch& dispatch, std::size_t index = 0) {
  return *reinterpret_cast<const Record*>(dispatch.bytes[index].data());
}

}  // namespace orvanel::kernels
