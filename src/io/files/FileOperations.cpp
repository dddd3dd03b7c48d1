#include "io/files/FileOperations.h"

#include <fcntl.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <vector>

#include "io/files/PassingFile.h"

namespace orvanel {
namespace {

FileOperations& systemOperations() {
  static FileOperations operations;
  return operations;
}

std::atomic<FileOperations*>& replacement() {
  static std::atomic<FileOperations*> operations{nullptr};
  return operations;
}

}  // namespace

int FileOperations::createFile(const std::string& path, mode_t mode) {
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
}

int FileOperations::openFile(const std::string& path, int flags) {
  return ::open(path.c_str(), flags);
}

ssize_t FileOperations::readAt(int file, void* bytes, std::size_t count, std::int64_t offset) {
  return ::pread(file, bytes, count, offset);
}

ssize_t FileOperations::writeAt(int file, const void* bytes, std::size_t count, std::int64_t offset) {
  return writePassing(file, {static_cast<const std::byte*>(bytes), count}, offset);
}

ssize_t FileOperations::copyRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                                  std::size_t count) {
  off64_t source = fromOffset;
  off64_t target = toOffset;
  return ::copy_file_range(from, &source, to, &target, count, 0);
}

int FileOperations::shareRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                               std::size_t count) {
  file_clone_range range{from, static_cast<__u64>(fromOffset), count, static_cast<__u64>(toOffset)};
  return ::ioctl(to, FICLONERANGE, &range);
}

int FileOperations::mapExtents(int file, std::uint64_t offset, std::span<FileExtent> extents) {
  // The header is followed by room for the answer.
  std::vector<std::uint64_t> request((sizeof(fiemap) + extents.size() * sizeof(fiemap_extent)) /
                                     sizeof(std::uint64_t));
  auto* header = reinterpret_cast<fiemap*>(request.data());
  header->fm_start = offset;
  header->fm_length = FIEMAP_MAX_OFFSET - offset;
  header->fm_flags = FIEMAP_FLAG_SYNC;
  header->fm_extent_count = static_cast<__u32>(extents.size());
  if (::ioctl(file, FS_IOC_FIEMAP, header) != 0) return -1;
  for (std::size_t i = 0; i < header->fm_mapped_extents; ++i) {
    const fiemap_extent& found = header->fm_extents[i];
    extents[i] = {found.fe_logical, found.fe_physical, found.fe_length, found.fe_flags};
  }
  return static_cast<int>(header->fm_mapped_extents);
}

int FileOperations::sync(int file) {
  return ::fsync(file);
}

int FileOperations::syncData(int file) {
  return ::fdatasync(file);
}

int FileOperations::renameFile(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str());
}

int FileOperations::removeFile(const std::string& path) {
  return ::unlink(path.c_str());
}

int FileOperations::linkFile(const std::string& file, const std::string& to) {
  return ::linkat(AT_FDCWD, file.c_str(), AT_FDCWD, to.c_str(), AT_SYMLINK_FOLLOW);
}

int FileOperations::measureSpace(int file, DiskSpace& space) {
  struct statvfs found {};
  if (::fstatvfs(file, &found) != 0) return -1;
  space = {std::uint64_t{found.f_bavail} * found.f_frsize, std::uint64_t{found.f_blocks} * found.f_frsize};
  return 0;
}

FileOperations& FileOperations::current() {
  FileOperations* operations = replacement().load(std::memory_order_acquire);
  return operations != nullptr ? *operations : systemOperations();
}

ScopedFileOperations::ScopedFileOperations(FileOperations& operations) {
  replacement().store(&operations, std::memory_order_release);
}

ScopedFileOperations::~ScopedFileOperations() {
  replacement().store(nullptr, std::memory_order_release);
}

}  // namespace orvanel
