// Writes the journal of one document from what is captured of it: appends what has changed, begins anew when
// the document's file has changed, and compacts the journal when it holds more waste than work. A record that
// can't be written leaves the earlier ones as they are. Belongs to the thread that writes journals.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "recovery/DocumentCapture.h"
#include "recovery/HeldBase.h"
#include "recovery/JournalFiles.h"
#include "recovery/JournalFormat.h"
#include "recovery/JournalLane.h"
#include "recovery/RecordWriter.h"
#include "undo/CompressedTile.h"

namespace orvanel {

class JournalWriter {
 public:
  /// The journal is made with the first record.
  JournalWriter(JournalFiles files, std::int64_t maximumBytes,
                std::shared_ptr<JournalTurns> turns = std::make_shared<JournalTurns>());
  JournalWriter(const JournalWriter&) = delete;
  JournalWriter& operator=(const JournalWriter&) = delete;

  enum class Result {
    written,
    needsEverything,  ///< it can only go on from a complete capture
    failed,
  };
  struct Outcome {
    Result result = Result::written;
    /// Why it has failed: a sentence for the user.
    QString reason = {};
    std::int64_t bytesWritten = 0;
  };
  [[nodiscard]] Outcome write(const Capture& capture);
  /// Whether all tiles left to the document's file are still readable.
  [[nodiscard]] bool isBaseIntact() const { return !holdsBase() || file_->held->isIntact(); }
  /// Whether what another program does to the document's file can make the next record a whole one.
  [[nodiscard]] bool dependsOnFile() const { return holdsBase() && file_->held->dependsOnFile(); }
  /// Whether the store still needs a copy of the document's file, which is made piece by piece.
  [[nodiscard]] bool needsCopying() const { return holdsBase() && file_->held->needsCopying(); }
  void copyPiece();
  /// The next record begins a journal of its own.
  void remove();

  [[nodiscard]] std::int64_t size() const { return file_ != nullptr ? file_->size : 0; }

 private:
  struct Stored {
    std::int64_t offset = 0;
    journal::StoredTile tile;
    std::uint32_t crc = 0;
  };
  /// Where a tile's pixels are. A document's file has only those that were visible in it: a tile at the edge
  /// of a surface may be shared with one that shows more.
  struct Standing {
    journal::TileSource source;
    int columns = tileSide;
    int rows = tileSide;
  };
  /// The journal on the disk, as far as it is complete.
  struct File {
    Descriptor descriptor;
    std::int64_t size = 0;
    std::uint64_t mark = 0;
    std::uint64_t records = 0;
    std::int64_t firstContents = 0;  ///< bytes of the first record that aren't tiles
    std::optional<journal::BaseFile> base;
    /// The store's hold on it; null without one.
    std::shared_ptr<HeldBase> held;
    KnownFilePtr known;
    journal::TileTables tables;
    std::vector<Stored> stored;
    /// Where tiles' pixels are, by their versions.
    std::unordered_map<std::uint64_t, Standing> standing;
  };
  /// A tile that isn't anywhere yet.
  struct NewTile {
    Tile tile;
    int pixelBytes = 0;
  };
  struct Draft {
    journal::RecordContents contents;
    std::vector<NewTile> tiles;
  };

  [[nodiscard]] Outcome beginAnew(const Capture& capture);
  [[nodiscard]] Outcome append(const Capture& capture);
  [[nodiscard]] Described<std::unique_ptr<File>> createPart();
  [[nodiscard]] Described<void> takePlace(std::unique_ptr<File> file);
  void chooseBase(File& file, const KnownFilePtr& known);
  [[nodiscard]] bool holdsBase() const { return file_ != nullptr && file_->held != nullptr; }
  [[nodiscard]] static std::optional<Draft> drafted(const File& file, const Capture& capture);
  [[nodiscard]] static bool draftSurface(const File& file, const std::string& path,
                                         const CapturedSurface& captured,
                                         std::unordered_map<std::uint64_t, std::uint64_t>& fresh,
                                         Draft& draft);
  [[nodiscard]] Described<void> writeRecord(File& file, Draft draft);
  void accept(const journal::RecordContents& contents);
  void compactIfDue();
  [[nodiscard]] Described<void> compact(const std::vector<bool>& live);
  [[nodiscard]] Described<void> copyTiles(JournalTurns::Turn& turn, const std::vector<bool>& live, File& next,
                                          journal::RecordWriter& record,
                                          journal::RecordContents& contents) const;
  [[nodiscard]] std::vector<bool> liveTiles() const;

  JournalFiles files_;
  std::int64_t maximumBytes_;
  std::shared_ptr<JournalTurns> turns_;
  std::unique_ptr<File> file_;
  /// The document but for its tiles, as of the last record.
  journal::RecordContents standing_;
  /// The compressed tiles of the last record: should the history want them, they are at hand.
  std::vector<std::shared_ptr<CompressedTile>> latest_;
  std::uint32_t lastCopy_ = 0;
  std::int64_t compactAt_ = 0;
};

}  // namespace orvanel
