// Detects truncated image files. For some formats the readers silently fill the missing part with grey or
// black. Any thread; the bytes are not trusted.
#pragma once

#include <QIODevice>

namespace orvanel {

/// Whether a JPEG, PNG, GIF, BMP or WebP file is truncated. False for other formats, and for other kinds of
/// damage.
[[nodiscard]] bool endsTooEarly(QIODevice& file);

}  // namespace orvanel
