#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <array>
#include <cmath>
#include <vector>

#include "io/image/FlatImage.h"
#include "io/image/ImageFixture.h"

namespace orvanel {
namespace {

class ImageColors : public ::testing::Test {
 protected:
  FlatImage opened(const QByteArray& bytes, const QString& name = QStringLiteral("image")) {
    QFile file(folder.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    auto image = readFlatImage(file.fileName(), context);
    EXPECT_TRUE(image.has_value()) << (image ? "" : image.error().message.toStdString());
    return image ? *image : FlatImage{};
  }

  FlatImage opened(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(buffer.open(QIODevice::WriteOnly));
    EXPECT_TRUE(image.save(&buffer, format));
    return opened(bytes);
  }

  QTemporaryDir folder;
  MetalContext& context = MetalContext::shared();
};

/// The 8-bit value of an opaque grey pixel of any depth.
double greyAt(const FlatImage& image, int x, int y) {
  const std::uint64_t pixel = image.pixels->pixelAt(x, y);
  if (image.mode == ColorMode::grayscale8) return static_cast<double>(pixel & 0xFFU) / 255.0;
  EXPECT_EQ(image.mode, ColorMode::grayscale16);
  return static_cast<double>(pixel & 0xFFFFU) / 65535.0;
}

double displayOfLight(double light) {
  return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

QImage twoColors(QRgb first, QRgb second) {
  QImage image(20, 10, QImage::Format_Mono);
  image.setColorTable({first, second});
  image.fill(0);
  image.setPixel(3, 4, 1);
  return image;
}

QImage greyRamp() {
  QImage image(256, 1, QImage::Format_Grayscale8);
  for (int x = 0; x < 256; ++x) image.scanLine(0)[x] = static_cast<uchar>(x);
  return image;
}

constexpr double oneStepOfEightBits = 1.01 / 255.0;

TEST_F(ImageColors, APaletteOfTwoColorsIsColor) {
  for (const char* format : {"png", "bmp"}) {
    const FlatImage image = opened(twoColors(qRgb(255, 0, 0), qRgb(0, 0, 255)), format);
    EXPECT_EQ(image.mode, ColorMode::rgb8) << format;
    EXPECT_EQ(image.pixels->pixelAt(0, 0), 0xFF0000FFU) << format;
    EXPECT_EQ(image.pixels->pixelAt(3, 4), 0xFFFF0000U) << format;
  }
}

TEST_F(ImageColors, APaletteOfBlackAndOneColorIsColor) {
  EXPECT_EQ(opened(twoColors(qRgb(0, 0, 0), qRgb(7, 7, 8)), "png").mode, ColorMode::rgb8);
}

TEST_F(ImageColors, ATransparentColorOfTwoStaysTransparent) {
  const FlatImage image = opened(twoColors(qRgba(0, 90, 200, 255), qRgba(10, 20, 30, 40)), "png");
  EXPECT_EQ(image.mode, ColorMode::rgb8);
  EXPECT_EQ(image.pixels->pixelAt(0, 0), 0xFFC85A00U);
  EXPECT_EQ(image.pixels->pixelAt(3, 4), 0x281E140AU);
}

TEST_F(ImageColors, TwoGreysAreGrey) {
  for (const char* format : {"png", "bmp", "pbm", "tiff"}) {
    const FlatImage image = opened(twoColors(qRgb(0, 0, 0), qRgb(255, 255, 255)), format);
    EXPECT_EQ(image.mode, ColorMode::grayscale8) << format;
    EXPECT_EQ(image.pixels->pixelAt(0, 0), 0xFF00U) << format;
    EXPECT_EQ(image.pixels->pixelAt(3, 4), 0xFFFFU) << format;
  }
  const FlatImage muted = opened(twoColors(qRgb(60, 60, 60), qRgb(200, 200, 200)), "png");
  EXPECT_EQ(muted.mode, ColorMode::grayscale8);
  EXPECT_EQ(muted.pixels->pixelAt(3, 4), 0xFFC8U);
}

TEST_F(ImageColors, ALongerPaletteIsColorEvenIfAllItsEntriesAreGrey) {
  QImage palette(16, 16, QImage::Format_Indexed8);
  palette.setColorTable({qRgb(0, 0, 0), qRgb(90, 90, 90), qRgb(180, 180, 180)});
  palette.fill(1);
  for (const char* format : {"png", "bmp"}) {
    const FlatImage image = opened(palette, format);
    EXPECT_EQ(image.mode, ColorMode::rgb8) << format;
    EXPECT_EQ(image.pixels->pixelAt(1, 1), 0xFF5A5A5AU) << format;
  }
}

TEST_F(ImageColors, AGreyProfileIsConvertedAndTheImageStaysGrey) {
  QImage image = greyRamp();
  image.setColorSpace(testing::greyProfile(1.0));
  ASSERT_TRUE(image.colorSpace().isValid());
  const QByteArray jpeg = testing::jpegWithProfile(greyRamp(), testing::greyProfile(1.0));
  for (const FlatImage& found : {opened(image, "png"), opened(image, "tiff"), opened(jpeg)}) {
    ASSERT_EQ(found.mode, ColorMode::grayscale8);
    for (int x = 0; x < 256; ++x) {
      EXPECT_NEAR(greyAt(found, x, 0), displayOfLight(x / 255.0), oneStepOfEightBits) << x;
    }
  }
}

TEST_F(ImageColors, TheGammaOfAPngAppliesToGreyAndColor) {
  constexpr std::uint32_t linear = 100000;
  QImage grey(4, 4, QImage::Format_Grayscale8);
  grey.fill(100);
  const FlatImage image = opened(testing::pngWithGamma(grey, linear));
  ASSERT_EQ(image.mode, ColorMode::grayscale8);
  EXPECT_EQ(image.pixels->pixelAt(1, 1), 0xFF00U + 168U);
  grey.convertTo(QImage::Format_RGB32);
  EXPECT_EQ(opened(testing::pngWithGamma(grey, linear)).pixels->pixelAt(1, 1), 0xFFA8A8A8U);
}

/// A ramp of all levels of red, with blue inverted.
QImage colorRamp() {
  QImage image(256, 1, QImage::Format_RGB32);
  for (int x = 0; x < 256; ++x) image.setPixel(x, 0, qRgb(x, 100, 255 - x));
  return image;
}

constexpr std::array<std::uint32_t, 8> srgbPlaces{31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000};
constexpr std::uint32_t displayGamma = 45455;

TEST_F(ImageColors, APngForDisplayKeepsEveryLevel) {
  const QByteArray plain = testing::pngOf(colorRamp());
  const QByteArray srgbChunk(1, '\0');
  const QByteArray withDisplayGamma = testing::withGamma(plain, displayGamma);
  const std::vector<QByteArray> files{
      testing::withChunk(plain, "sRGB", srgbChunk),
      testing::withChunk(withDisplayGamma, "sRGB", srgbChunk),
      withDisplayGamma,
      testing::withGamma(plain, 45000),
      testing::withChromaticities(withDisplayGamma, srgbPlaces),
      testing::withChunk(testing::withChromaticities(withDisplayGamma, srgbPlaces), "sRGB", srgbChunk)};
  for (std::size_t file = 0; file < files.size(); ++file) {
    const FlatImage found = opened(files[file]);
    for (unsigned x = 0; x < 256; ++x) {
      EXPECT_EQ(found.pixels->pixelAt(static_cast<int>(x), 0),
                0xFF000000U | (255 - x) << 16U | 100U << 8U | x)
          << "file " << file;
    }
  }
}

TEST_F(ImageColors, APngOfAnotherGammaOrOtherPrimariesIsConverted) {
  const QByteArray plain = testing::pngOf(colorRamp());
  const std::uint64_t asItStands = 0xFF9B6464U;  // of column 100
  EXPECT_NE(opened(testing::withGamma(plain, 55556)).pixels->pixelAt(100, 0), asItStands);
  std::array<std::uint32_t, 8> wide = srgbPlaces;
  wide[4] = 21000;
  wide[5] = 71000;
  const FlatImage found = opened(testing::withChromaticities(testing::withGamma(plain, displayGamma), wide));
  EXPECT_NE(found.pixels->pixelAt(100, 0), asItStands);
}

TEST_F(ImageColors, TheProfileOfAPngOverridesItsGamma) {
  QImage image(4, 4, QImage::Format_RGB32);
  image.fill(qRgb(100, 100, 100));
  image.setColorSpace(QColorSpace::SRgbLinear);
  EXPECT_EQ(opened(testing::withGamma(testing::pngOf(image), displayGamma)).pixels->pixelAt(1, 1),
            0xFFA8A8A8U);
}

TEST_F(ImageColors, DeepGreyIsConvertedFromAllOfItsBits) {
  QImage image(256, 1, QImage::Format_Grayscale16);
  auto* row = reinterpret_cast<quint16*>(image.scanLine(0));
  for (int x = 0; x < 256; ++x) row[x] = static_cast<quint16>(x * 4);
  image.setColorSpace(testing::greyProfile(1.0));
  const FlatImage found = opened(image, "png");
  ASSERT_EQ(found.mode, ColorMode::grayscale16);
  for (int x = 0; x < 256; ++x) {
    EXPECT_NEAR(greyAt(found, x, 0), displayOfLight(x * 4 / 65535.0), oneStepOfEightBits) << x;
  }
}

TEST_F(ImageColors, BlackAndWhiteAreUnchangedByAnyProfile) {
  QImage image = twoColors(qRgb(0, 0, 0), qRgb(255, 255, 255));
  const FlatImage found = opened(testing::pngWithGamma(image, 100000));
  ASSERT_EQ(found.mode, ColorMode::grayscale8);
  EXPECT_EQ(found.pixels->pixelAt(0, 0), 0xFF00U);
  EXPECT_EQ(found.pixels->pixelAt(3, 4), 0xFFFFU);
}

TEST_F(ImageColors, GreyWithoutAProfileKeepsItsValues) {
  const FlatImage found = opened(greyRamp(), "png");
  for (int x = 0; x < 256; ++x) EXPECT_EQ(found.pixels->pixelAt(x, 0) & 0xFFU, static_cast<unsigned>(x));
}

}  // namespace
}  // namespace orvanel
