#include "recovery/Recovery.h"

#include <QPointer>
#include <QTimer>
#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "io/files/BackgroundJob.h"
#include "raster/FatalFault.h"
#include "recovery/DocumentJournal.h"
#include "recovery/JournalLane.h"
#include "recovery/RecoveryStore.h"

namespace orvanel {
namespace {

/// What the user should know of unsaved work if the program ends now. Null if there is none.
const char* lastWordsFor(bool isAnyKept, const QStringList& notKept) {
  constexpr const char* everything =
      "Unsaved work up to the last seconds is kept, and offered at the next start.";
  if (notKept.isEmpty()) return isAnyKept ? everything : nullptr;
  // Whoever reads them does so when nothing else can be relied on, so that they are never freed. There are
  // few.
  static std::set<std::string> said;
  const std::string names = notKept.join(QStringLiteral(", ")).toStdString();
  const std::string sentence = isAnyKept
                                   ? std::string(everything) + " Not all of it is kept of " + names + "."
                                   : "Not all unsaved work is kept of " + names + ".";
  return said.insert(sentence).first->c_str();
}

}  // namespace

class Recovery::Impl {
 public:
  explicit Impl(RecoverySettings chosen) : settings(std::move(chosen)), store(settings) {
    QObject::connect(&wakeAgain, &QTimer::timeout, [this] { wakeAll(); });
  }
  ~Impl() { setLastWords(nullptr); }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  [[nodiscard]] DocumentJournal* journalOf(const Document& document) {
    const auto found = journals.find(document.id);
    return found != journals.end() ? found->second.get() : nullptr;
  }
  [[nodiscard]] std::shared_ptr<JournalLane> newLane() {
    std::erase_if(lanes, [](const auto& lane) { return lane.expired(); });
    auto lane = std::make_shared<JournalLane>(turns);
    lanes.emplace_back(lane);
    return lane;
  }
  /// What the lane has been given is done as soon as a thread can be started for it, whoever holds it until
  /// then.
  void seeToIt(const std::shared_ptr<JournalLane>& lane) {
    if (lane->wake() != JournalLane::Wake::noThread) return;
    waiting.insert(lane);
    if (!wakeAgain.isActive()) wakeAgain.start(settings.retryInterval);
  }
  void wakeAll() {
    std::erase_if(waiting, [](const auto& lane) { return lane->wake() != JournalLane::Wake::noThread; });
    if (waiting.empty()) wakeAgain.stop();
  }
  [[nodiscard]] JournalLane::Clock::time_point endOfPatience() const {
    return JournalLane::Clock::now() + settings.patience;
  }
  void waitForWork(JournalLane::Clock::time_point deadline) const {
    for (const auto& each : lanes) {
      if (const auto lane = each.lock()) static_cast<void>(lane->waitForWork(deadline));
    }
  }
  void journalsChanged() {
    bool isAnyKept = false;
    QStringList notKept;
    for (const auto& [documentID, journal] : journals) {
      const DocumentJournal::Keeping keeping = journal->keeping();
      isAnyKept = isAnyKept || keeping == DocumentJournal::Keeping::work;
      if (keeping == DocumentJournal::Keeping::notNow) notKept << u'"' + journal->name() + u'"';
    }
    setLastWords(lastWordsFor(isAnyKept, notKept));
    RecoveryStatus now;
    for (const auto& [documentID, journal] : journals) {
      if (now.state == RecoveryStatus::State::recording) now = journal->status();
    }
    if (std::exchange(status, now) != now) statusChanged.emit(now);
  }

