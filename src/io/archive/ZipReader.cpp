#include "io/archive/ZipReader.h"

#include <algorithm>
#include <array>
#include <mutex>

#include "io/archive/ArchiveInput.h"
#include "io/files/FileName.h"

namespace orvanel {
namespace {

/// Large enough for sequential disk speed, small enough for a core's cache.
constexpr std::size_t readBytes = std::size_t{1} << 20U;
/// The minimum overhead of an entry beside its name and data: local header and directory entry.
constexpr std::uint64_t entryOverhead = 30 + 46;

/// Why the library can't open it, in words that mean something to users.
QString notAnArchive(const ArchiveInput& input) {
  constexpr std::array start{std::byte{'P'}, std::byte{'K'}, std::byte{3}, std::byte{4}};
  std::array<std::byte, start.size()> found{};
  const bool isRead = input.readAt(0, found) >= 0;
  if (!isRead) return QStringLiteral("The archive is damaged or can't be read.");
  return found == start ? QStringLiteral("The file is damaged or incomplete.")
                        : QStringLiteral("The file is not a readable archive.");
}

QString damaged(const ArchiveEntryInfo& info, const QString& reason) {
  return QStringLiteral("The entry \"%1\" can't be read. %2")
      .arg(displayName(QString::fromStdString(info.path)), reason);
}

/// Reads and validates one entry of the directory.
Described<ArchiveEntryInfo> describeEntry(zip_t* archive, zip_uint64_t index) {
  zip_stat_t stat;
  zip_stat_init(&stat);
  constexpr zip_uint64_t needed = ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_CRC | ZIP_STAT_COMP_METHOD;
  const char* name = zip_get_name(archive, index, ZIP_FL_ENC_RAW);
  if (name == nullptr || zip_stat_index(archive, index, 0, &stat) != 0 || (stat.valid & needed) != needed) {
    return because(QStringLiteral("The archive's directory is damaged."));
  }
  ArchiveEntryInfo info{name, stat.size, stat.comp_size, stat.crc, stat.comp_method == ZIP_CM_DEFLATE};
  if (info.path.empty() || info.path.size() > ZipReader::maximumPathBytes || !isUtf8(info.path) ||
      info.path.find('\0') != std::string::npos) {
    return because(QStringLiteral("An entry of the archive has an invalid name."));
  }
  if ((stat.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && stat.encryption_method != ZIP_EM_NONE) {
    return because(damaged(info, QStringLiteral("It is encrypted.")));
  }
  if (!info.isDeflated && stat.comp_method != ZIP_CM_STORE) {
    return because(damaged(info, QStringLiteral("It is compressed in a way that is not supported.")));
  }
  const bool isPossible =
      info.isDeflated ? info.size / largestInflation <= info.storedSize : info.size == info.storedSize;
  if (!isPossible) return because(damaged(info, QStringLiteral("Its size is impossible.")));
  return info;
}

std::vector<EntryPart> partsOf(zip_t* archive, zip_uint64_t index, const ArchiveEntryInfo& info) {
  if (!info.isDeflated) return {};
  zip_uint16_t length = 0;
  const zip_uint8_t* field =
      zip_file_extra_field_get_by_id(archive, index, entryPartsFieldID, 0, &length, ZIP_FL_CENTRAL);
  if (field == nullptr) return {};
  return decodedParts({reinterpret_cast<const std::byte*>(field), length}, info.size, info.storedSize);
}

}  // namespace

/// A pool of library handles on one archive.
struct ZipReader::Handles {
  explicit Handles(std::shared_ptr<const ArchiveInput> archiveInput) : input(std::move(archiveInput)) {}
  ~Handles() {
    for (const OpenArchive& archive : idle) zip_discard(archive.handle);
  }
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;

  Described<OpenArchive> acquire() {
    {
      const std::lock_guard lock(mutex);
      if (!idle.empty()) {
        const OpenArchive archive = idle.back();
        idle.pop_back();
        return archive;
      }
    }
    const OpenArchive archive = openArchive(input);
    if (archive.handle == nullptr) return because(notAnArchive(*input));
    return archive;
  }
  void release(const OpenArchive& archive) {
    const std::lock_guard lock(mutex);
    idle.push_back(archive);
  }

