#include "io/image/PictureCount.h"

#include <QByteArray>
#include <QtEndian>
#include <algorithm>
#include <cstdint>
#include <optional>

#include "io/image/ImageHeader.h"

namespace orvanel {
namespace {

std::optional<std::uint8_t> nextByte(QIODevice& file) {
  char byte = 0;
  if (!file.getChar(&byte)) return std::nullopt;
  return static_cast<std::uint8_t>(byte);
}

bool skip(QIODevice& file, qint64 count) {
  return file.pos() + count <= file.size() && file.seek(file.pos() + count);
}

/// Skips the colour table that `flags` announce, if any.
bool skipGifColors(QIODevice& file, std::uint8_t flags) {
  return (flags & 0x80U) == 0 || skip(file, qint64{3} << ((flags & 7U) + 1));
}

bool skipGifBlocks(QIODevice& file) {
  while (const auto length = nextByte(file)) {
    if (*length == 0) return true;
    if (!skip(file, *length)) return false;
  }
  return false;
}

/// Graphics Interchange Format, version 89a. A truncated picture counts.
int framesOfGif(QIODevice& file) {
  constexpr qint64 beforeScreenFlags = 10;
  constexpr qint64 beforeFrameFlags = 8;
  if (!file.seek(beforeScreenFlags)) return 0;
  const auto screenFlags = nextByte(file);
  if (!screenFlags || !skip(file, 2) || !skipGifColors(file, *screenFlags)) return 0;
  int frames = 0;
  while (const auto block = nextByte(file)) {
    if (*block == 0x21) {
      if (!skip(file, 1) || !skipGifBlocks(file)) break;
    } else if (*block == 0x2C) {
      ++frames;
      if (!skip(file, beforeFrameFlags)) break;
      const auto flags = nextByte(file);
      if (!flags || !skipGifColors(file, *flags) || !skip(file, 1) || !skipGifBlocks(file)) break;
    } else {
      break;
    }
  }
  return frames;
}

/// An unsigned number of `bytes` bytes; nothing beyond the end of the file.
std::optional<std::uint64_t> numberAt(QIODevice& file, std::uint64_t offset, int bytes, bool isLittleEndian) {
  if (offset > static_cast<std::uint64_t>(file.size()) || !file.seek(static_cast<qint64>(offset))) {
    return std::nullopt;
  }
  QByteArray digits = file.read(bytes);
  if (digits.size() != bytes) return std::nullopt;
  if (isLittleEndian) std::ranges::reverse(digits);
  std::uint64_t number = 0;
  for (const char digit : digits) number = number << 8U | static_cast<std::uint8_t>(digit);
  return number;
}

/// Follows the chain of directories (TIFF 6.0, section 2, and its extension to 64-bit offsets).
int pagesOfTiff(QIODevice& file) {
  if (!file.seek(0)) return 0;
  const QByteArray start = file.read(4);
  const bool isLittle = start.startsWith("II");
  const bool isBig = start.contains('+');
  const int offsetBytes = isBig ? 8 : 4;
  const int countBytes = isBig ? 8 : 2;
  const std::uint64_t entryBytes = isBig ? 20 : 12;
  // A chain that leads back into itself never ends.
  constexpr int mostPages = 65535;
  int pages = 0;
  auto directory = numberAt(file, isBig ? 8 : 4, offsetBytes, isLittle);
  while (directory && *directory != 0 && pages < mostPages) {
    const auto entries = numberAt(file, *directory, countBytes, isLittle);
    if (!entries || *entries == 0 || *entries > static_cast<std::uint64_t>(file.size())) break;
    ++pages;
    const std::uint64_t behindEntries =
        *directory + static_cast<std::uint64_t>(countBytes) + *entries * entryBytes;
    directory = numberAt(file, behindEntries, offsetBytes, isLittle);
  }
  return pages;
}

}  // namespace

int pictureCount(QIODevice& file) {
  if (!file.seek(0)) return 1;
  const QByteArray start = file.read(4);
  if (start == "GIF8") return std::max(1, framesOfGif(file));
  if (isTiff(file)) return std::max(1, pagesOfTiff(file));
  return std::max(1, framesOfPng(file));
}

}  // namespace orvanel
