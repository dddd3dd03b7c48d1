#include "app/DocumentFiles.h"

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPointer>
#include <QStandardPaths>
#include <QThreadPool>
#include <QTimer>
#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "app/DesktopThumbnails.h"
#include "app/EventWait.h"
#include "app/FileMessage.h"
#include "app/TypedText.h"
#include "app/dialogs/ExportFormats.h"
#include "app/dialogs/SizeRule.h"
#include "io/files/BackgroundJob.h"
#include "io/files/FileName.h"
#include "io/image/FlatImage.h"
#include "look/TranslatedName.h"
#include "model/DisplayText.h"
#include "tools/NotificationCenter.h"

namespace orvanel {

namespace {

/// A file name, without extension, for a document of this name.
QString proposedName(QString name) {
  // Most file systems allow 255 bytes; the extension needs some of them.
  constexpr qsizetype mostBytes = 240;
  if (name.toUtf8().size() > mostBytes) name = displayText(name);
  return name.replace(u'/', u'-').replace(u'\n', u' ').remove(QChar(u'\0'));
}

/// Storage that is out of reach may come back with the file.
bool isGone(const QString& path) {
  return ::access(QFile::encodeName(path).constData(), F_OK) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

}  // namespace

DocumentFiles::DocumentFiles(AppState& appState, Dialogs& dialogs, QObject* parent)
    : QObject(parent),
      appState_(appState),
      dialogs_(dialogs),
      opener_(appState.metalContext, activity, dialogs),
      writer_(appState.metalContext, activity) {
  opener_.onOpened = [this](const DocumentPtr& document) { documentOpened(document); };
  opener_.onLoadingChanged = [this] {
    if (onLoadingChanged) onLoadingChanged();
  };
  appState_.windowState.settleSaves = [this](const Document& document) { settleSave(document); };
  appState_.windowState.confirmClosing = [this](const DocumentPtr& document) {
    return confirmClosing(document);
  };
  connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
    if (state == Qt::ApplicationActive) noteMissingFiles();
  });
}

DocumentFiles::~DocumentFiles() {
  appState_.windowState.settleSaves = nullptr;
  appState_.windowState.confirmClosing = nullptr;
}

void DocumentFiles::newDocument() {
  const std::optional<NewDocumentEntry> entry = dialogs_.askForNewDocument();
  if (!entry) return;
  const std::optional<QSize> size = allowedSize(typedNumber(entry->width), typedNumber(entry->height));
  if (!size) return dialogs_.showInvalidDimensions();
  const ColorMode mode = colorModeFromRaw(entry->colorModeIndex).value_or(ColorMode::rgb8);
  const DocumentPtr document = Document::create(look::translatedName(QStringLiteral("Untitled")),
                                                size->width(), size->height(), mode, appState_.metalContext);
  NotificationCenter::standard().post(notification::createdNewDocument, document);
}

void DocumentFiles::reportRefusedEdit() {
  // The alert must not hold up the edit that was refused.
  QMetaObject::invokeMethod(
      this,
      [this] {
        dialogs_.showNotEnoughMemory(
            tr("There is not enough memory for this edit. This step was not carried out. Close other "
               "documents or programs and try again."));
      },
      Qt::QueuedConnection);
}

// Opening.

void DocumentFiles::askAndOpen() {
  open(dialogs_.askForFilesToOpen(startFolder(appState_.windowState.activeDocument().get())));
}

void DocumentFiles::open(const QStringList& paths) {
  opener_.open(openablePaths(paths), DocumentOpener::Origin::command);
}

void DocumentFiles::openDropped(const QStringList& paths) {
  opener_.open(openablePaths(paths), DocumentOpener::Origin::drop);
}

QStringList DocumentFiles::openablePaths(const QStringList& paths) {
  QStringList absolute;
  for (const QString& path : paths) absolute << QDir::cleanPath(QFileInfo(path).absoluteFilePath());
  if (!absolute.isEmpty()) rememberFolderOf(absolute.constLast());
  return absolute;
}

void DocumentFiles::documentOpened(const DocumentPtr& document) {
  if (const auto& path = document->sourceFileURL.value()) noteRecentDocument(*path);
  NotificationCenter::standard().post(notification::openedImageDocument, document);
}

