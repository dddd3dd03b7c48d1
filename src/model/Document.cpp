#include "model/Document.h"

#include "model/NotificationCenter.h"

namespace orvanel {
namespace {

/// Side of a square of the transparency grid, in pixels.
constexpr float checkerboardSquare = 8.0F;

std::optional<Document::NodeLocation> locate(const QUuid& nodeID, const LayerNodeList& list,
                                             const std::shared_ptr<LayerFolder>& owner) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (list[i].id() == nodeID) return Document::NodeLocation{owner, static_cast<int>(i)};
    if (const std::shared_ptr<LayerFolder> folder = list[i].folder()) {
      if (auto found = locate(nodeID, folder->children.value(), folder)) return found;
    }
  }
  return std::nullopt;
}

void collectNames(const LayerNodeList& list, std::set<QString>& names) {
  for (const LayerNode& node : list) {
    names.insert(node.name().value());
    if (const std::shared_ptr<LayerFolder> folder = node.folder()) {
      collectNames(folder->children.value(), names);
    }
  }
}

int countLayers(const LayerNodeList& list) {
  int count = 0;
  for (const LayerNode& node : list) {
    const std::shared_ptr<LayerFolder> folder = node.folder();
    count += folder != nullptr ? countLayers(folder->children.value()) : 1;
  }
  return count;
}

}  // namespace

Document::Document(const QString& documentName, int width, int height, ColorMode mode, MetalContext& context)
    : name(documentName), canvasWidth(width), canvasHeight(height), colorMode(mode), context_(context) {
  activeNodeNotifier_ = selectedNodeID.addNotifier(
      [] { NotificationCenter::standard().post(notification::activeLayerChanged); });
  rebuildDisplayTextures();
}

std::shared_ptr<Document> Document::createEmpty(const QString& name, int width, int height,
                                                ColorMode colorMode, MetalContext& context) {
  return std::shared_ptr<Document>(new Document(name, width, height, colorMode, context));
}

std::shared_ptr<Document> Document::create(const QString& name, int width, int height, ColorMode colorMode,
                                           MetalContext& context) {
  std::shared_ptr<Document> document = createEmpty(name, width, height, colorMode, context);
  auto background = std::make_shared<Layer>(QStringLiteral("Background"));
  const Texture pixels = document->makeLayerTexture();
  context.clearTexture(*pixels, colorMode, {1.0F, 1.0F, 1.0F, 1.0F});
  background->texture = pixels;
  const QUuid backgroundID = background->id;
  document->rootNodes = LayerNodeList{std::move(background)};
  document->selectedNodeID = backgroundID;
  return document;
}

std::optional<LayerNode> Document::activeNode() const {
  const std::optional<QUuid>& nodeID = selectedNodeID.value();
  return nodeID ? findNode(*nodeID) : std::nullopt;
}

std::shared_ptr<Layer> Document::activeLayer() const {
  const std::optional<LayerNode> node = activeNode();
  return node ? node->layer() : nullptr;
}

std::optional<LayerNode> Document::findNode(const QUuid& nodeID) const {
  return orvanel::findNode(nodeID, rootNodes.value());
}

std::optional<Document::NodeLocation> Document::parentAndIndex(const QUuid& nodeID) const {
  return locate(nodeID, rootNodes.value(), nullptr);
}

std::vector<std::shared_ptr<Layer>> Document::allLayers() const {
  std::vector<std::shared_ptr<Layer>> layers;
  collectLayers(rootNodes.value(), layers);
  return layers;
}

int Document::layerCount() const {
  return countLayers(rootNodes.value());
}

std::int64_t Document::memoryUsage() const {
  std::int64_t bytes = 0;
  for (const std::shared_ptr<Layer>& layer : allLayers()) {
    if (const Texture& pixels = layer->texture.value()) bytes += MetalContext::byteSize(*pixels);
    if (const std::shared_ptr<LayerMask>& mask = layer->mask.value()) {
      bytes += MetalContext::byteSize(*mask->maskTexture->texture);
    }
  }
  return bytes;
}

std::set<QString> Document::allNodeNames() const {
  std::set<QString> names;
  collectNames(rootNodes.value(), names);
  return names;
}

bool Document::canSaveAsFlatImage() const {
  const LayerNodeList& nodes = rootNodes.value();
  if (nodes.size() != 1) return false;
  const std::shared_ptr<Layer> layer = nodes.front().layer();
  return layer != nullptr && layer->mask.value() == nullptr && layer->texture.value() != nullptr;
}

QString Document::uniqueNodeName(const QString& base) const {
  const std::set<QString> taken = allNodeNames();
  QString candidate = base;
  for (int number = 2; taken.contains(candidate); ++number) {
    candidate = base + QChar(u' ') + QString::number(number);
  }
  return candidate;
}

void Document::rebuildDisplayTextures() {
  const auto make = [this] {
    Texture texture = context_.makeTexture(compositePixelFormat(colorMode.value()), canvasWidth.value(),
                                           canvasHeight.value());
    if (texture == nullptr) fatalFault("Failed to create display texture");
    return texture;
  };
  compositedTexture = make();
  const Texture checkerboard = make();
  context_.drawCheckerboard(*checkerboard, checkerboardSquare);
  checkerboardTexture = checkerboard;
}

Texture Document::makeLayerTexture() const {
  return makeLayerTexture(colorMode.value(), canvasWidth.value(), canvasHeight.value());
}

Texture Document::makeLayerTexture(ColorMode mode, int width, int height) const {
  Texture texture = context_.makeTexture(layerPixelFormat(mode), width, height);
  if (texture == nullptr) fatalFault("Failed to create layer texture");
  return texture;
}

void Document::markEdited() {
  isDirty = true;
  needsCompositing = true;
}

void Document::performHistoryStep(void (UndoStack::*step)()) {
  (undoStack.*step)();
  markEdited();
  NotificationCenter::standard().post(notification::undoRedoPerformed);
}

void Document::undo() {
  performHistoryStep(&UndoStack::undo);
}

void Document::redo() {
  performHistoryStep(&UndoStack::redo);
}

}  // namespace orvanel
