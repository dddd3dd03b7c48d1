#include "io/image/ImageHeader.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <cstdint>

namespace orvanel {
namespace {

/// Numbers of a TIFF in the byte order that its first two bytes tell; nothing beyond the end.
class TiffNumbers {
 public:
  TiffNumbers(QIODevice& file, bool isLittleEndian) : file_(file), isLittle_(isLittleEndian) {}

  [[nodiscard]] std::optional<std::uint16_t> word(std::uint64_t offset) const {
    return number<std::uint16_t>(offset);
  }
  [[nodiscard]] std::optional<std::uint32_t> longWord(std::uint64_t offset) const {
    return number<std::uint32_t>(offset);
  }

 private:
  template <typename Number>
  [[nodiscard]] std::optional<Number> number(std::uint64_t offset) const {
    std::array<char, sizeof(Number)> bytes{};
    if (!file_.seek(static_cast<qint64>(offset)) ||
        file_.read(bytes.data(), sizeof(Number)) != qint64{sizeof(Number)}) {
      return std::nullopt;
    }
    return isLittle_ ? qFromLittleEndian<Number>(bytes.data()) : qFromBigEndian<Number>(bytes.data());
  }

  QIODevice& file_;
  bool isLittle_;
};

constexpr std::uint16_t tagBitsPerSample = 258;
constexpr std::uint16_t tagPhotometric = 262;
constexpr std::uint16_t tagSamplesPerPixel = 277;
constexpr std::uint64_t directoryEntryBytes = 12;

QByteArray startOf(QIODevice& file, qint64 count) {
  return file.seek(0) ? file.read(count) : QByteArray();
}

}  // namespace

std::optional<ImageTraits> traitsOfPng(const QByteArray& start) {
  constexpr std::array<char, 8> signature{'\x89', 'P', 'N', 'G', '\r', '\n', '\x1a', '\n'};
  if (start.size() < 26 || !start.startsWith(QByteArrayView(signature.data(), signature.size()))) {
    return std::nullopt;
  }
  const int depth = static_cast<unsigned char>(start[24]) > 8 ? 16 : 8;
  switch (start[25]) {
    case 0:
      return ImageTraits{.isMonochrome = true, .bitsPerComponent = depth, .bitsPerPixel = depth};
    case 4:
      return ImageTraits{.isMonochrome = true, .bitsPerComponent = depth, .bitsPerPixel = 2 * depth};
    case 2:
    case 6:
      return ImageTraits{.isMonochrome = false, .bitsPerComponent = depth, .bitsPerPixel = 4 * depth};
    default:
      return std::nullopt;  // a palette holds colours, whatever its indexes take
  }
}

std::optional<ImageTraits> traitsOfTiff(QIODevice& file) {
  const QByteArray start = startOf(file, 4);
  const bool isLittle = start == QByteArrayView("II*\0", 4);
  if (!isLittle && start != QByteArrayView("MM\0*", 4)) return std::nullopt;
  const TiffNumbers tiff(file, isLittle);
  const auto directory = tiff.longWord(4);
  const auto count = directory ? tiff.word(*directory) : std::nullopt;
  if (!count) return std::nullopt;
  std::optional<std::uint16_t> photometric;
  int bits = 1;
  int samples = 1;
  for (std::uint64_t i = 0; i < *count; ++i) {
    const std::uint64_t entry = std::uint64_t{*directory} + 2 + i * directoryEntryBytes;
    const auto tag = tiff.word(entry);
    const auto values = tiff.longWord(entry + 4);
    if (!tag || !values) return std::nullopt;
    const auto value = tiff.word(entry + 8);
    if (*tag == tagPhotometric) photometric = value;
    if (*tag == tagSamplesPerPixel) samples = std::max<int>(1, value.value_or(1));
    if (*tag == tagBitsPerSample) {
      // More than two values don't fit in the entry and stand elsewhere.
      const auto elsewhere = *values > 2 ? tiff.longWord(entry + 8) : std::nullopt;
      bits = (elsewhere ? tiff.word(*elsewhere) : value).value_or(8);
    }
  }
  constexpr std::uint16_t paletteColors = 3;
  if (!photometric || *photometric == paletteColors) return std::nullopt;
  const bool isGrey = *photometric <= 1;  // either end may be white
  const int depth = bits > 8 ? 16 : 8;
  return ImageTraits{.isMonochrome = isGrey,
                     .bitsPerComponent = depth,
                     .bitsPerPixel = depth * (isGrey ? std::min(samples, 2) : 4)};
}

std::optional<ImageTraits> traitsOfHeader(QIODevice& file) {
  constexpr qint64 pngHeaderBytes = 26;
  if (auto traits = traitsOfPng(startOf(file, pngHeaderBytes))) return traits;
  return traitsOfTiff(file);
}

}  // namespace orvanel
