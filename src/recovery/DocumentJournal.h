// Keeps the journal of one open document: decides when to record, gathers what has changed between events,
// and hands it to the writer's thread. Owned by `Recovery`; main thread only.
#pragma once

#include <QTimer>
#include <memory>
#include <optional>

#include "recovery/DocumentCapture.h"
#include "recovery/JournalLane.h"
#include "recovery/JournalWriter.h"
#include "recovery/Recovery.h"
#include "recovery/RecoveryStore.h"

namespace orvanel {

class DocumentJournal {
 public:
  /// What it shares with the other journals; all outlive it.
  struct Surroundings {
    const RecoverySettings& settings;
    std::shared_ptr<JournalTurns> turns;
    std::shared_ptr<JournalLane> lane;
    RecoveryFigures& figures;
    /// Called when the status, or what the journal keeps, has changed.
    std::function<void()> changed;
  };

  DocumentJournal(const DocumentPtr& document, JournalFiles files, Surroundings surroundings);
  ~DocumentJournal();
  DocumentJournal(const DocumentJournal&) = delete;
  DocumentJournal& operator=(const DocumentJournal&) = delete;

  /// The document was restored from this orphan, which goes once the document has a record of its own.
  void replace(ClaimedOrphan orphan);
  void saved();
  /// The journal must not refer to the file of before.
  void fileReplaced();
  void closed() { removeJournal(); }
  /// Gathers what has changed, and hands it to the lane, unless the lane is busy.
  void beginNow();
  /// Blocks until changes are written, writing has failed, or the time is up.
  void finishNow(JournalLane::Clock::time_point deadline);

  [[nodiscard]] const std::shared_ptr<JournalLane>& lane() const { return surroundings_.lane; }
  [[nodiscard]] const RecoveryStatus& status() const { return status_; }
  enum class Keeping {
    nothing,  ///< there is nothing to keep
    work,     ///< but for the last seconds
    notNow,   ///< there is work without a record, or without one of the last seconds
  };
  [[nodiscard]] Keeping keeping() const;
  /// Of the document, for the user.
  [[nodiscard]] QString name() const;

 private:
  struct Inbox;
  using Hold = std::chrono::nanoseconds;

  void documentChanged(const DocumentChanges& changes);
  [[nodiscard]] bool hasWork() const;
  void schedule();
  void recordDue();
  void beginRecord();
  void gather(std::chrono::nanoseconds budget);
  void send(Capture capture);
  void takeOutcome();
  void recorded();
  void suspend(const QString& reason);
  void watchBase();
  void removeJournal();
  void setStatus(RecoveryStatus status);

  std::weak_ptr<Document> document_;
  Surroundings surroundings_;
  DocumentCapture capture_;
  const JournalFiles files_;
  std::shared_ptr<JournalWriter> writer_;
  /// Where the writer's thread leaves its outcomes.
  std::shared_ptr<Inbox> inbox_;
  /// That the document was restored from; shared with the lane.
  std::shared_ptr<const ClaimedOrphan> orphan_;
  RecoveryStatus status_;
  bool hasRecord_ = false;
  bool wasDirty_ = false;
  /// A save has begun, and hasn't ended yet: what it writes isn't safe anywhere else.
  bool isSaving_ = false;
  bool isWriting_ = false;
  /// A record came due while another was being written.
  bool isLate_ = false;
  bool isSendingEverything_ = false;
  QTimer due_;
  QTimer retry_;
  QTimer nextSlice_;
  QTimer watch_;
  ChangeStream::Subscription subscription_;
};

}  // namespace orvanel
