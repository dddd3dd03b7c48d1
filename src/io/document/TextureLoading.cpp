#include "io/document/TextureLoading.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>

#include "io/files/FileName.h"
#include "io/files/Parallel.h"
#include "raster/MemoryBudget.h"
#include "raster/Regularity.h"
#include "raster/TileRowWriter.h"

namespace orvanel {
namespace {

QString tooMuchMemory() {
  return QStringLiteral("There is not enough memory for this document.");
}

/// Whether all half floats are in the range 0 to 1. Nearly all rows are, and then need no search for values
/// that kernels can't handle.
bool staysFromZeroToOne(std::span<const std::byte> rows) {
  // Four at a time: a sign is the top bit, and whatever is beyond 0x3C00 reaches that bit by this sum.
  constexpr std::uint64_t topBits = 0x8000'8000'8000'8000U;
  constexpr std::uint64_t fromOneToTop = 0x43FF'43FF'43FF'43FFU;
  std::uint64_t seen = 0;
  std::size_t at = 0;
  std::uint64_t four = 0;
  for (; at + sizeof four <= rows.size(); at += sizeof four) {
    std::memcpy(&four, rows.data() + at, sizeof four);
    seen |= four | (four + fromOneToTop);
  }
  four = 0;
  std::memcpy(&four, rows.data() + at, rows.size() - at);
  seen |= four | (four + fromOneToTop);
  return (seen & topBits) == 0;
}

/// The combined progress of all loading threads.
class LoadProgress {
 public:
  LoadProgress(const Progress& progress, std::uint64_t totalBytes)
      : progress_(progress), totalBytes_(totalBytes) {}

  void add(std::size_t bytes) {
    const std::lock_guard lock(mutex_);
    doneBytes_ += bytes;
    progress_.tell(static_cast<double>(doneBytes_) / static_cast<double>(totalBytes_));
  }
  [[nodiscard]] bool isCancelled() const { return progress_.isCancelled(); }
  [[nodiscard]] const Progress& whole() const { return progress_; }

