// A parallel PNG encoder (RFC 2083): bands of rows are filtered and deflated independently and concatenated.
// 8 bits a channel, straight alpha, tagged as sRGB. Any thread.
#pragma once

#include <QByteArray>
#include <cstdint>
#include <functional>
#include <optional>

#include "io/files/Progress.h"
#include "io/image/ImageMetadata.h"

namespace orvanel {

enum class PngChannels { rgb, rgba };

struct PngSource {
  int width = 0;
  int height = 0;
  PngChannels channels = PngChannels::rgba;
  /// Writes the pixels of a row to the buffer. Called concurrently, and for some rows twice.
  std::function<void(int y, std::uint8_t* row)> readRow;
  std::optional<PixelDensity> density = std::nullopt;
};

/// Empty when the work is cancelled.
[[nodiscard]] QByteArray encodePng(const PngSource& source, const Progress& progress = {});

}  // namespace orvanel
