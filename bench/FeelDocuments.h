// The documents on which gestures are measured: large enough that only work in proportion to the view can
// keep up with the hand.
#pragma once

#include "model/Document.h"

namespace orvanel::bench {

/// 8192 x 8192, `rgb16`: ten photos of full size in two folders of five, every second one multiplied, three
/// with masks. About 5.5 GB.
[[nodiscard]] DocumentPtr documentA();
/// 16384 x 16384, `rgb8`: three translucent photos of full size. About 3 GB.
[[nodiscard]] DocumentPtr documentB();
/// One opaque photo of this size.
[[nodiscard]] DocumentPtr photoDocument(int side, ColorMode mode);

}  // namespace orvanel::bench
