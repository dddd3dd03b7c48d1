#include "canvas/FramePacer.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace orvanel {
namespace {

/// Slow enough to cost next to nothing, fast enough for dashes to be seen moving.
constexpr std::chrono::milliseconds animationInterval{66};

}  // namespace

FramePacer::FramePacer(std::function<void()> frame) : frame_(std::move(frame)) {
  frameTimer_.setSingleShot(true);
  frameTimer_.setTimerType(Qt::PreciseTimer);
  QObject::connect(&frameTimer_, &QTimer::timeout, this, [this] { runFrame(); });
  animationTimer_.setSingleShot(true);
  animationTimer_.setInterval(animationInterval);
  QObject::connect(&animationTimer_, &QTimer::timeout, this, [this] { request(); });
}

void FramePacer::setRefreshRate(double hertz) {
  constexpr double slowest = 24.0;
  constexpr double fastest = 240.0;
  refreshInterval_ = static_cast<qint64>(1000.0 / std::clamp(hertz, slowest, fastest));
}

void FramePacer::start() {
  if (isRunning_) return;
  isRunning_ = true;
  request();
}

void FramePacer::stop() {
  isRunning_ = false;
  frameTimer_.stop();
  animationTimer_.stop();
}

void FramePacer::request() {
  if (!isRunning_ || frameTimer_.isActive()) return;
  const qint64 elapsed = sinceLastFrame_.isValid() ? sinceLastFrame_.elapsed() : refreshInterval_;
  frameTimer_.start(static_cast<int>(std::max<qint64>(refreshInterval_ - elapsed, 0)));
}

void FramePacer::requestAnimation() {
  if (isRunning_ && !animationTimer_.isActive()) animationTimer_.start();
}

void FramePacer::runFrame() {
  sinceLastFrame_.start();
  frame_();
}

}  // namespace orvanel
