#include "recovery/JournalReader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QBuffer>
#include <QImageReader>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "io/archive/Deflate.h"
#include "io/files/FileOperations.h"
#include "model/ThumbnailGenerator.h"
#include "raster/MemoryBudget.h"

namespace orvanel {

using journal::RecordContents;
using journal::RecordHeader;
using journal::SurfaceRecord;
using journal::TileRun;
using journal::TileSource;

namespace {

/// The number of tiles of the largest canvas.
constexpr std::uint64_t mostTiles =
    std::uint64_t{maximumCanvasSide / tileSide} * (maximumCanvasSide / tileSide);

struct Record {
  RecordHeader header;
  RecordContents contents;
  std::uint64_t tilesAt = 0;
  std::uint64_t end = 0;
};

tl::unexpected<JournalStop> stopped(JournalStop::Cause cause, QString reason) {
  return tl::unexpected(JournalStop{cause, std::move(reason)});
}

tl::unexpected<JournalStop> damaged() {
  return stopped(JournalStop::Cause::damaged, QStringLiteral("The recovery data is damaged."));
}

tl::unexpected<JournalStop> tooMuchMemory() {
  return stopped(JournalStop::Cause::noMemory,
                 QStringLiteral("There is not enough memory for this document."));
}

JournalPart<void> checkTiles(const JournalInput& input, const Record& record) {
  constexpr std::uint64_t pieceBytes = std::uint64_t{1} << 20U;
  std::vector<std::byte> piece;
  std::uint32_t crc = 0;
  for (std::uint64_t done = 0; done < record.header.tileBytes; done += piece.size()) {
    piece.resize(std::min(pieceBytes, record.header.tileBytes - done));
    if (auto read = input.read(record.tilesAt + done, piece); !read) return read;
    crc = crc32(piece, crc);
  }
  if (crc != record.header.tilesCrc) return damaged();
  return {};
}

/// The record that begins here, if it is whole.
JournalPart<Record> readRecord(const JournalInput& input, std::uint64_t start, TileCheck check) {
  std::array<std::byte, RecordHeader::byteSize> bytes{};
  if (auto read = input.read(start, bytes); !read) return tl::unexpected(read.error());
  if (RecordHeader::isOfOtherVersion(bytes)) {
    return stopped(JournalStop::Cause::otherVersion,
                   QStringLiteral("Another version of this program has written the recovery data."));
  }
  const auto header = RecordHeader::decode(bytes);
  if (!header) return damaged();
  const std::uint64_t left = input.size() - start - RecordHeader::byteSize;
  if (header->tileBytes > left || header->contentBytes > left - header->tileBytes) return damaged();
  if (!pixelsFitInMemory(header->contentBytes)) return tooMuchMemory();
  Record record{.header = *header, .contents = {}, .tilesAt = start + RecordHeader::byteSize, .end = 0};
  const std::uint64_t contentsAt = record.tilesAt + header->tileBytes;
  record.end = contentsAt + header->contentBytes;
  std::vector<std::byte> encoded(header->contentBytes);
  if (auto read = input.read(contentsAt, encoded); !read) return tl::unexpected(read.error());
  if (crc32(encoded) != header->contentsCrc) return damaged();
  auto contents = RecordContents::decode(encoded);
  if (!contents) return damaged();
  record.contents = std::move(*contents);
  if (check == TileCheck::none) return record;
  if (auto tiles = checkTiles(input, record); !tiles) return tl::unexpected(tiles.error());
  return record;
}

/// Decides whether a record continues the journal, before anything of it is believed.
class RecordJudge {
 public:
  RecordJudge(const JournalState& state, const std::optional<std::uint64_t>& fileMark, const Record& record)
      : state_(state), fileMark_(fileMark), record_(record), contents_(record.contents) {}

  [[nodiscard]] bool continues() const { return isNext() && haveTilesTheirBytes() && areSurfacesValid(); }
  /// Of a record that continues.
  [[nodiscard]] bool fitsInMemory() const {
    std::uint64_t tiles = 0;
    for (const auto& [path, table] : state_.tables) tiles += table.tiles.size();
    const std::size_t tileCount = journal::tileCountOf(contents_.canvasWidth, contents_.canvasHeight);
    for (const SurfaceRecord& surface : contents_.surfaces) tiles += surface.isNew ? tileCount : 0;
    return pixelsFitInMemory(tiles * sizeof(TileSource));
  }

