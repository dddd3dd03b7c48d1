#include "app/AccessLetters.h"

#include <QAction>
#include <QMenu>
#include <QSet>

namespace orvanel {

namespace {

/// Where the letter stands that nobody has yet: at the beginning of a word, if possible. -1 if there is none.
qsizetype freeLetter(const QString& text, const QSet<QChar>& taken) {
  const auto isFree = [&](qsizetype place) {
    return text[place].isLetterOrNumber() && !taken.contains(text[place].toLower());
  };
  for (const bool onlyBeginnings : {true, false}) {
    for (qsizetype place = 0; place < text.size(); ++place) {
      const bool isBeginning = place == 0 || text[place - 1].isSpace();
      if (isFree(place) && (isBeginning || !onlyBeginnings)) return place;
    }
  }
  return -1;
}

}  // namespace

void giveAccessLetters(QMenu& menu) {
  QSet<QChar> taken;
  for (QAction* item : menu.actions()) {
    if (item->menu() != nullptr) giveAccessLetters(*item->menu());
    // Items with data stand for files.
    if (item->isSeparator() || item->data().isValid()) continue;
    QString text = item->text().remove(u'&');
    const qsizetype place = freeLetter(text, taken);
    if (place < 0) continue;
    taken.insert(text[place].toLower());
    item->setText(text.insert(place, u'&'));
  }
}

}  // namespace orvanel
