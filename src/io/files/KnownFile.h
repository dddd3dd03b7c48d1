// The file of a document, in the state in which it was read or written: what tells a save that another
// program has been at it. Immutable once made; any thread.
#pragma once

#include <QString>
#include <memory>

#include "io/files/FileError.h"
#include "io/files/FileIdentity.h"
#include "io/files/Progress.h"
#include "model/FileMemory.h"

namespace orvanel {

class Document;

struct KnownFile : FileMemory {
  /// The document's path for it, in which links aren't resolved.
  QString documentPath;
  FileIdentity identity;

  /// What stands there now. May take as long as the storage does.
  [[nodiscard]] virtual FileState state() const;
};

using KnownFilePtr = std::shared_ptr<const KnownFile>;

/// Which version of the file may be replaced; empty for null, when it may be any.
[[nodiscard]] std::optional<FileIdentity> replaceable(const KnownFile* expected);
/// Fails, with what was found, unless the file is as it is known; succeeds for null.
[[nodiscard]] FileResult<void> judgeFound(const KnownFile* expected, DocumentIOError code,
                                          const Progress& progress);

[[nodiscard]] KnownFilePtr makeKnownFile(const QString& documentPath, const FileIdentity& identity);
/// The file of a document that was restored as it became after `identity`, while its file holds `other`,
/// which was saved from the same document: before what was restored or after it.
[[nodiscard]] KnownFilePtr makeOtherVersion(const QString& documentPath, const FileIdentity& identity,
                                            const FileIdentity& other);
/// What stands at a path that the user has chosen to write to, be it nothing: all that may be replaced there.
/// If it goes meanwhile, there is nothing to lose.
[[nodiscard]] KnownFilePtr chosenFile(const QString& path);
/// A path for which the user has agreed to nothing that may stand there.
[[nodiscard]] KnownFilePtr noFile(const QString& path);
/// What the document knows of the file at the path; null if that isn't its own. Main thread.
[[nodiscard]] KnownFilePtr knownFileOf(const Document& document, const QString& path);

}  // namespace orvanel
