#include "model/RandomDocument.h"

#include <algorithm>

#include "raster/RandomSurface.h"

namespace orvanel::test {
namespace {

constexpr int canvasWidth = 290;
constexpr int canvasHeight = 141;
constexpr int mostLayers = 12;

int below(int bound, std::mt19937& random) {
  return static_cast<int>(random() % static_cast<unsigned>(bound));
}

float randomOpacity(std::mt19937& random) {
  constexpr std::array<float, 4> usual{0.0F, 0.25F, 0.999F, 1.0F};
  return random() % 2 == 0 ? usual[random() % usual.size()] : std::uniform_real_distribution<float>()(random);
}

BlendMode randomBlendMode(std::mt19937& random) {
  return allBlendModes[random() % allBlendModes.size()];
}

std::shared_ptr<LayerMask> randomMask(std::mt19937& random) {
  auto contents = std::make_shared<MaskTexture>(
      std::make_shared<Surface>(randomSurface(maskPixelFormat, canvasWidth, canvasHeight, random)));
  return std::make_shared<LayerMask>(QUuid::createUuid(), std::move(contents), random() % 4 != 0);
}

std::shared_ptr<Layer> randomLayer(ColorMode mode, std::mt19937& random) {
  auto layer = std::make_shared<Layer>(QStringLiteral("Layer"));
  put(layer->texture,
      std::make_shared<Surface>(randomSurface(layerPixelFormat(mode), canvasWidth, canvasHeight, random)));
  put(layer->opacity, randomOpacity(random));
  put(layer->blendMode, randomBlendMode(random));
  put(layer->isVisible, random() % 6 != 0);
  if (random() % 2 == 0) put(layer->mask, randomMask(random));
  return layer;
}

LayerNodeList randomNodes(ColorMode mode, FolderKinds folders, int depth, std::mt19937& random) {
  LayerNodeList nodes;
  const int count = 2 + below(3, random);
  for (int i = 0; i < count; ++i) {
    if (depth == 0 || random() % 3 != 0) {
      nodes.emplace_back(randomLayer(mode, random));
      continue;
    }
    auto folder = std::make_shared<LayerFolder>(QStringLiteral("Folder"));
    put(folder->children, randomNodes(mode, folders, depth - 1, random));
    put(folder->isVisible, random() % 6 != 0);
    if (folders == FolderKinds::all && random() % 3 != 0) {
      put(folder->opacity, randomOpacity(random));
      if (random() % 2 == 0) put(folder->blendMode, randomBlendMode(random));
    }
    nodes.emplace_back(std::move(folder));
  }
  return nodes;
}

void collectNodes(const LayerNodeList& list, LayerNodeList& nodes) {
  for (const LayerNode& node : list) {
    nodes.push_back(node);
    if (const std::shared_ptr<LayerFolder> folder = node.folder())
      collectNodes(folder->children.value(), nodes);
  }
}

void editPixels(Surface& surface, std::mt19937& random) {
  const int index = below(surface.tileCount(), random);
  switch (random() % 3) {
    case 0:
      surface.setUniform(index, randomPixel(surface.format(), random));
      break;
    case 1:
      fillRandomTile(surface, index, random);
      break;
    default: {
      const std::uint64_t pixel = randomPixel(surface.format(), random);
      surface.writeRect({below(canvasWidth, random), below(canvasHeight, random), 1, 1},
                        reinterpret_cast<const std::byte*>(&pixel), sizeof(pixel));
      break;
    }
  }
}

void editLayer(Layer& layer, std::mt19937& random) {
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  switch (random() % 4) {
    case 0:
      put(layer.mask, mask == nullptr ? randomMask(random) : nullptr);
      break;
    case 1:
      if (mask != nullptr) put(mask->isEnabled, !mask->isEnabled.value());
      break;
    case 2:
      if (mask != nullptr) editPixels(writable(mask->maskTexture->texture), random);
      break;
    default:
      editPixels(writable(layer.texture.value()), random);
      break;
  }
}

void editTree(Document& document, const LayerNodeList& nodes, std::mt19937& random) {
  const LayerNode& node = nodes[random() % nodes.size()];
  const LayerNode& other = nodes[random() % nodes.size()];
  switch (random() % 4) {
    case 0:
      document.removeNode(node.id());
      break;
    case 1:
      if (document.layerCount() < mostLayers) document.duplicateNode(node.id());
      break;
    default:
      document.moveNode(node.id(), other.id(), below(4, random));
      break;
  }
}

}  // namespace

DocumentPtr randomDocument(ColorMode mode, FolderKinds folders, std::mt19937& random) {
  return Document::create({.name = QStringLiteral("Random"),
                           .width = canvasWidth,
                           .height = canvasHeight,
                           .colorMode = mode,
                           .rootNodes = randomNodes(mode, folders, 2, random)},
                          MetalContext::shared());
}

void editRandomly(Document& document, std::mt19937& random) {
  LayerNodeList nodes;
  collectNodes(document.rootNodes.value(), nodes);
  if (nodes.empty()) return document.undo();
  const LayerNode& node = nodes[random() % nodes.size()];
  switch (random() % 8) {
    case 0:
      put(node.opacity(), randomOpacity(random));
      break;
    case 1:
      put(node.blendMode(), randomBlendMode(random));
      break;
    case 2:
      put(node.isVisible(), !node.isVisible().value());
      break;
    case 3:
      editTree(document, nodes, random);
      break;
    case 4:
      document.undo();
      break;
    case 5:
      document.redo();
      break;
    default:
      if (const std::shared_ptr<Layer> layer = node.layer()) editLayer(*layer, random);
      break;
  }
}

}  // namespace orvanel::test
