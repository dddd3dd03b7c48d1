#include "raster/CompositePlan.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cassert>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "raster/ColorMode.h"
#include "raster/Hash.h"
#include "raster/Regularity.h"
#include "raster/TileContribution.h"
#include "raster/kernels/CompositeStrip.h"

namespace orvanel {
namespace {

using kernels::PlaneSet;
using kernels::StripAccumulator;
using kernels::StripSource;

void fold(Hasher& hasher, const Tile& tile) {
  hasher.fold(tile.isUniform() ? 1 : 2);
  hasher.fold(tile.isUniform() ? tile.pixel() : tile.version());
}

/// Makes the tiles of all targets at one place of the canvas. One for each task; not shared.
class TileComposer {
 public:
  explicit TileComposer(std::span<const CompositePlan::TargetPlan> targets)
      : targets_(targets), recipes_(targets.size()) {}

  /// Makes every target's tile that is out of date, innermost targets first; gives their number.
  int bringUpToDate(int index, CompositeScope scope) {
    const bool isCurrent = !findStale(index);
    if (scope == CompositeScope::changedTiles && isCurrent) return 0;
    int made = 0;
    for (std::size_t target = targets_.size(); target-- > 0;) {
      Surface& surface = *targets_[target].surface;
      if (scope == CompositeScope::changedTiles && isMade(target, index)) continue;
      makeTile(targets_[target], index);
      surface.setRecipe(index, recipes_[target]);
      ++made;
    }
    return made;
  }

  /// Works out the recipes of this place; whether the canvas is out of date there.
  bool findStale(int index) {
    // A target is nested only in one added before it, so going backwards meets inner targets first.
    for (std::size_t target = targets_.size(); target-- > 0;) recipes_[target] = recipeOf(target, index);
    return !isMade(0, index);
  }

  /// The most data tiles that bringing this place up to date writes.
  int dataTilesToMake(int index) {
    if (!findStale(index)) return 0;
    outcomes_.assign(targets_.size(), TileOutcome::transparent);
    int count = 0;
    for (std::size_t target = targets_.size(); target-- > 0;) {
      outcomes_[target] = outcomeOf(targets_[target], index);
      if (outcomes_[target] == TileOutcome::made && !isMade(target, index)) ++count;
    }
    return count;
  }

 private:
  [[nodiscard]] bool isMade(std::size_t target, int index) const {
    return targets_[target].surface->recipe(index) == recipes_[target];
  }

  /// What the steps make of the tile, once those of inner targets are known.
  [[nodiscard]] TileOutcome outcomeOf(const CompositePlan::TargetPlan& plan, int index) const {
    TileOutcome outcome = TileOutcome::transparent;
    for (const CompositePlan::Step& step : plan.steps) {
      if (step.params.visible == 0) continue;
      outcome = step.nested >= 0 ? outcomeOver(outcome, outcomes_[static_cast<std::size_t>(step.nested)])
                                 : outcomeOver(outcome, layerOf(step, index), plan.surface->format());
    }
    return outcome;
  }

  /// Everything that decides the pixels of this tile.
  [[nodiscard]] std::uint64_t recipeOf(std::size_t target, int index) const {
    const CompositePlan::TargetPlan& plan = targets_[target];
    Hasher hasher;
    hasher.fold(static_cast<std::uint64_t>(plan.surface->format()));
    for (const CompositePlan::Step& step : plan.steps) {
      hasher.fold(std::uint64_t{step.params.blendMode} << 33U | std::uint64_t{step.params.visible} << 32U |
                  std::bit_cast<std::uint32_t>(step.params.opacity));
      if (step.nested >= 0) {
        hasher.fold(recipes_[static_cast<std::size_t>(step.nested)]);
      } else {
        hasher.fold(static_cast<std::uint64_t>(step.source.surface->format()));
        fold(hasher, step.source.surface->tile(index));
      }
      const Surface* mask = step.mask.surface;
      if (mask != nullptr) fold(hasher, mask->tile(index));
      hasher.fold(mask != nullptr ? 1 : 0);
    }
    return hasher.value() | 1U;  // 0 means unknown
  }

