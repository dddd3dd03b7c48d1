// File operations that fail in given ways, for tests of writing.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string>

#include "io/files/FileOperations.h"

namespace orvanel::testing {

/// Accepts `capacity` bytes; the write that exceeds them is short, and later ones fail.
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

 private:
  std::int64_t room_;
};

/// A directory in which no file can be created.
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

  /// The file that was created elsewhere.
  std::string created;

 private:
  std::string prefix_;
};

/// Fails at one step after writing.
class FailingStep final : public FileOperations {
 public:
  enum class Step { sync, rename };
  explicit FailingStep(Step step) : step_(step) {}

  int sync(int file) override { return step_ == Step::sync ? fail() : FileOperations::sync(file); }
  int renameFile(const std::string& from, const std::string& to) override {
    return step_ == Step::rename ? fail() : FileOperations::renameFile(from, to);
  }

 private:
  static int fail() {
    errno = EIO;
    return -1;
  }
  Step step_;
};

}  // namespace orvanel::testing
