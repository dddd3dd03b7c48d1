// Keeps the open documents in journals, and offers what an earlier process left unsaved. Owned by the
// application object, unless the user has turned recovery off; main thread only.
#pragma once

#include <QObject>
#include <QPropertyNotifier>
#include <QString>
#include <functional>
#include <map>

#include "app/AppState.h"
#include "app/DocumentFiles.h"
#include "app/dialogs/Dialogs.h"
#include "recovery/Recovery.h"

namespace orvanel {

class DocumentRecovery : public QObject {
  Q_OBJECT

 public:
  /// All must outlive this object, which takes over `onSaved` and `onFileReplaced` of the files.
  DocumentRecovery(AppState& appState, DocumentFiles& files, Dialogs& dialogs,
                   RecoverySettings settings = {});
  ~DocumentRecovery() override;

  /// Tells the user why changes aren't kept, for as long as they aren't; empty once they are kept again.
  std::function<void(const QString&)> onSuspended;
  /// Tells the user something in passing.
  std::function<void(const QString&)> onNote;

  /// Asks about documents that were left, if there are any, and restores those that the user wants back.
  /// Nothing is removed without an answer.
  void offerOrphans();
  /// All changes so far, for a process that may be ended at any moment.
  void recordNow() { recovery_.recordNow(); }
  /// Removes the journals of all open documents, when the program ends as the user wants it to.
  void closeAll();

 private:
  void documentsChanged();
  void orphansFound(const OrphanList& orphans);
  void restore(const Orphan& orphan);
  void discard(const Orphan& orphan);
  void restored(const Orphan& orphan, const FileResult<RestoredDocument>& result);
  void tell(const QString& title, const Orphan& orphan, const QString& reason);
  void statusChanged(const RecoveryStatus& status);

  AppState& appState_;
  DocumentFiles& files_;
  Dialogs& dialogs_;
  Recovery recovery_;
  std::map<QUuid, DocumentPtr> followed_;
  QPropertyNotifier documentsNotifier_;
  Subscription status_;
};

}  // namespace orvanel
