// Reads an archive back from the disk and compares it with what was written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "io/files/FileError.h"
#include "io/files/Progress.h"

namespace orvanel {

struct WrittenEntry;

/// Consecutive bytes of a file and their CRC-32.
struct WrittenRange {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  std::uint32_t crc = 0;
};

/// Compares the directory as a reader sees it with the entries, and the ranges with their checksums.
[[nodiscard]] Described<void> compareArchive(const std::string& path,
                                             const std::vector<WrittenEntry>& entries,
                                             const std::vector<WrittenRange>& ranges,
                                             const Progress& progress);

}  // namespace orvanel
