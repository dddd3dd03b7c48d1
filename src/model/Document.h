// One open image: canvas, tree of nodes, active node, composite, selection, view state and history. The
// central object of the model; main thread only. Owned by the window; records and views hold it weakly.
// Anyone may read it. Only the commands below and gestures (`OpenEdit`) change it; both write through
// `DocumentEdit`, which is private to the model, and `changes` reports what they did.
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

/// Scale factors (document pixels to view points) that zooming steps through.
inline constexpr std::array<double, 29> zoomTable{
    0.01, 0.015,     0.02, 0.03,      0.04, 0.05, 0.0625, 1.0 / 12.0, 0.125, 1.0 / 6.0,
    0.25, 1.0 / 3.0, 0.5,  2.0 / 3.0, 1.0,  2.0,  3.0,    4.0,        5.0,   6.0,
    7.0,  8.0,       12.0, 16.0,      32.0, 64.0, 100.0,  200.0,      400.0};
inline constexpr double minimumZoom = 0.01;
inline constexpr double maximumZoom = 400.0;
/// The zoom with which a canvas comes up in a view, in document pixels and view points.
[[nodiscard]] double initialZoom(const QSizeF& canvas, const QSizeF& view);

class DocumentCompositor;
class DocumentEdit;
class SampledComposite;
struct SampleGrid;
struct SurfaceChange;
class FileMemory;
class FrozenComposite;
class OpenEdit;
class ThumbnailManager;

/// A surface as an open edit shows it: these pixels, changed.
struct ShownSurface {
  const Surface* original = nullptr;
  const SurfaceChange* change = nullptr;
};

/// The initial contents of a document loaded from a file.
struct DocumentContents {
  QString name = {};
  int width = 1;
  int height = 1;
  ColorMode colorMode = ColorMode::rgb8;
  /// Surfaces have this size and the layer format of the mode.
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

  /// A node's position: `folder` is null in the root list.
  struct NodeLocation {
    std::shared_ptr<LayerFolder> folder;
    int index = 0;
  };

  /// Makes a document with a white "Background" layer. Failing to make its surfaces is fatal.
  [[nodiscard]] static std::shared_ptr<Document> create(const QString& name, int width, int height,
                                                        ColorMode colorMode, MetalContext& context);
  /// Makes a clean document with these contents. Failing to make its composite is fatal.
  [[nodiscard]] static std::shared_ptr<Document> create(DocumentContents contents, MetalContext& context);
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  /// Reports every change, once per edit. A new observer reads the document's current state or asks for
  /// `wholeDocument`.
  const ChangeStream& changes() const { return changes_; }
  /// The document as the changes that build it from an empty one.
  [[nodiscard]] DocumentChanges wholeDocument() const;

  const QUuid id = QUuid::createUuid();
  Property<QString> name;
  Property<int> canvasWidth;
  Property<int> canvasHeight;
  Property<ColorMode> colorMode;
  Property<LayerNodeList> rootNodes;
  /// The active node.
  Property<std::optional<QUuid>> selectedNodeID;
  /// The last flattened image, possibly stale; `composite` brings it up to date.
  Property<ConstTexture> compositedTexture;
  Property<Thumbnail> compositeThumbnailImage;
  Property<std::vector<Thumbnail>> compositeChannelThumbnails;
  /// True when something other than a node's properties has made the flattened image stale.
  Property<bool> needsCompositing{true};
  Property<ConstTexture> checkerboardTexture;
  Property<int> zoomLevelIndex{14};
  /// Overrides the table when set.
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
  /// The chosen member of each tool group, keyed by the group's identity.
  Property<QHash<QString, Tool>> selectedVariants;
  Property<DisplayColor> foregroundColor{DisplayColor::black()};
  Property<DisplayColor> backgroundColor{DisplayColor::white()};
  /// Created at canvas size when first needed.
  Property<std::shared_ptr<const Selection>> selection;
  Property<ChannelVisibility> channelVisibility;

