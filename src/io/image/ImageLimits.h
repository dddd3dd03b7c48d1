// Which images may be opened, by their size alone. Any thread.
#pragma once

#include <QSize>

#include "io/files/FileError.h"

namespace orvanel {

/// Refuses what is larger than a canvas or than the memory for pixels. A size that isn't known passes.
[[nodiscard]] Described<void> judgeImageSize(const QSize& size);

}  // namespace orvanel
