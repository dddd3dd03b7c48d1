#include "look/Symbol.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include "look/Look.h"

namespace orvanel::look {

namespace {

QPixmap symbolPixmap(const QString& name, const QSize& devicePixels, const QColor& color) {
  const QString key = QStringLiteral("symbol/%1/%2x%3/%4")
                          .arg(name)
                          .arg(devicePixels.width())
                          .arg(devicePixels.height())
                          .arg(color.rgba(), 8, 16);
  QPixmap pixmap;
  if (QPixmapCache::find(key, &pixmap)) return pixmap;
  QSvgRenderer renderer(QStringLiteral(":/icons/%1.svg").arg(name));
  if (!renderer.isValid()) return {};
  pixmap = QPixmap(devicePixels);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  renderer.render(&painter);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(pixmap.rect(), color);
  painter.end();
  QPixmapCache::insert(key, pixmap);
  return pixmap;
}

class SymbolIconEngine : public QIconEngine {
 public:
  SymbolIconEngine(QString name, IconPlace place) : name_(std::move(name)), place_(place) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State /*state*/) override {
    paintSymbol(*painter, name_, rect, colorOf(mode));
  }
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/) override {
    return symbolPixmap(name_, size, colorOf(mode));
  }
  [[nodiscard]] QIconEngine* clone() const override { return new SymbolIconEngine(name_, place_); }

 private:
  [[nodiscard]] QColor colorOf(QIcon::Mode mode) const {
    if (mode == QIcon::Disabled) return color::disabledText;
    // A menu's highlighted item is active; an active button only has the focus.
    const bool isHighlighted =
        mode == QIcon::Selected || (mode == QIcon::Active && place_ == IconPlace::menu);
    return isHighlighted ? color::onAccent : color::symbol;
  }

  QString name_;
  IconPlace place_;
};

}  // namespace

void paintSymbol(QPainter& painter, const QString& name, const QRectF& box, const QColor& color) {
  const double scale = painter.device()->devicePixelRatioF();
  QPixmap pixmap = symbolPixmap(name, (box.size() * scale).toSize(), color);
  if (pixmap.isNull()) return;
  pixmap.setDevicePixelRatio(scale);
  // On the device's grid, or every line of the symbol would be blurred.
  const QPointF origin = painter.deviceTransform().map(box.topLeft());
  const QPointF aligned(std::round(origin.x()), std::round(origin.y()));
  painter.drawPixmap(painter.deviceTransform().inverted().map(aligned), pixmap);
}

QIcon symbolIcon(const QString& name, IconPlace place) {
  return QIcon(new SymbolIconEngine(name, place));  // owned by the icon
}

}  // namespace orvanel::look
