// The thumbnails shared by all programs of a freedesktop.org desktop: file managers find the picture of a
// saved document there without asking for one. Any thread.
#pragma once

#include <QString>

namespace orvanel {

/// Puts the document's stored preview into the user's thumbnail cache. Returns false, and leaves what is
/// there alone, for a file that shouldn't have thumbnails, has no preview, or changes meanwhile.
bool publishThumbnails(const QString& documentPath);

/// Whether thumbnails of a file at this path outlive it rightly: not in folders for temporary files, in those
/// of the system, or in a cache.
[[nodiscard]] bool mayHaveThumbnails(const QString& absolutePath);

}  // namespace orvanel
