// Opens documents and images in the background; the files of one request open in order. Owned by the file
// commands; main thread only.
#pragma once

#include <QObject>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "app/FileActivity.h"
#include "app/dialogs/Dialogs.h"
#include "io/document/DocumentIO.h"
#include "io/document/LoadingPreview.h"
#include "io/files/FileError.h"
#include "io/files/Progress.h"
#include "io/image/FlatImage.h"

namespace orvanel {

class MetalContext;

/// The file of a request whose document will be the active one when all have been opened: the last.
struct LoadingFile {
  QString path;
  /// How many other files the request has.
  int others = 0;
  FileActivity::Work work = 0;
  /// Nothing until it has been read.
  std::optional<LoadingPreview> preview;
};
using LoadingFilePtr = std::shared_ptr<const LoadingFile>;

class DocumentOpener : public QObject {
  Q_OBJECT

 public:
  /// Where a request came from. Failed drops are reported under their own title.
  enum class Origin { command, drop };

  /// All must outlive this object.
  DocumentOpener(MetalContext& context, FileActivity& activity, Dialogs& dialogs);

  /// Called with each opened document.
  std::function<void(const DocumentPtr&)> onOpened;
  /// Called when `loadingFile` is another one or has its preview.
  std::function<void()> onLoadingChanged;

  /// Takes absolute paths. After the last file, one alert lists those that failed and another those that
  /// opened incompletely.
  void open(const QStringList& paths, Origin origin);
  /// Of the latest request; null while none runs.
  [[nodiscard]] LoadingFilePtr loadingFile() const;
  /// Cancels the latest request. Failures so far are still reported.
  void cancelLatest();
  /// Cancels all requests. Failures so far are still reported.
  void cancelAll();
  /// Cancels all requests without reporting anything, before the program exits.
  void abandonAll();

 private:
  struct Batch;
  using BatchPtr = std::shared_ptr<Batch>;

  void readPreview(const BatchPtr& batch);
  void openNext(const BatchPtr& batch);
  void openImage(const BatchPtr& batch, const QString& path, const Progress& progress);
  void imageRead(const BatchPtr& batch, const QString& path, const FileResult<FlatImage>& image);
  void fileEnded(const BatchPtr& batch, const QString& path, const FileResult<DocumentPtr>& result);
  void finish(const BatchPtr& batch);
  void tellLoadingChanged() const;
  [[nodiscard]] static QString failureTitle(const Batch& batch);

  MetalContext& context_;
  FileActivity& activity_;
  Dialogs& dialogs_;
  std::vector<BatchPtr> batches_;
};

}  // namespace orvanel
