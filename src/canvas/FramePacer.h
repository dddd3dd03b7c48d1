// Decides when a canvas draws a frame: at most once a screen refresh, and only after something that may have
// changed the picture. Owned by the canvas view; main thread only.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

namespace orvanel {

/// Frames are asked for by the document's changes and by input on the canvas. While nobody asks, nothing wakes
/// the program.
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

 private:
  void runFrame();

  std::function<void()> frame_;
  QTimer frameTimer_;
  QElapsedTimer sinceLastFrame_;
  qint64 refreshInterval_ = 16;  ///< milliseconds
  bool isRunning_ = false;
};

}  // namespace orvanel
