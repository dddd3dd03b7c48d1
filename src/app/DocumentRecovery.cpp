#include "app/DocumentRecovery.h"

#include <utility>

#include "look/TranslatedSentence.h"
#include "model/DisplayText.h"
#include "tools/NotificationCenter.h"

namespace orvanel {

DocumentRecovery::DocumentRecovery(AppState& appState, DocumentFiles& files, Dialogs& dialogs,
                                   RecoverySettings settings)
    : appState_(appState), files_(files), dialogs_(dialogs), recovery_(std::move(settings)) {
  files_.onSaved = [this](const Document& document) { recovery_.saved(document); };
  files_.onFileReplaced = [this](const Document& document) { recovery_.fileReplaced(document); };
  documentsNotifier_ = appState_.windowState.documents.addNotifier([this] { documentsChanged(); });
  status_ = recovery_.observeStatus([this](const RecoveryStatus& status) { statusChanged(status); });
  documentsChanged();
}

DocumentRecovery::~DocumentRecovery() {
  files_.onSaved = nullptr;
  files_.onFileReplaced = nullptr;
}

void DocumentRecovery::documentsChanged() {
  std::map<QUuid, DocumentPtr> gone = std::exchange(followed_, {});
  for (const DocumentPtr& document : appState_.windowState.documents.value()) {
    followed_.emplace(document->id, document);
    if (gone.erase(document->id) == 0) recovery_.follow(document);
  }
  for (const auto& [id, document] : gone) recovery_.closed(*document);
}

void DocumentRecovery::closeAll() {
  for (const auto& [id, document] : std::exchange(followed_, {})) recovery_.closed(*document);
}

void DocumentRecovery::offerOrphans() {
  recovery_.findOrphans(this, [this](const OrphanList& orphans) { orphansFound(orphans); });
}

void DocumentRecovery::orphansFound(const OrphanList& orphans) {
  if (orphans.empty()) return;
  const std::vector<RecoveryAnswer> answers = dialogs_.askAboutOrphans(orphans);
  // The newest comes last, and so to the front.
  for (std::size_t index = orphans.size(); index-- > 0;) {
    if (answers.at(index) == RecoveryAnswer::restore) restore(orphans[index]);
    if (answers.at(index) == RecoveryAnswer::discard) discard(orphans[index]);
  }
}

void DocumentRecovery::restore(const Orphan& orphan) {
  const FileActivity::Work work = files_.activity.begin();
  recovery_.restore(
      orphan.id, appState_.metalContext, this,
      [this, work, orphan](const FileResult<RestoredDocument>& result) {
        files_.activity.end(work);
        restored(orphan, result);
      },
      [this, work](double fraction) { files_.activity.advance(work, fraction); });
}

void DocumentRecovery::discard(const Orphan& orphan) {
  recovery_.discard(orphan.id, this,
                    [this, orphan](const QString& reason) { tell(tr("Failed to Discard"), orphan, reason); });
}

void DocumentRecovery::restored(const Orphan& orphan, const FileResult<RestoredDocument>& result) {
  if (!result) return tell(tr("Failed to Restore"), orphan, result.error().message);
  files_.guardFileOfRestored(result->document);
  NotificationCenter::standard().post(notification::createdNewDocument, result->document);
  if (!result->loss.isEmpty()) tell(tr("Restored in Part"), orphan, result->loss);
}

void DocumentRecovery::tell(const QString& title, const Orphan& orphan, const QString& reason) {
  const QString name = orphan.name.isEmpty() ? QString() : displayText(orphan.name) + QStringLiteral(": ");
  dialogs_.showWarning(title, QStringLiteral("%1%2\n\n%3")
                                  .arg(name, look::translatedSentence(reason),
                                       tr("It will be offered again at the next start.")));
}

void DocumentRecovery::statusChanged(const RecoveryStatus& status) {
  const bool isSuspended = status.state == RecoveryStatus::State::suspended;
  if (onSuspended) {
    onSuspended(
        isSuspended
            ? tr("Unsaved changes aren't kept for recovery: %1").arg(look::translatedSentence(status.reason))
            : QString());
  }
  if (onNote && !isSuspended) onNote(tr("Unsaved changes are kept for recovery again."));
}

}  // namespace orvanel
