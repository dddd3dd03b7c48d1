// Helpers for canvas tests: zooming a document, a drawable without a window, and synthetic input events.
#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QWheelEvent>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <vector>

#include "canvas/MTKView.h"
#include "model/ModelSupport.h"
#include "model/edit/DocumentEdit.h"
#include "tools/PostCounter.h"

/// Lets failures print points. The framework finds it by name in the argument's namespace.
inline void PrintTo(const QPointF& point, std::ostream* stream) {  // NOLINT(readability-identifier-naming)
  *stream << '(' << point.x() << ", " << point.y() << ')';
}

namespace orvanel::test {

/// Zooms to an entry of `zoomTable`.
inline void zoomToIndex(Document& document, int index) {
  DocumentEdit edit(document, editKind::state);
  edit.set(&Document::customZoomLevel, std::nullopt, ViewProperty::zoom);
  edit.set(&Document::zoomLevelIndex, index, ViewProperty::zoom);
}

/// Zooms to a factor outside the table.
inline void zoomTo(Document& document, double zoom) {
  DocumentEdit edit(document, editKind::state);
  edit.set(&Document::customZoomLevel, zoom, ViewProperty::zoom);
}

/// Prevents the fit to the view when the document is first shown.
inline void keepInitialZoom(Document& document) {
  DocumentEdit edit(document, editKind::state);
  edit.set(&Document::needsInitialZoom, false, ViewProperty::needsInitialZoom);
}

/// A view without a window: a pixel buffer and a count of presented frames.
class PlainView : public MTKView {
 public:
  PlainView(int width, int height)
      : pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)),
        width_(width),
        height_(height) {}

  std::optional<Drawable> currentDrawable() override {
    if (isHidden) return std::nullopt;
    return Drawable{pixels.data(), static_cast<std::size_t>(width_), width_, height_};
  }
  [[nodiscard]] QSizeF drawableSize() const override { return {double(width_), double(height_)}; }
  [[nodiscard]] std::optional<double> backingScaleFactor() const override { return scale; }
  void present() override { ++presented; }
  void presentOnly(const std::vector<PixelRect>& changed) override {
    ++presented;
    presentedParts = changed;
  }

  [[nodiscard]] std::uint32_t at(int x, int y) const {
    return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                  static_cast<std::size_t>(x)];
  }

  std::vector<std::uint32_t> pixels;
  std::optional<double> scale = 1.0;
  bool isHidden = false;
  int presented = 0;
  /// The parts shown by the last frame that changed only some.
  std::vector<PixelRect> presentedParts;

 private:
  int width_;
  int height_;
};

inline void runEventLoop(int milliseconds) {
  QElapsedTimer timer;
  timer.start();
  while (timer.elapsed() < milliseconds) QApplication::processEvents(QEventLoop::AllEvents, 5);
}

/// Processes events until the condition holds; false after five seconds.
[[nodiscard]] inline bool runUntil(const std::function<bool()>& condition) {
  QElapsedTimer timer;
  timer.start();
  while (!condition() && timer.elapsed() < 5000) QApplication::processEvents(QEventLoop::AllEvents, 5);
  return condition();
}

inline void sendWheel(QWidget& view, QPointF at, QPoint pixelDelta, QPoint angleDelta,
                      Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                      Qt::ScrollPhase phase = Qt::NoScrollPhase) {
  QWheelEvent event(at, view.mapToGlobal(at), pixelDelta, angleDelta, Qt::NoButton, modifiers, phase, false);
  QApplication::sendEvent(&view, &event);
}

inline void sendGesture(QWidget& view, Qt::NativeGestureType type, double value, QPointF at) {
  QNativeGestureEvent event(type, QPointingDevice::primaryPointingDevice(), 2, at, at, view.mapToGlobal(at),
                            value, QPointF());
  QApplication::sendEvent(&view, &event);
}

inline void sendKey(QWidget& view, QEvent::Type type, int key,
                    Qt::KeyboardModifiers modifiers = Qt::NoModifier, bool isRepeat = false) {
  QKeyEvent event(type, key, modifiers, QString(), isRepeat);
  QApplication::sendEvent(&view, &event);
}

inline void pressKey(QWidget& view, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  sendKey(view, QEvent::KeyPress, key, modifiers);
  sendKey(view, QEvent::KeyRelease, key, modifiers);
}

inline void sendMouse(QWidget& view, QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::LeftButton,
                      Qt::MouseButtons buttons = Qt::LeftButton,
                      Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  QMouseEvent event(type, at, view.mapToGlobal(at), button, buttons, modifiers);
  QApplication::sendEvent(&view, &event);
}

inline void moveMouse(QWidget& view, QPointF at) {
  sendMouse(view, QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton);
}

inline void dragMouse(QWidget& view, QPointF from, QPointF to) {
  sendMouse(view, QEvent::MouseButtonPress, from);
  sendMouse(view, QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
  sendMouse(view, QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
}

}  // namespace orvanel::test
