// Keeps unsaved documents in journals, so that a crash, a kill or a power cut costs seconds of work, and
// gives back what processes that have ended left. The one class of this folder that the program talks to:
// made at the start unless the user has turned recovery off, and destroyed after the last document. Main
// thread only; whatever reads or writes files runs on a thread of low priority.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

#include "io/files/FileError.h"
#include "io/files/Progress.h"
#include "model/Document.h"
#include "model/Signal.h"
#include "recovery/Orphan.h"
#include "recovery/RecoverySettings.h"

namespace orvanel {

/// Whether changes reach the disk. While they don't, edits and saves go on as ever.
struct RecoveryStatus {
  enum class State { recording, suspended };
  State state = State::recording;
  /// Why it is suspended: a sentence for the user.
  QString reason = {};

  friend bool operator==(const RecoveryStatus&, const RecoveryStatus&) = default;
};

/// What all records since the start have cost.
struct RecoveryFigures {
  std::int64_t records = 0;
  std::int64_t bytesWritten = 0;
  std::chrono::nanoseconds backgroundWork{0};  ///< processor time
  std::chrono::nanoseconds longestHold{0};     ///< processor time of the main thread between two events
};

/// A document that was given back.
struct RestoredDocument {
  DocumentPtr document;
  /// What couldn't be had any more: a sentence for the user. Usually empty.
  QString loss;
};

class Recovery {
 public:
  explicit Recovery(RecoverySettings settings = {});
  /// Waits for a limited time for records that are being written. Journals of documents that are still
  /// followed stay, as those of a crash would.
  ~Recovery();
  Recovery(const Recovery&) = delete;
  Recovery& operator=(const Recovery&) = delete;

  // What was left. `done` runs later on the main thread, unless `receiver` has gone by then.

  using OrphansFound = std::function<void(const OrphanList&)>;
  /// Finds what processes that have ended left, newest first, to be offered to the user; what another process
  /// is restoring isn't among it. Removes orphans past their age or size limit.
  void findOrphans(QObject* receiver, OrphansFound done);
  using RestoreDone = std::function<void(const FileResult<RestoredDocument>&)>;
  using ProgressChanged = std::function<void(double)>;
  /// Makes the document anew: dirty, under its old name and path, without a history. It overwrites nothing.
  /// Only one process can restore an orphan. The orphan stays in the store until the document, once it is
  /// followed, has a record of its own or is saved or closed without saving; if the process ends before that,
  /// it is found again. Fails with a sentence for the user, and then the orphan stays as well;
  /// so it does if something couldn't be had.
  void restore(const QString& orphanID, MetalContext& context, QObject* receiver, RestoreDone done,
               ProgressChanged progressChanged = {}, CancellationPtr cancellation = nullptr);
  using DiscardFailed = std::function<void(const QString& reason)>;
  /// Removes the orphan, also one that can't be read. If that fails, `failed` is called with a sentence for
  /// the user.
  void discard(const QString& orphanID, QObject* receiver, DiscardFailed failed);

  // Open documents.

  /// Keeps a journal of the document while it is dirty, from its opening to its closing.
  void follow(const DocumentPtr& document);
  /// Its file holds the document: to be told after a save, once the document's flags are set. Its journal is
  /// removed, or begins anew if there have been changes since.
  void saved(const Document& document);
  /// The program has replaced the document's file, and the document isn't saved all the same: to be told once
  /// the document knows the new file.
  void fileReplaced(const Document& document);
  /// The document closes. Its journal is removed: it is clean, or the user doesn't want to save it.
  void closed(const Document& document);
  /// Writes pending changes now if that is quick, for a document that is about to lose its program: at the
  /// end of a session, for example.
  void recordNow();

  [[nodiscard]] const RecoveryStatus& status() const;
  /// Calls whenever the status has changed.
  [[nodiscard]] Subscription observeStatus(std::function<void(const RecoveryStatus&)> changed);
  [[nodiscard]] RecoveryFigures figures() const;

 private:
  class Impl;
  std::shared_ptr<Impl> impl_;
};

}  // namespace orvanel
