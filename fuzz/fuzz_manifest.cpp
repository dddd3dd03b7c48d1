// Arbitrary text as a manifest: it is rejected, or the decoded manifest round-trips. Half of the mutations
// keep it JSON.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Mutations.h"
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

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned int seed) {
  orvanel::fuzz::Random random(seed);
  if (orvanel::fuzz::choose(random, 2) == 0) return orvanel::fuzz::handedOver({}, data, size, most);
  orvanel::fuzz::Bytes text(data, data + size);
  orvanel::fuzz::mutateJson(text, random);
  return orvanel::fuzz::handedOver(text, data, size, most);
}
