// Writes a ZIP archive. All cores produce its entries in chunks, ahead of the writer and within a bounded
// window; chunks that another archive already holds are copied from there. Runs on the calling thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "io/archive/Deflate.h"
#include "io/archive/EntryParts.h"
#include "io/files/AtomicFile.h"
#include "io/files/ByteBuffer.h"
#include "io/files/FileIdentity.h"
#include "io/files/InputFile.h"
#include "io/files/Progress.h"

namespace orvanel {

struct ArchiveEntry {
  enum class Method { stored, deflated };

  std::string path;  ///< UTF-8
  Method method = Method::deflated;
  /// The total size of all chunks; needed from 4 GiB on.
  std::optional<std::uint64_t> size;
  int chunkCount = 1;
  /// Puts the bytes of a chunk into the buffer. Called from several threads, once for each chunk that is
  /// made.
  std::function<void(int chunk, ByteBuffer& bytes)> makeChunk;
  /// Where the chunk stands in the archive that chunks are kept from, or null. Optional.
  std::function<const StoredChunk*(int chunk)> keptChunk;
};

/// What the archive on the disk contains for an entry.
struct WrittenEntry {
  std::string path;
  std::uint64_t size = 0;
  std::uint64_t storedSize = 0;
  std::uint32_t crc = 0;
  std::vector<StoredChunk> chunks;
};

/// An archive that chunks are kept from.
struct KeptArchive {
  FileHandle file;
  /// Its state when its chunks were last compared with their sums.
  FileIdentity identity;
};

struct WriteFailure {
  QString reason;
  /// What was kept can't be read, or came out otherwise on the disk: writing everything anew may work.
  bool isKeptUnusable = false;
};

/// Writes all entries in order, reads the archive back from the disk to compare it with what was written, and
/// moves it to its destination. `keptFrom` may be null.
[[nodiscard]] tl::expected<std::vector<WrittenEntry>, WriteFailure> writeArchive(
    AtomicFile& file, const std::vector<ArchiveEntry>& entries, const Progress& progress,
    const KeptArchive* keptFrom = nullptr);

}  // namespace orvanel
