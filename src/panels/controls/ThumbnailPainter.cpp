#include "panels/controls/ThumbnailPainter.h"

#include <QPainter>

#include "look/Look.h"

namespace orvanel {

QRect ThumbnailPainter::fitted(const Thumbnail& picture, const QRect& box) {
  if (picture == nullptr || picture->isNull()) return box;
  const QSize size = picture->size().scaled(box.size(), Qt::KeepAspectRatio).expandedTo({1, 1});
  QRect place({}, size);
  place.moveCenter(box.center());
  return place;
}

void ThumbnailPainter::paint(QPainter& painter, const Thumbnail& picture, const QRect& place) {
  if (picture == nullptr || picture->isNull()) {
    painter.fillRect(place, look::color::bar);
  } else {
    const double scale = painter.device()->devicePixelRatioF();
    const QSize devicePixels = (QSizeF(place.size()) * scale).toSize();
    const Key key{picture->cacheKey(), devicePixels.width()};
    const QPixmap* pixmap = scaled_.object(key);
    if (pixmap == nullptr) {
      auto* made = new QPixmap(
          QPixmap::fromImage(picture->scaled(devicePixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)));
      made->setDevicePixelRatio(scale);
      scaled_.insert(key, made);
      pixmap = made;
    }
    painter.drawPixmap(place.topLeft(), *pixmap);
  }
  const double line = 1.0 / painter.device()->devicePixelRatioF();
  painter.setPen(QPen(look::color::border, line));
  painter.setBrush(Qt::NoBrush);
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.drawRect(QRectF(place).adjusted(line / 2, line / 2, -line / 2, -line / 2));
  painter.setRenderHint(QPainter::Antialiasing);
}

}  // namespace orvanel
