// Helpers for tests of the model: small documents, readable trees, and a recorder of changes.
#pragma once

#include <QStringList>
#include <memory>
#include <optional>
#include <ostream>
#include <variant>
#include <vector>

#include "model/Document.h"
#include "model/TestDoor.h"

/// Lets failures print texts rather than bytes; the framework finds it by name in the argument's namespace.
// NOLINTNEXTLINE(readability-identifier-naming)
inline void PrintTo(const QString& text, std::ostream* stream) {
  *stream << '"' << text.toStdString() << '"';
}

namespace orvanel::test {

inline DocumentPtr makeDocument(int width = 40, int height = 30, ColorMode mode = ColorMode::rgb8) {
  return Document::create(QStringLiteral("Test"), width, height, mode, MetalContext::shared());
}

inline QString treeText(const LayerNodeList& nodes) {
  QStringList parts;
  for (const LayerNode& node : nodes) {
    const std::shared_ptr<LayerFolder> folder = node.folder();
    parts << (folder != nullptr
                  ? node.name().value() + QChar(u'[') + treeText(folder->children.value()) + QChar(u']')
                  : node.name().value());
  }
  return parts.join(QStringLiteral(", "));
}

/// The names bottom first, each folder followed by its children in brackets.
inline QString treeText(const Document& document) {
  return treeText(document.rootNodes.value());
}

inline std::optional<LayerNode> nodeNamed(const QString& name, const LayerNodeList& nodes) {
  for (const LayerNode& node : nodes) {
    if (node.name().value() == name) return node;
    if (const std::shared_ptr<LayerFolder> folder = node.folder()) {
      if (auto found = nodeNamed(name, folder->children.value())) return found;
    }
  }
  return std::nullopt;
}

/// The first node of that name, which must exist.
inline LayerNode nodeNamed(const Document& document, const QString& name) {
  return nodeNamed(name, document.rootNodes.value()).value();
}

inline QUuid idOf(const Document& document, const QString& name) {
  return nodeNamed(document, name).id();
}

inline QString activeName(const Document& document) {
  const std::optional<LayerNode> node = document.activeNode();
  return node ? node->name().value() : QString();
}

inline void activate(Document& document, const QString& name) {
  document.selectNode(idOf(document, name));
}

/// Gives a layer an enabled mask of zeros.
inline std::shared_ptr<LayerMask> addMask(Layer& layer) {
  const Surface& pixels = *layer.texture.value();
  auto mask = std::make_shared<LayerMask>(
      QUuid::createUuid(), MaskTexture::create(pixels.width(), pixels.height(), MetalContext::shared()));
  put(layer.mask, mask);
  return mask;
}

/// Records a document's changes while it lives.
class ChangeRecorder {
 public:
  explicit ChangeRecorder(const Document& document)
      : subscription_(document.changes().observe([this](const DocumentChanges& changes) {
          ++batches;
          all.insert(all.end(), changes.begin(), changes.end());
        })) {}
  ChangeRecorder(const ChangeRecorder&) = delete;
  ChangeRecorder& operator=(const ChangeRecorder&) = delete;

  int batches = 0;
  DocumentChanges all;

  template <typename Kind>
  [[nodiscard]] std::vector<Kind> of() const {
    std::vector<Kind> found;
    for (const DocumentChange& change : all) {
      if (const auto* kind = std::get_if<Kind>(&change)) found.push_back(*kind);
    }
    return found;
  }
  template <typename Kind>
  [[nodiscard]] std::size_t count() const {
    return of<Kind>().size();
  }
  /// How often a property of a node, the view or the file was reported.
  template <typename Kind, typename Property>
  [[nodiscard]] std::size_t count(Property property) const {
    std::size_t count = 0;
    for (const Kind& kind : of<Kind>()) count += kind.property == property ? 1 : 0;
    return count;
  }
  void clear() {
    batches = 0;
    all.clear();
  }

 private:
  ChangeStream::Subscription subscription_;
};

}  // namespace orvanel::test
