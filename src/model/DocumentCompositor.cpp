#include "model/DocumentCompositor.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

#include "model/NodeWalk.h"
#include "raster/Hash.h"

namespace orvanel {
namespace {

/// Identities are hashed too: swapping two nodes with equal values changes the image.
void foldIdentity(Hasher& hasher, const QUuid& id) {
  std::array<std::uint64_t, 2> words{};
  static_assert(sizeof(id) == sizeof(words));
  std::memcpy(words.data(), &id, sizeof(words));
  hasher.fold(words[0]);
  hasher.fold(words[1]);
}

constexpr std::uint64_t noMask = 0;
constexpr std::uint64_t disabledMask = 1;
constexpr std::uint64_t enabledMask = 2;
constexpr std::uint64_t folderMark = 3;
constexpr std::uint64_t endOfFolder = ~std::uint64_t{0};

std::uint64_t packedValues(float opacity, BlendMode blendMode, bool isVisible, std::uint64_t mask) {
  // Adding positive zero normalises negative zero, which composites the same.
  return (std::uint64_t{std::bit_cast<std::uint32_t>(opacity + 0.0F)} << 32U) | (mask << 16U) |
         (std::uint64_t{rawValue(blendMode)} << 8U) | std::uint64_t{isVisible};
}

std::uint64_t maskState(const Layer& layer) {
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  if (mask == nullptr) return noMask;
  return mask->isEnabled.value() ? enabledMask : disabledMask;
}

/// Tiles between two checks of the deadline.
constexpr int tilesPerTurn = 8;

}  // namespace

std::int64_t DocumentCompositor::compositingHash(const Document& document) {
  Hasher hasher;
  walkNodes(
      document.rootNodes.value(),
      [&](const LayerNode& node, const std::shared_ptr<LayerFolder>&, int) {
        const std::shared_ptr<Layer> layer = node.layer();
        foldIdentity(hasher, node.id());
        hasher.fold(packedValues(node.opacity().value(), node.blendMode().value(), node.isVisible().value(),
                                 layer != nullptr ? maskState(*layer) : folderMark));
        return WalkStep::descend;
      },
      [&](const LayerFolder&) { hasher.fold(endOfFolder); });
  return static_cast<std::int64_t>(hasher.value());
}

DocumentCompositor::DocumentCompositor(MetalContext& context) : context_(context) {}

DocumentCompositor::~DocumentCompositor() = default;

CompositePlan::Source DocumentCompositor::Run::source(const Document& document, const Layer& layer,
                                                      SurfaceKind kind) {
  const std::optional<ShownSurface> shown =
      sources == Sources::shown ? document.shown(layer, kind) : std::nullopt;
  if (shown) return {shown->original, shown->change};
  const ConstTexture surface = layer.surface(kind);
  held.push_back(sources == Sources::copied ? std::make_shared<const Surface>(*surface) : surface);
  return {held.back().get(), nullptr};
}

bool DocumentCompositor::isCurrent(const Document& document) const {
  return hasFlattened_ && lastCompositingHash_ == compositingHash(document);
}

bool DocumentCompositor::flatten(const Document& document, Surface& composite, Freshness freshness,
                                 Deadline deadline) {
  const std::int64_t hash = compositingHash(document);
  if (run_ == nullptr || freshness == Freshness::stale || hash != lastCompositingHash_) {
    lastCompositingHash_ = hash;
    hasFlattened_ = false;
    run_ = beginRun(document, composite, Sources::live);
  }
  const int tiles = deadline == Deadline::max() ? composite.tileCount() : tilesPerTurn;
  for (Deadline before = Deadline::clock::now();;) {
    if (advance(*run_, tiles)) {
      run_ = nullptr;
      hasFlattened_ = true;
      return true;
    }
    // Another turn takes about as long as this one.
    const Deadline now = Deadline::clock::now();
    if (now + (now - before) > deadline) return false;
    before = now;
  }
}

std::vector<int> DocumentCompositor::staleTiles(const Document& document) {
  if (document.isCompositeCurrent()) return {};
  // A compositor of its own leaves the pool as it is, and nothing is written to the surfaces.
  DocumentCompositor reader(document.context());
  reader.texturePool_ = document.compositor().texturePool_;
  Surface& composite = const_cast<Surface&>(*document.compositedTexture.value());
  return reader.beginRun(document, composite, Sources::live)->plan.staleTiles();
}

void DocumentCompositor::forget() {
  run_ = nullptr;
  hasFlattened_ = false;
}

CompositeReport DocumentCompositor::compositeDocument(const Document& document, Surface& composite,
                                                      CompositeScope scope) {
  return beginRun(document, composite, Sources::live)->plan.run(scope);
}

const Surface& DocumentCompositor::sample(const Document& document, SampledComposite& samples,
                                          const SampleGrid& grid) {
  // Temporaries only tell the formats of folders here; nothing is written to them or to the composite.
  Surface& composite = const_cast<Surface&>(*document.compositedTexture.value());
  return samples.evaluate(beginRun(document, composite, Sources::shown)->plan, grid);
}

bool DocumentCompositor::prepareSample(const Document& document, SampledComposite& samples,
                                       const SampleGrid& grid, std::chrono::milliseconds budget) {
  Surface& composite = const_cast<Surface&>(*document.compositedTexture.value());
  return samples.prepare(beginRun(document, composite, Sources::shown)->plan, grid, budget);
}

bool DocumentCompositor::advance(Run& run, int tiles) {
  const int count = std::min(tiles, run.plan.tileCount() - run.nextTile);
  run.plan.run(CompositeScope::changedTiles, run.nextTile, count);
  run.nextTile += count;
  return run.nextTile == run.plan.tileCount();
}

std::unique_ptr<DocumentCompositor::Run> DocumentCompositor::beginRun(const Document& document,
                                                                      Surface& composite, Sources sources) {
  texturePoolIndex_ = 0;
  auto run = std::make_unique<Run>(composite, sources);
  std::vector<CompositePlan::Target> targets{CompositePlan::canvasTarget()};
  walkNodes(
      document.rootNodes.value(),
      [&](const LayerNode& node, const std::shared_ptr<LayerFolder>&, int) {
        if (!node.isVisible().value()) return WalkStep::skip;
        if (const std::shared_ptr<Layer> layer = node.layer()) {
          compositeLayerNode(document, *layer, *run, targets.back());
          return WalkStep::descend;
        }
        if (node.folder()->children.value().empty()) return WalkStep::skip;
        targets.push_back(node.folder()->isIsolating() ? addTemporary(*run, document.colorMode.value())
                                                       : targets.back());
        return WalkStep::descend;
      },
      [&](const LayerFolder& folder) {
        const CompositePlan::Target isolated = targets.back();
        targets.pop_back();
        if (isolated != targets.back()) {
          compositeFolderNode(folder, run->plan, targets.back(), isolated, document.colorMode.value());
        }
      });
  return run;
}

void DocumentCompositor::compositeLayerNode(const Document& document, const Layer& layer, Run& run,
                                            CompositePlan::Target target) {
  if (layer.texture.value() == nullptr) return;
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  const bool hasMask = mask != nullptr && mask->isEnabled.value();
  const CompositeParams params{.blendMode = rawValue(layer.blendMode.value()),
                               .opacity = layer.opacity.value(),
                               .visible = 1,
                               .colorMode = rawValue(document.colorMode.value()),
                               .hasMask = hasMask ? 1U : 0U,
                               .reserved = 0};
  run.plan.compositeLayer(target, params, run.source(document, layer, SurfaceKind::pixels),
                          hasMask ? run.source(document, layer, SurfaceKind::mask) : CompositePlan::Source{});
}

CompositePlan::Target DocumentCompositor::addTemporary(Run& run, ColorMode colorMode) {
  const Texture temporary = acquireTemporaryTexture(run.composite.width(), run.composite.height(), colorMode);
  run.held.push_back(temporary);
  return run.plan.addTarget(*temporary);
}

void DocumentCompositor::compositeFolderNode(const LayerFolder& folder, CompositePlan& plan,
                                             CompositePlan::Target target, CompositePlan::Target isolated,
                                             ColorMode colorMode) {
  const CompositeParams params{.blendMode = rawValue(folder.blendMode.value()),
                               .opacity = folder.opacity.value(),
                               .visible = 1,
                               .colorMode = rawValue(folderColorMode(colorMode)),
                               .hasMask = 0,
                               .reserved = 0};
  plan.compositeTarget(target, params, isolated);
}

Texture DocumentCompositor::acquireTemporaryTexture(int width, int height, ColorMode colorMode) {
  const PixelFormat format = compositePixelFormat(colorMode);
  const auto slotFits = [&](std::size_t slot) {
    const Surface& surface = *texturePool_[slot];
    return surface.width() == width && surface.height() == height && surface.format() == format;
  };
  auto slot = static_cast<std::size_t>(texturePoolIndex_);
  if (slot < texturePool_.size()) {
    ++texturePoolIndex_;
    if (slotFits(slot)) return texturePool_[slot];
  }
  // A slot that doesn't fit stays in place; the surface goes into the next one.
  slot = static_cast<std::size_t>(texturePoolIndex_);
  ++texturePoolIndex_;
  const bool isOccupied = slot < texturePool_.size();
  // This run doesn't use the slot yet: a surface that fits is reused, with its finished tiles.
  if (isOccupied && slotFits(slot)) return texturePool_[slot];
  Texture surface = context_.makeTexture(format, width, height);
  if (surface == nullptr) fatalFault("Failed to create temporary texture");
  if (isOccupied) {
    texturePool_[slot] = surface;
  } else {
    texturePool_.push_back(surface);
  }
  return surface;
}

FrozenComposite::FrozenComposite(const Document& document)
    : composite_(*document.compositedTexture.value()), compositor_(document.context()) {
  if (document.isCompositeCurrent()) return;
  // Copies of the temporaries keep their finished tiles.
  for (const ConstTexture& surface : document.compositor().texturePool()) {
    compositor_.texturePool_.push_back(std::make_shared<Surface>(*surface));
  }
  run_ = compositor_.beginRun(document, composite_, DocumentCompositor::Sources::copied);
}

const Surface* FrozenComposite::surface(const std::function<bool()>& isCancelled) {
  const std::lock_guard guard(mutex_);
  while (run_ != nullptr) {
    if (isCancelled && isCancelled()) return nullptr;
    if (DocumentCompositor::advance(*run_, tilesPerTurn)) run_ = nullptr;
  }
  return &composite_;
}

std::uint64_t FrozenComposite::bytesToFinish() {
  const std::lock_guard guard(mutex_);
  if (run_ == nullptr) return 0;
  // None of the tiles is written in place: the document still holds those of the canvas and the temporaries.
  return run_->plan.dataTilesToMake(run_->nextTile) * composite_.tileBytes();
}

}  // namespace orvanel
