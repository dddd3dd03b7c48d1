#include "io/document/DocumentIO.h"

#include <QFileInfo>
#include <QPointer>
#include <memory>

#include "io/document/DocumentReader.h"
#include "io/document/SaveSnapshot.h"
#include "io/document/TextureLoading.h"
#include "io/files/BackgroundJob.h"
#include "io/files/FileName.h"

namespace orvanel {
namespace {

/// Main thread only.
bool backgroundSaveRuns = false;

template <typename Value>
tl::unexpected<FileError> failed(DocumentIOError code, const Described<Value>& result,
                                 const Progress& progress = {}) {
  return tl::unexpected(FileError{code, result.error(), progress.isCancelled()});
}

FileResult<void> saveResult(const Described<void>& result, const Progress& progress = {}) {
  if (!result) return failed(DocumentIOError::saveFailed, result, progress);
  return {};
}

/// Marks a loaded document as clean and sets its source file.
void attachSource(Document& document, const QString& path) {
  document.setSource(QFileInfo(path).absoluteFilePath(), std::nullopt);
  document.setDirty(false);
}

/// The state shared by the steps of a background load.
struct LoadJob {
  QString path;
  MetalContext& context;
  QPointer<QObject> receiver;
  DocumentIO::LoadDone done;
  Progress progress;
  std::optional<OpenedDocument> opened;
  DocumentPtr document;

  void finish(const FileResult<DocumentPtr>& result) const {
    if (!receiver.isNull()) done(result);
  }
  template <typename Value>
  void fail(const Described<Value>& result) const {
    finish(failed(DocumentIOError::loadFailed, result, progress));
  }
};

using LoadJobPtr = std::shared_ptr<LoadJob>;

void finishLoad(const LoadJobPtr& job, const Described<void>& filled) {
  DocumentPtr document = std::move(job->document);
  if (filled) {
    attachSource(*document, job->path);
    job->finish(document);
  } else {
    // Nodes must be destroyed on this thread; their surfaces, which may be many, are released in the
    // background.
    document.reset();
    job->fail(filled);
  }
  runInBackground(
      [opened = std::make_shared<OpenedDocument>(std::move(*job->opened))]() mutable { opened.reset(); });
}

/// On the main thread, between the two slow steps.
void buildAndFill(const LoadJobPtr& job) {
  job->document = buildDocument(*job->opened, job->context);
  // The job holds the document, so the main thread must release the last reference to it.
  runInBackground([job = job]() mutable {
    Described<void> filled = fillTextures(*job->opened, job->progress);
    if (filled) filled = judgeShownMemory(*job->opened);
    runOnMainThread([job = std::move(job), filled = std::move(filled)] { finishLoad(job, filled); });
  });
}

}  // namespace

bool DocumentIO::isSaving() {
  return backgroundSaveRuns;
}

bool DocumentIO::isDocumentPath(const QString& path) {
  return isDocumentName(path) || QFileInfo(path).isDir();
}

void DocumentIO::save(const DocumentPtr& document, const QString& path, MetalContext& /*context*/,
                      QObject* receiver, SaveDone done, ProgressChanged progressChanged,
                      CancellationPtr cancellation) {
  const QPointer<QObject> guard(receiver);
  const auto finish = [guard, done = std::move(done)](const FileResult<void>& result) {
    if (!guard.isNull()) done(result);
  };
  if (backgroundSaveRuns) {
    runOnMainThread([finish] { finish({}); });
    return;
  }
  auto snapshot = SaveSnapshot::take(*document);
  if (!snapshot) {
    runOnMainThread([finish, error = snapshot.error()] { finish(saveResult(because(error))); });
    return;
  }
  backgroundSaveRuns = true;
  auto picture = std::make_shared<SaveSnapshot>(std::move(*snapshot));
  Progress progress = progressOnMainThread(receiver, std::move(progressChanged), std::move(cancellation));
  runInBackground([picture, path, progress = std::move(progress), finish]() mutable {
    Described<void> written = writeSnapshot(*picture, path, progress);
    picture.reset();
    runOnMainThread([finish, written = std::move(written), progress = std::move(progress)] {
      backgroundSaveRuns = false;
      finish(saveResult(written, progress));
    });
  });
}

FileResult<void> DocumentIO::saveSynchronously(const DocumentPtr& document, const QString& path,
                                               MetalContext& /*context*/) {
  const auto snapshot = SaveSnapshot::take(*document);
  if (!snapshot) return failed(DocumentIOError::saveFailed, snapshot);
  return saveResult(writeSnapshot(*snapshot, path, {}));
}

void DocumentIO::load(const QString& path, MetalContext& context, QObject* receiver, LoadDone done,
                      ProgressChanged progressChanged, CancellationPtr cancellation) {
  Progress progress = progressOnMainThread(receiver, std::move(progressChanged), std::move(cancellation));
  auto job = std::make_shared<LoadJob>(
      LoadJob{path, context, receiver, std::move(done), std::move(progress), std::nullopt, nullptr});
  runInBackground([job = std::move(job)]() mutable {
    auto opened = openDocument(job->path, job->context, job->progress);
    if (!opened) {
      runOnMainThread(
          [job = std::move(job), opened = Described<void>(because(opened.error()))] { job->fail(opened); });
      return;
    }
    job->opened = std::move(*opened);
    runOnMainThread([job = std::move(job)] { buildAndFill(job); });
  });
}

FileResult<DocumentPtr> DocumentIO::loadSynchronously(const QString& path, MetalContext& context) {
  const auto opened = openDocument(path, context);
  if (!opened) return failed(DocumentIOError::loadFailed, opened);
  DocumentPtr document = buildDocument(*opened, context);
  Described<void> filled = fillTextures(*opened, {});
  if (filled) filled = judgeShownMemory(*opened);
  if (!filled) return failed(DocumentIOError::loadFailed, filled);
  attachSource(*document, path);
  return document;
}

}  // namespace orvanel
