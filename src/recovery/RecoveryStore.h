// The folder in which the processes of one user keep their journals, private to that user. A journal whose
// process lives is locked and belongs to that process alone; the others are orphans. Any thread.
#pragma once

#include <optional>

#include "io/files/FileError.h"
#include "recovery/JournalFiles.h"
#include "recovery/JournalReader.h"
#include "recovery/Orphan.h"
#include "recovery/RecoverySettings.h"

namespace orvanel {

/// An orphan that nobody else can restore or discard meanwhile. Destroying it leaves the orphan in the store.
class ClaimedOrphan {
 public:
  ClaimedOrphan(JournalFiles files, Descriptor lock) : files_(std::move(files)), lock_(std::move(lock)) {}

  [[nodiscard]] Described<RestoredContents> restore(const MetalContext& context,
                                                    const Progress& progress) const;
  /// Once the journal with these files stands, this is no longer an orphan, even if the process ends before
  /// it is removed.
  void noteSuccessor(const JournalFiles& successor) const;
  /// Removes it from the store, as far as that is possible.
  void remove() const { static_cast<void>(files_.removeAll()); }

 private:
  JournalFiles files_;
  Descriptor lock_;
};

class RecoveryStore {
 public:
  explicit RecoveryStore(RecoverySettings settings) : settings_(std::move(settings)) {}

  /// Newest first, those that can't be read among them, but not those whose documents are in later journals.
  /// Changes nothing in the store.
  [[nodiscard]] OrphanList orphans() const;
  /// The orphans for the user to decide about, newest first, and notes that they have been offered. Before,
  /// removes what was offered too long ago or is more than the settings allow, and what unfinished work left.
  [[nodiscard]] OrphanList offer() const;
  /// Fails with a sentence for the user if there is no such orphan, or somebody else has claimed it.
  [[nodiscard]] Described<ClaimedOrphan> claim(const QString& orphanID) const;
  /// Removes the orphan, also one that can't be opened. Fails with a sentence for the user.
  [[nodiscard]] Described<void> discard(const QString& orphanID) const;
  /// The names of a new journal's files. Makes nothing: who writes them makes the folder, too.
  [[nodiscard]] JournalFiles newJournal() const;

 private:
  [[nodiscard]] bool isTooOld(const QDateTime& time) const;
  void removeRemains() const;
  [[nodiscard]] bool hasSuccessor(const JournalFiles& files) const;
  void removeOffered(OrphanList& orphans) const;

  RecoverySettings settings_;
};

}  // namespace orvanel
