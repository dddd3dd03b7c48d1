// A thin line along the top of the canvas while files are read or written, and a button below its end that
// cancels the work. Takes no room in the layout. Main thread only.
#pragma once

#include <QPropertyNotifier>
#include <QTimer>
#include <QWidget>
#include <functional>

#include "app/FileActivity.h"
#include "panels/SymbolButton.h"

namespace orvanel {

/// Escape presses it as well while it has the keyboard.
class CancelButton : public SymbolButton {
  Q_OBJECT

 public:
  explicit CancelButton(QWidget* parent = nullptr);

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};

class ProgressLine : public QWidget {
  Q_OBJECT

 public:
  /// View points.
  static constexpr int thickness = 3;

  /// `activity` must outlive the line. The button becomes a child of `parent`, beside the line.
  ProgressLine(FileActivity& activity, QWidget* parent);

  /// Called when the user cancels.
  std::function<void()> onCancel;
  [[nodiscard]] CancelButton& cancelButton() { return *cancelButton_; }

  /// Lies along the upper edge of `area`, in coordinates of the parent.
  void placeIn(const QRect& area);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void activityChanged();
  void hideAll();

  FileActivity& activity_;
  CancelButton* cancelButton_;
  /// Work that is over at once shows nothing, and work that is over soon no button.
  QTimer lineDelay_;
  QTimer buttonDelay_;
  QPropertyNotifier notifier_;
};

}  // namespace orvanel
