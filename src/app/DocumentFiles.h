// The commands that read and write files: new, open, save, save as, export, and the save that closing asks
// for. Reading and writing run in the background while the window stays alive. Main thread only.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "app/AppState.h"
#include "app/Dialogs.h"
#include "app/FileActivity.h"
#include "io/document/DocumentIO.h"
#include "io/files/FileError.h"
#include "io/files/Progress.h"

namespace orvanel {

class DocumentFiles : public QObject {
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

  /// Saves in place, or asks where when that can't be. Dropped while another save runs.
  void save(const DocumentPtr& document);
  /// Asks where, and saves there; while another save runs, as soon as that one has ended.
  void saveAs(const DocumentPtr& document);
  void exportImage(const DocumentPtr& document);

  /// Whether a document with unsaved changes may go: the user is asked, and may have it saved first.
  [[nodiscard]] bool confirmClosing(const DocumentPtr& document);
  // The window stays alive while these wait, but takes no input.
  /// Waits until this document isn't being saved any more. Exports go on from a copy of their own.
  void settleSave(const Document& document);
  /// Waits until nothing is being written any more.
  void settleWrites();

 private:
  enum class OpenOrigin { command, drop };
  struct OpenBatch;

  void openBatch(const QStringList& paths, OpenOrigin origin);
  void openNext(const std::shared_ptr<OpenBatch>& batch);
  void openFlatImage(const QString& path, const DocumentIO::LoadDone& done, const Progress& progress);
  void documentOpened(const DocumentPtr& document);
  void finishBatch(const OpenBatch& batch);

  void beginWaitingSave();
  void saveEnded(const DocumentPtr& document, const FileResult<void>& result);
  void saveNativeInBackground(const DocumentPtr& document, const QString& path);
  void saveFlatInBackground(const DocumentPtr& document, const QString& path,
                            Document::ImageFileFormat format);
  void writeFlatInBackground(const DocumentPtr& document, const QString& path,
                             Document::ImageFileFormat format, DocumentIO::SaveDone done);
  static void waitWhile(const std::function<bool()>& isWriting);
  [[nodiscard]] bool saveForClosing(const DocumentPtr& document);
  [[nodiscard]] bool reportSavedForClosing(const DocumentPtr& document, const FileResult<void>& result);
  /// What is written must be what the document is now, whether it has been on screen or not.
  void refreshComposite(const Document& document) const;
  /// The folder to begin a panel in, and a name for the document in it.
  [[nodiscard]] QString proposedPath(const Document& document, const QString& extension) const;
  void rememberFolder(const QString& path);

  AppState& appState_;
  Dialogs& dialogs_;
  /// One save runs at a time.
  std::optional<QUuid> savingDocument_;
  /// Documents and the files that were chosen for them while another save ran.
  std::deque<std::pair<DocumentPtr, QString>> waitingSaves_;
  int runningExports_ = 0;
  /// Where a panel begins when the document has no folder of its own.
  QString lastFolder_;
};

}  // namespace orvanel
