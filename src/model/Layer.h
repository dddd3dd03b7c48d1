// The nodes of an image: layers, folders, and the masks on layers. Shared by the tree and by the undo
// records that may bring them back. Main thread only; background work takes surfaces, never nodes.
// Every `QProperty` tells its observers of new values and stays silent for equal ones.
#pragma once

#include <QImage>
#include <QProperty>
#include <QString>
#include <QUuid>
#include <memory>
#include <variant>
#include <vector>

#include "raster/ColorMode.h"
#include "raster/MetalContext.h"
#include "raster/Surface.h"

namespace orvanel {

/// Thumbnails compare by identity.
using Thumbnail = std::shared_ptr<const QImage>;

/// A single-channel surface of values 0 to 1 (`r16Float`) of fixed size: 1 shows or selects, 0 hides.
class MaskTexture {
 public:
  /// All zero; null when the surface can't be made.
  [[nodiscard]] static std::shared_ptr<MaskTexture> create(int width, int height,
                                                           const MetalContext& context);
  /// Wraps a finished surface.
  explicit MaskTexture(Texture surface)
      : texture(std::move(surface)), width(texture->width()), height(texture->height()) {}

  const Texture texture;
  const int width;
  const int height;

  /// Takes all pixels of a mask of the same size; of another size, nothing.
  void copyContents(const MaskTexture& other);
};

class LayerMask {
 public:
  LayerMask(QUuid maskID, std::shared_ptr<MaskTexture> contents)
      : id(maskID), maskTexture(std::move(contents)) {}

  const QUuid id;
  const std::shared_ptr<MaskTexture> maskTexture;
  QProperty<bool> isEnabled{true};
};

class Layer {
 public:
  explicit Layer(const QString& layerName, QUuid layerID = QUuid::createUuid());

  const QUuid id;
  QProperty<QString> name;
  /// Canvas-size pixels in the layer format of the document's mode; none only while being built.
  QProperty<Texture> texture;
  QProperty<float> opacity{1.0F};
  QProperty<BlendMode> blendMode{BlendMode::normal};
  QProperty<bool> isVisible{true};
  QProperty<bool> isLocked{false};
  QProperty<std::shared_ptr<LayerMask>> mask;
  /// Whether moves and transforms carry the mask along with the pixels.
  QProperty<bool> isMaskLinked{true};
  /// Whether edits go to the mask; a change posts `activeLayerChanged`.
  QProperty<bool> isMaskSelected{false};
  QProperty<Thumbnail> thumbnailImage;
  QProperty<bool> thumbnailDirty{true};
  QProperty<Thumbnail> maskThumbnailImage;
  QProperty<bool> maskThumbnailDirty{true};
  QProperty<std::vector<Thumbnail>> channelThumbnails;
  QProperty<bool> channelThumbnailsDirty{true};

  /// The mask's surface when the mask is selected and exists, otherwise `texture` (possibly none).
  [[nodiscard]] Texture activeEditTexture() const;
  /// Called wherever pixels or mask change: all its thumbnails are out of date.
  void markThumbnailsDirty();

 private:
  QPropertyNotifier maskSelectionNotifier_;
};

class LayerFolder;

/// A layer or a folder, by shared reference.
class LayerNode {
 public:
  LayerNode(std::shared_ptr<Layer> layer) : payload_(std::move(layer)) {}          // NOLINT: a sum type
  LayerNode(std::shared_ptr<LayerFolder> folder) : payload_(std::move(folder)) {}  // NOLINT: a sum type

  [[nodiscard]] QUuid id() const;
  /// The layer, or null for a folder.
  [[nodiscard]] std::shared_ptr<Layer> layer() const;
  /// The folder, or null for a layer.
  [[nodiscard]] std::shared_ptr<LayerFolder> folder() const;

  // What both kinds have.
  [[nodiscard]] QProperty<QString>& name() const;
  [[nodiscard]] QProperty<float>& opacity() const;
  [[nodiscard]] QProperty<BlendMode>& blendMode() const;
  [[nodiscard]] QProperty<bool>& isVisible() const;
  [[nodiscard]] QProperty<bool>& isLocked() const;

  friend bool operator==(const LayerNode&, const LayerNode&) = default;

 private:
  std::variant<std::shared_ptr<Layer>, std::shared_ptr<LayerFolder>> payload_;
};

/// Bottom first: the last element lies on top.
using LayerNodeList = std::vector<LayerNode>;

class LayerFolder {
 public:
  explicit LayerFolder(const QString& folderName, QUuid folderID = QUuid::createUuid());

  const QUuid id;
  QProperty<QString> name;
  QProperty<LayerNodeList> children;
  QProperty<float> opacity{1.0F};
  QProperty<BlendMode> blendMode{BlendMode::normal};
  QProperty<bool> isVisible{true};
  QProperty<bool> isLocked{false};
  QProperty<bool> isExpanded{true};
};

/// Every node's text form: 36 characters, upper case.
[[nodiscard]] QString uuidText(const QUuid& id);
/// The UUID of a canonical text in either case; null for anything else.
[[nodiscard]] QUuid uuidFromText(const QString& text);

// Walks, depth first in list order; a folder is met before its children.
[[nodiscard]] std::optional<LayerNode> findNode(const QUuid& id, const LayerNodeList& list);
void collectLayers(const LayerNodeList& list, std::vector<std::shared_ptr<Layer>>& layers);

}  // namespace orvanel
