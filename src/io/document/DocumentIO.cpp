#include "io/document/DocumentIO.h"

#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <memory>

#include "io/document/DocumentReader.h"
#include "io/document/SaveSnapshot.h"
#include "io/document/TextureLoading.h"
#include "io/files/AtomicFile.h"
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

FileResult<void> saveResult(const Described<WrittenDocument>& written, const Progress& progress = {}) {
  if (!written) return failed(DocumentIOError::saveFailed, written, progress);
  return judgeDoubt(written->doubt);
}

/// Fills the surfaces of a document that is being loaded; returns what is known of its file.
Described<KnownFilePtr> fill(const OpenedDocument& opened, const QString& path, const Progress& progress) {
  auto surfaces = fillTextures(opened, progress);
  if (!surfaces) return because(surfaces.error());
  if (auto judged = judgeShownMemory(opened); !judged) return because(judged.error());
  const auto identity = opened.archive.identity();
  if (!identity) return nullptr;
  // What was read isn't what stands there now, so nothing can be copied from it; but whoever has written it
  // must not lose it to the next save.
  if (!opened.archive.isAsOpened()) return makeKnownFile(QFileInfo(path).absoluteFilePath(), *identity);
  auto saved = std::make_shared<SavedFile>();
  saved->documentPath = QFileInfo(path).absoluteFilePath();
  saved->path = QFile::encodeName(path).toStdString();
  saved->identity = *identity;
  saved->surfaces = std::move(*surfaces);
  return saved;
}

/// Marks a loaded document as clean and sets its source file.
void attachSource(Document& document, const QString& path, KnownFilePtr known) {
  document.setSource(QFileInfo(path).absoluteFilePath(), std::nullopt);
  document.setFileMemory(std::move(known));
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

void finishLoad(const LoadJobPtr& job, const Described<KnownFilePtr>& filled) {
  DocumentPtr document = std::move(job->document);
  if (filled) {
    attachSource(*document, job->path, *filled);
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
    auto filled = fill(*job->opened, job->path, job->progress);
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
                      CancellationPtr cancellation, KnownFilePtr expected) {
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
  const std::weak_ptr<Document> saved = document;
  runInBackground([picture, path, progress = std::move(progress), finish, saved,
                   expected = std::move(expected)]() mutable {
    if (auto judged = judgeFound(expected.get(), DocumentIOError::saveFailed, progress); !judged) {
      picture.reset();
      runOnMainThread([finish, judged = std::move(judged)] {
        backgroundSaveRuns = false;
        finish(judged);
      });
      return;
    }
    auto written = writeSnapshot(*picture, path, progress, replaceable(expected.get()));
    picture.reset();
    // A failure may have come from another program's writing the file meanwhile.
    auto judged =
        written ? FileResult<void>() : judgeFound(expected.get(), DocumentIOError::saveFailed, progress);
    runOnMainThread([finish, written = std::move(written), judged = std::move(judged),
                     progress = std::move(progress), saved] {
      backgroundSaveRuns = false;
      if (!judged) return finish(judged);
      if (const DocumentPtr still = saved.lock(); still && written) {
        // What it replaces may be long, and is given back in the background.
        runInBackground([replaced = still->fileMemory()]() mutable { replaced.reset(); });
        still->setFileMemory(written->saved);
      }
      finish(saveResult(written, progress));
    });
  });
}

FileResult<void> DocumentIO::saveSynchronously(const DocumentPtr& document, const QString& path,
                                               MetalContext& /*context*/) {
  const auto snapshot = SaveSnapshot::take(*document);
  if (!snapshot) return failed(DocumentIOError::saveFailed, snapshot);
  const auto written = writeSnapshot(*snapshot, path, {});
  if (written) document->setFileMemory(written->saved);
  return saveResult(written);
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
  auto filled = fill(*opened, path, {});
  if (!filled) return failed(DocumentIOError::loadFailed, filled);
  attachSource(*document, path, std::move(*filled));
  return document;
}

}  // namespace orvanel
