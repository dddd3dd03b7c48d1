// The records of a ZIP archive as bytes (PKWARE APPNOTE 6.3, sections 4.3.7 and 4.3.12 to 4.3.16), with
// 64-bit sizes where they are needed. Plain values, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "io/archive/EntryParts.h"

namespace orvanel::zipRecords {

using Bytes = std::vector<std::byte>;

struct Entry {
  std::string path;  ///< UTF-8
  bool isDeflated = true;
  /// Whether both sizes take 64 bits; decided before they are known.
  bool isLarge = false;
  std::time_t modified = 0;
  std::uint32_t crc = 0;
  std::uint64_t size = 0;
  std::uint64_t storedSize = 0;
  std::uint64_t headerOffset = 0;
  /// For the field of `EntryParts.h`.
  std::vector<EntryPart> parts;
};

/// Stands before the entry's data. Its length doesn't depend on the sizes and the checksum. The data begins
/// at a multiple of `alignment` bytes, by means of a field that readers ignore.
[[nodiscard]] Bytes localHeader(const Entry& entry, std::size_t alignment);
/// One entry of the central directory.
[[nodiscard]] Bytes directoryEntry(const Entry& entry);
/// Everything that follows the central directory's entries.
[[nodiscard]] Bytes directoryEnd(std::uint64_t entryCount, std::uint64_t directoryOffset,
                                 std::uint64_t directorySize);

}  // namespace orvanel::zipRecords
