// A scroll bar that a list of rows shows through, so that a row's colour reaches the edge of its panel. Owned
// by the list; main thread only.
#pragma once

#include <QScrollBar>
#include <functional>

namespace orvanel {

class RowScrollBar : public QScrollBar {
  Q_OBJECT

 public:
  using PaintRows = std::function<void(QPainter&)>;

  /// It has the list's name, too.
  RowScrollBar(PaintRows paintRows, QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  PaintRows paintRows_;
};

}  // namespace orvanel