void DocumentFiles::noteRecentDocument(const QString& path) {
  appState_.recentDocuments.record(path);
  NotificationCenter::standard().post(notification::recentDocumentsChanged);
}

// Saving.

void DocumentFiles::rememberFolderOf(const QString& path) {
  appState_.userDefaults.setValue(UserDefaults::lastFolderKey, QFileInfo(path).absolutePath());
}

QString DocumentFiles::startFolder(const Document* document) const {
  QStringList folders;
  if (document != nullptr && document->sourceFileURL.value()) {
    folders << QFileInfo(*document->sourceFileURL.value()).path();
  }
  folders << appState_.userDefaults.value(UserDefaults::lastFolderKey).toString()
          << QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
  const auto usable = std::ranges::find_if(
      folders, [](const QString& folder) { return !folder.isEmpty() && QFileInfo(folder).isDir(); });
  return usable == folders.end() ? QDir::homePath() : *usable;
}

QString DocumentFiles::proposedPath(const Document& document, const QString& extension) const {
  const QString name = proposedName(document.name.value());
  return QDir(startFolder(&document)).filePath(extension.isEmpty() ? name : name + u'.' + extension);
}

std::optional<SaveRequest> DocumentFiles::saveInPlace(const DocumentPtr& document) {
  const auto& path = document->sourceFileURL.value();
  if (!path) return std::nullopt;
  if (isDocumentName(*path)) return SaveRequest{document, *path, std::nullopt};
  const auto& format = document->sourceFileFormat.value();
  if (!format || !document->canSaveAsFlatImage()) return std::nullopt;
  return SaveRequest{document, *path, *format};
}

bool DocumentFiles::canSave(const Document& document) {
  return document.isDirty.value() || document.hasOpenUnsavedChange() || !document.sourceFileURL.value();
}

void DocumentFiles::noteMissingFiles() {
  // Storage that doesn't respond is asked once.
  if (std::exchange(isLooking_, true)) return;
  std::vector<std::pair<std::weak_ptr<Document>, KnownFilePtr>> saved;
  for (const DocumentPtr& document : appState_.windowState.documents.value()) {
    const auto& path = document->sourceFileURL.value();
    const KnownFilePtr known = path ? knownFileOf(*document, *path) : nullptr;
    if (known != nullptr && !canSave(*document)) saved.emplace_back(document, known);
  }
  runInBackground([guard = QPointer(this), saved = std::move(saved)]() mutable {
    std::erase_if(saved, [](const auto& each) { return !isGone(each.second->documentPath); });
    runOnMainThread([guard, missing = std::move(saved)] {
      if (guard.isNull()) return;
      guard->isLooking_ = false;
      for (const auto& [weak, known] : missing) {
        const DocumentPtr document = weak.lock();
        const bool isAsItWas = document != nullptr && document->fileMemory() == known;
        if (!isAsItWas || guard->saves_.contains(document->id)) continue;
        document->setDirty(true);
        guard->withoutFile_.insert(document->id);
      }
    });
  });
}

void DocumentFiles::save(const DocumentPtr& document) {
  keepTypedText();
  document->endOpenEdits();
  if (!canSave(*document)) return;
  if (std::optional<SaveRequest> request = saveInPlace(document)) {
    saves_.add(*std::move(request));
  } else {
    NotificationCenter::standard().post(notification::saveAsDocument);
  }
}

std::optional<QString> DocumentFiles::askWhereToSave(const DocumentPtr& document) {
  std::optional<QString> path =
      dialogs_.askWhereToSave(proposedPath(*document, QLatin1String(documentExtension)));
  if (!path) return std::nullopt;
  rememberFolderOf(*path);
  agreed_.add(document, chosenFile(*path));
  return path;
}

void DocumentFiles::guardFileOfRestored(const DocumentPtr& document) {
  const auto& path = document->sourceFileURL.value();
  if (path && knownFileOf(*document, *path) == nullptr) agreed_.add(document, noFile(*path));
}

void DocumentFiles::saveAs(const DocumentPtr& document) {
  keepTypedText();
  const std::optional<QString> path = askWhereToSave(document);
  if (!path) return;
  adoptSavedFile(*document, *path);
  markSaving(*document);
  saves_.add({document, *path, std::nullopt});
}

