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

/// What a PNG tells of its colours, as it stands in its chunks; numbers are hundred-thousandths.
struct PngColors {
  bool hasProfile = false;
  bool isSrgb = false;
  std::optional<std::uint32_t> gamma;
  QByteArray chromaticities;
};

/// Chunks up to the pixels; what is damaged tells nothing.
PngColors colorsOfPng(QIODevice& file) {
  PngColors colors;
  constexpr qint64 signatureBytes = 8;
  constexpr qint64 checkSumBytes = 4;
  for (qint64 at = signatureBytes; file.seek(at);) {
    const QByteArray start = file.read(8);
    if (start.size() < 8) return colors;
    const auto length = qFromBigEndian<std::uint32_t>(start.constData());
    const QByteArray type = start.sliced(4);
    if (type == "IDAT" || type == "IEND") return colors;
    if (type == "iCCP") colors.hasProfile = true;
    if (type == "sRGB") colors.isSrgb = true;
    if (type == "gAMA" && length == 4) {
      const QByteArray value = file.read(length);
      if (value.size() == 4) colors.gamma = qFromBigEndian<std::uint32_t>(value.constData());
    }
    if (type == "cHRM" && length == 32) colors.chromaticities = file.read(length);
    at += 8 + qint64{length} + checkSumBytes;
  }
  return colors;
}

bool areSrgbs(const QByteArray& chromaticities) {
  constexpr std::array<int, 8> srgb{31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000};
  constexpr int tolerance = 100;
  if (chromaticities.size() != 32) return false;
  for (std::size_t i = 0; i < srgb.size(); ++i) {
    const auto value = qFromBigEndian<std::int32_t>(chromaticities.constData() + 4 * i);
    if (value < srgb.at(i) - tolerance || value > srgb.at(i) + tolerance) return false;
  }
  return true;
}

}  // namespace

bool isTiff(QIODevice& file) {
  const QByteArray start = startOf(file, 3);
  return start == "II*" || start == "II+" || start == QByteArrayView("MM\0", 3);
}

bool isPngForDisplay(QIODevice& file) {
  if (startOf(file, 4) != "\x89PNG") return false;
  const PngColors colors = colorsOfPng(file);
  if (colors.hasProfile) return false;
  if (colors.isSrgb) return true;
  constexpr std::uint32_t displayGamma = 45455;
  constexpr std::uint32_t tolerance = displayGamma / 20;
  const bool isDisplayGamma =
      colors.gamma && *colors.gamma >= displayGamma - tolerance && *colors.gamma <= displayGamma + tolerance;
  return isDisplayGamma && (colors.chromaticities.isEmpty() || areSrgbs(colors.chromaticities));
}

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