  const UndoStack& undoStack = history_;
  /// Makes the thumbnails of the document and its layers.
  const std::unique_ptr<ThumbnailManager> thumbnailManager;

  [[nodiscard]] MetalContext& context() const { return context_; }

  // Queries on the tree.
  [[nodiscard]] std::optional<LayerNode> activeNode() const;
  /// The active node when it is a layer, otherwise null.
  [[nodiscard]] std::shared_ptr<Layer> activeLayer() const;
  [[nodiscard]] std::optional<LayerNode> findNode(const QUuid& nodeID) const;
  [[nodiscard]] std::optional<NodeLocation> parentAndIndex(const QUuid& nodeID) const;
  /// The same, as a plain value.
  [[nodiscard]] std::optional<TreePosition> treePosition(const QUuid& nodeID) const;
  [[nodiscard]] std::vector<std::shared_ptr<Layer>> allLayers() const;
  [[nodiscard]] int layerCount() const;
  /// Bytes of all layers and masks as packed rows.
  [[nodiscard]] std::int64_t memoryUsage() const;
  [[nodiscard]] std::set<QString> allNodeNames() const;
  /// True if the document consists of a single unmasked layer with pixels.
  [[nodiscard]] bool canSaveAsFlatImage() const;
  /// `base`, or `base` with the first free number from 2; names are unique at all depths.
  [[nodiscard]] QString uniqueNodeName(const QString& base) const;

  /// The flattened image, always current: flattens first if needed.
  [[nodiscard]] ConstTexture composite();
  [[nodiscard]] bool isCompositeCurrent() const;
  /// Flattens for about this long; the next call continues from there. True once the image is current.
  bool advanceComposite(std::chrono::milliseconds budget);
  /// What `composite` would hold at the samples of a view, without making it. Good until the next call with
  /// the same `samples`; null without a composite or without samples.
  [[nodiscard]] const Surface* sampleComposite(SampledComposite& samples, const SampleGrid& grid) const;
  /// Gathers for about this long what the next `sampleComposite` of this grid would have to; the next call
  /// continues from there. True once nothing is missing.
  bool prepareSamples(SampledComposite& samples, const SampleGrid& grid,
                      std::chrono::milliseconds budget) const;
  /// The flattened image of this moment for use on another thread, which completes it if necessary; null
  /// without a composite.
  [[nodiscard]] std::shared_ptr<FrozenComposite> freezeComposite() const;
  [[nodiscard]] const DocumentCompositor& compositor() const { return *compositor_; }

  // Changes of the tree; each leaves one undo record. A command that would lose a node does nothing.
  void addLayer(const QString& requestedName);
  void addFolder(const QString& requestedName);
  void removeNode(const QUuid& nodeID);
  /// Moves the node to the top of the folder. Does nothing if the folder doesn't exist or lies inside the
  /// node.
  void moveNode(const QUuid& nodeID, const QUuid& toFolder);
  /// `index` is counted after the node's removal, and clamped. If the folder doesn't exist the node goes to
  /// the root list; if it lies inside the node, nothing happens. Sets no flags.
  void moveNode(const QUuid& nodeID, const std::optional<QUuid>& parentID, int index);
  /// The same by the user's hand: the node becomes active and the document unsaved. A node that is already
  /// there only becomes active.
  void placeNode(const QUuid& nodeID, const std::optional<QUuid>& parentID, int index);
  void duplicateNode(const QUuid& nodeID);

  // Changes of one node property; each leaves one record. An equal value, an empty name or an absent node
  // leaves none.
  void setOpacity(const QUuid& nodeID, float opacity);
  void setBlendMode(const QUuid& nodeID, BlendMode blendMode);
  void rename(const QUuid& nodeID, const QString& newName);
  void setVisible(const QUuid& nodeID, bool isVisible);
  /// Changes several nodes under one record. Absent nodes are skipped.
  void setVisible(const std::vector<QUuid>& nodeIDs, bool isVisible);
  void setLocked(const QUuid& nodeID, bool isLocked);