void DocumentFiles::beginSave(const SaveRequest& request, Done done) {
  // Taking back what is shown wouldn't mark the document as different from its file.
  request.document->endOpenEdits();
  if (request.flatFormat && !request.document->canSaveAsFlatImage()) {
    refuseFlatSave(std::move(done));
    return;
  }
  const KnownFilePtr expected = replaceableBy(request);
  const auto end = [this, request, before = request.document->fileMemory(),
                    done = std::move(done)](const FileResult<void>& result) {
    // A save may fail once it has replaced the file.
    const bool isReplaced = request.document->fileMemory() != before;
    if (result || isReplaced) agreed_.remove(request.document, request.path);
    if (!result && isReplaced && onFileReplaced) onFileReplaced(*request.document);
    done(result);
  };
  // Cleared first, so that an edit during the save marks the document as unsaved again.
  markSaving(*request.document);
  if (!request.flatFormat) {
    writer_.writeDocument(request.document, request.path, expected, end);
    return;
  }
  const auto written = [document = request.document, path = request.path](const FileIdentity& file) {
    document->setFileMemory(makeKnownFile(path, file));
  };
  writer_.writeImage(*request.document, request.path, *request.flatFormat, expected, end, written);
}

KnownFilePtr DocumentFiles::replaceableBy(const SaveRequest& request) const {
  const KnownFilePtr agreed = agreed_.at(request.document, request.path);
  return agreed != nullptr ? agreed : knownFileOf(*request.document, request.path);
}

std::pair<QString, QString> DocumentFiles::overwriteQuestion(const QString& name, FileState found) {
  switch (found) {
    case FileState::missing:
      return {
          tr("\"%1\" is no longer where it was.").arg(name),
          tr("The file has been moved, renamed or deleted since it was opened or saved here. Nothing is "
             "lost: "
             "your document is still open with all its changes. Saving it anyway makes a new file there.")};
    case FileState::unexpected:
      return {tr("There is already a file \"%1\".").arg(name),
              tr("The file is not one that was opened or saved here. Saving anyway replaces it. Nothing is "
                 "lost so far: your document is still open with all its changes.")};
    case FileState::otherVersion:
      return {tr("\"%1\" holds another version of this document.").arg(name),
              tr("The file was saved from this document, and may be older or newer than what has been "
                 "restored here. Saving anyway replaces it. Nothing is lost so far: your document is still "
                 "open with all its changes.")};
    case FileState::asKnown:
    case FileState::changed:
      break;
  }
  return {tr("\"%1\" has been changed by another program.").arg(name),
          tr("The file is not the one that was opened or saved here. Saving anyway replaces what the other "
             "program has written. Nothing is lost so far: your document is still open with all its "
             "changes.")};
}

void DocumentFiles::askToOverwrite(const SaveRequest& request, FileState found) {
  const DocumentPtr& document = request.document;
  // A later save of the same document finds the same, and then asks.
  if (saves_.contains(document->id)) return;
  const auto [message, informativeText] = overwriteQuestion(displayName(request.path), found);
  const OverwriteAnswer answer = dialogs_.askToOverwrite(message, informativeText);
  if (answer == OverwriteAnswer::saveAs) return saveAs(document);
  if (answer != OverwriteAnswer::saveAnyway) return;
  agreed_.add(document, chosenFile(request.path));
  saves_.add(request);
}

void DocumentFiles::refuseFlatSave(Done done) {
  // Queued, because a save must not end before `beginSave` has returned.
  QMetaObject::invokeMethod(
      this,
      [done = std::move(done)] {
        done(tl::make_unexpected(
            FileError{DocumentIOError::saveFailed,
                      tr("The document has gained layers, masks or folders that this format "
                         "can't hold. Use Save As.")}));
      },
      Qt::QueuedConnection);
}

void DocumentFiles::saveEnded(const SaveRequest& request, const FileResult<void>& result) {
  if (!result) return markSaveFailed(*request.document);
  noteRecentDocument(request.path);
  withoutFile_.erase(request.document->id);
  // While another save of it waits, the document is marked as saved for that one.
  if (onSaved && !saves_.contains(request.document->id)) onSaved(*request.document);
  if (!request.flatFormat) {
    QThreadPool::globalInstance()->start([path = request.path] { publishThumbnails(path); });
  }
}