  RecoverySettings settings;
  RecoveryStore store;
  RecoveryFigures figures;
  RecoveryStatus status;
  Signal<const RecoveryStatus&> statusChanged;
  std::shared_ptr<JournalTurns> turns = std::make_shared<JournalTurns>();
  /// Of what concerns the store as a whole.
  std::shared_ptr<JournalLane> storeLane = std::make_shared<JournalLane>(turns);
  /// All that may be at work, also for documents that have been closed.
  std::vector<std::weak_ptr<JournalLane>> lanes{storeLane};
  /// Those that have work and couldn't start a thread.
  std::set<std::shared_ptr<JournalLane>> waiting;
  QTimer wakeAgain;
  std::map<QUuid, std::unique_ptr<DocumentJournal>> journals;
  /// Orphans whose documents aren't followed yet, by the document.
  std::map<QUuid, ClaimedOrphan> restored;
};

Recovery::Recovery(RecoverySettings settings) : impl_(std::make_shared<Impl>(std::move(settings))) {}

Recovery::~Recovery() {
  const auto deadline = impl_->endOfPatience();
  impl_->waitForWork(deadline);
  impl_->turns->end();
  for (const auto& each : impl_->lanes) {
    const auto lane = each.lock();
    if (lane == nullptr || lane->waitForRest(deadline)) continue;
    // Whoever ends the program waits for background work as long as it likes.
    runInBackground([lane] { static_cast<void>(lane->waitForRest(JournalLane::Clock::time_point::max())); });
  }
}

void Recovery::findOrphans(QObject* receiver, OrphansFound done) {
  impl_->storeLane->run([store = impl_->store, guard = QPointer(receiver), done = std::move(done)]() mutable {
    runOnMainThread([guard = std::move(guard), done = std::move(done), found = store.offer()] {
      if (!guard.isNull()) done(found);
    });
  });
  impl_->seeToIt(impl_->storeLane);
}

void Recovery::restore(const QString& orphanID, MetalContext& context, QObject* receiver, RestoreDone done,
                       ProgressChanged progressChanged, CancellationPtr cancellation) {
  struct Job {
    std::weak_ptr<Impl> recovery;
    RecoveryStore store;
    MetalContext& context;
    QPointer<QObject> receiver;
    RestoreDone done;
    Progress progress;
    std::optional<ClaimedOrphan> orphan;

    void finish(Described<RestoredContents> contents) {
      const std::shared_ptr<Impl> owner = recovery.lock();
      if (receiver.isNull() || owner == nullptr) return;
      if (!contents) {
        return done(
            tl::unexpected(FileError{DocumentIOError::loadFailed, contents.error(), progress.isCancelled()}));
      }
      const DocumentPtr document = buildRestored(*contents, context);
      // What is missing may come back, with a disk that wasn't there: then the orphan stays to be offered
      // again.
      if (contents->loss.isEmpty()) owner->restored.emplace(document->id, std::move(*orphan));
      done(RestoredDocument{document, contents->loss});
    }
  };
  auto job = std::make_shared<Job>(
      Job{impl_, impl_->store, context, receiver, std::move(done),
          progressOnMainThread(receiver, std::move(progressChanged), std::move(cancellation)), std::nullopt});
  runInBackground([job = std::move(job), orphanID]() mutable {
    Described<RestoredContents> contents = because(QString());
    if (auto orphan = job->store.claim(orphanID)) {
      job->orphan.emplace(std::move(*orphan));
      contents = job->orphan->restore(job->context, job->progress);
    } else {
      contents = because(orphan.error());
    }
    runOnMainThread([job = std::move(job), contents = std::move(contents)]() mutable {
      job->finish(std::move(contents));
    });
  });
}

void Recovery::discard(const QString& orphanID, QObject* receiver, DiscardFailed failed) {
  impl_->storeLane->run(
      [store = impl_->store, orphanID, guard = QPointer(receiver), failed = std::move(failed)]() mutable {
        const auto discarded = store.discard(orphanID);
        if (discarded) return;
        runOnMainThread([guard = std::move(guard), failed = std::move(failed), reason = discarded.error()] {
          if (!guard.isNull()) failed(reason);
        });
      });
  impl_->seeToIt(impl_->storeLane);
}

void Recovery::follow(const DocumentPtr& document) {
  if (impl_->journals.contains(document->id)) return;
  Impl* impl = impl_.get();
  auto journal = std::make_unique<DocumentJournal>(
      document, impl->store.newJournal(),
      DocumentJournal::Surroundings{impl->settings, impl->turns, impl->newLane(), impl->figures,
                                    [impl] { impl->journalsChanged(); }});
  DocumentJournal* made = impl->journals.emplace(document->id, std::move(journal)).first->second.get();
  if (const auto orphan = impl->restored.extract(document->id)) made->replace(std::move(orphan.mapped()));
  impl->journalsChanged();
}

void Recovery::saved(const Document& document) {
  DocumentJournal* journal = impl_->journalOf(document);
  if (journal == nullptr) return;
  journal->saved();
  impl_->seeToIt(journal->lane());
}

void Recovery::fileReplaced(const Document& document) {
  DocumentJournal* journal = impl_->journalOf(document);
  if (journal != nullptr) journal->fileReplaced();
}

void Recovery::closed(const Document& document) {
  DocumentJournal* journal = impl_->journalOf(document);
  if (journal == nullptr) return;
  journal->closed();
  impl_->seeToIt(journal->lane());
  impl_->journals.erase(document.id);
  impl_->journalsChanged();
}

void Recovery::recordNow() {
  const auto deadline = impl_->endOfPatience();
  for (const auto& [documentID, journal] : impl_->journals) journal->beginNow();
  for (const auto& [documentID, journal] : impl_->journals) journal->finishNow(deadline);
  impl_->waitForWork(deadline);
}

const RecoveryStatus& Recovery::status() const {
  return impl_->status;
}

Subscription Recovery::observeStatus(std::function<void(const RecoveryStatus&)> changed) {
  return impl_->statusChanged.observe(std::move(changed));
}

RecoveryFigures Recovery::figures() const {
  RecoveryFigures figures = impl_->figures;
  figures.backgroundWork = impl_->turns->timeUsed();
  return figures;
}

}  // namespace orvanel
