#include "io/image/ImageHeader.h"

#include <QtEndian>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "io/image/TiffNumbers.h"

namespace orvanel {
namespace {

constexpr std::uint16_t tagBitsPerSample = 258;
constexpr std::uint16_t tagPhotometric = 262;
constexpr std::uint16_t tagSamplesPerPixel = 277;

QByteArray startOf(QIODevice& file, qint64 count) {
  return file.seek(0) ? file.read(count) : QByteArray();
}

bool isPng(QIODevice& file) {
  return startOf(file, 4) == "\x89PNG";
}

/// Calls `visit(type, length)` for each chunk of a PNG, with the file positioned at the chunk's data. Stops
/// at the first damaged chunk.
template <typename Visit>
void forEachPngChunk(QIODevice& file, Visit&& visit) {
  constexpr qint64 signatureBytes = 8;
  constexpr qint64 checkSumBytes = 4;
  for (qint64 at = signatureBytes; at < file.size() && file.seek(at);) {
    const QByteArray start = file.read(8);
    if (start.size() < 8) return;
    const auto length = qFromBigEndian<std::uint32_t>(start.constData());
    visit(start.sliced(4), length);
    at += 8 + qint64{length} + checkSumBytes;
  }
}

/// The chunks of a PNG that define its colour space. Numbers are in units of 1/100000.
struct PngColors {
  bool hasProfile = false;
  bool isSrgb = false;
  std::optional<std::uint32_t> gamma;
  QByteArray chromaticities;
};

PngColors colorsOfPng(QIODevice& file) {
  PngColors colors;
  forEachPngChunk(file, [&](const QByteArray& type, std::uint32_t length) {
    if (type == "iCCP") colors.hasProfile = true;
    if (type == "sRGB") colors.isSrgb = true;
    if (type == "gAMA" && length == 4) {
      const QByteArray value = file.read(length);
      if (value.size() == 4) colors.gamma = qFromBigEndian<std::uint32_t>(value.constData());
    }
    if (type == "cHRM" && length == 32) colors.chromaticities = file.read(length);
  });
  return colors;
}

std::optional<PixelDensity> densityOfPng(QIODevice& file) {
  std::optional<PixelDensity> density;
  forEachPngChunk(file, [&](const QByteArray& type, std::uint32_t length) {
    constexpr std::uint32_t bytes = 9;
    if (type != "pHYs" || length != bytes) return;
    const QByteArray data = file.read(length);
    const bool isPerMeter = data.size() == bytes && data[8] == 1;
    if (!isPerMeter) return;
    density = PixelDensity{qFromBigEndian<std::int32_t>(data.constData()),
                           qFromBigEndian<std::int32_t>(data.constData() + 4)};
  });
  return density;
}

/// The density in the JFIF header (ITU-T T.871), which has to be the first segment.
std::optional<PixelDensity> densityOfJpeg(const QByteArray& start) {
  if (start.size() < 18 || start.sliced(2, 2) != "\xFF\xE0" || start.sliced(6, 4) != "JFIF")
    return std::nullopt;
  const char unit = start[13];
  if (unit != 1 && unit != 2) return std::nullopt;
  const double metres = unit == 1 ? 100 / 2.54 : 100;
  const auto perMeter = [&](int offset) {
    return static_cast<int>(std::lround(qFromBigEndian<std::uint16_t>(start.constData() + offset) * metres));
  };
  return PixelDensity{perMeter(14), perMeter(16)};
}

std::optional<PixelDensity> densityOfBmp(const QByteArray& start) {
  constexpr std::int32_t longHeaderBytes = 40;
  if (start.size() < 46 || qFromLittleEndian<std::int32_t>(start.constData() + 14) < longHeaderBytes) {
    return std::nullopt;
  }
  return PixelDensity{qFromLittleEndian<std::int32_t>(start.constData() + 38),
                      qFromLittleEndian<std::int32_t>(start.constData() + 42)};
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

std::optional<PixelDensity> densityOfHeader(QIODevice& file) {
  constexpr qint64 headerBytes = 46;
  const QByteArray start = startOf(file, headerBytes);
  std::optional<PixelDensity> density;
  if (isPng(file)) density = densityOfPng(file);
  if (start.startsWith("\xFF\xD8")) density = densityOfJpeg(start);
  if (start.startsWith("BM")) density = densityOfBmp(start);
  constexpr int most = 10'000'000;
  const auto isPlausible = [](int perMeter) { return perMeter > 0 && perMeter <= most; };
  if (!density || !isPlausible(density->acrossPerMeter) || !isPlausible(density->downPerMeter)) {
    return std::nullopt;
  }
  return density;
}

QByteArray exifOfPng(QIODevice& file) {
  QByteArray exif;
  if (!isPng(file)) return exif;
  constexpr std::uint32_t mostBytes = 1U << 20U;
  forEachPngChunk(file, [&](const QByteArray& type, std::uint32_t length) {
    if (type == "eXIf" && length <= mostBytes) exif = file.read(length);
  });
  return exif;
}

int framesOfPng(QIODevice& file) {
  std::int32_t frames = 1;
  if (!isPng(file)) return frames;
  forEachPngChunk(file, [&](const QByteArray& type, std::uint32_t length) {
    constexpr std::uint32_t bytes = 8;
    if (type != "acTL" || length != bytes) return;
    const QByteArray data = file.read(length);
    if (data.size() == bytes) frames = qFromBigEndian<std::int32_t>(data.constData());
  });
  return std::max(1, frames);
}

bool isTiff(QIODevice& file) {
  const QByteArray start = startOf(file, 3);
  return start == "II*" || start == "II+" || start == QByteArrayView("MM\0", 3);
}

bool isPngForDisplay(QIODevice& file) {
  if (!isPng(file)) return false;
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
      return std::nullopt;  // palettes have 8 bits a component, whatever the depth of their indexes
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
    const std::uint64_t entry = std::uint64_t{*directory} + 2 + i * TiffNumbers::entryBytes;
    const auto tag = tiff.word(entry);
    const auto values = tiff.longWord(entry + 4);
    if (!tag || !values) return std::nullopt;
    const auto value = tiff.word(entry + 8);
    if (*tag == tagPhotometric) photometric = value;
    if (*tag == tagSamplesPerPixel) samples = std::max<int>(1, value.value_or(1));
    if (*tag == tagBitsPerSample) {
      // More than two values don't fit in the entry, which then holds their offset.
      const auto elsewhere = *values > 2 ? tiff.longWord(entry + 8) : std::nullopt;
      bits = (elsewhere ? tiff.word(*elsewhere) : value).value_or(8);
    }
  }
  constexpr std::uint16_t paletteColors = 3;
  if (!photometric || *photometric == paletteColors) return std::nullopt;
  const bool isGrey = *photometric <= 1;  // 0 is white or 0 is black
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
