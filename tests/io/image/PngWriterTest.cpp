#include "io/image/PngWriter.h"

#include <gtest/gtest.h>

#include <QColorSpace>
#include <QImage>
#include <random>
#include <vector>

#include "io/document/Preview.h"
#include "io/image/EightBit.h"
#include "raster/HalfFloat.h"

namespace orvanel {
namespace {

/// Gradients, edges and noise, so that every PNG filter is the best one for some row.
std::vector<std::uint8_t> pixelsOf(int width, int height, int channels) {
  std::mt19937 random(11);
  std::vector<std::uint8_t> pixels;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int c = 0; c < channels; ++c) {
        const unsigned value =
            y % 7 == 0 ? random() : static_cast<unsigned>((x * 3 + y * y / 5 + c * 40) ^ (x / 9));
        pixels.push_back(static_cast<std::uint8_t>(value & 0xFFU));
      }
    }
  }
  return pixels;
}

QByteArray encoded(const std::vector<std::uint8_t>& pixels, int width, int height, PngChannels channels) {
  const std::size_t rowBytes = pixels.size() / static_cast<std::size_t>(height);
  return encodePng({width, height, channels, [&](int y, std::uint8_t* row) {
                      std::copy_n(pixels.data() + static_cast<std::size_t>(y) * rowBytes, rowBytes, row);
                    }});
}

TEST(PngWriter, isReadBackPixelForPixel) {
  for (const auto& [width, height] : {std::pair{1, 1}, {3, 2}, {640, 480}, {1, 500}, {2000, 700}}) {
    for (const auto channels : {PngChannels::rgb, PngChannels::rgba}) {
      const int count = channels == PngChannels::rgb ? 3 : 4;
      const auto pixels = pixelsOf(width, height, count);
      QImage image = QImage::fromData(encoded(pixels, width, height, channels), "png");
      ASSERT_EQ(image.size(), QSize(width, height));
      EXPECT_EQ(image.hasAlphaChannel(), count == 4);
      image.convertTo(count == 4 ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
      std::vector<std::uint8_t> read;
      for (int y = 0; y < height; ++y) {
        read.insert(read.end(), image.constScanLine(y), image.constScanLine(y) + width * count);
      }
      EXPECT_TRUE(read == pixels) << width << " x " << height << " x " << count;
    }
  }
}

TEST(PngWriter, isTaggedAsSrgb) {
  const QByteArray png = encoded(pixelsOf(5, 5, 4), 5, 5, PngChannels::rgba);
  EXPECT_TRUE(png.contains("sRGB"));
  EXPECT_EQ(QImage::fromData(png, "png").colorSpace(), QColorSpace(QColorSpace::SRgb));
}

TEST(PngWriter, isDeterministic) {
  const auto pixels = pixelsOf(1500, 900, 4);
  EXPECT_TRUE(encoded(pixels, 1500, 900, PngChannels::rgba) == encoded(pixels, 1500, 900, PngChannels::rgba));
}

TEST(EightBit, roundsAndClamps) {
  EXPECT_EQ(eightBitsOfHalf(floatToHalf(0.0F)), 0);
  EXPECT_EQ(eightBitsOfHalf(floatToHalf(1.0F)), 255);
  EXPECT_EQ(eightBitsOfHalf(floatToHalf(0.5F)), 128);
  EXPECT_EQ(eightBitsOfHalf(floatToHalf(1.5F)), 255);
  EXPECT_EQ(eightBitsOfHalf(floatToHalf(-0.5F)), 0);
  EXPECT_EQ(eightBitsOfHalf(0x7C00), 255);  // infinity
  EXPECT_EQ(eightBitsOfHalf(0xFC00), 0);
  EXPECT_EQ(eightBitsOfHalf(0x7E00), 0);  // no number
  for (int value = 0; value < 256; ++value) {
    EXPECT_EQ(eightBitsOfHalf(floatToHalf(static_cast<float>(value) / 255.0F)), value);
  }
}

TEST(Preview, fitsABoxAndIsNeverEnlarged) {
  EXPECT_EQ(previewSize(300, 1200), QSize(128, 512));
  EXPECT_EQ(previewSize(200, 100), QSize(200, 100));
  EXPECT_EQ(previewSize(4000, 1), QSize(512, 1));
  EXPECT_EQ(previewSize(512, 512), QSize(512, 512));
  EXPECT_EQ(previewSize(16384, 16384), QSize(512, 512));
  EXPECT_EQ(previewSize(784, 784), QSize(512, 512));
  EXPECT_EQ(previewSize(1, 1), QSize(1, 1));
}

TEST(Preview, aLineKeepsItsHeight) {
  for (const QSize canvas : {QSize(4000, 1), QSize(1, 4000)}) {
    Surface composite(PixelFormat::rgba8Unorm, canvas.width(), canvas.height());
    composite.fill(0xFF804020U);
    const QImage image = QImage::fromData(previewPng(composite), "png");
    ASSERT_EQ(image.size(), canvas.boundedTo(QSize(512, 512)));
    EXPECT_EQ(image.pixel(0, 0), qRgb(0x20, 0x40, 0x80));
    EXPECT_EQ(image.pixel(image.width() - 1, image.height() - 1), qRgb(0x20, 0x40, 0x80));
  }
}

TEST(Preview, keepsSmallImagesUnchanged) {
  Surface composite(PixelFormat::rgba8Unorm, 3, 2);
  const std::vector<std::uint8_t> pixels{1, 2, 3, 255, 4, 5, 6, 255, 7,  8,  9,  128,
                                         9, 8, 7, 255, 6, 5, 4, 255, 30, 20, 10, 255};
  composite.writeRect(composite.bounds(), reinterpret_cast<const std::byte*>(pixels.data()), 12);
  QImage image = QImage::fromData(previewPng(composite), "png").convertToFormat(QImage::Format_RGBA8888);
  ASSERT_EQ(image.size(), QSize(3, 2));
  for (int y = 0; y < 2; ++y) {
    for (int i = 0; i < 12; ++i) {
      EXPECT_EQ(image.constScanLine(y)[i], pixels[static_cast<std::size_t>(y * 12 + i)]);
    }
  }
}

TEST(Preview, averagesByCoverage) {
  // Each pixel of the preview covers two columns, one of them fully transparent.
  Surface composite(PixelFormat::rgba16Float, 1024, 2);
  for (int x = 0; x < 1024; x += 2) {
    for (int y = 0; y < 2; ++y) {
      const std::array<std::uint16_t, 4> pixel{floatToHalf(1.0F), floatToHalf(0.5F), 0, floatToHalf(1.0F)};
      composite.writeRect({x, y, 1, 1}, reinterpret_cast<const std::byte*>(pixel.data()), 8);
    }
  }
  const QImage image =
      QImage::fromData(previewPng(composite), "png").convertToFormat(QImage::Format_RGBA8888);
  ASSERT_EQ(image.size(), QSize(512, 1));
  const uchar* pixel = image.constScanLine(0) + 4 * 100;
  EXPECT_EQ(pixel[0], 255);
  EXPECT_EQ(pixel[1], 128);
  EXPECT_EQ(pixel[2], 0);
  EXPECT_EQ(pixel[3], 128);
}

}  // namespace
}  // namespace orvanel
