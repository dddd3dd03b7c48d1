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
#include "recovery/JournalCompaction.h"
#include "recovery/JournalFile.h"
#include "recovery/JournalFiles.h"
#include "recovery/JournalFormat.h"
#include "recovery/JournalLane.h"
#include "recovery/RecoverySettings.h"
#include "undo/CompressedTile.h"

namespace orvanel {

class JournalWriter {
 public:
  /// The journal is made with the first record.
  JournalWriter(JournalFiles files, std::int64_t maximumBytes,
                std::shared_ptr<JournalTurns> turns = std::make_shared<JournalTurns>(),
                std::int64_t toleratedWaste = RecoverySettings().toleratedWaste);
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
  /// Whether there is more waste than work, and the rest is to be copied piece by piece.
  [[nodiscard]] bool needsCompacting() const { return needsCompacting_; }
  void compactPiece();
  /// The next record begins a journal of its own.
  void remove();

  [[nodiscard]] std::int64_t size() const { return file_ != nullptr ? file_->size : 0; }

 private:
  using File = JournalFile;
  using Stored = JournalFile::Stored;
  using Standing = JournalFile::Standing;
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
  [[nodiscard]] bool isCompactionDue() const;
  [[nodiscard]] Described<void> compactSome();
  void giveUpCompaction();
  /// Until the journal has grown by half.
  void postponeCompaction();

  JournalFiles files_;
  std::int64_t maximumBytes_;
  std::int64_t toleratedWaste_;
  std::shared_ptr<JournalTurns> turns_;
  std::unique_ptr<File> file_;
  /// The document but for its tiles, as of the last record.
  journal::RecordContents standing_;
  /// The compressed tiles of the last record: should the history want them, they are at hand.
  std::vector<std::shared_ptr<CompressedTile>> latest_;
  std::uint32_t lastCopy_ = 0;
  bool needsCompacting_ = false;
  /// Once it has begun. The file that it writes is the journal's `part`.
  std::unique_ptr<JournalCompaction> compaction_;
  /// The size from which on compacting is thought of.
  std::int64_t compactAt_ = 0;
};

}  // namespace orvanel
