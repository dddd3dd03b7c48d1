// What a tool is told of the user's input: plain values in the editor's own vocabulary, so that tools and
// key filters know nothing of the toolkit. Made by the view that received the event; any thread.
#pragma once

#include <QString>
#include <cstdint>

namespace orvanel {

/// Modifier bits as commands test them. The physical Control key is the command modifier.
namespace modifier {
inline constexpr std::uint32_t capsLock = 0x10000;
inline constexpr std::uint32_t shift = 0x20000;
inline constexpr std::uint32_t option = 0x80000;
inline constexpr std::uint32_t command = 0x100000;
}  // namespace modifier

/// Codes of the keys that act without regard to what they type; other keys are told by their characters.
namespace keyCode {
inline constexpr int none = -1;
inline constexpr int returnKey = 36;
inline constexpr int tab = 48;
inline constexpr int space = 49;
inline constexpr int backspace = 51;
inline constexpr int escape = 53;
inline constexpr int enter = 76;
inline constexpr int forwardDelete = 117;
}  // namespace keyCode

struct EventRecord {
  std::uint32_t modifiers = 0;
  int key = keyCode::none;
  /// What the key types when no modifier but Shift is held.
  QString characters;
  /// The key is held down and repeats.
  bool isRepeat = false;
  int clickCount = 0;
};

}  // namespace orvanel
