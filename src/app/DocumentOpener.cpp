#include "app/DocumentOpener.h"

#include <QPointer>
#include <algorithm>
#include <utility>

#include "app/FileMessage.h"
#include "io/files/BackgroundJob.h"

namespace orvanel {

namespace {

/// Enough that an image in a window of usual size doesn't look coarse.
constexpr int previewSide = 1024;

}  // namespace

struct DocumentOpener::Batch {
  /// Files still to open.
  QStringList paths;
  qsizetype count = 0;
  Origin origin = Origin::command;
  FileActivity::Work work = 0;
  LoadingFilePtr loading;
  std::shared_ptr<Cancellation> cancellation = std::make_shared<Cancellation>();
  // One line of the alert per file.
  QStringList errors;
  QStringList warnings;
};

DocumentOpener::DocumentOpener(MetalContext& context, FileActivity& activity, Dialogs& dialogs)
    : context_(context), activity_(activity), dialogs_(dialogs) {}

void DocumentOpener::open(const QStringList& paths, Origin origin) {
  if (paths.isEmpty()) return;
  const auto batch = std::make_shared<Batch>();
  batch->paths = paths;
  batch->count = paths.size();
  batch->origin = origin;
  batch->work = activity_.begin();
  batch->loading = std::make_shared<LoadingFile>(
      LoadingFile{paths.constLast(), static_cast<int>(paths.size()) - 1, batch->work, std::nullopt});
  batches_.push_back(batch);
  readPreview(batch);
  openNext(batch);
  tellLoadingChanged();
}

LoadingFilePtr DocumentOpener::loadingFile() const {
  return batches_.empty() ? nullptr : batches_.back()->loading;
}

void DocumentOpener::tellLoadingChanged() const {
  if (onLoadingChanged) onLoadingChanged();
}

// On its own, so that the picture is there long before the pixels.
void DocumentOpener::readPreview(const BatchPtr& batch) {
  runInBackground([guard = QPointer(this), batch, path = batch->loading->path,
                   progress = Progress({}, batch->cancellation)] {
    LoadingPreview preview = readLoadingPreview(path, previewSide, progress);
    runOnMainThread([guard, batch, preview = std::move(preview)] {
      if (guard.isNull()) return;
      LoadingFile known = *batch->loading;
      known.preview = preview;
      batch->loading = std::make_shared<LoadingFile>(std::move(known));
      if (guard->loadingFile() == batch->loading) guard->tellLoadingChanged();
    });
  });
}

void DocumentOpener::openNext(const BatchPtr& batch) {
  if (batch->paths.isEmpty()) {
    finish(batch);
    return;
  }
  const QString path = batch->paths.takeFirst();
  const auto opened = static_cast<double>(batch->count - batch->paths.size() - 1);
  const auto advance = [this, batch, opened](double fraction) {
    activity_.advance(batch->work, (opened + fraction) / static_cast<double>(batch->count));
  };
  advance(0.0);
  if (DocumentIO::isDocumentPath(path)) {
    DocumentIO::load(
        path, context_, this, [this, batch, path](const auto& result) { fileEnded(batch, path, result); },
        advance, batch->cancellation);
  } else {
    openImage(batch, path, progressOnMainThread(this, advance, batch->cancellation));
  }
}

void DocumentOpener::openImage(const BatchPtr& batch, const QString& path, const Progress& progress) {
  runInBackground([guard = QPointer(this), &context = context_, batch, path, progress] {
    FileResult<FlatImage> image = readFlatImage(path, context, progress);
    runOnMainThread([guard, batch, path, image = std::move(image)] {
      if (!guard.isNull()) guard->imageRead(batch, path, image);
    });
  });
}

void DocumentOpener::imageRead(const BatchPtr& batch, const QString& path,
                               const FileResult<FlatImage>& image) {
  if (!image) {
    fileEnded(batch, path, tl::make_unexpected(image.error()));
    return;
  }
  if (!image->warning.isEmpty()) batch->warnings << fileMessage(path, image->warning);
  fileEnded(batch, path, documentOfFlatImage(*image, path, context_));
}

void DocumentOpener::fileEnded(const BatchPtr& batch, const QString& path,
                               const FileResult<DocumentPtr>& result) {
  // Not every step can be interrupted, so a result may arrive after the batch was cancelled.
  if (batch->cancellation->isCancelled()) return;
  if (result) {
    if (onOpened) onOpened(*result);
  } else {
    batch->errors << fileMessage(path, result.error().message);
  }
  openNext(batch);
}

void DocumentOpener::finish(const BatchPtr& batch) {
  activity_.end(batch->work);
  std::erase(batches_, batch);
  tellLoadingChanged();
  if (!batch->errors.isEmpty()) dialogs_.showWarning(failureTitle(*batch), batch->errors.join(u'\n'));
  if (!batch->warnings.isEmpty()) {
    dialogs_.showWarning(tr("Opened Incompletely"), batch->warnings.join(u'\n'));
  }
}

QString DocumentOpener::failureTitle(const Batch& batch) {
  if (batch.origin == Origin::drop) return tr("Failed to Open Image");
  if (batch.errors.size() == 1) return tr("Failed to Open");
  return tr("Failed to Open %n Files", nullptr, static_cast<int>(batch.errors.size()));
}

void DocumentOpener::cancelLatest() {
  if (batches_.empty()) return;
  const BatchPtr batch = batches_.back();
  batch->cancellation->cancel();
  finish(batch);
}

void DocumentOpener::cancelAll() {
  for (const BatchPtr& batch : std::exchange(batches_, {})) {
    batch->cancellation->cancel();
    finish(batch);
  }
}

void DocumentOpener::abandonAll() {
  for (const BatchPtr& batch : std::exchange(batches_, {})) {
    batch->cancellation->cancel();
    activity_.end(batch->work);
  }
  tellLoadingChanged();
}

}  // namespace orvanel
