// What a document reports to its observers: one type per kind of change, the same for a command, a step of a
// gesture, undo or redo. A change names what is new; observers read the new state from the document.
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
  mask,  ///< attached, removed or replaced; its pixels are new as well
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

/// Positions apply in sequence: each is valid after all earlier changes of the batch. A folder is inserted
/// empty, then its children one by one; it is removed with everything in it.
struct NodeInserted {
  QUuid nodeID;
  TreePosition position;
};
struct NodeRemoved {
  QUuid nodeID;
  TreePosition position;
};
/// `to` is counted after the node's removal.
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
/// An open edit shows a surface in another way without having written it.
struct PreviewChanged {
  QUuid layerID;
  SurfaceKind kind = SurfaceKind::pixels;
};
/// An open edit has shown something for the first time, or has closed after it did: the next undo and whether
/// there is anything to save are new. Also once the document has ended one: its owner has to hear of that.
struct OpenEditChanged {};
/// The listed tiles of the selection's mask, or only its flags. Lists all tiles when the selection object was
/// replaced.
struct SelectionChanged {
  std::vector<int> tiles;
};
/// The canvas has a new size or colour mode, and every surface was replaced.
struct CanvasChanged {};
struct ActiveNodeChanged {};
struct ViewChanged {
  ViewProperty property = ViewProperty::zoom;
};
/// The list of records or the position in it.
struct HistoryChanged {};
/// An undo or redo was performed, even one with nothing to do.
struct HistoryStepped {};
struct FileStateChanged {
  FileProperty property = FileProperty::name;
};
/// The flattened image was updated, completely or in part.
struct Composited {};
/// Thumbnails or their dirty marks, of a layer or, without one, of the composite.
struct ThumbnailsChanged {
  std::optional<QUuid> layerID;
};
/// An edit was refused because there wasn't enough memory. The document is unchanged.
struct EditRefused {
  std::uint64_t bytesNeeded = 0;
};

}  // namespace change

using DocumentChange = std::variant<change::NodeInserted, change::NodeRemoved, change::NodeMoved,
                                    change::NodePropertyChanged, change::PixelsChanged,
                                    change::PreviewChanged, change::OpenEditChanged, change::SelectionChanged,
                                    change::CanvasChanged, change::ActiveNodeChanged, change::ViewChanged,
                                    change::HistoryChanged, change::HistoryStepped, change::FileStateChanged,
                                    change::Composited, change::ThumbnailsChanged, change::EditRefused>;

/// The changes of one edit, in order.
using DocumentChanges = std::vector<DocumentChange>;

/// Whether a batch contains a change of this kind.
template <typename Kind>
[[nodiscard]] bool contains(const DocumentChanges& changes) {
  for (const DocumentChange& change : changes) {
    if (std::holds_alternative<Kind>(change)) return true;
  }
  return false;
}

/// Whether a batch contains a change of this kind with one of these properties. For changes of nodes, view
/// and file.
template <typename Kind, typename... Properties>
[[nodiscard]] bool containsAny(const DocumentChanges& changes, Properties... properties) {
  for (const DocumentChange& change : changes) {
    const auto* found = std::get_if<Kind>(&change);
    if (found != nullptr && ((found->property == properties) || ...)) return true;
  }
  return false;
}

}  // namespace orvanel
