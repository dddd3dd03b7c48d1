#include "model/ThumbnailGenerator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "model/PixelSupport.h"

namespace orvanel {
namespace {

using namespace test;

constexpr int even = 230;
constexpr int odd = 179;

int boardAt(int x, int y) {
  return (x / 6 + y / 6) % 2 != 0 ? odd : even;
}

/// Over the board, rounded to 8 bits.
int shown(double value, double alpha, int x, int y) {
  return static_cast<int>(
      std::lround(std::clamp(alpha * value * 255.0 + (1.0 - alpha) * boardAt(x, y), 0.0, 255.0)));
}

class ThumbnailGeneratorTest : public testing::TestWithParam<ColorMode> {};

INSTANTIATE_TEST_SUITE_P(Modes, ThumbnailGeneratorTest, testing::ValuesIn(allColorModes), modeName);

TEST_P(ThumbnailGeneratorTest, EveryPixelIsTheNearestSampleOverTheBoard) {
  std::mt19937 random(11);
  const Surface surface = randomSurface(layerPixelFormat(GetParam()), 500, 333, random);
  const reference::Image pixels = reference::imageOf(surface);
  const ColorThumbnails made = ThumbnailGenerator::colorThumbnails(surface, GetParam());
  const QImage& image = *made.image;
  const double scale = std::min(192.0 / 500, 96.0 / 333);
  ASSERT_EQ(image.size(), QSize(static_cast<int>(std::lround(500 * scale)), 96));
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const auto& sample =
          pixels.at(std::min(499, static_cast<int>(x / scale)), std::min(332, static_cast<int>(y / scale)));
      const QRgb pixel = image.pixel(x, y);
      ASSERT_EQ(qAlpha(pixel), 255);
      ASSERT_NEAR(qRed(pixel), shown(sample[0], sample[3], x, y), 1);
      ASSERT_NEAR(qGreen(pixel), shown(sample[1], sample[3], x, y), 1);
      ASSERT_NEAR(qBlue(pixel), shown(sample[2], sample[3], x, y), 1);
      for (std::size_t c = 0; c < made.channels.size(); ++c) {
        const QRgb channel = made.channels[c]->pixel(x, y);
        ASSERT_NEAR(qRed(channel), shown(sample[c], sample[3], x, y), 1);
        ASSERT_EQ(qRed(channel), qBlue(channel));
      }
    }
  }
}

TEST_P(ThumbnailGeneratorTest, ThereIsOnePictureForEachColourChannel) {
  const Surface surface(layerPixelFormat(GetParam()), 10, 10);
  const bool isGrey = GetParam() == ColorMode::grayscale8 || GetParam() == ColorMode::grayscale16;
  EXPECT_EQ(ThumbnailGenerator::colorThumbnails(surface, GetParam()).channels.size(), isGrey ? 1U : 3U);
}

TEST(ThumbnailSizeTest, ThePictureFitsABoxTwiceAsWideAsHigh) {
  EXPECT_EQ(ThumbnailGenerator::fittedSize(1000, 1000), QSize(96, 96));
  EXPECT_EQ(ThumbnailGenerator::fittedSize(2000, 1000), QSize(192, 96));
  EXPECT_EQ(ThumbnailGenerator::fittedSize(3000, 1000), QSize(192, 64));
  EXPECT_EQ(ThumbnailGenerator::fittedSize(500, 1000), QSize(48, 96));
  EXPECT_EQ(ThumbnailGenerator::fittedSize(10, 10), QSize(96, 96)) << "small canvases are enlarged";
}

TEST(ThumbnailSizeTest, EachSideIsAtLeastOnePixel) {
  EXPECT_EQ(ThumbnailGenerator::fittedSize(16384, 1), QSize(192, 1));
  EXPECT_EQ(ThumbnailGenerator::fittedSize(1, 16384), QSize(1, 96));
}

TEST(ThumbnailSizeTest, TwoPixelsMakeAPoint) {
  const Thumbnail made = ThumbnailGenerator::colorThumbnail(Surface(PixelFormat::rgba8Unorm, 300, 100));
  EXPECT_EQ(made->deviceIndependentSize(), QSizeF(96.0, 32.0));
}

TEST(ThumbnailBoardTest, TransparencyShowsSquaresOfSixPixels) {
  const Thumbnail made = ThumbnailGenerator::colorThumbnail(Surface(PixelFormat::rgba16Float, 100, 100));
  for (const auto& [x, y, grey] :
       {std::tuple(0, 0, even), {5, 5, even}, {6, 5, odd}, {6, 6, even}, {0, 6, odd}}) {
    EXPECT_EQ(made->pixel(x, y), qRgb(grey, grey, grey)) << x << ", " << y;
  }
}

TEST(MaskThumbnailTest, AMaskIsGreyWithoutABoard) {
  for (const auto& [value, grey] : {std::pair(0.0F, 0), {0.5F, 128}, {1.0F, 255}}) {
    const Thumbnail made = ThumbnailGenerator::maskThumbnail(filledMask(64, 64, value));
    EXPECT_EQ(made->pixel(0, 0), qRgb(grey, grey, grey));
    EXPECT_EQ(made->pixel(7, 0), qRgb(grey, grey, grey));
  }
}

TEST(ThumbnailValuesTest, ValuesBeyondTheScaleAreClamped) {
  Surface surface(PixelFormat::rgba16Float, 4, 4);
  const std::uint64_t bright = floatToHalf(7.0F);
  const std::uint64_t dark = floatToHalf(-7.0F);
  surface.fill(bright | dark << 16U | std::uint64_t{0x7E00U} << 32U | std::uint64_t{halfOne} << 48U);
  EXPECT_EQ(ThumbnailGenerator::colorThumbnail(surface)->pixel(0, 0), qRgb(255, 0, 0));
}

}  // namespace
}  // namespace orvanel
