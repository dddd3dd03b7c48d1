// A tooltip that shows at once beside the widget under the pointer, so that an unfamiliar tool is named
// without waiting. Each window region owns one and attaches its widgets. Main thread only.
#pragma once

#include <QLabel>
#include <QObject>

namespace orvanel {

/// The tooltip's own small window; takes neither input nor the focus.
class ActiveTooltipView : public QLabel {
  Q_OBJECT

 public:
  explicit ActiveTooltipView(QWidget* owner);

  [[nodiscard]] QString tooltipText() const { return text(); }
  /// Shows the text at the right of `widget`, or at its left where the screen ends.
  void showBeside(const QWidget& widget, const QString& tooltipText);

 protected:
  void paintEvent(QPaintEvent* event) override;
};

class ActiveTooltip : public QObject {
  Q_OBJECT

 public:
  /// `owner` owns the tooltip and its window.
  explicit ActiveTooltip(QWidget* owner);

  /// From now on the widget's tooltip text appears as soon as the pointer or the keyboard reaches it.
  void attach(QWidget* widget);
  [[nodiscard]] const ActiveTooltipView& view() const { return *view_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  ActiveTooltipView* view_;
};

}  // namespace orvanel
