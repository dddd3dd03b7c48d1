// A display colour: sRGB, straight alpha, components 0 to 1. Converted to channel values at the point of use.
#pragma once

#include <QString>
#include <optional>

#include "raster/ColorMode.h"
#include "raster/KernelRecords.h"

namespace orvanel {

struct DisplayColor {
  float red = 0.0F;
  float green = 0.0F;
  float blue = 0.0F;
  float alpha = 1.0F;

  static constexpr DisplayColor black() { return {0.0F, 0.0F, 0.0F, 1.0F}; }
  static constexpr DisplayColor white() { return {1.0F, 1.0F, 1.0F, 1.0F}; }
  friend bool operator==(const DisplayColor&, const DisplayColor&) = default;

  /// Six upper-case hexadecimal digits RRGGBB, each component rounded to 8 bits; alpha is dropped.
  [[nodiscard]] QString hexText() const;
  /// Parses exactly six characters as a base-16 integer; a leading sign is accepted.
  [[nodiscard]] static std::optional<DisplayColor> fromHexText(const QString& text);
};

/// A colour's four channel values in a mode. In a grey mode the first component is 0.299 r + 0.587 g + 0.114
/// b (ITU-R BT.601) and the last is alpha.
[[nodiscard]] Color4 channelValues(const DisplayColor& color, ColorMode mode);

}  // namespace orvanel
