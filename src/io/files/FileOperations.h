// The system calls through which files are written, in one place, so that tests can make disks full and
// directories read-only. Any thread.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace orvanel {

/// Every call answers as the system's own does: -1 and `errno` on failure.
class FileOperations {
 public:
  virtual ~FileOperations() = default;
  /// A new file for writing; fails where one stands already.
  virtual int createFile(const std::string& path, mode_t mode);
  virtual ssize_t writeAt(int file, const void* bytes, std::size_t count, std::int64_t offset);
  virtual int sync(int file);
  virtual int renameFile(const std::string& from, const std::string& to);

  /// The ones in use.
  [[nodiscard]] static FileOperations& current();
};

/// While alive, files are written through `operations`. For tests; not nested.
class ScopedFileOperations {
 public:
  explicit ScopedFileOperations(FileOperations& operations);
  ~ScopedFileOperations();
  ScopedFileOperations(const ScopedFileOperations&) = delete;
  ScopedFileOperations& operator=(const ScopedFileOperations&) = delete;
};

}  // namespace orvanel
