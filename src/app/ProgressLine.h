// A thin progress line over the top of the canvas while files are read or written, with a cancel button below
// its right end. Main thread only.
#pragma once

#include <QPropertyNotifier>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <optional>

#include "app/FileActivity.h"
#include "panels/controls/SymbolButton.h"

namespace orvanel {

/// Escape presses the button while it has the focus.
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

  /// `activity` must outlive the line. The button is a sibling of the line, because the line ignores the
  /// mouse.
  ProgressLine(FileActivity& activity, QWidget* parent);

  /// Called when the user cancels.
  std::function<void()> onCancel;
  [[nodiscard]] CancelButton& cancelButton() { return *cancelButton_; }

  /// Leaves out a work whose progress is shown elsewhere.
  void leaveOut(std::optional<FileActivity::Work> work);
  /// Places line and button at the top of `area`, in coordinates of the parent.
  void placeIn(const QRect& area);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void activityChanged();
  void hideAll();

  FileActivity& activity_;
  std::optional<FileActivity::Work> leftOut_;
  CancelButton* cancelButton_;
  /// Short work shows neither; the button appears later than the line.
  QTimer lineDelay_;
  QTimer buttonDelay_;
  QPropertyNotifier notifier_;
};

}  // namespace orvanel
