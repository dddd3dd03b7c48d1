// Mutations that keep what a format checks: a mutated archive is still an archive with right sums and sizes,
// and mutated JSON is still JSON, so that they reach what lies behind the checks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace orvanel::fuzz {

using Bytes = std::vector<std::uint8_t>;
using Random = std::minstd_rand;

/// From 0 to `count` - 1; 0 if there is nothing to choose from.
[[nodiscard]] inline std::size_t choose(Random& random, std::size_t count) {
  return count > 0 ? random() % count : 0;
}

/// The library's own mutations, of bytes that nothing needs to be known about; at most `most` bytes result.
void mutateBytes(Bytes& bytes, std::size_t most);

/// One change of the text's structure or of a value, or none if it isn't JSON.
void mutateJson(Bytes& text, Random& random);

struct ZipEntry {
  std::string name;
  Bytes content;
  /// 0: stored. Otherwise deflated in this many parts; more than one are listed where a reader finds them.
  std::size_t parts = 0;
  /// Added to the sizes that the archive tells, and to the check sum.
  std::uint32_t lie = 0;
};

/// None for an archive that can't be read simply, or holds more than a mebibyte.
[[nodiscard]] std::optional<std::vector<ZipEntry>> unpackedZip(std::span<const std::uint8_t> archive);
[[nodiscard]] Bytes packedZip(const std::vector<ZipEntry>& entries);

/// Mends the check sums of a PNG's chunks; other files stay as they are.
void mendPng(std::span<std::uint8_t> file);

/// The result of a custom mutator: the bytes if they fit, otherwise a plain mutation of the input.
[[nodiscard]] std::size_t handedOver(const Bytes& mutated, std::uint8_t* data, std::size_t size,
                                     std::size_t most);

}  // namespace orvanel::fuzz
