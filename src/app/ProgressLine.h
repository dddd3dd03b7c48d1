// A thin line along the top of the canvas while files are read or written. Takes no input and no room.
// Main thread only.
#pragma once

#include <QPropertyNotifier>
#include <QTimer>
#include <QWidget>

#include "app/FileActivity.h"

namespace orvanel {

class ProgressLine : public QWidget {
  Q_OBJECT

 public:
  static constexpr int thickness = 3;

  /// `activity` must outlive the line.
  explicit ProgressLine(FileActivity& activity, QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void activityChanged();

  FileActivity& activity_;
  /// Work that is over at once shows nothing.
  QTimer appearance_;
  QPropertyNotifier notifier_;
};

}  // namespace orvanel
