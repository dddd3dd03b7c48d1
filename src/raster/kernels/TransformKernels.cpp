// The kernels that scale, rotate and transform. Each tile of the destination is made by `TileTransform`, or
// shifted where the transform turns out to move whole pixels.
#include <tbb/enumerable_thread_specific.h>

#include "raster/kernels/Kernels.h"
#include "raster/kernels/PixelTransform.h"
#include "raster/kernels/TileAccess.h"
#include "raster/kernels/TileTransform.h"
#include "raster/kernels/Translate.h"

namespace orvanel::kernels {
namespace {

template <typename Params>
void transform(const Dispatch& dispatch) {
  const Surface& source = *dispatch.textures[0];
  Surface& destination = *dispatch.textures[1];
  const PixelTransform way = resolved(inlineRecord<Params>(dispatch), source.bounds(), destination.bounds());
  if (!fitInFormat(source, destination)) return;
  switch (way.kind) {
    case PixelTransform::Kind::nothing:
      return destination.fill(0);
    case PixelTransform::Kind::shift:
      return translatePixels(source, destination, way.shift.dx, way.shift.dy);
    case PixelTransform::Kind::resample:
      break;
  }
  tbb::enumerable_thread_specific<TransformScratch> scratches;
  tbb::enumerable_thread_specific<TileTransform> transforms(
      [&] { return TileTransform(source, way, scratches.local()); });
  forEachTile(destination, [&](int index) { transforms.local().run(destination, index); });
}

}  // namespace

void scaleLayerRegion(const Dispatch& dispatch) {
  transform<ScaleParams>(dispatch);
}

void rotateLayerPixels(const Dispatch& dispatch) {
  transform<RotateParams>(dispatch);
}

void affineTransformLayerPixels(const Dispatch& dispatch) {
  transform<AffineParams>(dispatch);
}

}  // namespace orvanel::kernels
