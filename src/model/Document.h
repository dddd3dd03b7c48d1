// One open image: canvas, tree of nodes, active node, composite, selection, view state and history.
// The central object of the model; main thread only. Held by the window, weakly by records and views.
#pragma once

#include <QHash>
#include <QPointF>
#include <QProperty>
#include <QString>
#include <QUuid>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "model/DisplayColor.h"
#include "model/Layer.h"
#include "model/PixelClipboard.h"
#include "model/Selection.h"
#include "model/Tool.h"
#include "raster/MetalContext.h"
#include "undo/UndoStack.h"

namespace orvanel {

/// Red, green and blue display switches, 1 or 0.
struct ChannelVisibility {
  std::int32_t red = 1;
  std::int32_t green = 1;
  std::int32_t blue = 1;
  friend bool operator==(const ChannelVisibility&, const ChannelVisibility&) = default;
};

/// Scale factors of document pixels to view points that zooming steps through.
inline constexpr std::array<double, 29> zoomTable{
    0.01, 0.015,     0.02, 0.03,      0.04, 0.05, 0.0625, 1.0 / 12.0, 0.125, 1.0 / 6.0,
    0.25, 1.0 / 3.0, 0.5,  2.0 / 3.0, 1.0,  2.0,  3.0,    4.0,        5.0,   6.0,
    7.0,  8.0,       12.0, 16.0,      32.0, 64.0, 100.0,  200.0,      400.0};
inline constexpr double minimumZoom = 0.01;
inline constexpr double maximumZoom = 400.0;

class Document : public std::enable_shared_from_this<Document> {
 public:
  enum class ImageFileFormat { png, jpeg, tiff, gif, bmp };

  struct DragSize {
    int width = 0;
    int height = 0;
    friend bool operator==(const DragSize&, const DragSize&) = default;
  };

  /// Where a node sits: `folder` is null in the root list.
  struct NodeLocation {
    std::shared_ptr<LayerFolder> folder;
    int index = 0;
  };

  /// A document with its white "Background" layer. Surfaces that can't be made are fatal.
  [[nodiscard]] static std::shared_ptr<Document> create(const QString& name, int width, int height,
                                                        ColorMode colorMode, MetalContext& context);
  /// A document without nodes, as the readers of files begin one.
  [[nodiscard]] static std::shared_ptr<Document> createEmpty(const QString& name, int width, int height,
                                                             ColorMode colorMode, MetalContext& context);
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  const QUuid id = QUuid::createUuid();
  QProperty<QString> name;
  QProperty<int> canvasWidth;
  QProperty<int> canvasHeight;
  QProperty<ColorMode> colorMode;
  QProperty<LayerNodeList> rootNodes;
  /// The active node; a change posts `activeLayerChanged`.
  QProperty<std::optional<QUuid>> selectedNodeID;
  QProperty<Texture> compositedTexture;
  QProperty<Thumbnail> compositeThumbnailImage;
  QProperty<std::vector<Thumbnail>> compositeChannelThumbnails;
  /// Forces the next frame to composite; set by whoever changes pixels.
  QProperty<bool> needsCompositing{true};
  QProperty<Texture> checkerboardTexture;
  QProperty<int> zoomLevelIndex{14};
  /// When set, overrides the table.
  QProperty<std::optional<double>> customZoomLevel;
  /// Document pixels.
  QProperty<QPointF> viewportOffset;
  QProperty<std::optional<QPointF>> cursorDocumentPosition;
  QProperty<std::optional<DragSize>> dragSize;
  UndoStack undoStack;
  QProperty<bool> isDirty{false};
  /// Absolute path of the file it was loaded from or saved to.
  QProperty<std::optional<QString>> sourceFileURL;
  /// Set when the source is a flat image.
  QProperty<std::optional<ImageFileFormat>> sourceFileFormat;
  QProperty<bool> needsInitialZoom{true};
  QProperty<Tool> selectedTool{Tool::hand};
  /// The chosen member of each tool group, by the group's identity.
  QProperty<QHash<QString, Tool>> selectedVariants;
  QProperty<DisplayColor> foregroundColor{DisplayColor::black()};
  QProperty<DisplayColor> backgroundColor{DisplayColor::white()};
  /// Made on first need, at canvas size.
  QProperty<std::shared_ptr<Selection>> selection;
  QProperty<ChannelVisibility> channelVisibility;

  [[nodiscard]] MetalContext& context() const { return context_; }

  // Questions about the tree.
  [[nodiscard]] std::optional<LayerNode> activeNode() const;
  /// The active node when it is a layer, otherwise null.
  [[nodiscard]] std::shared_ptr<Layer> activeLayer() const;
  [[nodiscard]] std::optional<LayerNode> findNode(const QUuid& nodeID) const;
  [[nodiscard]] std::optional<NodeLocation> parentAndIndex(const QUuid& nodeID) const;
  [[nodiscard]] std::vector<std::shared_ptr<Layer>> allLayers() const;
  [[nodiscard]] int layerCount() const;
  /// Bytes of all layers and masks as packed rows.
  [[nodiscard]] std::int64_t memoryUsage() const;
  [[nodiscard]] std::set<QString> allNodeNames() const;
  /// True when one unmasked layer with pixels is all there is.
  [[nodiscard]] bool canSaveAsFlatImage() const;
  /// `base`, or `base` with the first free number from 2, over all depths.
  [[nodiscard]] QString uniqueNodeName(const QString& base) const;

