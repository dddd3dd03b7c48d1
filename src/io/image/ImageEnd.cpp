#include "io/image/ImageEnd.h"

#include <QByteArray>
#include <QtEndian>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "io/image/TiffNumbers.h"

namespace orvanel {
namespace {

/// Reads a file sequentially, in blocks.
class Bytes {
 public:
  explicit Bytes(QIODevice& file) : file_(file) { file_.seek(0); }

  std::optional<std::uint8_t> next() {
    if (at_ == block_.size()) {
      constexpr qint64 blockBytes = 65536;
      block_ = file_.read(blockBytes);
      at_ = 0;
      if (block_.isEmpty()) return std::nullopt;
    }
    return static_cast<std::uint8_t>(block_[at_++]);
  }
  std::optional<std::uint32_t> bigEndian(int bytes) {
    std::uint32_t value = 0;
    for (int i = 0; i < bytes; ++i) {
      const auto byte = next();
      if (!byte) return std::nullopt;
      value = value << 8U | *byte;
    }
    return value;
  }
  /// False when the file is shorter.
  bool skip(std::int64_t count) {
    const std::int64_t position = file_.pos() - (block_.size() - at_) + count;
    if (position > file_.size()) return false;
    if (count <= block_.size() - at_) {
      at_ += count;
      return true;
    }
    block_.clear();
    at_ = 0;
    return file_.seek(position);
  }
  /// Skips to just after the next byte of this value; false if there is none.
  bool skipPast(char value) {
    while (true) {
      const qsizetype found = block_.indexOf(value, at_);
      if (found >= 0) {
        at_ = found + 1;
        return true;
      }
      at_ = block_.size();
      if (!next()) return false;
      --at_;
    }
  }

