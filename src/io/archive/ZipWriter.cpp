#include "io/archive/ZipWriter.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <limits>
#include <span>

#include "io/archive/ArchiveCheck.h"
#include "io/archive/ChunkPipeline.h"
#include "io/archive/ZipRecords.h"

namespace orvanel {
namespace {

/// Raw bytes that may wait between the makers of chunks and the file.
constexpr int chunksAhead = 48;
/// The unit in which file systems share blocks. Chunks of entries from `leastSharedBytes` on lie on this
/// grid, so that a later save can share those that haven't changed.
constexpr std::size_t shareGrid = 4096;
constexpr std::uint64_t leastSharedBytes = std::uint64_t{256} << 10U;

std::size_t gridOf(const ArchiveEntry& entry) {
  const bool isShared = entry.method == ArchiveEntry::Method::deflated && entry.size >= leastSharedBytes;
  return isShared ? shareGrid : 1;
}

/// Whether the entry may reach 4 GiB, stored or not.
bool mayBeLarge(const ArchiveEntry& entry) {
  const std::uint64_t size = entry.size.value_or(0);
  const std::uint64_t overhead = size / 1024 + 2 * shareGrid * static_cast<std::uint64_t>(entry.chunkCount);
  return size + overhead >= std::numeric_limits<std::uint32_t>::max();
}

/// The chunks that are kept, null for those to be made.
std::vector<const StoredChunk*> keptChunks(const ArchiveEntry& entry) {
  std::vector<const StoredChunk*> kept(static_cast<std::size_t>(entry.chunkCount), nullptr);
  for (int chunk = 0; entry.keptChunk && chunk < entry.chunkCount; ++chunk) {
    const StoredChunk* found = entry.keptChunk(chunk);
    // A chunk off the grid would push those behind it off, too; one with much padding isn't ours.
    const bool isFit = found != nullptr && found->storedSize % gridOf(entry) == 0 &&
                       found->storedSize <= std::uint64_t{found->size} + found->size / 1024 + 2 * shareGrid;
    if (isFit) kept[static_cast<std::size_t>(chunk)] = found;
  }
  return kept;
}

/// How many of the kept chunks, from the first of these on, stand behind one another in their archive: they
/// are copied at once, but not so many that cancelling would have to wait.
std::size_t lengthOfRun(std::span<const StoredChunk* const> kept) {
  constexpr std::uint64_t mostBytes = std::uint64_t{16} << 20U;
  std::uint64_t end = kept.front()->offset + kept.front()->storedSize;
  std::size_t length = 1;
  for (; length < kept.size() && end - kept.front()->offset < mostBytes; ++length) {
    const StoredChunk* next = kept[length];
    if (next == nullptr || next->offset != end) break;
    end += next->storedSize;
  }
  return length;
}

using KeptChunks = std::vector<std::vector<const StoredChunk*>>;

/// Delivers the chunks that have to be made, of all entries in order.
class ChunkSupply {
 public:
  ChunkSupply(const std::vector<ArchiveEntry>& entries, const KeptChunks& kept)
      : places_(placesOf(entries, kept)),
        pipeline_(static_cast<int>(places_.size()), chunksAhead, [this](int index) { return make(index); }) {}

  Chunk take() { return pipeline_.take(); }

 private:
  struct Place {
    const ArchiveEntry* entry;
    int chunk;
  };

  static std::vector<Place> placesOf(const std::vector<ArchiveEntry>& entries, const KeptChunks& kept) {
    std::vector<Place> places;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      for (std::size_t chunk = 0; chunk < kept[i].size(); ++chunk) {
        if (kept[i][chunk] == nullptr) places.push_back({&entries[i], static_cast<int>(chunk)});
      }
    }
    return places;
  }

  [[nodiscard]] Chunk make(int index) const {
    const auto& [entry, chunkIndex] = places_[static_cast<std::size_t>(index)];
    thread_local ByteBuffer raw;
    entry->makeChunk(chunkIndex, raw);
    Chunk chunk{{}, raw.size(), crc32(raw.span()), 0};
    if (entry->method == ArchiveEntry::Method::deflated) {
      chunk.bytes = deflateChunk(raw.span(), gridOf(*entry));
    } else {
      std::swap(chunk.bytes, raw);
    }
    chunk.checkSum = crc32(chunk.bytes.span());
    return chunk;
  }

  std::vector<Place> places_;
  ChunkPipeline pipeline_;
};

/// Writes the archive's records and chunks to the file, and notes what must be found there afterwards.
class Writer {
 public:
  Writer(AtomicFile& file, const std::vector<ArchiveEntry>& entries, const KeptArchive* keptFrom,
         const Progress& progress, double share)
      : file_(file), entries_(entries), keptFrom_(keptFrom), progress_(progress), share_(share) {
    for (const ArchiveEntry& entry : entries) {
      chunkCount_ += static_cast<std::size_t>(entry.chunkCount);
      kept_.push_back(keptChunks(entry));
    }
  }

  std::vector<WrittenEntry> written;
  std::vector<WrittenRange> ranges;
  bool isKeptUnreadable = false;

  Described<void> write() {
    ChunkSupply supply(entries_, kept_);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      if (auto result = writeEntry(entries_[i], kept_[i], supply); !result) return result;
    }
    const std::uint64_t start = position();
    for (const zipRecords::Entry& record : records_) {
      if (auto result = put(zipRecords::directoryEntry(record)); !result) return result;
    }
    return put(zipRecords::directoryEnd(records_.size(), start, position() - start));
  }

