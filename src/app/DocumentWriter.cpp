#include "app/DocumentWriter.h"

#include <QPointer>
#include <algorithm>
#include <utility>

#include "io/document/DocumentIO.h"
#include "io/files/AtomicFile.h"
#include "io/files/BackgroundJob.h"
#include "io/image/FlatImage.h"
#include "io/image/ImageMetadata.h"

namespace orvanel {

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

void DocumentWriter::writeDocument(const DocumentPtr& document, const QString& path, KnownFilePtr expected,
                                   Done done) {
  const JobPtr job = begin(std::move(done));
  DocumentIO::save(
      document, path, context_, this, [this, job](const FileResult<void>& result) { end(job, result); },
      [this, job](double fraction) { activity_.advance(job->work, fraction); }, job->cancellation,
      std::move(expected));
}

void DocumentWriter::writeImage(const Document& document, const QString& path,
                                Document::ImageFileFormat format, KnownFilePtr expected, Done done,
                                Written written) {
  const JobPtr job = begin(std::move(done));
  const std::shared_ptr<FrozenComposite> picture = document.freezeComposite();
  const Progress progress = progressOnMainThread(
      this, [this, job](double fraction) { activity_.advance(job->work, fraction); }, job->cancellation);
  runInBackground([guard = QPointer(this), &context = context_, picture, mode = document.colorMode.value(),
                   metadata = ImageMetadata::of(document), path, format, job, progress,
                   expected = std::move(expected), written = std::move(written)] {
    const auto judge = [&] { return judgeFound(expected.get(), DocumentIOError::saveFailed, progress); };
    auto result = judge().and_then([&] {
      return writeFlatImage(picture.get(), mode, format, path, context, progress, metadata.get(),
                            replaceable(expected.get()));
    });
    // A failure may have come from another program's writing the file meanwhile.
    if (!result) {
      if (auto judged = judge(); !judged) result = tl::unexpected(judged.error());
    }
    runOnMainThread([guard, job, written, result = std::move(result)] {
      if (guard.isNull()) return;
      if (result && result->identity && written) written(*result->identity);
      guard->end(job, result.and_then([](const ReplacedFile& file) { return judgeDoubt(file.doubt); }));
    });
  });
}

bool DocumentWriter::isWriting() const {
  return std::ranges::any_of(running_, [](const JobPtr& job) { return !job->cancellation->isCancelled(); });
}

void DocumentWriter::cancelAll() {
  for (const JobPtr& job : running_) job->cancellation->cancel();
}

}  // namespace orvanel
