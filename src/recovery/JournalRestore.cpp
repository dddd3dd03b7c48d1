#include <QFile>
#include <algorithm>
#include <map>

#include "io/document/SaveSnapshot.h"
#include "io/document/TextureLoading.h"
#include "io/files/FileName.h"
#include "io/files/InputFile.h"
#include "io/files/Parallel.h"
#include "io/image/ImageMetadata.h"
#include "raster/MemoryBudget.h"
#include "raster/Regularity.h"
#include "recovery/JournalReader.h"
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
};

Described<std::vector<Filling>> fillingsOf(const DocumentPlan& plan, const JournalState& state) {
  std::vector<Filling> fillings;
  const auto add = [&](const QString& path, const Texture& surface) {
    if (surface == nullptr) return true;
    const auto found = state.tables.find(path.toStdString());
    if (found == state.tables.end() || found->second.format != surface->format() ||
        found->second.tiles.size() != static_cast<std::size_t>(surface->tileCount())) {
      return false;
    }
    fillings.push_back({surface, &found->second});
    return true;
  };
  for (const PlannedNode& node : plan.nodes) {
    const QString& id = plan.manifest.nodes[node.manifest].id;
    if (!add(layerEntryPath(id), node.pixels) || !add(maskEntryPath(id), node.mask))
      return because(damaged());
  }
  return fillings;
}

bool holds(const std::vector<Filling>& fillings, TileSource::Kind kind) {
  return std::ranges::any_of(fillings, [kind](const Filling& filling) {
    return std::ranges::any_of(filling.table->tiles,
                               [kind](const TileSource& source) { return source.kind == kind; });
  });
}

/// The document's file as it was when the journal began.
struct LoadedBase {
  /// In the order of `BaseFile::surfaces`; null for one that isn't there.
  std::vector<Texture> surfaces;
  SavedFilePtr saved;
};

Described<LoadedBase> loadFrom(const std::string& path, const BaseFile& base, bool isOriginal,
                               const MetalContext& context, const Progress& progress) {
  auto opened = openDocument(QFile::decodeName(path.c_str()), context, progress);
  if (!opened) return because(opened.error());
  if (isOriginal && opened->archive.identity() != base.identity) return because(damaged());
  auto saved = std::make_shared<SavedFile>();
  auto surfaces = fillTextures(*opened, progress);
  if (!surfaces) return because(surfaces.error());
  std::map<std::string, Texture> found;
  for (const TextureLoadRequest& request : opened->requests)
    found[opened->archive.entries()[request.entry].path] = request.destination;
  LoadedBase loaded;
  for (const std::string& surface : base.surfaces) loaded.surfaces.push_back(found[surface]);
  if (!isOriginal) return loaded;
  saved->path = path;
  saved->identity = base.identity;
  saved->surfaces = std::move(*surfaces);
  loaded.saved = std::move(saved);
  return loaded;
}

Described<LoadedBase> loadBase(const BaseFile& base, const MetalContext& context,
                               const std::function<std::string(std::uint32_t)>& copyOfBase,
                               const Progress& progress) {
  if (FileIdentity::of(base.path) == base.identity) {
    auto loaded = loadFrom(base.path, base, true, context, progress);
    if (loaded || progress.isCancelled() || base.copy == 0) return loaded;
  }
  if (base.copy != 0) return loadFrom(copyOfBase(base.copy), base, false, context, progress);
  return because(QStringLiteral("The changes can't be restored: the file \"%1\", which they were made in, "
                                "has been changed or removed since.")
                     .arg(displayName(QFile::decodeName(base.path.c_str()))));
}

/// Decompresses the tiles of the journal that the surfaces use, and puts all tiles in their places.
class Filler {
 public:
  Filler(const JournalInput& input, const JournalState& state, const LoadedBase& base)
      : input_(input), state_(state), base_(base), tiles_(state.stored.size()) {}

