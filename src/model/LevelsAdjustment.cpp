#include "model/LevelsAdjustment.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "model/edit/EditCost.h"
#include "model/edit/SurfaceTrace.h"
#include "raster/HalfFloat.h"

namespace orvanel {
namespace {

/// Points are set on the 8-bit scale in every colour mode.
constexpr float pointScale = 255.0F;

/// Larger surfaces are sampled on a grid.
constexpr double mostSamples = 500000.0;

constexpr double redWeight = 299.0;
constexpr double greenWeight = 587.0;
constexpr double blueWeight = 114.0;
constexpr double sumOfWeights = 1000.0;

/// Integer weights keep greys exact, so that each falls into its own bin.
double brightness(double red, double green, double blue) {
  return (redWeight * red + greenWeight * green + blueWeight * blue) / sumOfWeights;
}

template <typename Channel>
Channel channelAt(const std::byte* pixel, std::size_t channel) {
  Channel value;
  std::memcpy(&value, pixel + channel * sizeof(Channel), sizeof(Channel));
  return value;
}

/// Brightness from 0 (black) to 255 (white).
double brightnessOf(const std::byte* pixel, PixelFormat format) {
  constexpr double unitsPerByte = 257.0;
  constexpr double white = 255.0;
  const auto byteAt = [pixel](std::size_t channel) { return channelAt<std::uint8_t>(pixel, channel); };
  const auto halfAt = [pixel](std::size_t channel) {
    return double{sanitized(halfToFloat(channelAt<std::uint16_t>(pixel, channel)))} * white;
  };
  switch (format) {
    case PixelFormat::rg8Unorm:
      return byteAt(0);
    case PixelFormat::rg16Unorm:
      return channelAt<std::uint16_t>(pixel, 0) / unitsPerByte;
    case PixelFormat::rgba8Unorm:
      return brightness(byteAt(0), byteAt(1), byteAt(2));
    default:
      return brightness(halfAt(0), halfAt(1), halfAt(2));
  }
}

/// Null when nothing is selected.
const Surface* maskOf(const Document& document) {
  const std::shared_ptr<const Selection> selected = document.activeSelection();
  return selected != nullptr ? selected->maskTexture->texture.get() : nullptr;
}

std::shared_ptr<const Surface> copyOf(const Surface* mask) {
  return mask != nullptr ? std::make_shared<const Surface>(*mask) : nullptr;
}

}  // namespace

LevelsHistogram levelsHistogram(const Surface& pixels) {
  const double count = static_cast<double>(pixels.width()) * pixels.height();
  const int stride = std::max(static_cast<int>(std::ceil(std::sqrt(count / mostSamples))), 1);
  const auto pixelBytes = static_cast<std::size_t>(pixels.pixelBytes());
  std::vector<std::byte> row(static_cast<std::size_t>(pixels.width()) * pixelBytes);
  LevelsHistogram histogram{};
  for (int y = 0; y < pixels.height(); y += stride) {
    pixels.readRect({0, y, pixels.width(), 1}, row.data(), row.size());
    for (int x = 0; x < pixels.width(); x += stride) {
      const double value =
          brightnessOf(row.data() + static_cast<std::size_t>(x) * pixelBytes, pixels.format());
      ++histogram[static_cast<std::size_t>(std::clamp(value, 0.0, 255.0))];
    }
  }
  return histogram;
}

std::optional<LevelsAdjustment> LevelsAdjustment::begin(const DocumentPtr& document) {
  const std::shared_ptr<Layer> layer = document->activeLayer();
  if (layer == nullptr || layer->texture.value() == nullptr) return std::nullopt;
  auto edit = OpenSurfaceEdit::begin(document, layer, SurfaceKind::pixels, OpenSurfaceEdit::Purpose::levels,
                                     QStringLiteral("Levels"));
  if (edit == nullptr || edit->snapshotBefore() == nullptr) return std::nullopt;
  return LevelsAdjustment(document, std::move(edit));
}

LevelsAdjustment::LevelsAdjustment(const DocumentPtr& document, std::unique_ptr<OpenSurfaceEdit> edit)
    : document_(document), edit_(std::move(edit)), weight_(copyOf(maskOf(*document))) {}

void LevelsAdjustment::followSelection(Document& document) {
  const Surface* const mask = maskOf(document);
  const bool isSame = mask == nullptr || weight_ == nullptr
                          ? mask == weight_.get()
                          : SurfaceTrace(*weight_).changedTiles(*mask).empty();
  if (isSame) return;
  weight_ = copyOf(mask);
  const Surface& original = edit_->original();
  const editCost::PixelChange change{.tiles = editCost::tilesRewritten(original, weight_.get()),
                                     .layerID = edit_->layerID()};
  isAdmitted_ = document.admitsEdit(editCost::ofTiles(document, original, change));
}

void LevelsAdjustment::apply(const Levels& levels) {
  const DocumentPtr document = document_.lock();
  if (document == nullptr || !isOpen()) return;
  followSelection(*document);
  if (!isAdmitted_) return;
  const LevelsParams params{.colorMode = rawValue(document->colorMode.value()),
                            .hasSelection = weight_ != nullptr ? 1U : 0U,
                            .black = levels.blackPoint / pointScale,
                            .white = levels.whitePoint / pointScale,
                            .gamma = levels.gamma,
                            .reserved = 0};
  edit_->show({LevelsChange{params, weight_}});
}

}  // namespace orvanel
