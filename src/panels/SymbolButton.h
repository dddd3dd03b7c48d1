// A small flat button that shows one symbol, with a soft round backing under the pointer. Main thread only.
#pragma once

#include <QAbstractButton>
#include <QIcon>

namespace orvanel {

class SymbolButton : public QAbstractButton {
  Q_OBJECT

 public:
  /// `symbolSize` is the symbol's visible edge in view points.
  SymbolButton(const QString& symbolName, double symbolSize, QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QIcon icon_;
  double symbolSize_;
};

}  // namespace orvanel
