// SVG drawings from anybody, made harmless before they are drawn: nothing in them reaches another file, and
// no entity grows without end. Any thread.
#pragma once

#include <QByteArray>
#include <QIODevice>

#include "io/files/FileError.h"

namespace orvanel {

/// The drawing as plain SVG, whether or not the file is compressed. References to anything but the drawing's
/// own parts and embedded raster images are left out, and so are its document type and style sheets beside
/// it.
[[nodiscard]] Described<QByteArray> selfContainedSvg(QIODevice& file);

}  // namespace orvanel
