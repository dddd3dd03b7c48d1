#include "io/document/LayerData.h"

#include <bit>
#include <cstring>
#include <limits>

#include "raster/MetalContext.h"

namespace orvanel {
namespace {

constexpr std::array codeFormats{PixelFormat::rg8Unorm, PixelFormat::rg16Unorm, PixelFormat::rgba8Unorm,
                                 PixelFormat::rgba16Float, PixelFormat::r16Float};
constexpr std::uint16_t defaultCode = 3;

static_assert(std::endian::native == std::endian::little, "the fields are copied as they stand in memory");

template <typename Number>
void put(std::byte* out, std::size_t offset, Number value) {
  std::memcpy(out + offset, &value, sizeof value);
}

template <typename Number>
void get(const std::byte* in, std::size_t offset, Number& value) {
  std::memcpy(&value, in + offset, sizeof value);
}

}  // namespace

std::uint16_t layerdataCode(PixelFormat format) {
  for (std::size_t code = 0; code < codeFormats.size(); ++code) {
    if (codeFormats[code] == format) return static_cast<std::uint16_t>(code);
  }
  return defaultCode;
}

PixelFormat layerdataFormat(std::uint16_t code) {
  return code < codeFormats.size() ? codeFormats[code] : codeFormats[defaultCode];
}

LayerdataHeader LayerdataHeader::of(PixelFormat format, int width, int height) {
  LayerdataHeader header;
  header.pixelFormat = layerdataCode(format);
  const std::uint64_t rowBytes =
      static_cast<std::uint64_t>(width) *
      static_cast<std::uint64_t>(bytesPerPixel(layerdataFormat(header.pixelFormat)));
  if (width < 0 || height < 0 || rowBytes > std::numeric_limits<std::uint32_t>::max()) {
    fatalFault("A surface is too large for a document file");
  }
  header.width = static_cast<std::uint32_t>(width);
  header.height = static_cast<std::uint32_t>(height);
  header.bytesPerRow = static_cast<std::uint32_t>(rowBytes);
  return header;
}

std::array<std::byte, LayerdataHeader::byteSize> LayerdataHeader::encoded() const {
  std::array<std::byte, byteSize> bytes{};
  put(bytes.data(), 0, magic);
  put(bytes.data(), 4, headerVersion);
  put(bytes.data(), 6, pixelFormat);
  put(bytes.data(), 8, width);
  put(bytes.data(), 12, height);
  put(bytes.data(), 16, bytesPerRow);
  put(bytes.data(), 20, flags);
  return bytes;
}

Described<LayerdataHeader> LayerdataHeader::decode(std::span<const std::byte> bytes) {
  if (bytes.size() < byteSize) return because(QStringLiteral("A layer's data is too short."));
  LayerdataHeader header;
  get(bytes.data(), 0, header.magic);
  get(bytes.data(), 4, header.headerVersion);
  get(bytes.data(), 6, header.pixelFormat);
  get(bytes.data(), 8, header.width);
  get(bytes.data(), 12, header.height);
  get(bytes.data(), 16, header.bytesPerRow);
  get(bytes.data(), 20, header.flags);
  if (header.magic != expectedMagic) return because(QStringLiteral("A layer's data has no valid header."));
  return header;
}

PixelFormat LayerdataHeader::surfaceFormat() const {
  return layerdataFormat(pixelFormat);
}

std::uint64_t LayerdataHeader::payloadSize() const {
  // At most 2^32 times 2^32 times 8: the callers compare sizes of far less, so saturate.
  const std::uint64_t pixels = std::uint64_t{width} * height;
  const auto pixelBytes = static_cast<std::uint64_t>(bytesPerPixel(surfaceFormat()));
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  return pixels > most / pixelBytes ? most : pixels * pixelBytes;
}

}  // namespace orvanel
