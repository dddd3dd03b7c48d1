#include "panels/layers/LayerRowLayout.h"

#include <algorithm>
#include <array>

#include "look/Look.h"

namespace orvanel {

namespace {

using namespace look;

constexpr int indentation = space::wide;
constexpr int deepestIndentation = 6;
constexpr int chevronWidth = size::symbol;
constexpr int folderWidth = size::control;
/// Leaves room for the brackets around a mask.
constexpr int chainWidth = size::symbol + space::tight;

QRect centeredIn(const QRect& row, int left, int width, int height) {
  return {left, row.top() + (row.height() - height) / 2, width, height};
}

}  // namespace

LayerRowLayout::LayerRowLayout(const QRect& rowRect, const LayerNode& node, int depth, int thumbnailSize)
    : row(rowRect) {
  visibility = centeredIn(row, row.left() + space::tight, size::control, size::control);
  lock =
      centeredIn(row, row.left() + row.width() - space::tight - size::control, size::control, size::control);
  int left = row.left() + contentLeft(depth);
  const auto next = [&](int width, int height) {
    const QRect place = centeredIn(row, left, width, height);
    left += width;
    return place;
  };
  const std::shared_ptr<Layer> layer = node.layer();
  if (layer == nullptr) {
    disclosure = next(chevronWidth, size::control);
    icon = next(folderWidth, size::control);
  } else {
    left += chevronWidth;
    thumbnail = next(thumbnailSize, thumbnailSize);
    if (layer->mask.value() != nullptr) {
      chain = next(chainWidth, size::control);
      maskThumbnail = next(thumbnailSize, thumbnailSize);
    }
  }
  left += space::normal;
  name = centeredIn(row, left, std::max(lock.left() - left, 0), row.height());
}

int LayerRowLayout::rowHeight(int thumbnailSize) {
  return std::max(thumbnailSize, size::control) + 2 * space::tight;
}

int LayerRowLayout::contentLeft(int depth) {
  return space::tight + size::control + std::min(depth, deepestIndentation) * indentation;
}

QRect LayerRowLayout::rectOf(LayerRowPart part) const {
  switch (part) {
    case LayerRowPart::none:
      return {};
    case LayerRowPart::visibility:
      return visibility;
    case LayerRowPart::disclosure:
      return disclosure;
    case LayerRowPart::thumbnail:
      return thumbnail;
    case LayerRowPart::chain:
      return chain;
    case LayerRowPart::maskThumbnail:
      return maskThumbnail;
    case LayerRowPart::icon:
      return icon;
    case LayerRowPart::name:
      return name;
    case LayerRowPart::lock:
      return lock;
  }
  return {};
}

LayerRowPart LayerRowLayout::partAt(const QPoint& point) const {
  constexpr std::array parts{LayerRowPart::visibility,    LayerRowPart::lock,      LayerRowPart::chain,
                             LayerRowPart::maskThumbnail, LayerRowPart::thumbnail, LayerRowPart::disclosure,
                             LayerRowPart::icon};
  const auto hit =
      std::ranges::find_if(parts, [&](LayerRowPart part) { return rectOf(part).contains(point); });
  return hit != parts.end() ? *hit : LayerRowPart::name;
}

}  // namespace orvanel
