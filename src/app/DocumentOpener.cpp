#include "app/DocumentOpener.h"

#include <QPointer>
#include <algorithm>
#include <utility>

#include "app/FileMessage.h"
#include "io/files/BackgroundJob.h"
#include "io/image/FlatImage.h"

namespace orvanel {

struct DocumentOpener::Batch {
  /// Those still to open.
  QStringList paths;
  qsizetype count = 0;
  Origin origin = Origin::command;
  FileActivity::Work work = 0;
  std::shared_ptr<Cancellation> cancellation = std::make_shared<Cancellation>();
  /// Lines for the alert.
  QStringList errors;
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
  batches_.push_back(batch);
  openNext(batch);
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
  const auto done = [this, batch, path](const auto& result) { fileEnded(batch, path, result); };
  if (DocumentIO::isDocumentPath(path)) {
    DocumentIO::load(path, context_, this, done, advance, batch->cancellation);
  } else {
    openFlatImage(path, done, progressOnMainThread(this, advance, batch->cancellation));
  }
}

void DocumentOpener::openFlatImage(const QString& path, const DocumentIO::LoadDone& done,
                                   const Progress& progress) {
  runInBackground([guard = QPointer(this), &context = context_, path, done, progress] {
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

void DocumentOpener::fileEnded(const BatchPtr& batch, const QString& path,
                               const FileResult<DocumentPtr>& result) {
  // Not every step can be interrupted, so a file may arrive after its batch was cancelled.
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
  if (batch->errors.isEmpty()) return;
  QString message = QStringLiteral("Failed to Open");
  if (batch->origin == Origin::drop) {
    message = QStringLiteral("Failed to Open Image");
  } else if (batch->errors.size() > 1) {
    message = QStringLiteral("Failed to Open %1 Files").arg(batch->errors.size());
  }
  dialogs_.showWarning(message, batch->errors.join(u'\n'));
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
}

}  // namespace orvanel
