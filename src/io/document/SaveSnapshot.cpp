#include "io/document/SaveSnapshot.h"

#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <bit>
#include <cstring>
#include <map>
#include <string>

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

constexpr auto previewPath = "preview.png";

/// How a surface's rows are divided into the chunks of its entry.
struct SurfaceChunks {
  explicit SurfaceChunks(const SaveSnapshot::LayerEntry& layer)
      : bytesPerRow(layer.width * layer.bpp),
        height(layer.height),
        rowsPerChunk(std::min(rowsOfChunk(bytesPerRow), layer.height)) {}

  [[nodiscard]] int count() const { return static_cast<int>((height + rowsPerChunk - 1) / rowsPerChunk); }
  [[nodiscard]] std::int64_t firstRow(int chunk) const { return chunk * rowsPerChunk; }
  [[nodiscard]] std::int64_t endRow(int chunk) const {
    return std::min(firstRow(chunk) + rowsPerChunk, height);
  }
  [[nodiscard]] static std::size_t headerBytes(int chunk) {
    return chunk == 0 ? LayerdataHeader::byteSize : 0;
  }
  [[nodiscard]] std::size_t size(int chunk) const {
    return headerBytes(chunk) + static_cast<std::size_t>((endRow(chunk) - firstRow(chunk)) * bytesPerRow);
  }

  std::int64_t bytesPerRow;
  std::int64_t height;
  std::int64_t rowsPerChunk;
};

/// What the document's file holds of an entry, or null.
const SavedSurface* savedSurface(const SavedFile* saved, const std::string& path) {
  if (saved == nullptr) return nullptr;
  const auto found = saved->surfaces.find(path);
  return found != saved->surfaces.end() ? &found->second : nullptr;
}

/// Whether the entry is cut into chunks as this program cuts it. Other writers may do it in their own way.
bool hasOwnLayout(const SavedSurface& saved, const SurfaceChunks& chunks) {
  if (saved.chunks.size() != static_cast<std::size_t>(chunks.count())) return false;
  for (int chunk = 0; chunk < chunks.count(); ++chunk) {
    if (saved.chunks[static_cast<std::size_t>(chunk)].size != chunks.size(chunk)) return false;
  }
  return true;
}

ArchiveEntry previewEntry(FrozenComposite& composite, const SavedFile* saved, const Progress& progress) {
  const auto isCancelled = [&progress] { return progress.isCancelled(); };
  ArchiveEntry entry;
  entry.path = previewPath;
  entry.method = ArchiveEntry::Method::stored;
  entry.makeChunk = [&composite, isCancelled](int, ByteBuffer& bytes) {
    const Surface* const picture = composite.surface(isCancelled);
    // A save that was cancelled meanwhile writes nothing more.
    const QByteArray png = picture != nullptr ? previewPng(*picture) : QByteArray();
    bytes.resizeDiscarding(static_cast<std::size_t>(png.size()));
    std::memcpy(bytes.data(), png.constData(), static_cast<std::size_t>(png.size()));
  };
  // An image that still has to be made isn't the one of the last preview.
  if (composite.bytesToFinish() == 0) {
    entry.keptChunk = [kept = savedSurface(saved, previewPath), &composite,
                       isCancelled](int) -> const StoredChunk* {
      const Surface* const picture = composite.surface(isCancelled);
      const bool isSame = kept != nullptr && kept->chunks.size() == 1 && picture != nullptr &&
                          kept->holds(*picture, 0, picture->height());
      return isSame ? &kept->chunks.front() : nullptr;
    };
  }
  return entry;
}

ArchiveEntry surfaceEntry(const SaveSnapshot::LayerEntry& layer, const SavedFile* saved) {
  const SurfaceChunks chunks(layer);
  ArchiveEntry entry;
  entry.path = layer.entryPath.toStdString();
  entry.size = LayerdataHeader::byteSize + static_cast<std::uint64_t>(chunks.bytesPerRow * layer.height);
  entry.chunkCount = chunks.count();
  entry.makeChunk = [&layer, chunks](int chunk, ByteBuffer& bytes) {
    const std::size_t headerBytes = SurfaceChunks::headerBytes(chunk);
    bytes.resizeDiscarding(chunks.size(chunk));
    if (chunk == 0) {
      LayerdataHeader header = LayerdataHeader::of(layer.metalPixelFormat, static_cast<int>(layer.width),
                                                   static_cast<int>(layer.height));
      header.pixelFormat = layer.layerdataFormat;
      const auto encoded = header.encoded();
      std::memcpy(bytes.data(), encoded.data(), encoded.size());
    }
    const std::int64_t firstRow = chunks.firstRow(chunk);
    layer.texture->readRect({0, static_cast<int>(firstRow), static_cast<int>(layer.width),
                             static_cast<int>(chunks.endRow(chunk) - firstRow)},
                            bytes.data() + headerBytes, static_cast<std::size_t>(chunks.bytesPerRow));
  };
  const SavedSurface* const kept = savedSurface(saved, entry.path);
  if (kept == nullptr || !hasOwnLayout(*kept, chunks)) return entry;
  entry.keptChunk = [&layer, chunks, kept](int chunk) {
    const bool isSame = kept->holds(*layer.texture, static_cast<int>(chunks.firstRow(chunk)),
                                    static_cast<int>(chunks.endRow(chunk)));
    return isSame ? &kept->chunks[static_cast<std::size_t>(chunk)] : nullptr;
  };
  return entry;
}