  /// What the step puts over this tile.
  [[nodiscard]] TileLayer layerOf(const CompositePlan::Step& step, int index) const {
    const Surface& surface =
        step.nested >= 0 ? *targets_[static_cast<std::size_t>(step.nested)].surface : *step.source.surface;
    return {.pixels = surface.tile(index),
            .format = surface.format(),
            .mask = step.mask.surface != nullptr ? &step.mask.surface->tile(index) : nullptr,
            .opacity = step.params.opacity,
            .blendMode = static_cast<BlendMode>(step.params.blendMode)};
  }

  void makeTile(const CompositePlan::TargetPlan& plan, int index) {
    contributions_.clear();
    for (const CompositePlan::Step& step : plan.steps) {
      if (step.params.visible == 0) continue;
      std::optional<TileContribution> part = contributionOf(layerOf(step, index));
      if (!part) continue;
      if (part->isOpaqueCover) contributions_.clear();
      contributions_.push_back(*part);
    }
    Surface& surface = *plan.surface;
    if (contributions_.empty()) return surface.setUniform(index, 0);
    const TileContribution& bottom = contributions_.front();
    if (contributions_.size() == 1 && bottom.isOpaqueCover && bottom.source.format == surface.format()) {
      return bottom.sourceTile->isUniform() ? surface.setUniform(index, bottom.source.uniformPixel)
                                            : surface.setTile(index, *bottom.sourceTile);
    }
    const bool uniform =
        std::all_of(contributions_.begin(), contributions_.end(), [](const TileContribution& part) {
          return part.source.pixels == nullptr && part.source.mask == nullptr;
        });
    if (uniform) {
      alignas(64) std::array<std::byte, 16 * 8> pixels;
      composeStrip(surface.format(), 0, 16, pixels.data());
      return surface.setUniform(index, packPixel(pixels.data(), surface.pixelBytes()));
    }
    readIrregularTiles();
    std::byte* out = surface.overwriteTile(index);
    const std::size_t stripBytes =
        static_cast<std::size_t>(kernels::stripPixels) * static_cast<std::size_t>(surface.pixelBytes());
    for (int strip = 0; strip < tileSide / kernels::stripRows; ++strip) {
      composeStrip(surface.format(), strip, kernels::stripPixels,
                   out + static_cast<std::size_t>(strip) * stripBytes);
    }
  }

  /// Replaces tiles that hold NaN, infinity or coverage out of range by what kernels read of them.
  void readIrregularTiles() {
    regularCopies_.clear();
    for (TileContribution& part : contributions_) {
      if (part.source.pixels != nullptr && part.sourceTile->has(TileTrait::irregular)) {
        part.source.pixels = regularCopy(*part.sourceTile, part.source.format);
      }
      if (part.maskTile != nullptr && part.maskTile->has(TileTrait::irregular)) {
        part.source.mask =
            reinterpret_cast<const std::uint16_t*>(regularCopy(*part.maskTile, maskPixelFormat));
      }
    }
  }

  const std::byte* regularCopy(const Tile& tile, PixelFormat format) {
    auto copy = std::make_unique<TileBuffer>(tile.buffer()->bytes().size());
    regularise(tile.data(), copy->bytes().data(), tilePixels, format);
    return regularCopies_.emplace_back(std::move(copy))->bytes().data();
  }

  void composeStrip(PixelFormat format, int strip, int count, std::byte* out) {
    // Red, green and blue are equal throughout a grey document, its folders' temporaries included.
    const bool grey =
        std::any_of(contributions_.begin(), contributions_.end(), [](const TileContribution& part) {
          return part.source.format == PixelFormat::rg8Unorm || part.source.format == PixelFormat::rg16Unorm;
        });
    const PlaneSet planes = grey ? PlaneSet::grey : PlaneSet::rgb;
    kernels::clearStrip(accumulator_, planes, count);
    const std::size_t firstPixel = static_cast<std::size_t>(strip) * kernels::stripPixels;
    for (const TileContribution& part : contributions_) {
      StripSource source = part.source;
      const auto pixelBytes = static_cast<std::size_t>(bytesPerPixel(source.format));
      if (source.pixels != nullptr) source.pixels += firstPixel * pixelBytes;
      if (source.mask != nullptr) source.mask += firstPixel;
      kernels::compositeStrip(accumulator_, planes, source, count);
    }
    kernels::storeStrip(accumulator_, planes, format, out, count);
  }

