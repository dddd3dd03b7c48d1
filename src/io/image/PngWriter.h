// A PNG encoder (RFC 2083) that uses all cores: bands of rows are filtered and deflated on their own and
// joined. 8 bits a channel, straight alpha, marked as sRGB. Any thread.
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
  /// Writes the pixels of a row. Called from several threads, for some rows twice.
  std::function<void(int y, std::uint8_t* row)> readRow;
  std::optional<PixelDensity> density = std::nullopt;
};

/// Nothing when the work is cancelled.
[[nodiscard]] QByteArray encodePng(const PngSource& source, const Progress& progress = {});

}  // namespace orvanel
