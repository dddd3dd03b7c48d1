// Reads journals, whoever wrote them: everything is checked before it is believed, and what follows the last
// record that is whole doesn't count. Any thread; only making the document at the end belongs to the main
// one.
#pragma once

#include <QDateTime>
#include <QImage>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "io/document/DocumentReader.h"
#include "io/document/SavedFile.h"
#include "recovery/JournalFiles.h"
#include "recovery/JournalFormat.h"

namespace orvanel {

/// Why a journal can't be read, or not to its end.
struct JournalStop {
  enum class Cause {
    damaged,       ///< or ended: there is nothing more that is whole
    otherVersion,  ///< another version of this program knows how to read it
    unreadable,    ///< the disk doesn't give it back now
    noMemory,      ///< there may be some at another time
  };
  Cause cause = Cause::damaged;
  /// A sentence for the user.
  QString reason = {};
};
/// A sentence for the user.
[[nodiscard]] QString readFailure(int error);
template <typename Value>
using JournalPart = tl::expected<Value, JournalStop>;

/// The bytes of a journal, in a file or in memory.
class JournalInput {
 public:
  /// The descriptor must stay open.
  [[nodiscard]] static JournalInput ofFile(int descriptor);
  /// The bytes must outlive it.
  [[nodiscard]] static JournalInput ofBytes(std::span<const std::byte> bytes);

  [[nodiscard]] std::uint64_t size() const { return size_; }
  /// Fills `out`; fails if there isn't as much, or the disk does.
  [[nodiscard]] JournalPart<void> read(std::uint64_t offset, std::span<std::byte> out) const;

 private:
  int descriptor_ = -1;
  std::span<const std::byte> bytes_;
  std::uint64_t size_ = 0;
};

/// The document after the last whole record, without its pixels.
struct JournalState {
  struct Stored {
    std::uint64_t offset = 0;
    journal::StoredTile tile;
  };

  /// All but the tiles; `manifest` and `thumbnail` are the latest.
  journal::RecordContents document;
  std::optional<journal::BaseFile> base;
  QDateTime time;
  journal::TileTables tables;
  std::vector<Stored> stored;
  std::uint64_t records = 0;
  /// Where the last whole record ends.
  std::uint64_t end = 0;
  /// Why nothing more was read.
  JournalStop stop;
};

/// Whether tiles are read and compared with their checksums, or only what says where they are.
enum class TileCheck { none, all };

/// Fails if there is no whole record to begin with.
[[nodiscard]] JournalPart<JournalState> readJournalState(const JournalInput& input, TileCheck check);
/// The picture of the document; null if there is none, or none of a thumbnail's size.
[[nodiscard]] QImage thumbnailOf(const JournalState& state);

/// A document that is complete but for its nodes.
struct RestoredContents {
  DocumentPlan plan;
  QString path;
  std::optional<Document::ImageFileFormat> imageFormat;
  std::shared_ptr<const SourceMetadata> metadata;
  /// The file that the document came from, and what it holds, as far as that is known.
  KnownFilePtr known;
  /// What couldn't be had any more: a sentence for the user. Usually empty.
  QString loss;
};

/// Reads the tiles as well. Those that stood in the document's file alone, and are gone with it, stay
/// transparent. `copyOfBase` is the file that a number of `BaseFile::copy` stands for.
[[nodiscard]] Described<RestoredContents> restoreContents(
    const JournalInput& input, const MetalContext& context,
    const std::function<std::string(std::uint32_t)>& copyOfBase, const Progress& progress);

/// Makes the document: unsaved, under its old name and path. Main thread.
[[nodiscard]] DocumentPtr buildRestored(const RestoredContents& contents, MetalContext& context);

}  // namespace orvanel