void DocumentFiles::reportFailedSave(const SaveRequest& request, const FileError& error) {
  if (error.found != FileState::asKnown) return askToOverwrite(request, error.found);
  dialogs_.showWarning(tr("Failed to Save"), fileMessage(request.path, error.message) + u'\n' +
                                                 tr("The document stays open with all its changes."));
}

void DocumentFiles::exportImage(const DocumentPtr& document) {
  keepTypedText();
  const std::optional<ExportTarget> target = dialogs_.askWhereToExport(proposedPath(*document, QString()));
  if (!target) return;
  document->endOpenEdits();
  rememberFolderOf(target->path);
  const auto format = exportFormats.at(static_cast<std::size_t>(target->formatRow)).format;
  const auto written = [this, exported = std::weak_ptr(document),
                        path = target->path](const FileIdentity& file) {
    const DocumentPtr still = exported.lock();
    if (!still || knownFileOf(*still, path) == nullptr) return;
    // The file that the document was opened from.
    still->setFileMemory(makeKnownFile(path, file));
    agreed_.remove(still, path);
    if (onFileReplaced) onFileReplaced(*still);
  };
  const auto report = [this, path = target->path](const FileResult<void>& result) {
    if (result || result.error().isCancelled) return;
    dialogs_.showWarning(tr("Failed to Export"), fileMessage(path, result.error().message) + u'\n' +
                                                     tr("The document itself is not affected."));
  };
  writer_.writeImage(*document, target->path, format, chosenFile(target->path), report, written);
}

void DocumentFiles::cancelAll() {
  saves_.cancelWaiting();
  // Storage that doesn't respond must not keep anyone waiting.
  saves_.abandonRunning();
  writer_.cancelAll();
  opener_.cancelAll();
}

void DocumentFiles::abandonReading() {
  opener_.abandonAll();
}

void DocumentFiles::settleSave(const Document& document) {
  saves_.settle(document.id);
}

void DocumentFiles::settleWrites() {
  processEventsWhile([this] { return isWriting(); });
}

void DocumentFiles::settleWritesFor(std::chrono::milliseconds patience) {
  bool isOver = false;
  // The timer also ends the wait for events.
  QTimer timer;
  timer.callOnTimeout([&isOver] { isOver = true; });
  timer.start(patience);
  processEventsWhile([&] { return isWriting() && !isOver; });
}

// Closing.

bool DocumentFiles::confirmClosing(const DocumentPtr& document) {
  if (!appState_.userDefaults.confirmUnsavedChanges()) return true;
  const SaveAnswer answer = dialogs_.askToSave(
      tr("Do you want to save changes to \"%1\"?").arg(displayText(document->name.value())),
      withoutFile_.contains(document->id)
          ? tr("Its file is no longer where it was. The whole document will be lost if you don't save it.")
          : tr("Your changes will be lost if you don't save them."));
  if (answer == SaveAnswer::save) return saveForClosing(document);
  return answer == SaveAnswer::dontSave;
}

bool DocumentFiles::saveForClosing(const DocumentPtr& document) {
  if (std::optional<SaveRequest> request = saveInPlace(document)) return saveNow(*std::move(request));
  const std::optional<QString> path = askWhereToSave(document);
  if (!path || !saveNow({document, *path, std::nullopt})) return false;
  // It may have become a save to another file, which the document has adopted then.
  if (knownFileOf(*document, *path) != nullptr) adoptSavedFile(*document, *path);
  return true;
}

bool DocumentFiles::saveNow(SaveRequest request) {
  const DocumentPtr document = request.document;
  saves_.add(std::move(request));
  saves_.settle(document->id);
  // User input was blocked, so the document can only be dirty because the save failed.
  return !document->isDirty.value();
}

// The document's properties that a save changes.

void DocumentFiles::markSaving(Document& document) {
  document.setDirty(false);
}

void DocumentFiles::markSaveFailed(Document& document) {
  document.setDirty(true);
}

void DocumentFiles::adoptSavedFile(Document& document, const QString& path) {
  document.setSource(path, std::nullopt);
  document.setName(documentName(path));
}

}  // namespace orvanel
