// The source of an archive's bytes: a file or memory. Shared by all handles on the archive; any thread.
#pragma once

#include <zip.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "io/files/FileError.h"
#include "io/files/FileIdentity.h"

namespace orvanel {

class ArchiveInput {
 public:
  virtual ~ArchiveInput() = default;
  /// The number of bytes read, fewer than requested only at the end; -1 on a read error.
  [[nodiscard]] virtual std::int64_t readAt(std::uint64_t offset, std::span<std::byte> out) const = 0;
  [[nodiscard]] virtual std::uint64_t size() const = 0;
  /// Which file it was when it was opened; empty for memory.
  [[nodiscard]] virtual std::optional<FileIdentity> identity() const = 0;
  /// Whether the contents have most likely not changed since then.
  [[nodiscard]] virtual bool isAsOpened() const = 0;

  /// Keeps the file open, so the file may be replaced under its name in the meantime.
  [[nodiscard]] static Described<std::shared_ptr<const ArchiveInput>> file(const std::string& path);
  /// As `file`, after `FileHandle::settleMappings`.
  [[nodiscard]] static Described<std::shared_ptr<const ArchiveInput>> settledFile(const std::string& path);
  [[nodiscard]] static std::shared_ptr<const ArchiveInput> bytes(std::span<const std::byte> bytes);
};

/// A library handle on an input.
struct OpenArchive {
  zip_t* handle = nullptr;
  /// The offset in the input that follows the last byte read; lives as long as the handle.
  const std::uint64_t* position = nullptr;
};

/// Opens another, independent handle on the input; null if it is no archive or can't be read.
[[nodiscard]] OpenArchive openArchive(std::shared_ptr<const ArchiveInput> input);

}  // namespace orvanel
