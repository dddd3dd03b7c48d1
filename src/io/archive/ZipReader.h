// Reads untrusted ZIP archives. Opening checks the directory against limits. Entries are read as streams:
// several threads may read at once, each its own stream.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "io/archive/Deflate.h"
#include "io/archive/EntryParts.h"
#include "io/files/ByteBuffer.h"
#include "io/files/FileError.h"
#include "io/files/FileIdentity.h"
#include "io/files/Progress.h"

struct zip;
struct zip_file;

namespace orvanel {

/// The most entries an archive may have.
inline constexpr std::uint64_t maximumArchiveEntries = 65535;

struct ArchiveEntryInfo {
  std::string path;  ///< UTF-8
  std::uint64_t size = 0;
  std::uint64_t storedSize = 0;
  std::uint32_t crc = 0;
  bool isDeflated = false;
};

class ArchiveInput;

class ZipReader {
 public:
  /// The longest path of an entry, in bytes.
  static constexpr std::size_t maximumPathBytes = 1024;

  [[nodiscard]] static Described<ZipReader> open(const std::string& path);
  /// As `open`, so that the identity tells later of what other programs store in mappings of the file. May
  /// wait for the disk.
  [[nodiscard]] static Described<ZipReader> openSettled(const std::string& path);
  /// The bytes must outlive the reader and its streams.
  [[nodiscard]] static Described<ZipReader> openBytes(std::span<const std::byte> bytes);
  ~ZipReader();
  ZipReader(ZipReader&&) noexcept;
  ZipReader& operator=(ZipReader&&) noexcept;

  [[nodiscard]] const std::vector<ArchiveEntryInfo>& entries() const { return entries_; }
  /// The sections of an entry that can be read independently; empty when it has none.
  [[nodiscard]] const std::vector<EntryPart>& parts(std::size_t index) const { return parts_[index]; }
  /// Which file the archive is read from, as it was when it was opened; empty for memory.
  [[nodiscard]] std::optional<FileIdentity> identity() const;
  /// Whether the file's contents have most likely not changed since then.
  [[nodiscard]] bool isAsOpened() const;
  [[nodiscard]] std::optional<std::size_t> find(const std::string& path) const;

  /// An entry's bytes, from the first to the last.
  class Stream {
   public:
    ~Stream();
    Stream(Stream&&) noexcept;
    Stream& operator=(Stream&&) = delete;

    /// Fills `out` completely. Reading beyond the size given in the directory fails.
    [[nodiscard]] Described<void> read(std::span<std::byte> out);
    /// Reads the rest and checks size and CRC-32 against the directory.
    [[nodiscard]] Described<void> finish(const Progress& progress = {});
    /// The CRC-32 of what has been read; of parts, those that are complete.
    [[nodiscard]] std::uint32_t crc() const { return crc_; }
    /// Where the parts that were read stand in the archive.
    [[nodiscard]] const std::vector<StoredChunk>& chunks() const { return chunks_; }

   private:
    friend class ZipReader;
    struct Handle;
    Stream(ArchiveEntryInfo info, std::unique_ptr<Handle> handle, std::span<const EntryPart> parts);
    void beginInflating();
    void beginPart();
    Described<void> endPart();
    Described<void> readParts(std::span<std::byte> out);

    ArchiveEntryInfo info_;
    std::unique_ptr<Handle> handle_;
    std::optional<InflateStream> inflate_;
    std::uint64_t done_ = 0;
    std::uint32_t crc_ = 0;
    // Of a stream of parts.
    std::vector<EntryPart> parts_;
    std::vector<StoredChunk> chunks_;
    std::uint32_t partLeft_ = 0;
    std::uint32_t partCrc_ = 0;
  };

  /// Any thread.
  [[nodiscard]] Described<Stream> stream(std::size_t index) const;
  /// Reads only some of an entry's parts. The caller must combine and check their CRC-32. Any thread.
  [[nodiscard]] Described<Stream> streamOfParts(std::size_t index, std::size_t first,
                                                std::size_t count) const;
  /// The whole, verified contents of an entry of at most `limit` bytes.
  [[nodiscard]] Described<ByteBuffer> readAll(std::size_t index, std::uint64_t limit) const;

 private:
  struct Handles;
  explicit ZipReader(std::shared_ptr<Handles> handles);
  [[nodiscard]] static Described<ZipReader> openInput(std::shared_ptr<const ArchiveInput> input);
  [[nodiscard]] Described<void> readDirectory();
  [[nodiscard]] Described<std::unique_ptr<Stream::Handle>> openStored(std::size_t index) const;

  std::shared_ptr<Handles> handles_;
  std::vector<ArchiveEntryInfo> entries_;
  std::vector<std::vector<EntryPart>> parts_;
  std::unordered_map<std::string, std::size_t> indexOfPath_;
};

}  // namespace orvanel
