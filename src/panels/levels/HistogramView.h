// The histogram of the levels panel, on a logarithmic scale, with lines at the black and the white point.
// Owned by the panel; main thread only.
#pragma once

#include <QCoreApplication>
#include <QPropertyNotifier>
#include <QRectF>
#include <QWidget>
#include <vector>

#include "panels/levels/LevelsModel.h"

namespace orvanel {

class HistogramView : public QWidget {
  Q_DECLARE_TR_FUNCTIONS(orvanel::HistogramView)

 public:
  /// `model` must outlive the view.
  HistogramView(LevelsModel& model, QWidget* parent);

  /// The height of each bar as a part of the tallest: the logarithm of its count.
  [[nodiscard]] static std::vector<double> barHeights(const LevelsHistogram& histogram);

  /// Where the bars and the lines are, in view coordinates: a point p stands at p / 255 of its width.
  [[nodiscard]] QRectF area() const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void paintBars(QPainter& painter) const;
  void paintPoint(QPainter& painter, float point, const QColor& color) const;

  LevelsModel& model_;
  std::vector<QPropertyNotifier> notifiers_;
};

}  // namespace orvanel