 private:
  [[nodiscard]] bool isFirst() const { return state_.records == 0; }
  [[nodiscard]] bool isNext() const {
    const RecordHeader& header = record_.header;
    if (header.sequence != state_.records) return false;
    if (isFirst()) return header.kind == RecordHeader::Kind::whole && !contents_.manifest.isEmpty();
    return header.kind == RecordHeader::Kind::change && header.fileMark == fileMark_ && !contents_.base;
  }
  [[nodiscard]] bool haveTilesTheirBytes() const {
    std::uint64_t bytes = 0;
    for (const journal::StoredTile& tile : contents_.tiles) bytes += tile.bytes;
    return bytes == record_.header.tileBytes;
  }
  [[nodiscard]] bool areSurfacesValid() const {
    const std::size_t tileCount = journal::tileCountOf(contents_.canvasWidth, contents_.canvasHeight);
    for (const SurfaceRecord& surface : contents_.surfaces) {
      const auto found = state_.tables.find(surface.path);
      const bool isKnown = found != state_.tables.end() && found->second.format == surface.format &&
                           found->second.tiles.size() == tileCount;
      if (!isKnown && !surface.isNew) return false;
      if (!std::ranges::all_of(surface.runs, [this](const TileRun& run) { return isValid(run); }))
        return false;
    }
    return true;
  }
  [[nodiscard]] bool isValid(const TileRun& run) const {
    const auto endsWithin = [&](std::uint64_t count) {
      return run.count <= count && run.source.value <= count - run.count;
    };
    switch (run.source.kind) {
      case TileSource::Kind::uniform:
        return true;
      case TileSource::Kind::stored:
        return endsWithin(state_.stored.size() + contents_.tiles.size());
      case TileSource::Kind::base: {
        const auto& base = isFirst() ? contents_.base : state_.base;
        return base && run.source.surface < base->surfaces.size() && endsWithin(mostTiles);
      }
    }
    return false;
  }

  const JournalState& state_;
  const std::optional<std::uint64_t>& fileMark_;
  const Record& record_;
  const RecordContents& contents_;
};

void apply(JournalState& state, Record record) {
  RecordContents& contents = record.contents;
  applyRecord(state.tables, contents);
  std::uint64_t offset = record.tilesAt;
  for (const journal::StoredTile& tile : contents.tiles) {
    state.stored.push_back({offset, tile});
    offset += tile.bytes;
  }
  if (state.records == 0) state.base = std::move(contents.base);
  if (contents.manifest.isEmpty()) contents.manifest = std::move(state.document.manifest);
  if (contents.thumbnail.isEmpty()) contents.thumbnail = std::move(state.document.thumbnail);
  contents.tiles.clear();
  contents.surfaces.clear();
  contents.gone.clear();
  contents.base.reset();
  state.document = std::move(contents);
  state.time = QDateTime::fromMSecsSinceEpoch(record.header.time);
  state.end = record.end;
  ++state.records;
}

}  // namespace

QString readFailure(int error) {
  return QStringLiteral("The recovery data can't be read: %1.")
      .arg(QString::fromLocal8Bit(std::strerror(error)));
}

JournalInput JournalInput::ofFile(int descriptor) {
  JournalInput input;
  input.descriptor_ = descriptor;
  struct stat status {};
  if (::fstat(descriptor, &status) == 0) input.size_ = static_cast<std::uint64_t>(status.st_size);
  return input;
}

JournalInput JournalInput::ofBytes(std::span<const std::byte> bytes) {
  JournalInput input;
  input.bytes_ = bytes;
  input.size_ = bytes.size();
  return input;
}

JournalPart<void> JournalInput::read(std::uint64_t offset, std::span<std::byte> out) const {
  if (offset > size_ || out.size() > size_ - offset) return damaged();
  if (descriptor_ < 0) {
    std::ranges::copy(bytes_.subspan(offset, out.size()), out.begin());
    return {};
  }
  while (!out.empty()) {
    const ssize_t count = FileOperations::current().readAt(descriptor_, out.data(), out.size(),
                                                           static_cast<std::int64_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      return stopped(JournalStop::Cause::unreadable, readFailure(errno));
    }
    if (count == 0) return damaged();
    out = out.subspan(static_cast<std::size_t>(count));
    offset += static_cast<std::uint64_t>(count);
  }
  return {};
}

JournalPart<JournalState> readJournalState(const JournalInput& input, TileCheck check) {
  JournalState state;
  std::optional<std::uint64_t> fileMark;
  const auto readNext = [&]() -> JournalPart<void> {
    auto record = readRecord(input, state.end, check);
    if (!record) return tl::unexpected(record.error());
    const RecordJudge judge(state, fileMark, *record);
    if (!judge.continues()) return damaged();
    if (!judge.fitsInMemory()) return tooMuchMemory();
    fileMark = record->header.fileMark;
    apply(state, std::move(*record));
    return {};
  };
  auto next = readNext();
  while (next) next = readNext();
  if (state.records == 0) return tl::unexpected(next.error());
  state.stop = next.error();
  return state;
}

QImage thumbnailOf(const JournalState& state) {
  QByteArray png = state.document.thumbnail;
  if (png.isEmpty()) return {};
  QBuffer buffer(&png);
  QImageReader reader(&buffer, "png");
  const QSize size = reader.size();
  constexpr QSize largest(ThumbnailGenerator::thumbnailPixels * ThumbnailGenerator::maxWidthToHeightRatio,
                          ThumbnailGenerator::thumbnailPixels);
  if (!size.isValid() || size.width() > largest.width() || size.height() > largest.height()) return {};
  return reader.read();
}

}  // namespace orvanel
