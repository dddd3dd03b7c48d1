// The only write access to a document's contents. A command, a record or a step of a gesture opens an edit
// and writes through it. When the outermost edit ends, the document applies the declared effects and notifies
// its observers once. Private to the model; lives on the stack; main thread only.
#pragma once

#include <QUuid>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "model/Document.h"
#include "model/ThumbnailManager.h"
#include "model/edit/PropertyWriter.h"

namespace orvanel {

/// Which open gestures and adjustments are incompatible with an edit. They end before it begins.
enum class EndsOpenEdits {
  none,
  ofTheSurfaces,
  ofTheSelection,
  ofTheProperties,
  all,
};

/// The effects of an edit, once it has written or recorded anything.
struct EditKind {
  bool isUnsavedChange = false;   ///< sets `isDirty`
  bool recomposites = false;      ///< sets `needsCompositing`
  bool renewsThumbnails = false;  ///< those of the layers whose surfaces it wrote
  EndsOpenEdits ends = EndsOpenEdits::none;
  bool readsSurfaces = false;  ///< what open edits show is written before it begins
};

namespace editKind {
/// Edits of pixels, masks or the canvas, and removals of nodes: anything an open edit may depend on.
inline constexpr EditKind contents{true, true, true, EndsOpenEdits::all};
/// Nodes or masks added, nodes moved: no existing surface changes.
inline constexpr EditKind addition{true, true, true, EndsOpenEdits::none, true};
/// Only the order of nodes, which the compositor detects by its hash.
inline constexpr EditKind order{false, false, false, EndsOpenEdits::none};
/// One property of a node, which the compositor detects by its hash.
inline constexpr EditKind property{true, false, false, EndsOpenEdits::none};
/// The same for opacity and visibility, which an open edit may be showing.
inline constexpr EditKind shownProperty{true, false, false, EndsOpenEdits::ofTheProperties};
inline constexpr EditKind selection{false, false, false, EndsOpenEdits::ofTheSelection, true};
/// A step through the history.
inline constexpr EditKind history{true, true, true, EndsOpenEdits::all};
/// A record's step, nested in the step through the history.
inline constexpr EditKind record{false, false, true, EndsOpenEdits::none};
/// What a gesture shows while it is open, and keeps or takes back at its end.
inline constexpr EditKind shown{false, true, false, EndsOpenEdits::none};
inline constexpr EditKind kept{true, true, true, EndsOpenEdits::none};
inline constexpr EditKind takenBack{false, true, true, EndsOpenEdits::none};
/// What a selection gesture shows and keeps.
inline constexpr EditKind selecting{false, false, false, EndsOpenEdits::none, true};
/// Nothing but the end of all open edits.
inline constexpr EditKind settled{false, false, false, EndsOpenEdits::all};
/// View, file and other state that isn't recorded.
inline constexpr EditKind state{false, false, false, EndsOpenEdits::none};
}  // namespace editKind

class DocumentEdit {
 public:
  DocumentEdit(Document& document, const EditKind& kind);
  ~DocumentEdit();
  DocumentEdit(const DocumentEdit&) = delete;
  DocumentEdit& operator=(const DocumentEdit&) = delete;

  /// Whether this many bytes of pixel memory are available; reports a refusal if not. To be asked before the
  /// first write.
  [[nodiscard]] bool admits(std::uint64_t bytes);

  // The tree. Positions are clamped; if the parent folder doesn't exist, they are in the root list.
  void insertNode(const LayerNode& node, const TreePosition& position);
  /// Does nothing if the node isn't in the tree.
  std::optional<LayerNode> removeNode(const QUuid& nodeID);
  /// Returns false if the node isn't in the tree, or if `position` lies inside it.
  bool moveNode(const QUuid& nodeID, const TreePosition& position);
  void setActiveNode(const std::optional<QUuid>& nodeID);

