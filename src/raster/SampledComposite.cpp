#include "raster/SampledComposite.h"

#include <tbb/blocked_range.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

#include "raster/BlockComposer.h"
#include "raster/Hash.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

void fold(Hasher& hasher, const CompositePlan::Source& source) {
  hasher.fold(reinterpret_cast<std::uintptr_t>(source.surface));
  hasher.fold(source.change == nullptr ? 0 : source.change->version);
}

/// Numbers of the canvas's steps. Equal ones stand for equal steps, but for the tiles of their surfaces.
std::vector<std::uint64_t> stepsOf(const CompositePlan& plan) {
  std::vector<std::uint64_t> ofTargets(plan.targets().size());
  std::vector<std::uint64_t> ofCanvas;
  // Innermost targets first, since others take them in.
  for (std::size_t target = plan.targets().size(); target-- > 0;) {
    Hasher whole;
    for (const CompositePlan::Step& step : plan.targets()[target].steps) {
      Hasher hasher;
      hasher.fold(std::uint64_t{step.params.blendMode} << 33U | std::uint64_t{step.params.visible} << 32U |
                  std::bit_cast<std::uint32_t>(step.params.opacity));
      fold(hasher, step.source);
      fold(hasher, step.mask);
      hasher.fold(step.nested < 0 ? 0 : ofTargets[static_cast<std::size_t>(step.nested)]);
      whole.fold(hasher.value());
      if (target == 0) ofCanvas.push_back(hasher.value());
    }
    ofTargets[target] = whole.value();
  }
  return ofCanvas;
}

}  // namespace

struct SampledComposite::Workers {
  tbb::enumerable_thread_specific<std::unique_ptr<SamplingMemory>> each{
      [] { return std::make_unique<SamplingMemory>(); }};
};

SampledComposite::SampledComposite() = default;
SampledComposite::~SampledComposite() = default;

void SampledComposite::forget() {
  layout_.reset();
  image_.reset();
  recipes_.clear();
  kept_.clear();
  below_.forget();
  workers_.reset();
}

std::size_t SampledComposite::keptBytes() const {
  return std::accumulate(kept_.begin(), kept_.end(), below_.bytes(),
                         [](std::size_t sum, const auto& entry) { return sum + entry.second.bytes; });
}

void SampledComposite::arrange(const SampleGrid& grid, PixelFormat format) {
  if (workers_ == nullptr) workers_ = std::make_unique<Workers>();
  if (!layout_ || layout_->grid != grid) {
    layout_.emplace(grid);
    kept_.clear();
    below_.forget();
    image_.reset();
  }
  if (image_ && image_->format() == format) return;
  image_.emplace(format, static_cast<int>(grid.columns.size()), static_cast<int>(grid.rows.size()));
  recipes_.assign(layout_->blocks.size(), 0);
}

KeptPixels* SampledComposite::keep(const Surface& surface) {
  if (!layout_->isSparse) return nullptr;
  const std::size_t bytes = layout_->samples * static_cast<std::size_t>(surface.pixelBytes());
  if (const auto known = kept_.find(&surface); known != kept_.end()) {
    if (known->second.bytes == bytes) return &known->second;
    kept_.erase(known);
  }
  if (!makeRoomFor(bytes) || !pixelsFitInMemory(bytes)) return nullptr;
  auto pixels = hwy::AllocateAligned<std::byte>(bytes);
  if (pixels == nullptr) return nullptr;
  KeptPixels& kept = kept_[&surface];
  kept.pixels = std::move(pixels);
  kept.versions.assign(layout_->blocks.size(), 0);
  kept.bytes = bytes;
  kept.lastUse = evaluations_;
  return &kept;
}

/// Lets go of the oldest of what this evaluation doesn't use, if that is enough.
bool SampledComposite::makeRoomFor(std::size_t bytes) {
  std::size_t inUse = below_.bytes();
  for (const auto& [surface, kept] : kept_) {
    if (kept.lastUse == evaluations_) inUse += kept.bytes;
  }
  if (inUse + bytes > mostKept) return false;
  while (keptBytes() + bytes > mostKept) {
    kept_.erase(std::ranges::min_element(kept_, {}, [](const auto& entry) { return entry.second.lastUse; }));
  }
  return true;
}

std::map<const Surface*, KeptPixels*> SampledComposite::keepStanding(const SampledPlan& plan) {
  std::map<const Surface*, KeptPixels*> standing;
  for (const auto& source : plan.sources) {
    for (const Surface* surface : source->standingSurfaces()) standing.emplace(surface, nullptr);
  }
  // What is kept stays, before others look for room.
  for (const auto& [surface, kept] : standing) {
    if (const auto known = kept_.find(surface); known != kept_.end()) known->second.lastUse = evaluations_;
  }
  for (auto& [surface, kept] : standing) kept = keep(*surface);
  return standing;
}

