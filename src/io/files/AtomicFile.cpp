#include "io/files/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "io/files/Descriptor.h"
#include "io/files/FileOperations.h"
#include "io/files/PassingFile.h"
#include "io/files/SaveTemporary.h"
#include "raster/Background.h"

namespace orvanel {
namespace {

constexpr std::size_t bufferBytes = std::size_t{4} << 20U;
/// The unit that file systems share.
constexpr std::int64_t sharedBlock = 4096;
/// Bytes after which the system is asked to start writing to the disk.
constexpr std::int64_t pushBytes = std::int64_t{16} << 20U;

QString systemReason(int error) {
  return QString::fromLocal8Bit(std::strerror(error));
}

QString writeFailure(int error) {
  return QStringLiteral("The file can't be written: %1.").arg(systemReason(error));
}

QString differsOnDisk() {
  return QStringLiteral("The file on the disk differs from what was written.");
}

bool isOutOfRoom(int error) {
  return error == ENOSPC || error == EDQUOT || error == EFBIG;
}

/// The file to replace, with symbolic links resolved.
std::filesystem::path resolved(const QString& destination) {
  const std::filesystem::path path(QFile::encodeName(destination).toStdString());
  std::error_code failure;
  const std::filesystem::path absolute = std::filesystem::absolute(path, failure);
  std::filesystem::path target = std::filesystem::weakly_canonical(absolute, failure);
  return failure ? absolute : target;
}

bool refusesNewFiles(int error) {
  return error == EACCES || error == EPERM || error == EROFS;
}

/// Makes the rename itself durable. False, with the reason in `errno`, if the disk fails; not every file
/// system supports this for directories, and not everybody may do it.
bool syncDirectory(const std::filesystem::path& directory) {
  const Descriptor handle(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (handle.isOpen() && FileOperations::current().sync(handle.number()) == 0) return true;
  return errno != EIO && errno != ENOSPC && errno != EDQUOT;
}

/// Renames the new file over the old one. Freeing the blocks of a large file can take long, so the old file
/// is held open across the rename and closed in the background.
int replace(const std::string& temporary, const std::string& destination) {
  const int replaced = ::open(destination.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  const int result = FileOperations::current().renameFile(temporary, destination);
  const int reason = errno;
  if (replaced >= 0) enqueueBackgroundTask([replaced] { ::close(replaced); });
  errno = reason;
  return result;
}

}  // namespace

AtomicFile::AtomicFile(std::string destination, std::optional<FileIdentity> replaced,
                       std::string temporaryPath, int file)
    : destination_(std::move(destination)),
      replaced_(replaced),
      temporaryPath_(std::move(temporaryPath)),
      file_(file) {}

Described<std::unique_ptr<AtomicFile>> AtomicFile::create(const QString& destination,
                                                          std::optional<FileIdentity> replaced) {
  const std::filesystem::path target = resolved(destination);
  if (!replaced) replaced = FileIdentity::of(target.string());
  struct stat existing {};
  const bool exists = ::stat(target.c_str(), &existing) == 0;
  if (exists && !S_ISREG(existing.st_mode))
    return because(QStringLiteral("The destination is not a regular file."));

  FileOperations& operations = FileOperations::current();
  constexpr mode_t ordinary = 0666;
  const mode_t mode = exists ? existing.st_mode & 07777 : ordinary;
  std::filesystem::path path = target.parent_path() / newTemporaryName();
  int file = operations.createFile(path, mode & 0777);
  if (file < 0 && refusesNewFiles(errno)) {
    path = std::filesystem::path(QFile::encodeName(QDir::tempPath()).toStdString()) / newTemporaryName();
    file = operations.createFile(path, mode & 0777);
  }
  if (file < 0) return because(QStringLiteral("The file can't be created: %1.").arg(systemReason(errno)));
  if (exists) {
    // Only a privileged process can change the owner; otherwise the file belongs to the writer.
    if (::fchown(file, existing.st_uid, existing.st_gid) != 0) errno = 0;
    ::fchmod(file, mode);
  }
  // They may be what has filled the disk.
  removeAbandonedTemporaries(path.parent_path());
  return std::unique_ptr<AtomicFile>(new AtomicFile(target.string(), replaced, path, file));
}

AtomicFile::~AtomicFile() {
  if (file_ >= 0) ::close(file_);
  if (!temporaryPath_.empty()) ::unlink(temporaryPath_.c_str());
}

Described<void> AtomicFile::writeThrough(std::span<const std::byte> bytes, std::int64_t offset) {
  while (!bytes.empty()) {
    const ssize_t written = FileOperations::current().writeAt(file_, bytes.data(), bytes.size(), offset);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      return because(writeFailure(written == 0 ? ENOSPC : errno));
    }
    bytes = bytes.subspan(static_cast<std::size_t>(written));
    offset += written;
  }
  push(offset);
  return {};
}

/// Starts to write to the disk early, which shortens the wait for the final sync.
void AtomicFile::push(std::int64_t end) {
  if (end - pushedTo_ < pushBytes) return;
  ::sync_file_range(file_, pushedTo_, end - pushedTo_, SYNC_FILE_RANGE_WRITE);
  pushedTo_ = end;
}

Described<AtomicFile::RangeCopy> AtomicFile::copyThrough(int source, std::int64_t offset,
                                                         std::uint64_t count) {
  while (count > 0 && mayCopyInKernel_) {
    const ssize_t copied = FileOperations::current().copyRange(source, offset, file_, position_, count);
    if (copied < 0 && errno == EINTR) continue;
    if (copied < 0 && isOutOfRoom(errno)) return because(writeFailure(errno));
    // Not every pair of file systems can do this, and a source that can't be read fails here, too.
    if (copied <= 0) mayCopyInKernel_ = false;
    const auto done = std::max<ssize_t>(copied, 0);
    offset += done;
    position_ += done;
    count -= static_cast<std::uint64_t>(done);
  }
  return readAndWrite(source, offset, count);
}

Described<AtomicFile::RangeCopy> AtomicFile::readAndWrite(int source, std::int64_t offset,
                                                          std::uint64_t count) {
  if (buffer_.isEmpty()) buffer_.resizeDiscarding(bufferBytes);
  while (count > 0) {
    const auto part = buffer_.span().first(std::min<std::uint64_t>(count, bufferBytes));
    const ssize_t read = readPassing(source, part, offset);
    if (read < 0 && errno == EINTR) continue;
    if (read <= 0) return RangeCopy::sourceUnreadable;
    const auto bytes = part.first(static_cast<std::size_t>(read));
    if (auto result = writeThrough(bytes, position_); !result) return because(result.error());
    offset += read;
    position_ += read;
    count -= bytes.size();
  }
  return RangeCopy::copied;
}

Described<AtomicFile::RangeCopy> AtomicFile::append(int source, std::int64_t offset, std::uint64_t count) {
  if (position_ != size_) return because(QStringLiteral("The file can't be written beyond its end."));
  if (count == 0) return RangeCopy::copied;
  if (auto result = flush(); !result) return because(result.error());
  // Sharing works on whole blocks, and on file systems that know how.
  const bool isOnGrid = (offset | position_ | static_cast<std::int64_t>(count)) % sharedBlock == 0;
  if (mayShare_ && isOnGrid) {
    mayShare_ = FileOperations::current().shareRange(source, offset, file_, position_, count) == 0;
  }
  const bool isShared = mayShare_ && isOnGrid;
  if (isShared) {
    position_ += static_cast<std::int64_t>(count);
  } else if (auto result = copyThrough(source, offset, count); !result || *result != RangeCopy::copied) {
    return result;
  }
  bufferStart_ = position_;
  size_ = position_;
  push(size_);
  return isShared ? RangeCopy::shared : RangeCopy::copied;
}

Described<void> AtomicFile::flush() {
  auto result = writeThrough(buffer_.span().first(buffered_), bufferStart_);
  bufferStart_ += static_cast<std::int64_t>(buffered_);
  buffered_ = 0;
  return result;
}

Described<void> AtomicFile::write(std::span<const std::byte> bytes) {
  if (buffer_.isEmpty()) buffer_.resizeDiscarding(bufferBytes);
  while (!bytes.empty()) {
    const std::int64_t bufferEnd = bufferStart_ + static_cast<std::int64_t>(buffered_);
    std::size_t count = bytes.size();
    if (position_ < bufferStart_) {
      // Overwrites bytes already written: headers whose sizes become known late.
      count = static_cast<std::size_t>(
          std::min<std::int64_t>(static_cast<std::int64_t>(count), bufferStart_ - position_));
      if (auto result = writeThrough(bytes.first(count), position_); !result) return result;
    } else {
      if (position_ > bufferEnd) return because(QStringLiteral("The file can't be written beyond its end."));
      const auto at = static_cast<std::size_t>(position_ - bufferStart_);
      if (at == bufferBytes) {
        if (auto result = flush(); !result) return result;
        continue;
      }
      count = std::min(count, bufferBytes - at);
      std::memcpy(buffer_.data() + at, bytes.data(), count);
      buffered_ = std::max(buffered_, at + count);
    }
    bytes = bytes.subspan(count);
    position_ += static_cast<std::int64_t>(count);
    size_ = std::max(size_, position_);
  }
  return {};
}

Described<void> AtomicFile::closeAndCheck() {
  if (FileOperations::current().sync(file_) != 0) {
    return because(QStringLiteral("The file can't be written to the disk: %1.").arg(systemReason(errno)));
  }
  // What is still in the cache is to be read back from the disk.
  ::posix_fadvise(file_, 0, 0, POSIX_FADV_DONTNEED);
  const int closing = ::close(file_);
  file_ = -1;
  if (closing != 0) return because(QStringLiteral("The file can't be closed: %1.").arg(systemReason(errno)));
  synced_ = FileIdentity::of(temporaryPath_);
  if (!synced_ || synced_->size != size_) return because(differsOnDisk());
  return {};
}

/// What is no longer there can't be lost.
bool AtomicFile::isDestinationAsFound() const {
  const auto found = FileIdentity::of(destination_);
  return !found || (replaced_ && found->isSameVersionAs(*replaced_));
}

Described<void> AtomicFile::commit(const std::function<Described<void>(const std::string& path)>& verify) {
  if (auto result = flush(); !result) return result;
  if (auto result = closeAndCheck(); !result) return result;
  if (auto result = verify(temporaryPath_); !result) return result;
  // Nobody else should write to the new file; if somebody has, it isn't what was verified.
  const auto verified = FileIdentity::of(temporaryPath_);
  if (!verified || !verified->isSameVersionAs(*synced_)) return because(differsOnDisk());
  if (!isDestinationAsFound()) return because(QStringLiteral("The file was changed by another program."));
  // Held across the renaming, so that the identity is that of this file whatever happens to the name.
  const int written = ::open(temporaryPath_.c_str(), O_RDONLY | O_CLOEXEC);
  const auto identify = [&] {
    committed_ = written >= 0 ? FileIdentity::of(written) : std::nullopt;
    if (written >= 0) ::close(written);
    // What somebody writes from now on is another version than the one that was verified.
    if (committed_ && !committed_->isSameVersionAs(*synced_)) committed_ = synced_;
  };
  if (replace(temporaryPath_, destination_) != 0) {
    const int reason = errno;
    identify();
    errno = reason;
    return because(QStringLiteral("The file can't be replaced: %1.").arg(systemReason(errno)));
  }
  temporaryPath_.clear();
  identify();
  if (!syncDirectory(std::filesystem::path(destination_).parent_path())) {
    doubt_ = QStringLiteral("The file has been replaced, but may not survive a power cut: %1.")
                 .arg(systemReason(errno));
  }
  return {};
}

FileResult<void> judgeDoubt(const QString& doubt) {
  if (doubt.isEmpty()) return {};
  return tl::unexpected(FileError{DocumentIOError::saveFailed, doubt});
}

Described<ReplacedFile> replaceFile(const QString& destination, std::span<const std::byte> bytes,
                                    std::optional<FileIdentity> replaced) {
  auto file = AtomicFile::create(destination, replaced);
  if (!file) return because(file.error());
  if (const auto result = (*file)->write(bytes); !result) return because(result.error());
  const auto result = (*file)->commit([](const std::string&) { return Described<void>(); });
  if (!result) return because(result.error());
  return ReplacedFile{(*file)->committed(), (*file)->doubt()};
}

}  // namespace orvanel
