// Bytes that an archive is read from: a file or memory. Shared by all handles on the archive, any thread.
#pragma once

#include <zip.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "io/files/FileError.h"

namespace orvanel {

class ArchiveInput {
 public:
  virtual ~ArchiveInput() = default;
  /// Bytes read, fewer than asked for at the end; -1 when the file can't be read.
  [[nodiscard]] virtual std::int64_t readAt(std::uint64_t offset, std::span<std::byte> out) const = 0;
  [[nodiscard]] virtual std::uint64_t size() const = 0;

  /// The file as it is now; it may be replaced under its name meanwhile.
  [[nodiscard]] static Described<std::shared_ptr<const ArchiveInput>> file(const std::string& path);
  [[nodiscard]] static std::shared_ptr<const ArchiveInput> bytes(std::span<const std::byte> bytes);
};

/// A further, independent handle of the ZIP library on the input; null with `error` set.
[[nodiscard]] zip_t* openArchive(std::shared_ptr<const ArchiveInput> input, zip_error_t& error);

}  // namespace orvanel