bool SampledComposite::makeRoomForImage(std::chrono::steady_clock::time_point end) {
  for (int i = 0; i < image_->tileCount(); ++i) {
    if (!image_->tile(i).isUniform()) continue;
    static_cast<void>(image_->editTile(i));
    if (std::chrono::steady_clock::now() >= end) return false;
  }
  return true;
}

bool SampledComposite::prepare(const CompositePlan& plan, const SampleGrid& grid,
                               std::chrono::milliseconds budget) {
  struct Missing {
    const Surface* surface;
    KeptPixels* kept;
    std::size_t block;
  };
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + budget;
  ++evaluations_;
  arrange(grid, plan.targets().front().surface->format());
  std::vector<Missing> missing;
  for (const auto& [surface, kept] : keepStanding(SampledPlan(plan))) {
    if (kept == nullptr) continue;
    for (std::size_t i = 0; i < layout_->blocks.size(); ++i) {
      const SampleLayout::Block& block = layout_->blocks[i];
      const Tile& tile = surface->tile(surface->tileIndex(block.tileX, block.tileY));
      if (kept->isOutOfDate(tile, i)) missing.push_back({surface, kept, i});
    }
  }
  constexpr std::size_t atOnce = 256;
  for (std::size_t from = 0; from < missing.size(); from += atOnce) {
    tbb::parallel_for(from, std::min(from + atOnce, missing.size()), [&](std::size_t i) {
      missing[i].kept->take(*missing[i].surface, *layout_, missing[i].block);
    });
    if (Clock::now() >= end) return false;
  }
  // Memory that the system must clear takes turns of its own.
  if (!missing.empty()) return false;
  const std::size_t steps = plan.targets().front().steps.size();
  const bool hasRoom = keptBytes() + KeptBelow::bytesFor(*layout_) <= mostKept;
  if (hasRoom && below_.makeRoom(*layout_, steps)) return false;
  return makeRoomForImage(end);
}

const Surface& SampledComposite::evaluate(const CompositePlan& plan, const SampleGrid& grid) {
  ++evaluations_;
  arrange(grid, plan.targets().front().surface->format());
  below_.begin(*layout_, stepsOf(plan));
  SampledPlan sampled(plan);
  for (const auto& [surface, kept] : keepStanding(sampled)) sampled.keptOf.emplace(surface, kept);
  const std::vector<SampleLayout::Block>& blocks = layout_->blocks;
  tbb::enumerable_thread_specific<BlockComposer> composers(
      [&] { return BlockComposer(sampled, *layout_, below_, *workers_->each.local()); });

  std::vector<BlockComposer::Recipes> recipes(blocks.size());
  const auto forBlocks = [](std::size_t count, const auto& work) {
    constexpr std::size_t fewBlocks = 4;
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, count, fewBlocks), work);
  };
  forBlocks(blocks.size(), [&](const tbb::blocked_range<std::size_t>& range) {
    BlockComposer& composer = composers.local();
    for (std::size_t i = range.begin(); i < range.end(); ++i) recipes[i] = composer.recipesOf(i);
  });
  std::vector<std::size_t> changed;
  std::vector<std::byte*> tiles(static_cast<std::size_t>(image_->tileCount()), nullptr);
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (std::exchange(recipes_[i], recipes[i].whole) == recipes[i].whole) continue;
    changed.push_back(i);
    const SampleLayout::Block& block = blocks[i];
    for (int tileY = block.rowBegin / tileSide; tileY <= (block.rowEnd - 1) / tileSide; ++tileY) {
      for (int tileX = block.columnBegin / tileSide; tileX <= (block.columnEnd - 1) / tileSide; ++tileX) {
        const int index = image_->tileIndex(tileX, tileY);
        std::byte*& bytes = tiles[static_cast<std::size_t>(index)];
        if (bytes == nullptr) bytes = image_->editTile(index);
      }
    }
  }
  forBlocks(changed.size(), [&](const tbb::blocked_range<std::size_t>& range) {
    BlockComposer& composer = composers.local();
    for (std::size_t i = range.begin(); i < range.end(); ++i)
      composer.make(changed[i], recipes[changed[i]].below, *image_, tiles);
  });
  blocksMade_ = static_cast<int>(changed.size());
  return *image_;
}

}  // namespace orvanel
