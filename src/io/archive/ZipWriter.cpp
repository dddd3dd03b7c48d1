#include "io/archive/ZipWriter.h"

#include <zip.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>
#include <numeric>

#include "io/archive/ChunkPipeline.h"
#include "io/archive/EntryParts.h"
#include "io/archive/ZipReader.h"

namespace orvanel {
namespace {

/// Raw bytes that may wait between the makers of chunks and the file.
constexpr int chunksAhead = 48;

struct SourceDeleter {
  void operator()(zip_source_t* source) const { zip_source_free(source); }
};
struct ArchiveDeleter {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};

/// Delivers the chunks of all entries in order.
class ChunkSupply {
 public:
  explicit ChunkSupply(const std::vector<ArchiveEntry>& entries)
      : places_(placesOf(entries)),
        pipeline_(static_cast<int>(places_.size()), chunksAhead, [this](int index) { return make(index); }) {}

  ChunkPipeline& pipeline() { return pipeline_; }
  [[nodiscard]] std::size_t chunkCount() const { return places_.size(); }

 private:
  struct Place {
    const ArchiveEntry* entry;
    int chunk;
  };

  static std::vector<Place> placesOf(const std::vector<ArchiveEntry>& entries) {
    std::vector<Place> places;
    for (const ArchiveEntry& entry : entries) {
      for (int chunk = 0; chunk < entry.chunkCount; ++chunk) places.push_back({&entry, chunk});
    }
    return places;
  }

  [[nodiscard]] Chunk make(int index) const {
    const auto& [entry, chunkIndex] = places_[static_cast<std::size_t>(index)];
    thread_local ByteBuffer raw;
    entry->makeChunk(chunkIndex, raw);
    Chunk chunk{{}, raw.size(), crc32(raw.span())};
    if (entry->method == ArchiveEntry::Method::deflated) {
      chunk.bytes = deflateChunk(raw.span());
    } else {
      std::swap(chunk.bytes, raw);
    }
    return chunk;
  }

  std::vector<Place> places_;
  ChunkPipeline pipeline_;
};

/// The library's source for one entry; its data is already compressed.
class EntrySource {
 public:
  EntrySource(const ArchiveEntry& entry, ChunkSupply& supply, std::function<void()> chunkDone,
              const Progress& progress)
      : entry_(entry), supply_(supply), chunkDone_(std::move(chunkDone)), progress_(progress) {
    written.path = entry.path;
  }

  WrittenEntry written;

  /// Tells the source its own entry in the archive.
  void attach(zip_t* archive, zip_uint64_t index) {
    archive_ = archive;
    index_ = index;
  }

  static zip_int64_t callback(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) {
    return static_cast<EntrySource*>(self)->handle(data, length, command);
  }

 private:
  zip_int64_t handle(void* data, zip_uint64_t length, zip_source_cmd_t command) {
    switch (command) {
      case ZIP_SOURCE_OPEN:
      case ZIP_SOURCE_CLOSE:
      case ZIP_SOURCE_FREE:
        return 0;
      case ZIP_SOURCE_READ:
        return progress_.isCancelled() ? -1 : read({static_cast<std::byte*>(data), length});
      case ZIP_SOURCE_STAT:
        describe(*static_cast<zip_stat_t*>(data));
        return sizeof(zip_stat_t);
      case ZIP_SOURCE_ERROR: {
        std::memset(data, 0, 2 * sizeof(int));
        return 2 * sizeof(int);
      }
      case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE,
                                              ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE,
                                              ZIP_SOURCE_SUPPORTS, -1);
      default:
        return -1;
    }
  }

  zip_int64_t read(std::span<std::byte> out) {
    std::size_t given = 0;
    while (given < out.size() && advance()) {
      const std::size_t count = std::min(out.size() - given, rest_.size());
      std::memcpy(out.data() + given, rest_.data(), count);
      rest_ = rest_.subspan(count);
      given += count;
    }
    written.storedSize += given;
    written.storedCrc = crc32(out.first(given), written.storedCrc);
    return static_cast<zip_int64_t>(given);
  }

