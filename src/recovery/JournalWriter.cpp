#include "recovery/JournalWriter.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QBuffer>
#include <QDateTime>
#include <QFile>
#include <QRandomGenerator>
#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>

#include "io/archive/Deflate.h"
#include "io/document/LayerData.h"
#include "io/document/SaveSnapshot.h"
#include "io/document/SavedFile.h"
#include "io/files/FileOperations.h"
#include "io/files/Progress.h"
#include "model/ThumbnailGenerator.h"

namespace orvanel {

using journal::RecordContents;
using journal::RecordHeader;
using journal::RecordWriter;
using journal::TileSource;

namespace {

/// Compressed tiles that are kept at hand, in bytes.
constexpr std::size_t mostLatestBytes = std::size_t{32} << 20U;

QByteArray pngOf(const Surface& composite) {
  const Thumbnail thumbnail = ThumbnailGenerator::colorThumbnail(composite);
  QByteArray png;
  QBuffer buffer(&png);
  if (thumbnail == nullptr || !buffer.open(QIODevice::WriteOnly) || !thumbnail->save(&buffer, "PNG"))
    return {};
  return png;
}

/// The paths of all surfaces that the document has.
std::set<std::string> surfacesOf(const Manifest& manifest) {
  std::set<std::string> paths;
  for (const NodeManifest& node : manifest.nodes) {
    if (node.hasPixelData.value_or(true)) paths.insert(layerEntryPath(node.id).toStdString());
    if (node.mask) paths.insert(maskEntryPath(node.id).toStdString());
  }
  return paths;
}

/// Whether a reader can be told where the surface's pixels stand: not those of the preview, which is a
/// picture of its own kind.
bool canBeLeft(const SavedSurface& surface) {
  std::uint64_t bytes = 0;
  for (const StoredChunk& chunk : surface.chunks) {
    if (std::max(chunk.size, chunk.storedSize) > journal::maximumBaseChunkBytes) return false;
    bytes += chunk.size;
  }
  const auto pixels = static_cast<std::uint64_t>(surface.width) * static_cast<std::uint64_t>(surface.height);
  return bytes ==
         LayerdataHeader::byteSize + pixels * static_cast<std::uint64_t>(bytesPerPixel(surface.format));
}

/// The pixels of a tile that a surface of this size shows.
struct VisiblePart {
  VisiblePart(int width, int height, int index) {
    const int across = (width + tileSide - 1) / tileSide;
    columns = std::min(tileSide, width - index % across * tileSide);
    rows = std::min(tileSide, height - index / across * tileSide);
  }
  int columns = 0;
  int rows = 0;
};

/// The tiles in ascending order, each once: the one that was captured last.
std::vector<std::pair<int, Tile>> sorted(const CapturedSurface& captured) {
  std::vector<std::pair<int, Tile>> tiles = captured.tiles;
  std::ranges::stable_sort(tiles, {}, [](const auto& tile) { return tile.first; });
  const auto begin = std::unique(tiles.rbegin(), tiles.rend(),
                                 [](const auto& a, const auto& b) { return a.first == b.first; });
  tiles.erase(tiles.begin(), begin.base());
  return tiles;
}

}  // namespace

JournalWriter::JournalWriter(JournalFiles files, std::int64_t maximumBytes,
                             std::shared_ptr<JournalTurns> turns, std::int64_t toleratedWaste)
    : files_(std::move(files)),
      maximumBytes_(maximumBytes),
      toleratedWaste_(toleratedWaste),
      turns_(std::move(turns)) {}

void JournalWriter::copyPiece() {
  // What the journal and the copy take together is bounded.
  if (needsCopying()) file_->held->copyPiece(maximumBytes_ - file_->size);
}

JournalWriter::Outcome JournalWriter::write(const Capture& capture) {
  // Somebody may have emptied the store.
  struct stat status {};
  if (file_ != nullptr && (::fstat(file_->descriptor.number(), &status) != 0 || status.st_nlink == 0)) {
    giveUpCompaction();
    file_ = nullptr;
  }
  const bool goesOn = file_ != nullptr && file_->known == capture.known && isBaseIntact();
  if (!goesOn && !capture.isComplete) return {.result = Result::needsEverything};
  return goesOn ? append(capture) : beginAnew(capture);
}

// What a record holds.

bool JournalWriter::draftSurface(const File& file, const std::string& path, const CapturedSurface& captured,
                                 std::unordered_map<std::uint64_t, std::uint64_t>& fresh, Draft& draft) {
  const auto width = static_cast<int>(draft.contents.canvasWidth);
  const auto height = static_cast<int>(draft.contents.canvasHeight);
  const std::size_t tileCount = journal::tileCountOf(draft.contents.canvasWidth, draft.contents.canvasHeight);
  const auto found = file.tables.find(path);
  const bool isNew = found == file.tables.end() || found->second.format != captured.format ||
                     found->second.tiles.size() != tileCount;
  if (isNew && !captured.isWhole) return false;
  const auto sourceOf = [&](int index, const Tile& tile) -> TileSource {
    if (tile.isUniform()) return {TileSource::Kind::uniform, 0, tile.pixel()};
    const auto standing = file.standing.find(tile.version());
    if (standing != file.standing.end()) {
      const VisiblePart part(width, height, index);
      const Standing& stands = standing->second;
      if (stands.columns >= part.columns && stands.rows >= part.rows) return stands.source;
    }
    const auto [number, isFirst] = fresh.try_emplace(tile.version(), file.stored.size() + draft.tiles.size());
    if (isFirst) draft.tiles.push_back({tile, bytesPerPixel(captured.format)});
    return {TileSource::Kind::stored, 0, number->second};
  };
  journal::SurfaceRecord change{path, captured.format, isNew, {}};
  for (const auto& [index, tile] : sorted(captured)) {
    const TileSource source = sourceOf(index, tile);
    const auto place = static_cast<std::size_t>(index);
    const TileSource standing = isNew ? TileSource{} : found->second.tiles[place];
    if (source != standing) journal::appendSource(change.runs, static_cast<std::uint32_t>(index), source);
  }
  if (isNew || !change.runs.empty()) draft.contents.surfaces.push_back(std::move(change));
  return true;
}

std::optional<JournalWriter::Draft> JournalWriter::drafted(const File& file, const Capture& capture) {
  Draft draft;
  RecordContents& contents = draft.contents;
  contents.name = capture.name.left(journal::longestName);
  contents.path = capture.path;
  contents.imageFormat = capture.imageFormat;
  contents.canvasWidth = static_cast<std::uint32_t>(capture.canvasWidth);
  contents.canvasHeight = static_cast<std::uint32_t>(capture.canvasHeight);
  if (capture.composite != nullptr) contents.thumbnail = pngOf(*capture.composite);
  std::unordered_map<std::uint64_t, std::uint64_t> fresh;
  for (const auto& [path, captured] : capture.surfaces) {
    if (!draftSurface(file, path, captured, fresh, draft)) return std::nullopt;
  }
  if (!capture.manifest) return draft;
  contents.manifest = encodeManifest(*capture.manifest);
  if (static_cast<std::uint64_t>(contents.manifest.size()) > maximumManifestBytes) return std::nullopt;
  const std::set<std::string> standing = surfacesOf(*capture.manifest);
  for (const auto& [path, table] : file.tables) {
    if (!standing.contains(path)) contents.gone.push_back(path);
  }
  return draft;
}

// Writing.

Described<void> JournalWriter::writeRecord(File& file, Draft draft) {
  JournalTurns::Turn turn(*turns_);
  RecordWriter record(file.descriptor.number(), file.size, maximumBytes_);
  std::vector<Stored> added;
  std::vector<std::shared_ptr<CompressedTile>> twins;
  std::size_t twinBytes = 0;
  std::int64_t offset = file.size + static_cast<std::int64_t>(RecordHeader::byteSize);
  const auto writeAll = [&]() -> Described<std::int64_t> {
    for (const NewTile& tile : draft.tiles) {
      if (!turn.pass()) return cancelled();
      auto twin = CompressedTile::of(tile.tile, tile.pixelBytes);
      const std::span<const std::byte> bytes = twin->compressed();
      if (auto result = record.addTile(bytes); !result) return because(result.error());
      const journal::StoredTile stored{static_cast<std::uint32_t>(bytes.size()),
                                       static_cast<std::uint8_t>(tile.pixelBytes)};
      draft.contents.tiles.push_back(stored);
      added.push_back({offset, stored, crc32(bytes)});
      offset += static_cast<std::int64_t>(bytes.size());
      twinBytes += bytes.size();
      if (twinBytes <= mostLatestBytes) twins.push_back(std::move(twin));
    }
    const RecordHeader header{
        .kind = file.records == 0 ? RecordHeader::Kind::whole : RecordHeader::Kind::change,
        .fileMark = file.mark,
        .sequence = file.records,
        .time = QDateTime::currentMSecsSinceEpoch()};
    return record.finish(header, draft.contents);
  };
  const auto end = writeAll();
  if (!end) {
    // What stands before it remains the journal, whether or not this succeeds.
    if (::ftruncate(file.descriptor.number(), file.size) != 0) errno = 0;
    return because(end.error());
  }
  for (std::size_t i = 0; i < draft.tiles.size(); ++i) {
    file.standing[draft.tiles[i].tile.version()] = {{TileSource::Kind::stored, 0, file.stored.size() + i}};
  }
  file.stored.insert(file.stored.end(), added.begin(), added.end());
  applyRecord(file.tables, draft.contents);
  if (file.records == 0) file.firstContents = *end - static_cast<std::int64_t>(twinBytes);
  ++file.records;
  file.size = *end;
  latest_ = std::move(twins);
  accept(draft.contents);
  return {};
}

void JournalWriter::accept(const RecordContents& contents) {
  QByteArray manifest = contents.manifest.isEmpty() ? standing_.manifest : contents.manifest;
  QByteArray thumbnail = contents.thumbnail.isEmpty() ? standing_.thumbnail : contents.thumbnail;
  standing_ = {};
  standing_.name = contents.name;
  standing_.path = contents.path;
  standing_.imageFormat = contents.imageFormat;
  standing_.canvasWidth = contents.canvasWidth;
  standing_.canvasHeight = contents.canvasHeight;
  standing_.manifest = std::move(manifest);
  standing_.thumbnail = std::move(thumbnail);
}

JournalWriter::Outcome JournalWriter::append(const Capture& capture) {
  auto draft = drafted(*file_, capture);
  if (!draft) return {.result = Result::needsEverything};
  const std::int64_t before = file_->size;
  auto written = writeRecord(*file_, *draft);
  if (!written && compaction_ != nullptr && file_->size < maximumBytes_ / 4 * 3) {
    // Its file may take the room that the record needs.
    postponeCompaction();
    written = writeRecord(*file_, *draft);
  }
  needsCompacting_ = needsCompacting_ || isCompactionDue();
  if (!written) return {.result = Result::failed, .reason = written.error()};
  return {.bytesWritten = file_->size - before};
}

Described<std::unique_ptr<JournalWriter::File>> JournalWriter::createPart() {
  constexpr mode_t forUserAlone = 0600;
  std::error_code failure;
  std::filesystem::create_directories(files_.folder, failure);
  ::chmod(files_.folder.c_str(), 0700);
  ::unlink(files_.part().c_str());
  Descriptor file(FileOperations::current().createFile(files_.part(), forUserAlone));
  if (!file.isOpen()) return because(journal::writeFailure(errno));
  if (!lockFile(file.number(), LockWait::forOthers)) return because(journal::writeFailure(errno));
  auto part = std::make_unique<File>();
  part->descriptor = std::move(file);
  part->mark = QRandomGenerator::system()->generate64();
  return part;
}

void JournalWriter::chooseBase(File& file, const KnownFilePtr& known) {
  file.known = known;
  if (known == nullptr) return;
  const auto saved = std::dynamic_pointer_cast<const SavedFile>(known);
  const std::string path =
      saved != nullptr ? saved->path : QFile::encodeName(known->documentPath).toStdString();
  std::error_code failure;
  // Even where nothing is left to it, a restored document must know which file it came from.
  file.base = journal::BaseFile{std::filesystem::absolute(path, failure).string(), known->identity, 0, {}};
  auto source = saved != nullptr ? saved->open() : std::nullopt;
  if (!source) return;
  journal::BaseFile& base = *file.base;
  base.copy = ++lastCopy_;
  for (const auto& [entry, surface] : saved->surfaces) {
    if (!canBeLeft(surface)) continue;
    const auto number = static_cast<std::uint32_t>(base.surfaces.size());
    base.surfaces.push_back({entry, surface.format, static_cast<std::uint32_t>(surface.width),
                             static_cast<std::uint32_t>(surface.height), surface.chunks});
    for (std::size_t tile = 0; tile < surface.tiles.size(); ++tile) {
      if (surface.tiles[tile].isUniform) continue;
      const VisiblePart part(surface.width, surface.height, static_cast<int>(tile));
      const Standing stands{TileSource{TileSource::Kind::base, number, tile}, part.columns, part.rows};
      const auto [place, isFirst] = file.standing.try_emplace(surface.tiles[tile].value, stands);
      const bool showsMore = part.columns >= place->second.columns && part.rows >= place->second.rows;
      if (!isFirst && showsMore) place->second = stands;
    }
  }
  file.held = std::make_shared<HeldBase>(std::move(*source), *saved, files_.copy(base.copy));
}

Described<void> JournalWriter::takePlace(std::unique_ptr<File> file) {
  if (FileOperations::current().renameFile(files_.part(), files_.journal()) != 0)
    return because(journal::writeFailure(errno));
  syncFolder(files_.folder);
  const std::unique_ptr<File> replaced = std::exchange(file_, std::move(file));
  const bool hasGone = replaced != nullptr && replaced->held != nullptr && replaced->held != file_->held;
  if (hasGone) replaced->held->remove();
  compaction_ = nullptr;
  needsCompacting_ = false;
  compactAt_ = 0;
  return {};
}

JournalWriter::Outcome JournalWriter::beginAnew(const Capture& capture) {
  giveUpCompaction();
  std::shared_ptr<HeldBase> held;
  const auto write = [&]() -> Described<std::int64_t> {
    auto part = createPart();
    if (!part) return because(part.error());
    chooseBase(**part, capture.known);
    held = (*part)->held;
    auto draft = drafted(**part, capture);
    if (!draft) return because(QStringLiteral("The document can't be written."));
    draft->contents.base = (*part)->base;
    if (draft->contents.manifest.isEmpty()) draft->contents.manifest = standing_.manifest;
    if (draft->contents.manifest.isEmpty()) return because(QStringLiteral("The document can't be written."));
    if (auto written = writeRecord(**part, std::move(*draft)); !written) return because(written.error());
    const std::int64_t size = (*part)->size;
    if (auto placed = takePlace(std::move(*part)); !placed) return because(placed.error());
    return size;
  };
  const auto written = write();
  if (written) return {.bytesWritten = *written};
  ::unlink(files_.part().c_str());
  if (held != nullptr) held->remove();
  return {.result = Result::failed, .reason = written.error()};
}

void JournalWriter::remove() {
  // Nobody is left to whom a failure would matter: it is offered at the next start.
  static_cast<void>(files_.removeAll());
  giveUpCompaction();
  file_ = nullptr;
  latest_.clear();
  standing_ = {};
  compactAt_ = 0;
}

// Compacting.

bool JournalWriter::isCompactionDue() const {
  return file_->size >= std::max(compactAt_, toleratedWaste_) &&
         JournalCompaction::isWorthIt(*file_, toleratedWaste_);
}

void JournalWriter::compactPiece() {
  if (!needsCompacting_) return;
  const JournalTurns::Turn turn(*turns_);
  // The journal is whole as it stands.
  if (!compactSome()) postponeCompaction();
}

Described<void> JournalWriter::compactSome() {
  if (compaction_ == nullptr) {
    auto source = FileHandle::openForReading(files_.journal());
    if (!source) return because(source.error());
    auto part = createPart();
    if (!part) return because(part.error());
    compaction_ = std::make_unique<JournalCompaction>(std::move(*source), std::move(*part), maximumBytes_);
  }
  const auto progress = compaction_->copyPiece(*file_);
  if (!progress) return because(progress.error());
  if (*progress == JournalCompaction::Progress::goesOn) return {};
  auto next = compaction_->finish(*file_, standing_);
  if (!next) return because(next.error());
  return takePlace(std::move(*next));
}

void JournalWriter::postponeCompaction() {
  giveUpCompaction();
  // A journal that nears its limit has nothing else to hope for.
  compactAt_ = std::min(file_->size + file_->size / 2, maximumBytes_ / 4 * 3);
}

void JournalWriter::giveUpCompaction() {
  if (std::exchange(compaction_, nullptr) != nullptr) ::unlink(files_.part().c_str());
  needsCompacting_ = false;
}

}  // namespace orvanel
