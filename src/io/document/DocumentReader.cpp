#include "io/document/DocumentReader.h"

#include <QFile>
#include <QSet>
#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>

#include "io/document/LayerData.h"
#include "io/document/SaveSnapshot.h"
#include "io/files/FileName.h"
#include "io/files/Parallel.h"
#include "raster/MemoryBudget.h"
#include "raster/Regularity.h"

namespace orvanel {
namespace {

QString tooMuchMemory() {
  return QStringLiteral("The document needs more memory than there is.");
}

/// The id that a text in the canonical form stands for; that of nothing but zeros is one as well.
std::optional<QUuid> idOf(const QString& text) {
  const QUuid id = uuidFromText(text);
  if (id.isNull() && text != uuidText(id)) return std::nullopt;
  return id;
}

BlendMode blendModeOf(const NodeManifest& node) {
  return blendModeFromRaw(node.blendMode).value_or(BlendMode::normal);
}

/// Folders that don't let their children through get a surface of their own when they are shown.
bool isolates(const NodeManifest& node) {
  return node.opacity < 1.0F || blendModeOf(node) != BlendMode::normal;
}

std::uint64_t surfacesOf(const NodeManifestList& nodes) {
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const NodeManifest& node = nodes[i];
    const bool holdsNodes = i + 1 < nodes.size() && nodes[i + 1].depth > node.depth;
    count += (node.hasPixelData.value_or(true) ? 1U : 0U) + (node.mask.has_value() ? 1U : 0U) +
             (holdsNodes && isolates(node) ? 1U : 0U);
  }
  return count;
}

/// Even a surface without pixels has its grid of tiles and their recipes, and a short manifest can ask for
/// many.
bool gridsFitInMemory(const Manifest& manifest) {
  const auto tiles = [](std::int64_t side) { return static_cast<std::uint64_t>(side / tileSide + 1); };
  const std::uint64_t gridBytes = tiles(manifest.document.canvasWidth) *
                                  tiles(manifest.document.canvasHeight) *
                                  (sizeof(Tile) + sizeof(std::uint64_t));
  return pixelsFitInMemory(surfacesOf(manifest.nodes) * gridBytes * 4);
}

Described<OpenedDocument> readManifest(Described<ZipReader> archive, const Progress& progress) {
  if (!archive) return because(archive.error());
  if (progress.isCancelled()) return cancelled();
  const auto entry = archive->find("manifest.json");
  if (!entry.has_value()) return because(QStringLiteral("The archive holds no document."));
  const auto text = archive->readAll(*entry, maximumManifestBytes);
  if (!text) return because(text.error());
  auto manifest = decodeManifest({reinterpret_cast<const char*>(text->data()), text->size()}, progress);
  if (!manifest) return because(manifest.error());
  const auto isSide = [](std::int64_t side) { return side >= 1 && side <= maximumCanvasSide; };
  if (!isSide(manifest->document.canvasWidth) || !isSide(manifest->document.canvasHeight)) {
    return because(QStringLiteral("The document's canvas has a size that can't be."));
  }
  if (!gridsFitInMemory(*manifest)) return because(tooMuchMemory());
  return OpenedDocument{std::move(*archive), std::move(*manifest)};
}

/// Builds nodes from their manifests.
class TreeBuilder {
 public:
  TreeBuilder(const ZipReader& archive, Document& document) : archive_(archive), document_(document) {}

  Described<LayerNodeList> build(const NodeManifestList& manifests) {
    // The folders that the next node may lie in, the last one innermost, each with the children it has so
    // far.
    std::vector<OpenFolder> open(1);
    std::size_t index = 0;
    while (index < manifests.size()) {
      const NodeManifest& manifest = manifests[index];
      closeFolders(open, static_cast<std::size_t>(manifest.depth) + 1);
      const std::optional<QUuid> id = idOf(manifest.id);
      const bool isLayer = manifest.type == u"layer";
      const bool isFolder = manifest.type == u"folder";
      if (id && (isLayer || isFolder)) {
        if (seen_.contains(*id))
          return because(QStringLiteral("The document has two nodes with the same id."));
        seen_.insert(*id);
      }
      ++index;
      if (id && isFolder) {
        open.push_back({buildFolder(manifest, *id), {}});
        continue;
      }
      if (id && isLayer) open.back().children.emplace_back(buildLayer(manifest, *id));
      while (index < manifests.size() && manifests[index].depth > manifest.depth) ++index;
    }
    closeFolders(open, 1);
    return std::move(open.front().children);
  }

  std::vector<TextureLoadRequest> requests;