  Described<void> fill(const std::vector<Filling>& fillings, const Progress& progress) {
    if (auto result = decompress(fillings, progress); !result) return result;
    for (const Filling& filling : fillings) {
      for (int index = 0; index < filling.surface->tileCount(); ++index) {
        if (!put(*filling.surface, index, filling.table->tiles[static_cast<std::size_t>(index)]))
          return because(damaged());
      }
    }
    return {};
  }

 private:
  static constexpr std::size_t tilesOfTask = 32;

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
      if (!input_.read(stored.offset, compressed)) return because(damaged());
      Tile tile = Tile::adopt(new TileBuffer(bytes));
      if (!CompressedTile::decompress(compressed, tile.buffer()->bytes(), stored.tile.pixelBytes))
        return because(damaged());
      tiles_[number] = std::move(tile);
    }
    return {};
  }

  [[nodiscard]] bool put(Surface& surface, int index, const TileSource& source) const {
    if (source.kind == TileSource::Kind::uniform) {
      surface.setUniform(index, packPixel(&source.value, surface.pixelBytes()));
      return true;
    }
    if (source.kind == TileSource::Kind::base) {
      const Texture& base = base_.surfaces[source.surface];
      if (base == nullptr || base->format() != surface.format() ||
          source.value >= static_cast<std::uint64_t>(base->tileCount())) {
        return false;
      }
      surface.setTile(index, base->tile(static_cast<int>(source.value)));
      return true;
    }
    if (state_.stored[source.value].tile.pixelBytes != surface.pixelBytes()) return false;
    surface.setTile(index, tiles_[source.value]);
    markIfIrregular(surface, index);
    return true;
  }

  const JournalInput& input_;
  const JournalState& state_;
  const LoadedBase& base_;
  std::vector<Tile> tiles_;
};

/// Of the image that the document was opened from, as far as it is still there.
std::shared_ptr<const SourceMetadata> metadataOf(const JournalState& state) {
  if (!state.document.imageFormat) return nullptr;
  const auto file = InputFile::open(state.document.path);
  if (!file) return nullptr;
  return ImageMetadata::read(state.document.path, **file, ImageMetadata::Orientation::applied);
}

}  // namespace

Described<RestoredContents> restoreContents(const JournalInput& input, const MetalContext& context,
                                            const std::function<std::string(std::uint32_t)>& copyOfBase,
                                            const Progress& progress) {
  const auto state = readJournalState(input, TileCheck::all);
  if (!state) return because(state.error());
  const QByteArray& text = state->document.manifest;
  auto manifest = decodeManifest({text.constData(), static_cast<std::size_t>(text.size())}, progress);
  if (!manifest) return because(manifest.error());
  const auto hasTable = [&](const QString& path) { return state->tables.contains(path.toStdString()); };
  auto plan = planDocument(std::move(*manifest), context, hasTable, progress);
  if (!plan) return because(plan.error());
  const auto fillings = fillingsOf(*plan, *state);
  if (!fillings) return because(fillings.error());
  LoadedBase base;
  if (state->base && holds(*fillings, TileSource::Kind::base)) {
    auto loaded = loadBase(*state->base, context, copyOfBase, progress.part(0.0, 0.7));
    if (!loaded) return because(loaded.error());
    base = std::move(*loaded);
  }
  if (auto filled = Filler(input, *state, base).fill(*fillings, progress); !filled)
    return because(filled.error());
  if (auto judged = judgeShownMemory(*plan); !judged) return because(judged.error());
  progress.tell(1.0);
  return RestoredContents{std::move(*plan), state->document.path, state->document.imageFormat,
                          metadataOf(*state), std::move(base.saved)};
}

DocumentPtr buildRestored(const RestoredContents& contents, MetalContext& context) {
  DocumentPtr document = buildDocument(contents.plan, context);
  if (!contents.path.isEmpty()) document->setSource(contents.path, contents.imageFormat);
  document->setSourceMetadata(contents.metadata);
  document->setFileMemory(contents.saved);
  document->setDirty(true);
  return document;
}

}  // namespace orvanel
