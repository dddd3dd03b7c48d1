#include "app/GlobalKeyHandler.h"

#include <gtest/gtest.h>

#include "tools/NotificationCenter.h"

namespace orvanel {
namespace {

using keyCommand::ActivateSlot;
using keyCommand::Colors;
using keyCommand::EditText;
using keyCommand::Post;
using keyCommand::SelectTool;

EventRecord key(int code, std::uint32_t modifiers = 0) {
  EventRecord record;
  record.key = code;
  record.modifiers = modifiers;
  return record;
}

EventRecord letter(const char* characters, std::uint32_t modifiers = 0) {
  EventRecord record;
  record.characters = QString::fromUtf8(characters);
  record.modifiers = modifiers;
  return record;
}

constexpr KeySituation onCanvas{.text = TextFocus::none, .currentTool = Tool::move, .hasDocument = true};
constexpr KeySituation transforming{
    .text = TextFocus::none, .currentTool = Tool::freeTransform, .hasDocument = true};
constexpr KeySituation nothingOpen{.text = TextFocus::none, .currentTool = Tool::move, .hasDocument = false};
constexpr KeySituation typing{.text = TextFocus::editing, .currentTool = Tool::move, .hasDocument = true};
constexpr KeySituation reading{.text = TextFocus::readOnly, .currentTool = Tool::move, .hasDocument = true};

TEST(GlobalKeyHandlerTest, TextThatIsTypedComesFirst) {
  for (const EventRecord& event :
       {letter("h"), letter("H", modifier::shift), key(keyCode::backspace), key(keyCode::escape),
        key(keyCode::tab), key(keyCode::backspace, modifier::option),
        key(keyCode::backspace, modifier::command), letter("z", modifier::command),
        letter("c", modifier::command | modifier::shift)}) {
    EXPECT_EQ(keyCommandOf(event, typing), std::nullopt) << event.key;
  }
  EXPECT_EQ(keyCommandOf(letter("c", modifier::command), typing), KeyCommand(EditText::copy));
  EXPECT_EQ(keyCommandOf(letter("X", modifier::command), typing), KeyCommand(EditText::cut));
  EXPECT_EQ(keyCommandOf(letter("v", modifier::command), typing), KeyCommand(EditText::paste));
  EXPECT_EQ(keyCommandOf(letter("a", modifier::command), typing), KeyCommand(EditText::selectAll));
}

TEST(GlobalKeyHandlerTest, TextThatIsOnlyReadKeepsAllItsKeys) {
  for (const EventRecord& event : {letter("h"), letter("c", modifier::command), key(keyCode::escape),
                                   key(keyCode::tab), key(keyCode::backspace)}) {
    EXPECT_EQ(keyCommandOf(event, reading), std::nullopt);
  }
}

TEST(GlobalKeyHandlerTest, TabStepsThroughTheTabs) {
  EXPECT_EQ(keyCommandOf(key(keyCode::tab), onCanvas), KeyCommand(Post{notification::cycleNextTab}));
  EXPECT_EQ(keyCommandOf(key(keyCode::tab, modifier::shift), onCanvas),
            KeyCommand(Post{notification::cyclePreviousTab}));
  EXPECT_EQ(keyCommandOf(key(keyCode::tab, modifier::command), onCanvas), std::nullopt);
  EXPECT_EQ(keyCommandOf(key(keyCode::tab, modifier::option), onCanvas), std::nullopt);
}

TEST(GlobalKeyHandlerTest, DeleteClearsOrFillsByItsModifier) {
  EXPECT_EQ(keyCommandOf(key(keyCode::backspace), onCanvas), KeyCommand(Post{notification::clearSelection}));
  EXPECT_EQ(keyCommandOf(key(keyCode::forwardDelete), onCanvas),
            KeyCommand(Post{notification::clearSelection}));
  EXPECT_EQ(keyCommandOf(key(keyCode::backspace, modifier::option), onCanvas),
            KeyCommand(Post{notification::fillWithForegroundColor}));
  EXPECT_EQ(keyCommandOf(key(keyCode::backspace, modifier::command), onCanvas),
            KeyCommand(Post{notification::fillWithBackgroundColor}));
  for (const std::uint32_t other :
       {modifier::shift, modifier::shift | modifier::option, modifier::option | modifier::command,
        modifier::capsLock, modifier::capsLock | modifier::option}) {
    EXPECT_EQ(keyCommandOf(key(keyCode::backspace, other), onCanvas), std::nullopt) << other;
  }
}

TEST(GlobalKeyHandlerTest, EscapeDeselectsUnlessItCancelsATransform) {
  EXPECT_EQ(keyCommandOf(key(keyCode::escape), onCanvas), KeyCommand(Post{notification::deselect}));
  EXPECT_EQ(keyCommandOf(key(keyCode::escape), transforming),
            KeyCommand(Post{notification::freeTransformCancel}));
  EXPECT_EQ(keyCommandOf(key(keyCode::escape, modifier::shift), transforming), std::nullopt);
}

TEST(GlobalKeyHandlerTest, ReturnAppliesATransformAndMeansNothingElse) {
  for (const int code : {keyCode::returnKey, keyCode::enter}) {
    EXPECT_EQ(keyCommandOf(key(code), transforming), KeyCommand(Post{notification::freeTransformApply}));
    EXPECT_EQ(keyCommandOf(key(code), onCanvas), std::nullopt);
  }
}

TEST(GlobalKeyHandlerTest, ATransformLeavesOtherKeysAlone) {
  EXPECT_EQ(keyCommandOf(key(keyCode::backspace), transforming),
            KeyCommand(Post{notification::clearSelection}));
  EXPECT_EQ(keyCommandOf(letter("h"), transforming), KeyCommand(SelectTool{Tool::hand}));
}

TEST(GlobalKeyHandlerTest, LettersSelectTools) {
  const std::pair<const char*, Tool> tools[] = {
      {"h", Tool::hand},       {"v", Tool::move},      {"b", Tool::brush}, {"e", Tool::eraser},
      {"i", Tool::eyedropper}, {"w", Tool::magicWand}, {"z", Tool::zoom}};
  for (const auto& [characters, tool] : tools) {
    EXPECT_EQ(keyCommandOf(letter(characters), onCanvas), KeyCommand(SelectTool{tool})) << characters;
    EXPECT_EQ(keyCommandOf(letter(characters), nothingOpen), std::nullopt) << characters;
  }
  EXPECT_EQ(keyCommandOf(letter("m"), onCanvas), KeyCommand(ActivateSlot{Tool::rectangleSelect}));
  EXPECT_EQ(keyCommandOf(letter("m"), nothingOpen), std::nullopt);
  EXPECT_EQ(keyCommandOf(letter("H"), onCanvas), KeyCommand(SelectTool{Tool::hand}));
}

TEST(GlobalKeyHandlerTest, ColourKeysAreConsumedEvenWithNothingOpen) {
  for (const KeySituation& situation : {onCanvas, nothingOpen}) {
    EXPECT_EQ(keyCommandOf(letter("x"), situation), KeyCommand(Colors::swap));
    EXPECT_EQ(keyCommandOf(letter("d"), situation), KeyCommand(Colors::reset));
  }
}

TEST(GlobalKeyHandlerTest, OtherKeysPass) {
  for (const EventRecord& event :
       {letter("l"), letter("q"), letter("1"), letter(""), letter("hv"), key(keyCode::space)}) {
    EXPECT_EQ(keyCommandOf(event, onCanvas), std::nullopt) << event.characters.toStdString();
  }
}

TEST(GlobalKeyHandlerTest, AnyModifierTurnsTheLettersOff) {
  for (const std::uint32_t modifiers :
       {modifier::capsLock, modifier::shift, modifier::super, modifier::option, modifier::command}) {
    for (const char* characters : {"h", "m", "x", "d"}) {
      EXPECT_EQ(keyCommandOf(letter(characters, modifiers), onCanvas), std::nullopt) << modifiers;
    }
  }
}

TEST(GlobalKeyHandlerTest, BitsOfDevicesAreIgnored) {
  EXPECT_EQ(keyCommandOf(letter("h", 0x0108U), onCanvas), KeyCommand(SelectTool{Tool::hand}));
}

TEST(GlobalKeyHandlerTest, AGestureIsSteeredByItsOwnKeys) {
  for (const int code : {keyCode::escape, keyCode::backspace, keyCode::forwardDelete, keyCode::returnKey,
                         keyCode::enter, keyCode::space}) {
    EXPECT_TRUE(isGestureKey(key(code)));
  }
  EXPECT_FALSE(isGestureKey(key(keyCode::tab)));
  EXPECT_FALSE(isGestureKey(letter("h")));
}

TEST(GlobalKeyHandlerTest, SingleKeysComeBeforeTheMenus) {
  EXPECT_EQ(shortcutClaim(key(keyCode::tab), onCanvas), ShortcutClaim::key);
  EXPECT_EQ(shortcutClaim(key(keyCode::forwardDelete), onCanvas), ShortcutClaim::key);
  EXPECT_EQ(shortcutClaim(key(keyCode::forwardDelete, modifier::capsLock), onCanvas), ShortcutClaim::none);
  EXPECT_EQ(shortcutClaim(letter("z", modifier::command), onCanvas), ShortcutClaim::none);
  EXPECT_EQ(shortcutClaim(key(keyCode::none), onCanvas), ShortcutClaim::none);
}

TEST(GlobalKeyHandlerTest, AnOpenGestureKeepsItsKeysFromTheMenus) {
  KeySituation drawing = onCanvas;
  drawing.isGestureOpen = true;
  EXPECT_EQ(shortcutClaim(key(keyCode::forwardDelete, modifier::capsLock), drawing), ShortcutClaim::key);
  EXPECT_EQ(shortcutClaim(key(keyCode::returnKey), drawing), ShortcutClaim::key);
  EXPECT_EQ(shortcutClaim(key(keyCode::forwardDelete, modifier::command), drawing), ShortcutClaim::none);
  EXPECT_EQ(shortcutClaim(letter("z", modifier::command), drawing), ShortcutClaim::none);
}

TEST(GlobalKeyHandlerTest, TextKeepsItsKeysFromTheMenusExceptForTheirOwn) {
  EXPECT_EQ(shortcutClaim(letter("h"), typing), ShortcutClaim::key);
  EXPECT_EQ(shortcutClaim(key(keyCode::forwardDelete), typing), ShortcutClaim::key);
  EXPECT_EQ(shortcutClaim(key(keyCode::tab, modifier::shift), typing), ShortcutClaim::key);
  EXPECT_EQ(shortcutClaim(letter("c", modifier::command), typing), ShortcutClaim::key);
  EXPECT_EQ(shortcutClaim(letter("c", modifier::command | modifier::capsLock), typing), ShortcutClaim::key);
  EXPECT_EQ(shortcutClaim(letter("z", modifier::command), typing), ShortcutClaim::menus);
  EXPECT_EQ(shortcutClaim(letter("z", modifier::command | modifier::shift), typing), ShortcutClaim::menus);
  EXPECT_EQ(shortcutClaim(key(keyCode::none), typing), ShortcutClaim::none) << "a function key";
}

}  // namespace
}  // namespace orvanel
