// Reading and writing of long files that pass through once: a document's pixels live in tiles, so a second
// copy in the system's file cache would only take memory from others. Any thread.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace orvanel {

/// As `pread`. Bytes that the cache doesn't hold yet come from the disk and are not kept.
[[nodiscard]] ssize_t readPassing(int file, std::span<std::byte> out, std::int64_t offset);
/// As `pwrite`. The bytes go on their way to the disk at once and are not kept once they are there.
[[nodiscard]] ssize_t writePassing(int file, std::span<const std::byte> bytes, std::int64_t offset);

}  // namespace orvanel
