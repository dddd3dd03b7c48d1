// File I/O that bypasses the page cache where possible: a document's pixels are kept in tiles, and a second
// copy in the cache would only displace other data. Any thread.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace orvanel {

/// Like `pread`, but doesn't keep the bytes in the page cache.
[[nodiscard]] ssize_t readPassing(int file, std::span<std::byte> out, std::int64_t offset);
/// Like `pwrite`, but starts writing to the disk at once and doesn't keep the bytes in the page cache.
[[nodiscard]] ssize_t writePassing(int file, std::span<const std::byte> bytes, std::int64_t offset);

}  // namespace orvanel
