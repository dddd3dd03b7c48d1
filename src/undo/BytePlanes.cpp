#include "undo/BytePlanes.h"

namespace orvanel {
namespace {

// The pixel size is a constant here so that the compiler can turn the loops into shuffles.
template <std::size_t pixelBytes>
void split(const std::byte* __restrict pixels, std::byte* __restrict planes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t plane = 0; plane < pixelBytes; ++plane) {
      planes[plane * count + i] = pixels[i * pixelBytes + plane];
    }
  }
}

template <std::size_t pixelBytes>
void join(const std::byte* __restrict planes, std::byte* __restrict pixels, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t plane = 0; plane < pixelBytes; ++plane) {
      pixels[i * pixelBytes + plane] = planes[plane * count + i];
    }
  }
}

}  // namespace

void splitBytePlanes(std::span<const std::byte> pixels, std::span<std::byte> planes, int pixelBytes) {
  const std::size_t count = pixels.size() / static_cast<std::size_t>(pixelBytes);
  switch (pixelBytes) {
    case 2:
      return split<2>(pixels.data(), planes.data(), count);
    case 4:
      return split<4>(pixels.data(), planes.data(), count);
    default:
      return split<8>(pixels.data(), planes.data(), count);
  }
}

void joinBytePlanes(std::span<const std::byte> planes, std::span<std::byte> pixels, int pixelBytes) {
  const std::size_t count = pixels.size() / static_cast<std::size_t>(pixelBytes);
  switch (pixelBytes) {
    case 2:
      return join<2>(planes.data(), pixels.data(), count);
    case 4:
      return join<4>(planes.data(), pixels.data(), count);
    default:
      return join<8>(planes.data(), pixels.data(), count);
  }
}

}  // namespace orvanel
