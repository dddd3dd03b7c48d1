#include "io/document/SavedFile.h"

#include <utility>

namespace orvanel {

SavedSurface SavedSurface::of(const Surface& surface, std::vector<StoredChunk> chunks) {
  SavedSurface saved{surface.format(), surface.width(), surface.height(), {}, std::move(chunks)};
  saved.tiles.reserve(static_cast<std::size_t>(surface.tileCount()));
  for (int index = 0; index < surface.tileCount(); ++index)
    saved.tiles.push_back(TileMark::of(surface.tile(index)));
  return saved;
}

bool SavedSurface::holds(const Surface& surface, int firstRow, int endRow) const {
  if (surface.format() != format || surface.width() != width || surface.height() != height) return false;
  const int first = firstRow / tileSide * surface.tilesAcross();
  const int end = ((endRow - 1) / tileSide + 1) * surface.tilesAcross();
  for (int index = first; index < end; ++index) {
    if (TileMark::of(surface.tile(index)) != tiles[static_cast<std::size_t>(index)]) return false;
  }
  return true;
}

std::optional<FileHandle> SavedFile::open() const {
  auto file = FileHandle::openForReading(path);
  const auto found = file ? FileIdentity::of(file->descriptor()) : std::nullopt;
  if (!found || !found->isSameVersionAs(identity)) return std::nullopt;
  return std::move(*file);
}

}  // namespace orvanel
