#include "app/EventWait.h"

#include <QApplication>
#include <QEventLoop>
#include <QKeyEvent>

#include "app/ProgressLine.h"

namespace orvanel {

namespace {

/// Releases are not among these, so that a drag which has begun can end.
bool startsInteraction(const QEvent& event) {
  switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::ContextMenu:
    case QEvent::InputMethod:
    case QEvent::NativeGesture:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
      return true;
    case QEvent::Close:
      return event.spontaneous();
    default:
      return false;
  }
}

CancelButton* visibleCancelButton() {
  if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) return nullptr;
  for (const QWidget* window : QApplication::topLevelWidgets()) {
    for (CancelButton* button : window->findChildren<CancelButton*>()) {
      if (button->isVisible()) return button;
    }
  }
  return nullptr;
}

/// Blocks user input to everything but the cancel button while no alert is open.
class InputGate : public QObject {
 protected:
  bool eventFilter(QObject* receiver, QEvent* event) override {
    if (!startsInteraction(*event) || QApplication::activeModalWidget() != nullptr) return false;
    CancelButton* button = visibleCancelButton();
    // Windows pass their events on to widgets; shortcuts go to their owners directly.
    if (button == nullptr || receiver == button || receiver->isWindowType()) return false;
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
      button->click();
    }
    if (event->type() == QEvent::Close) event->ignore();
    return true;
  }
};

}  // namespace

void processEventsWhile(const std::function<bool()>& condition) {
  while (condition()) {
    if (visibleCancelButton() == nullptr) {
      QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
      continue;
    }
    InputGate gate;
    qApp->installEventFilter(&gate);
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
}

}  // namespace orvanel
