#include "raster/SurfaceChange.h"

#include "raster/MetalContext.h"
#include "raster/kernels/SampleSource.h"
#include "raster/kernels/TileTransform.h"

namespace orvanel {
namespace {

/// Runs the kernel of each kind of arguments. Modes only repeat what the format says.
struct Application {
  const MetalContext& context;
  const Surface& source;
  Surface& destination;

  void operator()(const OffsetParams& move) const {
    context.translateMask(source, destination, move.dx, move.dy);
  }
  void operator()(const ScaleParams& scale) const {
    context.scaleLayerRegion(source, destination, scale.source, scale.destination,
                             static_cast<ColorMode>(scale.colorMode));
  }
  void operator()(const RotateParams& turn) const {
    context.rotateLayerPixels(source, destination, turn.centerX, turn.centerY, turn.angle,
                              static_cast<ColorMode>(turn.colorMode));
  }
  void operator()(const AffineParams& affine) const {
    context.affineTransformLayerPixels(source, destination, affine.matrix,
                                       static_cast<ColorMode>(affine.colorMode));
  }
  void operator()(const LevelsChange& levels) const {
    destination = source;
    context.levelsAdjust(destination, static_cast<ColorMode>(levels.params.colorMode), levels.selection.get(),
                         levels.params.black, levels.params.white, levels.params.gamma);
  }
};

}  // namespace

void applyChange(const SurfaceChange& change, const MetalContext& context, const Surface& source,
                 Surface& destination) {
  std::visit(Application{context, source, destination}, change.arguments);
}

SurfaceForecast forecastOf(const SurfaceChange& change, const Surface& source) {
  const kernels::SampleSource changed({&source, &change});
  kernels::TransformScratch scratch;
  std::unique_ptr<const kernels::TileTransform> transform;
  if (const kernels::PixelTransform* resampling = changed.resampling()) {
    transform = std::make_unique<kernels::TileTransform>(source, *resampling, scratch);
  }
  SurfaceForecast forecast;
  for (int index = 0; index < source.tileCount(); ++index) {
    const kernels::TileFacts facts = changed.factsOf(index, transform.get());
    if (!facts.isUniform) {
      forecast.data.push_back(index);
    } else if (facts.pixel != 0) {
      forecast.uniform.push_back(index);
    }
  }
  return forecast;
}

}  // namespace orvanel
