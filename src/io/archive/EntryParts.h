// The places where reading of a deflated entry can start. Its chunks are self-contained, and an extra field
// in the archive's central directory, which other programs ignore, lists their sizes. Plain values, any
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvanel {

/// A section of a deflate stream that can be inflated on its own.
struct EntryPart {
  std::uint32_t storedSize = 0;
  std::uint32_t size = 0;

  friend bool operator==(const EntryPart&, const EntryPart&) = default;
};

/// A part where it stands in an archive, or a whole entry that is stored as it is.
struct StoredChunk {
  std::uint64_t offset = 0;  ///< in the file
  std::uint32_t storedSize = 0;
  std::uint32_t size = 0;
  std::uint32_t crc = 0;        ///< CRC-32 of the bytes
  std::uint32_t storedCrc = 0;  ///< CRC-32 of the compressed bytes

  friend bool operator==(const StoredChunk&, const StoredChunk&) = default;
};

/// The header ID of the extra field.
inline constexpr std::uint16_t entryPartsFieldID = 0x5650;

/// Encodes the two sizes of each part in order, little-endian. Empty for no parts, and for more than a field
/// can hold; such an entry is read sequentially.
[[nodiscard]] std::vector<std::byte> encodedParts(const std::vector<EntryPart>& parts);

/// The parts of an entry of these sizes; empty if the field contradicts them.
[[nodiscard]] std::vector<EntryPart> decodedParts(std::span<const std::byte> field, std::uint64_t size,
                                                  std::uint64_t storedSize);

}  // namespace orvanel
