// What single keys mean wherever the keyboard focus is: the decision alone, without side effects, so that it
// can be taken twice for one key. `KeyHandlerView` carries it out. Pure functions; any thread.
#pragma once

#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "model/Tool.h"
#include "tools/EventRecord.h"

namespace orvanel {

/// What has the keyboard focus, as far as text is concerned.
enum class TextFocus {
  none,
  editing,   ///< text that can be changed
  readOnly,  ///< text that can only be read
};

/// What the meaning of a key depends on.
struct KeySituation {
  TextFocus text = TextFocus::none;
  Tool currentTool = Tool::hand;
  bool hasDocument = false;
  bool isGestureOpen = false;
};

namespace keyCommand {

/// An operation of the text field's own.
enum class EditText { copy, cut, paste, selectAll };
struct Post {
  std::string_view notification;
  friend bool operator==(const Post&, const Post&) = default;
};
struct SelectTool {
  Tool tool = Tool::hand;
  friend bool operator==(const SelectTool&, const SelectTool&) = default;
};
/// Activates the tool's group, which steps to its next member if it is current.
struct ActivateSlot {
  Tool member = Tool::hand;
  friend bool operator==(const ActivateSlot&, const ActivateSlot&) = default;
};
/// Of the foreground and background colour. Without a document they do nothing.
enum class Colors { swap, reset };

}  // namespace keyCommand

using KeyCommand = std::variant<keyCommand::EditText, keyCommand::Post, keyCommand::SelectTool,
                                keyCommand::ActivateSlot, keyCommand::Colors>;

/// The command of a key that is pressed; none for a key that passes on. Modifiers are compared exactly, so
/// Caps Lock turns the single-key commands off.
[[nodiscard]] std::optional<KeyCommand> keyCommandOf(const EventRecord& event, const KeySituation& situation);

/// A key and what it does, in words.
struct ListedKey {
  QString key;
  QString meaning;
};
/// All keys that `keyCommandOf` knows where no text is edited.
[[nodiscard]] std::vector<ListedKey> listedKeys();

/// Whether the key steers a gesture while one is open, before it means anything else.
[[nodiscard]] bool isGestureKey(const EventRecord& event);

enum class ShortcutClaim {
  none,   ///< a menu shortcut of this key acts
  key,    ///< the key is delivered as such, even if it is a menu shortcut
  menus,  ///< a menu shortcut acts although the focus would like the key
};
/// Who gets a key that may be a menu shortcut: text being typed and single keys come before the menus.
[[nodiscard]] ShortcutClaim shortcutClaim(const EventRecord& event, const KeySituation& situation);

}  // namespace orvanel
