// A file that takes its destination's place in one step: written under another name beside it, brought to
// the disk, checked, and renamed over. Whoever looks sees the old file or the new one, whole.
// Belongs to one thread. Until `commit` has succeeded, the destination is as it was.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "io/files/ByteBuffer.h"
#include "io/files/FileError.h"

namespace orvanel {

class AtomicFile {
 public:
  /// Begins a file for `destination`. A link to a file is followed; the file's permissions are kept.
  [[nodiscard]] static Described<std::unique_ptr<AtomicFile>> create(const QString& destination);
  /// Removes what was written, unless it has been committed.
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  /// Writes at the current position and goes on behind it.
  [[nodiscard]] Described<void> write(std::span<const std::byte> bytes);
  /// The next write goes here, at most at the end.
  void seek(std::int64_t position) { position_ = position; }
  [[nodiscard]] std::int64_t position() const { return position_; }
  [[nodiscard]] std::int64_t size() const { return size_; }

  /// Where the bytes are until they are committed.
  [[nodiscard]] const std::string& temporaryPath() const { return temporaryPath_; }

  /// Brings the bytes to the disk, lets `verify` read them there, and puts them at the destination.
  [[nodiscard]] Described<void> commit(const std::function<Described<void>(const std::string& path)>& verify);

 private:
  AtomicFile(std::string destination, std::string temporaryPath, int file);
  Described<void> flush();
  Described<void> writeThrough(std::span<const std::byte> bytes, std::int64_t offset);
  Described<void> closeAndCheck();

  std::string destination_;
  std::string temporaryPath_;
  int file_;
  ByteBuffer buffer_;
  std::int64_t bufferStart_ = 0;
  std::size_t buffered_ = 0;
  std::int64_t position_ = 0;
  std::int64_t size_ = 0;
  std::int64_t pushedTo_ = 0;
};

/// Puts `bytes` at `destination` in one step.
[[nodiscard]] Described<void> replaceFile(const QString& destination, std::span<const std::byte> bytes);

}  // namespace orvanel
