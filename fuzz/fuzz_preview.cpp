// Arbitrary bytes as a document file whose preview a file manager wants.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "io/document/StoredPreview.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto preview = orvanel::readStoredPreview(std::as_bytes(std::span(data, size)));
  if (!preview) {
    if (preview.error().isEmpty()) std::abort();
    return 0;
  }
  if (orvanel::fittedPreview(*preview, 128).isNull()) std::abort();
  return 0;
}
