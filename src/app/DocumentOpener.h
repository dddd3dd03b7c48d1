// Opens documents and images in the background, the files of one request in their order. Owned by the file
// commands; main thread only.
#pragma once

#include <QObject>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

#include "app/Dialogs.h"
#include "app/FileActivity.h"
#include "io/document/DocumentIO.h"
#include "io/files/FileError.h"
#include "io/files/Progress.h"
#include "io/image/FlatImage.h"

namespace orvanel {

class MetalContext;

class DocumentOpener : public QObject {
  Q_OBJECT

 public:
  /// Where a request came from; failed drops have a title of their own.
  enum class Origin { command, drop };

  /// All must outlive it.
  DocumentOpener(MetalContext& context, FileActivity& activity, Dialogs& dialogs);

  /// Called with every document that has been read, and the metadata of an image that has some.
  std::function<void(const DocumentPtr&, const std::shared_ptr<const ImageMetadata>&)> onOpened;

  /// Absolute paths. When the last file has been read, one alert names those that failed and another those
  /// of which something is missing; the latter stay open.
  void open(const QStringList& paths, Origin origin);
  /// Gives up everything that has not been read yet. Failures until now are still reported.
  void cancelAll();
  /// Gives up everything without another word, because the program ends.
  void abandonAll();

 private:
  struct Batch;
  using BatchPtr = std::shared_ptr<Batch>;

  void openNext(const BatchPtr& batch);
  void openImage(const BatchPtr& batch, const QString& path, const Progress& progress);
  void imageRead(const BatchPtr& batch, const QString& path, const FileResult<FlatImage>& image);
  void fileEnded(const BatchPtr& batch, const QString& path, const FileResult<DocumentPtr>& result,
                 const std::shared_ptr<const ImageMetadata>& metadata = nullptr);
  void finish(const BatchPtr& batch);
  [[nodiscard]] static QString failureTitle(const Batch& batch);

  MetalContext& context_;
  FileActivity& activity_;
  Dialogs& dialogs_;
  std::vector<BatchPtr> batches_;
};

}  // namespace orvanel
