// The one door to a document's contents. A command, a record or a step of a gesture opens an edit, writes
// through it, and leaves; when the outermost edit ends, the document carries out what was declared and tells
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
#include "model/edit/PropertyWriter.h"

namespace orvanel {

/// Which gestures and adjustments under way can't go on beside an edit. They end before it begins.
enum class EndsOpenEdits {
  none,
  ofTheSelection,
  all,
};

/// What an edit entails, once it has written or recorded anything.
struct EditKind {
  bool isUnsavedChange = false;  ///< sets `isDirty`
  bool recomposites = false;     ///< sets `needsCompositing`
  bool renewsThumbnails = false;  ///< those of the layers whose surfaces it wrote
  EndsOpenEdits ends = EndsOpenEdits::none;
};

namespace editKind {
/// Pixels, masks, the canvas, nodes that go: what an open edit may stand on.
inline constexpr EditKind contents{true, true, true, EndsOpenEdits::all};
/// Nodes and masks that come, nodes that change their place: every surface stays as it is.
inline constexpr EditKind addition{true, true, true, EndsOpenEdits::none};
/// The order of nodes alone, which the compositor finds by its hash.
inline constexpr EditKind order{false, false, false, EndsOpenEdits::none};
/// One property of a node, which the compositor finds by its hash.
inline constexpr EditKind property{true, false, false, EndsOpenEdits::none};
inline constexpr EditKind selection{false, false, false, EndsOpenEdits::ofTheSelection};
/// A step through the history.
inline constexpr EditKind history{true, true, true, EndsOpenEdits::all};
/// A record's step, which the step through the history surrounds.
inline constexpr EditKind record{false, false, true, EndsOpenEdits::none};
/// What a gesture shows while it is open, and what it keeps or takes back at its end.
inline constexpr EditKind shown{false, true, false, EndsOpenEdits::none};
inline constexpr EditKind kept{true, true, true, EndsOpenEdits::none};
inline constexpr EditKind takenBack{false, true, true, EndsOpenEdits::none};
/// What a selection's gesture shows and keeps.
inline constexpr EditKind selecting{false, false, false, EndsOpenEdits::none};
/// View, file and other state that no history keeps.
inline constexpr EditKind state{false, false, false, EndsOpenEdits::none};
}  // namespace editKind

class DocumentEdit {
 public:
  DocumentEdit(Document& document, const EditKind& kind);
  ~DocumentEdit();
  DocumentEdit(const DocumentEdit&) = delete;
  DocumentEdit& operator=(const DocumentEdit&) = delete;

  /// Whether this many bytes of pixels can be had; if not, tells that the edit was refused. Asked before the
  /// first write.
  [[nodiscard]] bool admits(std::uint64_t bytes);

  // The tree. Positions are clamped; without the folder they name they are in the root list.
  void insertNode(const LayerNode& node, const TreePosition& position);
  /// Nothing when the node isn't in the tree.
  std::optional<LayerNode> removeNode(const QUuid& nodeID);
  /// False when the node isn't in the tree, or `position` lies in it.
  bool moveNode(const QUuid& nodeID, const TreePosition& position);
  void setActiveNode(const std::optional<QUuid>& nodeID);

  // Properties of nodes, whether in the tree or not. An equal value writes nothing.
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
  void setMaskThumbnail(Layer& layer, const Thumbnail& image, bool isDirty);

  // Surfaces.
  /// The layer's surface for writing; it has one.
  [[nodiscard]] Surface& pixels(Layer& layer) { return surface(layer, SurfaceKind::pixels); }
  /// The layer's surface or its mask's, which it has.
  [[nodiscard]] Surface& surface(Layer& layer, SurfaceKind kind);
  /// Gives the layer another surface.
  void setTexture(Layer& layer, const Texture& texture);
  /// All thumbnails of the layer are out of date, though none of its surfaces was written.
  void renewThumbnails(Layer& layer);

  // The selection.
  /// For writing; null when the document has none.
  [[nodiscard]] std::shared_ptr<Selection> selection();
  /// Makes an empty one when there is none; null without memory for it.
  std::shared_ptr<Selection> ensureSelection();
  /// A new empty one at canvas size in the place of any other; none without memory for it.
  void resetSelection();

  // The canvas.
  void setCanvasSize(int width, int height);
  void setColorMode(ColorMode mode);
  /// Makes the composite and the checkerboard anew for the size and mode. Fatal on failure.
  void rebuildDisplayTextures();
  /// Brings the composite, which the document has, up to date as far as the deadline allows; true once it is.
  bool flatten(std::chrono::steady_clock::time_point deadline);

  // The history.
  /// Records what has been done.
  void record(const UndoStack::Record& operation);
  /// Records the operation and carries it out.
  void recordAndRedo(const UndoStack::Record& operation);
  /// As `recordAndRedo`; a run of opacity changes of one node becomes one record.
  void recordOpacityChange(const UndoStack::Record& operation);
  void stepHistory(void (UndoStack::*step)());
  void setHistoryLimits(std::int64_t memoryBudget, std::int64_t maxOperations);

  // View and file state.
  template <typename T>
  void set(Property<T> Document::*property, std::type_identity_t<T> value, ViewProperty told) {
    if (PropertyWriter::write(document_.*property, std::move(value))) tell(change::ViewChanged{told});
  }
  template <typename T>
  void set(Property<T> Document::*property, std::type_identity_t<T> value, FileProperty told) {
    if (PropertyWriter::write(document_.*property, std::move(value))) tell(change::FileStateChanged{told});
  }

  /// Adds a change that no other operation tells of, once a batch.
  void tell(const DocumentChange& change);

 private:
  void done();
  void tellProperty(const QUuid& nodeID, NodeProperty property);
  void tellThumbnails(const QUuid& layerID);
  void touchSelection();
  void finish();

  Document& document_;
  EditKind kind_;
  bool isOutermost_ = false;
};

}  // namespace orvanel
