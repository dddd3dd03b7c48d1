#include "app/GlobalKeyHandler.h"

#include <QCoreApplication>
#include <QKeySequence>
#include <algorithm>
#include <array>
#include <utility>

#include "look/TranslatedName.h"
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

/// A key that acts whatever text it produces, under exactly these modifiers.
struct KeyRule {
  int key;
  std::uint32_t modifiers;
  KeyCommand command;
  const char* meaning;
  bool isForTransform = false;
};

// The first rule that holds decides.
constexpr std::array keyRules{
    KeyRule{keyCode::tab, 0, Post{notification::cycleNextTab}, QT_TRANSLATE_NOOP("keys", "Next tab")},
    KeyRule{keyCode::tab, modifier::shift, Post{notification::cyclePreviousTab},
            QT_TRANSLATE_NOOP("keys", "Previous tab")},
    KeyRule{keyCode::backspace, modifier::option, Post{notification::fillWithForegroundColor},
            QT_TRANSLATE_NOOP("keys", "Fill with the foreground color")},
    KeyRule{keyCode::backspace, modifier::command, Post{notification::fillWithBackgroundColor},
            QT_TRANSLATE_NOOP("keys", "Fill with the background color")},
    KeyRule{keyCode::escape, 0, Post{notification::freeTransformCancel},
            QT_TRANSLATE_NOOP("keys", "Cancel a free transform"), true},
    KeyRule{keyCode::returnKey, 0, Post{notification::freeTransformApply},
            QT_TRANSLATE_NOOP("keys", "Apply a free transform"), true},
    KeyRule{keyCode::enter, 0, Post{notification::freeTransformApply},
            QT_TRANSLATE_NOOP("keys", "Apply a free transform"), true},
    KeyRule{keyCode::escape, 0, Post{notification::deselect}, QT_TRANSLATE_NOOP("keys", "Deselect")},
    KeyRule{keyCode::backspace, 0, Post{notification::clearSelection}, QT_TRANSLATE_NOOP("keys", "Clear")},
    KeyRule{keyCode::forwardDelete, 0, Post{notification::clearSelection},
            QT_TRANSLATE_NOOP("keys", "Clear")},
};

/// A letter without modifiers. Those of tools need a document.
struct LetterRule {
  char16_t letter;
  KeyCommand command;
};

constexpr std::array letterRules{
    LetterRule{u'h', SelectTool{Tool::hand}},
    LetterRule{u'v', SelectTool{Tool::move}},
    LetterRule{u'm', ActivateSlot{Tool::rectangleSelect}},
    LetterRule{u'b', SelectTool{Tool::brush}},
    LetterRule{u'e', SelectTool{Tool::eraser}},
    LetterRule{u'i', SelectTool{Tool::eyedropper}},
    LetterRule{u'w', SelectTool{Tool::magicWand}},
    LetterRule{u'z', SelectTool{Tool::zoom}},
    LetterRule{u'x', Colors::swap},
    LetterRule{u'd', Colors::reset},
};

std::optional<KeyCommand> letterCommand(const EventRecord& event, bool hasDocument) {
  const QString characters = event.characters.toLower();
  if (characters.size() != 1) return std::nullopt;
  const auto rule = std::ranges::find(letterRules, characters.front().unicode(), &LetterRule::letter);
  if (rule == letterRules.end()) return std::nullopt;
  const bool needsDocument = !std::holds_alternative<Colors>(rule->command);
  return hasDocument || !needsDocument ? std::optional(rule->command) : std::nullopt;
}

QString keyText(const KeyRule& rule) {
  constexpr std::array<std::pair<int, Qt::Key>, 6> keys{{{keyCode::tab, Qt::Key_Tab},
                                                         {keyCode::backspace, Qt::Key_Backspace},
                                                         {keyCode::forwardDelete, Qt::Key_Delete},
                                                         {keyCode::escape, Qt::Key_Escape},
                                                         {keyCode::returnKey, Qt::Key_Return},
                                                         {keyCode::enter, Qt::Key_Enter}}};
  const auto* key = std::ranges::find(keys, rule.key, &std::pair<int, Qt::Key>::first);
  Qt::KeyboardModifiers modifiers;
  modifiers.setFlag(Qt::ShiftModifier, (rule.modifiers & modifier::shift) != 0);
  modifiers.setFlag(Qt::AltModifier, (rule.modifiers & modifier::option) != 0);
  modifiers.setFlag(Qt::ControlModifier, (rule.modifiers & modifier::command) != 0);
  return QKeySequence(key->second | modifiers).toString(QKeySequence::NativeText);
}

QString meaningOf(const KeyCommand& letterCommand) {
  if (const auto* select = std::get_if<SelectTool>(&letterCommand)) {
    return look::translatedName(displayName(select->tool));
  }
  if (std::holds_alternative<ActivateSlot>(letterCommand)) {
    return QCoreApplication::translate("keys", "Rectangle or ellipse selection");
  }
  return std::get<Colors>(letterCommand) == Colors::swap
             ? QCoreApplication::translate("keys", "Swap the foreground and background colors")
             : QCoreApplication::translate("keys", "Foreground black, background white");
}

}  // namespace

std::optional<KeyCommand> keyCommandOf(const EventRecord& event, const KeySituation& situation) {
  const std::uint32_t modifiers = modifiersOf(event);
  // While a name is edited, the menus' own commands for these keys would act on the document.
  if (situation.text == TextFocus::editing) {
    return modifiers == modifier::command ? textCommand(event) : std::nullopt;
  }
  if (situation.text == TextFocus::readOnly) return std::nullopt;

  const bool isTransforming = situation.currentTool == Tool::freeTransform;
  const auto rule = std::ranges::find_if(keyRules, [&](const KeyRule& candidate) {
    return candidate.key == event.key && candidate.modifiers == modifiers &&
           (isTransforming || !candidate.isForTransform);
  });
  if (rule != keyRules.end()) return rule->command;
  if (modifiers != 0) return std::nullopt;
  return letterCommand(event, situation.hasDocument);
}

std::vector<ListedKey> listedKeys() {
  std::vector<ListedKey> list;
  for (const LetterRule& rule : letterRules) {
    list.push_back({QString(QChar(rule.letter)).toUpper(), meaningOf(rule.command)});
  }
  for (const KeyRule& rule : keyRules) {
    const QString meaning = QCoreApplication::translate("keys", rule.meaning);
    const auto known = std::ranges::find(list, meaning, &ListedKey::meaning);
    if (known == list.end()) {
      list.push_back({keyText(rule), meaning});
    } else {
      known->key += QCoreApplication::translate("keys", " or ") + keyText(rule);
    }
  }
  return list;
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