  std::span<const CompositePlan::TargetPlan> targets_;
  std::vector<std::uint64_t> recipes_;
  std::vector<TileOutcome> outcomes_;
  std::vector<TileContribution> contributions_;
  std::vector<std::unique_ptr<TileBuffer>> regularCopies_;
  StripAccumulator accumulator_;
};

/// No mistake when it doesn't: a mask for which there was no memory at the canvas's new size keeps the old
/// one.
bool fits(const Surface& canvas, const Surface* other) {
  return other == nullptr || haveSameSize(canvas, *other);
}

/// True when the record's colour mode is that of the pixels it comes with.
[[maybe_unused]] bool namesFormat(const CompositeParams& params, PixelFormat format) {
  const std::optional<ColorMode> mode = colorModeFromRaw(params.colorMode);
  return mode && layerPixelFormat(*mode) == format;
}

}  // namespace

CompositePlan::CompositePlan(Surface& canvas) {
  targets_.push_back({&canvas, {}});
}

CompositePlan::Target CompositePlan::addTarget(Surface& temporary) {
  assert(fits(*targets_[0].surface, &temporary));
  targets_.push_back({&temporary, {}});
  return static_cast<Target>(targets_.size()) - 1;
}

void CompositePlan::compositeLayer(Target target, const CompositeParams& params, const Source& source,
                                   const Source& mask) {
  const Surface& canvas = *targets_[0].surface;
  assert(namesFormat(params, source.surface->format()));
  if (!fits(canvas, source.surface) || !fits(canvas, mask.surface)) return;
  targets_[static_cast<std::size_t>(target)].steps.push_back({params, source, mask, -1});
}

void CompositePlan::compositeTarget(Target target, const CompositeParams& params, Target source) {
  assert(source > target);
  assert(namesFormat(params, targets_[static_cast<std::size_t>(source)].surface->format()));
  targets_[static_cast<std::size_t>(target)].steps.push_back({params, {}, {}, source});
}

CompositeReport CompositePlan::run(CompositeScope scope) {
  return run(scope, 0, tileCount());
}

CompositeReport CompositePlan::run(CompositeScope scope, int firstTile, int count) {
  for (const TargetPlan& target : targets_) target.surface->rememberRecipes();
  std::atomic<int> made{0};
  tbb::parallel_for(tbb::blocked_range<int>(firstTile, firstTile + count),
                    [&](const tbb::blocked_range<int>& range) {
                      const auto composer = std::make_unique<TileComposer>(targets_);
                      int madeHere = 0;
                      for (int index = range.begin(); index < range.end(); ++index) {
                        madeHere += composer->bringUpToDate(index, scope);
                      }
                      made.fetch_add(madeHere, std::memory_order_relaxed);
                    });
  return {made.load()};
}

std::vector<int> CompositePlan::staleTiles() const {
  const auto composer = std::make_unique<TileComposer>(targets_);
  std::vector<int> stale;
  for (int index = 0; index < tileCount(); ++index) {
    if (composer->findStale(index)) stale.push_back(index);
  }
  return stale;
}

std::uint64_t CompositePlan::dataTilesToMake(int firstTile) const {
  const auto composer = std::make_unique<TileComposer>(targets_);
  std::uint64_t count = 0;
  for (int index = firstTile; index < tileCount(); ++index) {
    count += static_cast<std::uint64_t>(composer->dataTilesToMake(index));
  }
  return count;
}

}  // namespace orvanel