  // Properties of nodes, whether or not they are in the tree. Equal values aren't written.
  void setName(const LayerNode& node, const QString& name);
  void setOpacity(const LayerNode& node, float opacity);
  void setBlendMode(const LayerNode& node, BlendMode blendMode);
  void setVisible(const LayerNode& node, bool isVisible);
  void setLocked(const LayerNode& node, bool isLocked);
  void setExpanded(LayerFolder& folder, bool isExpanded);
  void setMask(Layer& layer, const std::shared_ptr<LayerMask>& mask);
  void setMaskEnabled(Layer& layer, bool isEnabled);
  void setMaskLinked(Layer& layer, bool isMaskLinked);
  void setMaskSelected(Layer& layer, bool isMaskSelected);

  // Thumbnails.
  void setThumbnails(Layer& layer, const ColorThumbnails& thumbnails, bool isDirty);
  void setMaskThumbnail(Layer& layer, const Thumbnail& image, bool isDirty);
  void setCompositeThumbnails(ColorThumbnails thumbnails);
  /// Makes the picture of a layer, or of its mask, at once if anybody sees it, and otherwise leaves it stale:
  /// for surfaces that have just come into being.
  void makeThumbnail(Layer& layer);
  void makeMaskThumbnail(Layer& layer);
  /// Marks all thumbnails of the layer as stale although none of its surfaces was written.
  void renewThumbnails(Layer& layer);

  // Surfaces.
  /// The layer's surface for writing; it must exist.
  [[nodiscard]] Surface& pixels(Layer& layer) { return surface(layer, SurfaceKind::pixels); }
  /// The surface of the layer or of its mask, for writing; it must exist.
  [[nodiscard]] Surface& surface(Layer& layer, SurfaceKind kind);
  /// Replaces the layer's surface.
  void setTexture(Layer& layer, const Texture& texture);

  // The selection.
  /// The selection for writing; null if the document has none.
  [[nodiscard]] std::shared_ptr<Selection> selection();
  /// Makes an empty selection if there is none; null if memory runs out.
  std::shared_ptr<Selection> ensureSelection();
  /// Replaces any selection with a new, empty one at canvas size; leaves none if memory runs out.
  void resetSelection();

  // The canvas.
  void setCanvasSize(int width, int height);
  void setColorMode(ColorMode mode);
  /// Recreates the composite and the checkerboard for the size and mode. Fatal on failure.
  void rebuildDisplayTextures();
  /// Brings the composite, which must exist, up to date as far as the deadline allows; true once it is.
  bool flatten(std::chrono::steady_clock::time_point deadline);

  // The history.
  /// Records a change that has been made.
  void record(const UndoStack::Record& operation);
  /// Records the operation and performs it.
  void recordAndRedo(const UndoStack::Record& operation);
  /// As `recordAndRedo`; consecutive opacity changes of one node are merged into one record.
  void recordOpacityChange(const UndoStack::Record& operation);
  void stepHistory(void (UndoStack::*step)());
  void setHistoryLimits(std::int64_t memoryBudget, std::int64_t maxOperations);

  // View and file state.
  template <typename T>
  void set(Property<T> Document::*property, std::type_identity_t<T> value, ViewProperty told) {
    if (PropertyWriter::write(document_.*property, std::move(value))) tellOnce<change::ViewChanged>(told);
  }
  template <typename T>
  void set(Property<T> Document::*property, std::type_identity_t<T> value, FileProperty told) {
    if (PropertyWriter::write(document_.*property, std::move(value)))
      tellOnce<change::FileStateChanged>(told);
  }

  /// Reports a change that no other operation reports.
  void tell(const DocumentChange& change);

 private:
  void done();
  [[nodiscard]] const DocumentChanges& told() const;
  /// Report a change unless the batch reports it already.
  template <typename Kind, typename T>
  void tellOnce(T property) {
    if (!containsAny<Kind>(told(), property)) tell(Kind{property});
  }
  void tellCanvas();
  void tellProperty(const QUuid& nodeID, NodeProperty property);
  void tellThumbnails(const std::optional<QUuid>& layerID);
  void touchSelection();
  void finish();

  Document& document_;
  EditKind kind_;
  bool isOutermost_ = false;
};

}  // namespace orvanel