  std::shared_ptr<const ArchiveInput> input;
  std::mutex mutex;
  std::vector<OpenArchive> idle;
};

/// An entry opened for its stored bytes.
struct ZipReader::Stream::Handle {
  Handle(std::shared_ptr<Handles> owner, const OpenArchive& archiveHandle, zip_file_t* entryHandle,
         std::uint64_t storedSize)
      : handles(std::move(owner)),
        archive(archiveHandle),
        entry(entryHandle),
        left(storedSize),
        buffer(std::clamp<std::uint64_t>(storedSize, 1, readBytes)) {}
  ~Handle() {
    zip_fclose(entry);
    handles->release(archive);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  /// The next stored bytes, none at the end.
  Described<std::span<const std::byte>> next() { return next(buffer.span()); }
  Described<std::span<const std::byte>> next(std::span<std::byte> out) {
    const zip_int64_t count = zip_fread(entry, out.data(), std::min<std::uint64_t>(out.size(), left));
    if (count < 0) return because(QStringLiteral("The archive is damaged or can't be read."));
    const std::span<const std::byte> bytes = out.first(static_cast<std::size_t>(count));
    left -= bytes.size();
    if (isNoting) note(bytes);
    return bytes;
  }

  /// From now on: the next so many bytes, and what they are.
  void beginPart(std::uint32_t storedSize) {
    left = storedSize;
    part = {.storedSize = storedSize};
    isNoting = true;
  }

  std::shared_ptr<Handles> handles;
  OpenArchive archive;
  StoredChunk part;
  bool isNoting = false;
  zip_file_t* entry;
  std::uint64_t left;
  ByteBuffer buffer;

 private:
  void note(std::span<const std::byte> bytes) {
    if (bytes.empty()) return;
    // The library hands on what it reads, so the bytes stand right before its position.
    if (part.offset == 0) part.offset = *archive.position - bytes.size();
    part.storedCrc = crc32(bytes, part.storedCrc);
  }
};

ZipReader::ZipReader(std::shared_ptr<Handles> handles) : handles_(std::move(handles)) {}
ZipReader::~ZipReader() = default;
ZipReader::ZipReader(ZipReader&&) noexcept = default;
ZipReader& ZipReader::operator=(ZipReader&&) noexcept = default;

Described<ZipReader> ZipReader::open(const std::string& path) {
  auto input = ArchiveInput::file(path);
  if (!input) return because(input.error());
  return openInput(std::move(*input));
}

Described<ZipReader> ZipReader::openSettled(const std::string& path) {
  auto input = ArchiveInput::settledFile(path);
  if (!input) return because(input.error());
  return openInput(std::move(*input));
}

Described<ZipReader> ZipReader::openBytes(std::span<const std::byte> bytes) {
  return openInput(ArchiveInput::bytes(bytes));
}

Described<ZipReader> ZipReader::openInput(std::shared_ptr<const ArchiveInput> input) {
  ZipReader reader(std::make_shared<Handles>(std::move(input)));
  if (auto result = reader.readDirectory(); !result) return because(result.error());
  return reader;
}

Described<void> ZipReader::readDirectory() {
  // The library treats an empty file as an empty archive.
  if (handles_->input->size() == 0) return because(QStringLiteral("The file is empty."));
  const auto archive = handles_->acquire();
  if (!archive) return because(archive.error());
  handles_->release(*archive);
  zip_t* const directory = archive->handle;
  const zip_int64_t count = zip_get_num_entries(directory, 0);
  if (count < 0 || static_cast<std::uint64_t>(count) > maximumArchiveEntries) {
    return because(QStringLiteral("The archive has too many entries."));
  }
  entries_.reserve(static_cast<std::size_t>(count));
  std::uint64_t claimed = 0;
  for (zip_uint64_t index = 0; index < static_cast<zip_uint64_t>(count); ++index) {
    auto info = describeEntry(directory, index);
    if (!info) return because(info.error());
    // Overlapping entries would let a small file expand without bound.
    const std::uint64_t taken = info->storedSize + 2 * info->path.size() + entryOverhead;
    claimed = taken < info->storedSize || claimed + taken < claimed ? UINT64_MAX : claimed + taken;
    if (claimed > handles_->input->size()) {
      return because(QStringLiteral("The archive's entries are larger than the archive."));
    }
    if (!indexOfPath_.emplace(info->path, entries_.size()).second) {
      return because(damaged(*info, QStringLiteral("Another entry has the same name.")));
    }
    parts_.push_back(partsOf(directory, index, *info));
    entries_.push_back(std::move(*info));
  }
  return {};
}

std::optional<FileIdentity> ZipReader::identity() const {
  return handles_->input->identity();
}

bool ZipReader::isAsOpened() const {
  return handles_->input->isAsOpened();
}

std::optional<std::size_t> ZipReader::find(const std::string& path) const {
  const auto found = indexOfPath_.find(path);
  if (found == indexOfPath_.end()) return std::nullopt;
  return found->second;
}

Described<std::unique_ptr<ZipReader::Stream::Handle>> ZipReader::openStored(std::size_t index) const {
  const auto archive = handles_->acquire();
  if (!archive) return because(archive.error());
  zip_file_t* entry = zip_fopen_index(archive->handle, index, ZIP_FL_COMPRESSED);
  if (entry == nullptr) {
    handles_->release(*archive);
    return because(damaged(entries_[index], QStringLiteral("It is missing from the archive.")));
  }
  return std::make_unique<Stream::Handle>(handles_, *archive, entry, entries_[index].storedSize);
}

Described<ZipReader::Stream> ZipReader::stream(std::size_t index) const {
  auto handle = openStored(index);
  if (!handle) return because(handle.error());
  return Stream(entries_[index], std::move(*handle), {});
}

Described<ZipReader::Stream> ZipReader::streamOfParts(std::size_t index, std::size_t first,
                                                      std::size_t count) const {
  ArchiveEntryInfo info = entries_[index];
  info.size = 0;
  std::uint64_t start = 0;
  for (std::size_t i = 0; i < first; ++i) start += parts_[index][i].storedSize;
  const std::span<const EntryPart> parts = std::span(parts_[index]).subspan(first, count);
  for (const EntryPart& part : parts) info.size += part.size;
  auto handle = openStored(index);
  if (!handle) return because(handle.error());
  if (zip_fseek((*handle)->entry, static_cast<zip_int64_t>(start), SEEK_SET) != 0) {
    return because(damaged(info, QStringLiteral("The archive is damaged or can't be read.")));
  }
  return Stream(std::move(info), std::move(*handle), parts);
}

Described<ByteBuffer> ZipReader::readAll(std::size_t index, std::uint64_t limit) const {
  const ArchiveEntryInfo& info = entries_[index];
  if (info.size > limit) return because(damaged(info, QStringLiteral("It is too large.")));
  auto opened = stream(index);
  if (!opened) return because(opened.error());
  ByteBuffer bytes(info.size);
  if (auto result = opened->read(bytes.span()); !result) return because(result.error());
  if (auto result = opened->finish(); !result) return because(result.error());
  return bytes;
}

ZipReader::Stream::Stream(ArchiveEntryInfo info, std::unique_ptr<Handle> handle,
                          std::span<const EntryPart> parts)
    : info_(std::move(info)), handle_(std::move(handle)), parts_(parts.begin(), parts.end()) {
  chunks_.reserve(parts_.size());
  if (!parts_.empty()) {
    beginPart();
  } else if (info_.isDeflated) {
    beginInflating();
  }
}

ZipReader::Stream::~Stream() = default;
ZipReader::Stream::Stream(Stream&&) noexcept = default;

Described<void> ZipReader::Stream::read(std::span<std::byte> out) {
  if (out.size() > info_.size - done_) {
    return because(damaged(info_, QStringLiteral("It is too short.")));
  }
  if (!parts_.empty()) return readParts(out);
  if (inflate_.has_value()) {
    if (auto result = inflate_->read(out); !result) return because(damaged(info_, result.error()));
  } else {
    for (std::span<std::byte> rest = out; !rest.empty();) {
      const auto bytes = handle_->next(rest);
      if (!bytes) return because(damaged(info_, bytes.error()));
      if (bytes->empty()) return because(damaged(info_, QStringLiteral("It ends too early.")));
      rest = rest.subspan(bytes->size());
    }
  }
  done_ += out.size();
  crc_ = crc32(out, crc_);
  return {};
}

void ZipReader::Stream::beginInflating() {
  inflate_.emplace([source = handle_.get()] { return source->next(); });
}

void ZipReader::Stream::beginPart() {
  const EntryPart& part = parts_[chunks_.size()];
  handle_->beginPart(part.storedSize);
  partLeft_ = part.size;
  partCrc_ = 0;
  // Starting anew shows that the part stands on its own.
  beginInflating();
}

/// After the part's last byte.
Described<void> ZipReader::Stream::endPart() {
  const auto atEnd = inflate_->isPartAtEnd();
  if (!atEnd) return because(damaged(info_, atEnd.error()));
  if (!*atEnd) return because(damaged(info_, QStringLiteral("It is too long.")));
  StoredChunk chunk = handle_->part;
  chunk.size = parts_[chunks_.size()].size;
  chunk.crc = partCrc_;
  crc_ = joinCrc32(crc_, chunk.crc, chunk.size);
  chunks_.push_back(chunk);
  if (chunks_.size() < parts_.size()) beginPart();
  return {};
}

Described<void> ZipReader::Stream::readParts(std::span<std::byte> out) {
  done_ += out.size();
  while (!out.empty()) {
    const auto piece = out.first(std::min<std::size_t>(out.size(), partLeft_));
    if (auto result = inflate_->read(piece); !result) return because(damaged(info_, result.error()));
    partCrc_ = crc32(piece, partCrc_);
    partLeft_ -= static_cast<std::uint32_t>(piece.size());
    out = out.subspan(piece.size());
    if (partLeft_ > 0) continue;
    if (auto result = endPart(); !result) return result;
  }
  return {};
}

Described<void> ZipReader::Stream::finish(const Progress& progress) {
  ByteBuffer rest(std::min<std::uint64_t>(readBytes, info_.size - done_));
  while (done_ < info_.size) {
    if (progress.isCancelled()) return cancelled();
    rest.truncate(info_.size - done_);
    if (auto result = read(rest.span()); !result) return result;
  }
  if (inflate_.has_value()) {
    const auto atEnd = inflate_->isAtEnd();
    if (!atEnd) return because(damaged(info_, atEnd.error()));
    if (!*atEnd) return because(damaged(info_, QStringLiteral("It is too long.")));
  }
  if (crc_ != info_.crc) return because(damaged(info_, QStringLiteral("Its checksum is wrong.")));
  return {};
}

}  // namespace orvanel
