// Detects truncated image files. For some formats the readers silently fill the missing part with grey or
// black. Any thread; the bytes are not trusted.
#pragma once

#include <QIODevice>

namespace orvanel {

/// Whether a JPEG, PNG, GIF, BMP, WebP or TIFF file is truncated. False for other formats, for other kinds of
/// damage, and for a TIFF that has lost no more than a part of its last strip.
[[nodiscard]] bool endsTooEarly(QIODevice& file);

}  // namespace orvanel
