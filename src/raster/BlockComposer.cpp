#include "raster/BlockComposer.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "raster/kernels/PixelAccess.h"

namespace orvanel {
namespace {

using kernels::PlaneSet;
using kernels::SampleBlock;
using kernels::SampleSource;
using kernels::StripSource;
using kernels::TileFacts;
using kernels::TileTransform;

constexpr std::size_t largestPixel = 8;

bool isTransparent(std::uint64_t pixel, PixelFormat format) {
  return kernels::colorOfPixel(pixel, format)[3] == 0.0F;
}

bool isGrey(PixelFormat format) {
  return format == PixelFormat::rg8Unorm || format == PixelFormat::rg16Unorm;
}

}  // namespace

SampledPlan::SampledPlan(const CompositePlan& plan) {
  for (const CompositePlan::TargetPlan& target : plan.targets()) {
    Target& sampled = targets.emplace_back(Target{target.surface->format(), {}});
    for (const CompositePlan::Step& step : target.steps) {
      sampled.steps.push_back({step.params, add(step.source), add(step.mask), step.nested});
    }
  }
}

int SampledPlan::add(const CompositePlan::Source& source) {
  if (source.surface == nullptr) return -1;
  sources.push_back(std::make_unique<const SampleSource>(source));
  return static_cast<int>(sources.size()) - 1;
}

BlockComposer::BlockComposer(const SampledPlan& plan, const SampleLayout& layout, KeptBelow& below,
                             SamplingMemory& memory)
    : plan_(plan), layout_(layout), below_(below), memory_(memory), facts_(plan.sources.size()) {
  targetRecipes_.resize(plan.targets.size());
  contributions_.resize(plan.targets.size());
  isNeeded_.resize(plan.targets.size());
  memory.resampled.resize(plan.sources.size());
  transforms_.resize(plan.sources.size());
  resampledBlock_.assign(plan.sources.size(), layout.blocks.size());
  for (std::size_t i = 0; i < plan.sources.size(); ++i) {
    if (const kernels::PixelTransform* way = plan.sources[i]->resampling()) {
      transforms_[i] = std::make_unique<TileTransform>(plan.sources[i]->surface(), *way, memory.transforms);
    }
  }
}

void BlockComposer::make(std::size_t block, std::uint64_t below, const Surface& image,
                         std::span<std::byte* const> tiles) {
  begin(block);
  settle();
  settleBelow(below);
  findNeededTargets();
  for (const SampleLayout::Strip& strip : block_->strips) {
    strip_ = &strip;
    composeStrip();
    write(image, tiles);
  }
}

void BlockComposer::begin(std::size_t block) {
  blockIndex_ = block;
  block_ = &layout_.blocks[block];
  const Surface* any = plan_.sources.empty() ? nullptr : &plan_.sources.front()->surface();
  if (any == nullptr) return;
  tileIndex_ = any->tileIndex(block_->tileX, block_->tileY);
  for (std::size_t i = 0; i < facts_.size(); ++i) {
    facts_[i] = plan_.sources[i]->factsOf(tileIndex_, transforms_[i].get());
  }
}

/// Innermost targets first, since others take them in.
BlockComposer::Recipes BlockComposer::recipesOf(std::size_t block) {
  begin(block);
  Recipes recipes;
  for (std::size_t target = plan_.targets.size(); target-- > 0;) {
    const std::vector<SampledPlan::Step>& steps = plan_.targets[target].steps;
    Hasher hasher;
    hasher.fold(static_cast<std::uint64_t>(plan_.targets[target].format));
    for (std::size_t i = 0; i < steps.size(); ++i) {
      const SampledPlan::Step& step = steps[i];
      hasher.fold(std::uint64_t{step.params.blendMode} << 33U | std::uint64_t{step.params.visible} << 32U |
                  std::bit_cast<std::uint32_t>(step.params.opacity));
      foldSource(hasher, step.source);
      foldSource(hasher, step.mask);
      hasher.fold(step.nested < 0 ? 0 : targetRecipes_[static_cast<std::size_t>(step.nested)]);
      if (target == 0 && i + 1 == below_.steps()) recipes.below = hasher.value();
    }
    targetRecipes_[target] = hasher.value() | 1U;  // 0 means none
  }
  recipes.whole = targetRecipes_.front();
  return recipes;
}

void BlockComposer::foldSource(Hasher& hasher, int source) const {
  if (source < 0) return hasher.fold(0);
  const TileFacts& facts = facts_[static_cast<std::size_t>(source)];
  hasher.fold(facts.isUniform ? 1 : 2);
  hasher.fold(facts.identity);
  hasher.fold(
      static_cast<std::uint64_t>(plan_.sources[static_cast<std::size_t>(source)]->surface().format()));
}

std::optional<BlockComposer::Contribution> BlockComposer::contributionOf(
    const SampledPlan::Step& step) const {
  Contribution contribution;
  contribution.step = &step;
  contribution.source.opacity = std::clamp(step.params.opacity, 0.0F, 1.0F);
  contribution.source.blendMode = static_cast<BlendMode>(step.params.blendMode);
  if (step.params.visible == 0 || !(contribution.source.opacity > 0.0F)) return std::nullopt;
  if (step.nested >= 0) {
    const auto nested = static_cast<std::size_t>(step.nested);
    if (contributions_[nested].empty()) return std::nullopt;
    contribution.source.format = plan_.targets[nested].format;
  } else {
    const TileFacts& facts = facts_[static_cast<std::size_t>(step.source)];
    contribution.source.format = plan_.sources[static_cast<std::size_t>(step.source)]->surface().format();
    contribution.source.uniformPixel = facts.pixel;
    contribution.readsPixels = !facts.isUniform;
    if (facts.isUniform && isTransparent(facts.pixel, contribution.source.format)) return std::nullopt;
  }
  if (step.mask < 0) return contribution;
  const TileFacts& mask = facts_[static_cast<std::size_t>(step.mask)];
  contribution.readsMask = !mask.isUniform;
  if (mask.isUniform) contribution.source.uniformMask = static_cast<std::uint16_t>(mask.pixel);
  if (mask.isUniform && mask.pixel == 0) return std::nullopt;
  return contribution;
}

/// Whether the contribution hides all that lies beneath.
bool BlockComposer::isOpaqueCover(const Contribution& contribution) const {
  if (contribution.step->source < 0 || contribution.readsMask) return false;
  const bool hidesItsGround = contribution.source.uniformMask == halfOne &&
                              contribution.source.opacity >= 1.0F &&
                              contribution.source.blendMode == BlendMode::normal;
  const auto source = static_cast<std::size_t>(contribution.step->source);
  return hidesItsGround && plan_.sources[source]->isKnownOpaque(tileIndex_, facts_[source]);
}

/// Decides what contributes to the block, innermost targets first.
void BlockComposer::settle() {
  for (std::size_t target = plan_.targets.size(); target-- > 0;) {
    std::vector<Contribution>& contributions = contributions_[target];
    contributions.clear();
    for (const SampledPlan::Step& step : plan_.targets[target].steps) {
      const std::optional<Contribution> contribution = contributionOf(step);
      if (!contribution) continue;
      if (isOpaqueCover(*contribution)) contributions.clear();
      contributions.push_back(*contribution);
    }
  }
}

/// Decides whether what the first steps make is at hand.
void BlockComposer::settleBelow(std::uint64_t recipeBelow) {
  belowUse_ = BelowUse::pass;
  const std::vector<SampledPlan::Step>& steps = plan_.targets.front().steps;
  if (below_.steps() == 0 || below_.steps() > steps.size()) return;
  const std::vector<Contribution>& contributions = contributions_.front();
  const SampledPlan::Step* firstAbove = steps.data() + below_.steps();
  const auto above =
      std::ranges::find_if(contributions, [&](const Contribution& each) { return each.step >= firstAbove; });
  contributionsBelow_ = static_cast<std::size_t>(above - contributions.begin());
  if (contributionsBelow_ == 0) return;
  // Grey and colour accumulate differently, and that depends on what lies above as well.
  Hasher hasher;
  hasher.fold(recipeBelow);
  hasher.fold(static_cast<std::uint64_t>(planesOf(contributions)));
  const std::uint64_t recipe = hasher.value() | 1U;
  belowUse_ = below_.holds(blockIndex_, recipe) ? BelowUse::load : BelowUse::save;
  below_.note(blockIndex_, recipe);
}

/// Targets come after those that take them in.
void BlockComposer::findNeededTargets() {
  isNeeded_.assign(isNeeded_.size(), false);
  isNeeded_.front() = true;
  for (std::size_t target = 0; target < contributions_.size(); ++target) {
    if (!isNeeded_[target]) continue;
    std::span<const Contribution> contributions = contributions_[target];
    if (target == 0 && belowUse_ == BelowUse::load)
      contributions = contributions.subspan(contributionsBelow_);
    for (const Contribution& contribution : contributions) {
      if (contribution.step->nested >= 0)
        isNeeded_[static_cast<std::size_t>(contribution.step->nested)] = true;
    }
  }
}

/// The strip's pixels where they stand in the tile, if it takes whole rows.
const std::byte* BlockComposer::wholeRows(const Tile& tile, int pixelBytes) const {
  if (block_->columnEnd - block_->columnBegin != tileSide) return nullptr;
  const SampleBlock samples = layout_.samplesOf(*block_, *strip_);
  if (!samples.isContiguous() || tile.isUniform() || tile.has(TileTrait::irregular)) return nullptr;
  return tile.data() + static_cast<std::ptrdiff_t>(samples.rows.front() % tileSide * tileSide) * pixelBytes;
}

const std::byte* BlockComposer::standing(const Surface& surface) {
  KeptPixels* kept = plan_.keptOf.at(&surface);
  const Tile& tile = surface.tile(tileIndex_);
  if (const std::byte* rows = wholeRows(tile, surface.pixelBytes())) return rows;
  if (kept == nullptr || tile.isUniform()) {
    auto& memory = surface.format() == maskPixelFormat ? memory_.gatheredMask : memory_.gatheredPixels;
    gatherSamples(surface, layout_.samplesOf(*block_, *strip_), {}, memory.data());
    return memory.data();
  }
  if (kept->isOutOfDate(tile, blockIndex_)) kept->take(surface, layout_, blockIndex_);
  return kept->pixels.get() + strip_->first * static_cast<std::size_t>(surface.pixelBytes());
}

const std::byte* BlockComposer::read(int source, std::span<std::byte> scratch) {
  const auto index = static_cast<std::size_t>(source);
  if (transforms_[index] == nullptr) {
    return plan_.sources[index]->read(tileIndex_, layout_.samplesOf(*block_, *strip_), *this, scratch.data());
  }
  resample(index, scratch.data());
  return scratch.data();
}

/// Makes the strip's pixels of a source that is resampled. Where pixels are neighbours, all strips of the
/// block are made together, since they share what they take from the source.
void BlockComposer::resample(std::size_t source, std::byte* strip) {
  const SampleBlock samples = layout_.samplesOf(*block_, *strip_);
  const PixelRect tile = plan_.sources[source]->surface().tileRect(tileIndex_);
  const SampleBlock all = layout_.samplesOf(*block_);
  if (!all.isContiguous()) return transforms_[source]->sample(tile, samples, strip);
  std::byte* pixels =
      memory_.resampled[source].ofSize((all.count() + SampleLayout::alignment) * largestPixel);
  if (std::exchange(resampledBlock_[source], blockIndex_) != blockIndex_) {
    transforms_[source]->sample(tile, all, pixels);
  }
  const auto pixelBytes = static_cast<std::size_t>(plan_.sources[source]->surface().pixelBytes());
  const std::size_t first =
      samples.columns.size() * static_cast<std::size_t>(strip_->rowBegin - block_->rowBegin);
  std::memcpy(strip, pixels + first * pixelBytes, samples.count() * pixelBytes);
}

std::byte* BlockComposer::nestedStrip(std::size_t target) {
  constexpr std::size_t stripBytes = SamplingMemory::stripBytes;
  return memory_.nested.ofSize(plan_.targets.size() * stripBytes) + target * stripBytes;
}

int BlockComposer::paddedCount() const {
  const int columns = block_->columnEnd - block_->columnBegin;
  return ((strip_->rowEnd - strip_->rowBegin) * columns + 15) / 16 * 16;
}

void BlockComposer::composeStrip() {
  for (std::size_t target = plan_.targets.size(); target-- > 0;) {
    if (target == 0 || (isNeeded_[target] && !contributions_[target].empty())) composeTarget(target);
  }
}

void BlockComposer::composeTarget(std::size_t target) {
  std::span<const Contribution> contributions = contributions_[target];
  const PlaneSet planes = planesOf(contributions);
  const BelowUse use = target == 0 ? belowUse_ : BelowUse::pass;
  if (use == BelowUse::load) {
    below_.load(*strip_, memory_.accumulator, planes);
  } else {
    kernels::clearStrip(memory_.accumulator, planes, paddedCount());
  }
  if (use == BelowUse::save) {
    composite(contributions.first(contributionsBelow_), planes);
    below_.save(*strip_, memory_.accumulator, planes);
  }
  composite(use == BelowUse::pass ? contributions : contributions.subspan(contributionsBelow_), planes);
  kernels::storeStrip(memory_.accumulator, planes, plan_.targets[target].format,
                      target == 0 ? memory_.result.data() : nestedStrip(target), paddedCount());
}

void BlockComposer::composite(std::span<const Contribution> contributions, PlaneSet planes) {
  for (const Contribution& contribution : contributions) {
    StripSource source = contribution.source;
    const SampledPlan::Step& step = *contribution.step;
    if (step.nested >= 0) source.pixels = nestedStrip(static_cast<std::size_t>(step.nested));
    if (contribution.readsPixels) source.pixels = read(step.source, memory_.changedPixels);
    if (contribution.readsMask) {
      source.mask = reinterpret_cast<const std::uint16_t*>(read(step.mask, memory_.changedMask));
    }
    kernels::compositeStrip(memory_.accumulator, planes, source, paddedCount());
  }
}

void BlockComposer::write(const Surface& image, std::span<std::byte* const> tiles) {
  const auto pixelBytes = static_cast<std::size_t>(image.pixelBytes());
  const std::byte* from = memory_.result.data();
  for (int y = strip_->rowBegin; y < strip_->rowEnd; ++y) {
    for (int x = block_->columnBegin; x < block_->columnEnd;) {
      const int end = std::min(block_->columnEnd, (x / tileSide + 1) * tileSide);
      const auto bytes = static_cast<std::size_t>(end - x) * pixelBytes;
      std::byte* tile = tiles[static_cast<std::size_t>(image.tileIndex(x / tileSide, y / tileSide))];
      const auto offset = static_cast<std::size_t>(y % tileSide * tileSide + x % tileSide) * pixelBytes;
      std::memcpy(tile + offset, from, bytes);
      from += bytes;
      x = end;
    }
  }
}

PlaneSet BlockComposer::planesOf(std::span<const Contribution> contributions) {
  const auto hasGrey = [](const Contribution& each) { return isGrey(each.source.format); };
  return std::ranges::any_of(contributions, hasGrey) ? PlaneSet::grey : PlaneSet::rgb;
}

}  // namespace orvanel
