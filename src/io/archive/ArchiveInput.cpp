#include "io/archive/ArchiveInput.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "io/files/InputFile.h"
#include "io/files/PassingFile.h"

namespace orvanel {
namespace {

class FileInput final : public ArchiveInput {
 public:
  explicit FileInput(FileHandle file)
      : file_(std::move(file)), opened_(FileIdentity::of(file_.descriptor())) {}

  std::int64_t readAt(std::uint64_t offset, std::span<std::byte> out) const override {
    ssize_t count = 0;
    do {
      count = readPassing(file_.descriptor(), out, static_cast<std::int64_t>(offset));
    } while (count < 0 && errno == EINTR);
    return count;
  }
  std::uint64_t size() const override { return static_cast<std::uint64_t>(file_.size()); }
  std::optional<FileIdentity> identity() const override { return opened_; }
  bool isAsOpened() const override {
    const auto now = FileIdentity::of(file_.descriptor());
    return now && opened_ && now->isSameVersionAs(*opened_);
  }

 private:
  FileHandle file_;
  std::optional<FileIdentity> opened_;
};

class MemoryInput final : public ArchiveInput {
 public:
  explicit MemoryInput(std::span<const std::byte> bytes) : bytes_(bytes) {}

  std::int64_t readAt(std::uint64_t offset, std::span<std::byte> out) const override {
    if (offset >= bytes_.size()) return 0;
    const std::size_t count = std::min<std::size_t>(out.size(), bytes_.size() - offset);
    std::memcpy(out.data(), bytes_.data() + offset, count);
    return static_cast<std::int64_t>(count);
  }
  std::uint64_t size() const override { return bytes_.size(); }
  std::optional<FileIdentity> identity() const override { return std::nullopt; }
  bool isAsOpened() const override { return true; }

 private:
  std::span<const std::byte> bytes_;
};

/// One handle's view of the input: the library reads and seeks through it.
struct Cursor {
  std::shared_ptr<const ArchiveInput> input;
  std::uint64_t offset = 0;
  std::array<int, 2> error{0, 0};

  zip_int64_t fail(int zipError, int systemError) {
    error = {zipError, systemError};
    return -1;
  }

  zip_int64_t read(std::span<std::byte> out) {
    const std::int64_t count = input->readAt(offset, out);
    if (count < 0) return fail(ZIP_ER_READ, errno);
    offset += static_cast<std::uint64_t>(count);
    return count;
  }

  zip_int64_t seek(void* data, zip_uint64_t length) {
    zip_error_t reason;
    zip_error_init(&reason);
    const zip_int64_t target = zip_source_seek_compute_offset(offset, input->size(), data, length, &reason);
    zip_error_fini(&reason);
    if (target < 0) return fail(ZIP_ER_SEEK, EINVAL);
    offset = static_cast<std::uint64_t>(target);
    return 0;
  }

  zip_int64_t handle(void* data, zip_uint64_t length, zip_source_cmd_t command) {
    switch (command) {
      case ZIP_SOURCE_OPEN:
        offset = 0;
        return 0;
      case ZIP_SOURCE_CLOSE:
        return 0;
      case ZIP_SOURCE_READ:
        return read({static_cast<std::byte*>(data), length});
      case ZIP_SOURCE_SEEK:
        return seek(data, length);
      case ZIP_SOURCE_TELL:
        return static_cast<zip_int64_t>(offset);
      case ZIP_SOURCE_STAT: {
        auto& stat = *static_cast<zip_stat_t*>(data);
        zip_stat_init(&stat);
        stat.valid = ZIP_STAT_SIZE;
        stat.size = input->size();
        return sizeof(zip_stat_t);
      }
      case ZIP_SOURCE_ERROR:
        std::memcpy(data, error.data(), sizeof error);
        return sizeof error;
      case ZIP_SOURCE_SUPPORTS:
        return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE,
                                              ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE,
                                              ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL, ZIP_SOURCE_SUPPORTS, -1);
      default:
        return fail(ZIP_ER_OPNOTSUPP, 0);
    }
  }

  static zip_int64_t callback(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) {
    auto* cursor = static_cast<Cursor*>(self);
    if (command == ZIP_SOURCE_FREE) {
      delete cursor;
      return 0;
    }
    return cursor->handle(data, length, command);
  }
};

}  // namespace

Described<std::shared_ptr<const ArchiveInput>> ArchiveInput::file(const std::string& path) {
  auto file = FileHandle::openForReading(path);
  if (!file) return because(file.error());
  return std::make_shared<const FileInput>(std::move(*file));
}

Described<std::shared_ptr<const ArchiveInput>> ArchiveInput::settledFile(const std::string& path) {
  auto file = FileHandle::openForReading(path);
  if (!file) return because(file.error());
  file->settleMappings();
  return std::make_shared<const FileInput>(std::move(*file));
}

std::shared_ptr<const ArchiveInput> ArchiveInput::bytes(std::span<const std::byte> bytes) {
  return std::make_shared<const MemoryInput>(bytes);
}

OpenArchive openArchive(std::shared_ptr<const ArchiveInput> input) {
  zip_error_t error;
  zip_error_init(&error);
  auto* cursor = new Cursor{std::move(input), 0, {0, 0}};
  zip_source_t* source = zip_source_function_create(&Cursor::callback, cursor, &error);
  if (source == nullptr) {
    delete cursor;
    return {};
  }
  zip_t* archive = zip_open_from_source(source, ZIP_RDONLY, &error);
  if (archive == nullptr) {
    zip_source_free(source);
    return {};
  }
  return {archive, &cursor->offset};
}

}  // namespace orvanel
