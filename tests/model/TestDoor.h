// Lets tests set up states that no command produces. Code outside the model can't write like this, and
// observers aren't notified.
#pragma once

#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "model/Document.h"
#include "model/edit/DocumentEdit.h"
#include "model/edit/PropertyWriter.h"

namespace orvanel::test {

template <typename T>
void put(Property<T>& property, std::type_identity_t<T> value) {
  PropertyWriter::write(property, std::move(value));
}

/// The surface behind a reader's view, for writing.
inline Surface& writable(const ConstTexture& surface) {
  return const_cast<Surface&>(*surface);
}

/// The document's selection for writing; it must exist.
inline Selection& writableSelection(const Document& document) {
  return const_cast<Selection&>(*document.selection.value());
}

/// Removes a node from the tree without a record; does nothing if it isn't there.
inline std::optional<LayerNode> detach(Document& document, const QUuid& nodeID) {
  return DocumentEdit(document, editKind::state).removeNode(nodeID);
}

/// Inserts a node into the tree without a record.
inline void attach(Document& document, const LayerNode& node, const TreePosition& position) {
  DocumentEdit(document, editKind::state).insertNode(node, position);
}

/// The document's history for writing.
inline UndoStack& writableHistory(const Document& document) {
  return const_cast<UndoStack&>(document.undoStack);
}

}  // namespace orvanel::test
