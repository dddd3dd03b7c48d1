// Decides when a canvas draws a frame: at most once per screen refresh, and only after something that may
// have changed the picture, or slowly for an animation. Owned by the canvas view; main thread only.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <functional>

namespace orvanel {

/// The document's changes and input on the canvas request frames. Without requests, nothing wakes the
/// program.
class FramePacer : public QObject {
 public:
  explicit FramePacer(std::function<void()> frame);

  /// Maximum number of frames per second.
  void setRefreshRate(double hertz);
  /// Starts drawing frames on request. Does nothing if already started.
  void start();
  void stop();
  [[nodiscard]] bool isRunning() const { return isRunning_; }

  /// Requests one frame as soon as the refresh rate allows. Does nothing while stopped.
  void request();
  /// Requests a frame of an animation, unless one comes sooner for another reason.
  void requestAnimation();

 private:
  void runFrame();

  std::function<void()> frame_;
  QTimer frameTimer_;
  QTimer animationTimer_;
  QElapsedTimer sinceLastFrame_;
  qint64 refreshInterval_ = 16;  ///< milliseconds
  bool isRunning_ = false;
};

}  // namespace orvanel
