#include "io/archive/ZipRecords.h"

#include <algorithm>
#include <limits>

namespace orvanel::zipRecords {
namespace {

constexpr std::uint32_t most32 = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint16_t most16 = std::numeric_limits<std::uint16_t>::max();

/// Versions of the format that a reader needs: 2.0 for deflate, 4.5 for 64-bit sizes.
constexpr std::uint16_t plainVersion = 20;
constexpr std::uint16_t largeVersion = 45;
/// The path is UTF-8.
constexpr std::uint16_t utf8Flag = 1U << 11U;
constexpr std::uint16_t deflatedMethod = 8;

constexpr std::uint16_t largeFieldID = 1;
constexpr std::uint16_t paddingFieldID = 0x5651;
constexpr std::size_t fieldHeaderBytes = 4;

constexpr std::size_t localHeaderBytes = 30;
constexpr std::size_t largeLocalFieldBytes = fieldHeaderBytes + 16;

/// Appends numbers in little-endian order.
class Record {
 public:
  explicit Record(std::uint32_t signature) { put32(signature); }

  void put16(std::uint64_t value) { put(value, 2); }
  void put32(std::uint64_t value) { put(value, 4); }
  void put64(std::uint64_t value) { put(value, 8); }
  void putText(const std::string& text) {
    for (const char letter : text) bytes_.push_back(static_cast<std::byte>(letter));
  }
  void putBytes(const Bytes& bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
  void putZeros(std::size_t count) { bytes_.resize(bytes_.size() + count); }

  [[nodiscard]] Bytes take() { return std::move(bytes_); }

 private:
  void put(std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) bytes_.push_back(static_cast<std::byte>(value >> (8 * i) & 0xFFU));
  }

  Bytes bytes_;
};

struct DosTime {
  std::uint16_t date = 0;
  std::uint16_t time = 0;
};

/// Local time in steps of two seconds, from 1980 on.
DosTime dosTime(std::time_t when) {
  std::tm local{};
  ::localtime_r(&when, &local);
  constexpr int firstYear = 80;
  const int year = std::clamp(local.tm_year - firstYear, 0, 127);
  return {static_cast<std::uint16_t>(year << 9 | (local.tm_mon + 1) << 5 | local.tm_mday),
          static_cast<std::uint16_t>(local.tm_hour << 11 | local.tm_min << 5 | local.tm_sec / 2)};
}

/// What a local header and a directory entry have in common, from the version needed to the sizes.
void putDescription(Record& record, const Entry& entry) {
  const DosTime modified = dosTime(entry.modified);
  record.put16(entry.isLarge ? largeVersion : plainVersion);
  record.put16(utf8Flag);
  record.put16(entry.isDeflated ? deflatedMethod : 0);
  record.put16(modified.time);
  record.put16(modified.date);
  record.put32(entry.crc);
  record.put32(entry.isLarge ? most32 : entry.storedSize);
  record.put32(entry.isLarge ? most32 : entry.size);
}

}  // namespace

Bytes localHeader(const Entry& entry, std::size_t alignment) {
  const std::size_t plainBytes =
      localHeaderBytes + entry.path.size() + (entry.isLarge ? largeLocalFieldBytes : 0);
  const std::size_t excess = (entry.headerOffset + plainBytes) % alignment;
  std::size_t padding = excess == 0 ? 0 : alignment - excess;
  while (padding != 0 && padding < fieldHeaderBytes) padding += alignment;

  Record record(0x04034b50);
  putDescription(record, entry);
  record.put16(entry.path.size());
  record.put16((entry.isLarge ? largeLocalFieldBytes : 0) + padding);
  record.putText(entry.path);
  if (entry.isLarge) {
    record.put16(largeFieldID);
    record.put16(largeLocalFieldBytes - fieldHeaderBytes);
    record.put64(entry.size);
    record.put64(entry.storedSize);
  }
  if (padding != 0) {
    record.put16(paddingFieldID);
    record.put16(padding - fieldHeaderBytes);
    record.putZeros(padding - fieldHeaderBytes);
  }
  return record.take();
}

Bytes directoryEntry(const Entry& entry) {
  const bool isFar = entry.headerOffset >= most32;
  const std::size_t largeBytes = (entry.isLarge ? 16 : 0) + (isFar ? 8 : 0);
  const Bytes parts = encodedParts(entry.parts);
  const auto fieldBytes = [](std::size_t bytes) { return bytes == 0 ? 0 : fieldHeaderBytes + bytes; };

  Record record(0x02014b50);
  record.put16(largeBytes > 0 ? largeVersion : plainVersion);
  putDescription(record, entry);
  record.put16(entry.path.size());
  record.put16(fieldBytes(largeBytes) + fieldBytes(parts.size()));
  record.put16(0);  // no comment
  record.put16(0);  // on the first disk
  record.put16(0);  // no internal attributes
  record.put32(0);  // no external attributes
  record.put32(isFar ? most32 : entry.headerOffset);
  record.putText(entry.path);
  if (largeBytes > 0) {
    record.put16(largeFieldID);
    record.put16(largeBytes);
    if (entry.isLarge) {
      record.put64(entry.size);
      record.put64(entry.storedSize);
    }
    if (isFar) record.put64(entry.headerOffset);
  }
  if (!parts.empty()) {
    record.put16(entryPartsFieldID);
    record.put16(parts.size());
    record.putBytes(parts);
  }
  return record.take();
}

Bytes directoryEnd(std::uint64_t entryCount, std::uint64_t directoryOffset, std::uint64_t directorySize) {
  Bytes bytes;
  const bool isLarge = entryCount >= most16 || directoryOffset >= most32 || directorySize >= most32;
  if (isLarge) {
    constexpr std::uint64_t restOfRecord = 44;
    Record end64(0x06064b50);
    end64.put64(restOfRecord);
    end64.put16(largeVersion);
    end64.put16(largeVersion);
    end64.put32(0);  // this disk
    end64.put32(0);  // the disk with the directory
    end64.put64(entryCount);
    end64.put64(entryCount);
    end64.put64(directorySize);
    end64.put64(directoryOffset);
    bytes = end64.take();

    Record locator(0x07064b50);
    locator.put32(0);
    locator.put64(directoryOffset + directorySize);
    locator.put32(1);
    const Bytes more = locator.take();
    bytes.insert(bytes.end(), more.begin(), more.end());
  }
  Record end(0x06054b50);
  end.put16(0);  // this disk
  end.put16(0);  // the disk with the directory
  end.put16(std::min<std::uint64_t>(entryCount, most16));
  end.put16(std::min<std::uint64_t>(entryCount, most16));
  end.put32(std::min<std::uint64_t>(directorySize, most32));
  end.put32(std::min<std::uint64_t>(directoryOffset, most32));
  end.put16(0);  // no comment
  const Bytes last = end.take();
  bytes.insert(bytes.end(), last.begin(), last.end());
  return bytes;
}

}  // namespace orvanel::zipRecords
