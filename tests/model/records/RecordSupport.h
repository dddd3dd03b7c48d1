// Helpers for tests of the records: a document's state as one comparable value, and the undo cycle that every
// record must survive.
#pragma once

#include <gtest/gtest.h>

#include <QStringList>
#include <functional>

#include "model/ModelSupport.h"

namespace orvanel::test {

inline QString nodeState(const LayerNode& node) {
  QStringList parts{uuidText(node.id()),
                    node.name().value(),
                    QString::number(static_cast<double>(node.opacity().value())),
                    QString::number(rawValue(node.blendMode().value())),
                    QString::number(node.isVisible().value()),
                    QString::number(node.isLocked().value())};
  if (const std::shared_ptr<Layer> layer = node.layer()) {
    const std::shared_ptr<LayerMask>& mask = layer->mask.value();
    parts << (mask != nullptr ? uuidText(mask->id) : QString());
  } else {
    parts << QStringLiteral("[");
    for (const LayerNode& child : node.folder()->children.value()) parts << nodeState(child);
    parts << QStringLiteral("]");
  }
  return parts.join(QChar(u' '));
}

/// Every node's identity, position and values, and the active node.
inline QString documentState(const Document& document) {
  QStringList parts;
  for (const LayerNode& node : document.rootNodes.value()) parts << nodeState(node);
  const std::optional<QUuid>& active = document.selectedNodeID.value();
  parts << QStringLiteral("active: ") + (active ? uuidText(*active) : QString());
  return parts.join(QChar(u'\n'));
}

/// Runs a command that leaves one record, then undo, redo and undo; each must restore the exact state.
inline void expectCycle(Document& document, const std::function<void()>& command) {
  const QString before = documentState(document);
  const std::size_t records = document.undoStack.operations().size();
  command();
  ASSERT_EQ(document.undoStack.operations().size(), records + 1);
  const QString after = documentState(document);
  document.undo();
  EXPECT_EQ(documentState(document), before);
  document.redo();
  EXPECT_EQ(documentState(document), after);
  document.undo();
  EXPECT_EQ(documentState(document), before);
}

inline std::int64_t newestCost(const Document& document) {
  return document.undoStack.operations().back()->memoryCost();
}

}  // namespace orvanel::test
