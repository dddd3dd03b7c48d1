// The records of a journal. A journal is a file of records, one after the other; the first one holds the
// whole document, each later one what has changed. A record is a header, compressed tiles, and the contents,
// which say what the tiles are for. The header is written last, so that a record that was cut off has none.
// All numbers are little-endian. Plain values, any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "io/archive/EntryParts.h"
#include "io/files/FileIdentity.h"
#include "model/Document.h"
#include "raster/PixelFormat.h"

namespace orvanel::journal {

struct RecordHeader {
  static constexpr std::size_t byteSize = 64;
  enum class Kind : std::uint16_t { whole = 0, change = 1 };

  Kind kind = Kind::whole;
  /// The same in all records of a file, and in those of no other.
  std::uint64_t fileMark = 0;
  /// Counts from 0 within the file.
  std::uint64_t sequence = 0;
  /// In milliseconds since 1970.
  std::int64_t time = 0;
  std::uint64_t tileBytes = 0;
  std::uint32_t contentBytes = 0;
  std::uint32_t tilesCrc = 0;
  std::uint32_t contentsCrc = 0;

  friend bool operator==(const RecordHeader&, const RecordHeader&) = default;

  [[nodiscard]] std::array<std::byte, byteSize> encoded() const;
  /// Nothing for bytes that are no header, are damaged, or are of another version.
  [[nodiscard]] static std::optional<RecordHeader> decode(std::span<const std::byte, byteSize> bytes);
  /// Whether they look like the header of a version of the format that isn't known here.
  [[nodiscard]] static bool isOfOtherVersion(std::span<const std::byte, byteSize> bytes);
};

/// The most characters of the name that a record tells beside its manifest.
inline constexpr int longestName = 1024;
/// The most bytes of a record's contents.
inline constexpr std::uint32_t maximumContentBytes = std::uint32_t{1} << 28U;

/// Where the pixels of a tile are.
struct TileSource {
  enum class Kind : std::uint8_t {
    uniform,  ///< `value` is the pixel
    stored,   ///< `value` counts the tiles of the journal from its beginning
    base,     ///< `value` is the index of the tile within the base file's surface
  };
  Kind kind = Kind::uniform;
  std::uint32_t surface = 0;  ///< of the base file
  std::uint64_t value = 0;

  /// The source of the tile that follows by this number of places, in a run.
  [[nodiscard]] TileSource following(std::uint32_t places) const {
    return {kind, surface, kind == Kind::uniform ? value : value + places};
  }
  friend bool operator==(const TileSource&, const TileSource&) = default;
};

struct TileRun {
  std::uint32_t first = 0;
  std::uint32_t count = 0;
  TileSource source;
};

/// What has changed of one surface.
struct SurfaceRecord {
  /// As in a document's archive.
  std::string path;
  PixelFormat format = PixelFormat::rgba8Unorm;
  /// Whether the surface begins anew, as all zero, before the runs are put in.
  bool isNew = false;
  std::vector<TileRun> runs;
};

struct StoredTile {
  std::uint32_t bytes = 0;
  std::uint8_t pixelBytes = 0;
};

/// Where the pixels of a surface stand in the base file, and their checksums. Data with these checksums is
/// accepted from any file.
struct BaseSurface {
  /// As in a document's archive.
  std::string path;
  PixelFormat format = PixelFormat::rgba8Unorm;
  std::uint32_t width = 1;
  std::uint32_t height = 1;
  /// In order, deflated each by itself. Together they make a header and the rows of pixels.
  std::vector<StoredChunk> chunks;
};

/// No chunk of a base file makes more bytes.
inline constexpr std::uint32_t maximumBaseChunkBytes = std::uint32_t{1} << 26U;

/// The document's file, in which those tiles stand that the journal doesn't hold.
struct BaseFile {
  std::string path;
  FileIdentity identity;
  /// Under which number the store holds the same bytes, as soon and as long as it does; 0 for none.
  std::uint32_t copy = 0;
  /// Counted by `TileSource::surface`.
  std::vector<BaseSurface> surfaces;
};

struct RecordContents {
  QString name;
  /// Empty without a file.
  QString path;
  std::optional<Document::ImageFileFormat> imageFormat;
  std::uint32_t canvasWidth = 1;
  std::uint32_t canvasHeight = 1;
  /// Only in a whole record.
  std::optional<BaseFile> base;
  /// As in a document's archive; empty if it is that of the record before.
  QByteArray manifest;
  /// PNG; empty if it is that of the record before.
  QByteArray thumbnail;
  std::vector<StoredTile> tiles;
  std::vector<SurfaceRecord> surfaces;
  /// Surfaces that the document has no more.
  std::vector<std::string> gone;

  [[nodiscard]] QByteArray encoded() const;
  /// Nothing for contents that contradict themselves.
  [[nodiscard]] static std::optional<RecordContents> decode(std::span<const std::byte> bytes);
};

/// The tiles of one surface.
struct TileTable {
  PixelFormat format = PixelFormat::rgba8Unorm;
  std::vector<TileSource> tiles;
};
/// By the surface's path.
using TileTables = std::map<std::string, TileTable>;

/// The tiles of a canvas of this size.
[[nodiscard]] std::size_t tileCountOf(std::uint32_t canvasWidth, std::uint32_t canvasHeight);

/// Brings the tables to the state after a record.
void applyRecord(TileTables& tables, const RecordContents& contents);

/// Puts a source at the end of the runs.
void appendSource(std::vector<TileRun>& runs, std::uint32_t index, const TileSource& source);

}  // namespace orvanel::journal
