// Draws thumbnails of layers, masks and channels in rows, and keeps them scaled for the screen, so that
// scrolling only copies pixels. Owned by what draws the rows; main thread only.
#pragma once

#include <QCache>
#include <QPixmap>
#include <QRect>
#include <utility>

#include "model/Layer.h"

class QPainter;

namespace orvanel {

class ThumbnailPainter {
 public:
  /// The largest place of the picture's shape in the middle of `box`; all of it without a picture.
  [[nodiscard]] static QRect fitted(const Thumbnail& picture, const QRect& box);

  /// Draws the picture in a thin frame. One that isn't made yet is a plain field.
  void paint(QPainter& painter, const Thumbnail& picture, const QRect& place);

 private:
  /// The picture and its width on the device.
  using Key = std::pair<qint64, int>;
  static constexpr int mostScaled = 256;
  QCache<Key, QPixmap> scaled_{mostScaled};
};

}  // namespace orvanel
