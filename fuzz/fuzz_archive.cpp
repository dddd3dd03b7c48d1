// Arbitrary bytes as a document file, loaded as the program does. Memory and canvas size are limited to keep
// the fuzzer fast. Most mutations are made inside the entries and the archive is packed anew, so that they
// get past its sums and sizes to the manifest and the layers.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "Mutations.h"
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

namespace {

using orvanel::fuzz::choose;
using orvanel::fuzz::ZipEntry;

/// Mostly leaves the length, which has to agree with the canvas.
void mutateLayer(orvanel::fuzz::Bytes& content, orvanel::fuzz::Random& random, std::size_t room) {
  if (content.empty() || choose(random, 4) == 0)
    return orvanel::fuzz::mutateBytes(content, content.size() + room);
  constexpr std::size_t headerSize = 24;
  const std::size_t first = choose(random, 3) == 0 ? 0 : std::min(headerSize, content.size() - 1);
  orvanel::fuzz::Bytes part(content.begin() + static_cast<std::ptrdiff_t>(first), content.end());
  orvanel::fuzz::mutateBytes(part, part.size());
  part.resize(content.size() - first);
  std::copy(part.begin(), part.end(), content.begin() + static_cast<std::ptrdiff_t>(first));
}

void mutateEntries(std::vector<ZipEntry>& entries, orvanel::fuzz::Random& random, std::size_t room) {
  ZipEntry& entry = entries[choose(random, entries.size())];
  const ZipEntry other = entries[choose(random, entries.size())];
  switch (choose(random, 16)) {
    case 0:
      entry.parts = choose(random, 5);
      return;
    case 1:
      entry.content = other.content;
      return;
    case 2:
      entries.push_back(other);
      return;
    case 3:
      entries.erase(entries.begin() + (&entry - entries.data()));
      return;
    case 4:
      entry.lie = static_cast<std::uint32_t>(choose(random, 64)) - 32U;
      return;
    case 5:
      entry.name = other.name;
      return;
    default:
      break;
  }
  if (entry.name == "manifest.json") {
    orvanel::fuzz::mutateJson(entry.content, random);
  } else if (entry.name.ends_with(".layerdata")) {
    mutateLayer(entry.content, random, room);
  } else {
    orvanel::fuzz::mutateBytes(entry.content, entry.content.size() + room);
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned int seed) {
  orvanel::fuzz::Random random(seed);
  auto entries = orvanel::fuzz::unpackedZip({data, size});
  const bool isRaw = choose(random, 8) == 0;
  if (isRaw || !entries || entries->empty()) return orvanel::fuzz::handedOver({}, data, size, most);
  mutateEntries(*entries, random, 64);
  return orvanel::fuzz::handedOver(orvanel::fuzz::packedZip(*entries), data, size, most);
}
