// Writes documents and images in the background, from a snapshot taken when the write begins. Owned by the
// file commands; main thread only.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <vector>

#include "app/FileActivity.h"
#include "io/files/FileError.h"
#include "io/files/FileIdentity.h"
#include "io/files/KnownFile.h"
#include "io/files/Progress.h"
#include "model/Document.h"

namespace orvanel {

class MetalContext;

class DocumentWriter : public QObject {
  Q_OBJECT

 public:
  using Done = std::function<void(const FileResult<void>&)>;

  /// Both must outlive this object.
  DocumentWriter(MetalContext& context, FileActivity& activity);

  /// Called before `done` with the file that an image was written to.
  using Written = std::function<void(const FileIdentity&)>;

  // `done` is called once, later, on the main thread. If `expected` is given and isn't found as it is known,
  // nothing is written.
  /// Writes the document with all its layers. Only one such write may run at a time.
  void writeDocument(const DocumentPtr& document, const QString& path, KnownFilePtr expected, Done done);
  /// Writes the composite as a flat image, with as much of its source's metadata as the format can carry.
  void writeImage(const Document& document, const QString& path, Document::ImageFileFormat format,
                  KnownFilePtr expected, Done done, Written written = {});

  /// Whether a write is running that has not been cancelled.
  [[nodiscard]] bool isWriting() const;
  /// Cancels all writes that have not yet replaced their file; they end with a cancellation error.
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
