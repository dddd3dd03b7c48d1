#include "recovery/JournalCompaction.h"

#include <unistd.h>

#include <QDateTime>
#include <cerrno>
#include <utility>

#include "io/archive/Deflate.h"
#include "io/files/FileOperations.h"

namespace orvanel {

using journal::RecordContents;
using journal::RecordHeader;
using journal::TileSource;

namespace {

/// A few hundredths of a second on a slow disk: a record that comes waits no longer.
constexpr std::int64_t pieceBytes = std::int64_t{4} << 20U;

}  // namespace

std::vector<bool> JournalFile::liveTiles() const {
  std::vector<bool> live(stored.size(), false);
  for (const auto& [path, table] : tables) {
    for (const TileSource& source : table.tiles) {
      if (source.kind == TileSource::Kind::stored) live[source.value] = true;
    }
  }
  return live;
}

bool JournalCompaction::isWorthIt(const JournalFile& journal, std::int64_t toleratedWaste) {
  const std::vector<bool> live = journal.liveTiles();
  std::int64_t work = journal.firstContents;
  for (std::size_t tile = 0; tile < live.size(); ++tile)
    work += live[tile] ? journal.stored[tile].tile.bytes : 0;
  return journal.size - work > work + toleratedWaste;
}

JournalCompaction::JournalCompaction(FileHandle source, std::unique_ptr<JournalFile> next, std::int64_t limit)
    : source_(std::move(source)),
      next_(std::move(next)),
      record_(next_->descriptor.number(), 0, limit),
      end_(static_cast<std::int64_t>(RecordHeader::byteSize)) {}

Described<void> JournalCompaction::copyTile(const JournalFile::Stored& stored) {
  std::vector<std::byte> bytes(stored.tile.bytes);
  const ssize_t read =
      FileOperations::current().readAt(source_.descriptor(), bytes.data(), bytes.size(), stored.offset);
  if (read != static_cast<ssize_t>(bytes.size()) || crc32(bytes) != stored.crc)
    return because(QStringLiteral("Recovery data can't be read back."));
  if (auto result = record_.addTile(bytes); !result) return result;
  next_->stored.push_back({end_, stored.tile, stored.crc});
  end_ += stored.tile.bytes;
  return {};
}

Described<JournalCompaction::Progress> JournalCompaction::copyPiece(const JournalFile& journal) {
  const std::vector<bool> live = journal.liveTiles();
  numbers_.resize(live.size());
  std::int64_t left = pieceBytes;
  for (std::size_t tile = 0; tile < live.size() && left > 0; ++tile) {
    if (!live[tile] || numbers_[tile]) continue;
    const JournalFile::Stored& stored = journal.stored[tile];
    if (auto copied = copyTile(stored); !copied) return because(copied.error());
    numbers_[tile] = next_->stored.size() - 1;
    left -= stored.tile.bytes;
  }
  if (left == pieceBytes) return Progress::hasAllTiles;
  // So that little is left to be brought to the disk in the end.
  if (FileOperations::current().syncData(next_->descriptor.number()) != 0)
    return because(journal::writeFailure(errno));
  return Progress::goesOn;
}

TileSource JournalCompaction::moved(const TileSource& source) const {
  return source.kind == TileSource::Kind::stored ? TileSource{source.kind, 0, *numbers_[source.value]}
                                                 : source;
}

Described<std::unique_ptr<JournalFile>> JournalCompaction::finish(const JournalFile& journal,
                                                                  RecordContents document) {
  RecordContents& contents = document;
  contents.base = journal.base;
  for (const JournalFile::Stored& stored : next_->stored) contents.tiles.push_back(stored.tile);
  for (const auto& [path, table] : journal.tables) {
    journal::SurfaceRecord surface{path, table.format, true, {}};
    for (std::size_t tile = 0; tile < table.tiles.size(); ++tile) {
      if (table.tiles[tile] == TileSource{}) continue;
      journal::appendSource(surface.runs, static_cast<std::uint32_t>(tile), moved(table.tiles[tile]));
    }
    contents.surfaces.push_back(std::move(surface));
  }
  const RecordHeader header{.kind = RecordHeader::Kind::whole,
                            .fileMark = next_->mark,
                            .sequence = 0,
                            .time = QDateTime::currentMSecsSinceEpoch()};
  const auto end = record_.finish(header, contents);
  if (!end) return because(end.error());
  for (const auto& [version, stands] : journal.standing) {
    if (stands.source.kind != TileSource::Kind::stored || numbers_[stands.source.value])
      next_->standing[version] = {moved(stands.source), stands.columns, stands.rows};
  }
  next_->base = journal.base;
  next_->held = journal.held;
  next_->known = journal.known;
  applyRecord(next_->tables, contents);
  next_->size = *end;
  next_->records = 1;
  next_->firstContents = *end - (end_ - static_cast<std::int64_t>(RecordHeader::byteSize));
  return std::move(next_);
}

}  // namespace orvanel
