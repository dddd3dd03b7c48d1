#include "model/DocumentCompositor.h"

#include <array>
#include <bit>
#include <cstring>

#include "raster/Hash.h"

namespace orvanel {
namespace {

/// Which node this is enters too: two nodes with equal values that change places change the image.
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
  // Adding positive zero turns negative zero, which composites the same, into it.
  return (std::uint64_t{std::bit_cast<std::uint32_t>(opacity + 0.0F)} << 32U) | (mask << 16U) |
         (std::uint64_t{rawValue(blendMode)} << 8U) | std::uint64_t{isVisible};
}

std::uint64_t maskState(const Layer& layer) {
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  if (mask == nullptr) return noMask;
  return mask->isEnabled.value() ? enabledMask : disabledMask;
}

void foldNodes(Hasher& hasher, const LayerNodeList& nodes) {
  for (const LayerNode& node : nodes) {
    if (const std::shared_ptr<Layer> layer = node.layer()) {
      foldIdentity(hasher, layer->id);
      hasher.fold(packedValues(layer->opacity.value(), layer->blendMode.value(), layer->isVisible.value(),
                               maskState(*layer)));
      continue;
    }
    const std::shared_ptr<LayerFolder> folder = node.folder();
    foldIdentity(hasher, folder->id);
    hasher.fold(packedValues(folder->opacity.value(), folder->blendMode.value(), folder->isVisible.value(),
                             folderMark));
    foldNodes(hasher, folder->children.value());
    hasher.fold(endOfFolder);
  }
}

}  // namespace

std::int64_t DocumentCompositor::compositingHash(const Document& document) {
  Hasher hasher;
  foldNodes(hasher, document.rootNodes.value());
  return static_cast<std::int64_t>(hasher.value());
}

CompositeReport DocumentCompositor::compositeDocument(const Document& document, CompositeScope scope) {
  const Texture composite = document.compositedTexture.value();
  if (composite == nullptr) return {};
  texturePoolIndex_ = 0;
  CompositePlan plan(*composite);
  compositeNodes(document.rootNodes.value(), plan, CompositePlan::canvasTarget(), document);
  return plan.run(scope);
}

void DocumentCompositor::compositeNodes(const LayerNodeList& nodes, CompositePlan& plan,
                                        CompositePlan::Target target, const Document& document) {
  for (const LayerNode& node : nodes) {
    if (!node.isVisible().value()) continue;
    if (const std::shared_ptr<Layer> layer = node.layer()) {
      compositeLayerNode(*layer, plan, target, document);
    } else {
      compositeFolderNode(*node.folder(), plan, target, document);
    }
  }
}

void DocumentCompositor::compositeLayerNode(const Layer& layer, CompositePlan& plan,
                                            CompositePlan::Target target, const Document& document) {
  const Texture& pixels = layer.texture.value();
  if (pixels == nullptr) return;
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  const bool hasMask = mask != nullptr && mask->isEnabled.value();
  const CompositeParams params{.blendMode = rawValue(layer.blendMode.value()),
                               .opacity = layer.opacity.value(),
                               .visible = 1,
                               .colorMode = rawValue(document.colorMode.value()),
                               .hasMask = hasMask ? 1U : 0U,
                               .reserved = 0};
  plan.compositeLayer(target, params, *pixels, hasMask ? mask->maskTexture->texture.get() : nullptr);
}

void DocumentCompositor::compositeFolderNode(const LayerFolder& folder, CompositePlan& plan,
                                             CompositePlan::Target target, const Document& document) {
  const LayerNodeList& children = folder.children.value();
  if (children.empty()) return;
  // An opaque, normal folder is transparent to compositing: its children blend with what lies beneath it.
  const bool passesThrough = folder.opacity.value() >= 1.0F && folder.blendMode.value() == BlendMode::normal;
  if (passesThrough) {
    compositeNodes(children, plan, target, document);
    return;
  }
  const Surface& composite = *document.compositedTexture.value();
  const Texture temporary =
      acquireTemporaryTexture(composite.width(), composite.height(), document.colorMode.value());
  const CompositePlan::Target isolated = plan.addTarget(*temporary);
  compositeNodes(children, plan, isolated, document);
  const CompositeParams params{.blendMode = rawValue(folder.blendMode.value()),
                               .opacity = folder.opacity.value(),
                               .visible = 1,
                               .colorMode = rawValue(folderColorMode(document.colorMode.value())),
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
  // A slot that doesn't fit stays where it is, and the surface wanted lies in the following one.
  slot = static_cast<std::size_t>(texturePoolIndex_);
  ++texturePoolIndex_;
  const bool isOccupied = slot < texturePool_.size();
  // Nobody of this run holds what lies there: where it fits it serves on, with its finished tiles.
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

}  // namespace orvanel
