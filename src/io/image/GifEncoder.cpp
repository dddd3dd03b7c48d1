#include "io/image/GifEncoder.h"

#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "io/files/LazyLibrary.h"

namespace orvanel {
namespace {

struct GifLibrary : LazyLibrary {
  GifLibrary() : LazyLibrary(QStringLiteral("gif"), 7) {}

#define ORVANEL_GIF(name) decltype(::name)* name = find<decltype(::name)>(#name)
  ORVANEL_GIF(EGifOpen);
  ORVANEL_GIF(EGifPutScreenDesc);
  ORVANEL_GIF(EGifSetGifVersion);
  ORVANEL_GIF(EGifPutExtension);
  ORVANEL_GIF(EGifPutImageDesc);
  ORVANEL_GIF(EGifPutLine);
  ORVANEL_GIF(EGifCloseFile);
  ORVANEL_GIF(GifMakeMapObject);
  ORVANEL_GIF(GifFreeMapObject);
#undef ORVANEL_GIF
};

const GifLibrary& gif() {
  static const GifLibrary library;
  return library;
}

int appendBytes(GifFileType* file, const GifByteType* bytes, int count) {
  static_cast<QByteArray*>(file->UserData)->append(reinterpret_cast<const char*>(bytes), count);
  return count;
}

constexpr int paletteSize = 256;

/// Indexes of a palette whose last place is kept free for transparency.
struct IndexedPixels {
  QImage image;
  std::array<GifColorType, paletteSize> colors{};
  int transparentIndex = -1;
};

IndexedPixels indexed(const QImage& source) {
  IndexedPixels result;
  const bool hasAlpha = source.hasAlphaChannel();
  const QImage opaque = source.convertToFormat(QImage::Format_RGB32);
  result.image = opaque.convertToFormat(QImage::Format_Indexed8, Qt::DiffuseDither);
  QList<QRgb> table = result.image.colorTable();
  if (hasAlpha) {
    result.transparentIndex = paletteSize - 1;
    // The quantiser may have used all places: what lies at the last one moves to its nearest neighbour.
    std::uint8_t substitute = 0;
    if (table.size() == paletteSize) {
      int nearest = 1 << 30;
      const QRgb lost = table[paletteSize - 1];
      for (int i = 0; i + 1 < paletteSize; ++i) {
        const int red = qRed(table[i]) - qRed(lost);
        const int green = qGreen(table[i]) - qGreen(lost);
        const int blue = qBlue(table[i]) - qBlue(lost);
        const int distance = red * red + green * green + blue * blue;
        if (distance >= nearest) continue;
        nearest = distance;
        substitute = static_cast<std::uint8_t>(i);
      }
    }
    for (int y = 0; y < source.height(); ++y) {
      const auto* pixels = reinterpret_cast<const QRgb*>(source.constScanLine(y));
      std::uint8_t* indexes = result.image.scanLine(y);
      for (int x = 0; x < source.width(); ++x) {
        if (qAlpha(pixels[x]) < 128) {
          indexes[x] = paletteSize - 1;
        } else if (indexes[x] == paletteSize - 1) {
          indexes[x] = substitute;
        }
      }
    }
  }
  for (qsizetype i = 0; i < std::min<qsizetype>(table.size(), paletteSize); ++i) {
    result.colors[static_cast<std::size_t>(i)] = {static_cast<GifByteType>(qRed(table[i])),
                                                  static_cast<GifByteType>(qGreen(table[i])),
                                                  static_cast<GifByteType>(qBlue(table[i]))};
  }
  return result;
}

bool writeFrame(const GifLibrary& api, GifFileType* file, const IndexedPixels& pixels, ColorMapObject* map,
                const Progress& progress) {
  const int width = pixels.image.width();
  const int height = pixels.image.height();
  constexpr int bitsOfResolution = 8;
  // Transparency came with the second version of the format.
  api.EGifSetGifVersion(file, pixels.transparentIndex >= 0);
  if (api.EGifPutScreenDesc(file, width, height, bitsOfResolution, 0, map) == GIF_ERROR) return false;
  if (pixels.transparentIndex >= 0) {
    const std::array<GifByteType, 4> control{1, 0, 0, static_cast<GifByteType>(pixels.transparentIndex)};
    if (api.EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, 4, control.data()) == GIF_ERROR) return false;
  }
  if (api.EGifPutImageDesc(file, 0, 0, width, height, false, nullptr) == GIF_ERROR) return false;
  std::vector<GifPixelType> row(static_cast<std::size_t>(width));
  for (int y = 0; y < height; ++y) {
    if (progress.isCancelled()) return false;
    std::copy_n(pixels.image.constScanLine(y), width, row.begin());
    if (api.EGifPutLine(file, row.data(), width) == GIF_ERROR) return false;
  }
  return true;
}

}  // namespace

std::optional<QByteArray> encodeGif(const QImage& image, const Progress& progress) {
  const GifLibrary& api = gif();
  if (!api.isComplete() || image.isNull()) return std::nullopt;
  const IndexedPixels pixels =
      indexed(image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32));
  constexpr double indexedShare = 0.7;
  progress.tell(indexedShare);
  QByteArray bytes;
  int error = 0;
  GifFileType* file = api.EGifOpen(&bytes, appendBytes, &error);
  if (file == nullptr) return std::nullopt;
  ColorMapObject* map = api.GifMakeMapObject(paletteSize, pixels.colors.data());
  const bool written = map != nullptr && writeFrame(api, file, pixels, map, progress);
  if (map != nullptr) api.GifFreeMapObject(map);
  const bool closed = api.EGifCloseFile(file, &error) != GIF_ERROR;
  if (!written || !closed) return std::nullopt;
  return bytes;
}

}  // namespace orvanel
