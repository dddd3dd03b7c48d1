// One journal's file on the disk, as far as it is complete: what its records hold, and where. Owned by
// whoever writes it; belongs to the thread that writes journals.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "io/files/Descriptor.h"
#include "io/files/KnownFile.h"
#include "raster/Tile.h"
#include "recovery/HeldBase.h"
#include "recovery/JournalFormat.h"

namespace orvanel {

struct JournalFile {
  struct Stored {
    std::int64_t offset = 0;
    journal::StoredTile tile;
    std::uint32_t crc = 0;
  };
  /// Where a tile's pixels are. A document's file has only those that were visible in it: a tile at the edge
  /// of a surface may be shared with one that shows more.
  struct Standing {
    journal::TileSource source;
    int columns = tileSide;
    int rows = tileSide;
  };

  Descriptor descriptor;
  std::int64_t size = 0;
  std::uint64_t mark = 0;
  std::uint64_t records = 0;
  std::int64_t firstContents = 0;  ///< bytes of the first record that aren't tiles
  std::optional<journal::BaseFile> base;
  /// The store's hold on it; null without one.
  std::shared_ptr<HeldBase> held;
  KnownFilePtr known;
  journal::TileTables tables;
  std::vector<Stored> stored;
  /// Where tiles' pixels are, by their versions.
  std::unordered_map<std::uint64_t, Standing> standing;

  /// Which of the stored tiles are still in use.
  [[nodiscard]] std::vector<bool> liveTiles() const;
};

}  // namespace orvanel
