// Saving and loading of documents. Only the snapshot of the model, or its construction, runs on the main
// thread; everything slow runs in the background on all cores. A save replaces its destination atomically,
// and a load returns a complete document or none.
#pragma once

#include <QObject>
#include <QString>
#include <functional>

#include "io/files/FileError.h"
#include "io/files/KnownFile.h"
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

  // Cancelled work ends soon with an error whose `isCancelled` is set, and leaves nothing behind. Cancelling
  // work that has already completed has no effect.

  /// Saves in the background. `done` runs later on the main thread, unless `receiver` has gone by then.
  /// While another save runs, reports success without writing anything. The caller sets the document's flags.
  /// If `expected` is given and isn't found as it is known, nothing is written either.
  static void save(const DocumentPtr& document, const QString& path, MetalContext& context, QObject* receiver,
                   SaveDone done, ProgressChanged progressChanged = {},
                   CancellationPtr cancellation = nullptr, KnownFilePtr expected = nullptr);
  /// Saves before it returns, whether or not a background save runs. Main thread.
  [[nodiscard]] static FileResult<void> saveSynchronously(const DocumentPtr& document, const QString& path,
                                                          MetalContext& context);
  /// Whether a background save runs: one for the whole application. Main thread.
  [[nodiscard]] static bool isSaving();

  /// Loads in the background. `done` runs later on the main thread, unless `receiver` has gone by then.
  static void load(const QString& path, MetalContext& context, QObject* receiver, LoadDone done,
                   ProgressChanged progressChanged = {}, CancellationPtr cancellation = nullptr);
  /// Loads before it returns. Main thread.
  [[nodiscard]] static FileResult<DocumentPtr> loadSynchronously(const QString& path, MetalContext& context);

  /// Whether a path is opened as a document rather than as a flat image: by its extension, or because it is
  /// a directory.
  [[nodiscard]] static bool isDocumentPath(const QString& path);
};

}  // namespace orvanel
