#include "io/document/SaveSnapshot.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "io/archive/ZipReader.h"
#include "io/document/LayerData.h"
#include "io/document/Manifest.h"
#include "io/document/Preview.h"
#include "model/Document.h"
#include "model/DocumentCompositor.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

/// Raw bytes of a chunk: long enough to deflate well, short enough that all cores end together.
constexpr std::int64_t chunkBytes = std::int64_t{1} << 20U;

/// Rows are chosen to divide the height of a tile or to be a multiple of it, so that a chunk starts at each
/// row of tiles and loading can start there.
std::int64_t rowsOfChunk(std::int64_t bytesPerRow) {
  const std::int64_t rows = std::max<std::int64_t>(1, chunkBytes / bytesPerRow);
  if (rows >= tileSide) return rows / tileSide * tileSide;
  return static_cast<std::int64_t>(std::bit_floor(static_cast<std::uint64_t>(rows)));
}
static_assert(std::has_single_bit(static_cast<unsigned>(tileSide)));

SaveSnapshot::LayerEntry entryOf(const QString& path, const Surface& surface) {
  const std::uint16_t code = layerdataCode(surface.format());
  return {path,
          std::make_shared<const Surface>(surface),
          code,
          surface.format(),
          surface.width(),
          surface.height(),
          bytesPerPixel(layerdataFormat(code))};
}

ArchiveEntry manifestEntry(const QByteArray& manifest) {
  ArchiveEntry entry;
  entry.path = "manifest.json";
  entry.size = static_cast<std::uint64_t>(manifest.size());
  entry.makeChunk = [&manifest](int, ByteBuffer& bytes) {
    bytes.resizeDiscarding(static_cast<std::size_t>(manifest.size()));
    std::memcpy(bytes.data(), manifest.constData(), static_cast<std::size_t>(manifest.size()));
  };
  return entry;
}

ArchiveEntry previewEntry(FrozenComposite& composite, const Progress& progress) {
  ArchiveEntry entry;
  entry.path = "preview.png";
  entry.method = ArchiveEntry::Method::stored;
  entry.makeChunk = [&composite, &progress](int, ByteBuffer& bytes) {
    const Surface* const picture = composite.surface([&progress] { return progress.isCancelled(); });
    // A save that was cancelled meanwhile writes nothing more.
    const QByteArray png = picture != nullptr ? previewPng(*picture) : QByteArray();
    bytes.resizeDiscarding(static_cast<std::size_t>(png.size()));
    std::memcpy(bytes.data(), png.constData(), static_cast<std::size_t>(png.size()));
  };
  return entry;
}

ArchiveEntry surfaceEntry(const SaveSnapshot::LayerEntry& layer) {
  const std::int64_t bytesPerRow = layer.width * layer.bpp;
  const std::int64_t rowsPerChunk = std::min(rowsOfChunk(bytesPerRow), layer.height);
  ArchiveEntry entry;
  entry.path = layer.entryPath.toStdString();
  entry.size = LayerdataHeader::byteSize + static_cast<std::uint64_t>(bytesPerRow * layer.height);
  entry.chunkCount = static_cast<int>((layer.height + rowsPerChunk - 1) / rowsPerChunk);
  entry.makeChunk = [&layer, bytesPerRow, rowsPerChunk](int chunk, ByteBuffer& bytes) {
    const std::int64_t firstRow = chunk * rowsPerChunk;
    const std::int64_t rows = std::min(rowsPerChunk, layer.height - firstRow);
    const std::size_t headerBytes = chunk == 0 ? LayerdataHeader::byteSize : 0;
    bytes.resizeDiscarding(headerBytes + static_cast<std::size_t>(rows * bytesPerRow));
    if (chunk == 0) {
      LayerdataHeader header = LayerdataHeader::of(layer.metalPixelFormat, static_cast<int>(layer.width),
                                                   static_cast<int>(layer.height));
      header.pixelFormat = layer.layerdataFormat;
      const auto encoded = header.encoded();
      std::memcpy(bytes.data(), encoded.data(), encoded.size());
    }
    layer.texture->readRect(
        {0, static_cast<int>(firstRow), static_cast<int>(layer.width), static_cast<int>(rows)},
        bytes.data() + headerBytes, static_cast<std::size_t>(bytesPerRow));
  };
  return entry;
}

}  // namespace

QString layerEntryPath(const QString& layerID) {
  return QStringLiteral("layers/%1.layerdata").arg(layerID);
}

QString maskEntryPath(const QString& layerID) {
  return QStringLiteral("layers/%1.mask.layerdata").arg(layerID);
}

Described<SaveSnapshot> SaveSnapshot::take(const Document& document) {
  const auto manifest = describeDocument(document);
  if (!manifest) return because(manifest.error());
  SaveSnapshot snapshot;
  snapshot.manifestData = encodeManifest(*manifest);
  if (static_cast<std::uint64_t>(snapshot.manifestData.size()) > maximumManifestBytes) {
    return because(QStringLiteral("The document has more nodes than a file can hold."));
  }
  std::vector<std::shared_ptr<Layer>> layers;
  collectLayers(document.rootNodes.value(), layers);
  for (const std::shared_ptr<Layer>& layer : layers) {
    const QString id = uuidText(layer->id);
    if (const ConstTexture& pixels = layer->texture.value()) {
      snapshot.layerEntries.push_back(entryOf(layerEntryPath(id), *pixels));
    }
    if (const std::shared_ptr<LayerMask>& mask = layer->mask.value()) {
      snapshot.layerEntries.push_back(entryOf(maskEntryPath(id), *mask->maskTexture->texture));
    }
  }
  constexpr std::size_t otherEntries = 2;
  if (snapshot.layerEntries.size() + otherEntries > maximumArchiveEntries) {
    return because(QStringLiteral("The document has more layers than a file can hold."));
  }
  const ColorMode mode = document.colorMode.value();
  snapshot.compositedTexture = document.freezeComposite();
  snapshot.previewPixelFormat = compositePixelFormat(mode);
  snapshot.previewBytesPerPixel = bytesPerPixel(snapshot.previewPixelFormat);
  snapshot.compositingBitsPerChannel = bitsPerChannel(mode);
  return snapshot;
}

Described<void> writeSnapshot(const SaveSnapshot& snapshot, const QString& destination,
                              const Progress& progress) {
  auto file = AtomicFile::create(destination);
  if (!file) return because(file.error());
  std::vector<ArchiveEntry> entries{manifestEntry(snapshot.manifestData)};
  // A document is saved without a preview rather than not at all.
  if (snapshot.compositedTexture != nullptr &&
      pixelsFitInMemory(snapshot.compositedTexture->bytesToFinish())) {
    entries.push_back(previewEntry(*snapshot.compositedTexture, progress));
  }
  for (const SaveSnapshot::LayerEntry& layer : snapshot.layerEntries) entries.push_back(surfaceEntry(layer));
  return writeArchive(**file, entries, progress);
}

}  // namespace orvanel
