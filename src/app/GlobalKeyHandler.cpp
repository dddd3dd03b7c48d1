#include "app/GlobalKeyHandler.h"

#include <algorithm>
#include <array>
#include <utility>

#include "tools/NotificationCenter.h"

namespace orvanel {
namespace {

using keyCommand::ActivateSlot;
using keyCommand::Colors;
using keyCommand::EditText;
using keyCommand::Post;
using keyCommand::SelectTool;

/// The bits below these belong to devices.
constexpr std::uint32_t modifierMask = 0xFFFF0000U;

std::uint32_t modifiersOf(const EventRecord& event) {
  return event.modifiers & modifierMask;
}

std::uint32_t modifiersWithoutLock(const EventRecord& event) {
  return modifiersOf(event) & ~modifier::capsLock;
}

std::optional<KeyCommand> textCommand(const EventRecord& event) {
  constexpr std::array<std::pair<QLatin1Char, EditText>, 4> keys{{{QLatin1Char('c'), EditText::copy},
                                                                  {QLatin1Char('x'), EditText::cut},
                                                                  {QLatin1Char('v'), EditText::paste},
                                                                  {QLatin1Char('a'), EditText::selectAll}}};
  const QString characters = event.characters.toLower();
  for (const auto& [key, command] : keys) {
    if (characters == key) return command;
  }
  return std::nullopt;
}

/// A key that fills, under the only modifier that it may have.
std::optional<KeyCommand> modifiedDelete(const EventRecord& event) {
  if (event.key != keyCode::backspace) return std::nullopt;
  switch (modifiersOf(event)) {
    case modifier::option:
      return Post{notification::fillWithForegroundColor};
    case modifier::command:
      return Post{notification::fillWithBackgroundColor};
    default:
      return std::nullopt;
  }
}

std::optional<KeyCommand> transformCommand(const EventRecord& event) {
  switch (event.key) {
    case keyCode::escape:
      return Post{notification::freeTransformCancel};
    case keyCode::returnKey:
    case keyCode::enter:
      return Post{notification::freeTransformApply};
    default:
      return std::nullopt;
  }
}

std::optional<KeyCommand> letterCommand(const EventRecord& event, bool hasDocument) {
  const QString characters = event.characters.toLower();
  if (characters.size() != 1) return std::nullopt;
  const auto withDocument = [hasDocument](const KeyCommand& command) {
    return hasDocument ? std::optional(command) : std::nullopt;
  };
  switch (characters.front().unicode()) {
    case u'h':
      return withDocument(SelectTool{Tool::hand});
    case u'v':
      return withDocument(SelectTool{Tool::move});
    case u'm':
      return withDocument(ActivateSlot{Tool::rectangleSelect});
    case u'b':
      return withDocument(SelectTool{Tool::brush});
    case u'e':
      return withDocument(SelectTool{Tool::eraser});
    case u'i':
      return withDocument(SelectTool{Tool::eyedropper});
    case u'w':
      return withDocument(SelectTool{Tool::magicWand});
    case u'z':
      return withDocument(SelectTool{Tool::zoom});
    case u'x':
      return Colors::swap;
    case u'd':
      return Colors::reset;
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<KeyCommand> keyCommandOf(const EventRecord& event, const KeySituation& situation) {
  const std::uint32_t modifiers = modifiersOf(event);
  // While a name is edited, the menus' own commands for these keys would act on the document.
  if (situation.text == TextFocus::editing) {
    return modifiers == modifier::command ? textCommand(event) : std::nullopt;
  }
  if (situation.text == TextFocus::readOnly) return std::nullopt;

  if (event.key == keyCode::tab && modifiers == 0) return Post{notification::cycleNextTab};
  if (event.key == keyCode::tab && modifiers == modifier::shift) return Post{notification::cyclePreviousTab};
  if (modifiers != 0) return modifiedDelete(event);

  if (situation.currentTool == Tool::freeTransform) {
    if (const auto command = transformCommand(event)) return command;
  }
  if (event.key == keyCode::escape) return Post{notification::deselect};
  if (event.key == keyCode::backspace || event.key == keyCode::forwardDelete) {
    return Post{notification::clearSelection};
  }
  return letterCommand(event, situation.hasDocument);
}

bool isGestureKey(const EventRecord& event) {
  constexpr std::array keys{keyCode::escape,    keyCode::backspace, keyCode::forwardDelete,
                            keyCode::returnKey, keyCode::enter,     keyCode::space};
  return std::ranges::find(keys, event.key) != keys.end();
}

ShortcutClaim shortcutClaim(const EventRecord& event, const KeySituation& situation) {
  const std::uint32_t modifiers = modifiersWithoutLock(event);
  const bool isPlain = (modifiers & (modifier::command | modifier::option | modifier::super)) == 0;
  if (situation.text != TextFocus::none) {
    const bool isText = event.key != keyCode::none || !event.characters.isEmpty();
    const bool isTextCommand = modifiers == modifier::command && textCommand(event).has_value();
    if (isTextCommand || (isPlain && isText)) return ShortcutClaim::key;
    return isPlain ? ShortcutClaim::none : ShortcutClaim::menus;
  }
  const bool isForGesture = isPlain && situation.isGestureOpen && isGestureKey(event);
  if (isForGesture || keyCommandOf(event, situation).has_value()) return ShortcutClaim::key;
  return ShortcutClaim::none;
}

}  // namespace orvanel
