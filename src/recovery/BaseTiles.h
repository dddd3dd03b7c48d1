// The tiles that a journal left to the document's file, read from wherever their bytes are found: in that
// file or in what the store holds of it. Only data whose checksums match the journal's is used,
// whichever file it comes from. Belongs to one thread.
#pragma once

#include <cstdint>
#include <vector>

#include "io/files/FileError.h"
#include "io/files/InputFile.h"
#include "io/files/Progress.h"
#include "raster/MetalContext.h"
#include "recovery/JournalFormat.h"

namespace orvanel {

class BaseTiles {
 public:
  /// The base must outlive it. `isNeeded` tells of each of its surfaces whether any tile of it is needed.
  [[nodiscard]] static Described<BaseTiles> of(const journal::BaseFile& base,
                                               const std::vector<bool>& isNeeded,
                                               const MetalContext& context);

  /// Reads what is still missing, as far as it stands in this file. Fails only if it is cancelled, or memory
  /// ends.
  [[nodiscard]] Described<void> readFrom(const FileHandle& file, const Progress& progress);
  [[nodiscard]] bool isComplete() const;

  /// Null for a surface that isn't needed.
  [[nodiscard]] const Texture& surface(std::uint32_t number) const { return surfaces_[number].pixels; }
  /// Whether this tile has been found.
  [[nodiscard]] bool has(std::uint32_t number, std::uint64_t tile) const;

 private:
  struct Found {
    Texture pixels;
    /// Of the rows of tiles.
    std::vector<bool> isMissing;
  };

  explicit BaseTiles(const journal::BaseFile& base) : base_(&base) {}
  [[nodiscard]] Described<void> readSurface(const FileHandle& file, std::size_t number,
                                            const Progress& progress);

  const journal::BaseFile* base_;
  std::vector<Found> surfaces_;
};

}  // namespace orvanel
