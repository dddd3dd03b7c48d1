#include "model/Layer.h"

#include <cassert>
#include <utility>

#include "model/NodeWalk.h"

namespace orvanel {
namespace {

/// The children of a folder that is being destroyed; nobody sees its list any more.
LayerNodeList takenFrom(LayerFolder& folder) {
  return std::exchange(const_cast<LayerNodeList&>(folder.children.value()), {});
}

}  // namespace

std::shared_ptr<MaskTexture> MaskTexture::create(int width, int height, const MetalContext& context) {
  Texture surface = context.makeTexture(maskPixelFormat, width, height);
  if (surface == nullptr) return nullptr;
  return std::make_shared<MaskTexture>(std::move(surface));
}

void MaskTexture::copyContents(const MaskTexture& other) {
  if (other.width != width || other.height != height) return;
  assert(texture->format() == other.texture->format());
  *pixels_ = *other.texture;
}

Layer::Layer(const QString& layerName, QUuid layerID) : id(layerID), name(layerName) {}

Layer::Layer(const NodeValues& values, Texture pixels, std::shared_ptr<LayerMask> attachedMask)
    : id(values.id),
      name(values.name),
      texture(std::move(pixels)),
      opacity(values.opacity),
      blendMode(values.blendMode),
      isVisible(values.isVisible),
      isLocked(values.isLocked),
      mask(std::move(attachedMask)) {}

ConstTexture Layer::activeEditTexture() const {
  return surface(editsMask() ? SurfaceKind::mask : SurfaceKind::pixels);
}

ConstTexture Layer::surface(SurfaceKind kind) const {
  if (kind == SurfaceKind::pixels) return texture.value();
  const std::shared_ptr<LayerMask>& attached = mask.value();
  return attached != nullptr ? attached->maskTexture->texture : nullptr;
}

LayerFolder::LayerFolder(const QString& folderName, QUuid folderID) : id(folderID), name(folderName) {}

LayerFolder::LayerFolder(const NodeValues& values, LayerNodeList contents, bool isOpen)
    : id(values.id),
      name(values.name),
      children(std::move(contents)),
      opacity(values.opacity),
      blendMode(values.blendMode),
      isVisible(values.isVisible),
      isLocked(values.isLocked),
      isExpanded(isOpen) {}

LayerFolder::~LayerFolder() {
  LayerNodeList orphans = takenFrom(*this);
  while (!orphans.empty()) {
    const std::shared_ptr<LayerFolder> folder = orphans.back().folder();
    orphans.pop_back();
    // If this is a folder's last owner, its children join the list before it goes.
    if (folder == nullptr || folder.use_count() > 1) continue;
    for (LayerNode& inner : takenFrom(*folder)) orphans.push_back(std::move(inner));
  }
}

bool LayerFolder::isIsolating() const {
  return !children.value().empty() && !passesThrough(opacity.value(), blendMode.value());
}

QUuid LayerNode::id() const {
  return std::visit([](const auto& payload) { return payload->id; }, payload_);
}

std::shared_ptr<Layer> LayerNode::layer() const {
  const auto* layer = std::get_if<std::shared_ptr<Layer>>(&payload_);
  return layer != nullptr ? *layer : nullptr;
}

std::shared_ptr<LayerFolder> LayerNode::folder() const {
  const auto* folder = std::get_if<std::shared_ptr<LayerFolder>>(&payload_);
  return folder != nullptr ? *folder : nullptr;
}

Property<QString>& LayerNode::name() const {
  return std::visit([](const auto& payload) -> Property<QString>& { return payload->name; }, payload_);
}

Property<float>& LayerNode::opacity() const {
  return std::visit([](const auto& payload) -> Property<float>& { return payload->opacity; }, payload_);
}

Property<BlendMode>& LayerNode::blendMode() const {
  return std::visit([](const auto& payload) -> Property<BlendMode>& { return payload->blendMode; }, payload_);
}

Property<bool>& LayerNode::isVisible() const {
  return std::visit([](const auto& payload) -> Property<bool>& { return payload->isVisible; }, payload_);
}

Property<bool>& LayerNode::isLocked() const {
  return std::visit([](const auto& payload) -> Property<bool>& { return payload->isLocked; }, payload_);
}

QString uuidText(const QUuid& id) {
  return id.toString(QUuid::WithoutBraces).toUpper();
}

QUuid uuidFromText(const QString& text) {
  // Qt's parser also accepts braces and trailing text; only the canonical form survives a round trip.
  const QUuid id = QUuid::fromString(text);
  return uuidText(id).compare(text, Qt::CaseInsensitive) == 0 ? id : QUuid();
}

std::optional<LayerNode> findNode(const QUuid& id, const LayerNodeList& list) {
  return findNodeIf(list, [&](const LayerNode& node) { return node.id() == id; });
}

void collectLayers(const LayerNodeList& list, std::vector<std::shared_ptr<Layer>>& layers) {
  forEachNode(list, [&](const LayerNode& node) {
    if (std::shared_ptr<Layer> layer = node.layer()) layers.push_back(std::move(layer));
  });
}

}  // namespace orvanel
