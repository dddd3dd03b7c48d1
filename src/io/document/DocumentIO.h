// Saving and loading of documents. Both take a picture of the model or build it on the main thread and do
// everything slow elsewhere, on all cores. A save replaces its destination in one step or not at all; a
// load hands out a finished document or none.
#pragma once

#include <QObject>
#include <QString>
#include <functional>

#include "io/files/FileError.h"
#include "io/files/Progress.h"
#include "model/Document.h"

namespace orvanel {

class MetalContext;

class DocumentIO {
 public:
  DocumentIO() = delete;

  using SaveDone = std::function<void(const FileResult<void>&)>;
  using LoadDone = std::function<void(const FileResult<DocumentPtr>&)>;
  /// From 0 to 1, on the main thread, at most a hundred times.
  using ProgressChanged = std::function<void(double)>;

  // Cancelled work ends soon with an error that says so and leaves nothing behind: a file is as it was, a
  // document is not handed out. What has been completed by then stays so.

  /// Saves in the background. `done` runs later on the main thread, unless `receiver` has gone by then.
  /// While another save runs, this one writes nothing and succeeds. Flags of the document are the caller's.
  static void save(const DocumentPtr& document, const QString& path, MetalContext& context, QObject* receiver,
                   SaveDone done, ProgressChanged progressChanged = {},
                   CancellationPtr cancellation = nullptr);
  /// The same file, complete when this returns; doesn't mind a background save. Main thread.
  [[nodiscard]] static FileResult<void> saveSynchronously(const DocumentPtr& document, const QString& path,
                                                          MetalContext& context);
  /// Whether a background save runs: one for the whole application. Main thread.
  [[nodiscard]] static bool isSaving();

  /// Loads in the background. `done` runs later on the main thread, unless `receiver` has gone by then.
  static void load(const QString& path, MetalContext& context, QObject* receiver, LoadDone done,
                   ProgressChanged progressChanged = {}, CancellationPtr cancellation = nullptr);
  /// The same, complete when this returns. Main thread.
  [[nodiscard]] static FileResult<DocumentPtr> loadSynchronously(const QString& path, MetalContext& context);

  /// Whether a path is opened as a document rather than as a flat image: by its extension, or because it is
  /// a directory.
  [[nodiscard]] static bool isDocumentPath(const QString& path);
};

}  // namespace orvanel
