// A border that makes what it surrounds look set into the panel: dark above, light below. Main thread only.
#pragma once

#include <QColor>
#include <QRectF>

class QPainter;
class QWidget;

namespace orvanel {

struct InsetBorder {
  QColor topColor;
  QColor bottomColor;
  double width = 1.0;

  /// The border of the program's wells, a device pixel wide for `widget`.
  [[nodiscard]] static InsetBorder ofWells(const QWidget& widget);
  /// Paints within the edges of `box`.
  void paint(QPainter& painter, const QRectF& box) const;
};

}  // namespace orvanel
