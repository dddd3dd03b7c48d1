#include "look/Symbol.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <algorithm>

#include "look/Look.h"

namespace orvanel::look {

namespace {

/// Small symbols keep lines of this width, in view points, or they would look faint.
constexpr double thinnestLine = 1.25;
/// The grid and the lines of the drawings.
constexpr double drawnEdge = 16.0;
constexpr double drawnLine = 1.5;

/// A symbol's drawing, with the lines that it needs at `edge` view points.
QByteArray drawingOf(const QString& name, double edge) {
  QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
  if (!file.open(QIODevice::ReadOnly)) return {};
  const double line = std::max(drawnLine, thinnestLine * drawnEdge / edge);
  return file.readAll().replace(QByteArrayLiteral("stroke-width=\"1.5\""),
                                "stroke-width=\"" + QByteArray::number(line) + '"');
}

QPixmap symbolPixmap(const QString& name, const QSize& devicePixels, double scale, const QColor& color) {
  const QString key = QStringLiteral("symbol/%1/%2x%3/%4/%5")
                          .arg(name)
                          .arg(devicePixels.width())
                          .arg(devicePixels.height())
                          .arg(scale)
                          .arg(color.rgba(), 8, 16);
  QPixmap pixmap;
  if (QPixmapCache::find(key, &pixmap)) return pixmap;
  QSvgRenderer renderer(drawingOf(name, devicePixels.width() / scale));
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
    return symbolPixmap(name_, size, 1.0, colorOf(mode));
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
  QPixmap pixmap = symbolPixmap(name, (box.size() * scale).toSize(), scale, color);
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
