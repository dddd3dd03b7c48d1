// Reads an archive back from the disk and compares it with what was written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "io/files/FileError.h"
#include "io/files/Progress.h"

namespace orvanel {

struct KeptArchive;
struct WrittenEntry;

/// Consecutive bytes of a file and their CRC-32.
struct WrittenRange {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  std::uint32_t crc = 0;
  /// Where the same blocks stand in the archive that was kept from, if they were shared instead of written.
  std::optional<std::uint64_t> sharedFrom = {};
};

/// Compares the directory as a reader sees it with the entries, and the ranges with their checksums. Of
/// ranges that are shared with `kept`, which may be null, the mapping is compared instead: their bytes stood
/// on the disk before, and were compared there.
[[nodiscard]] Described<void> compareArchive(const std::string& path,
                                             const std::vector<WrittenEntry>& entries,
                                             const std::vector<WrittenRange>& ranges, const KeptArchive* kept,
                                             const Progress& progress);

}  // namespace orvanel
