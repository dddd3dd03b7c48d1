#include "recovery/BaseTiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include "io/archive/Deflate.h"
#include "io/document/LayerData.h"
#include "io/files/Parallel.h"
#include "io/files/PassingFile.h"
#include "raster/MemoryBudget.h"
#include "raster/Regularity.h"

namespace orvanel {
namespace {

QString tooMuchMemory() {
  return QStringLiteral("There is not enough memory for this document.");
}

bool readFully(int file, std::span<std::byte> out, std::uint64_t offset) {
  while (!out.empty()) {
    const ssize_t count = readPassing(file, out, static_cast<std::int64_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    out = out.subspan(static_cast<std::size_t>(count));
    offset += static_cast<std::uint64_t>(count);
  }
  return true;
}

/// The bytes that the chunk was made of; nothing unless they are in this file, unharmed.
std::optional<ByteBuffer> readChunk(const FileHandle& file, const StoredChunk& chunk) {
  const auto fileSize = static_cast<std::uint64_t>(file.size());
  const bool isWithin = chunk.offset <= fileSize && chunk.storedSize <= fileSize - chunk.offset;
  if (!isWithin || chunk.size > largestInflation * chunk.storedSize) return std::nullopt;
  ByteBuffer stored(chunk.storedSize);
  if (!readFully(file.descriptor(), stored.span(), chunk.offset) || crc32(stored.span()) != chunk.storedCrc)
    return std::nullopt;
  std::span<const std::byte> rest = stored.span();
  InflateStream stream(
      [&rest]() -> Described<std::span<const std::byte>> { return std::exchange(rest, {}); });
  ByteBuffer bytes(chunk.size);
  if (!stream.read(bytes.span()) || crc32(bytes.span()) != chunk.crc) return std::nullopt;
  return bytes;
}

/// Collects the bytes of an entry into rows of tiles, each of which is put in its place when it is full.
class RowCollector {
 public:
  RowCollector(Surface& surface, std::vector<bool>& isMissing)
      : surface_(surface),
        isMissing_(isMissing),
        rowBytes_(static_cast<std::size_t>(surface.width()) * static_cast<std::size_t>(surface.pixelBytes())),
        band_(rowBytes_ * static_cast<std::size_t>(std::min(tileSide, surface.height()))) {}

  /// Whether a chunk of this size, if it follows, touches a row of tiles that is still missing.
  [[nodiscard]] bool needs(std::uint32_t size) const {
    const std::uint64_t end = position_ + size;
    if (end <= LayerdataHeader::byteSize) return false;
    const std::uint64_t first = bandAt(std::max<std::uint64_t>(position_, LayerdataHeader::byteSize));
    const std::uint64_t last = bandAt(end - 1);
    for (std::uint64_t band = first; band <= last; ++band) {
      if (isMissing_[band]) return true;
    }
    return false;
  }

  /// Bytes that couldn't be had are null.
  void add(const std::byte* bytes, std::uint64_t size) {
    const std::uint64_t header =
        position_ < LayerdataHeader::byteSize ? LayerdataHeader::byteSize - position_ : 0;
    const std::uint64_t skipped = std::min(header, size);
    position_ += skipped;
    if (bytes != nullptr) bytes += skipped;
    for (std::uint64_t left = size - skipped; left > 0;) {
      const std::uint64_t band = bandAt(position_);
      const std::uint64_t within = position_ - LayerdataHeader::byteSize - band * fullBandBytes();
      const std::uint64_t count = std::min(left, bytesOf(band) - within);
      if (within == 0) isWhole_ = true;
      if (bytes == nullptr) {
        isWhole_ = false;
      } else {
        std::memcpy(band_.data() + within, bytes, count);
        bytes += count;
      }
      position_ += count;
      left -= count;
      if (within + count == bytesOf(band) && isWhole_ && isMissing_[band]) place(band);
    }
  }

 private:
  [[nodiscard]] std::uint64_t fullBandBytes() const { return std::uint64_t{rowBytes_} * tileSide; }
  [[nodiscard]] std::uint64_t bandAt(std::uint64_t position) const {
    return (position - LayerdataHeader::byteSize) / fullBandBytes();
  }
  [[nodiscard]] int rowsOf(std::uint64_t band) const {
    return std::min(tileSide, surface_.height() - static_cast<int>(band) * tileSide);
  }
  [[nodiscard]] std::uint64_t bytesOf(std::uint64_t band) const {
    return std::uint64_t{rowBytes_} * static_cast<std::uint64_t>(rowsOf(band));
  }
  void place(std::uint64_t band) {
    const int row = static_cast<int>(band);
    surface_.writeRect({0, row * tileSide, surface_.width(), rowsOf(band)}, band_.data(), rowBytes_);
    for (int x = 0; x < surface_.tilesAcross(); ++x) markIfIrregular(surface_, surface_.tileIndex(x, row));
    isMissing_[band] = false;
  }

  Surface& surface_;
  std::vector<bool>& isMissing_;
  std::size_t rowBytes_;
  ByteBuffer band_;
  std::uint64_t position_ = 0;  ///< in the entry
  bool isWhole_ = false;
};

}  // namespace

Described<BaseTiles> BaseTiles::of(const journal::BaseFile& base, const std::vector<bool>& isNeeded,
                                   const MetalContext& context) {
  BaseTiles tiles(base);
  tiles.surfaces_.resize(base.surfaces.size());
  for (std::size_t number = 0; number < base.surfaces.size(); ++number) {
    if (!isNeeded[number]) continue;
    const journal::BaseSurface& surface = base.surfaces[number];
    constexpr std::uint64_t bytesOfGridTile = sizeof(Tile) + sizeof(std::uint64_t);
    if (!pixelsFitInMemory(journal::tileCountOf(surface.width, surface.height) * bytesOfGridTile))
      return because(tooMuchMemory());
    Texture pixels = context.makeTexture(surface.format, static_cast<int>(surface.width),
                                         static_cast<int>(surface.height));
    if (pixels == nullptr) return because(tooMuchMemory());
    const std::size_t rows = (surface.height - 1) / tileSide + 1;
    tiles.surfaces_[number] = {std::move(pixels), std::vector<bool>(rows, true)};
  }
  return tiles;
}

bool BaseTiles::isComplete() const {
  return std::ranges::none_of(surfaces_, [](const Found& found) {
    return std::ranges::find(found.isMissing, true) != found.isMissing.end();
  });
}

bool BaseTiles::has(std::uint32_t number, std::uint64_t tile) const {
  const Found& found = surfaces_[number];
  if (found.pixels == nullptr || tile >= static_cast<std::uint64_t>(found.pixels->tileCount())) return false;
  return !found.isMissing[tile / static_cast<std::uint64_t>(found.pixels->tilesAcross())];
}

Described<void> BaseTiles::readFrom(const FileHandle& file, const Progress& progress) {
  return forEachInBackground(surfaces_.size(), [&](std::size_t number) -> Described<void> {
    if (surfaces_[number].pixels == nullptr) return {};
    return readSurface(file, number, progress);
  });
}

Described<void> BaseTiles::readSurface(const FileHandle& file, std::size_t number, const Progress& progress) {
  Found& found = surfaces_[number];
  RowCollector rows(*found.pixels, found.isMissing);
  for (const StoredChunk& chunk : base_->surfaces[number].chunks) {
    if (progress.isCancelled()) return cancelled();
    if (!pixelsFitInMemory(std::uint64_t{4} * chunk.size)) return because(tooMuchMemory());
    const auto bytes = rows.needs(chunk.size) ? readChunk(file, chunk) : std::nullopt;
    rows.add(bytes ? bytes->data() : nullptr, chunk.size);
  }
  return {};
}

}  // namespace orvanel
