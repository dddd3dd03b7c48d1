#include "canvas/FramePacer.h"

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>
#include <chrono>
#include <utility>

namespace orvanel {
namespace {

constexpr std::chrono::milliseconds heartbeatInterval{200};

/// Events after which the picture may be another one.
bool mayChangePicture(QEvent::Type type) {
  switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::NativeGesture:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
    case QEvent::Drop:
    case QEvent::MetaCall:
    case QEvent::UpdateRequest:
      return true;
    default:
      return false;
  }
}

}  // namespace

FramePacer::FramePacer(std::function<void()> frame) : frame_(std::move(frame)) {
  frameTimer_.setSingleShot(true);
  frameTimer_.setTimerType(Qt::PreciseTimer);
  heartbeat_.setTimerType(Qt::CoarseTimer);
  heartbeat_.setInterval(heartbeatInterval);
  QObject::connect(&frameTimer_, &QTimer::timeout, this, [this] { runFrame(); });
  QObject::connect(&heartbeat_, &QTimer::timeout, this, [this] { request(); });
}

void FramePacer::setRefreshRate(double hertz) {
  constexpr double slowest = 24.0;
  constexpr double fastest = 240.0;
  refreshInterval_ = static_cast<qint64>(1000.0 / std::clamp(hertz, slowest, fastest));
}

void FramePacer::start() {
  if (isRunning_) return;
  isRunning_ = true;
  QCoreApplication::instance()->installEventFilter(this);
  heartbeat_.start();
  request();
}

void FramePacer::stop() {
  isRunning_ = false;
  if (QCoreApplication* application = QCoreApplication::instance()) application->removeEventFilter(this);
  heartbeat_.stop();
  frameTimer_.stop();
}

void FramePacer::request() {
  if (!isRunning_ || frameTimer_.isActive()) return;
  const qint64 elapsed = sinceLastFrame_.isValid() ? sinceLastFrame_.elapsed() : refreshInterval_;
  frameTimer_.start(static_cast<int>(std::max<qint64>(refreshInterval_ - elapsed, 0)));
}

void FramePacer::runFrame() {
  sinceLastFrame_.start();
  frame_();
}

bool FramePacer::eventFilter(QObject* watched, QEvent* event) {
  if (mayChangePicture(event->type())) request();
  return QObject::eventFilter(watched, event);
}

}  // namespace orvanel
