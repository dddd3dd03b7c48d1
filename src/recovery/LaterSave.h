// A document's file after a later save of the same document. When a process ends between a save that replaced
// the file and the renewal of the journal, and the old file couldn't be held, this is where its tiles are.
// Belongs to one thread.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "io/files/Progress.h"
#include "raster/MetalContext.h"
#include "recovery/JournalFormat.h"

namespace orvanel {

class LaterSave {
 public:
  /// Nothing if what stands there is no document that can be read.
  [[nodiscard]] static std::optional<LaterSave> open(const std::string& path, const MetalContext& context,
                                                     const Progress& progress);

  /// The surface at this place of the archive; null if there is none.
  [[nodiscard]] ConstTexture surface(const std::string& path) const;
  /// Whether the surface is still the one that the base had.
  [[nodiscard]] bool holdsUnchanged(const journal::BaseSurface& surface) const;

 private:
  struct Entry {
    ConstTexture surface;
    std::uint32_t crc = 0;
  };
  std::map<std::string, Entry> entries_;
};

/// Whether the tile shows the same in both; they must have the same format and size.
[[nodiscard]] bool isSameTile(const Surface& one, const Surface& other, int index);

}  // namespace orvanel
