// The binary entry of a document file that holds one surface: a header of 24 bytes and the rows of pixels,
// top row first, without padding; all numbers little-endian. Plain values, any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "io/files/FileError.h"
#include "raster/PixelFormat.h"

namespace orvanel {

struct LayerdataHeader {
  static constexpr std::size_t byteSize = 24;
  static constexpr std::uint32_t expectedMagic = 0x4D524B56;

  std::uint32_t magic = expectedMagic;
  std::uint16_t headerVersion = 1;
  std::uint16_t pixelFormat = 3;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bytesPerRow = 0;
  std::uint32_t flags = 0;

  friend bool operator==(const LayerdataHeader&, const LayerdataHeader&) = default;

  /// The header of a surface of this format and size.
  [[nodiscard]] static LayerdataHeader of(PixelFormat format, int width, int height);
  [[nodiscard]] std::array<std::byte, byteSize> encoded() const;
  /// Checks only the length and the magic number.
  [[nodiscard]] static Described<LayerdataHeader> decode(std::span<const std::byte> bytes);

  /// The surface format that `pixelFormat` stands for.
  [[nodiscard]] PixelFormat surfaceFormat() const;
  /// Bytes of all rows.
  [[nodiscard]] std::uint64_t payloadSize() const;
};

/// The code of a surface format; 3 for a format that has no code.
[[nodiscard]] std::uint16_t layerdataCode(PixelFormat format);
/// The surface format of a code; `rgba16Float` for any above 4.
[[nodiscard]] PixelFormat layerdataFormat(std::uint16_t code);

}  // namespace orvanel
