#include "tools/selection/MagicWand.h"

#include <utility>

#include "raster/HalfFloat.h"
#include "raster/Regularity.h"

namespace orvanel {
namespace {

/// The tolerance is on the 8-bit scale in every colour mode.
constexpr float toleranceScale = 255.0F;

/// A tile of `source`, as a surface of its own, converted to colours.
template <typename Convert>
Tile converted(const Surface& source, int index, PixelFormat format, const Convert& convert) {
  Surface tile(source.format(), tileSide, tileSide);
  tile.setTile(0, source.tile(index));
  Surface colors(format, tileSide, tileSide);
  convert(tile, colors);
  return colors.tile(0);
}

/// A grey layer as colours: the seed is read, and compared, in four channels.
WandMatch matchOfGrey(const Surface& grey, ColorMode mode, const MetalContext& context) {
  const PixelFormat format = compositePixelFormat(mode);
  return {format, grey.width(), grey.height(), [grey, mode, format, &context](int index) {
            return converted(grey, index, format, [&](const Surface& tile, Surface& colors) {
              context.convertTexture(tile, colors, mode, folderColorMode(mode));
            });
          }};
}

/// A mask as an opaque grey image of its values.
WandMatch matchOfMask(const Surface& mask, const MetalContext& context) {
  constexpr PixelFormat format = PixelFormat::rgba16Float;
  return {format, mask.width(), mask.height(), [mask, &context](int index) {
            return converted(mask, index, format, [&](const Surface& tile, Surface& colors) {
              context.clearTexture(colors, ColorMode::rgb16, {0.0F, 0.0F, 0.0F, 1.0F});
              context.fillWithSelection(colors, tile, ColorMode::rgb16, {1.0F, 1.0F, 1.0F, 1.0F});
            });
          }};
}

/// The surface that is sampled, before its conversion to colours; may be null.
ConstTexture sourceOf(const Document& document, bool sampleAllLayers) {
  if (sampleAllLayers) return document.compositedTexture.value();
  const std::shared_ptr<Layer> layer = document.activeLayer();
  return layer != nullptr ? layer->activeEditTexture() : nullptr;
}

/// The most memory that a press can take: the sample in colours, the match, the mask it is combined in, that
/// mask as it was and, within a byte a pixel, what is known of pixels already visited.
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

/// None if there is nothing to sample.
std::optional<WandMatch> matchOf(Document& document, bool sampleAllLayers) {
  if (sampleAllLayers) return WandMatch(*document.composite());
  const std::shared_ptr<Layer> layer = document.activeLayer();
  const ConstTexture pixels = layer != nullptr ? layer->activeEditTexture() : nullptr;
  if (pixels == nullptr) return std::nullopt;
  if (layer->editsMask()) return matchOfMask(*pixels, document.context());
  const ColorMode mode = document.colorMode.value();
  return isGrayscale(mode) ? matchOfGrey(*pixels, mode, document.context()) : WandMatch(*pixels);
}

Color4 colorOf(std::uint64_t pixel, PixelFormat format) {
  Color4 color{};
  for (unsigned channel = 0; channel < 4; ++channel) {
    if (format == PixelFormat::rgba8Unorm) {
      color[channel] = static_cast<float>((pixel >> (8U * channel)) & 0xFFU) / 255.0F;
    } else if (format == PixelFormat::rgba16Float) {
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
  std::optional<WandMatch> match = matchOf(*document, settings.sampleAllLayers);
  if (!match) return nullptr;
  std::unique_ptr<MagicWand> wand(new MagicWand(document, std::move(*match), x, y, mode));
  wand->select(settings);
  return wand;
}

MagicWand::MagicWand(const DocumentPtr& document, WandMatch match, int x, int y, SelectionMode mode)
    : gesture_(document, QStringLiteral("Magic Wand")),
      mode_(mode),
      match_(std::move(match)),
      seedX_(x),
      seedY_(y),
      seed_(colorOf(match_.pixelAt(x, y), match_.format())) {}

void MagicWand::select(const MagicWandSettings& settings) {
  const float tolerance = settings.tolerance / toleranceScale;
  const WandEdges edges = settings.antialiased ? WandEdges::antialiased : WandEdges::crisp;
  gesture_.selectShape(mode_, [&](Selection& shape) {
    const bool isFound = settings.contiguous ? match_.flood(seedX_, seedY_, seed_, tolerance)
                                             : match_.findAll(seed_, tolerance);
    if (!isFound) return false;
    match_.writeTo(shape.pixels(), edges);
    shape.restoreFlags({.hasSelection = !match_.isEmpty(), .isFullSelection = match_.isFull()});
    return true;
  });
}

}  // namespace orvanel
