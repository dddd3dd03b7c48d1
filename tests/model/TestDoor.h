// Lets tests set up states that no command leads to. Nothing outside the model can write like this, and
// nothing tells observers of it.
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

/// The document's selection for writing; it has one.
inline Selection& writableSelection(const Document& document) {
  return const_cast<Selection&>(*document.selection.value());
}

/// Takes a node out of the tree without a record; nothing when it isn't there.
inline std::optional<LayerNode> detach(Document& document, const QUuid& nodeID) {
  return DocumentEdit(document, editKind::state).removeNode(nodeID);
}

/// Puts a node into the tree without a record.
inline void attach(Document& document, const LayerNode& node, const TreePosition& position) {
  DocumentEdit(document, editKind::state).insertNode(node, position);
}

/// The document's history for writing.
inline UndoStack& writableHistory(const Document& document) {
  return const_cast<UndoStack&>(document.undoStack);
}

}  // namespace orvanel::test
