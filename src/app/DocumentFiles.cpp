#include "app/DocumentFiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>
#include <algorithm>
#include <utility>

#include "app/ExportFormats.h"
#include "io/document/DocumentIO.h"
#include "io/files/BackgroundJob.h"
#include "io/files/FileName.h"
#include "io/image/FlatImage.h"
#include "model/DocumentCompositor.h"
#include "model/NotificationCenter.h"

namespace orvanel {

namespace {

/// A side typed as a decimal integer within the limits of a canvas.
std::optional<int> parsedSide(const QString& text) {
  bool isNumber = false;
  const int side = text.toInt(&isNumber);
  if (!isNumber || side < 1 || side > maximumCanvasSide) return std::nullopt;
  return side;
}

/// What can't be flattened has nothing to write. Any thread.
FileResult<void> writeComposite(const Surface* composite, ColorMode mode, Document::ImageFileFormat format,
                                const QString& path, const MetalContext& context,
                                const Progress& progress = {}) {
  if (composite == nullptr) {
    return tl::make_unexpected(
        FileError{DocumentIOError::exportFailed, QStringLiteral("The image has no pixels to write.")});
  }
  return writeFlatImage(*composite, mode, format, path, context, progress);
}

}  // namespace

DocumentFiles::DocumentFiles(AppState& appState, Dialogs& dialogs, QObject* parent)
    : QObject(parent), appState_(appState), dialogs_(dialogs) {
  appState_.windowState.settleSaves = [this](const Document& document) { settleSave(document); };
  appState_.windowState.confirmClosing = [this](const DocumentPtr& document) {
    return confirmClosing(document);
  };
}

DocumentFiles::~DocumentFiles() {
  appState_.windowState.settleSaves = nullptr;
  appState_.windowState.confirmClosing = nullptr;
}

void DocumentFiles::newDocument() {
  const std::optional<NewDocumentEntry> entry = dialogs_.askForNewDocument();
  if (!entry) return;
  const std::optional<int> width = parsedSide(entry->width);
  const std::optional<int> height = parsedSide(entry->height);
  if (!width || !height) {
    dialogs_.showWarning(QStringLiteral("Invalid Dimensions"),
                         QStringLiteral("Width and height must be between 1 and 16384 pixels."));
    return;
  }
  const ColorMode mode = colorModeFromRaw(entry->colorModeIndex).value_or(ColorMode::rgb8);
  const DocumentPtr document =
      Document::create(QStringLiteral("Untitled"), *width, *height, mode, appState_.metalContext);
  NotificationCenter::standard().post(notification::createdNewDocument, document);
}

// Opening.

struct DocumentFiles::OpenBatch {
  /// Those still to open.
  QStringList paths;
  qsizetype count = 0;
  OpenOrigin origin = OpenOrigin::command;
  FileActivity::Work work = 0;
  QStringList errors;
};

void DocumentFiles::askAndOpen() {
  open(dialogs_.askForFilesToOpen());
}

void DocumentFiles::open(const QStringList& paths) {
  openBatch(paths, OpenOrigin::command);
}

void DocumentFiles::openDropped(const QStringList& paths) {
  openBatch(paths, OpenOrigin::drop);
}

void DocumentFiles::openBatch(const QStringList& paths, OpenOrigin origin) {
  if (paths.isEmpty()) return;
  auto batch = std::make_shared<OpenBatch>();
  batch->origin = origin;
  for (const QString& path : paths) batch->paths << QDir::cleanPath(QFileInfo(path).absoluteFilePath());
  batch->count = batch->paths.size();
  batch->work = activity.begin();
  rememberFolder(batch->paths.constLast());
  openNext(batch);
}

void DocumentFiles::openNext(const std::shared_ptr<OpenBatch>& batch) {
  if (batch->paths.isEmpty()) {
    finishBatch(*batch);
    return;
  }
  const QString path = batch->paths.takeFirst();
  const auto opened = static_cast<double>(batch->count - batch->paths.size() - 1);
  const auto advance = [this, batch, opened](double fraction) {
    activity.advance(batch->work, (opened + fraction) / static_cast<double>(batch->count));
  };
  advance(0.0);
  const auto done = [this, batch, path](const FileResult<DocumentPtr>& result) {
    if (result) {
      documentOpened(*result);
    } else {
      batch->errors << displayName(path) + QStringLiteral(": ") + result.error().message;
    }
    openNext(batch);
  };
  if (DocumentIO::isDocumentPath(path)) {
    DocumentIO::load(path, appState_.metalContext, this, done, advance);
  } else {
    openFlatImage(path, done, progressOnMainThread(this, advance));
  }
}

void DocumentFiles::openFlatImage(const QString& path, const DocumentIO::LoadDone& done,
                                  const Progress& progress) {
  runInBackground([guard = QPointer(this), &context = appState_.metalContext, path, done, progress] {
    FileResult<FlatImage> image = readFlatImage(path, context, progress);
    runOnMainThread([guard, &context, path, done, image = std::move(image)] {
      if (guard.isNull()) return;
      if (image) {
        done(documentOfFlatImage(*image, path, context));
      } else {
        done(tl::make_unexpected(image.error()));
      }
    });
  });
}

void DocumentFiles::documentOpened(const DocumentPtr& document) {
  if (const auto& path = document->sourceFileURL.value()) noteRecentDocument(*path);
  NotificationCenter::standard().post(notification::openedImageDocument, document);
}

void DocumentFiles::finishBatch(const OpenBatch& batch) {
  activity.end(batch.work);
  if (batch.errors.isEmpty()) return;
  QString message = QStringLiteral("Failed to Open");
  if (batch.origin == OpenOrigin::drop) {
    message = QStringLiteral("Failed to Open Image");
  } else if (batch.errors.size() > 1) {
    message = QStringLiteral("Failed to Open %1 Files").arg(batch.errors.size());
  }
  dialogs_.showWarning(message, batch.errors.join(u'\n'));
}

void DocumentFiles::noteRecentDocument(const QString& path) {
  appState_.recentDocuments.record(path);
  NotificationCenter::standard().post(notification::recentDocumentsChanged);
}

// Saving.

void DocumentFiles::refreshComposite(const Document& document) const {
  if (isCompositeCurrent && isCompositeCurrent(document)) return;
  DocumentCompositor(appState_.metalContext).compositeDocument(document);
}

void DocumentFiles::rememberFolder(const QString& path) {
  lastFolder_ = QFileInfo(path).absolutePath();
}

QString DocumentFiles::proposedPath(const Document& document, const QString& extension) const {
  QString folder = lastFolder_;
  if (const auto& source = document.sourceFileURL.value()) folder = QFileInfo(*source).path();
  if (folder.isEmpty() || !QFileInfo(folder).isDir()) {
    folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
  }
  if (!QFileInfo(folder).isDir()) folder = QDir::homePath();
  QString name = document.name.value();
  // A name may come from a file and hold what no file name can.
  name.replace(u'/', u'-').remove(QChar(u'\0'));
  return QDir(folder).filePath(extension.isEmpty() ? name : name + u'.' + extension);
}

void DocumentFiles::save(const DocumentPtr& document) {
  // A request that comes while another save runs is dropped, and the document keeps its mark.
  if (savingDocument_) return;
  const auto& path = document->sourceFileURL.value();
  if (path && isDocumentName(*path)) {
    saveNativeInBackground(document, *path);
  } else if (path && document->sourceFileFormat.value() && document->canSaveAsFlatImage()) {
    saveFlatInBackground(document, *path, *document->sourceFileFormat.value());
  } else {
    NotificationCenter::standard().post(notification::saveAsDocument);
  }
}

void DocumentFiles::saveAs(const DocumentPtr& document) {
  const std::optional<QString> path =
      dialogs_.askWhereToSave(proposedPath(*document, QLatin1String(documentExtension)));
  if (!path) return;
  rememberFolder(*path);
  document->sourceFileURL = *path;
  document->sourceFileFormat = std::nullopt;
  document->isDirty = false;
  document->name = documentName(*path);
  waitingSaves_.emplace_back(document, *path);
  beginWaitingSave();
}

void DocumentFiles::beginWaitingSave() {
  if (savingDocument_ || waitingSaves_.empty()) return;
  const auto [document, path] = waitingSaves_.front();
  waitingSaves_.pop_front();
  saveNativeInBackground(document, path);
}

void DocumentFiles::saveEnded(const DocumentPtr& document, const FileResult<void>& result) {
  savingDocument_.reset();
  // Marked before the next save begins, which may be this document's own, and told of after: an alert waits.
  if (!result) document->isDirty = true;
  beginWaitingSave();
  if (!result) dialogs_.showWarning(QStringLiteral("Failed to Save"), result.error().message);
}

void DocumentFiles::saveNativeInBackground(const DocumentPtr& document, const QString& path) {
  refreshComposite(*document);
  // The mark goes first, so that an edit made while the save runs sets it again.
  document->isDirty = false;
  savingDocument_ = document->id;
  const FileActivity::Work work = activity.begin();
  DocumentIO::save(
      document, path, appState_.metalContext, this,
      [this, document, work](const FileResult<void>& result) {
        activity.end(work);
        saveEnded(document, result);
      },
      [this, work](double fraction) { activity.advance(work, fraction); });
}

void DocumentFiles::saveFlatInBackground(const DocumentPtr& document, const QString& path,
                                         Document::ImageFileFormat format) {
  document->isDirty = false;
  savingDocument_ = document->id;
  writeFlatInBackground(document, path, format,
                        [this, document](const FileResult<void>& result) { saveEnded(document, result); });
}

void DocumentFiles::writeFlatInBackground(const DocumentPtr& document, const QString& path,
                                          Document::ImageFileFormat format, DocumentIO::SaveDone done) {
  refreshComposite(*document);
  const FileActivity::Work work = activity.begin();
  // The copy shares its tiles with the composite of this moment.
  const Texture& composite = document->compositedTexture.value();
  const auto picture = composite ? std::make_shared<const Surface>(*composite) : nullptr;
  const ColorMode mode = document->colorMode.value();
  const Progress progress =
      progressOnMainThread(this, [this, work](double fraction) { activity.advance(work, fraction); });
  runInBackground([guard = QPointer(this), &context = appState_.metalContext, picture, mode, path, format,
                   work, progress, done = std::move(done)] {
    FileResult<void> result = writeComposite(picture.get(), mode, format, path, context, progress);
    runOnMainThread([guard, work, done, result = std::move(result)] {
      if (guard.isNull()) return;
      guard->activity.end(work);
      done(result);
    });
  });
}

void DocumentFiles::exportImage(const DocumentPtr& document) {
  const std::optional<ExportTarget> target = dialogs_.askWhereToExport(proposedPath(*document, QString()));
  if (!target) return;
  rememberFolder(target->path);
  ++runningExports_;
  const auto format = exportFormats.at(static_cast<std::size_t>(target->formatRow)).format;
  writeFlatInBackground(document, target->path, format, [this](const FileResult<void>& result) {
    --runningExports_;
    if (!result) dialogs_.showWarning(QStringLiteral("Failed to Export"), result.error().message);
  });
}

void DocumentFiles::waitWhile(const std::function<bool()>& isWriting) {
  while (isWriting()) {
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
  }
}

void DocumentFiles::settleSave(const Document& document) {
  waitWhile([this, id = document.id] {
    return savingDocument_ == id ||
           std::ranges::any_of(waitingSaves_, [&](const auto& save) { return save.first->id == id; });
  });
}

void DocumentFiles::settleWrites() {
  waitWhile([this] { return savingDocument_ || !waitingSaves_.empty() || runningExports_ > 0; });
}

// Closing.

bool DocumentFiles::confirmClosing(const DocumentPtr& document) {
  if (!appState_.userDefaults.confirmUnsavedChanges()) return true;
  const SaveAnswer answer =
      dialogs_.askToSave(QStringLiteral("Do you want to save changes to \"%1\"?").arg(document->name.value()),
                         QStringLiteral("Your changes will be lost if you don't save them."));
  if (answer == SaveAnswer::save) return saveForClosing(document);
  return answer == SaveAnswer::dontSave;
}

bool DocumentFiles::saveForClosing(const DocumentPtr& document) {
  const auto& source = document->sourceFileURL.value();
  if (source && isDocumentName(*source)) {
    refreshComposite(*document);
    return reportSavedForClosing(document,
                                 DocumentIO::saveSynchronously(document, *source, appState_.metalContext));
  }
  const auto& format = document->sourceFileFormat.value();
  if (source && format && document->canSaveAsFlatImage()) {
    refreshComposite(*document);
    return reportSavedForClosing(
        document, writeComposite(document->compositedTexture.value().get(), document->colorMode.value(),
                                 *format, *source, appState_.metalContext));
  }
  const std::optional<QString> path =
      dialogs_.askWhereToSave(proposedPath(*document, QLatin1String(documentExtension)));
  if (!path) return false;
  rememberFolder(*path);
  refreshComposite(*document);
  const bool isSaved =
      reportSavedForClosing(document, DocumentIO::saveSynchronously(document, *path, appState_.metalContext));
  if (isSaved) {
    document->sourceFileURL = *path;
    document->sourceFileFormat = std::nullopt;
    document->name = documentName(*path);
  }
  return isSaved;
}

bool DocumentFiles::reportSavedForClosing(const DocumentPtr& document, const FileResult<void>& result) {
  if (result) {
    document->isDirty = false;
  } else {
    dialogs_.showWarning(QStringLiteral("Failed to Save"), result.error().message);
  }
  return result.has_value();
}

}  // namespace orvanel
