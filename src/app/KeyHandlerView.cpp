#include "app/KeyHandlerView.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <algorithm>
#include <memory>
#include <ranges>
#include <vector>

#include "canvas/EventTranslation.h"
#include "tools/NotificationCenter.h"

namespace orvanel {
namespace {

std::vector<KeyHandlerView*>& views() {
  static std::vector<KeyHandlerView*> all;
  return all;
}

/// The text that is typed into: of controls that consist of several widgets, their line edit.
QWidget* textWidget() {
  QWidget* focus = QApplication::focusWidget();
  if (focus == nullptr) return nullptr;
  if (qobject_cast<QLineEdit*>(focus) != nullptr || qobject_cast<QTextEdit*>(focus) != nullptr ||
      qobject_cast<QPlainTextEdit*>(focus) != nullptr) {
    return focus;
  }
  auto* inner = focus->findChild<QLineEdit*>();
  return inner != nullptr && inner->focusProxy() == focus ? inner : nullptr;
}

const char* slotOf(keyCommand::EditText command) {
  switch (command) {
    case keyCommand::EditText::copy:
      return "copy";
    case keyCommand::EditText::cut:
      return "cut";
    case keyCommand::EditText::paste:
      return "paste";
    case keyCommand::EditText::selectAll:
      return "selectAll";
  }
  return "";
}

/// Keys that are shortcuts of the menus without a modifier, but mean something else in other windows.
bool isPlainMenuKey(const EventRecord& event) {
  const bool isModified = (event.modifiers & (modifier::command | modifier::option | modifier::super)) != 0;
  return !isModified && (event.key == keyCode::tab || event.key == keyCode::forwardDelete);
}

}  // namespace

/// Sees every key of the application before the widget that has the focus.
class KeyHandlerView::Filter : public QObject {
 public:
  static std::unique_ptr<Filter>& installed() {
    static std::unique_ptr<Filter> filter;
    return filter;
  }
  Filter() { QCoreApplication::instance()->installEventFilter(this); }

  bool eventFilter(QObject* watched, QEvent* event) override {
    const bool isShortcut = event->type() == QEvent::ShortcutOverride;
    if ((!isShortcut && event->type() != QEvent::KeyPress) || !isReceiver(watched)) return false;
    auto& key = *static_cast<QKeyEvent*>(event);
    const EventRecord record = eventTranslation::keyRecord(key);
    if (isShortcut) return decideShortcut(record, key);
    KeyHandlerView* view = activeView();
    return view != nullptr && view->handleGlobalKey(record);
  }

 private:
  /// The first widget that is offered a key; an unwanted key is offered to its parents in turn.
  static bool isReceiver(const QObject* watched) {
    const QWidget* focus = QApplication::focusWidget();
    return watched == (focus != nullptr ? focus : QApplication::activeWindow());
  }

  /// None while a menu, popup or dialog is open, the menu bar has the keyboard, or another window is active.
  static KeyHandlerView* activeView() {
    const bool isInMenuBar = qobject_cast<QMenuBar*>(QApplication::focusWidget()) != nullptr;
    if (isInMenuBar || QApplication::activePopupWidget() != nullptr ||
        QApplication::activeModalWidget() != nullptr) {
      return nullptr;
    }
    const auto found = std::ranges::find_if(
        views(), [](const KeyHandlerView* view) { return view->window() == QApplication::activeWindow(); });
    return found != views().end() ? *found : nullptr;
  }

  static bool decideShortcut(const EventRecord& record, QKeyEvent& key) {
    const KeyHandlerView* view = activeView();
    const ShortcutClaim claim = view != nullptr          ? shortcutClaim(record, view->situation())
                                : isPlainMenuKey(record) ? ShortcutClaim::key
                                                         : ShortcutClaim::none;
    key.setAccepted(claim == ShortcutClaim::key);
    return claim != ShortcutClaim::none;
  }
};

KeyHandlerView::KeyHandlerView(AppState& appState, QWidget* parent) : QWidget(parent), appState_(appState) {
  setFixedSize(0, 0);
  hide();
  views().push_back(this);
  std::unique_ptr<Filter>& filter = Filter::installed();
  if (filter == nullptr) filter = std::make_unique<Filter>();
}

KeyHandlerView::~KeyHandlerView() {
  std::erase(views(), this);
  if (views().empty()) Filter::installed() = nullptr;
}

int KeyHandlerView::viewsInWindows() {
  return static_cast<int>(views().size());
}

bool KeyHandlerView::isFilterInstalled() {
  return Filter::installed() != nullptr;
}

KeySituation KeyHandlerView::situation() const {
  const QWidget* text = textWidget();
  TextFocus focus = TextFocus::none;
  if (text != nullptr) {
    focus = text->property("readOnly").toBool() ? TextFocus::readOnly : TextFocus::editing;
  }
  return {.text = focus,
          .currentTool = appState_.toolState.currentTool(),
          .hasDocument = appState_.windowState.activeDocument() != nullptr,
          .isGestureOpen = isGestureOpen && isGestureOpen()};
}

bool KeyHandlerView::handleGlobalKey(const EventRecord& event) {
  const KeySituation now = situation();
  const bool isForGesture = now.text == TextFocus::none && isGestureKey(event) && offerToGesture;
  if (isForGesture && offerToGesture(event)) return true;
  const std::optional<KeyCommand> command = keyCommandOf(event, now);
  if (command) carryOut(*command);
  return command.has_value();
}

void KeyHandlerView::carryOut(const KeyCommand& command) {
  ToolState& tools = appState_.toolState;
  if (const auto* edit = std::get_if<keyCommand::EditText>(&command)) {
    QMetaObject::invokeMethod(textWidget(), slotOf(*edit));
  } else if (const auto* post = std::get_if<keyCommand::Post>(&command)) {
    NotificationCenter::standard().post(post->notification);
  } else if (const auto* select = std::get_if<keyCommand::SelectTool>(&command)) {
    tools.selectTool(select->tool);
  } else if (const auto* activate = std::get_if<keyCommand::ActivateSlot>(&command)) {
    const auto slot = std::ranges::find_if(toolSlots(), [activate](const ToolSlot& candidate) {
      return std::ranges::count(candidate.tools(), activate->member) > 0;
    });
    if (slot != toolSlots().end()) tools.activateSlot(*slot);
  } else if (const DocumentPtr document = appState_.windowState.activeDocument()) {
    if (std::get<keyCommand::Colors>(command) == keyCommand::Colors::swap) {
      document->swapColors();
    } else {
      document->resetColors();
    }
  }
}

}  // namespace orvanel
