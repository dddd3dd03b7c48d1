// Documents for tests, and their comparison.
#pragma once

#include <QDir>
#include <QFile>
#include <random>

#include "io/document/DocumentIO.h"
#include "model/Document.h"

namespace orvanel::testing {

/// Fills a surface with valid random pixels; some tiles stay uniform.
inline void scribble(Surface& surface, unsigned seed) {
  std::mt19937 random(seed);
  const auto step = static_cast<std::size_t>(surface.pixelBytes());
  std::vector<std::byte> row(static_cast<std::size_t>(surface.width()) * step);
  for (int y = 0; y < surface.height(); ++y) {
    if (y / tileSide % 2 == 1) continue;
    for (std::size_t i = 0; i < row.size(); i += 2) {
      const auto value = static_cast<std::uint16_t>(
          isFloatFormat(surface.format()) ? 0x2C00U + random() % 0x1000U : random() & 0xFFFFU);
      std::memcpy(row.data() + i, &value, 2);
    }
    surface.writeRect({0, y, surface.width(), 1}, row.data(), row.size());
  }
}

inline std::shared_ptr<Layer> scribbledLayer(const Document& document, const QString& name, unsigned seed) {
  auto layer = std::make_shared<Layer>(name);
  put(layer->texture, document.makeLayerTexture());
  scribble(*layer->texture.value(), seed);
  return layer;
}

inline std::shared_ptr<LayerMask> scribbledMask(const Document& document, unsigned seed) {
  auto contents =
      MaskTexture::create(document.canvasWidth.value(), document.canvasHeight.value(), document.context());
  scribble(*contents->texture, seed);
  return std::make_shared<LayerMask>(QUuid::createUuid(), contents);
}

/// Layers, folders in folders, masks on layers with and without pixels, and every property off its default.
inline DocumentPtr richDocument(ColorMode mode, int width = 300, int height = 270) {
  DocumentPtr document =
      Document::createEmpty(QStringLiteral("Rich"), width, height, mode, MetalContext::shared());
  auto bottom = scribbledLayer(*document, QStringLiteral("Bottom"), 1);
  auto masked = scribbledLayer(*document, QString::fromUtf8("Masked é"), 2);
  put(masked->mask, scribbledMask(*document, 3));
  put(masked->opacity, 0.3F);
  put(masked->blendMode, BlendMode::exclusion);
  put(masked->isVisible, false);
  auto bare = std::make_shared<Layer>(QStringLiteral("Bare"));
  put(bare->mask, scribbledMask(*document, 4));
  put(bare->mask.value()->isEnabled, false);
  put(bare->isLocked, true);
  auto inner = std::make_shared<LayerFolder>(QStringLiteral("Inner"));
  put(inner->children, LayerNodeList{bare});
  put(inner->blendMode, BlendMode::darken);
  auto outer = std::make_shared<LayerFolder>(QStringLiteral("Outer"));
  put(outer->children, LayerNodeList{masked, inner});
  put(outer->isExpanded, false);
  put(outer->opacity, 0.5F);
  auto empty = std::make_shared<LayerFolder>(QStringLiteral("Empty"));
  put(document->rootNodes, LayerNodeList{bottom, outer, empty});
  document->selectNode(masked->id);
  document->setForegroundColor(DisplayColor{0.2F, 0.4F, 0.6F, 1.0F});
  document->setBackgroundColor(DisplayColor{1.0F, 0.0F, 0.0F, 1.0F});
  return document;
}

inline bool sameSurface(const Texture& a, const Texture& b) {
  return (a == nullptr) == (b == nullptr) && (a == nullptr || a->equals(*b));
}

inline bool sameMask(const std::shared_ptr<LayerMask>& a, const std::shared_ptr<LayerMask>& b) {
  if ((a == nullptr) != (b == nullptr)) return false;
  return a == nullptr || (a->id == b->id && a->isEnabled.value() == b->isEnabled.value() &&
                          a->maskTexture->texture->equals(*b->maskTexture->texture));
}

/// Compares everything that a file stores. Returns the name of the first node that differs, or an empty
/// string.
inline QString firstDifference(const LayerNodeList& a, const LayerNodeList& b) {
  if (a.size() != b.size()) return QStringLiteral("number of nodes");
  for (std::size_t i = 0; i < a.size(); ++i) {
    const QString name = a[i].name().value();
    const bool isCommonSame = a[i].id() == b[i].id() && name == b[i].name().value() &&
                              a[i].opacity().value() == b[i].opacity().value() &&
                              a[i].blendMode().value() == b[i].blendMode().value() &&
                              a[i].isVisible().value() == b[i].isVisible().value() &&
                              a[i].isLocked().value() == b[i].isLocked().value();
    if (!isCommonSame || (a[i].layer() == nullptr) != (b[i].layer() == nullptr)) return name;
    if (const auto layer = a[i].layer()) {
      const auto other = b[i].layer();
      if (!sameSurface(layer->texture.value(), other->texture.value()))
        return name + QStringLiteral(" pixels");
      if (!sameMask(layer->mask.value(), other->mask.value())) return name + QStringLiteral(" mask");
      continue;
    }
    const auto folder = a[i].folder();
    const auto other = b[i].folder();
    if (folder->isExpanded.value() != other->isExpanded.value()) return name;
    if (QString inside = firstDifference(folder->children.value(), other->children.value());
        !inside.isEmpty()) {
      return inside;
    }
  }
  return {};
}

inline QString firstDifference(const Document& a, const Document& b) {
  const bool same = a.name.value() == b.name.value() && a.canvasWidth.value() == b.canvasWidth.value() &&
                    a.canvasHeight.value() == b.canvasHeight.value() &&
                    a.colorMode.value() == b.colorMode.value() &&
                    a.selectedNodeID.value() == b.selectedNodeID.value() &&
                    a.foregroundColor.value().hexText() == b.foregroundColor.value().hexText() &&
                    a.backgroundColor.value().hexText() == b.backgroundColor.value().hexText();
  if (!same) return QStringLiteral("document");
  return firstDifference(a.rootNodes.value(), b.rootNodes.value());
}

inline QStringList filesIn(const QString& directory) {
  return QDir(directory).entryList(QDir::Files | QDir::Hidden);
}

inline QByteArray contentsOf(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace orvanel::testing
