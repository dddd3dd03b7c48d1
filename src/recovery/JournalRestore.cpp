#include <QFile>
#include <QStringList>
#include <algorithm>
#include <filesystem>
#include <utility>

#include "io/archive/ZipReader.h"
#include "io/document/SaveSnapshot.h"
#include "io/document/TextureLoading.h"
#include "io/files/FileName.h"
#include "io/files/InputFile.h"
#include "io/files/Parallel.h"
#include "io/image/ImageMetadata.h"
#include "raster/HalfFloat.h"
#include "raster/MemoryBudget.h"
#include "raster/Regularity.h"
#include "recovery/BaseTiles.h"
#include "recovery/JournalReader.h"
#include "recovery/LaterSave.h"
#include "undo/CompressedTile.h"

namespace orvanel {

using journal::BaseFile;
using journal::TileSource;
using journal::TileTable;

namespace {

QString damaged() {
  return QStringLiteral("The recovery data is damaged.");
}

/// A surface of the document with the table that tells its tiles.
struct Filling {
  Texture surface;
  const TileTable* table = nullptr;
  std::string path;
  QString layer;
};

Described<std::vector<Filling>> fillingsOf(const DocumentPlan& plan, const JournalState& state) {
  std::vector<Filling> fillings;
  const auto add = [&](const QString& path, const QString& layer, const Texture& surface) {
    if (surface == nullptr) return true;
    const auto found = state.tables.find(path.toStdString());
    if (found == state.tables.end() || found->second.format != surface->format() ||
        found->second.tiles.size() != static_cast<std::size_t>(surface->tileCount())) {
      return false;
    }
    fillings.push_back({surface, &found->second, path.toStdString(), layer});
    return true;
  };
  for (const PlannedNode& node : plan.nodes) {
    const NodeManifest& manifest = plan.manifest.nodes[node.manifest];
    const bool areThere = add(layerEntryPath(manifest.id), manifest.name, node.pixels) &&
                          add(maskEntryPath(manifest.id), manifest.name, node.mask);
    if (!areThere) return because(damaged());
  }
  return fillings;
}

/// The tiles of the document's file, as far as they are still to be had.
struct FoundBase {
  BaseTiles tiles;
  /// What that file holds, if it is still as it was.
  std::shared_ptr<SavedFile> saved;
};

std::shared_ptr<SavedFile> savedFileOf(const BaseFile& base, const FileIdentity& identity,
                                       const BaseTiles& tiles, std::string copy) {
  auto saved = std::make_shared<SavedFile>();
  saved->path = base.path;
  saved->copy = std::move(copy);
  saved->identity = identity;
  for (std::uint32_t number = 0; number < base.surfaces.size(); ++number) {
    const journal::BaseSurface& surface = base.surfaces[number];
    if (const Texture& pixels = tiles.surface(number); pixels != nullptr)
      saved->surfaces.emplace(surface.path, SavedSurface::of(*pixels, surface.chunks));
  }
  return saved;
}

/// Whether any tile of each of the base's surfaces is in use.
std::vector<bool> surfacesInUse(const std::vector<Filling>& fillings, const BaseFile& base) {
  std::vector<bool> inUse(base.surfaces.size(), false);
  for (const Filling& filling : fillings) {
    for (const TileSource& source : filling.table->tiles) {
      if (source.kind == TileSource::Kind::base) inUse[source.surface] = true;
    }
  }
  return inUse;
}

Described<FoundBase> findBase(const BaseFile& base, const std::vector<Filling>& fillings,
                              const MetalContext& context,
                              const std::function<std::string(std::uint32_t)>& copyOfBase,
                              const Progress& progress) {
  auto tiles = BaseTiles::of(base, surfacesInUse(fillings, base), context);
  if (!tiles) return because(tiles.error());
  if (const auto file = FileHandle::openForReading(base.path)) file->settleMappings();
  const auto identity = FileIdentity::of(base.path);
  const bool isAsItWas = identity && identity->isSameVersionAs(base.identity);
  std::vector<std::string> places{base.path};
  // Sums decide, but where everything is still as it was, there is no need to look elsewhere.
  const std::string copy = base.copy != 0 ? copyOfBase(base.copy) : std::string();
  if (!copy.empty()) places.insert(isAsItWas ? places.end() : places.begin(), copy);
  std::shared_ptr<SavedFile> saved;
  for (const std::string& place : places) {
    if (tiles->isComplete()) break;
    const auto file = FileHandle::openForReading(place);
    if (!file) continue;
    if (auto read = tiles->readFrom(*file, progress); !read) return because(read.error());
    if (isAsItWas && place == base.path && tiles->isComplete())
      saved = savedFileOf(base, *identity, *tiles, copy);
  }
  return FoundBase{std::move(*tiles), std::move(saved)};
}

/// What stands at the path, if it was saved from the same document and isn't the version that is known.
/// Nobody can tell which of that and the journal is the later one: edits are recorded while a save runs.
std::optional<FileIdentity> otherVersionAt(const std::string& path, const FileIdentity& known,
                                           const std::vector<Filling>& fillings) {
  const auto now = FileIdentity::of(path);
  if (!now || now->isSameVersionAs(known)) return std::nullopt;
  const auto archive = ZipReader::open(path);
  const bool isSameDocument = archive && std::ranges::any_of(fillings, [&](const Filling& filling) {
                                return archive->find(filling.path).has_value();
                              });
  return isSameDocument ? now : std::nullopt;
}

/// What the user is told of tiles that are gone.
QString lossOf(const QStringList& layers, const BaseFile& base, bool isOtherVersion) {
  constexpr qsizetype mostNames = 5;
  QStringList names = layers.mid(0, mostNames);
  if (layers.size() > mostNames) names.append(QStringLiteral("\u2026"));
  const QString sentence =
      isOtherVersion
          ? QStringLiteral(
                "The file \"%1\" holds another version of this document, which you can open. Of the "
                "restored one, parts of these layers are missing and transparent: %2.")
          : QStringLiteral(
                "The file \"%1\" has been changed or removed, so parts of these layers could not be "
                "restored and are transparent: %2.");
  return sentence.arg(displayName(QFile::decodeName(base.path.c_str())), names.join(QStringLiteral(", ")));
}

/// Decompresses the tiles of the journal that the surfaces use, and puts all tiles in their places.
class Filler {
 public:
  /// `base` is null without one.
  Filler(const JournalInput& input, const JournalState& state, const BaseTiles* base)
      : input_(input), state_(state), base_(base), tiles_(state.stored.size()) {}

