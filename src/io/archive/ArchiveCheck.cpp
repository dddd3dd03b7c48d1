#include "io/archive/ArchiveCheck.h"

#include <algorithm>
#include <cerrno>

#include "io/archive/Deflate.h"
#include "io/archive/ZipReader.h"
#include "io/archive/ZipWriter.h"
#include "io/files/InputFile.h"
#include "io/files/Parallel.h"
#include "io/files/PassingFile.h"
#include "io/files/SharedExtents.h"

namespace orvanel {
namespace {

/// Large enough for sequential disk speed, small enough for a core's cache.
constexpr std::size_t readBytes = std::size_t{1} << 20U;

QString differs() {
  return QStringLiteral("The file on the disk differs from what was written.");
}

Described<void> compareRange(const FileHandle& file, const WrittenRange& range, const Progress& progress) {
  thread_local ByteBuffer buffer(readBytes);
  std::uint32_t crc = 0;
  for (std::uint64_t done = 0; done < range.length;) {
    if (progress.isCancelled()) return cancelled();
    const auto part = buffer.span().first(std::min<std::uint64_t>(readBytes, range.length - done));
    const ssize_t count =
        readPassing(file.descriptor(), part, static_cast<std::int64_t>(range.offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return because(differs());
    crc = crc32(part.first(static_cast<std::size_t>(count)), crc);
    done += static_cast<std::uint64_t>(count);
  }
  if (crc != range.crc) return because(differs());
  return {};
}

/// The ranges whose bytes only a look at the disk can tell.
std::vector<const WrittenRange*> rangesToRead(const FileHandle& file, const std::vector<WrittenRange>& ranges,
                                              const KeptArchive* kept) {
  std::vector<const WrittenRange*> unsure;
  for (const WrittenRange& range : ranges) unsure.push_back(&range);
  const auto isShared = [](const WrittenRange* range) { return range->sharedFrom.has_value(); };
  // Whoever wrote into the kept archive before the sharing changed what was compared; the time of its last
  // change can't be set back.
  const bool isOffered = kept != nullptr && std::any_of(unsure.begin(), unsure.end(), isShared);
  if (!isOffered || FileIdentity::of(kept->file.descriptor()) != kept->identity) return unsure;
  const auto extents = SharedExtents::between(file.descriptor(), kept->file.descriptor());
  std::erase_if(unsure, [&](const WrittenRange* range) {
    return isShared(range) && extents.areSame(range->offset, *range->sharedFrom, range->length);
  });
  return unsure;
}

}  // namespace

Described<void> compareArchive(const std::string& path, const std::vector<WrittenEntry>& entries,
                               const std::vector<WrittenRange>& ranges, const KeptArchive* kept,
                               const Progress& progress) {
  const auto reader = ZipReader::open(path);
  if (!reader) return because(reader.error());
  const auto isSame = [](const ArchiveEntryInfo& found, const WrittenEntry& written) {
    return found.path == written.path && found.size == written.size &&
           found.storedSize == written.storedSize && found.crc == written.crc;
  };
  if (!std::equal(reader->entries().begin(), reader->entries().end(), entries.begin(), entries.end(),
                  isSame)) {
    return because(differs());
  }
  const auto file = FileHandle::openForReading(path);
  if (!file) return because(file.error());
  const auto unsure = rangesToRead(*file, ranges, kept);
  return forEachInBackground(unsure.size(),
                             [&](std::size_t i) { return compareRange(*file, *unsure[i], progress); });
}

}  // namespace orvanel
