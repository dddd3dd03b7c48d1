// Size limits for opening images. Any thread.
#pragma once

#include <QSize>

#include "io/files/FileError.h"

namespace orvanel {

/// Rejects sizes beyond the largest canvas or the available memory. An unknown size passes.
[[nodiscard]] Described<void> judgeImageSize(const QSize& size);

}  // namespace orvanel
