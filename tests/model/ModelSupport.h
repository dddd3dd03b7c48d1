// What tests of the model share: small documents, a readable form of their trees, and counters of posts.
#pragma once

#include <QProperty>
#include <QStringList>
#include <memory>
#include <optional>
#include <ostream>

#include "model/Document.h"
#include "tools/NotificationCenter.h"

/// Lets failures show texts rather than bytes; found by this name in the argument's own namespace.
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

/// The names bottom first, a folder's children in brackets behind it.
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

/// The first node of that name, which the test knows to be there.
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
  document.selectedNodeID = idOf(document, name);
}

/// Gives a layer an enabled mask, all zero.
inline std::shared_ptr<LayerMask> addMask(Layer& layer) {
  const Surface& pixels = *layer.texture.value();
  auto mask = std::make_shared<LayerMask>(
      QUuid::createUuid(), MaskTexture::create(pixels.width(), pixels.height(), MetalContext::shared()));
  layer.mask = mask;
  return mask;
}

/// Counts the posts of one name while it lives.
class PostCounter {
 public:
  explicit PostCounter(std::string_view name)
      : subscription_(NotificationCenter::standard().observe(name, [this](const std::any& object) {
          ++count;
          hadObject = object.has_value();
        })) {}
  PostCounter(const PostCounter&) = delete;
  PostCounter& operator=(const PostCounter&) = delete;

  int count = 0;
  bool hadObject = false;

 private:
  NotificationCenter::Subscription subscription_;
};

/// Counts the notifications of one property while it lives.
template <typename Value>
class ChangeCounter {
 public:
  explicit ChangeCounter(QProperty<Value>& property)
      : notifier_(property.addNotifier(std::function<void()>([this] { ++count; }))) {}
  ChangeCounter(const ChangeCounter&) = delete;
  ChangeCounter& operator=(const ChangeCounter&) = delete;

  int count = 0;

 private:
  QPropertyNotifier notifier_;
};

}  // namespace orvanel::test
