// User input as tools see it: plain values in the editor's own vocabulary, so that tools and key filters
// don't depend on the toolkit. Made by the view that received the event; any thread.
#pragma once

#include <QString>
#include <cstdint>

namespace orvanel {

/// Modifier bits as tested by commands. The physical Control key is the command modifier. No
/// command has Super, so that what the desktop does with it stays the desktop's.
namespace modifier {
inline constexpr std::uint32_t capsLock = 0x10000;
inline constexpr std::uint32_t shift = 0x20000;
inline constexpr std::uint32_t super = 0x40000;
inline constexpr std::uint32_t option = 0x80000;
inline constexpr std::uint32_t command = 0x100000;
}  // namespace modifier

/// Codes of keys that act regardless of the text they produce; other keys are identified by their characters.
namespace keyCode {
inline constexpr int none = -1;
inline constexpr int returnKey = 36;
inline constexpr int tab = 48;
inline constexpr int space = 49;
inline constexpr int backspace = 51;
inline constexpr int escape = 53;
inline constexpr int enter = 76;
inline constexpr int forwardDelete = 117;
inline constexpr int leftArrow = 123;
inline constexpr int rightArrow = 124;
inline constexpr int downArrow = 125;
inline constexpr int upArrow = 126;
}  // namespace keyCode

struct EventRecord {
  std::uint32_t modifiers = 0;
  int key = keyCode::none;
  /// The text the key produces with no modifier but Shift.
  QString characters;
  /// Whether this is an auto-repeat of a held key.
  bool isRepeat = false;
  int clickCount = 0;
};

}  // namespace orvanel
