// Opens documents and images in the background; the files of one request open in order. Owned by the file
// commands; main thread only.
#pragma once

#include <QObject>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

#include "app/FileActivity.h"
#include "app/dialogs/Dialogs.h"
#include "io/document/DocumentIO.h"
#include "io/files/FileError.h"
#include "io/files/Progress.h"
#include "io/image/FlatImage.h"

namespace orvanel {

class MetalContext;

class DocumentOpener : public QObject {
  Q_OBJECT

 public:
  /// Where a request came from. Failed drops are reported under their own title.
  enum class Origin { command, drop };

  /// All must outlive this object.
  DocumentOpener(MetalContext& context, FileActivity& activity, Dialogs& dialogs);

  /// Called with each opened document.
  std::function<void(const DocumentPtr&)> onOpened;

  /// Takes absolute paths. After the last file, one alert lists those that failed and another those that
  /// opened incompletely.
  void open(const QStringList& paths, Origin origin);
  /// Cancels all requests. Failures so far are still reported.
  void cancelAll();
  /// Cancels all requests without reporting anything, before the program exits.
  void abandonAll();

 private:
  struct Batch;
  using BatchPtr = std::shared_ptr<Batch>;

  void openNext(const BatchPtr& batch);
  void openImage(const BatchPtr& batch, const QString& path, const Progress& progress);
  void imageRead(const BatchPtr& batch, const QString& path, const FileResult<FlatImage>& image);
  void fileEnded(const BatchPtr& batch, const QString& path, const FileResult<DocumentPtr>& result);
  void finish(const BatchPtr& batch);
  [[nodiscard]] static QString failureTitle(const Batch& batch);

  MetalContext& context_;
  FileActivity& activity_;
  Dialogs& dialogs_;
  std::vector<BatchPtr> batches_;
};

}  // namespace orvanel
