// Decides when a canvas draws a frame: at most once a screen refresh, and only after something that may have
// changed the picture. Owned by the canvas view; main thread only.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

namespace orvanel {

/// Whoever knows of a change calls `request`. Beside that a frame is looked at after every input event and
/// repaint of the application, and by a slow heartbeat, because a property deep in the tree tells nobody
/// that it changed. Looking at an unchanged frame costs microseconds, so an idle editor sleeps.
class FramePacer : public QObject {
 public:
  explicit FramePacer(std::function<void()> frame);

  /// Frames a second at most.
  void setRefreshRate(double hertz);
  /// From now on frames come when asked for. Starting twice is starting once.
  void start();
  void stop();
  [[nodiscard]] bool isRunning() const { return isRunning_; }

  /// Asks for one frame as soon as the refresh rate allows; nothing while stopped.
  void request();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void runFrame();

  std::function<void()> frame_;
  QTimer frameTimer_;
  QTimer heartbeat_;
  QElapsedTimer sinceLastFrame_;
  qint64 refreshInterval_ = 16;  ///< milliseconds
  bool isRunning_ = false;
};

}  // namespace orvanel
