// Writes documents and images in the background, from the pixels of the moment of the request. Owned by the
// file commands; main thread only.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <vector>

#include "app/FileActivity.h"
#include "io/files/FileError.h"
#include "io/files/Progress.h"
#include "model/Document.h"

namespace orvanel {

class MetalContext;
class ImageMetadata;
/// Null for none.
using ImageMetadataPtr = std::shared_ptr<const ImageMetadata>;

class DocumentWriter : public QObject {
  Q_OBJECT

 public:
  using Done = std::function<void(const FileResult<void>&)>;

  /// Both must outlive it.
  DocumentWriter(MetalContext& context, FileActivity& activity);

  // `done` is called once, later. The document's composite must be current.
  /// Writes the document with all its layers. One at a time.
  void writeDocument(const DocumentPtr& document, const QString& path, Done done);
  /// Writes the composite as a flat image, with the metadata that its format can carry.
  void writeImage(const Document& document, const QString& path, Document::ImageFileFormat format,
                  const ImageMetadataPtr& metadata, Done done);

  [[nodiscard]] bool isWriting() const { return !running_.empty(); }
  /// Stops everything that has not begun to replace its file. The others end soon with an error that says so.
  void cancelAll();

 private:
  struct Job;
  using JobPtr = std::shared_ptr<Job>;

  [[nodiscard]] JobPtr begin(Done done);
  void end(const JobPtr& job, const FileResult<void>& result);

  MetalContext& context_;
  FileActivity& activity_;
  std::vector<JobPtr> running_;
};

}  // namespace orvanel
