// Replaces a file atomically: the new contents are written to a temporary file beside it, synced, verified
// and renamed over it. Until `commit` has succeeded, the destination is unchanged. Belongs to one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "io/files/ByteBuffer.h"
#include "io/files/FileError.h"
#include "io/files/FileIdentity.h"

namespace orvanel {

class AtomicFile {
 public:
  /// Creates the temporary file, and removes those that killed saves have left beside it. Symbolic links are
  /// followed, and an existing file's permissions are kept. `replaced` is the version of the destination that
  /// may be replaced: by default what stands there now.
  [[nodiscard]] static Described<std::unique_ptr<AtomicFile>> create(
      const QString& destination, std::optional<FileIdentity> replaced = {});
  /// Removes the temporary file unless it has been committed.
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;

  /// Writes at the current position and advances it.
  [[nodiscard]] Described<void> write(std::span<const std::byte> bytes);
  enum class RangeCopy { shared, copied, sourceUnreadable };
  /// Appends a range of another file: as the same blocks on the disk where the file system can, otherwise
  /// within the kernel where that works. The position must be at the end.
  [[nodiscard]] Described<RangeCopy> append(int source, std::int64_t offset, std::uint64_t count);
  /// Sets the position of the next write, at most the end of the file.
  void seek(std::int64_t position) { position_ = position; }
  [[nodiscard]] std::int64_t position() const { return position_; }
  [[nodiscard]] std::int64_t size() const { return size_; }
  /// The path of the file to replace, with symbolic links resolved.
  [[nodiscard]] const std::string& destination() const { return destination_; }

  /// Syncs the file, calls `verify` on it and renames it to the destination. Fails if something else stands
  /// there than what may be replaced.
  [[nodiscard]] Described<void> commit(const std::function<Described<void>(const std::string& path)>& verify);
  /// The destination's identity right after `commit`.
  [[nodiscard]] const std::optional<FileIdentity>& committed() const { return committed_; }
  /// Why the new file, which stands at the destination after `commit`, may not survive a power cut: the disk
  /// failed with the folder. Empty if it will.
  [[nodiscard]] const QString& doubt() const { return doubt_; }

 private:
  AtomicFile(std::string destination, std::optional<FileIdentity> replaced, std::string temporaryPath,
             int file);
  [[nodiscard]] bool isDestinationAsFound() const;
  Described<void> flush();
  Described<void> writeThrough(std::span<const std::byte> bytes, std::int64_t offset);
  Described<RangeCopy> copyThrough(int source, std::int64_t offset, std::uint64_t count);
  Described<RangeCopy> readAndWrite(int source, std::int64_t offset, std::uint64_t count);
  void push(std::int64_t end);
  Described<void> closeAndCheck();

  std::string destination_;
  std::optional<FileIdentity> replaced_;  ///< what may be replaced; empty if nothing stood there
  std::string temporaryPath_;
  int file_;
  ByteBuffer buffer_;
  std::int64_t bufferStart_ = 0;
  std::size_t buffered_ = 0;
  std::int64_t position_ = 0;
  std::int64_t size_ = 0;
  std::int64_t pushedTo_ = 0;
  bool mayShare_ = true;
  bool mayCopyInKernel_ = true;
  std::optional<FileIdentity> synced_;  ///< the new file before it is verified
  std::optional<FileIdentity> committed_;
  QString doubt_;
};

/// What stands at the destination now.
struct ReplacedFile {
  /// Empty if it can't be told.
  std::optional<FileIdentity> identity;
  /// Why it may not survive a power cut; empty if it will.
  QString doubt;
};

/// Turns a doubt into an error: a file that may not survive a power cut doesn't count as saved.
[[nodiscard]] FileResult<void> judgeDoubt(const QString& doubt);

/// Replaces the contents of `destination` atomically, if they are `replaced` or, by default, whatever they
/// are.
[[nodiscard]] Described<ReplacedFile> replaceFile(const QString& destination,
                                                  std::span<const std::byte> bytes,
                                                  std::optional<FileIdentity> replaced = {});

}  // namespace orvanel