  Described<void> fill(const std::vector<Filling>& fillings, const Progress& progress) {
    if (auto result = decompress(fillings, progress); !result) return result;
    for (const Filling& filling : fillings) {
      for (int index = 0; index < filling.surface->tileCount(); ++index) {
        if (!put(filling, index, filling.table->tiles[static_cast<std::size_t>(index)]))
          return because(damaged());
      }
    }
    return {};
  }

  [[nodiscard]] bool isComplete() const { return missing_.empty(); }
  /// Takes tiles that are missing from a later save: those of surfaces that haven't changed, and all if it
  /// holds whatever the journal does, because then it is what was being saved.
  void complete(const std::vector<Filling>& fillings, const LaterSave& later) {
    const bool isOfThisState =
        !state_.stored.empty() &&
        std::ranges::all_of(fillings, [&](const Filling& filling) { return holdsStored(later, filling); });
    std::erase_if(missing_, [&](const Missing& missing) {
      Surface& surface = *missing.filling->surface;
      const journal::BaseSurface& base = state_.base->surfaces[missing.source.surface];
      if (later.holdsUnchanged(base)) {
        surface.setTile(missing.index,
                        later.surface(base.path)->tile(static_cast<int>(missing.source.value)));
        return true;
      }
      const ConstTexture same = later.surface(missing.filling->path);
      const bool isThere = isOfThisState && isAlike(same, surface);
      if (isThere) surface.setTile(missing.index, same->tile(missing.index));
      return isThere;
    });
  }
  /// The names of layers of which tiles are gone.
  [[nodiscard]] QStringList incomplete() const {
    QStringList names;
    for (const Missing& missing : missing_) {
      if (!names.contains(missing.filling->layer)) names.append(missing.filling->layer);
    }
    return names;
  }

 private:
  static constexpr std::size_t tilesOfTask = 32;
  /// Where a mask is lost, its layer shows.
  static constexpr std::uint64_t maskThatShows = halfOne;

  struct Missing {
    const Filling* filling = nullptr;
    int index = 0;
    TileSource source;
  };

