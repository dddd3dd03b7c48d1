// One line of plain text that is shortened in the middle where the room ends; the tooltip then holds all of
// it. Main thread only.
#pragma once

#include <QLabel>

namespace orvanel {

class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  explicit ElidedLabel(QWidget* parent = nullptr);

  /// What is visible of the text.
  [[nodiscard]] QString shownText() const;

  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace orvanel
