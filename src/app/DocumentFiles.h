// The commands that read and write files: new, open, save, save as, export, and the save that closing asks
// for. Reading and writing run in the background while the window stays alive. Main thread only.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <functional>
#include <map>
#include <optional>

#include "app/AppState.h"
#include "app/Dialogs.h"
#include "app/DocumentOpener.h"
#include "app/DocumentWriter.h"
#include "app/FileActivity.h"
#include "app/SaveQueue.h"
#include "io/files/FileError.h"

namespace orvanel {

class DocumentFiles : public QObject, private SaveQueueClient {
  Q_OBJECT

 public:
  /// Both must outlive it.
  DocumentFiles(AppState& appState, Dialogs& dialogs, QObject* parent = nullptr);
  ~DocumentFiles() override;

  FileActivity activity;
  /// Whether the screen has flattened a document as it is now, so that a save needn't.
  std::function<bool(const Document&)> isCompositeCurrent;

  /// Asks for size and mode, and makes the document if both sides are within the limits.
  void newDocument();
  void askAndOpen();
  /// Opens one file after the other; those that fail are named together at the end.
  void open(const QStringList& paths);
  /// The same for files dropped on the canvas.
  void openDropped(const QStringList& paths);
  /// Puts a file at the front of the recent ones and says so.
  void noteRecentDocument(const QString& path);

  // Saves run one after the other, in the order in which they were asked for.
  /// False for a document that is in its file as it stands, which saving would rewrite for nothing.
  [[nodiscard]] static bool canSave(const Document& document);
  /// Saves in place, or asks where if the document has no file that can hold it. Nothing without need.
  void save(const DocumentPtr& document);
  /// Asks where, and saves there.
  void saveAs(const DocumentPtr& document);
  void exportImage(const DocumentPtr& document);

  /// Whether a document with unsaved changes may go: the user is asked, and may have it saved first.
  [[nodiscard]] bool confirmClosing(const DocumentPtr& document);
  // The window repaints while these wait, but takes no input.
  /// Waits for all saves of this document, also those that have not begun. Exports work on a copy.
  void settleSave(const Document& document);
  /// Waits for all saves and exports.
  void settleWrites();

  /// Cancels what is being read and written, and what waits. Documents whose save is cancelled stay unsaved.
  void cancelAll();
  /// Stops reading files, without telling anybody, because the program ends.
  void abandonReading();

 private:
  [[nodiscard]] QStringList openablePaths(const QStringList& paths);
  void documentOpened(const DocumentPtr& document, const ImageMetadataPtr& metadata);
  void keepMetadata(const Document& document, const ImageMetadataPtr& metadata);
  /// What the image file said that the document came from.
  [[nodiscard]] ImageMetadataPtr metadataOf(const Document& document) const;

  void beginSave(const SaveRequest& request, Done done) override;
  void saveEnded(const SaveRequest& request, const FileResult<void>& result) override;
  void reportFailedSave(const SaveRequest& request, const FileError& error) override;
  /// The save to the document's own file; nothing if there is none that can hold the document.
  [[nodiscard]] static std::optional<SaveRequest> saveInPlace(const DocumentPtr& document);
  std::optional<QString> askWhereToSave(const Document& document);
  [[nodiscard]] bool saveForClosing(const DocumentPtr& document);
  /// Queues the save and waits for it; whether the document is saved.
  [[nodiscard]] bool saveNow(SaveRequest request);
  static void markSaving(Document& document);
  static void markSaveFailed(Document& document);
  static void adoptSavedFile(Document& document, const QString& path);
  /// What is written must be what the document is now, whether it has been on screen or not.
  void refreshComposite(const Document& document) const;
  /// The folder to begin a panel in, and a name for the document in it.
  [[nodiscard]] QString proposedPath(const Document& document, const QString& extension) const;
  void rememberFolder(const QString& path);

  AppState& appState_;
  Dialogs& dialogs_;
  /// Of open documents that came from images.
  std::map<QUuid, ImageMetadataPtr> imageMetadata_;
  DocumentOpener opener_;
  DocumentWriter writer_;
  SaveQueue saves_{*this};
  /// Where a panel begins when the document has no folder of its own.
  QString lastFolder_;
};

}  // namespace orvanel
