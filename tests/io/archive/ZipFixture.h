// Builds ZIP archives byte by byte, including malformed ones that no library writes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "io/TestBytes.h"
#include "io/archive/Deflate.h"

namespace orvanel::testing {

class ZipFixture {
 public:
  struct Entry {
    std::string path;
    Bytes stored;  ///< as it stands in the archive
    std::uint16_t method = 0;
    std::uint32_t crc = 0;
    std::uint32_t storedSize = 0;
    std::uint32_t size = 0;
    std::uint16_t flags = 0x800;  ///< names are UTF-8
    /// Another entry whose data this entry points to.
    int sharesWith = -1;
  };

  static Entry stored(std::string path, const Bytes& bytes) {
    return {std::move(path),
            bytes,
            0,
            crc32(bytes),
            static_cast<std::uint32_t>(bytes.size()),
            static_cast<std::uint32_t>(bytes.size())};
  }
  static Entry deflated(std::string path, const Bytes& bytes) {
    Entry entry = stored(std::move(path), {});
    const ByteBuffer chunk = deflateChunk(bytes);
    entry.stored.assign(chunk.data(), chunk.data() + chunk.size());
    entry.stored.insert(entry.stored.end(), deflateStreamEnd.begin(), deflateStreamEnd.end());
    entry.method = 8;
    entry.crc = crc32(bytes);
    entry.size = static_cast<std::uint32_t>(bytes.size());
    entry.storedSize = static_cast<std::uint32_t>(entry.stored.size());
    return entry;
  }

  void add(Entry entry) { entries.push_back(std::move(entry)); }

  [[nodiscard]] Bytes make() const {
    Bytes archive;
    std::vector<std::uint32_t> offsets;
    for (const Entry& entry : entries) {
      if (entry.sharesWith >= 0) {
        offsets.push_back(offsets[static_cast<std::size_t>(entry.sharesWith)]);
        continue;
      }
      offsets.push_back(static_cast<std::uint32_t>(archive.size()));
      number(archive, 0x04034B50, 4);
      describe(archive, entry);
      text(archive, entry.path);
      archive.insert(archive.end(), entry.stored.begin(), entry.stored.end());
    }
    const std::size_t directory = archive.size();
    for (std::size_t i = 0; i < entries.size(); ++i) {
      number(archive, 0x02014B50, 4);
      number(archive, 20, 2);
      describe(archive, entries[i]);
      number(archive, 0, 2);  // comment
      number(archive, 0, 2);  // disk
      number(archive, 0, 2);  // internal attributes
      number(archive, 0, 4);  // external attributes
      number(archive, offsets[i], 4);
      text(archive, entries[i].path);
    }
    const std::size_t directorySize = archive.size() - directory;
    if (entries.size() > 0xFFFE) {
      const std::size_t end = archive.size();
      number(archive, 0x06064B50, 4);
      number(archive, 44, 8);
      number(archive, 45, 2);
      number(archive, 45, 2);
      number(archive, 0, 4);
      number(archive, 0, 4);
      number(archive, entries.size(), 8);
      number(archive, entries.size(), 8);
      number(archive, directorySize, 8);
      number(archive, directory, 8);
      number(archive, 0x07064B50, 4);
      number(archive, 0, 4);
      number(archive, end, 8);
      number(archive, 1, 4);
    }
    const std::size_t count = std::min<std::size_t>(entries.size(), 0xFFFF);
    number(archive, 0x06054B50, 4);
    number(archive, 0, 4);
    number(archive, count, 2);
    number(archive, count, 2);
    number(archive, directorySize, 4);
    number(archive, directory, 4);
    number(archive, 0, 2);
    return archive;
  }

  std::vector<Entry> entries;

 private:
  static void number(Bytes& out, std::uint64_t value, int width) {
    for (int i = 0; i < width; ++i) out.push_back(static_cast<std::byte>(value >> (8 * i) & 0xFFU));
  }
  static void text(Bytes& out, std::string_view value) {
    for (const char c : value) out.push_back(static_cast<std::byte>(c));
  }
  /// The fields that the local header and the central directory share.
  static void describe(Bytes& out, const Entry& entry) {
    number(out, 20, 2);
    number(out, entry.flags, 2);
    number(out, entry.method, 2);
    number(out, 0, 2);       // time
    number(out, 0x5621, 2);  // date
    number(out, entry.crc, 4);
    number(out, entry.storedSize, 4);
    number(out, entry.size, 4);
    number(out, entry.path.size(), 2);
    number(out, 0, 2);
  }
};

}  // namespace orvanel::testing