  // Changes of the tree; each leaves one undo record.
  void addLayer(const QString& requestedName);
  void addFolder(const QString& requestedName);
  void removeNode(const QUuid& nodeID);
  void moveNode(const QUuid& nodeID, const QUuid& toFolder);
  /// `index` is counted after the node has left its place, and clamped. No flags are set.
  void moveNode(const QUuid& nodeID, const std::optional<QUuid>& parentID, int index);
  void duplicateNode(const QUuid& nodeID);

  // Changes of one property of a node; each leaves one record. An equal value, an empty name and an absent
  // node leave none.
  void setOpacity(const QUuid& nodeID, float opacity);
  void setBlendMode(const QUuid& nodeID, BlendMode blendMode);
  void rename(const QUuid& nodeID, const QString& newName);
  void setVisible(const QUuid& nodeID, bool isVisible);
  void setLocked(const QUuid& nodeID, bool isLocked);

  // Pixels of the active node: of its mask while that is selected, else of its layer. A folder, a missing
  // surface or a missing selection ends them quietly; a lock doesn't. Each change leaves one record.
  /// Within the selection, or everywhere when there is none.
  void fillSelection(const DisplayColor& color, const QString& actionName = QStringLiteral("Fill"));
  /// Fills with transparency, a mask with white.
  void clearActive();
  /// Colours within the selection; a mask as a whole.
  void invertActive();
  /// The layer's pixels under the selection; nothing when none are selected.
  [[nodiscard]] std::optional<PixelClipboard> copyPixels() const;
  /// As `copyPixels`, then a transparent fill, under whose name it is undone.
  [[nodiscard]] std::optional<PixelClipboard> cutPixels();
  /// A new layer with the pixels where they came from, converted to this colour mode, clipped to the canvas.
  void pastePixels(const PixelClipboard& clipboard);

  // The selection. Each change leaves one record and sets no flags.
  void selectAll();
  void deselect();
  void invertSelection();
  void selectLayerTransparency(const Layer& layer);
  /// A channel of the composite: 0 to 2 the colours, 3 alpha.
  void selectChannel(int index);
  void selectMask(const LayerMask& mask);
  /// Makes an empty selection when there is none. Without memory for it there is still none.
  void ensureSelection();
  /// A new empty selection at canvas size in the place of any other.
  void resetSelection();
  /// The selection when something is selected, otherwise null.
  [[nodiscard]] std::shared_ptr<Selection> activeSelection() const;

  // Masks of layers. Each change leaves one record.
  /// The new mask equals the selection, or hides nothing when nothing is selected.
  void addLayerMask(const std::shared_ptr<Layer>& layer);
  /// Multiplies the mask into the layer's alpha and takes it off.
  void applyLayerMask(const std::shared_ptr<Layer>& layer);
  void removeLayerMask(const std::shared_ptr<Layer>& layer);

  // The canvas. Each change leaves one record; those of size drop the selection. Sizes are 1 to
  // `maximumCanvasSide` pixels; surfaces that can't be made are fatal.
  void resizeImage(int width, int height, ResampleMethod method);
  /// Anchors are -1, 0 or 1: where the old canvas stays, left or top, centre, right or bottom.
  void resizeCanvas(int width, int height, int anchorX, int anchorY);
  void crop(const PixelRect& rect, const QString& actionName);
  /// To the bounds of the selection; nothing when there is none.
  void cropToSelection();
  /// Takes uniform edges off the composite; false when there are none to take, for the caller to say so.
  [[nodiscard]] bool trim();
  void changeColorMode(ColorMode newMode);

  // What records and readers build on: no record, no flags.
  /// Takes the node out of its list; nothing when it isn't in the tree.
  std::optional<LayerNode> detachNode(const QUuid& nodeID);
  /// Inserts in the folder, or in the root list when there is no such folder, at the clamped index.
  void insertNode(const LayerNode& node, const std::optional<QUuid>& parentID, int index);
  /// Makes `compositedTexture` and `checkerboardTexture` anew for the size and mode. Fatal on failure.
  void rebuildDisplayTextures();
  /// A canvas-size layer surface of the mode, all zero. Fatal on failure.
  [[nodiscard]] Texture makeLayerTexture() const;
  [[nodiscard]] Texture makeLayerTexture(ColorMode mode, int width, int height) const;

  /// Undo and redo always leave the document dirty and post `undoRedoPerformed`.
  void undo();
  void redo();

  // The view. Zoom is view points per document pixel.
  [[nodiscard]] double zoom() const;
  void zoomIn();
  void zoomOut();
  void zoomActualSize();
  void zoomFitOnScreen(double availableWidth, double availableHeight);
  void applyInitialZoom(double viewWidth, double viewHeight);
  [[nodiscard]] QString zoomDisplayString() const;

 private:
  Document(const QString& documentName, int width, int height, ColorMode mode, MetalContext& context);
  void markEdited();
  /// Inserts above the active node, makes it active and records it.
  void addNewLayer(const std::shared_ptr<Layer>& layer);
  /// Changes the existing selection under a record.
  void changeSelection(const QString& actionName, const std::function<void(Selection&)>& change);
  void performHistoryStep(void (UndoStack::*step)());

  MetalContext& context_;
  QPropertyNotifier activeNodeNotifier_;
};

using DocumentPtr = std::shared_ptr<Document>;

}  // namespace orvanel
