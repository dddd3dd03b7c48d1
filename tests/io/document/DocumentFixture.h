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

/// A new surface, filled by `scribble`.
inline Texture scribbled(PixelFormat format, int width, int height, unsigned seed) {
  const Texture surface = MetalContext::shared().makeTexture(format, width, height);
  scribble(*surface, seed);
  return surface;
}

inline std::shared_ptr<LayerMask> scribbledMask(int width, int height, unsigned seed, bool isEnabled = true) {
  const Texture values = scribbled(PixelFormat::r16Float, width, height, seed);
  return std::make_shared<LayerMask>(QUuid::createUuid(), std::make_shared<MaskTexture>(values), isEnabled);
}

/// Layers, nested folders, masks on layers with and without pixels, and every property at a value other than
/// its default.
inline DocumentPtr richDocument(ColorMode mode, int width = 300, int height = 270) {
  const auto pixels = [&](unsigned seed) { return scribbled(layerPixelFormat(mode), width, height, seed); };
  const auto bottom = std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Bottom")}, pixels(1));
  const auto masked = std::make_shared<Layer>(NodeValues{.name = QString::fromUtf8("Masked é"),
                                                         .opacity = 0.3F,
                                                         .blendMode = BlendMode::exclusion,
                                                         .isVisible = false},
                                              pixels(2), scribbledMask(width, height, 3));
  const auto bare = std::make_shared<Layer>(NodeValues{.name = QStringLiteral("Bare"), .isLocked = true},
                                            nullptr, scribbledMask(width, height, 4, false));
  const auto inner = std::make_shared<LayerFolder>(
      NodeValues{.name = QStringLiteral("Inner"), .blendMode = BlendMode::darken}, LayerNodeList{bare});
  const auto outer = std::make_shared<LayerFolder>(
      NodeValues{.name = QStringLiteral("Outer"), .opacity = 0.5F}, LayerNodeList{masked, inner}, false);
  const auto empty = std::make_shared<LayerFolder>(QStringLiteral("Empty"));
  return Document::create({.name = QStringLiteral("Rich"),
                           .width = width,
                           .height = height,
                           .colorMode = mode,
                           .rootNodes = {bottom, outer, empty},
                           .selectedNodeID = masked->id,
                           .foregroundColor = {0.2F, 0.4F, 0.6F, 1.0F},
                           .backgroundColor = {1.0F, 0.0F, 0.0F, 1.0F}},
                          MetalContext::shared());
}

inline bool sameSurface(const ConstTexture& a, const ConstTexture& b) {
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
