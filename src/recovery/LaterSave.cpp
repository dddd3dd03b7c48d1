#include "recovery/LaterSave.h"

#include <QFile>
#include <vector>

#include "io/archive/Deflate.h"
#include "io/document/DocumentReader.h"
#include "io/document/TextureLoading.h"

namespace orvanel {

std::optional<LaterSave> LaterSave::open(const std::string& path, const MetalContext& context,
                                         const Progress& progress) {
  const auto opened = openDocument(QFile::decodeName(path.c_str()), context, progress);
  if (!opened || !fillTextures(*opened, progress)) return std::nullopt;
  LaterSave save;
  for (const TextureLoadRequest& request : opened->requests) {
    const ArchiveEntryInfo& entry = opened->archive.entries()[request.entry];
    save.entries_[entry.path] = {request.destination, entry.crc};
  }
  return save;
}

ConstTexture LaterSave::surface(const std::string& path) const {
  const auto found = entries_.find(path);
  return found != entries_.end() ? found->second.surface : nullptr;
}

bool LaterSave::holdsUnchanged(const journal::BaseSurface& surface) const {
  const auto found = entries_.find(surface.path);
  if (found == entries_.end()) return false;
  const Surface& held = *found->second.surface;
  std::uint32_t crc = 0;
  for (const StoredChunk& chunk : surface.chunks) crc = joinCrc32(crc, chunk.crc, chunk.size);
  return crc == found->second.crc && held.format() == surface.format &&
         held.width() == static_cast<int>(surface.width) && held.height() == static_cast<int>(surface.height);
}

bool isSameTile(const Surface& one, const Surface& other, int index) {
  const PixelRect rect = one.tileRect(index).intersected(one.bounds());
  const auto rowBytes = static_cast<std::size_t>(rect.width * one.pixelBytes());
  const auto bytesOf = [&](const Surface& surface) {
    std::vector<std::byte> bytes(rowBytes * static_cast<std::size_t>(rect.height));
    surface.readRect(rect, bytes.data(), rowBytes);
    return bytes;
  };
  return bytesOf(one) == bytesOf(other);
}

}  // namespace orvanel
