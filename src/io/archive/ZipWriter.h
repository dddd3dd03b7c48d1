// Writes a ZIP archive whose entries come in chunks that all cores make ahead of the writing.
// Runs on the thread that calls it and holds no more than a window of chunks in memory.
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
  /// Bytes of all chunks; not needed of an entry of one chunk.
  std::optional<std::uint64_t> size;
  int chunkCount = 1;
  /// Puts the bytes of a chunk into the buffer. Called from several threads, once for each chunk.
  std::function<void(int chunk, ByteBuffer& bytes)> makeChunk;
};

/// What the archive on the disk must hold of an entry.
struct WrittenEntry {
  std::string path;
  std::uint64_t size = 0;
  std::uint64_t storedSize = 0;
  std::uint32_t crc = 0;
  /// CRC-32 of the bytes as they stand in the archive.
  std::uint32_t storedCrc = 0;
};

/// Writes all entries in order and puts the archive at its destination, after comparing what is on the
/// disk with what was written: the directory, and every byte of every entry.
[[nodiscard]] Described<void> writeArchive(AtomicFile& file, const std::vector<ArchiveEntry>& entries,
                                           const Progress& progress);

}  // namespace orvanel
