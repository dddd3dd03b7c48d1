// The images of the pointer's shapes. Main thread only.
#pragma once

#include <QCursor>

#include "tools/CursorShape.h"

namespace orvanel {

/// The cursor for a shape, sharp at `scale` device pixels per point.
[[nodiscard]] QCursor cursorImage(CursorShape shape, double scale);

}  // namespace orvanel
