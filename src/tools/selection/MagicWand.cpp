#include "tools/selection/MagicWand.h"

#include <utility>

#include "raster/HalfFloat.h"
#include "raster/Regularity.h"

namespace orvanel {
namespace {

/// The tolerance is on the 8-bit scale in every colour mode.
constexpr float toleranceScale = 255.0F;

/// A grey layer as colours: the seed is read, and compared, in four channels.
ConstTexture colorsOfGrey(const ConstTexture& grey, ColorMode mode, const MetalContext& context) {
  Texture colors = context.makeTexture(compositePixelFormat(mode), grey->width(), grey->height());
  if (colors != nullptr) context.convertTexture(*grey, *colors, mode, folderColorMode(mode));
  return colors;
}

/// A mask as an opaque grey image of its values.
ConstTexture colorsOfMask(const Surface& mask, const MetalContext& context) {
  Texture colors = context.makeTexture(PixelFormat::rgba16Float, mask.width(), mask.height());
  if (colors == nullptr) return nullptr;
  context.clearTexture(*colors, ColorMode::rgb16, {0.0F, 0.0F, 0.0F, 1.0F});
  context.fillWithSelection(*colors, mask, ColorMode::rgb16, {1.0F, 1.0F, 1.0F, 1.0F});
  return colors;
}

/// The surface that is sampled, before its conversion to colours; may be null.
ConstTexture sourceOf(const Document& document, bool sampleAllLayers) {
  if (sampleAllLayers) return document.compositedTexture.value();
  const std::shared_ptr<Layer> layer = document.activeLayer();
  return layer != nullptr ? layer->activeEditTexture() : nullptr;
}

/// The most memory that a press can take: the sample in colours, the match, the mask it is combined in, that
/// mask as it was and, at a byte a pixel, what is known of pixels already visited.
std::uint64_t mostBytesOf(const ConstTexture& source) {
  if (source == nullptr) return 0;
  bool holdsData = false;
  for (int index = 0; index < source->tileCount(); ++index) holdsData |= !source->tile(index).isUniform();
  // Uniform tiles match as a whole.
  if (!holdsData) return 0;
  constexpr auto bytesPerMatchedPixel = static_cast<std::uint64_t>(bytesPerPixel(PixelFormat::rgba16Float) +
                                                                   3 * bytesPerPixel(maskPixelFormat) + 1);
  return bytesPerMatchedPixel * tilePixels * static_cast<std::uint64_t>(source->tileCount());
}

ConstTexture sampleOf(Document& document, bool sampleAllLayers) {
  if (sampleAllLayers) return document.composite();
  const std::shared_ptr<Layer> layer = document.activeLayer();
  if (layer == nullptr) return nullptr;
  if (layer->editsMask()) return colorsOfMask(*layer->activeEditTexture(), document.context());
  const ConstTexture& pixels = layer->texture.value();
  const ColorMode mode = document.colorMode.value();
  if (pixels == nullptr || !isGrayscale(mode)) return pixels;
  return colorsOfGrey(pixels, mode, document.context());
}

Color4 colorAt(const Surface& sample, int x, int y) {
  // Like the kernels, treats NaN as 0.
  const std::uint64_t pixel = regularPixel(sample.pixelAt(x, y), sample.format());
  Color4 color{};
  for (unsigned channel = 0; channel < 4; ++channel) {
    if (sample.format() == PixelFormat::rgba8Unorm) {
      color[channel] = static_cast<float>((pixel >> (8U * channel)) & 0xFFU) / 255.0F;
    } else if (sample.format() == PixelFormat::rgba16Float) {
      color[channel] = halfToFloat(static_cast<std::uint16_t>(pixel >> (16U * channel)));
    }
  }
  return color;
}

}  // namespace

std::unique_ptr<MagicWand> MagicWand::press(const DocumentPtr& document, int x, int y, SelectionMode mode,
                                            const MagicWandSettings& settings) {
  if (x < 0 || y < 0 || x >= document->canvasWidth.value() || y >= document->canvasHeight.value()) {
    return nullptr;
  }
  if (!document->admitsEdit(mostBytesOf(sourceOf(*document, settings.sampleAllLayers)))) return nullptr;
  ConstTexture sample = sampleOf(*document, settings.sampleAllLayers);
  if (sample == nullptr) return nullptr;
  std::unique_ptr<MagicWand> wand(new MagicWand(document, std::move(sample), x, y, mode));
  wand->select(settings);
  return wand;
}

MagicWand::MagicWand(const DocumentPtr& document, ConstTexture sample, int x, int y, SelectionMode mode)
    : gesture_(document, QStringLiteral("Magic Wand")),
      context_(document->context()),
      mode_(mode),
      sample_(std::move(sample)),
      seedX_(x),
      seedY_(y) {}

void MagicWand::select(const MagicWandSettings& settings) {
  const Color4 seed = colorAt(*sample_, seedX_, seedY_);
  const float tolerance = settings.tolerance / toleranceScale;
  gesture_.selectShape(mode_, [&](Selection& shape) {
    Surface& mask = shape.pixels();
    if (!settings.contiguous) {
      context_.magicWandNonContiguous(*sample_, mask, seed, tolerance);
    } else if (!context_.magicWandContiguous(*sample_, mask, seedX_, seedY_, seed, tolerance)) {
      return false;
    }
    if (settings.antialiased) context_.magicWandAntialias(mask);
    shape.refreshFlags(context_);
    return true;
  });
}

}  // namespace orvanel
