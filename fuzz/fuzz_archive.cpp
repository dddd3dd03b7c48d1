// Any bytes as a whole document file. Canvases are kept small, so that time goes into finding faults and
// not into making pixels; everything else is what the program does with a stranger's file.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "io/document/DocumentReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto opened = orvanel::openDocument(std::as_bytes(std::span(data, size)));
  if (!opened) {
    if (opened.error().isEmpty()) std::abort();
    return 0;
  }
  constexpr std::int64_t largestArea = 1 << 16;
  const orvanel::DocumentManifest& document = opened->manifest.document;
  if (document.canvasWidth * document.canvasHeight > largestArea) return 0;
  const auto built = orvanel::buildDocument(*opened, orvanel::MetalContext::shared());
  if (!built) return 0;
  static_cast<void>(orvanel::fillTextures(*opened, built->requests, {}));
  return 0;
}
