#include "raster/SampledComposite.h"

#include <tbb/blocked_range.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <numeric>
#include <span>
#include <utility>

#include "raster/Hash.h"
#include "raster/kernels/CompositeStrip.h"
#include "raster/kernels/PixelAccess.h"
#include "raster/kernels/SampleSource.h"

namespace orvanel {
namespace {

using kernels::PlaneSet;
using kernels::SampleBlock;
using kernels::SampleSource;
using kernels::StripAccumulator;
using kernels::StripSource;
using kernels::TileFacts;
using kernels::TileTransform;

constexpr std::size_t largestPixel = 8;
constexpr std::size_t stripBytes = std::size_t{kernels::stripPixels} * largestPixel;
/// Strips start at multiples of this many samples, so that pixels of every format are aligned to 64 bytes.
constexpr std::size_t stripAlignment = 32;

std::size_t roundedUp(std::size_t value, std::size_t step) {
  return (value + step - 1) / step * step;
}

/// The places [begin, end) of the samples within each tile.
std::vector<std::pair<int, int>> splitByTiles(const std::vector<std::int32_t>& samples) {
  std::vector<std::pair<int, int>> parts;
  auto from = samples.begin();
  while (from != samples.end()) {
    const auto to = std::lower_bound(from, samples.end(), (*from / tileSide + 1) * tileSide);
    parts.emplace_back(static_cast<int>(from - samples.begin()), static_cast<int>(to - samples.begin()));
    from = to;
  }
  return parts;
}

std::span<const std::int32_t> part(const std::vector<std::int32_t>& samples, int begin, int end) {
  return std::span(samples).subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

/// A thread's memory.
struct Worker {
  StripAccumulator accumulator;
  alignas(64) std::array<std::byte, stripBytes> gatheredPixels;
  alignas(64) std::array<std::byte, stripBytes> gatheredMask;
  alignas(64) std::array<std::byte, stripBytes> changedPixels;
  alignas(64) std::array<std::byte, stripBytes> changedMask;
  alignas(64) std::array<std::byte, stripBytes> result;
  kernels::Scratch<std::byte> nested;
  kernels::TransformScratch transforms;
  std::vector<kernels::Scratch<std::byte>> resampled;
};

/// A step of the plan, by the numbers of its sources.
struct SampledStep {
  CompositeParams params;
  int source = -1;
  int mask = -1;
  int nested = -1;
};

struct SampledTarget {
  PixelFormat format;
  std::vector<SampledStep> steps;
};

/// A plan made ready for one evaluation.
struct SampledPlan {
  explicit SampledPlan(const CompositePlan& plan) {
    for (const CompositePlan::TargetPlan& target : plan.targets()) {
      SampledTarget& sampled = targets.emplace_back(SampledTarget{target.surface->format(), {}});
      for (const CompositePlan::Step& step : target.steps) {
        sampled.steps.push_back({step.params, add(step.source), add(step.mask), step.nested});
      }
    }
  }

  std::vector<SampledTarget> targets;
  std::vector<std::unique_ptr<const SampleSource>> sources;
  /// Null: not kept.
  std::unordered_map<const Surface*, SampledComposite::Kept*> keptOf;

 private:
  int add(const CompositePlan::Source& source) {
    if (source.surface == nullptr) return -1;
    sources.push_back(std::make_unique<const SampleSource>(source));
    return static_cast<int>(sources.size()) - 1;
  }
};

/// What one step contributes to one block, once uniform masks and transparent sources are settled.
struct Contribution {
  StripSource source;
  const SampledStep* step = nullptr;
  bool readsPixels = false;
  bool readsMask = false;
};

/// Composites the blocks of one thread.
class BlockComposer final : public kernels::StripReader {
 public:
  BlockComposer(const SampledPlan& plan, const SampleLayout& layout, Worker& worker)
      : plan_(plan), layout_(layout), worker_(worker), facts_(plan.sources.size()) {
    contributions_.resize(plan.targets.size());
    worker.resampled.resize(plan.sources.size());
    transforms_.resize(plan.sources.size());
    for (std::size_t i = 0; i < plan.sources.size(); ++i) {
      if (const kernels::PixelTransform* way = plan.sources[i]->resampling()) {
        transforms_[i] = std::make_unique<TileTransform>(plan.sources[i]->surface(), *way, worker.transforms);
      }
    }
  }

  /// A hash of everything that decides the block's pixels.
  [[nodiscard]] std::uint64_t recipeOf(std::size_t block) {
    begin(block);
    Hasher hasher;
    for (const SampledTarget& target : plan_.targets) {
      hasher.fold(static_cast<std::uint64_t>(target.format));
      for (const SampledStep& step : target.steps) {
        hasher.fold(std::uint64_t{step.params.blendMode} << 33U | std::uint64_t{step.params.visible} << 32U |
                    std::bit_cast<std::uint32_t>(step.params.opacity));
        foldSource(hasher, step.source);
        foldSource(hasher, step.mask);
        hasher.fold(static_cast<std::uint64_t>(step.nested + 1));
      }
    }
    return hasher.value() | 1U;  // 0 means unknown
  }

  /// `tiles` are the image's tiles under the block.
  void make(std::size_t block, const Surface& image, std::span<std::byte* const> tiles) {
    begin(block);
    settle();
    resample();
    for (const SampleLayout::Strip& strip : block_->strips) {
      strip_ = &strip;
      composeStrip();
      write(image, tiles);
    }
  }

  const std::byte* standing(const Surface& surface) override {
    SampledComposite::Kept* kept = plan_.keptOf.at(&surface);
    const Tile& tile = surface.tile(tileIndex_);
    if (const std::byte* rows = wholeRows(tile, surface.pixelBytes())) return rows;
    if (kept == nullptr || tile.isUniform()) {
      auto& memory = surface.format() == maskPixelFormat ? worker_.gatheredMask : worker_.gatheredPixels;
      gatherSamples(surface, samplesOf(*strip_), {}, memory.data());
      return memory.data();
    }
    const auto pixelBytes = static_cast<std::size_t>(surface.pixelBytes());
    std::uint64_t& version = kept->versions[blockIndex_];
    if (version != tile.version()) {
      for (const SampleLayout::Strip& strip : block_->strips) {
        gatherSamples(surface, samplesOf(strip), {}, kept->pixels.get() + strip.first * pixelBytes);
      }
      version = tile.version();
    }
    return kept->pixels.get() + strip_->first * pixelBytes;
  }

 private:
  /// The strip's pixels where they stand in the tile, if it takes whole rows.
  [[nodiscard]] const std::byte* wholeRows(const Tile& tile, int pixelBytes) const {
    if (tile.isUniform() || tile.has(TileTrait::irregular)) return nullptr;
    const SampleBlock samples = samplesOf(*strip_);
    if (samples.columns.size() != tileSide || !samples.isContiguous()) return nullptr;
    return tile.data() + static_cast<std::ptrdiff_t>(samples.rows.front() % tileSide * tileSide) * pixelBytes;
  }

  void begin(std::size_t block) {
    blockIndex_ = block;
    block_ = &layout_.blocks[block];
    const Surface* any = plan_.sources.empty() ? nullptr : &plan_.sources.front()->surface();
    if (any == nullptr) return;
    tileIndex_ = any->tileIndex(block_->tileX, block_->tileY);
    for (std::size_t i = 0; i < facts_.size(); ++i) {
      facts_[i] = plan_.sources[i]->factsOf(tileIndex_, transforms_[i].get());
    }
  }

  void foldSource(Hasher& hasher, int source) const {
    if (source < 0) return hasher.fold(0);
    const TileFacts& facts = facts_[static_cast<std::size_t>(source)];
    hasher.fold(facts.isUniform ? 1 : 2);
    hasher.fold(facts.identity);
    hasher.fold(
        static_cast<std::uint64_t>(plan_.sources[static_cast<std::size_t>(source)]->surface().format()));
  }

  [[nodiscard]] SampleBlock samplesOf(const SampleLayout::Strip& strip) const {
    return {part(layout_.grid.columns, block_->columnBegin, block_->columnEnd),
            part(layout_.grid.rows, strip.rowBegin, strip.rowEnd)};
  }

  [[nodiscard]] std::optional<Contribution> contributionOf(const SampledStep& step) const {
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
  [[nodiscard]] bool isOpaqueCover(const Contribution& contribution) const {
    return contribution.step->source >= 0 &&
           facts_[static_cast<std::size_t>(contribution.step->source)].isOpaque && !contribution.readsMask &&
           contribution.source.uniformMask == halfOne && contribution.source.opacity >= 1.0F &&
           contribution.source.blendMode == BlendMode::normal;
  }

  /// Decides what contributes to the block, innermost targets first.
  void settle() {
    for (std::size_t target = plan_.targets.size(); target-- > 0;) {
      std::vector<Contribution>& contributions = contributions_[target];
      contributions.clear();
      for (const SampledStep& step : plan_.targets[target].steps) {
        const std::optional<Contribution> contribution = contributionOf(step);
        if (!contribution) continue;
        if (isOpaqueCover(*contribution)) contributions.clear();
        contributions.push_back(*contribution);
      }
    }
  }

  /// Makes the block's pixels of sources that are resampled, all strips together.
  void resample() {
    const SampleBlock samples{part(layout_.grid.columns, block_->columnBegin, block_->columnEnd),
                              part(layout_.grid.rows, block_->rowBegin, block_->rowEnd)};
    for (std::size_t i = 0; i < transforms_.size(); ++i) {
      if (transforms_[i] == nullptr || facts_[i].isUniform) continue;
      std::byte* pixels =
          worker_.resampled[i].ofSize(roundedUp(samples.count(), stripAlignment) * largestPixel);
      transforms_[i]->sample(plan_.sources[i]->surface().tileRect(tileIndex_), samples, pixels);
    }
  }

  [[nodiscard]] const std::byte* read(int source, std::span<std::byte> scratch) {
    const auto index = static_cast<std::size_t>(source);
    const SampleBlock samples = samplesOf(*strip_);
    if (transforms_[index] == nullptr) {
      return plan_.sources[index]->read(tileIndex_, samples, *this, scratch.data());
    }
    const auto pixelBytes = static_cast<std::size_t>(plan_.sources[index]->surface().pixelBytes());
    const std::size_t first =
        samples.columns.size() * static_cast<std::size_t>(strip_->rowBegin - block_->rowBegin);
    std::memcpy(scratch.data(), worker_.resampled[index].ofSize(0) + first * pixelBytes,
                samples.count() * pixelBytes);
    return scratch.data();
  }

  [[nodiscard]] std::byte* nestedStrip(std::size_t target) {
    return worker_.nested.ofSize(plan_.targets.size() * stripBytes) + target * stripBytes;
  }

  [[nodiscard]] int paddedCount() const {
    const int columns = block_->columnEnd - block_->columnBegin;
    return ((strip_->rowEnd - strip_->rowBegin) * columns + 15) / 16 * 16;
  }

  void composeStrip() {
    const int count = paddedCount();
    for (std::size_t target = plan_.targets.size(); target-- > 0;) {
      if (target > 0 && contributions_[target].empty()) continue;
      const PlaneSet planes = planesOf(contributions_[target]);
      kernels::clearStrip(worker_.accumulator, planes, count);
      for (const Contribution& contribution : contributions_[target]) {
        StripSource source = contribution.source;
        const SampledStep& step = *contribution.step;
        if (step.nested >= 0) source.pixels = nestedStrip(static_cast<std::size_t>(step.nested));
        if (contribution.readsPixels) source.pixels = read(step.source, worker_.changedPixels);
        if (contribution.readsMask) {
          source.mask = reinterpret_cast<const std::uint16_t*>(read(step.mask, worker_.changedMask));
        }
        kernels::compositeStrip(worker_.accumulator, planes, source, count);
      }
      kernels::storeStrip(worker_.accumulator, planes, plan_.targets[target].format,
                          target == 0 ? worker_.result.data() : nestedStrip(target), count);
    }
  }

  void write(const Surface& image, std::span<std::byte* const> tiles) {
    const auto pixelBytes = static_cast<std::size_t>(image.pixelBytes());
    const std::byte* from = worker_.result.data();
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

  [[nodiscard]] static PlaneSet planesOf(const std::vector<Contribution>& contributions) {
    const auto isGrey = [](const Contribution& contribution) {
      const PixelFormat format = contribution.source.format;
      return format == PixelFormat::rg8Unorm || format == PixelFormat::rg16Unorm;
    };
    return std::ranges::any_of(contributions, isGrey) ? PlaneSet::grey : PlaneSet::rgb;
  }

  [[nodiscard]] static bool isTransparent(std::uint64_t pixel, PixelFormat format) {
    return kernels::colorOfPixel(pixel, format)[3] == 0.0F;
  }

  const SampledPlan& plan_;
  const SampleLayout& layout_;
  Worker& worker_;
  std::vector<TileFacts> facts_;  ///< of each source, under the current block
  std::vector<std::unique_ptr<TileTransform>> transforms_;
  std::vector<std::vector<Contribution>> contributions_;  ///< of each target
  std::size_t blockIndex_ = 0;
  const SampleLayout::Block* block_ = nullptr;
  const SampleLayout::Strip* strip_ = nullptr;
  int tileIndex_ = 0;
};

}  // namespace

SampleLayout::SampleLayout(const SampleGrid& sampled) : grid(sampled) {
  const auto rowParts = splitByTiles(grid.rows);
  const auto columnParts = splitByTiles(grid.columns);
  for (const auto& [rowBegin, rowEnd] : rowParts) {
    for (const auto& [columnBegin, columnEnd] : columnParts) {
      Block& block = blocks.emplace_back();
      block.tileX = grid.columns[static_cast<std::size_t>(columnBegin)] / tileSide;
      block.tileY = grid.rows[static_cast<std::size_t>(rowBegin)] / tileSide;
      block.columnBegin = columnBegin;
      block.columnEnd = columnEnd;
      block.rowBegin = rowBegin;
      block.rowEnd = rowEnd;
      const int rowsOfStrip = kernels::stripPixels / (columnEnd - columnBegin);
      for (int row = rowBegin; row < rowEnd; row += rowsOfStrip) {
        const int end = std::min(row + rowsOfStrip, rowEnd);
        block.strips.push_back({row, end, samples});
        samples +=
            roundedUp(static_cast<std::size_t>((end - row) * (columnEnd - columnBegin)), stripAlignment);
      }
    }
  }
  const auto span = [](const std::vector<std::int32_t>& places) {
    return static_cast<double>(places.back() - places.front() + 1);
  };
  isSparse = 2.0 * static_cast<double>(grid.columns.size()) * static_cast<double>(grid.rows.size()) <
             span(grid.columns) * span(grid.rows);
}

struct SampledComposite::Workers {
  tbb::enumerable_thread_specific<std::unique_ptr<Worker>> each{[] { return std::make_unique<Worker>(); }};
};

SampledComposite::SampledComposite() = default;
SampledComposite::~SampledComposite() = default;

void SampledComposite::forget() {
  layout_.reset();
  image_.reset();
  recipes_.clear();
  kept_.clear();
  workers_.reset();
}

std::size_t SampledComposite::keptBytes() const {
  return std::accumulate(kept_.begin(), kept_.end(), std::size_t{0},
                         [](std::size_t sum, const auto& entry) { return sum + entry.second.bytes; });
}

void SampledComposite::arrange(const SampleGrid& grid, PixelFormat format) {
  if (workers_ == nullptr) workers_ = std::make_unique<Workers>();
  if (!layout_ || layout_->grid != grid) {
    layout_.emplace(grid);
    kept_.clear();
    image_.reset();
  }
  if (image_ && image_->format() == format) return;
  image_.emplace(format, static_cast<int>(grid.columns.size()), static_cast<int>(grid.rows.size()));
  recipes_.assign(layout_->blocks.size(), 0);
}

SampledComposite::Kept* SampledComposite::keep(const Surface& surface) {
  if (!layout_->isSparse) return nullptr;
  if (const auto known = kept_.find(&surface); known != kept_.end()) {
    known->second.lastUse = evaluations_;
    const std::size_t needed = layout_->samples * static_cast<std::size_t>(surface.pixelBytes());
    if (known->second.bytes == needed) return &known->second;
    kept_.erase(known);
  }
  const std::size_t bytes = layout_->samples * static_cast<std::size_t>(surface.pixelBytes());
  while (keptBytes() + bytes > mostKept) {
    const auto oldest =
        std::ranges::min_element(kept_, {}, [](const auto& entry) { return entry.second.lastUse; });
    if (oldest == kept_.end() || oldest->second.lastUse == evaluations_) return nullptr;
    kept_.erase(oldest);
  }
  auto pixels = hwy::AllocateAligned<std::byte>(bytes);
  if (pixels == nullptr) return nullptr;
  Kept& kept = kept_[&surface];
  kept.pixels = std::move(pixels);
  kept.versions.assign(layout_->blocks.size(), 0);
  kept.bytes = bytes;
  kept.lastUse = evaluations_;
  return &kept;
}

const Surface& SampledComposite::evaluate(const CompositePlan& plan, const SampleGrid& grid) {
  ++evaluations_;
  arrange(grid, plan.targets().front().surface->format());
  SampledPlan sampled(plan);
  for (const auto& source : sampled.sources) {
    for (const Surface* surface : source->standingSurfaces()) {
      sampled.keptOf.emplace(surface, keep(*surface));
    }
  }
  const std::vector<SampleLayout::Block>& blocks = layout_->blocks;
  tbb::enumerable_thread_specific<BlockComposer> composers(
      [&] { return BlockComposer(sampled, *layout_, *workers_->each.local()); });

  std::vector<std::uint64_t> recipes(blocks.size());
  const auto forBlocks = [](std::size_t count, const auto& work) {
    constexpr std::size_t fewBlocks = 4;
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, count, fewBlocks), work);
  };
  forBlocks(blocks.size(), [&](const tbb::blocked_range<std::size_t>& range) {
    BlockComposer& composer = composers.local();
    for (std::size_t i = range.begin(); i < range.end(); ++i) recipes[i] = composer.recipeOf(i);
  });
  std::vector<std::size_t> changed;
  std::vector<std::byte*> tiles(static_cast<std::size_t>(image_->tileCount()), nullptr);
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (recipes[i] == recipes_[i]) continue;
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
    for (std::size_t i = range.begin(); i < range.end(); ++i) composer.make(changed[i], *image_, tiles);
  });
  recipes_ = std::move(recipes);
  blocksMade_ = static_cast<int>(changed.size());
  return *image_;
}

}  // namespace orvanel
