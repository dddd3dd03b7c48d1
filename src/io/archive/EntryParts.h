// Where a reader can start within a deflated entry: its chunks refer to nothing outside themselves, and an
// extra field of the archive's directory, which other programs pass over, tells how long each of them is.
// Plain values, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvanel {

/// A run of a deflate stream that can be inflated by itself.
struct EntryPart {
  std::uint32_t storedSize = 0;
  std::uint32_t size = 0;

  friend bool operator==(const EntryPart&, const EntryPart&) = default;
};

/// The extra field's own number among those of the archive format.
inline constexpr std::uint16_t entryPartsFieldID = 0x5650;

/// The field's bytes: for each part its two sizes, little-endian, in order. None for a single part, and for
/// more than a field can hold: such an entry is read from its start.
[[nodiscard]] std::vector<std::byte> encodedParts(const std::vector<EntryPart>& parts);

/// The parts of an entry of these sizes; none if the field disagrees with them in any way.
[[nodiscard]] std::vector<EntryPart> decodedParts(std::span<const std::byte> field, std::uint64_t size,
                                                  std::uint64_t storedSize);

}  // namespace orvanel
