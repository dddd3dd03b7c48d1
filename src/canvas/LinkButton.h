// A button in the middle of a sentence that looks like a link. Owned by its parent; main thread only.
#pragma once

#include <QAbstractButton>

namespace orvanel {

class LinkButton : public QAbstractButton {
 public:
  explicit LinkButton(const QString& text, QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;

 private:
  /// A focus that the window gave on its own isn't marked.
  bool isFocusShown_ = false;
};

}  // namespace orvanel