 private:
  [[nodiscard]] std::uint64_t position() const { return static_cast<std::uint64_t>(file_.position()); }

  Described<void> put(std::span<const std::byte> bytes) {
    ranges.push_back({position(), bytes.size(), crc32(bytes)});
    return file_.write(bytes);
  }

  Described<void> writeEntry(const ArchiveEntry& entry, const std::vector<const StoredChunk*>& kept,
                             ChunkSupply& supply) {
    zipRecords::Entry record{.path = entry.path,
                             .isDeflated = entry.method == ArchiveEntry::Method::deflated,
                             .isLarge = mayBeLarge(entry),
                             .modified = std::time(nullptr),
                             .headerOffset = position(),
                             .parts = {}};
    // Sizes and checksum are filled in once they are known.
    const std::size_t headerBytes = zipRecords::localHeader(record, gridOf(entry)).size();
    if (auto result = file_.write(std::vector<std::byte>(headerBytes)); !result) return result;
    const std::uint64_t dataStart = position();

    WrittenEntry& sums = written.emplace_back();
    sums.path = entry.path;
    for (std::span<const StoredChunk* const> rest = kept; !rest.empty();) {
      if (progress_.isCancelled()) return cancelled();
      const bool isKept = rest.front() != nullptr;
      const std::size_t count = isKept ? lengthOfRun(rest) : 1;
      auto result = isKept ? copyChunks(rest.first(count), sums) : writeChunk(supply.take(), sums);
      if (!result) return result;
      rest = rest.subspan(count);
      chunksDone_ += count;
      progress_.tell(share_ * static_cast<double>(chunksDone_) / static_cast<double>(chunkCount_));
    }
    if (record.isDeflated) {
      if (auto result = put(deflateStreamEnd); !result) return result;
      for (const StoredChunk& chunk : sums.chunks) record.parts.push_back({chunk.storedSize, chunk.size});
    }
    record.crc = sums.crc;
    record.size = sums.size;
    record.storedSize = sums.storedSize = position() - dataStart;
    const std::uint64_t end = position();
    file_.seek(static_cast<std::int64_t>(record.headerOffset));
    if (auto result = put(zipRecords::localHeader(record, gridOf(entry))); !result) return result;
    file_.seek(static_cast<std::int64_t>(end));
    records_.push_back(std::move(record));
    return {};
  }

  Described<void> writeChunk(const Chunk& chunk, WrittenEntry& sums) {
    const StoredChunk place{position(), static_cast<std::uint32_t>(chunk.bytes.size()),
                            static_cast<std::uint32_t>(chunk.rawSize), chunk.rawCheckSum, chunk.checkSum};
    add(place, sums);
    ranges.push_back({place.offset, place.storedSize, place.storedCrc});
    return file_.write(chunk.bytes.span());
  }

  /// Copies chunks that stand behind one another.
  Described<void> copyChunks(std::span<const StoredChunk* const> kept, WrittenEntry& sums) {
    const std::uint64_t from = kept.front()->offset;
    const std::uint64_t to = position();
    const std::uint64_t count = kept.back()->offset + kept.back()->storedSize - from;
    const auto how = file_.append(keptFrom_->file.descriptor(), static_cast<std::int64_t>(from), count);
    if (!how) return because(how.error());
    isKeptUnreadable = *how == AtomicFile::RangeCopy::sourceUnreadable;
    if (isKeptUnreadable) return because(QStringLiteral("The document's file can't be read."));
    for (const StoredChunk* chunk : kept) {
      StoredChunk place = *chunk;
      place.offset += to - from;
      add(place, sums);
      WrittenRange& range =
          ranges.emplace_back(WrittenRange{place.offset, place.storedSize, place.storedCrc});
      if (*how == AtomicFile::RangeCopy::shared) range.sharedFrom = chunk->offset;
    }
    return {};
  }

  static void add(const StoredChunk& chunk, WrittenEntry& sums) {
    sums.crc = joinCrc32(sums.crc, chunk.crc, chunk.size);
    sums.size += chunk.size;
    sums.chunks.push_back(chunk);
  }

  AtomicFile& file_;
  const std::vector<ArchiveEntry>& entries_;
  const KeptArchive* keptFrom_;
  const Progress& progress_;
  double share_;
  KeptChunks kept_;
  std::size_t chunkCount_ = 0;
  std::size_t chunksDone_ = 0;
  std::vector<zipRecords::Entry> records_;
};

}  // namespace

tl::expected<std::vector<WrittenEntry>, WriteFailure> writeArchive(AtomicFile& file,
                                                                   const std::vector<ArchiveEntry>& entries,
                                                                   const Progress& progress,
                                                                   const KeptArchive* keptFrom) {
  // Checking what was written takes about a tenth of the time.
  constexpr double writingShare = 0.9;
  Writer writer(file, entries, keptFrom, progress, writingShare);
  if (auto written = writer.write(); !written) {
    return tl::unexpected(WriteFailure{written.error(), writer.isKeptUnreadable});
  }
  WriteFailure failure;
  const auto committed = file.commit([&](const std::string& path) {
    auto same = compareArchive(path, writer.written, writer.ranges, keptFrom, progress);
    failure.isKeptUnusable = !same && !progress.isCancelled();
    return same;
  });
  if (committed) return std::move(writer.written);
  failure.reason = committed.error();
  return tl::unexpected(std::move(failure));
}

}  // namespace orvanel
