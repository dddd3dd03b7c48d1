// One open image: canvas, tree of nodes, active node, composite, selection, view state and history.
// The central object of the model; main thread only. Held by the window, weakly by records and views.
// Everybody may read it. What changes it is a command below, or a gesture (`OpenEdit`); both write through
// `DocumentEdit`, which is private to the model, and `changes` tells what they did.
#pragma once

#include <QHash>
#include <QPointF>
#include <QString>
#include <QUuid>
#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "model/ChangeStream.h"
#include "model/DisplayColor.h"
#include "model/Layer.h"
#include "model/PixelClipboard.h"
#include "model/Property.h"
#include "model/Selection.h"
#include "model/SourceMetadata.h"
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

class DocumentCompositor;
class DocumentEdit;
class FrozenComposite;
class OpenEdit;

/// What a document begins with when it isn't a new one: the contents of a file.
struct DocumentContents {
  QString name = {};
  int width = 1;
  int height = 1;
  ColorMode colorMode = ColorMode::rgb8;
  /// Surfaces of this size, in the layer format of the mode.
  LayerNodeList rootNodes = {};
  std::optional<QUuid> selectedNodeID = std::nullopt;
  DisplayColor foregroundColor = DisplayColor::black();
  DisplayColor backgroundColor = DisplayColor::white();
};

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
  /// A clean document with these contents. A composite that can't be made is fatal.
  [[nodiscard]] static std::shared_ptr<Document> create(DocumentContents contents, MetalContext& context);
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  /// Tells of every change, once per edit. A new observer reads the document as it stands, or asks for
  /// `wholeDocument`.
  const ChangeStream& changes() const { return changes_; }
  /// The document as the changes that lead to it from an empty one.
  [[nodiscard]] DocumentChanges wholeDocument() const;

  const QUuid id = QUuid::createUuid();
  Property<QString> name;
  Property<int> canvasWidth;
  Property<int> canvasHeight;
  Property<ColorMode> colorMode;
  Property<LayerNodeList> rootNodes;
  /// The active node.
  Property<std::optional<QUuid>> selectedNodeID;
  /// The flattened image as it was last made; `composite` gives it up to date.
  Property<ConstTexture> compositedTexture;
  Property<Thumbnail> compositeThumbnailImage;
  Property<std::vector<Thumbnail>> compositeChannelThumbnails;
  /// The flattened image is out of date for other reasons than a node's properties.
  Property<bool> needsCompositing{true};
  Property<ConstTexture> checkerboardTexture;
  Property<int> zoomLevelIndex{14};
  /// When set, overrides the table.
  Property<std::optional<double>> customZoomLevel;
  /// Document pixels.
  Property<QPointF> viewportOffset;
  Property<std::optional<QPointF>> cursorDocumentPosition;
  Property<std::optional<DragSize>> dragSize;
  Property<bool> isDirty{false};
  /// Absolute path of the file it was loaded from or saved to.
  Property<std::optional<QString>> sourceFileURL;
  /// Set when the source is a flat image.
  Property<std::optional<ImageFileFormat>> sourceFileFormat;
  /// Metadata of the image it was opened from, for the images it is written to.
  Property<std::shared_ptr<const SourceMetadata>> sourceMetadata;
  Property<bool> needsInitialZoom{true};
  Property<Tool> selectedTool{Tool::hand};
  /// The chosen member of each tool group, by the group's identity.
  Property<QHash<QString, Tool>> selectedVariants;
  Property<DisplayColor> foregroundColor{DisplayColor::black()};
  Property<DisplayColor> backgroundColor{DisplayColor::white()};
  /// Made on first need, at canvas size.
  Property<std::shared_ptr<const Selection>> selection;
  Property<ChannelVisibility> channelVisibility;

  const UndoStack& undoStack = history_;

  [[nodiscard]] MetalContext& context() const { return context_; }

  // Questions about the tree.
  [[nodiscard]] std::optional<LayerNode> activeNode() const;
  /// The active node when it is a layer, otherwise null.
  [[nodiscard]] std::shared_ptr<Layer> activeLayer() const;
  [[nodiscard]] std::optional<LayerNode> findNode(const QUuid& nodeID) const;
  [[nodiscard]] std::optional<NodeLocation> parentAndIndex(const QUuid& nodeID) const;
  /// The same as a plain value.
  [[nodiscard]] std::optional<TreePosition> treePosition(const QUuid& nodeID) const;
  [[nodiscard]] std::vector<std::shared_ptr<Layer>> allLayers() const;
  [[nodiscard]] int layerCount() const;
  /// Bytes of all layers and masks as packed rows.
  [[nodiscard]] std::int64_t memoryUsage() const;
  [[nodiscard]] std::set<QString> allNodeNames() const;
  /// True when one unmasked layer with pixels is all there is.
  [[nodiscard]] bool canSaveAsFlatImage() const;
  /// `base`, or `base` with the first free number from 2, over all depths.
  [[nodiscard]] QString uniqueNodeName(const QString& base) const;

  /// The flattened image, current whenever it is asked for: made as far as needed first.
  [[nodiscard]] ConstTexture composite();
  [[nodiscard]] bool isCompositeCurrent() const;
  /// Works on the flattened image for about this long, and goes on from there at the next call. True once it
  /// is current.
  bool advanceComposite(std::chrono::milliseconds budget);
  /// The flattened image of this moment for another thread, which makes what isn't finished; null without a
  /// composite.
  [[nodiscard]] std::shared_ptr<FrozenComposite> freezeComposite() const;
  [[nodiscard]] const DocumentCompositor& compositor() const { return *compositor_; }

  // Changes of the tree; each leaves one undo record. What would lose a node does nothing.
  void addLayer(const QString& requestedName);
  void addFolder(const QString& requestedName);
  void removeNode(const QUuid& nodeID);
  /// On top inside the folder; nothing when there is no such folder or it lies in the node.
  void moveNode(const QUuid& nodeID, const QUuid& toFolder);
  /// `index` is counted after the node has left its place, and clamped. Without such a folder the node goes
  /// to the root list; nothing when the folder lies in the node. No flags are set.
  void moveNode(const QUuid& nodeID, const std::optional<QUuid>& parentID, int index);
  void duplicateNode(const QUuid& nodeID);

  // Changes of one property of a node; each leaves one record. An equal value, an empty name and an absent
  // node leave none.
  void setOpacity(const QUuid& nodeID, float opacity);
  void setBlendMode(const QUuid& nodeID, BlendMode blendMode);
  void rename(const QUuid& nodeID, const QString& newName);
  void setVisible(const QUuid& nodeID, bool isVisible);
  /// Several nodes at once, under one record. Those that are absent are passed over.
  void setVisible(const std::vector<QUuid>& nodeIDs, bool isVisible);
  void setLocked(const QUuid& nodeID, bool isLocked);

  // Properties without a record. An absent node, or one of the other kind, changes nothing.
  void selectNode(const std::optional<QUuid>& nodeID);
  void setExpanded(const QUuid& folderID, bool isExpanded);
  void setMaskSelected(const QUuid& layerID, bool isMaskSelected);
  void setMaskLinked(const QUuid& layerID, bool isMaskLinked);
  /// Leaves the document dirty.
  void setMaskEnabled(const QUuid& layerID, bool isEnabled);

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
  /// The selection when something is selected, otherwise null.
  [[nodiscard]] std::shared_ptr<const Selection> activeSelection() const;

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

  /// A canvas-size layer surface of the mode, all zero. Fatal on failure.
  [[nodiscard]] Texture makeLayerTexture() const;
  [[nodiscard]] Texture makeLayerTexture(ColorMode mode, int width, int height) const;

  /// Undo and redo always leave the document dirty, and tell of the step.
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
  /// Document pixels. The view that scrolls keeps its bounds.
  void setViewportOffset(QPointF offset);
  void setCursorDocumentPosition(const std::optional<QPointF>& position);
  void setDragSize(const std::optional<DragSize>& size);
  void setChannelVisibility(const ChannelVisibility& visibility);
  void setForegroundColor(const DisplayColor& color);
  void setBackgroundColor(const DisplayColor& color);
  /// Has the document remember the tool and the chosen members of the groups.
  void rememberTool(Tool tool, const QHash<QString, Tool>& variants);

  // The file.
  void setName(const QString& newName);
  /// Whether there are changes that no file holds.
  void setDirty(bool isDirty);
  void setSource(const std::optional<QString>& path, const std::optional<ImageFileFormat>& format);
  void setSourceMetadata(const std::shared_ptr<const SourceMetadata>& metadata);

  /// Whether an edit may take this many bytes of pixels; if not, tells that it was refused. Commands ask by
  /// themselves, for the most that they can need, and then do nothing.
  [[nodiscard]] bool admitsEdit(std::uint64_t bytes);
  /// Limits of the history; enforced at the next edit.
  void setHistoryLimits(std::int64_t memoryBudget, std::int64_t maxOperations);

 private:
  friend class DocumentEdit;
  friend class OpenEdit;
  struct Batch;

  explicit Document(DocumentContents contents, MetalContext& context);
  /// Inserts above the active node, makes it active and records it.
  void addNewLayer(DocumentEdit& edit, const std::shared_ptr<Layer>& layer);
  /// Changes the selection under a record.
  void changeSelection(DocumentEdit& edit, const QString& actionName,
                       const std::function<void(Selection&)>& change);
  void stepHistory(DocumentEdit& edit, const UndoStack::Record& record, void (UndoStack::*step)());
  bool flatten(std::chrono::steady_clock::time_point deadline);

  MetalContext& context_;
  UndoStack history_;
  ChangeStream changes_;
  /// What the edit under way has done so far; none between edits.
  std::unique_ptr<Batch> batch_;
  /// Gestures and adjustments under way, oldest first.
  std::vector<OpenEdit*> openEdits_;
  std::unique_ptr<DocumentCompositor> compositor_;
};

using DocumentPtr = std::shared_ptr<Document>;

}  // namespace orvanel