 private:
  struct OpenFolder {
    std::shared_ptr<LayerFolder> folder;
    LayerNodeList children;
  };

  /// Ends folders until `count` are open.
  static void closeFolders(std::vector<OpenFolder>& open, std::size_t count) {
    while (open.size() > count) {
      OpenFolder closed = std::move(open.back());
      open.pop_back();
      closed.folder->children = std::move(closed.children);
      open.back().children.emplace_back(std::move(closed.folder));
    }
  }

  template <typename Node>
  static void setCommon(Node& node, const NodeManifest& manifest) {
    node.opacity = std::clamp(manifest.opacity, 0.0F, 1.0F);
    node.blendMode = blendModeOf(manifest);
    node.isVisible = manifest.isVisible;
    node.isLocked = manifest.isLocked;
  }

  static std::shared_ptr<LayerFolder> buildFolder(const NodeManifest& manifest, const QUuid& id) {
    auto folder = std::make_shared<LayerFolder>(manifest.name, id);
    setCommon(*folder, manifest);
    folder->isExpanded = manifest.isExpanded.value_or(true);
    return folder;
  }

  std::shared_ptr<Layer> buildLayer(const NodeManifest& manifest, const QUuid& id) {
    auto layer = std::make_shared<Layer>(manifest.name, id);
    setCommon(*layer, manifest);
    if (manifest.hasPixelData.value_or(true)) {
      const Texture pixels = document_.makeLayerTexture();
      layer->texture = pixels;
      request(layerEntryPath(manifest.id), pixels);
    }
    if (manifest.mask.has_value()) buildMask(*layer, manifest);
    return layer;
  }

  void buildMask(Layer& layer, const NodeManifest& manifest) {
    const std::optional<QUuid> id = idOf(manifest.mask->id);
    const QString path = maskEntryPath(manifest.id);
    if (!id || !archive_.find(path.toStdString()).has_value()) return;
    const Texture surface = document_.context().makeTexture(maskPixelFormat, document_.canvasWidth.value(),
                                                            document_.canvasHeight.value());
    if (surface == nullptr) return;
    request(path, surface);
    auto mask = std::make_shared<LayerMask>(*id, std::make_shared<MaskTexture>(surface));
    mask->isEnabled = manifest.mask->isEnabled;
    layer.mask = mask;
  }

  void request(const QString& path, const Texture& destination) {
    if (const auto entry = archive_.find(path.toStdString())) requests.push_back({*entry, destination});
  }

