// Simulated disk failures.
#pragma once

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string>

#include "io/files/FileOperations.h"

namespace orvanel::testing {

/// A disk that has no room for the writing call of number `failing`, from 0, and all that follow. Counts
/// them.
class FailingDisk : public FileOperations {
 public:
  explicit FailingDisk(int failing) : failing_(failing) {}

  int calls = 0;

  ssize_t writeAt(int file, const void* bytes, std::size_t count, std::int64_t offset) override {
    return hasRoom() ? FileOperations::writeAt(file, bytes, count, offset) : -1;
  }
  ssize_t copyRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                    std::size_t count) override {
    return hasRoom() ? FileOperations::copyRange(from, fromOffset, to, toOffset, count) : -1;
  }
  int shareRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                 std::size_t count) override {
    return hasRoom() ? FileOperations::shareRange(from, fromOffset, to, toOffset, count) : -1;
  }
  int sync(int file) override { return hasRoom() ? FileOperations::sync(file) : -1; }
  int syncData(int file) override { return hasRoom() ? FileOperations::syncData(file) : -1; }
  int renameFile(const std::string& from, const std::string& to) override {
    return hasRoom() ? FileOperations::renameFile(from, to) : -1;
  }

 private:
  bool hasRoom() {
    if (calls++ < failing_) return true;
    errno = ENOSPC;
    return false;
  }

  int failing_;
};

/// A disk of `capacity` bytes; the last write before it is full is short.
class FullDisk final : public FileOperations {
 public:
  explicit FullDisk(std::int64_t capacity) : room_(capacity) {}

  ssize_t writeAt(int file, const void* bytes, std::size_t count, std::int64_t offset) override {
    if (room_ == 0) {
      errno = ENOSPC;
      return -1;
    }
    const std::size_t taken = std::min(count, static_cast<std::size_t>(room_));
    room_ -= static_cast<std::int64_t>(taken);
    return FileOperations::writeAt(file, bytes, taken, offset);
  }

  ssize_t copyRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                    std::size_t count) override {
    if (room_ == 0) {
      errno = ENOSPC;
      return -1;
    }
    const std::size_t taken = std::min(count, static_cast<std::size_t>(room_));
    room_ -= static_cast<std::int64_t>(taken);
    return FileOperations::copyRange(from, fromOffset, to, toOffset, taken);
  }

  int shareRange(int /*from*/, std::int64_t /*fromOffset*/, int /*to*/, std::int64_t /*toOffset*/,
                 std::size_t /*count*/) override {
    errno = EOPNOTSUPP;
    return -1;
  }

 private:
  std::int64_t room_;
};

/// A read-only directory.
class ReadOnlyDirectory final : public FileOperations {
 public:
  explicit ReadOnlyDirectory(std::string directory) : prefix_(std::move(directory) + "/") {}

  int createFile(const std::string& path, mode_t mode) override {
    if (path.starts_with(prefix_)) {
      errno = EACCES;
      return -1;
    }
    created = path;
    return FileOperations::createFile(path, mode);
  }
  int renameFile(const std::string& from, const std::string& to) override {
    if (to.starts_with(prefix_)) {
      errno = EACCES;
      return -1;
    }
    return FileOperations::renameFile(from, to);
  }

  /// Files created elsewhere.
  std::string created;

 private:
  std::string prefix_;
};

/// Can't read what stands behind this place of a file.
class UnreadableDisk final : public FileOperations {
 public:
  explicit UnreadableDisk(std::int64_t from = 0) : from_(from) {}

  ssize_t readAt(int file, void* bytes, std::size_t count, std::int64_t offset) override {
    if (offset + static_cast<std::int64_t>(count) > from_) {
      errno = EIO;
      return -1;
    }
    return FileOperations::readAt(file, bytes, count, offset);
  }

 private:
  std::int64_t from_;
};

/// Fails at one step after writing.
class FailingStep final : public FileOperations {
 public:
  enum class Step { sync, rename, syncFolder };
  explicit FailingStep(Step step) : step_(step) {}

  int sync(int file) override {
    struct stat status {};
    const bool isFolder = ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
    return step_ == (isFolder ? Step::syncFolder : Step::sync) ? fail() : FileOperations::sync(file);
  }
  int renameFile(const std::string& from, const std::string& to) override {
    return step_ == Step::rename ? fail() : FileOperations::renameFile(from, to);
  }

  int reason = EIO;

 private:
  int fail() const {
    errno = reason;
    return -1;
  }
  Step step_;
};

}  // namespace orvanel::testing
