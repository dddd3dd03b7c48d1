// The two enumerations every pixel carries with it: a document's colour mode and a node's blend mode.
// Raw values are stored in document files and kernel argument records.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "raster/PixelFormat.h"

namespace orvanel {

enum class ColorMode : std::uint32_t { grayscale8 = 0, grayscale16 = 1, rgb8 = 2, rgb16 = 3 };

enum class BlendMode : std::uint32_t {
  normal = 0,
  multiply = 1,
  screen = 2,
  overlay = 3,
  darken = 4,
  lighten = 5,
  difference = 6,
  exclusion = 7,
};

inline constexpr std::array allColorModes{ColorMode::grayscale8, ColorMode::grayscale16, ColorMode::rgb8,
                                          ColorMode::rgb16};
inline constexpr std::array allBlendModes{BlendMode::normal,     BlendMode::multiply, BlendMode::screen,
                                          BlendMode::overlay,    BlendMode::darken,   BlendMode::lighten,
                                          BlendMode::difference, BlendMode::exclusion};

/// The enumerator with this raw value, or nothing.
[[nodiscard]] constexpr std::optional<ColorMode> colorModeFromRaw(std::int64_t raw) {
  if (raw < 0 || raw > 3) return std::nullopt;
  return static_cast<ColorMode>(raw);
}
[[nodiscard]] constexpr std::optional<BlendMode> blendModeFromRaw(std::int64_t raw) {
  if (raw < 0 || raw > 7) return std::nullopt;
  return static_cast<BlendMode>(raw);
}

[[nodiscard]] constexpr std::uint32_t rawValue(ColorMode mode) {
  return static_cast<std::uint32_t>(mode);
}
[[nodiscard]] constexpr std::uint32_t rawValue(BlendMode mode) {
  return static_cast<std::uint32_t>(mode);
}

[[nodiscard]] constexpr std::string_view displayName(ColorMode mode) {
  constexpr std::array<std::string_view, 4> names{"Grayscale 8-bit", "Grayscale 16-bit", "RGB 8-bit",
                                                  "RGB 16-bit"};
  return names[rawValue(mode)];
}
[[nodiscard]] constexpr std::string_view displayName(BlendMode mode) {
  constexpr std::array<std::string_view, 8> names{"Normal", "Multiply", "Screen",     "Overlay",
                                                  "Darken", "Lighten",  "Difference", "Exclusion"};
  return names[rawValue(mode)];
}

[[nodiscard]] constexpr bool isGrayscale(ColorMode mode) {
  return rawValue(mode) < 2;
}
[[nodiscard]] constexpr int bitsPerChannel(ColorMode mode) {
  return (rawValue(mode) & 1U) != 0 ? 16 : 8;
}

/// Format of a layer's surface: grey layers are stored as two channels.
[[nodiscard]] constexpr PixelFormat layerPixelFormat(ColorMode mode) {
  constexpr std::array formats{PixelFormat::rg8Unorm, PixelFormat::rg16Unorm, PixelFormat::rgba8Unorm,
                               PixelFormat::rgba16Float};
  return formats[rawValue(mode)];
}

/// Format of the composite and of a folder's temporary: always four channels, of the mode's depth.
[[nodiscard]] constexpr PixelFormat compositePixelFormat(ColorMode mode) {
  return bitsPerChannel(mode) == 8 ? PixelFormat::rgba8Unorm : PixelFormat::rgba16Float;
}

/// The RGB mode of the same depth, in which a folder's result is composited.
[[nodiscard]] constexpr ColorMode folderColorMode(ColorMode mode) {
  return bitsPerChannel(mode) == 8 ? ColorMode::rgb8 : ColorMode::rgb16;
}

inline constexpr PixelFormat maskPixelFormat = PixelFormat::r16Float;

/// The largest canvas side, in pixels.
inline constexpr int maximumCanvasSide = 16384;

}  // namespace orvanel
