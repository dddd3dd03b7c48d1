// The commands that create, open, save and export documents, and the question asked before closing one.
// Files are read and written in the background. Main thread only.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "app/AgreedFiles.h"
#include "app/AppState.h"
#include "app/DocumentOpener.h"
#include "app/DocumentWriter.h"
#include "app/FileActivity.h"
#include "app/SaveQueue.h"
#include "app/dialogs/Dialogs.h"
#include "io/files/FileError.h"

namespace orvanel {

class DocumentFiles : public QObject, private SaveQueueClient {
  Q_OBJECT

 public:
  /// Both must outlive this object.
  DocumentFiles(AppState& appState, Dialogs& dialogs, QObject* parent = nullptr);
  ~DocumentFiles() override;

  FileActivity activity;

  /// Tells the user, soon, that an edit needs more memory than there is.
  void reportRefusedEdit();

  /// Asks for size and colour mode, and creates the document if the size is within the limits.
  void newDocument();
  void askAndOpen();
  /// Opens the files in order; one alert at the end lists those that failed.
  void open(const QStringList& paths);
  /// The same for files dropped on the canvas.
  void openDropped(const QStringList& paths);
  /// Called when `loadingFile` changes.
  std::function<void()> onLoadingChanged;
  /// The file of the latest request to open whose document will be active; null while none is read.
  [[nodiscard]] LoadingFilePtr loadingFile() const { return opener_.loadingFile(); }
  /// Cancels the latest request to open.
  void cancelLoading() { opener_.cancelLatest(); }
  /// Moves the file to the front of the recent documents and notifies observers.
  void noteRecentDocument(const QString& path);

  /// Called after each save that has succeeded.
  std::function<void(const Document&)> onSaved;
  /// Called when the document's file has been replaced by the program and the document isn't saved all the
  /// same.
  std::function<void(const Document&)> onFileReplaced;
  /// Nothing may be replaced without a question at the path of a restored document, unless the document
  /// knows its file there.
  void guardFileOfRestored(const DocumentPtr& document);

  // Saves run one at a time, in the order of the requests.
  /// False for a document that has a file and no changes, not even in an open gesture or adjustment.
  [[nodiscard]] static bool canSave(const Document& document);
  /// Marks saved documents whose file has gone as unsaved, soon: without it they are nowhere but here. Looks
  /// whenever the user comes back to the program.
  void noteMissingFiles();
  /// Saves to the document's own file, or asks for another if that can't hold the document. Does nothing
  /// unless `canSave`.
  void save(const DocumentPtr& document);
  /// Asks for a file and saves to it.
  void saveAs(const DocumentPtr& document);
  void exportImage(const DocumentPtr& document);

  /// Asks whether to save a modified document before it closes, and saves it if so. False to keep it open.
  [[nodiscard]] bool confirmClosing(const DocumentPtr& document);
  // These process events but block user input, except for cancelling, which ends the wait.
  /// Waits for all saves of this document, including queued ones. Exports work on a copy.
  void settleSave(const Document& document);
  /// Waits for all saves and exports.
  void settleWrites();
  /// The same, but no longer than this.
  void settleWritesFor(std::chrono::milliseconds patience);

  /// Cancels all reading and writing, including queued saves. Documents whose save is cancelled stay dirty.
  void cancelAll();
  /// Cancels all reading without reporting anything, before the program exits.
  void abandonReading();

 private:
  [[nodiscard]] bool isWriting() const { return !saves_.isEmpty() || writer_.isWriting(); }
  [[nodiscard]] QStringList openablePaths(const QStringList& paths);
  void documentOpened(const DocumentPtr& document);

  void beginSave(const SaveRequest& request, Done done) override;
  /// What the save may replace; null if that is unknown, and anything may be.
  [[nodiscard]] KnownFilePtr replaceableBy(const SaveRequest& request) const;
  /// Its message, and what the message doesn't tell.
  [[nodiscard]] static std::pair<QString, QString> overwriteQuestion(const QString& name, FileState found);
  /// Asks what to do about a file that isn't as expected, and does it.
  void askToOverwrite(const SaveRequest& request, FileState found);
  /// Ends a save whose document has stopped being flat while the save was queued.
  void refuseFlatSave(Done done);
  void saveEnded(const SaveRequest& request, const FileResult<void>& result) override;
  void reportFailedSave(const SaveRequest& request, const FileError& error) override;
  /// The request to save to the document's own file; nothing if it has none that can hold it.
  [[nodiscard]] static std::optional<SaveRequest> saveInPlace(const DocumentPtr& document);
  /// The user agrees to replace what stands at the path that is returned.
  std::optional<QString> askWhereToSave(const DocumentPtr& document);
  [[nodiscard]] bool saveForClosing(const DocumentPtr& document);
  /// Queues the save and waits for it. False if it failed.
  [[nodiscard]] bool saveNow(SaveRequest request);
  static void markSaving(Document& document);
  static void markSaveFailed(Document& document);
  static void adoptSavedFile(Document& document, const QString& path);
  /// Where the user is working: the folder of the document's file, else the one used last, else the pictures.
  [[nodiscard]] QString startFolder(const Document* document) const;
  /// The path a file panel starts with.
  [[nodiscard]] QString proposedPath(const Document& document, const QString& extension) const;
  void rememberFolderOf(const QString& path);

  AppState& appState_;
  Dialogs& dialogs_;
  DocumentOpener opener_;
  DocumentWriter writer_;
  SaveQueue saves_{*this};
  AgreedFiles agreed_;
  /// At files that may be missing.
  bool isLooking_ = false;
  std::set<QUuid> withoutFile_;  ///< saved documents whose file has gone since
};

}  // namespace orvanel
