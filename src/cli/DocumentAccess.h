// Reads and writes whole documents for the headless program, in the native format or as a flat image,
// depending on the file's extension. Main thread only.
#pragma once

#include <QString>

#include "cli/CommandLine.h"
#include "model/Document.h"

namespace orvanel {

/// A document, or an image as a document of one layer. Fails for a damaged image that is also the
/// `destination`, because overwriting it would destroy the rest of it.
[[nodiscard]] tl::expected<DocumentPtr, CommandFailure> readDocument(const QString& path,
                                                                     const QString& destination = {});

/// Checks that a document can be written under this name, judging by its extension.
[[nodiscard]] CommandResult checkWritableName(const QString& path);
/// Flattens the document and writes it in the format of the extension of `path`, which is replaced
/// atomically.
[[nodiscard]] CommandResult writeDocument(Document& document, const QString& path);

}  // namespace orvanel
