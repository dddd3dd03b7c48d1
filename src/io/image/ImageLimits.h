// Size limits for opening images. Any thread.
#pragma once

#include <QSize>
#include <QString>
#include <cstdint>

#include "io/files/FileError.h"

namespace orvanel {

/// Rejects sizes beyond the largest canvas or the available memory. An unknown size passes.
[[nodiscard]] Described<void> judgeImageSize(const QSize& size);

/// Rejects more pixels than fit in the available memory, be they in one image or in several.
[[nodiscard]] Described<void> judgePixelCount(std::uint64_t pixels);

/// The message for an image that doesn't fit in the available memory.
[[nodiscard]] QString notEnoughMemory();

}  // namespace orvanel
