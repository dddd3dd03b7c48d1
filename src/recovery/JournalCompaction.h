// Copies what is still in use of a journal to another file, piece by piece: records may be appended to the
// journal between two pieces, and are copied as well. Belongs to the thread that writes the journal.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "io/files/FileError.h"
#include "io/files/InputFile.h"
#include "recovery/JournalFile.h"
#include "recovery/RecordWriter.h"

namespace orvanel {

class JournalCompaction {
 public:
  /// Whether the journal holds so much waste that compacting is worth it.
  [[nodiscard]] static bool isWorthIt(const JournalFile& journal, std::int64_t toleratedWaste);

  /// `next` is the new, empty file, which may not become longer than `limit`.
  JournalCompaction(FileHandle source, std::unique_ptr<JournalFile> next, std::int64_t limit);

  enum class Progress { goesOn, hasAllTiles };
  /// Copies some tiles of the journal, and brings them to the disk.
  [[nodiscard]] Described<Progress> copyPiece(const JournalFile& journal);
  /// The new file, complete. Only once all tiles are there; `document` is all but the tiles.
  [[nodiscard]] Described<std::unique_ptr<JournalFile>> finish(const JournalFile& journal,
                                                               journal::RecordContents document);

 private:
  [[nodiscard]] Described<void> copyTile(const JournalFile::Stored& stored);
  [[nodiscard]] journal::TileSource moved(const journal::TileSource& source) const;

  FileHandle source_;
  std::unique_ptr<JournalFile> next_;
  journal::RecordWriter record_;
  std::int64_t end_;
  /// The new numbers of the tiles of the journal that have been copied.
  std::vector<std::optional<std::uint64_t>> numbers_;
};

}  // namespace orvanel