 private:
  QIODevice& file_;
  QByteArray block_;
  qsizetype at_ = 0;
};

/// Follows the markers to the end of image; segments are skipped by their length (ISO/IEC 10918-1, annex B).
bool jpegEndsTooEarly(Bytes& bytes) {
  while (bytes.skipPast('\xFF')) {
    auto marker = bytes.next();
    while (marker == 0xFF) marker = bytes.next();
    if (!marker) return true;
    if (*marker == 0xD9) return false;
    const bool standsAlone = *marker <= 0x01 || (*marker >= 0xD0 && *marker <= 0xD8);
    if (standsAlone) continue;
    const auto length = bytes.bigEndian(2);
    if (!length) return true;
    if (*length < 2) return false;
    if (!bytes.skip(*length - 2)) return true;
  }
  return true;
}

bool pngEndsTooEarly(Bytes& bytes) {
  bytes.skip(8);
  while (true) {
    const auto length = bytes.bigEndian(4);
    const auto type = bytes.bigEndian(4);
    if (!length || !type) return true;
    constexpr std::uint32_t endOfImage = 0x49454E44;
    if (*type == endOfImage) return false;
    constexpr std::int64_t checkSumBytes = 4;
    if (!bytes.skip(std::int64_t{*length} + checkSumBytes)) return true;
  }
}

/// Skips the colour table that `flags` announce, if any.
bool skipGifColors(Bytes& bytes, std::uint8_t flags) {
  return (flags & 0x80U) == 0 || bytes.skip(std::int64_t{3} << ((flags & 7U) + 1));
}

bool skipGifBlocks(Bytes& bytes) {
  while (const auto length = bytes.next()) {
    if (*length == 0) return true;
    if (!bytes.skip(*length)) return false;
  }
  return false;
}

/// Checks the first picture only, since no other is opened.
bool gifEndsTooEarly(Bytes& bytes) {
  constexpr std::int64_t beforeFlags = 10;
  bytes.skip(beforeFlags);
  const auto flags = bytes.next();
  if (!flags || !bytes.skip(2) || !skipGifColors(bytes, *flags)) return true;
  while (const auto block = bytes.next()) {
    if (*block == 0x21) {
      if (!bytes.next() || !skipGifBlocks(bytes)) return true;
    } else if (*block == 0x2C) {
      constexpr std::int64_t positionAndSizeBytes = 8;
      if (!bytes.skip(positionAndSizeBytes)) return true;
      const auto pictureFlags = bytes.next();
      return !pictureFlags || !skipGifColors(bytes, *pictureFlags) || !bytes.next() || !skipGifBlocks(bytes);
    } else {
      return false;
    }
  }
  return true;
}

bool bmpEndsTooEarly(const QByteArray& header, std::int64_t fileBytes) {
  constexpr qsizetype longHeader = 38;
  if (header.size() < longHeader) return true;
  const auto number = [&](int offset) {
    return qFromLittleEndian<std::int32_t>(header.constData() + offset);
  };
  const std::int64_t pixelsAt = number(10);
  constexpr int oldestHeaderBytes = 12;
  const bool isOldest = number(14) == oldestHeaderBytes;
  const auto half = [&](int offset) {
    return static_cast<std::int64_t>(qFromLittleEndian<std::uint16_t>(header.constData() + offset));
  };
  const std::int64_t width = isOldest ? half(18) : number(18);
  const std::int64_t height = std::abs(isOldest ? half(20) : std::int64_t{number(22)});
  const std::int64_t bitsPerPixel = isOldest ? half(24) : half(28);
  const std::int32_t compression = isOldest ? 0 : number(30);
  if (pixelsAt < 0 || width < 0) return false;
  const bool isRunLength = compression == 1 || compression == 2;
  if (isRunLength) return pixelsAt + number(34) > fileBytes;
  const std::int64_t bytesPerRow = (width * bitsPerPixel + 31) / 32 * 4;
  return bytesPerRow > 0 && height > (fileBytes - pixelsAt) / bytesPerRow;
}

/// The strip or tile that stands last, which is the first to be lost. Only its start counts: some programs
/// announce more bytes than its rows need.
bool tiffEndsTooEarly(QIODevice& file, bool isLittleEndian) {
  const TiffNumbers tiff(file, isLittleEndian);
  const auto directory = tiff.longWord(4);
  const auto count = directory ? tiff.word(*directory) : std::nullopt;
  if (!count) return true;
  for (std::uint64_t i = 0; i < *count; ++i) {
    const std::uint64_t entry = std::uint64_t{*directory} + 2 + i * TiffNumbers::entryBytes;
    const auto tag = tiff.word(entry);
    const auto type = tiff.word(entry + 2);
    const auto values = tiff.longWord(entry + 4);
    const auto value = tiff.longWord(entry + 8);
    if (!tag || !type || !values || !value) return true;
    constexpr std::uint16_t stripOffsets = 273;
    constexpr std::uint16_t tileOffsets = 324;
    constexpr std::uint16_t longType = 4;
    const bool areOffsets = (*tag == stripOffsets || *tag == tileOffsets) && *type == longType;
    if (!areOffsets || *values == 0) continue;
    // More than one doesn't fit in the entry, which then holds their place.
    const auto last = *values == 1 ? value : tiff.longWord(*value + (std::uint64_t{*values} - 1) * 4);
    if (!last || *last >= file.size()) return true;
  }
  return false;
}

}  // namespace

bool endsTooEarly(QIODevice& file) {
  constexpr qint64 headerBytes = 38;
  file.seek(0);
  const QByteArray header = file.read(headerBytes);
  Bytes bytes(file);
  if (header.startsWith("\xFF\xD8\xFF")) return jpegEndsTooEarly(bytes);
  if (header.startsWith("\x89PNG\r\n\x1A\n")) return pngEndsTooEarly(bytes);
  if (header.startsWith("GIF8")) return gifEndsTooEarly(bytes);
  if (header.startsWith("BM")) return bmpEndsTooEarly(header, file.size());
  if (header.startsWith(QByteArrayView("II*\0", 4))) return tiffEndsTooEarly(file, true);
  if (header.startsWith(QByteArrayView("MM\0*", 4))) return tiffEndsTooEarly(file, false);
  if (header.startsWith("RIFF") && header.sliced(8).startsWith("WEBP")) {
    return std::int64_t{qFromLittleEndian<std::uint32_t>(header.constData() + 4)} + 8 > file.size();
  }
  return false;
}

}  // namespace orvanel
