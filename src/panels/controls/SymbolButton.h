// A small flat button with a symbol, which shows that the pointer is over it, that it is pressed, that it has
// the focus, and that it is disabled. Main thread only.
#pragma once

#include <QAbstractButton>

namespace orvanel {

class SymbolButton : public QAbstractButton {
  Q_OBJECT

 public:
  /// `symbolSize` is the edge of the symbol in view points. The button has a margin around it.
  SymbolButton(QString symbolName, double symbolSize, QWidget* parent = nullptr);

  [[nodiscard]] const QString& symbolName() const { return symbolName_; }
  void setSymbolName(const QString& name);

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString symbolName_;
  double symbolSize_;
};

}  // namespace orvanel