  /// Fetches more bytes if none are left; false at the end of the entry.
  bool advance() {
    while (rest_.empty()) {
      if (chunksTaken_ < entry_.chunkCount) {
        if (chunksTaken_ > 0) chunkDone_();
        current_ = supply_.pipeline().take();
        ++chunksTaken_;
        rest_ = current_.bytes.span();
        parts_.push_back(
            {static_cast<std::uint32_t>(rest_.size()), static_cast<std::uint32_t>(current_.rawSize)});
        written.crc = joinCrc32(written.crc, current_.rawCheckSum, current_.rawSize);
        written.size += current_.rawSize;
      } else if (!ended_) {
        ended_ = true;
        chunkDone_();
        if (entry_.method == ArchiveEntry::Method::deflated) {
          rest_ = deflateStreamEnd;
          tellParts();
        }
      } else {
        return false;
      }
    }
    return true;
  }

  /// The central directory is written last, so the field can still be added now. An entry without it is read
  /// sequentially.
  void tellParts() {
    const std::vector<std::byte> field = encodedParts(parts_);
    if (field.empty()) return;
    zip_file_extra_field_set(archive_, index_, entryPartsFieldID, 0,
                             reinterpret_cast<const zip_uint8_t*>(field.data()),
                             static_cast<zip_uint16_t>(field.size()), ZIP_FL_CENTRAL);
  }

  void describe(zip_stat_t& stat) {
    zip_stat_init(&stat);
    stat.valid = ZIP_STAT_COMP_METHOD | ZIP_STAT_SIZE | ZIP_STAT_MTIME;
    stat.comp_method = entry_.method == ArchiveEntry::Method::deflated ? ZIP_CM_DEFLATE : ZIP_CM_STORE;
    stat.mtime = std::time(nullptr);
    if (ended_) {
      stat.valid |= ZIP_STAT_COMP_SIZE | ZIP_STAT_CRC;
      stat.size = written.size;
      stat.comp_size = written.storedSize;
      stat.crc = written.crc;
    } else {
      stat.size = entry_.size.has_value() ? *entry_.size : supply_.pipeline().peek().rawSize;
    }
  }

  const ArchiveEntry& entry_;
  ChunkSupply& supply_;
  std::function<void()> chunkDone_;
  const Progress& progress_;
  Chunk current_;
  std::span<const std::byte> rest_;
  std::vector<EntryPart> parts_;
  zip_t* archive_ = nullptr;
  zip_uint64_t index_ = 0;
  int chunksTaken_ = 0;
  bool ended_ = false;
};

/// The library's sink: writes the archive to the file.
class FileSink {
 public:
  explicit FileSink(AtomicFile& file) : file_(file) {}

  /// Why the last write failed; empty while none has.
  [[nodiscard]] const QString& failure() const { return failure_; }

  static zip_int64_t callback(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) {
    return static_cast<FileSink*>(self)->handle(data, length, command);
  }

 private:
  zip_int64_t handle(void* data, zip_uint64_t length, zip_source_cmd_t command) {
    switch (command) {
      case ZIP_SOURCE_OPEN:
      case ZIP_SOURCE_CLOSE:
      case ZIP_SOURCE_FREE:
      case ZIP_SOURCE_BEGIN_WRITE:
      case ZIP_SOURCE_COMMIT_WRITE:
      case ZIP_SOURCE_ROLLBACK_WRITE:
      case ZIP_SOURCE_REMOVE:
      case ZIP_SOURCE_READ:
        return 0;
      case ZIP_SOURCE_WRITE: {
        const auto result = file_.write({static_cast<const std::byte*>(data), length});
        if (result) return static_cast<zip_int64_t>(length);
        failure_ = result.error();
        return -1;
      }
      case ZIP_SOURCE_SEEK_WRITE: {
        zip_error_t error;
        zip_error_init(&error);
        const zip_int64_t position =
            zip_source_seek_compute_offset(static_cast<zip_uint64_t>(file_.position()),
                                           static_cast<zip_uint64_t>(file_.size()), data, length, &error);
        zip_error_fini(&error);
        if (position < 0) return -1;
        file_.seek(position);
        return 0;
      }
      case ZIP_SOURCE_TELL_WRITE:
        return file_.position();
      case ZIP_SOURCE_STAT: {
        auto& stat = *static_cast<zip_stat_t*>(data);
        zip_stat_init(&stat);
        stat.valid = ZIP_STAT_SIZE;
        stat.size = static_cast<zip_uint64_t>(file_.size());
        return sizeof(zip_stat_t);
      }
      case ZIP_SOURCE_ERROR: {
        const std::array<int, 2> codes{failure_.isEmpty() ? ZIP_ER_OPNOTSUPP : ZIP_ER_WRITE, 0};
        std::memcpy(data, codes.data(), sizeof codes);
        return sizeof codes;
      }
      case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(
            ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR,
            ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL, ZIP_SOURCE_SUPPORTS, ZIP_SOURCE_BEGIN_WRITE,
            ZIP_SOURCE_COMMIT_WRITE, ZIP_SOURCE_ROLLBACK_WRITE, ZIP_SOURCE_SEEK_WRITE, ZIP_SOURCE_TELL_WRITE,
            ZIP_SOURCE_WRITE, ZIP_SOURCE_REMOVE, -1);
      default:
        return -1;
    }
  }

