// The system calls used for writing files and reading journals, replaceable so that tests can simulate full
// and failing disks and read-only directories. Any thread.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

/// Of a file system.
struct DiskSpace {
  /// For this user.
  std::uint64_t free = 0;
  std::uint64_t total = 0;
};

/// A section of a file that stands in one piece on the disk.
struct FileExtent {
  std::uint64_t offset = 0;    ///< in the file
  std::uint64_t physical = 0;  ///< on the disk, in bytes
  std::uint64_t length = 0;
  std::uint32_t flags = 0;  ///< those of the kernel's FIEMAP
};

/// All functions return -1 and set `errno` on failure, as the system calls do.
class FileOperations {
 public:
  virtual ~FileOperations() = default;
  /// Creates a file for writing; fails if it exists.
  virtual int createFile(const std::string& path, mode_t mode);
  /// Opens a file that exists.
  virtual int openFile(const std::string& path, int flags);
  virtual ssize_t readAt(int file, void* bytes, std::size_t count, std::int64_t offset);
  virtual ssize_t writeAt(int file, const void* bytes, std::size_t count, std::int64_t offset);
  /// Copies within the kernel; may copy less.
  virtual ssize_t copyRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                            std::size_t count);
  /// Lets the range of one file be the same blocks on the disk as that of another.
  virtual int shareRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset, std::size_t count);
  /// Finds the extents from this offset on, in order, after bringing the file to the disk. Returns how many
  /// there are, at most as many as there is room for.
  virtual int mapExtents(int file, std::uint64_t offset, std::span<FileExtent> extents);
  virtual int sync(int file);
  /// As `sync`, without what only tells of the file.
  virtual int syncData(int file);
  virtual int renameFile(const std::string& from, const std::string& to);
  virtual int removeFile(const std::string& path);
  /// Gives a file a second name on its file system; a last symbolic link is followed.
  virtual int linkFile(const std::string& file, const std::string& to);
  /// Of the file system on which an open file stands, in bytes.
  virtual int measureSpace(int file, DiskSpace& space);

  /// The instance in use.
  [[nodiscard]] static FileOperations& current();
};

/// Replaces the instance in use during its lifetime. For tests; must not be nested.
class ScopedFileOperations {
 public:
  explicit ScopedFileOperations(FileOperations& operations);
  ~ScopedFileOperations();
  ScopedFileOperations(const ScopedFileOperations&) = delete;
  ScopedFileOperations& operator=(const ScopedFileOperations&) = delete;
};

}  // namespace orvanel
