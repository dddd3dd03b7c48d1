#include "canvas/EventTranslation.h"

#include <QGuiApplication>

namespace orvanel::eventTranslation {
namespace {

/// The toolkit's units per click of an ordinary wheel.
constexpr double unitsPerClick = 120.0;
/// The Caps Lock bit of the native modifiers, on desktops that report it.
constexpr quint32 nativeLockMask = 0x2;

int translatedKey(const QKeyEvent& event) {
  switch (event.key()) {
    case Qt::Key_Return:
      return keyCode::returnKey;
    case Qt::Key_Enter:
      return keyCode::enter;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
      return keyCode::tab;
    case Qt::Key_Space:
      return keyCode::space;
    case Qt::Key_Backspace:
      return keyCode::backspace;
    case Qt::Key_Delete:
      return keyCode::forwardDelete;
    case Qt::Key_Escape:
      return keyCode::escape;
    case Qt::Key_Left:
      return keyCode::leftArrow;
    case Qt::Key_Right:
      return keyCode::rightArrow;
    case Qt::Key_Down:
      return keyCode::downArrow;
    case Qt::Key_Up:
      return keyCode::upArrow;
    default:
      return keyCode::none;
  }
}

/// With Control held the toolkit's text is a control character, so the text is derived from the key.
QString translatedCharacters(const QKeyEvent& event) {
  const int key = event.key();
  if (key < 0x20 || key > 0xFFFF) return {};
  const QChar character(static_cast<char16_t>(key));
  return (event.modifiers() & Qt::ShiftModifier) != 0 ? QString(character) : QString(character.toLower());
}

Qt::KeyboardModifier modifierOf(int key) {
  switch (key) {
    case Qt::Key_Shift:
      return Qt::ShiftModifier;
    case Qt::Key_Control:
      return Qt::ControlModifier;
    case Qt::Key_Alt:
      return Qt::AltModifier;
    case Qt::Key_Meta:
      return Qt::MetaModifier;
    default:
      return Qt::NoModifier;
  }
}

/// Only one axis of an ordinary wheel moves; some desktops swap the axes while Alt is held.
double mainDelta(QPointF delta) {
  return delta.y() != 0.0 ? delta.y() : delta.x();
}

}  // namespace

std::uint32_t modifierBits(Qt::KeyboardModifiers modifiers) {
  std::uint32_t bits = 0;
  if (modifiers.testFlag(Qt::ShiftModifier)) bits |= modifier::shift;
  if (modifiers.testFlag(Qt::ControlModifier)) bits |= modifier::command;
  if (modifiers.testFlag(Qt::MetaModifier)) bits |= modifier::super;
  if (modifiers.testFlag(Qt::AltModifier)) bits |= modifier::option;
  return bits;
}

bool isModifierKey(int key) {
  return modifierOf(key) != Qt::NoModifier || key == Qt::Key_CapsLock;
}

EventRecord keyRecord(const QKeyEvent& event) {
  Qt::KeyboardModifiers modifiers = event.modifiers();
  modifiers.setFlag(modifierOf(event.key()), event.type() == QEvent::KeyPress);
  EventRecord record;
  record.modifiers = modifierBits(modifiers);
  if ((event.nativeModifiers() & nativeLockMask) != 0) record.modifiers |= modifier::capsLock;
  record.key = translatedKey(event);
  record.characters = translatedCharacters(event);
  record.isRepeat = event.isAutoRepeat();
  return record;
}

EventRecord mouseRecord(const QMouseEvent& event) {
  EventRecord record;
  record.modifiers = modifierBits(event.modifiers());
  if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonRelease) {
    record.clickCount = 1;
  }
  if (event.type() == QEvent::MouseButtonDblClick) record.clickCount = 2;
  return record;
}

WheelRecord wheelRecord(const QWheelEvent& event) {
  WheelRecord record;
  // X11's pixel deltas count wheel clicks in driver-specific units and are unreliable.
  record.hasPreciseDeltas =
      !event.pixelDelta().isNull() && QGuiApplication::platformName() != QLatin1String("xcb");
  record.delta =
      record.hasPreciseDeltas ? QPointF(event.pixelDelta()) : QPointF(event.angleDelta()) / unitsPerClick;
  record.phase = event.phase();
  record.modifiers = modifierBits(event.modifiers());
  if ((record.modifiers & (modifier::option | modifier::command)) != 0) {
    // The wheel zooms, whatever way the toolkit has turned it.
    record.delta = {0.0, mainDelta(record.delta)};
  } else if ((record.modifiers & modifier::shift) != 0 && record.delta.x() == 0.0) {
    // As is usual on desktops, Shift makes an ordinary wheel scroll horizontally.
    record.delta = {record.delta.y(), 0.0};
  }
  return record;
}

}  // namespace orvanel::eventTranslation