 private:
  const Progress& progress_;
  std::uint64_t totalBytes_;
  std::mutex mutex_;
  std::uint64_t doneBytes_ = 0;
};

std::size_t bytesPerRow(const Surface& surface) {
  return static_cast<std::size_t>(surface.width()) * static_cast<std::size_t>(surface.pixelBytes());
}

/// Reads one row of tiles in strips that stay in the core's cache from inflating to the tiles. Returns
/// whether all values are between 0 and 1.
Described<bool> fillTileRow(ZipReader::Stream& stream, Surface& surface, int tileY,
                            std::span<std::byte> strip) {
  const std::size_t rowBytes = bytesPerRow(surface);
  const int rowsOfStrip = static_cast<int>(strip.size() / rowBytes);
  TileRowWriter writer(surface, tileY);
  bool isCalm = true;
  for (int left = std::min(tileSide, surface.height() - tileY * tileSide); left > 0;) {
    const int rows = std::min(left, rowsOfStrip);
    const auto bytes = strip.first(rowBytes * static_cast<std::size_t>(rows));
    if (auto result = stream.read(bytes); !result) return because(result.error());
    isCalm = isCalm && staysFromZeroToOne(bytes);
    writer.write(bytes.data(), rows);
    left -= rows;
  }
  return isCalm;
}

/// Reads whole rows of tiles, from `firstRow` up to `endRow` in pixels.
Described<void> fillRows(ZipReader::Stream& stream, Surface& surface, int firstRow, int endRow,
                         LoadProgress& progress) {
  constexpr std::size_t stripBytes = std::size_t{256} << 10U;
  const std::size_t rowBytes = bytesPerRow(surface);
  ByteBuffer strip(rowBytes * std::clamp<std::size_t>(stripBytes / rowBytes, 1, tileSide));
  for (int y = firstRow; y < endRow; y += tileSide) {
    if (progress.isCancelled()) return cancelled();
    const std::size_t bytes = rowBytes * static_cast<std::size_t>(std::min(tileSide, endRow - y));
    if (!pixelsFitInMemory(bytes)) return because(tooMuchMemory());
    const int tileY = y / tileSide;
    const auto isCalm = fillTileRow(stream, surface, tileY, strip.span());
    if (!isCalm) return because(isCalm.error());
    for (int x = 0; x < surface.tilesAcross() && !*isCalm; ++x)
      markIfIrregular(surface, surface.tileIndex(x, tileY));
    progress.add(bytes);
  }
  return {};
}

/// Returns whether the header is the one that this program writes for the surface.
Described<bool> readHeader(ZipReader::Stream& stream, const ArchiveEntryInfo& entry, const Surface& surface) {
  std::array<std::byte, LayerdataHeader::byteSize> start{};
  if (auto result = stream.read(start); !result) return because(result.error());
  const auto header = LayerdataHeader::decode(start);
  if (!header) return because(header.error());
  if (auto judged = judgeHeader(*header, entry, surface); !judged) return because(judged.error());
  return *header == LayerdataHeader::of(surface.format(), surface.width(), surface.height());
}

/// A unit of parallel loading: a whole entry, or parts of one that cover whole rows of tiles.
struct LoadPiece {
  std::size_t entry = 0;
  std::size_t firstPart = 0;
  std::size_t partCount = 0;  ///< 0 for the whole entry
  int firstRow = 0;
  int endRow = 0;
  std::uint64_t size = 0;
  std::uint32_t crc = 0;                 ///< once it is read
  bool isForeign = false;                ///< with a header of another writer
  std::vector<StoredChunk> chunks = {};  ///< once it is read
};

/// Splits an entry where a part starts at a row of tiles; an entry without parts stays whole.
std::vector<LoadPiece> piecesOf(std::size_t entry, const std::vector<EntryPart>& parts,
                                const Surface& surface) {
  constexpr std::uint64_t leastPieceBytes = std::uint64_t{16} << 20U;
  const LoadPiece whole{.entry = entry, .endRow = surface.height()};
  if (parts.empty()) return {whole};
  const std::uint64_t tileRowBytes = std::uint64_t{bytesPerRow(surface)} * tileSide;
  std::vector<LoadPiece> pieces{whole};
  std::uint64_t offset = 0;
  for (std::size_t part = 0; part < parts.size(); ++part) {
    const std::uint64_t pixelBytes = offset - std::min<std::uint64_t>(offset, LayerdataHeader::byteSize);
    if (pieces.back().size >= leastPieceBytes && pixelBytes % tileRowBytes == 0) {
      const int row = static_cast<int>(pixelBytes / tileRowBytes) * tileSide;
      pieces.back().endRow = row;
      pieces.push_back({.entry = entry, .firstPart = part, .firstRow = row, .endRow = surface.height()});
    }
    ++pieces.back().partCount;
    pieces.back().size += parts[part].size;
    offset += parts[part].size;
  }
  return pieces;
}

/// Reads a piece, into the surface if there is one.
Described<void> readPiece(const ZipReader& archive, LoadPiece& piece, Surface* surface,
                          LoadProgress& progress) {
  const bool isWhole = piece.partCount == 0;
  auto stream = isWhole ? archive.stream(piece.entry)
                        : archive.streamOfParts(piece.entry, piece.firstPart, piece.partCount);
  if (!stream) return because(stream.error());
  if (surface != nullptr && piece.firstRow == 0) {
    const auto isOwn = readHeader(*stream, archive.entries()[piece.entry], *surface);
    if (!isOwn) return because(isOwn.error());
    piece.isForeign = !*isOwn;
  }
  if (surface != nullptr) {
    if (auto result = fillRows(*stream, *surface, piece.firstRow, piece.endRow, progress); !result)
      return result;
  }
  if (isWhole) return stream->finish(progress.whole());
  piece.crc = stream->crc();
  piece.chunks = stream->chunks();
  return {};
}

/// Checks the combined CRC-32 of the pieces of each entry.
Described<void> judgeSums(const std::vector<LoadPiece>& pieces,
                          const std::vector<ArchiveEntryInfo>& entries) {
  for (std::size_t i = 0; i < pieces.size();) {
    const ArchiveEntryInfo& entry = entries[pieces[i].entry];
    const bool isInPieces = pieces[i].partCount > 0;
    std::uint32_t crc = 0;
    const std::size_t index = pieces[i].entry;
    for (; i < pieces.size() && pieces[i].entry == index; ++i)
      crc = joinCrc32(crc, pieces[i].crc, pieces[i].size);
    if (isInPieces && crc != entry.crc) {
      return because(QStringLiteral("The entry \"%1\" can't be read. Its checksum is wrong.")
                         .arg(displayName(QString::fromStdString(entry.path))));
    }
  }
  return {};
}

/// The surface of each entry; null for those that nobody asks for.
std::vector<Surface*> destinationsOf(const OpenedDocument& opened) {
  std::vector<Surface*> destinations(opened.archive.entries().size(), nullptr);
  for (const TextureLoadRequest& request : opened.requests)
    destinations[request.entry] = request.destination.get();
  return destinations;
}

std::uint64_t tilesHeldBy(const ConstTexture& texture) {
  std::uint64_t count = 0;
  for (int index = 0; texture != nullptr && index < texture->tileCount(); ++index)
    count += texture->tile(index).isUniform() ? 0 : 1;
  return count;
}

/// An open folder; a surface of its own needs at most as many tiles as its contents have.
struct ShownFolder {
  int depth = -1;  ///< of the root's own place
  bool needsSurface = false;
  std::uint64_t held = 0;
};

/// Where the surfaces' entries stand in the archive, as far as they were read in parts.
SavedSurfaces savedSurfaces(const OpenedDocument& opened, const std::vector<Surface*>& destinations,
                            const std::vector<LoadPiece>& pieces) {
  SavedSurfaces surfaces;
  for (std::size_t i = 0; i < pieces.size();) {
    const std::size_t entry = pieces[i].entry;
    std::vector<StoredChunk> chunks;
    const bool isForeign = pieces[i].isForeign;
    for (; i < pieces.size() && pieces[i].entry == entry; ++i) {
      chunks.insert(chunks.end(), pieces[i].chunks.begin(), pieces[i].chunks.end());
    }
    if (destinations[entry] == nullptr || chunks.empty() || isForeign) continue;
    surfaces.emplace(opened.archive.entries()[entry].path,
                     SavedSurface::of(*destinations[entry], std::move(chunks)));
  }
  return surfaces;
}

}  // namespace

// The header must agree with the surface that the tree asks for, and the entry's length with both.
Described<void> judgeHeader(const LayerdataHeader& header, const ArchiveEntryInfo& entry,
                            const Surface& surface) {
  const bool agrees = header.surfaceFormat() == surface.format() &&
                      header.width == static_cast<std::uint32_t>(surface.width()) &&
                      header.height == static_cast<std::uint32_t>(surface.height()) &&
                      entry.size == LayerdataHeader::byteSize + header.payloadSize();
  if (agrees) return {};
  return because(QStringLiteral("The entry \"%1\" doesn't match the document's canvas and color mode.")
                     .arg(displayName(QString::fromStdString(entry.path))));
}

// Requested entries must match the size of their surfaces; the total size of all others is limited.
Described<void> judgeSizes(const OpenedDocument& opened) {
  constexpr std::uint64_t roomForOthers = std::uint64_t{64} << 20U;
  const auto& entries = opened.archive.entries();
  const std::vector<Surface*> destinations = destinationsOf(opened);
  std::uint64_t others = 0;
  for (std::size_t index = 0; index < entries.size(); ++index) {
    const Surface* surface = destinations[index];
    if (surface == nullptr) {
      others += entries[index].size;
      continue;
    }
    if (entries[index].size == LayerdataHeader::byteSize + static_cast<std::uint64_t>(surface->byteSize()))
      continue;
    return because(QStringLiteral("The entry \"%1\" doesn't match the document's canvas and color mode.")
                       .arg(displayName(QString::fromStdString(entries[index].path))));
  }
  const DocumentManifest& canvas = opened.manifest.document;
  const auto canvasPixels =
      static_cast<std::uint64_t>(canvas.canvasWidth) * static_cast<std::uint64_t>(canvas.canvasHeight);
  if (others <= 8 * canvasPixels + roomForOthers) return {};
  return because(QStringLiteral("The archive contains more data than its document can use."));
}

Described<SavedSurfaces> fillTextures(const OpenedDocument& opened, const Progress& progress) {
  if (auto result = judgeSizes(opened); !result) return because(result.error());
  const auto& entries = opened.archive.entries();
  const std::vector<Surface*> destinations = destinationsOf(opened);
  std::uint64_t total = 1;
  for (const ArchiveEntryInfo& entry : entries) total += entry.size;

  LoadProgress loaded(progress, total);
  std::vector<LoadPiece> pieces;
  for (std::size_t index = 0; index < entries.size(); ++index) {
    if (destinations[index] == nullptr) {
      pieces.push_back({.entry = index});
      continue;
    }
    const auto cut = piecesOf(index, opened.archive.parts(index), *destinations[index]);
    pieces.insert(pieces.end(), cut.begin(), cut.end());
  }
  const auto read = forEachInBackground(pieces.size(), [&](std::size_t index) {
    return readPiece(opened.archive, pieces[index], destinations[pieces[index].entry], loaded);
  });
  if (!read) return because(read.error());
  if (auto judged = judgeSums(pieces, entries); !judged) return because(judged.error());
  return savedSurfaces(opened, destinations, pieces);
}

Described<void> judgeShownMemory(const DocumentPlan& plan) {
  const DocumentManifest& canvas = plan.manifest.document;
  const auto tilesAlong = [](std::int64_t side) {
    return static_cast<std::uint64_t>((side - 1) / tileSide + 1);
  };
  const std::uint64_t tilesOfCanvas = tilesAlong(canvas.canvasWidth) * tilesAlong(canvas.canvasHeight);
  std::uint64_t inFolders = 0;
  std::vector<ShownFolder> open(1);
  const auto closeDownTo = [&](int depth) {
    while (open.back().depth >= depth) {
      const ShownFolder closed = open.back();
      open.pop_back();
      open.back().held += closed.held;
      if (closed.needsSurface) inFolders += std::min(closed.held, tilesOfCanvas);
    }
  };
  for (const PlannedNode& node : plan.nodes) {
    const NodeManifest& manifest = plan.manifest.nodes[node.manifest];
    closeDownTo(manifest.depth);
    if (manifest.type == u"folder") {
      open.push_back({.depth = manifest.depth, .needsSurface = isolates(manifest)});
    } else {
      open.back().held += tilesHeldBy(node.pixels) + tilesHeldBy(node.mask);
    }
  }
  closeDownTo(0);
  const ColorMode mode = colorModeFromRaw(canvas.colorMode).value_or(ColorMode::rgb16);
  const std::uint64_t tileBytes = std::uint64_t{tileSide} * tileSide *
                                  static_cast<std::uint64_t>(bytesPerPixel(compositePixelFormat(mode)));
  if (pixelsFitInMemory((inFolders + std::min(open.front().held, tilesOfCanvas)) * tileBytes)) return {};
  return because(tooMuchMemory());
}

}  // namespace orvanel