  static bool isAlike(const ConstTexture& found, const Surface& surface) {
    return found != nullptr && found->format() == surface.format() && found->width() == surface.width() &&
           found->height() == surface.height();
  }
  /// Whether the save has all tiles that the journal itself holds of this surface.
  static bool holdsStored(const LaterSave& later, const Filling& filling) {
    const ConstTexture found = later.surface(filling.path);
    for (int index = 0; index < filling.surface->tileCount(); ++index) {
      const bool isStored =
          filling.table->tiles[static_cast<std::size_t>(index)].kind == TileSource::Kind::stored;
      if (isStored && (!isAlike(found, *filling.surface) || !isSameTile(*found, *filling.surface, index)))
        return false;
    }
    return true;
  }

  Described<void> decompress(const std::vector<Filling>& fillings, const Progress& progress) {
    std::vector<bool> isNeeded(tiles_.size(), false);
    for (const Filling& filling : fillings) {
      for (const TileSource& source : filling.table->tiles) {
        if (source.kind == TileSource::Kind::stored) isNeeded[source.value] = true;
      }
    }
    std::vector<std::size_t> needed;
    for (std::size_t number = 0; number < isNeeded.size(); ++number) {
      if (isNeeded[number]) needed.push_back(number);
    }
    return forEachInBackground((needed.size() + tilesOfTask - 1) / tilesOfTask, [&](std::size_t task) {
      const auto first = std::span(needed).subspan(task * tilesOfTask);
      return decompressSome(first.first(std::min(first.size(), tilesOfTask)), progress);
    });
  }

  Described<void> decompressSome(std::span<const std::size_t> numbers, const Progress& progress) {
    std::vector<std::byte> compressed;
    for (const std::size_t number : numbers) {
      if (progress.isCancelled()) return cancelled();
      const JournalState::Stored& stored = state_.stored[number];
      const std::size_t bytes = std::size_t{tilePixels} * stored.tile.pixelBytes;
      if (!pixelsFitInMemory(2 * bytes))
        return because(QStringLiteral("There is not enough memory for this document."));
      compressed.resize(stored.tile.bytes);
      if (auto read = input_.read(stored.offset, compressed); !read) return because(read.error().reason);
      Tile tile = Tile::adopt(new TileBuffer(bytes));
      if (!CompressedTile::decompress(compressed, tile.buffer()->bytes(), stored.tile.pixelBytes))
        return because(damaged());
      tiles_[number] = std::move(tile);
    }
    return {};
  }

  /// False for what contradicts itself.
  [[nodiscard]] bool put(const Filling& filling, int index, const TileSource& source) {
    Surface& surface = *filling.surface;
    if (source.kind == TileSource::Kind::uniform) {
      surface.setUniform(index, packPixel(&source.value, surface.pixelBytes()));
      return true;
    }
    if (source.kind == TileSource::Kind::base) return base_ != nullptr && putFromBase(filling, index, source);
    if (state_.stored[source.value].tile.pixelBytes != surface.pixelBytes()) return false;
    surface.setTile(index, tiles_[source.value]);
    markIfIrregular(surface, index);
    return true;
  }

  [[nodiscard]] bool putFromBase(const Filling& filling, int index, const TileSource& source) {
    Surface& surface = *filling.surface;
    const Texture& base = base_->surface(source.surface);
    if (base == nullptr || base->format() != surface.format() ||
        source.value >= static_cast<std::uint64_t>(base->tileCount())) {
      return false;
    }
    if (base_->has(source.surface, source.value)) {
      surface.setTile(index, base->tile(static_cast<int>(source.value)));
      return true;
    }
    missing_.push_back({&filling, index, source});
    if (surface.format() == maskPixelFormat) surface.setUniform(index, maskThatShows);
    return true;
  }

