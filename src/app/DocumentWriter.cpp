#include "app/DocumentWriter.h"

#include <QPointer>
#include <utility>

#include "io/document/DocumentIO.h"
#include "io/files/BackgroundJob.h"
#include "io/image/FlatImage.h"
#include "io/image/ImageMetadata.h"

namespace orvanel {

namespace {

/// Fails for a document without a composite. Any thread.
FileResult<void> writeComposite(const Surface* composite, ColorMode mode, Document::ImageFileFormat format,
                                const QString& path, const MetalContext& context, const Progress& progress,
                                const ImageMetadata* metadata) {
  if (composite == nullptr) {
    return tl::make_unexpected(
        FileError{DocumentIOError::exportFailed, QStringLiteral("The image has no pixels to write.")});
  }
  return writeFlatImage(*composite, mode, format, path, context, progress, metadata);
}

}  // namespace

struct DocumentWriter::Job {
  FileActivity::Work work = 0;
  std::shared_ptr<Cancellation> cancellation = std::make_shared<Cancellation>();
  Done done;
};

DocumentWriter::DocumentWriter(MetalContext& context, FileActivity& activity)
    : context_(context), activity_(activity) {}

DocumentWriter::JobPtr DocumentWriter::begin(Done done) {
  const auto job = std::make_shared<Job>();
  job->work = activity_.begin();
  job->done = std::move(done);
  running_.push_back(job);
  return job;
}

void DocumentWriter::end(const JobPtr& job, const FileResult<void>& result) {
  activity_.end(job->work);
  std::erase(running_, job);
  job->done(result);
}

void DocumentWriter::writeDocument(const DocumentPtr& document, const QString& path, Done done) {
  const JobPtr job = begin(std::move(done));
  DocumentIO::save(
      document, path, context_, this, [this, job](const FileResult<void>& result) { end(job, result); },
      [this, job](double fraction) { activity_.advance(job->work, fraction); }, job->cancellation);
}

void DocumentWriter::writeImage(const Document& document, const QString& path,
                                Document::ImageFileFormat format, const ImageMetadataPtr& metadata,
                                Done done) {
  const JobPtr job = begin(std::move(done));
  // The copy shares its tiles with the composite, so later edits don't affect it.
  const Texture& composite = document.compositedTexture.value();
  const auto picture = composite ? std::make_shared<const Surface>(*composite) : nullptr;
  const Progress progress = progressOnMainThread(
      this, [this, job](double fraction) { activity_.advance(job->work, fraction); }, job->cancellation);
  runInBackground([guard = QPointer(this), &context = context_, picture, mode = document.colorMode.value(),
                   path, format, metadata, job, progress] {
    FileResult<void> result =
        writeComposite(picture.get(), mode, format, path, context, progress, metadata.get());
    runOnMainThread([guard, job, result = std::move(result)] {
      if (!guard.isNull()) guard->end(job, result);
    });
  });
}

void DocumentWriter::cancelAll() {
  for (const JobPtr& job : running_) job->cancellation->cancel();
}

}  // namespace orvanel
