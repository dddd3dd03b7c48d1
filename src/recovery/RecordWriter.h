// Writes one record at the end of a journal: its tiles, its contents, and at last its header, without which
// it doesn't count. Belongs to one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "io/files/FileError.h"
#include "recovery/JournalFormat.h"

namespace orvanel::journal {

class RecordWriter {
 public:
  /// The file is borrowed; the record begins at `start`, and the file may not become longer than `limit`.
  RecordWriter(int file, std::int64_t start, std::int64_t limit);

  [[nodiscard]] Described<void> addTile(std::span<const std::byte> compressed);
  /// Completes the header with sizes and sums, brings everything to the disk, and returns the record's end.
  [[nodiscard]] Described<std::int64_t> finish(RecordHeader header, const RecordContents& contents);

 private:
  [[nodiscard]] Described<void> add(std::span<const std::byte> bytes);
  [[nodiscard]] Described<void> flush();
  [[nodiscard]] Described<void> writeAt(std::span<const std::byte> bytes, std::int64_t offset) const;

  int file_;
  std::int64_t start_;
  std::int64_t limit_;
  std::int64_t position_;  ///< of the first byte in the buffer
  std::uint64_t tileBytes_ = 0;
  std::uint32_t tilesCrc_ = 0;
  std::vector<std::byte> buffer_;
};

/// A sentence for the user.
[[nodiscard]] QString writeFailure(int error);

}  // namespace orvanel::journal
