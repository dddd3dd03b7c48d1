// Helpers for tests of the memory that edits ask for: opaque layers, and what an edit asks for and takes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "model/ModelSupport.h"
#include "raster/MemoryBudget.h"
#include "raster/TileMemory.h"
#include "undo/TextureSnapshot.h"

namespace orvanel::test {

/// Of a tile of a layer of 8 bits in colour, and of its flattened image.
inline constexpr std::uint64_t tileBytes = std::uint64_t{tilePixels} * 4;

/// Makes a tile data: opaque if it is told to be, or half transparent.
inline void paintTile(Surface& surface, int index, TileTrait trait) {
  std::byte* const bytes = surface.editTile(index);
  const std::size_t count = surface.tileBytes();
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::byte>(i * 31 + i / 4);
  for (std::size_t i = 3; i < count; i += 4) {
    bytes[i] = static_cast<std::byte>(trait == TileTrait::opaque ? 255 : 128);
  }
  surface.setTrait(index, trait);
}

inline void paintAllTiles(Surface& surface, TileTrait trait) {
  for (int index = 0; index < surface.tileCount(); ++index) paintTile(surface, index, trait);
}

/// What the edit asks for; nothing if it isn't refused without any memory. It isn't carried out then.
inline std::uint64_t askedBy(const Document& document, const std::function<void()>& edit) {
  const ChangeRecorder changes(document);
  {
    const ScopedMemoryLimit limit(0);
    edit();
  }
  const auto refusals = changes.of<change::EditRefused>();
  return refusals.empty() ? 0 : refusals.front().bytesNeeded;
}

/// By how much the memory for pixels grows with the edit, once everything is flattened.
inline std::int64_t takenBy(Document& document, const std::function<void()>& edit) {
  TextureSnapshot::waitForCompression();
  const auto before = static_cast<std::int64_t>(tileMemory::bytesInUse());
  edit();
  static_cast<void>(document.composite());
  TextureSnapshot::waitForCompression();
  return static_cast<std::int64_t>(tileMemory::bytesInUse()) - before;
}

}  // namespace orvanel::test