  const ZipReader& archive_;
  Document& document_;
  QSet<QUuid> seen_;
};

/// The header must agree with the surface that the tree asks for, and the entry's length with both.
Described<void> judgeHeader(const LayerdataHeader& header, const ArchiveEntryInfo& entry,
                            const Surface& surface) {
  const bool agrees = header.surfaceFormat() == surface.format() &&
                      header.width == static_cast<std::uint32_t>(surface.width()) &&
                      header.height == static_cast<std::uint32_t>(surface.height()) &&
                      entry.size == LayerdataHeader::byteSize + header.payloadSize();
  if (agrees) return {};
  return because(QStringLiteral("The entry \"%1\" doesn't fit the document's canvas and color mode.")
                     .arg(displayName(QString::fromStdString(entry.path))));
}

/// Whether every half float of these rows is one of 0 to 1, as nearly all are. Such rows need no closer look
/// for values that kernels must not read.
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

/// Fills a band of rows, and says whether all of it stays from zero to one. It goes in pieces that are
/// summed and looked at while they are in the core's cache.
Described<bool> readBand(ZipReader::Stream& stream, std::span<std::byte> band) {
  constexpr std::size_t pieceBytes = std::size_t{512} << 10U;
  bool isCalm = true;
  while (!band.empty()) {
    const auto piece = band.first(std::min(pieceBytes, band.size()));
    if (auto result = stream.read(piece); !result) return because(result.error());
    isCalm = isCalm && staysFromZeroToOne(piece);
    band = band.subspan(piece.size());
  }
  return isCalm;
}

/// How far the threads that fill surfaces have come together.
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

/// Reads whole rows of tiles, from `firstRow` up to `endRow` in pixels.
Described<void> fillRows(ZipReader::Stream& stream, Surface& surface, int firstRow, int endRow,
                         LoadProgress& progress) {
  const std::size_t rowBytes = bytesPerRow(surface);
  ByteBuffer band(rowBytes * static_cast<std::size_t>(std::min(tileSide, endRow - firstRow)));
  for (int y = firstRow; y < endRow; y += tileSide) {
    if (progress.isCancelled()) return cancelled();
    const int rows = std::min(tileSide, endRow - y);
    const std::size_t bytes = rowBytes * static_cast<std::size_t>(rows);
    const auto isCalm = readBand(stream, band.span().first(bytes));
    if (!isCalm) return because(isCalm.error());
    if (!pixelsFitInMemory(2 * bytes)) return because(tooMuchMemory());
    surface.writeRect({0, y, surface.width(), rows}, band.data(), rowBytes);
    for (int x = 0; x < surface.tilesAcross() && !*isCalm; ++x) {
      markIfIrregular(surface, surface.tileIndex(x, y / tileSide));
    }
    progress.add(bytes);
  }
  return {};
}

Described<void> readHeader(ZipReader::Stream& stream, const ArchiveEntryInfo& entry, const Surface& surface) {
  std::array<std::byte, LayerdataHeader::byteSize> start{};
  if (auto result = stream.read(start); !result) return result;
  const auto header = LayerdataHeader::decode(start);
  if (!header) return because(header.error());
  return judgeHeader(*header, entry, surface);
}

/// A piece of loading that one thread does: a whole entry, or some of its parts that fill whole rows of
/// tiles.
struct LoadPiece {
  std::size_t entry = 0;
  std::size_t firstPart = 0;
  std::size_t partCount = 0;  ///< 0 for the whole entry
  int firstRow = 0;
  int endRow = 0;
  std::uint64_t size = 0;
  std::uint32_t crc = 0;  ///< once it is read
};

/// Cuts an entry into pieces where its parts begin with a row of tiles; one piece if they don't.
std::vector<LoadPiece> piecesOf(std::size_t entry, const std::vector<EntryPart>& parts,
                                const Surface& surface) {
  constexpr std::uint64_t leastPieceBytes = std::uint64_t{16} << 20U;
  const LoadPiece whole{.entry = entry, .endRow = surface.height()};
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
  return pieces.size() > 1 ? pieces : std::vector{whole};
}

/// Reads a piece, into the surface if there is one.
Described<void> readPiece(const ZipReader& archive, LoadPiece& piece, Surface* surface,
                          LoadProgress& progress) {
  const bool isWhole = piece.partCount == 0;
  auto stream = isWhole ? archive.stream(piece.entry)
                        : archive.streamOfParts(piece.entry, piece.firstPart, piece.partCount);
  if (!stream) return because(stream.error());
  if (surface != nullptr && piece.firstRow == 0) {
    if (auto result = readHeader(*stream, archive.entries()[piece.entry], *surface); !result) return result;
  }
  if (surface != nullptr) {
    if (auto result = fillRows(*stream, *surface, piece.firstRow, piece.endRow, progress); !result)
      return result;
  }
  if (isWhole) return stream->finish(progress.whole());
  piece.crc = stream->crc();
  return {};
}

/// The sums of an entry's pieces, joined, are that of the whole.
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
      return because(QStringLiteral("The entry \"%1\" can't be read. Its check sum is wrong.")
                         .arg(displayName(QString::fromStdString(entry.path))));
    }
  }
  return {};
}

/// What is asked for must have its surface's size, and the rest may hold no more than a preview could.
Described<void> judgeSizes(const std::vector<ArchiveEntryInfo>& entries,
                           const std::vector<Surface*>& destinations, std::uint64_t canvasPixels) {
  constexpr std::uint64_t roomForOthers = std::uint64_t{64} << 20U;
  std::uint64_t others = 0;
  for (std::size_t index = 0; index < entries.size(); ++index) {
    const Surface* surface = destinations[index];
    if (surface == nullptr) {
      others += entries[index].size;
      continue;
    }
    if (entries[index].size == LayerdataHeader::byteSize + static_cast<std::uint64_t>(surface->byteSize()))
      continue;
    return because(QStringLiteral("The entry \"%1\" doesn't fit the document's canvas and color mode.")
                       .arg(displayName(QString::fromStdString(entries[index].path))));
  }
  if (others <= 8 * canvasPixels + roomForOthers) return {};
  return because(QStringLiteral("The archive holds more than its document can need."));
}

std::uint64_t tilesHeldBy(const Texture& texture) {
  std::uint64_t count = 0;
  for (int index = 0; texture != nullptr && index < texture->tileCount(); ++index)
    count += texture->tile(index).isUniform() ? 0 : 1;
  return count;
}

std::uint64_t tilesHeldBy(const Layer& layer) {
  const auto& mask = layer.mask.value();
  return tilesHeldBy(layer.texture.value()) + (mask ? tilesHeldBy(mask->maskTexture->texture) : 0);
}