/// The device that a file of that path stands on, or would stand on, whatever links lead there; 0 if there is
/// no such folder.
std::uint64_t deviceOf(const QString& path) {
  const auto device = [](const QString& place) {
    struct stat found {};
    return ::stat(QFile::encodeName(place).constData(), &found) == 0 ? std::uint64_t{found.st_dev} : 0;
  };
  const std::uint64_t ofFile = device(path);
  return ofFile != 0 ? ofFile : device(QFileInfo(path).absolutePath());
}

/// What the archive that was just written holds.
SavedFilePtr savedFile(const SaveSnapshot& snapshot, const AtomicFile& file, const QString& destination,
                       std::vector<WrittenEntry> written) {
  if (!file.committed()) return nullptr;
  auto saved = std::make_shared<SavedFile>();
  saved->documentPath = destination;
  saved->path = file.destination();
  saved->identity = *file.committed();
  std::map<std::string, std::vector<StoredChunk>> chunks;
  for (WrittenEntry& entry : written) chunks[entry.path] = std::move(entry.chunks);
  for (const SaveSnapshot::LayerEntry& layer : snapshot.layerEntries) {
    const std::string path = layer.entryPath.toStdString();
    saved->surfaces.emplace(path, SavedSurface::of(*layer.texture, std::move(chunks[path])));
  }
  if (const auto preview = chunks.find(previewPath); preview != chunks.end()) {
    if (const Surface* picture = snapshot.compositedTexture->surface()) {
      saved->surfaces.emplace(previewPath, SavedSurface::of(*picture, std::move(preview->second)));
    }
  }
  return saved;
}

/// Writes the archive with what `saved` holds, or everything anew without it.
tl::expected<WrittenDocument, WriteFailure> writeWith(const SavedFile* saved, const KeptArchive* keptFrom,
                                                      const SaveSnapshot& snapshot,
                                                      const QString& destination, FileIdentity replaced,
                                                      const Progress& progress) {
  auto file = AtomicFile::create(destination, replaced);
  if (!file) return tl::unexpected(WriteFailure{file.error()});
  std::vector<ArchiveEntry> entries{manifestEntry(snapshot.manifestData)};
  // A document is saved without a preview rather than not at all.
  if (snapshot.compositedTexture != nullptr &&
      pixelsFitInMemory(snapshot.compositedTexture->bytesToFinish())) {
    entries.push_back(previewEntry(*snapshot.compositedTexture, saved, progress));
  }
  for (const SaveSnapshot::LayerEntry& layer : snapshot.layerEntries) {
    entries.push_back(surfaceEntry(layer, saved));
  }
  auto written = writeArchive(**file, entries, progress, keptFrom);
  if (!written) return tl::unexpected(written.error());
  return WrittenDocument{savedFile(snapshot, **file, destination, std::move(*written)), (*file)->doubt()};
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
  snapshot.saved = std::dynamic_pointer_cast<const SavedFile>(document.fileMemory());
  const ColorMode mode = document.colorMode.value();
  snapshot.compositedTexture = document.freezeComposite();
  snapshot.previewPixelFormat = compositePixelFormat(mode);
  snapshot.previewBytesPerPixel = bytesPerPixel(snapshot.previewPixelFormat);
  snapshot.compositingBitsPerChannel = bitsPerChannel(mode);
  return snapshot;
}

Described<WrittenDocument> writeSnapshot(const SaveSnapshot& snapshot, const QString& destination,
                                         const Progress& progress, std::optional<FileIdentity> replaced) {
  // Both attempts replace the same version: what another program writes during the first isn't ours to lose.
  if (!replaced) replaced = FileIdentity::of(QFile::encodeName(destination).toStdString());
  const FileIdentity found = replaced.value_or(FileIdentity());
  // A file on another device may be out of reach by now, and saving elsewhere must not wait for it.
  const bool isNear = snapshot.saved != nullptr && snapshot.saved->identity.device == deviceOf(destination);
  auto savedFile = isNear ? snapshot.saved->open() : std::nullopt;
  if (savedFile) {
    const KeptArchive kept{std::move(*savedFile), snapshot.saved->identity};
    auto written = writeWith(snapshot.saved.get(), &kept, snapshot, destination, found, progress);
    if (written) return std::move(*written);
    if (!written.error().isKeptUnusable) return because(written.error().reason);
  }
  auto written = writeWith(nullptr, nullptr, snapshot, destination, found, progress);
  if (!written) return because(written.error().reason);
  return std::move(*written);
}

}  // namespace orvanel
