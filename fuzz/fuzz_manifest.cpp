// Arbitrary text as a manifest: it is rejected, or the decoded manifest round-trips.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "io/document/Manifest.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto manifest = orvanel::decodeManifest({reinterpret_cast<const char*>(data), size});
  if (!manifest) {
    if (manifest.error().isEmpty()) std::abort();
    return 0;
  }
  const QByteArray text = orvanel::encodeManifest(*manifest);
  const auto again = orvanel::decodeManifest({text.constData(), static_cast<std::size_t>(text.size())});
  if (!again || orvanel::encodeManifest(*again) != text) std::abort();
  return 0;
}