  // Properties without a record. Does nothing for an absent node or one of the other kind.
  void selectNode(const std::optional<QUuid>& nodeID);
  void setExpanded(const QUuid& folderID, bool isExpanded);
  void setMaskSelected(const QUuid& layerID, bool isMaskSelected);
  void setMaskLinked(const QUuid& layerID, bool isMaskLinked);
  /// Makes the document dirty.
  void setMaskEnabled(const QUuid& layerID, bool isEnabled);

  // Pixels of the active node: of its mask if selected, otherwise of its layer. Each change leaves one
  // record. Nothing happens for a folder, or without the required surface or selection; a lock has no effect.
  /// Fills the selection, or everything without one.
  void fillSelection(const DisplayColor& color, const QString& actionName = QStringLiteral("Fill"));
  /// Fills a layer with transparency, a mask with white.
  void clearActive();
  /// Inverts colours within the selection; a mask is inverted as a whole.
  void invertActive();
  /// The layer's pixels under the selection; none if nothing is selected.
  [[nodiscard]] std::optional<PixelClipboard> copyPixels();
  /// `copyPixels`, followed by a transparent fill, which is recorded under that name.
  [[nodiscard]] std::optional<PixelClipboard> cutPixels();
  /// Adds a layer with the pixels at their original position, converted to this colour mode and clipped to
  /// the canvas. False if there isn't the memory for it.
  bool pastePixels(const PixelClipboard& clipboard);

  // The selection. Each change leaves one record and sets no flags.
  void selectAll();
  void deselect();
  void invertSelection();
  void selectLayerTransparency(const Layer& layer);
  /// A channel of the composite: 0 to 2 for colours, 3 for alpha.
  void selectChannel(int index);
  void selectMask(const LayerMask& mask);
  /// Makes an empty selection if there is none. Leaves none if memory runs out.
  void ensureSelection();
  /// The selection if anything is selected, otherwise null.
  [[nodiscard]] std::shared_ptr<const Selection> activeSelection() const;

  // Layer masks. Each change leaves one record.
  /// The new mask equals the selection, or hides nothing without one.
  void addLayerMask(const std::shared_ptr<Layer>& layer);
  /// Multiplies the mask into the layer's alpha and removes it.
  void applyLayerMask(const std::shared_ptr<Layer>& layer);
  void removeLayerMask(const std::shared_ptr<Layer>& layer);

  // The canvas. Each change leaves one record; changes of size drop the selection. Sizes are 1 to
  // `maximumCanvasSide` pixels; failing to make the surfaces is fatal.
  void resizeImage(int width, int height, ResampleMethod method);
  /// Anchors are -1, 0 or 1: the old canvas stays at the left or top, the centre, or the right or bottom.
  void resizeCanvas(int width, int height, int anchorX, int anchorY);
  void crop(const PixelRect& rect, const QString& actionName);
  /// Crops to the bounds of the selection; does nothing without one.
  void cropToSelection();
  /// Removes uniform edges of the composite. Returns false if there are none, so that the caller can say so.
  [[nodiscard]] bool trim();
  void changeColorMode(ColorMode newMode);

  /// A canvas-size layer surface of the mode, all zero. Fatal on failure.
  [[nodiscard]] Texture makeLayerTexture() const;
  [[nodiscard]] Texture makeLayerTexture(ColorMode mode, int width, int height) const;

  /// Undo and redo always leave the document dirty and report the step.
  void undo();
  void redo();