bool passesThrough(const LayerFolder& folder) {
  return folder.opacity.value() >= 1.0F && folder.blendMode.value() == BlendMode::normal;
}

/// Tiles with pixels under these nodes, and the most that the surfaces of isolating folders can have of them.
struct TilesOfTree {
  std::uint64_t held = 0;
  std::uint64_t inFolders = 0;
};

TilesOfTree tilesOf(const LayerNodeList& nodes, std::uint64_t tilesOfCanvas) {
  struct OpenList {
    const LayerNodeList* siblings;
    const LayerFolder* owner;
    std::size_t next = 0;
    std::uint64_t held = 0;
  };
  TilesOfTree sum;
  std::vector<OpenList> open{{&nodes, nullptr}};
  while (true) {
    OpenList& list = open.back();
    if (list.next < list.siblings->size()) {
      const LayerNode& node = (*list.siblings)[list.next++];
      if (const std::shared_ptr<Layer> layer = node.layer()) {
        list.held += tilesHeldBy(*layer);
      } else {
        const std::shared_ptr<LayerFolder> folder = node.folder();
        open.push_back({&folder->children.value(), folder.get()});
      }
      continue;
    }
    const OpenList closed = list;
    open.pop_back();
    if (open.empty()) {
      sum.held = closed.held;
      return sum;
    }
    open.back().held += closed.held;
    if (!passesThrough(*closed.owner)) sum.inFolders += std::min(closed.held, tilesOfCanvas);
  }
}

}  // namespace

Described<OpenedDocument> openDocument(const QString& path, const Progress& progress) {
  return readManifest(ZipReader::open(QFile::encodeName(path).toStdString()), progress);
}

Described<OpenedDocument> openDocument(std::span<const std::byte> bytes, const Progress& progress) {
  return readManifest(ZipReader::openBytes(bytes), progress);
}

Described<BuiltDocument> buildDocument(const OpenedDocument& opened, MetalContext& context) {
  const DocumentManifest& manifest = opened.manifest.document;
  const ColorMode mode = colorModeFromRaw(manifest.colorMode).value_or(ColorMode::rgb16);
  BuiltDocument built;
  built.document = Document::createEmpty(manifest.name, static_cast<int>(manifest.canvasWidth),
                                         static_cast<int>(manifest.canvasHeight), mode, context);
  Document& document = *built.document;
  const auto color = [](const std::optional<QString>& text) {
    return text.has_value() ? DisplayColor::fromHexText(*text) : std::nullopt;
  };
  if (const auto foreground = color(manifest.foregroundColor)) document.foregroundColor = *foreground;
  if (const auto background = color(manifest.backgroundColor)) document.backgroundColor = *background;

  TreeBuilder builder(opened.archive, document);
  auto nodes = builder.build(opened.manifest.nodes);
  if (!nodes) return because(nodes.error());
  document.rootNodes = std::move(*nodes);
  built.requests = std::move(builder.requests);
  if (manifest.selectedNodeID.has_value()) {
    document.selectedNodeID = idOf(*manifest.selectedNodeID);
  } else if (!document.rootNodes.value().empty()) {
    document.selectedNodeID = document.rootNodes.value().front().id();
  }
  return built;
}

Described<void> fillTextures(const OpenedDocument& opened, const std::vector<TextureLoadRequest>& requests,
                             const Progress& progress) {
  const auto& entries = opened.archive.entries();
  std::vector<Surface*> destinations(entries.size(), nullptr);
  for (const TextureLoadRequest& request : requests) destinations[request.entry] = request.destination.get();
  const DocumentManifest& canvas = opened.manifest.document;
  const auto canvasPixels =
      static_cast<std::uint64_t>(canvas.canvasWidth) * static_cast<std::uint64_t>(canvas.canvasHeight);
  if (auto result = judgeSizes(entries, destinations, canvasPixels); !result) return result;
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
  if (!read) return read;
  return judgeSums(pieces, entries);
}

Described<void> judgeShownMemory(const Document& document) {
  const Surface& composite = *document.compositedTexture.value();
  const auto tilesOfCanvas = static_cast<std::uint64_t>(composite.tileCount());
  const TilesOfTree tiles = tilesOf(document.rootNodes.value(), tilesOfCanvas);
  const std::uint64_t shown = tiles.inFolders + std::min(tiles.held, tilesOfCanvas);
  if (pixelsFitInMemory(shown * composite.tileBytes())) return {};
  return because(tooMuchMemory());
}

}  // namespace orvanel
