// A small flat button with a symbol and a rounded hover background. Main thread only.
#pragma once

#include <QAbstractButton>
#include <QIcon>

namespace orvanel {

class SymbolButton : public QAbstractButton {
  Q_OBJECT

 public:
  /// `symbolSize` is the visible size of the symbol in view points.
  SymbolButton(const QString& symbolName, double symbolSize, QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QIcon icon_;
  double symbolSize_;
};

}  // namespace orvanel
