// What a process that has ended left unsaved: a document in its journal, which may be one that can't be read.
// Plain values, any thread.
#pragma once

#include <QDateTime>
#include <QImage>
#include <QString>
#include <vector>

namespace orvanel {

struct Orphan {
  /// Names the journal within its store.
  QString id = {};
  /// Why it can't be restored, now or by this program: a sentence for the user. Usually empty; otherwise only
  /// the id, the time and the bytes are known.
  QString obstacle = {};
  /// Of the document.
  QString name = {};
  /// The file that the document was opened from or saved to; empty if it has none.
  QString path = {};
  /// Of the last record, or of the last change to the journal's file.
  QDateTime time = {};
  /// At most 192 x 96 pixels; null if none was at hand.
  QImage thumbnail = {};
  /// That removing it would give back.
  qint64 bytes = 0;
};

using OrphanList = std::vector<Orphan>;

}  // namespace orvanel