  const JournalInput& input_;
  const JournalState& state_;
  const BaseTiles* base_;
  std::vector<Tile> tiles_;
  std::vector<Missing> missing_;
};

/// Of the image that the document was opened from, as far as it is still there.
std::shared_ptr<const SourceMetadata> metadataOf(const JournalState& state) {
  if (!state.document.imageFormat) return nullptr;
  const auto file = InputFile::open(state.document.path);
  if (!file) return nullptr;
  return ImageMetadata::read(state.document.path, **file, ImageMetadata::Orientation::applied);
}

bool isSameFile(const std::string& one, const std::string& other) {
  // Also of a file that isn't there any more.
  const auto resolved = [](const std::string& path) {
    std::error_code failure;
    return std::filesystem::weakly_canonical(path, failure);
  };
  return one == other || resolved(one) == resolved(other);
}

/// The document's file as it was last known: any other that stands there now has come from somebody else. Its
/// path isn't the document's if the process ended in a save to another file, or right after it.
KnownFilePtr knownFileOf(const JournalState& state, const std::shared_ptr<SavedFile>& saved,
                         const std::vector<Filling>& fillings) {
  const std::string path = QFile::encodeName(state.document.path).toStdString();
  const bool isOwn = state.base && isSameFile(state.base->path, path);
  const FileIdentity identity = isOwn ? state.base->identity : FileIdentity();
  if (const auto other = otherVersionAt(path, identity, fillings))
    return makeOtherVersion(state.document.path, identity, *other);
  if (!state.base) return nullptr;
  const QString known = isOwn ? state.document.path : QFile::decodeName(state.base->path.c_str());
  if (saved == nullptr) return makeKnownFile(known, state.base->identity);
  saved->documentPath = known;
  return saved;
}

/// What the user is told of records that follow the restored ones, if there are any.
QString lossOfRecords(const JournalInput& input, const JournalState& restored) {
  if (restored.stop.cause != JournalStop::Cause::damaged) {
    return QStringLiteral(
        "Some of the recovery data can't be read, so the last changes could not be restored.");
  }
  const auto offered = readJournalState(input, TileCheck::none);
  if (!offered || offered->records <= restored.records) return {};
  return QStringLiteral("Some of the recovery data is damaged, so the last changes could not be restored.");
}

}  // namespace

Described<RestoredContents> restoreContents(const JournalInput& input, const MetalContext& context,
                                            const std::function<std::string(std::uint32_t)>& copyOfBase,
                                            const Progress& progress) {
  const auto state = readJournalState(input, TileCheck::all);
  if (!state) return because(state.error().reason);
  // Nobody wants a part of what would be whole with fewer programs open.
  if (state->stop.cause == JournalStop::Cause::noMemory) return because(state->stop.reason);
  const QByteArray& text = state->document.manifest;
  auto manifest = decodeManifest({text.constData(), static_cast<std::size_t>(text.size())}, progress);
  if (!manifest) return because(manifest.error());
  const auto hasTable = [&](const QString& path) { return state->tables.contains(path.toStdString()); };
  auto plan = planDocument(std::move(*manifest), context, hasTable, progress);
  if (!plan) return because(plan.error());
  const auto fillings = fillingsOf(*plan, *state);
  if (!fillings) return because(fillings.error());
  std::optional<FoundBase> base;
  if (state->base) {
    auto found = findBase(*state->base, *fillings, context, copyOfBase, progress.part(0.0, 0.7));
    if (!found) return because(found.error());
    base = std::move(*found);
  }
  Filler filler(input, *state, base ? &base->tiles : nullptr);
  if (auto filled = filler.fill(*fillings, progress); !filled) return because(filled.error());
  bool isOtherVersion = false;
  if (!filler.isComplete()) {
    const std::string& path = state->base->path;
    if (const auto save = LaterSave::open(path, context, progress.part(0.7, 0.9))) {
      filler.complete(*fillings, *save);
      isOtherVersion = otherVersionAt(path, state->base->identity, *fillings).has_value();
    }
  }
  if (auto judged = judgeShownMemory(*plan); !judged) return because(judged.error());
  progress.tell(1.0);
  const QStringList incomplete = filler.incomplete();
  const QString loss =
      incomplete.isEmpty() ? lossOfRecords(input, *state) : lossOf(incomplete, *state->base, isOtherVersion);
  return RestoredContents{std::move(*plan),
                          state->document.path,
                          state->document.imageFormat,
                          metadataOf(*state),
                          knownFileOf(*state, base ? base->saved : nullptr, *fillings),
                          loss};
}

DocumentPtr buildRestored(const RestoredContents& contents, MetalContext& context) {
  DocumentPtr document = buildDocument(contents.plan, context);
  if (!contents.path.isEmpty()) document->setSource(contents.path, contents.imageFormat);
  document->setSourceMetadata(contents.metadata);
  document->setFileMemory(contents.known);
  document->setDirty(true);
  return document;
}

}  // namespace orvanel
