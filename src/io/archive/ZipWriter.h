// Writes a ZIP archive. All cores produce its entries in chunks, ahead of the writer and within a bounded
// window. Runs on the calling thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "io/archive/Deflate.h"
#include "io/files/AtomicFile.h"
#include "io/files/ByteBuffer.h"
#include "io/files/Progress.h"

namespace orvanel {

struct ArchiveEntry {
  enum class Method { stored, deflated };

  std::string path;  ///< UTF-8
  Method method = Method::deflated;
  /// The total size of all chunks; optional for an entry of one chunk.
  std::optional<std::uint64_t> size;
  int chunkCount = 1;
  /// Puts the bytes of a chunk into the buffer. Called from several threads, once for each chunk.
  std::function<void(int chunk, ByteBuffer& bytes)> makeChunk;
};

/// What the archive on the disk must contain for an entry.
struct WrittenEntry {
  std::string path;
  std::uint64_t size = 0;
  std::uint64_t storedSize = 0;
  std::uint32_t crc = 0;
  /// CRC-32 of the compressed bytes.
  std::uint32_t storedCrc = 0;
};

/// Writes all entries in order, reads the archive back from the disk to compare it with what was written, and
/// moves it to its destination.
[[nodiscard]] Described<void> writeArchive(AtomicFile& file, const std::vector<ArchiveEntry>& entries,
                                           const Progress& progress);

}  // namespace orvanel
