#include "recovery/JournalFormat.h"

#include <lz4.h>

#include <algorithm>
#include <cstring>

#include "io/archive/Deflate.h"
#include "io/archive/ZipReader.h"
#include "io/document/LayerData.h"
#include "io/document/Manifest.h"
#include "raster/Tile.h"
#include "recovery/ByteCoding.h"

namespace orvanel::journal {
namespace {

constexpr std::uint32_t magic = 0x524A524F;
constexpr std::uint16_t version = 2;

constexpr std::uint32_t longestText = 1U << 16U;
constexpr auto longestSurfacePath = static_cast<std::uint32_t>(ZipReader::maximumPathBytes);
constexpr std::uint32_t largestThumbnail = 1U << 20U;

std::span<const std::byte> bytesOf(const QByteArray& bytes) {
  return {reinterpret_cast<const std::byte*>(bytes.constData()), static_cast<std::size_t>(bytes.size())};
}

void writePacked(ByteWriter& out, const QByteArray& raw) {
  QByteArray packed(LZ4_compressBound(static_cast<int>(raw.size())), Qt::Uninitialized);
  packed.truncate(LZ4_compress_default(raw.constData(), packed.data(), static_cast<int>(raw.size()),
                                       static_cast<int>(packed.size())));
  out.number(static_cast<std::uint32_t>(raw.size()));
  out.bytes(packed);
}

QByteArray readPacked(ByteReader& in, std::uint32_t limit) {
  // No compressed byte stands for more than this.
  constexpr std::uint64_t largestRatio = 256;
  const auto size = in.number<std::uint32_t>();
  const QByteArray packed = in.bytes(maximumContentBytes);
  if (size > limit || size > largestRatio * static_cast<std::uint64_t>(packed.size())) in.fail();
  if (in.hasFailed() || size == 0) return {};
  QByteArray raw(static_cast<qsizetype>(size), Qt::Uninitialized);
  const int read = LZ4_decompress_safe(packed.constData(), raw.data(), static_cast<int>(packed.size()),
                                       static_cast<int>(raw.size()));
  if (read != raw.size()) in.fail();
  return raw;
}

/// Only the formats that layers and masks can have.
PixelFormat readFormat(ByteReader& in) {
  const auto format = static_cast<PixelFormat>(in.number<std::uint16_t>());
  switch (format) {
    case PixelFormat::r16Float:
    case PixelFormat::rg8Unorm:
    case PixelFormat::rg16Unorm:
    case PixelFormat::rgba8Unorm:
    case PixelFormat::rgba16Float:
      return format;
    default:
      in.fail();
      return PixelFormat::rgba8Unorm;
  }
}

std::uint32_t readSide(ByteReader& in) {
  const auto side = in.number<std::uint32_t>();
  if (side < 1 || side > static_cast<std::uint32_t>(maximumCanvasSide)) in.fail();
  return in.hasFailed() ? 1 : side;
}

constexpr std::size_t chunkBytes = 8 + 4 * sizeof(std::uint32_t);

void writeBaseSurface(ByteWriter& out, const BaseSurface& surface) {
  out.text(surface.path);
  out.number(static_cast<std::uint16_t>(surface.format));
  out.number(surface.width);
  out.number(surface.height);
  out.count(surface.chunks.size());
  for (const StoredChunk& chunk : surface.chunks) {
    out.number(chunk.offset);
    out.number(chunk.storedSize);
    out.number(chunk.size);
    out.number(chunk.crc);
    out.number(chunk.storedCrc);
  }
}

BaseSurface readBaseSurface(ByteReader& in) {
  BaseSurface surface;
  surface.path = in.plainText(longestSurfacePath);
  surface.format = readFormat(in);
  surface.width = readSide(in);
  surface.height = readSide(in);
  std::uint64_t bytes = 0;
  for (std::size_t left = in.count(chunkBytes); left > 0; --left) {
    StoredChunk chunk;
    chunk.offset = in.number<std::uint64_t>();
    chunk.storedSize = in.number<std::uint32_t>();
    chunk.size = in.number<std::uint32_t>();
    chunk.crc = in.number<std::uint32_t>();
    chunk.storedCrc = in.number<std::uint32_t>();
    if (chunk.size > maximumBaseChunkBytes || chunk.storedSize > maximumBaseChunkBytes) in.fail();
    bytes += chunk.size;
    surface.chunks.push_back(chunk);
  }
  const auto pixelBytes = static_cast<std::uint64_t>(bytesPerPixel(surface.format));
  if (bytes != LayerdataHeader::byteSize + std::uint64_t{surface.width} * surface.height * pixelBytes)
    in.fail();
  return surface;
}

void writeBase(ByteWriter& out, const BaseFile& base) {
  out.text(base.path);
  out.number(base.identity.device);
  out.number(base.identity.inode);
  out.number(base.identity.size);
  out.number(base.identity.modified);
  out.number(base.identity.changed);
  out.number(base.copy);
  out.count(base.surfaces.size());
  for (const BaseSurface& surface : base.surfaces) writeBaseSurface(out, surface);
}

BaseFile readBase(ByteReader& in) {
  constexpr std::size_t leastBytes = 4 + 2 + 4 + 4 + 4;
  BaseFile base;
  base.path = in.plainText(longestText);
  base.identity.device = in.number<std::uint64_t>();
  base.identity.inode = in.number<std::uint64_t>();
  base.identity.size = in.number<std::int64_t>();
  base.identity.modified = in.number<std::int64_t>();
  base.identity.changed = in.number<std::int64_t>();
  base.copy = in.number<std::uint32_t>();
  for (std::size_t left = in.count(leastBytes); left > 0 && !in.hasFailed(); --left)
    base.surfaces.push_back(readBaseSurface(in));
  return base;
}

constexpr std::size_t runBytes = 4 + 4 + 1 + 4 + 8;

void writeSurface(ByteWriter& out, const SurfaceRecord& surface) {
  out.text(surface.path);
  out.number(static_cast<std::uint16_t>(surface.format));
  out.flag(surface.isNew);
  out.count(surface.runs.size());
  for (const TileRun& run : surface.runs) {
    out.number(run.first);
    out.number(run.count);
    out.number(static_cast<std::uint8_t>(run.source.kind));
    out.number(run.source.surface);
    out.number(run.source.value);
  }
}

TileRun readRun(ByteReader& in) {
  TileRun run;
  run.first = in.number<std::uint32_t>();
  run.count = in.number<std::uint32_t>();
  const auto kind = in.number<std::uint8_t>();
  if (kind > static_cast<std::uint8_t>(TileSource::Kind::base)) in.fail();
  run.source.kind = static_cast<TileSource::Kind>(kind);
  run.source.surface = in.number<std::uint32_t>();
  run.source.value = in.number<std::uint64_t>();
  return run;
}

SurfaceRecord readSurface(ByteReader& in, std::size_t tileCount) {
  SurfaceRecord surface;
  surface.path = in.plainText(longestSurfacePath);
  surface.format = readFormat(in);
  surface.isNew = in.flag();
  std::uint64_t end = 0;
  for (std::size_t left = in.count(runBytes); left > 0 && !in.hasFailed(); --left) {
    const TileRun run = readRun(in);
    // In ascending order, so that no run of a record costs more than its place in it.
    if (run.first < end || run.count == 0 || std::uint64_t{run.first} + run.count > tileCount) in.fail();
    end = std::uint64_t{run.first} + run.count;
    surface.runs.push_back(run);
  }
  return surface;
}

std::optional<Document::ImageFileFormat> readImageFormat(ByteReader& in) {
  const auto number = in.number<std::uint8_t>();
  if (number == 0) return std::nullopt;
  if (number > 1 + static_cast<std::uint8_t>(Document::ImageFileFormat::bmp)) in.fail();
  return static_cast<Document::ImageFileFormat>(number - 1);
}

StoredTile readStoredTile(ByteReader& in) {
  StoredTile tile;
  tile.bytes = in.number<std::uint32_t>();
  tile.pixelBytes = in.number<std::uint8_t>();
  if (tile.pixelBytes != 2 && tile.pixelBytes != 4 && tile.pixelBytes != 8) in.fail();
  return tile;
}

}  // namespace

std::array<std::byte, RecordHeader::byteSize> RecordHeader::encoded() const {
  ByteWriter out;
  out.number(magic);
  out.number(version);
  out.number(static_cast<std::uint16_t>(kind));
  out.number(fileMark);
  out.number(sequence);
  out.number(time);
  out.number(tileBytes);
  out.number(contentBytes);
  out.number(tilesCrc);
  out.number(contentsCrc);
  out.number(std::uint64_t{0});
  out.number(crc32(bytesOf(out.written())));
  std::array<std::byte, byteSize> bytes{};
  std::memcpy(bytes.data(), out.written().constData(), byteSize);
  return bytes;
}

std::optional<RecordHeader> RecordHeader::decode(std::span<const std::byte, byteSize> bytes) {
  ByteReader in(bytes);
  const bool isOurs = in.number<std::uint32_t>() == magic && in.number<std::uint16_t>() == version;
  const auto rawKind = in.number<std::uint16_t>();
  RecordHeader header;
  header.kind = static_cast<Kind>(rawKind);
  header.fileMark = in.number<std::uint64_t>();
  header.sequence = in.number<std::uint64_t>();
  header.time = in.number<std::int64_t>();
  header.tileBytes = in.number<std::uint64_t>();
  header.contentBytes = in.number<std::uint32_t>();
  header.tilesCrc = in.number<std::uint32_t>();
  header.contentsCrc = in.number<std::uint32_t>();
  static_cast<void>(in.number<std::uint64_t>());
  const bool isWhole = in.number<std::uint32_t>() == crc32(bytes.first<byteSize - 4>());
  if (!isOurs || !isWhole || rawKind > 1 || header.contentBytes > maximumContentBytes) return std::nullopt;
  return header;
}

bool RecordHeader::isOfOtherVersion(std::span<const std::byte, byteSize> bytes) {
  ByteReader in(bytes);
  return in.number<std::uint32_t>() == magic && in.number<std::uint16_t>() != version;
}

QByteArray RecordContents::encoded() const {
  ByteWriter out;
  out.text(name);
  out.text(path);
  out.number(static_cast<std::uint8_t>(imageFormat ? 1 + static_cast<int>(*imageFormat) : 0));
  out.number(canvasWidth);
  out.number(canvasHeight);
  out.flag(base.has_value());
  if (base) writeBase(out, *base);
  writePacked(out, manifest);
  out.bytes(thumbnail);
  out.count(tiles.size());
  for (const StoredTile& tile : tiles) {
    out.number(tile.bytes);
    out.number(tile.pixelBytes);
  }
  out.count(surfaces.size());
  for (const SurfaceRecord& surface : surfaces) writeSurface(out, surface);
  out.count(gone.size());
  for (const std::string& surface : gone) out.text(surface);
  return out.written();
}

std::optional<RecordContents> RecordContents::decode(std::span<const std::byte> bytes) {
  ByteReader in(bytes);
  RecordContents contents;
  contents.name = in.text(longestText * 4);
  contents.path = in.text(longestText);
  contents.imageFormat = readImageFormat(in);
  contents.canvasWidth = readSide(in);
  contents.canvasHeight = readSide(in);
  if (in.flag()) contents.base = readBase(in);
  contents.manifest = readPacked(in, static_cast<std::uint32_t>(maximumManifestBytes));
  contents.thumbnail = in.bytes(largestThumbnail);
  const std::size_t storedTiles = in.count(sizeof(std::uint32_t) + 1);
  for (std::size_t left = storedTiles; left > 0 && !in.hasFailed(); --left)
    contents.tiles.push_back(readStoredTile(in));
  const std::size_t tileCount = tileCountOf(contents.canvasWidth, contents.canvasHeight);
  for (std::size_t left = in.count(11); left > 0 && !in.hasFailed(); --left)
    contents.surfaces.push_back(readSurface(in, tileCount));
  for (std::size_t left = in.count(sizeof(std::uint32_t)); left > 0 && !in.hasFailed(); --left)
    contents.gone.push_back(in.plainText(longestSurfacePath));
  // A surface that came twice would be written twice, and any number of times.
  const auto isUnordered = [](const SurfaceRecord& a, const SurfaceRecord& b) { return !(a.path < b.path); };
  const bool isOrdered =
      std::ranges::adjacent_find(contents.surfaces, isUnordered) == contents.surfaces.end();
  if (!in.isAtEnd() || !isOrdered) return std::nullopt;
  return contents;
}

std::size_t tileCountOf(std::uint32_t canvasWidth, std::uint32_t canvasHeight) {
  const auto along = [](std::uint32_t side) { return std::size_t{(side - 1) / tileSide + 1}; };
  return along(canvasWidth) * along(canvasHeight);
}

void applyRecord(TileTables& tables, const RecordContents& contents) {
  for (const SurfaceRecord& surface : contents.surfaces) {
    TileTable& table = tables[surface.path];
    if (surface.isNew) {
      table.format = surface.format;
      table.tiles.assign(tileCountOf(contents.canvasWidth, contents.canvasHeight), {});
    }
    for (const TileRun& run : surface.runs) {
      for (std::uint32_t place = 0; place < run.count; ++place)
        table.tiles[run.first + place] = run.source.following(place);
    }
  }
  for (const std::string& surface : contents.gone) tables.erase(surface);
}

void appendSource(std::vector<TileRun>& runs, std::uint32_t index, const TileSource& source) {
  if (!runs.empty()) {
    TileRun& last = runs.back();
    if (last.first + last.count == index && last.source.following(last.count) == source) {
      ++last.count;
      return;
    }
  }
  runs.push_back({index, 1, source});
}

}  // namespace orvanel::journal
