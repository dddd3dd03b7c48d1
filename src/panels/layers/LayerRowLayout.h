// Where the parts of a row in the layer panel lie, for drawing them and for finding what the pointer is on.
// Values; main thread only.
#pragma once

#include <QRect>

#include "model/Layer.h"

namespace orvanel {

enum class LayerRowPart { none, visibility, disclosure, thumbnail, chain, maskThumbnail, icon, name, lock };

struct LayerRowLayout {
  /// `thumbnailSize` is the edge of thumbnails. Deep folders stop indenting before names run out of room.
  LayerRowLayout(const QRect& row, const LayerNode& node, int depth, int thumbnailSize);

  /// Tall enough for the thumbnails and for the buttons.
  [[nodiscard]] static int rowHeight(int thumbnailSize);
  /// Where the content of rows of this depth begins.
  [[nodiscard]] static int contentLeft(int depth);

  /// The part at a point; `name` for whatever is none of the others.
  [[nodiscard]] LayerRowPart partAt(const QPoint& point) const;
  /// Empty for a part that this row doesn't have.
  [[nodiscard]] QRect rectOf(LayerRowPart part) const;

  QRect row;
  QRect visibility;
  QRect disclosure;
  QRect thumbnail;
  QRect chain;
  QRect maskThumbnail;
  QRect icon;
  QRect name;
  QRect lock;
};

}  // namespace orvanel
