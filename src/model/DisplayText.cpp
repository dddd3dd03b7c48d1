#include "model/DisplayText.h"

namespace orvanel {

QString displayText(const QString& text) {
  constexpr qsizetype mostCharacters = 60;
  QString shown = text;
  if (text.size() > mostCharacters) {
    qsizetype head = mostCharacters / 2;
    qsizetype tail = text.size() - (mostCharacters - head - 1);
    // A surrogate pair stays together.
    if (text[head - 1].isHighSurrogate()) --head;
    if (text[tail].isLowSurrogate()) ++tail;
    shown = text.first(head) + QChar(0x2026) + text.sliced(tail);
  }
  for (QChar& character : shown) {
    if (character.isSpace()) {
      character = QChar::Space;
    } else if (!character.isPrint() && !character.isSurrogate()) {
      character = QChar::ReplacementCharacter;
    }
  }
  return shown;
}

}  // namespace orvanel
