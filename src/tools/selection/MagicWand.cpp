#include "tools/selection/MagicWand.h"

#include <utility>

#include "raster/HalfFloat.h"
#include "raster/Regularity.h"
#include "raster/kernels/TileBits.h"

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
ConstTexture sourceOf(Document& document, bool sampleAllLayers) {
  if (sampleAllLayers) return document.composite();
  // What an open adjustment shows is what the user has pressed on.
  document.settle();
  const std::shared_ptr<Layer> layer = document.activeLayer();
  return layer != nullptr ? layer->activeEditTexture() : nullptr;
}

WandMatch matchOf(const Document& document, const Surface& source, bool sampleAllLayers) {
  if (sampleAllLayers) return WandMatch(source);
  if (document.activeLayer()->editsMask()) return matchOfMask(source, document.context());
  const ColorMode mode = document.colorMode.value();
  return isGrayscale(mode) ? matchOfGrey(source, mode, document.context()) : WandMatch(source);
}

/// Whether the mask may hold data in this tile: a uniform tile matches as a whole, but softened corners reach
/// into it from neighbours of other colours.
bool mayDivide(const Surface& source, int index) {
  const Tile& tile = source.tile(index);
  if (!tile.isUniform()) return true;
  const int across = source.tilesAcross();
  const auto differs = [&](bool exists, int neighbour) { return exists && source.tile(neighbour) != tile; };
  return differs(index % across > 0, index - 1) || differs((index + 1) % across > 0, index + 1) ||
         differs(index >= across, index - across) ||
         differs(index + across < source.tileCount(), index + across);
}

/// The most memory that a gesture can take: the sample in colours, unless it is the source itself, what is
/// known and found of its pixels, a bit each, and the mask of the match besides the one that is shown.
/// `combined` is the mask of the selection that the match is combined with; may be null.
std::uint64_t mostBytesOf(const Surface& source, PixelFormat colors, const Surface* combined) {
  const auto bytesPerTile = [](PixelFormat format) {
    return static_cast<std::uint64_t>(tilePixels) * static_cast<std::uint64_t>(bytesPerPixel(format));
  };
  constexpr std::uint64_t bytesOfBits = 2 * sizeof(kernels::TileBits);
  const std::uint64_t bytesToMatch = bytesOfBits + (colors == source.format() ? 0 : bytesPerTile(colors));
  std::uint64_t bytes = 0;
  for (int index = 0; index < source.tileCount(); ++index) {
    const bool isCombined = combined != nullptr && !combined->tile(index).isUniform();
    if (!source.tile(index).isUniform()) bytes += bytesToMatch;
    if (isCombined || mayDivide(source, index)) bytes += 2 * bytesPerTile(maskPixelFormat);
  }
  return bytes;
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
  const ConstTexture source = sourceOf(*document, settings.sampleAllLayers);
  if (source == nullptr) return nullptr;
  WandMatch match = matchOf(*document, *source, settings.sampleAllLayers);
  const std::shared_ptr<const Selection> standing = document->activeSelection();
  const bool combines = mode != SelectionMode::replace && standing != nullptr;
  const Surface* combined = combines ? standing->maskTexture->texture.get() : nullptr;
  if (!document->admitsEdit(mostBytesOf(*source, match.format(), combined))) return nullptr;
  std::unique_ptr<MagicWand> wand(new MagicWand(document, std::move(match), x, y, mode));
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
