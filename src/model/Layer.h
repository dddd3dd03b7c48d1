// The nodes of an image: layers, folders, and the masks on layers. Shared by the tree and by undo records
// that may restore them. Main thread only; background work takes surfaces, never nodes. Anyone may read a
// node; only its document's commands change it.
#pragma once

#include <QImage>
#include <QString>
#include <QUuid>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "model/DocumentChange.h"
#include "model/Property.h"
#include "raster/ColorMode.h"
#include "raster/MetalContext.h"
#include "raster/Surface.h"

namespace orvanel {

/// Thumbnails compare by identity.
using Thumbnail = std::shared_ptr<const QImage>;

/// A read-only view of one of the document's surfaces.
using ConstTexture = std::shared_ptr<const Surface>;

/// A single-channel surface (`r16Float`) of fixed size with values 0 to 1: 1 shows or selects, 0 hides. Its
/// owner writes it; holders of a `const` pointer only read.
class MaskTexture {
 public:
  /// All zero; null if the surface can't be made.
  [[nodiscard]] static std::shared_ptr<MaskTexture> create(int width, int height,
                                                           const MetalContext& context);
  /// Wraps a finished surface.
  explicit MaskTexture(Texture surface)
      : texture(surface), width(surface->width()), height(surface->height()), pixels_(std::move(surface)) {}

  const ConstTexture texture;
  const int width;
  const int height;

  [[nodiscard]] Surface& pixels() { return *pixels_; }
  /// Copies all pixels from a mask of the same size; does nothing if sizes differ.
  void copyContents(const MaskTexture& other);

 private:
  Texture pixels_;
};

class LayerMask {
 public:
  LayerMask(QUuid maskID, std::shared_ptr<MaskTexture> contents, bool isEnabledAtFirst = true)
      : id(maskID), maskTexture(std::move(contents)), isEnabled(isEnabledAtFirst) {}

  const QUuid id;
  const std::shared_ptr<const MaskTexture> maskTexture;
  Property<bool> isEnabled;
};

/// The initial values of a new layer or folder.
struct NodeValues {
  QUuid id = QUuid::createUuid();
  QString name = {};
  float opacity = 1.0F;
  BlendMode blendMode = BlendMode::normal;
  bool isVisible = true;
  bool isLocked = false;
};

class Layer : public std::enable_shared_from_this<Layer> {
 public:
  explicit Layer(const QString& layerName, QUuid layerID = QUuid::createUuid());
  explicit Layer(const NodeValues& values, Texture pixels = nullptr,
                 std::shared_ptr<LayerMask> attachedMask = nullptr);

  const QUuid id;
  Property<QString> name;
  /// Canvas-size pixels in the layer format of the document's mode; null only during construction.
  Property<ConstTexture> texture;
  Property<float> opacity{1.0F};
  Property<BlendMode> blendMode{BlendMode::normal};
  Property<bool> isVisible{true};
  Property<bool> isLocked{false};
  Property<std::shared_ptr<LayerMask>> mask;
  /// Whether moves and transforms apply to the mask together with the pixels.
  Property<bool> isMaskLinked{true};
  /// Whether the mask is the target of edits.
  Property<bool> isMaskSelected{false};
  Property<Thumbnail> thumbnailImage;
  Property<bool> thumbnailDirty{true};
  Property<Thumbnail> maskThumbnailImage;
  Property<bool> maskThumbnailDirty{true};
  Property<std::vector<Thumbnail>> channelThumbnails;
  Property<bool> channelThumbnailsDirty{true};

  /// Whether edits go to the mask: it is selected and exists.
  [[nodiscard]] bool editsMask() const { return isMaskSelected.value() && mask.value() != nullptr; }
  /// The target of edits: the mask's surface, otherwise `texture` (possibly null).
  [[nodiscard]] ConstTexture activeEditTexture() const;
  /// The mask's surface or `texture`; null if the layer has no such surface.
  [[nodiscard]] ConstTexture surface(SurfaceKind kind) const;
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

  // Properties common to both kinds.
  [[nodiscard]] Property<QString>& name() const;
  [[nodiscard]] Property<float>& opacity() const;
  [[nodiscard]] Property<BlendMode>& blendMode() const;
  [[nodiscard]] Property<bool>& isVisible() const;
  [[nodiscard]] Property<bool>& isLocked() const;

  friend bool operator==(const LayerNode&, const LayerNode&) = default;

 private:
  std::variant<std::shared_ptr<Layer>, std::shared_ptr<LayerFolder>> payload_;
};

/// Bottom first: the last element is on top.
using LayerNodeList = std::vector<LayerNode>;

/// Whether a folder with these values is pass-through: its children blend with what lies beneath the folder.
[[nodiscard]] constexpr bool passesThrough(float opacity, BlendMode blendMode) {
  return opacity >= 1.0F && blendMode == BlendMode::normal;
}

class LayerFolder {
 public:
  explicit LayerFolder(const QString& folderName, QUuid folderID = QUuid::createUuid());
  explicit LayerFolder(const NodeValues& values, LayerNodeList contents = {}, bool isOpen = true);
  /// Destroys the subtree iteratively, so that deep nesting can't overflow the stack.
  ~LayerFolder();
  LayerFolder(const LayerFolder&) = delete;
  LayerFolder& operator=(const LayerFolder&) = delete;

  const QUuid id;
  Property<QString> name;
  Property<LayerNodeList> children;
  Property<float> opacity{1.0F};
  Property<BlendMode> blendMode{BlendMode::normal};
  Property<bool> isVisible{true};
  Property<bool> isLocked{false};
  Property<bool> isExpanded{true};

  /// Whether the children are flattened into a surface of the folder's own. False for an empty folder.
  [[nodiscard]] bool isIsolating() const;
};

/// The text form of a node's id: 36 characters, upper case.
[[nodiscard]] QString uuidText(const QUuid& id);
/// Parses a canonical UUID in either case; null for anything else.
[[nodiscard]] QUuid uuidFromText(const QString& text);

/// The node with this id, at any depth.
[[nodiscard]] std::optional<LayerNode> findNode(const QUuid& id, const LayerNodeList& list);
/// Appends all layers, depth first in list order.
void collectLayers(const LayerNodeList& list, std::vector<std::shared_ptr<Layer>>& layers);

}  // namespace orvanel
