#include "app/FilePreviews.h"

#include <QDateTime>
#include <QFileInfo>
#include <QPointer>
#include <utility>

#include "io/document/FilePreview.h"
#include "io/files/BackgroundJob.h"

namespace orvanel {

namespace {

/// Pictures kept at most; a list of recent files shows fewer.
constexpr std::size_t mostKept = 64;

/// The preview again if the file has not changed, otherwise a new one. Any thread.
FilePreview renewed(const FilePreview& known, const QString& path, int side, const Progress& progress) {
  // Asking for the state of a file may block, too, on a dead mount.
  const QFileInfo file(path);
  if (!file.isFile()) return {};
  const qint64 modified = file.lastModified().toMSecsSinceEpoch();
  if (known.exists && known.modified == modified && known.bytes == file.size()) return known;
  return {true, filePreview(path, side, progress), modified, file.size()};
}

}  // namespace

FilePreviews::~FilePreviews() {
  cancel();
}

void FilePreviews::request(const QString& path, Done done) {
  waiting_.push_back({path, std::move(done)});
  if (running_ == nullptr) startNext();
}

void FilePreviews::cancel() {
  waiting_.clear();
  if (running_ != nullptr) std::exchange(running_, nullptr)->cancel();
}

void FilePreviews::startNext() {
  if (waiting_.empty()) return;
  const Request next = std::move(waiting_.front());
  waiting_.pop_front();
  running_ = std::make_shared<Cancellation>();
  const auto known = kept_.find(next.path);
  runInBackground([guard = QPointer(this), cancellation = running_, next, side = side_,
                   before = known == kept_.end() ? FilePreview() : known->second] {
    const FilePreview preview = renewed(before, next.path, side, Progress({}, cancellation));
    runOnMainThread([guard, cancellation, next, preview] {
      if (!guard.isNull() && guard->running_ == cancellation) guard->ended(next.path, preview, next.done);
    });
  });
}

void FilePreviews::ended(const QString& path, const FilePreview& preview, const Done& done) {
  running_ = nullptr;
  if (kept_.size() >= mostKept) kept_.clear();
  kept_[path] = preview;
  startNext();
  done(preview);
}

}  // namespace orvanel
