// The images of the pointer's shapes. Drawn once for each scale and kept; main thread only.
#pragma once

#include <QCursor>

#include "tools/CursorShape.h"

namespace orvanel {

/// The cursor for a shape on a screen of `scale` device pixels per point. Drawn at the nearest whole scale:
/// lines one pixel wide would blur at any other.
[[nodiscard]] QCursor cursorImage(CursorShape shape, double scale);

}  // namespace orvanel
