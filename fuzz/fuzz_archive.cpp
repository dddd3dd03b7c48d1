// Arbitrary bytes as a document file, loaded as the program does. Memory and canvas size are limited to keep
// the fuzzer fast.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "io/document/DocumentReader.h"
#include "io/document/TextureLoading.h"
#include "raster/MemoryBudget.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const orvanel::ScopedMemoryLimit limit(std::uint64_t{64} << 20U);
  orvanel::MetalContext& context = orvanel::MetalContext::shared();
  const auto opened = orvanel::openDocument(std::as_bytes(std::span(data, size)), context);
  if (!opened) {
    if (opened.error().isEmpty()) std::abort();
    return 0;
  }
  constexpr std::int64_t largestArea = 1 << 16;
  const orvanel::DocumentManifest& document = opened->manifest.document;
  if (document.canvasWidth * document.canvasHeight > largestArea) return 0;
  const orvanel::DocumentPtr built = orvanel::buildDocument(*opened, context);
  static_cast<void>(orvanel::fillTextures(*opened, {}));
  return 0;
}