  AtomicFile& file_;
  QString failure_;
};

QString reasonOf(zip_error_t* error) {
  return QStringLiteral("The archive can't be written: %1.")
      .arg(QString::fromUtf8(zip_error_strerror(error)));
}

/// Gives the library all entries and lets it write.
Described<void> writeEntries(FileSink& sink, std::vector<std::unique_ptr<EntrySource>>& sources,
                             const std::vector<ArchiveEntry>& entries) {
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* target = zip_source_function_create(&FileSink::callback, &sink, &error);
  std::unique_ptr<zip_t, ArchiveDeleter> archive(
      target != nullptr ? zip_open_from_source(target, ZIP_CREATE | ZIP_TRUNCATE, &error) : nullptr);
  if (archive == nullptr) {
    if (target != nullptr) zip_source_free(target);
    return because(reasonOf(&error));
  }
  for (std::size_t i = 0; i < entries.size(); ++i) {
    std::unique_ptr<zip_source_t, SourceDeleter> source(
        zip_source_function(archive.get(), &EntrySource::callback, sources[i].get()));
    const zip_int64_t index = source != nullptr ? zip_file_add(archive.get(), entries[i].path.c_str(),
                                                               source.get(), ZIP_FL_ENC_UTF_8)
                                                : -1;
    if (index < 0) return because(reasonOf(zip_get_error(archive.get())));
    static_cast<void>(source.release());  // the archive owns it now
    sources[i]->attach(archive.get(), static_cast<zip_uint64_t>(index));
    const zip_int32_t method =
        entries[i].method == ArchiveEntry::Method::deflated ? ZIP_CM_DEFLATE : ZIP_CM_STORE;
    if (zip_set_file_compression(archive.get(), static_cast<zip_uint64_t>(index), method, 0) != 0) {
      return because(reasonOf(zip_get_error(archive.get())));
    }
  }
  if (zip_close(archive.get()) != 0) {
    return because(sink.failure().isEmpty() ? reasonOf(zip_get_error(archive.get())) : sink.failure());
  }
  static_cast<void>(archive.release());
  return {};
}

}  // namespace

Described<void> writeArchive(AtomicFile& file, const std::vector<ArchiveEntry>& entries,
                             const Progress& progress) {
  // Checking what was written takes about a tenth of the time.
  constexpr double writingShare = 0.9;
  std::vector<WrittenEntry> written;
  {
    ChunkSupply supply(entries);
    std::size_t chunksDone = 0;
    const auto chunkDone = [&] {
      ++chunksDone;
      progress.tell(writingShare * static_cast<double>(chunksDone) /
                    static_cast<double>(supply.chunkCount()));
    };
    std::vector<std::unique_ptr<EntrySource>> sources;
    sources.reserve(entries.size());
    for (const ArchiveEntry& entry : entries) {
      sources.push_back(std::make_unique<EntrySource>(entry, supply, chunkDone, progress));
    }
    FileSink sink(file);
    if (auto result = writeEntries(sink, sources, entries); !result) {
      return progress.isCancelled() ? cancelled() : std::move(result);
    }
    written.reserve(sources.size());
    for (auto& source : sources) written.push_back(std::move(source->written));
  }
  return file.commit([&](const std::string& path) { return compareArchive(path, written, progress); });
}

}  // namespace orvanel
