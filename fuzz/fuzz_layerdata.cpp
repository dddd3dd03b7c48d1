// Arbitrary bytes as a layer entry: the header is rejected, or its fields round-trip and its size is valid.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "io/document/LayerData.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = std::as_bytes(std::span(data, size));
  const auto header = orvanel::LayerdataHeader::decode(bytes);
  if (!header) return 0;
  const auto encoded = header->encoded();
  if (!std::ranges::equal(encoded, bytes.first(encoded.size()))) std::abort();
  const std::uint64_t pixels = std::uint64_t{header->width} * header->height;
  if (header->payloadSize() < pixels) std::abort();
  if (orvanel::bytesPerPixel(header->surfaceFormat()) > 8) std::abort();
  return 0;
}
