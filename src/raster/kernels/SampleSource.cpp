#include "raster/kernels/SampleSource.h"

#include <algorithm>
#include <array>
#include <type_traits>
#include <variant>

#include "raster/Regularity.h"
#include "raster/kernels/PixelAccess.h"
#include "raster/kernels/PointRows.h"
#include "raster/kernels/TileAccess.h"
#include "raster/kernels/Translate.h"

namespace orvanel::kernels {
namespace {

TileFacts uniformFacts(std::uint64_t pixel, PixelFormat format) {
  const std::uint64_t regular = regularPixel(pixel, format);
  return {.isUniform = true, .pixel = regular, .identity = regular};
}

/// The coverage of a selection's tile if it is uniform.
std::optional<std::uint64_t> uniformWeight(const LevelsChange& levels, int tileIndex) {
  if (levels.selection == nullptr) return halfOne;
  const Tile& tile = levels.selection->tile(tileIndex);
  if (!tile.isUniform()) return std::nullopt;
  return regularPixel(tile.pixel(), maskPixelFormat);
}

int paddedCount(const SampleBlock& strip) {
  return static_cast<int>((strip.count() + 15) / 16 * 16);
}

}  // namespace

SampleSource::SampleSource(const CompositePlan::Source& source) : surface_(source.surface) {
  if (source.change == nullptr) return;
  version_ = source.change->version;
  levels_ = std::get_if<LevelsChange>(&source.change->arguments);
  if (levels_ != nullptr) {
    if (LevelsTable::isWorthwhile(*surface_, levels_->selection.get(), levels_->params)) {
      table_.emplace(surface_->format(), levels_->params);
    }
    return;
  }
  isMoved_ = true;
  const PixelRect bounds = surface_->bounds();
  std::visit(
      [&](const auto& params) {
        if constexpr (!std::is_same_v<std::decay_t<decltype(params)>, LevelsChange>) {
          transform_ = resolved(params, bounds, bounds);
        }
      },
      source.change->arguments);
}

std::vector<const Surface*> SampleSource::standingSurfaces() const {
  if (isMoved_) return {};
  if (levels_ == nullptr || levels_->selection == nullptr) return {surface_};
  return {surface_, levels_->selection.get()};
}

TileFacts SampleSource::factsOf(int tileIndex, const TileTransform* transform) const {
  if (levels_ != nullptr) return adjustedFacts(tileIndex);
  if (!isMoved_) return standingFacts(tileIndex);
  switch (transform_.kind) {
    case PixelTransform::Kind::nothing:
      return uniformFacts(0, surface_->format());
    case PixelTransform::Kind::shift:
      return shiftedFacts(tileIndex);
    case PixelTransform::Kind::resample:
      break;
  }
  const std::optional<std::uint64_t> pixel = transform->uniformPixel(surface_->tileRect(tileIndex));
  if (pixel) return uniformFacts(*pixel, surface_->format());
  return {.identity = version_};
}

TileFacts SampleSource::standingFacts(int tileIndex) const {
  const Tile& tile = surface_->tile(tileIndex);
  if (tile.isUniform()) return uniformFacts(tile.pixel(), surface_->format());
  return {.identity = tile.version()};
}

bool SampleSource::isKnownOpaque(int tileIndex, const TileFacts& facts) const {
  if (facts.isUniform) return colorOfPixel(facts.pixel, surface_->format())[3] == 1.0F;
  // Levels leave alpha as it is.
  return !isMoved_ && surface_->tile(tileIndex).has(TileTrait::opaque);
}

TileFacts SampleSource::shiftedFacts(int tileIndex) const {
  const std::optional<std::uint64_t> pixel =
      uniformPixelMoved(*surface_, surface_->tileRect(tileIndex), transform_.shift);
  if (pixel) return uniformFacts(*pixel, surface_->format());
  return {.identity = version_};
}

TileFacts SampleSource::adjustedFacts(int tileIndex) const {
  const TileFacts standing = standingFacts(tileIndex);
  const std::optional<std::uint64_t> weight = uniformWeight(*levels_, tileIndex);
  if (weight == 0U) return standing;
  if (!weight || !standing.isUniform) return {.identity = version_};
  constexpr int count = 16;
  alignas(64) std::array<std::byte, std::size_t{count} * 8> pixels;
  alignas(64) std::array<std::uint16_t, count> weights;
  weights.fill(static_cast<std::uint16_t>(*weight));
  fillPixels(pixels.data(), count, standing.pixel, surface_->pixelBytes());
  adjustRow(pixels.data(), pixels.data(), *weight == halfOne ? nullptr : weights.data(), count);
  return uniformFacts(packPixel(pixels.data(), surface_->pixelBytes()), surface_->format());
}

void SampleSource::adjustRow(const std::byte* in, std::byte* out, const std::uint16_t* weights,
                             int count) const {
  if (table_) return table_->adjustRow(in, out, weights, count);
  levelsRow(surface_->format(), in, out, weights, levels_->params, count);
}

const std::byte* SampleSource::read(int tileIndex, const SampleBlock& strip, StripReader& reader,
                                    std::byte* scratch) const {
  if (isMoved_) {
    gatherSamples(*surface_, strip, transform_.shift, scratch);
    return scratch;
  }
  const std::byte* standing = reader.standing(*surface_);
  if (levels_ == nullptr) return standing;
  const std::optional<std::uint64_t> weight = uniformWeight(*levels_, tileIndex);
  if (weight == 0U) return standing;
  const int count = paddedCount(strip);
  if (weight == std::uint64_t{halfOne}) {
    adjustRow(standing, scratch, nullptr, count);
  } else if (weight) {
    alignas(64) std::array<std::uint16_t, tilePixels> weights;
    std::fill_n(weights.begin(), count, static_cast<std::uint16_t>(*weight));
    adjustRow(standing, scratch, weights.data(), count);
  } else {
    adjustRow(standing, scratch, reinterpret_cast<const std::uint16_t*>(reader.standing(*levels_->selection)),
              count);
  }
  return scratch;
}

}  // namespace orvanel::kernels
