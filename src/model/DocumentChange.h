// What a document tells its observers: one value for each kind of change, the same from a command, a step of
// a gesture, undo or redo. A change names what is new; observers read the new state from the document.
#pragma once

#include <QString>
#include <QUuid>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "model/TreePosition.h"

namespace orvanel {

enum class NodeProperty {
  name,
  opacity,
  blendMode,
  isVisible,
  isLocked,
  isExpanded,
  mask,  ///< attached, taken off or replaced; its pixels are new as well
  isMaskEnabled,
  isMaskLinked,
  isMaskSelected,
};

enum class SurfaceKind { pixels, mask };

enum class ViewProperty {
  zoom,
  viewportOffset,
  needsInitialZoom,
  cursorDocumentPosition,
  dragSize,
  selectedTool,
  colors,
  channelVisibility,
};

enum class FileProperty { name, isDirty, source };

namespace change {

/// Positions hold one after the other: each is true once the changes before it in the batch have been followed.
/// A folder is inserted empty, and its children follow one by one; it is removed with all it holds.
struct NodeInserted {
  QUuid nodeID;
  TreePosition position;
};
struct NodeRemoved {
  QUuid nodeID;
  TreePosition position;
};
/// `to` is counted after the node has left `from`.
struct NodeMoved {
  QUuid nodeID;
  TreePosition from;
  TreePosition to;
};
struct NodePropertyChanged {
  QUuid nodeID;
  NodeProperty property = NodeProperty::name;
};
/// The listed tiles of a layer's or a mask's surface, in ascending order.
struct PixelsChanged {
  QUuid layerID;
  SurfaceKind kind = SurfaceKind::pixels;
  std::vector<int> tiles;
};
/// The listed tiles of the selection's mask, or its flags alone. All tiles when the selection is another
/// object than before.
struct SelectionChanged {
  std::vector<int> tiles;
};
/// The canvas has another size or colour mode, and every surface was replaced.
struct CanvasChanged {};
struct ActiveNodeChanged {};
struct ViewChanged {
  ViewProperty property = ViewProperty::zoom;
};
/// The records or the position among them.
struct HistoryChanged {};
/// An undo or redo was carried out, even one that had nothing to do.
struct HistoryStepped {};
struct FileStateChanged {
  FileProperty property = FileProperty::name;
};
/// The flattened image has been made anew, all of it or as far as it has come.
struct Composited {};
/// Images or their dirty marks, of a layer or, without one, of the composite.
struct ThumbnailsChanged {
  std::optional<QUuid> layerID;
};
/// An edit didn't begin, because the memory it may need isn't there. The document is as it was.
struct EditRefused {
  std::uint64_t bytesNeeded = 0;
};

}  // namespace change

using DocumentChange =
    std::variant<change::NodeInserted, change::NodeRemoved, change::NodeMoved, change::NodePropertyChanged,
                 change::PixelsChanged, change::SelectionChanged, change::CanvasChanged,
                 change::ActiveNodeChanged, change::ViewChanged, change::HistoryChanged,
                 change::HistoryStepped, change::FileStateChanged, change::Composited,
                 change::ThumbnailsChanged, change::EditRefused>;

/// The changes of one edit, in their order.
using DocumentChanges = std::vector<DocumentChange>;

/// Whether a batch has a change of this kind.
template <typename Kind>
[[nodiscard]] bool contains(const DocumentChanges& changes) {
  for (const DocumentChange& change : changes) {
    if (std::holds_alternative<Kind>(change)) return true;
  }
  return false;
}

/// Whether a batch has a change of this kind with one of these properties, as changes of nodes, view and file
/// carry.
template <typename Kind, typename... Properties>
[[nodiscard]] bool containsAny(const DocumentChanges& changes, Properties... properties) {
  for (const DocumentChange& change : changes) {
    const auto* found = std::get_if<Kind>(&change);
    if (found != nullptr && ((found->property == properties) || ...)) return true;
  }
  return false;
}

}  // namespace orvanel
