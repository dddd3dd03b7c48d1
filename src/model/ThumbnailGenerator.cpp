#include "model/ThumbnailGenerator.h"

#include <QImage>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>

#include "raster/HalfFloat.h"

namespace orvanel {
namespace {

constexpr int boxWidth = ThumbnailGenerator::thumbnailPixels * ThumbnailGenerator::maxWidthToHeightRatio;
constexpr int boxHeight = ThumbnailGenerator::thumbnailPixels;
constexpr double pixelsPerPoint =
    static_cast<double>(ThumbnailGenerator::thumbnailPixels) / ThumbnailGenerator::thumbnailPoints;

/// Side of a square of the transparency board, in pixels of the thumbnail, and the greys of its squares.
constexpr int boardSquare = 6;
constexpr float evenSquare = 230.0F;
constexpr float oddSquare = 179.0F;
constexpr float white = 255.0F;

/// Red, green, blue and straight alpha, from 0 to 1.
using Sample = std::array<float, 4>;

double fittingScale(int width, int height) {
  return std::min(double{boxWidth} / width, double{boxHeight} / height);
}

Sample colorOf(std::uint64_t pixel, PixelFormat format) {
  const auto byteAt = [pixel](int channel) {
    return static_cast<float>(pixel >> (8 * channel) & 0xFFU) / 255.0F;
  };
  const auto wordAt = [pixel](int channel) {
    return static_cast<std::uint16_t>(pixel >> (16 * channel) & 0xFFFFU);
  };
  const auto unitAt = [&](int channel) { return static_cast<float>(wordAt(channel)) / 65535.0F; };
  const auto halfAt = [&](int channel) { return sanitized(halfToFloat(wordAt(channel))); };
  switch (format) {
    case PixelFormat::r16Float:
      return {halfAt(0), halfAt(0), halfAt(0), 1.0F};
    case PixelFormat::rg8Unorm:
      return {byteAt(0), byteAt(0), byteAt(0), byteAt(1)};
    case PixelFormat::rg16Unorm:
      return {unitAt(0), unitAt(0), unitAt(0), unitAt(1)};
    case PixelFormat::rgba16Float:
      return {halfAt(0), halfAt(1), halfAt(2), halfAt(3)};
    default:
      return {byteAt(0), byteAt(1), byteAt(2), byteAt(3)};
  }
}

/// The nearest pixel of the surface for each pixel of the thumbnail.
class Samples {
 public:
  explicit Samples(const Surface& surface)
      : size_(ThumbnailGenerator::fittedSize(surface.width(), surface.height())) {
    const double scale = fittingScale(surface.width(), surface.height());
    pixels_.reserve(static_cast<std::size_t>(size_.width()) * static_cast<std::size_t>(size_.height()));
    for (int y = 0; y < size_.height(); ++y) {
      const int row = std::min(surface.height() - 1, static_cast<int>(y / scale));
      for (int x = 0; x < size_.width(); ++x) {
        const int column = std::min(surface.width() - 1, static_cast<int>(x / scale));
        pixels_.push_back(colorOf(surface.pixelAt(column, row), surface.format()));
      }
    }
  }

  /// A picture of the samples over the board, each channel of it taken from one of theirs.
  [[nodiscard]] Thumbnail picture(const std::array<std::size_t, 3>& channels) const {
    QImage image(size_, QImage::Format_RGBA8888);
    image.setDevicePixelRatio(pixelsPerPoint);
    auto sample = pixels_.begin();
    for (int y = 0; y < size_.height(); ++y) {
      uchar* out = image.scanLine(y);
      for (int x = 0; x < size_.width(); ++x, ++sample) {
        const float board = (x / boardSquare + y / boardSquare) % 2 != 0 ? oddSquare : evenSquare;
        const float alpha = (*sample)[3];
        for (const std::size_t channel : channels) {
          const float value = alpha * (*sample)[channel] * white + (1.0F - alpha) * board;
          *out++ = static_cast<uchar>(std::lround(std::clamp(value, 0.0F, white)));
        }
        *out++ = 255;
      }
    }
    return std::make_shared<const QImage>(std::move(image));
  }

 private:
  QSize size_;
  std::vector<Sample> pixels_;
};

constexpr std::array<std::size_t, 3> allColors{0, 1, 2};

}  // namespace

QSize ThumbnailGenerator::fittedSize(int width, int height) {
  const double scale = fittingScale(width, height);
  const auto fitted = [scale](int side) { return std::max(static_cast<int>(std::lround(scale * side)), 1); };
  return {fitted(width), fitted(height)};
}

Thumbnail ThumbnailGenerator::colorThumbnail(const Surface& surface) {
  return Samples(surface).picture(allColors);
}

ColorThumbnails ThumbnailGenerator::colorThumbnails(const Surface& surface, ColorMode mode) {
  const Samples samples(surface);
  const bool isGrey = mode == ColorMode::grayscale8 || mode == ColorMode::grayscale16;
  ColorThumbnails made{.image = samples.picture(allColors), .channels = {}};
  for (std::size_t channel = 0; channel < (isGrey ? 1U : 3U); ++channel) {
    made.channels.push_back(samples.picture({channel, channel, channel}));
  }
  return made;
}

Thumbnail ThumbnailGenerator::maskThumbnail(const Surface& mask) {
  return Samples(mask).picture(allColors);
}

}  // namespace orvanel
