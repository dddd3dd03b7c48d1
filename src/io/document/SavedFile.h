// Where the compressed pixels of a document stand in its file, and of which tiles they are. A save copies
// what hasn't changed since from there instead of compressing it again. Immutable once made; any thread.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "io/archive/EntryParts.h"
#include "io/files/InputFile.h"
#include "io/files/KnownFile.h"
#include "raster/Surface.h"

namespace orvanel {

/// What identifies a tile's pixels without holding them: the version of its data, or its uniform value.
struct TileMark {
  std::uint64_t value = 0;
  bool isUniform = false;

  [[nodiscard]] static TileMark of(const Tile& tile) {
    return {tile.isUniform() ? tile.pixel() : tile.version(), tile.isUniform()};
  }
  friend bool operator==(const TileMark&, const TileMark&) = default;
};

/// The chunks of one surface's entry, and the surface that they were made of.
struct SavedSurface {
  PixelFormat format = PixelFormat::rgba8Unorm;
  int width = 0;
  int height = 0;
  std::vector<TileMark> tiles;
  std::vector<StoredChunk> chunks;

  [[nodiscard]] static SavedSurface of(const Surface& surface, std::vector<StoredChunk> chunks);
  /// Whether the surface has this format and size, and its tiles from `firstRow` up to `endRow`, in pixels,
  /// are the ones that were saved.
  [[nodiscard]] bool holds(const Surface& surface, int firstRow, int endRow) const;
};

/// By the path of the entry.
using SavedSurfaces = std::map<std::string, SavedSurface>;

struct SavedFile final : KnownFile {
  /// Where it really stands.
  std::string path;
  /// Where a journal had a copy of it when the document was restored; usually empty.
  std::string copy;
  SavedSurfaces surfaces;

  /// Opens the file if it is most likely still as it was saved or loaded. Another name for it, such as a
  /// journal's, doesn't matter; what is taken from it is compared with its sums.
  [[nodiscard]] std::optional<FileHandle> open() const;
};

using SavedFilePtr = std::shared_ptr<const SavedFile>;

}  // namespace orvanel
