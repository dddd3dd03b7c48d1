#include "model/Layer.h"

#include <cassert>

#include "model/NotificationCenter.h"

namespace orvanel {

std::shared_ptr<MaskTexture> MaskTexture::create(int width, int height, const MetalContext& context) {
  Texture surface = context.makeTexture(maskPixelFormat, width, height);
  if (surface == nullptr) return nullptr;
  return std::make_shared<MaskTexture>(std::move(surface));
}

void MaskTexture::copyContents(const MaskTexture& other) {
  if (other.width != width || other.height != height) return;
  assert(texture->format() == other.texture->format());
  *texture = *other.texture;
}

Layer::Layer(const QString& layerName, QUuid layerID) : id(layerID), name(layerName) {
  maskSelectionNotifier_ = isMaskSelected.addNotifier(
      [] { NotificationCenter::standard().post(notification::activeLayerChanged); });
}

Texture Layer::activeEditTexture() const {
  const std::shared_ptr<LayerMask>& attached = mask.value();
  return isMaskSelected.value() && attached != nullptr ? attached->maskTexture->texture : texture.value();
}

void Layer::markThumbnailsDirty() {
  thumbnailDirty = true;
  maskThumbnailDirty = true;
  channelThumbnailsDirty = true;
}

LayerFolder::LayerFolder(const QString& folderName, QUuid folderID) : id(folderID), name(folderName) {}

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

QProperty<QString>& LayerNode::name() const {
  return std::visit([](const auto& payload) -> QProperty<QString>& { return payload->name; }, payload_);
}

QProperty<float>& LayerNode::opacity() const {
  return std::visit([](const auto& payload) -> QProperty<float>& { return payload->opacity; }, payload_);
}

QProperty<BlendMode>& LayerNode::blendMode() const {
  return std::visit([](const auto& payload) -> QProperty<BlendMode>& { return payload->blendMode; },
                    payload_);
}

QProperty<bool>& LayerNode::isVisible() const {
  return std::visit([](const auto& payload) -> QProperty<bool>& { return payload->isVisible; }, payload_);
}

QProperty<bool>& LayerNode::isLocked() const {
  return std::visit([](const auto& payload) -> QProperty<bool>& { return payload->isLocked; }, payload_);
}

QString uuidText(const QUuid& id) {
  return id.toString(QUuid::WithoutBraces).toUpper();
}

QUuid uuidFromText(const QString& text) {
  // The platform's reader takes braces and trailing text too; only the canonical form comes back the same.
  const QUuid id = QUuid::fromString(text);
  return uuidText(id).compare(text, Qt::CaseInsensitive) == 0 ? id : QUuid();
}

std::optional<LayerNode> findNode(const QUuid& id, const LayerNodeList& list) {
  for (const LayerNode& node : list) {
    if (node.id() == id) return node;
    if (const std::shared_ptr<LayerFolder> folder = node.folder()) {
      if (std::optional<LayerNode> found = findNode(id, folder->children.value())) return found;
    }
  }
  return std::nullopt;
}

void collectLayers(const LayerNodeList& list, std::vector<std::shared_ptr<Layer>>& layers) {
  for (const LayerNode& node : list) {
    if (std::shared_ptr<Layer> layer = node.layer()) {
      layers.push_back(std::move(layer));
    } else {
      collectLayers(node.folder()->children.value(), layers);
    }
  }
}

}  // namespace orvanel
