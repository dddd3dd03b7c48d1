// One text of the status bar. Its parts, which two spaces separate, stand at fixed places, so that none moves
// when the number before it gets another digit. Owned by the bar; main thread only.
#pragma once

#include <QWidget>

namespace orvanel {

class StatusText : public QWidget {
  Q_OBJECT

 public:
  /// `widestPart` is the widest text that a part usually has; `name` says what the text tells.
  StatusText(const QString& name, const QString& widestPart, QWidget* parent);

  [[nodiscard]] const QString& text() const { return text_; }
  void setText(const QString& text);
  void setColor(const QColor& color);

  /// The width of this many parts.
  [[nodiscard]] int widthOfParts(int count) const;
  /// The width that the text needs.
  [[nodiscard]] int neededWidth() const;
  /// Whether the text is to be seen in full.
  [[nodiscard]] bool isWhole() const { return !isHidden() && width() >= neededWidth(); }

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  [[nodiscard]] QStringList parts() const;

  QString name_;
  QString widestPart_;
  QString text_;
  QColor color_;
};

}  // namespace orvanel
