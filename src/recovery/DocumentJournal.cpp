#include "recovery/DocumentJournal.h"

#include <mutex>
#include <utility>

#include "model/BackgroundCall.h"
#include "model/DisplayText.h"

namespace orvanel {
namespace {

/// Of the main thread, between two events: well below what a user can feel.
constexpr std::chrono::microseconds sliceOfMainThread{400};
constexpr int mostAttemptsNow = 3;

/// One piece after the other, while nothing is to be recorded.
void workInPieces(const std::shared_ptr<JournalLane>& lane, const std::shared_ptr<JournalWriter>& writer) {
  if (!writer->needsCopying() && !writer->needsCompacting()) return;
  lane->runWhenIdle([lane, writer] {
    writer->needsCopying() ? writer->copyPiece() : writer->compactPiece();
    workInPieces(lane, writer);
  });
}

QString noThread() {
  return QStringLiteral("Recovery data can't be written: the system allows no further threads.");
}

}  // namespace

struct DocumentJournal::Inbox {
  struct Letter {
    JournalWriter::Outcome outcome;
    bool dependsOnFile = false;
  };

  /// Main thread only; null once the journal has gone.
  DocumentJournal* owner = nullptr;
  std::mutex mutex;
  std::optional<Letter> letter;
};

DocumentJournal::DocumentJournal(const DocumentPtr& document, JournalFiles files, Surroundings surroundings)
    : document_(document),
      surroundings_(std::move(surroundings)),
      capture_(*document),
      files_(std::move(files)),
      writer_(std::make_shared<JournalWriter>(files_, surroundings_.settings.maximumBytes,
                                              surroundings_.turns, surroundings_.settings.toleratedWaste)),
      inbox_(std::make_shared<Inbox>()) {
  inbox_->owner = this;
  for (QTimer* timer : {&due_, &retry_, &nextSlice_}) timer->setSingleShot(true);
  QObject::connect(&due_, &QTimer::timeout, [this] { recordDue(); });
  QObject::connect(&retry_, &QTimer::timeout, [this] { recordDue(); });
  QObject::connect(&nextSlice_, &QTimer::timeout, [this] { gather(sliceOfMainThread); });
  QObject::connect(&watch_, &QTimer::timeout, [this] { watchBase(); });
  watch_.setInterval(2 * surroundings_.settings.interval);
  wasDirty_ = document->isDirty.value();
  subscription_ =
      document->changes().observe([this](const DocumentChanges& changes) { documentChanged(changes); });
  schedule();
}

DocumentJournal::~DocumentJournal() {
  inbox_->owner = nullptr;
}

void DocumentJournal::replace(ClaimedOrphan orphan) {
  orphan_ = std::make_shared<ClaimedOrphan>(std::move(orphan));
  // Before the first record.
  surroundings_.lane->run([orphan = orphan_, files = files_] { orphan->noteSuccessor(files); });
  beginRecord();
}

void DocumentJournal::documentChanged(const DocumentChanges& changes) {
  const DocumentPtr document = document_.lock();
  if (document == nullptr) return;
  const Keeping before = keeping();
  capture_.note(changes);
  const bool isDirty = document->isDirty.value();
  const bool doesSaveBegin = wasDirty_ && !isDirty;
  wasDirty_ = isDirty;
  isSaving_ = !isDirty && (isSaving_ || doesSaveBegin);
  // The save may take long, or never end. What it writes is to be recovered even if there are no more
  // changes.
  if (doesSaveBegin && hasRecord_ && capture_.hasChanges()) {
    beginRecord();
  } else {
    schedule();
  }
  if (keeping() != before) surroundings_.changed();
}

bool DocumentJournal::hasWork() const {
  const DocumentPtr document = document_.lock();
  return document != nullptr && (document->isDirty.value() || isSaving_);
}

DocumentJournal::Keeping DocumentJournal::keeping() const {
  if (!hasWork()) return Keeping::nothing;
  const bool isKept = hasRecord_ && status_.state == RecoveryStatus::State::recording;
  return isKept ? Keeping::work : Keeping::notNow;
}

QString DocumentJournal::name() const {
  const DocumentPtr document = document_.lock();
  return document != nullptr ? displayText(document->name.value()) : QString();
}

void DocumentJournal::schedule() {
  if (!hasWork()) {
    for (QTimer* timer : {&due_, &retry_, &nextSlice_}) timer->stop();
    return;
  }
  const bool isUnderWay = due_.isActive() || retry_.isActive() || nextSlice_.isActive();
  if (!isUnderWay && capture_.hasChanges()) due_.start(surroundings_.settings.interval);
}

void DocumentJournal::recordDue() {
  if (!hasWork()) return;
  if (!isWriting_) return beginRecord();
  switch (surroundings_.lane->wake()) {
    case JournalLane::Wake::noThread:
      return suspend(noThread());
    case JournalLane::Wake::started:
      // It is early to say anything of the disk.
      return due_.start(surroundings_.settings.interval);
    case JournalLane::Wake::wasAtWork:
      setStatus(
          {RecoveryStatus::State::suspended, QStringLiteral("The disk is slow to write recovery data.")});
      isLate_ = true;
  }
}

void DocumentJournal::beginRecord() {
  if (isWriting_) {
    isLate_ = true;
    return;
  }
  for (QTimer* timer : {&due_, &retry_, &nextSlice_}) timer->stop();
  isLate_ = false;
  gather(sliceOfMainThread);
}

void DocumentJournal::gather(std::chrono::nanoseconds budget) {
  if (!hasWork() || isWriting_) return;
  const Hold start = threadTime();
  std::optional<Capture> capture = capture_.advance(budget);
  if (capture) {
    send(std::move(*capture));
  } else {
    nextSlice_.start(0);
  }
  Hold& longest = surroundings_.figures.longestHold;
  longest = std::max(longest, threadTime() - start);
}

void DocumentJournal::send(Capture capture) {
  isWriting_ = true;
  isSendingEverything_ = capture.isComplete;
  auto shared = std::make_shared<const Capture>(std::move(capture));
  const bool hasThread = surroundings_.lane->run(
      [lane = surroundings_.lane, writer = writer_, capture = std::move(shared), inbox = inbox_]() mutable {
        Inbox::Letter letter{writer->write(*capture), writer->dependsOnFile()};
        capture.reset();
        workInPieces(lane, writer);
        {
          const std::lock_guard guard(inbox->mutex);
          inbox->letter = std::move(letter);
        }
        runOnMainThread([inbox = std::move(inbox)] {
          if (inbox->owner != nullptr) inbox->owner->takeOutcome();
        });
      });
  if (!hasThread) suspend(noThread());
}

void DocumentJournal::takeOutcome() {
  std::optional<Inbox::Letter> letter;
  {
    const std::lock_guard guard(inbox_->mutex);
    letter = std::exchange(inbox_->letter, std::nullopt);
  }
  if (!letter) return;
  isWriting_ = false;
  if (document_.expired()) return;
  const JournalWriter::Outcome& outcome = letter->outcome;
  switch (outcome.result) {
    case JournalWriter::Result::written:
      ++surroundings_.figures.records;
      surroundings_.figures.bytesWritten += outcome.bytesWritten;
      if (letter->dependsOnFile) {
        watch_.start();
      } else {
        watch_.stop();
      }
      return recorded();
    case JournalWriter::Result::needsEverything:
      capture_.forgetAll();
      if (isSendingEverything_) return suspend(QStringLiteral("Recovery data can't be written."));
      return beginRecord();
    case JournalWriter::Result::failed:
      capture_.forgetAll();
      return suspend(outcome.reason);
  }
}

void DocumentJournal::recorded() {
  hasRecord_ = true;
  if (orphan_) {
    surroundings_.lane->run([orphan = std::exchange(orphan_, nullptr)] { orphan->remove(); });
  }
  setStatus({});
  surroundings_.changed();
  if (isLate_) return beginRecord();
  // It has waited for this record.
  if (!capture_.hasChanges()) due_.stop();
  schedule();
}

void DocumentJournal::suspend(const QString& reason) {
  isLate_ = false;
  due_.stop();
  retry_.start(surroundings_.settings.retryInterval);
  setStatus({RecoveryStatus::State::suspended, reason});
}

void DocumentJournal::saved() {
  const DocumentPtr document = document_.lock();
  if (document == nullptr) return;
  isSaving_ = false;
  if (!document->isDirty.value()) return removeJournal();
  fileReplaced();
}

void DocumentJournal::fileReplaced() {
  // What the journal left to the file before may have gone with it.
  capture_.forgetAll();
  beginRecord();
}

void DocumentJournal::watchBase() {
  if (isWriting_ || !hasRecord_) return;
  surroundings_.lane->run([writer = writer_, inbox = inbox_] {
    const bool isIntact = writer->isBaseIntact();
    if (isIntact && writer->dependsOnFile()) return;
    runOnMainThread([inbox, isIntact] {
      if (inbox->owner == nullptr || inbox->owner->document_.expired()) return;
      // A copy has been made meanwhile.
      if (isIntact) return inbox->owner->watch_.stop();
      inbox->owner->capture_.forgetAll();
      inbox->owner->beginRecord();
    });
  });
}

void DocumentJournal::removeJournal() {
  for (QTimer* timer : {&due_, &retry_, &nextSlice_, &watch_}) timer->stop();
  isLate_ = false;
  isSaving_ = false;
  const bool isThereAny = hasRecord_ || isWriting_ || orphan_;
  if (isThereAny) {
    // Outcomes that are still to come are those of a journal that no longer matters.
    inbox_->owner = nullptr;
    inbox_ = std::make_shared<Inbox>();
    inbox_->owner = this;
    surroundings_.lane->run([writer = writer_, orphan = std::exchange(orphan_, nullptr)] {
      // In this order: without the new journal the old one would be offered again.
      if (orphan != nullptr) orphan->remove();
      writer->remove();
    });
    if (document_.lock() != nullptr) capture_.forgetAll();
  }
  isWriting_ = false;
  hasRecord_ = false;
  setStatus({});
  if (isThereAny) surroundings_.changed();
}

void DocumentJournal::beginNow() {
  if (!hasWork() || !capture_.hasChanges() || isWriting_) return;
  for (QTimer* timer : {&due_, &retry_, &nextSlice_}) timer->stop();
  gather(std::chrono::hours(1));
}

void DocumentJournal::finishNow(JournalLane::Clock::time_point deadline) {
  for (int attempt = 0; attempt < mostAttemptsNow; ++attempt) {
    beginNow();
    if (!surroundings_.lane->waitForWork(deadline)) return;
    takeOutcome();
  }
}

void DocumentJournal::setStatus(RecoveryStatus status) {
  if (status == status_) return;
  status_ = std::move(status);
  surroundings_.changed();
}

}  // namespace orvanel