  // The view. Zoom is view points per document pixel.
  [[nodiscard]] double zoom() const;
  void zoomIn();
  void zoomOut();
  void zoomActualSize();
  /// A factor outside the table, clamped to `minimumZoom` .. `maximumZoom`.
  void setZoom(double factor);
  void zoomFitOnScreen(double availableWidth, double availableHeight);
  void applyInitialZoom(double viewWidth, double viewHeight);
  [[nodiscard]] QString zoomDisplayString() const;
  /// In document pixels. The scrolling view enforces its bounds.
  void setViewportOffset(QPointF offset);
  void setCursorDocumentPosition(const std::optional<QPointF>& position);
  void setDragSize(const std::optional<DragSize>& size);
  void setChannelVisibility(const ChannelVisibility& visibility);
  void setForegroundColor(const DisplayColor& color);
  void setBackgroundColor(const DisplayColor& color);
  void swapColors();
  /// Black on white.
  void resetColors();
  /// Stores the tool and the chosen members of the groups in the document.
  void rememberTool(Tool tool, const QHash<QString, Tool>& variants);

  /// Open edits show their changes without writing them to the surfaces. This writes them, for somebody who
  /// is about to read a layer's or a mask's pixels. Commands, `composite` and `freezeComposite` do it
  /// themselves.
  void settle() const;
  /// Whether the surfaces hold all that is shown.
  [[nodiscard]] bool isSettled() const;
  /// How an open edit shows a surface that it hasn't written.
  [[nodiscard]] std::optional<ShownSurface> shown(const Layer& layer, SurfaceKind kind) const;
  /// What `undo` would take back first: a change that is still open, otherwise the last record's.
  [[nodiscard]] std::optional<QString> undoActionName() const;
  /// What `redo` would bring back: nothing while a change is open, because keeping it ends the branch.
  [[nodiscard]] std::optional<QString> redoActionName() const;
  /// Whether a change is open that would mark the document as unsaved.
  [[nodiscard]] bool hasOpenUnsavedChange() const;
  /// Ends every open edit as a change of tool does, so that the document holds what is shown: before it is
  /// saved, exported or closed.
  void endOpenEdits();

  // The file.
  void setName(const QString& newName);
  /// Whether there are unsaved changes.
  void setDirty(bool hasUnsavedChanges);
  void setSource(const std::optional<QString>& path, const std::optional<ImageFileFormat>& format);
  void setSourceMetadata(const std::shared_ptr<const SourceMetadata>& metadata);
  /// What its file is known to hold; null if nothing. No part of the document's state, so nobody is told.
  [[nodiscard]] const std::shared_ptr<const FileMemory>& fileMemory() const { return fileMemory_; }
  void setFileMemory(std::shared_ptr<const FileMemory> memory) { fileMemory_ = std::move(memory); }

  /// Whether an edit may use this many bytes of pixel memory; reports a refusal if not. Commands ask for
  /// their own worst case and do nothing if it is refused.
  [[nodiscard]] bool admitsEdit(std::uint64_t bytes);
  /// Limits of the history; enforced at the next edit.
  void setHistoryLimits(std::int64_t memoryBudget, std::int64_t maxOperations);

 private:
  friend class DocumentEdit;
  friend class OpenEdit;
  struct Batch;

  explicit Document(DocumentContents contents, MetalContext& context);
  /// Inserts the layer above the active node, makes it active and records it.
  void addNewLayer(DocumentEdit& edit, const std::shared_ptr<Layer>& layer);
  /// Changes the selection and records the change.
  void changeSelection(DocumentEdit& edit, const QString& actionName,
                       const std::function<void(Selection&)>& change);
  void stepHistory(DocumentEdit& edit, const UndoableOperation* record, void (UndoStack::*step)());
  bool flatten(std::chrono::steady_clock::time_point deadline);

  MetalContext& context_;
  std::shared_ptr<const FileMemory> fileMemory_;
  UndoStack history_;
  ChangeStream changes_;
  /// What the current edit has done so far; null between edits.
  std::unique_ptr<Batch> batch_;
  /// Open gestures and adjustments, oldest first.
  std::vector<OpenEdit*> openEdits_;
  std::unique_ptr<DocumentCompositor> compositor_;
};

using DocumentPtr = std::shared_ptr<Document>;

}  // namespace orvanel
