// Sanitizes untrusted SVG before it is rendered: no access to other files, bounded entity expansion, and
// embedded images that fit in memory.
// Any thread.
#pragma once

#include <QByteArray>
#include <QIODevice>

#include "io/files/FileError.h"

namespace orvanel {

/// The drawing as uncompressed SVG without its document type, external style sheets and references, except
/// those to its own elements and to embedded raster images.
[[nodiscard]] Described<QByteArray> selfContainedSvg(QIODevice& file);

}  // namespace orvanel
