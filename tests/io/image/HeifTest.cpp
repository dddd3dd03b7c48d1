#include <gtest/gtest.h>

#include <QColorSpace>
#include <random>

#include "io/image/FlatImage.h"
#include "io/image/HeifFixture.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

class HeicFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!testing::HeifWriter::shared().canEncode()) GTEST_SKIP() << "libheif comes without an encoder here";
  }

  FileResult<FlatImage> read(const QByteArray& bytes, const QString& name = QStringLiteral("photo.heic")) {
    QFile file(folder.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    return readFlatImage(file.fileName(), context);
  }

  static QByteArray fileOf(const QImage& picture) {
    const std::optional<QByteArray> bytes = testing::heicOf(picture);
    EXPECT_TRUE(bytes.has_value());
    return bytes.value_or(QByteArray());
  }

  static QImage plain(QRgb color, QImage::Format format = QImage::Format_RGB32) {
    QImage picture(64, 48, format);
    picture.fill(color);
    return picture;
  }

  QTemporaryDir folder;
  MetalContext& context = MetalContext::shared();
};

void expectNear(std::uint64_t pixel, QRgb expected) {
  constexpr int lossOfCompression = 4;
  EXPECT_NEAR(static_cast<int>(pixel & 0xFFU), qRed(expected), lossOfCompression);
  EXPECT_NEAR(static_cast<int>(pixel >> 8U & 0xFFU), qGreen(expected), lossOfCompression);
  EXPECT_NEAR(static_cast<int>(pixel >> 16U & 0xFFU), qBlue(expected), lossOfCompression);
  EXPECT_NEAR(static_cast<int>(pixel >> 24U & 0xFFU), qAlpha(expected), lossOfCompression);
}

TEST_F(HeicFiles, APhotoOpensWithItsSizeAndColors) {
  const QByteArray bytes = fileOf(plain(qRgb(200, 90, 30)));
  for (const char* name : {"photo.heic", "photo.HEIF"}) {
    const auto image = read(bytes, QString::fromLatin1(name));
    ASSERT_TRUE(image.has_value()) << image.error().message.toStdString();
    EXPECT_EQ(image->mode, ColorMode::rgb8);
    ASSERT_EQ(image->pixels->width(), 64);
    ASSERT_EQ(image->pixels->height(), 48);
    expectNear(image->pixels->pixelAt(30, 20), qRgb(200, 90, 30));
  }
}

TEST_F(HeicFiles, TransparencyIsKept) {
  const auto image = read(fileOf(plain(qRgba(40, 160, 90, 120), QImage::Format_ARGB32)));
  ASSERT_TRUE(image.has_value()) << image.error().message.toStdString();
  expectNear(image->pixels->pixelAt(30, 20), qRgba(40, 160, 90, 120));
}

TEST_F(HeicFiles, AnEmbeddedProfileIsConvertedToSrgb) {
  QImage picture = plain(qRgb(100, 150, 200));
  picture.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
  const auto image = read(fileOf(picture));
  ASSERT_TRUE(image.has_value()) << image.error().message.toStdString();
  picture.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
  ASSERT_LT(qRed(picture.pixel(0, 0)), 80);
  constexpr int lossOfCompression = 6;
  EXPECT_NEAR(static_cast<int>(image->pixels->pixelAt(30, 20) & 0xFFU), qRed(picture.pixel(0, 0)),
              lossOfCompression);
}

TEST_F(HeicFiles, ASizeBeyondTheLargestCanvasIsRejected) {
  const QByteArray bytes = fileOf(plain(qRgb(1, 2, 3)));
  for (const auto& [width, height] :
       {std::pair{30000U, 48U}, std::pair{64U, 30000U}, std::pair{100000U, 100000U},
        std::pair{0x7FFFFFFFU, 0x7FFFFFFFU}, std::pair{0xFFFFFFFFU, 0xFFFFFFFFU}}) {
    const auto image = read(testing::heicAnnouncing(bytes, width, height));
    ASSERT_FALSE(image.has_value()) << width;
    EXPECT_EQ(image.error().code, DocumentIOError::loadFailed);
    EXPECT_FALSE(image.error().message.isEmpty());
  }
}

TEST_F(HeicFiles, AnImageTooLargeForMemoryIsRejectedBeforeDecoding) {
  const QByteArray bytes = testing::heicAnnouncing(fileOf(plain(qRgb(1, 2, 3))), 16384, 16384);
  const ScopedMemoryLimit limit(std::uint64_t{1} << 30U);
  const auto image = read(bytes);
  ASSERT_FALSE(image.has_value());
  EXPECT_EQ(image.error().message, QStringLiteral("There is not enough memory for this image."));
}

TEST_F(HeicFiles, PixelsBeyondTheDeclaredSizeCountAgainstMemory) {
  const QByteArray bytes = testing::heicAnnouncing(fileOf(plain(qRgb(1, 2, 3))), 2, 2);
  const ScopedMemoryLimit limit(10000);
  EXPECT_FALSE(read(bytes).has_value());
}

TEST_F(HeicFiles, ATruncatedFileIsRefusedOrOpensAtItsFullSize) {
  const QByteArray bytes = fileOf(plain(qRgb(200, 90, 30)));
  for (qsizetype length = 0; length < bytes.size(); length += 1 + bytes.size() / 97) {
    const auto image = read(bytes.first(length));
    if (image) {
      EXPECT_EQ(image->pixels->width(), 64) << length;
    }
  }
}

TEST_F(HeicFiles, ADamagedFileIsRefusedOrOpensAsAnImage) {
  const QByteArray bytes = fileOf(plain(qRgb(200, 90, 30)));
  std::mt19937 random(7);
  for (int round = 0; round < 100; ++round) {
    QByteArray damaged = bytes;
    for (int change = 0; change < 8; ++change) {
      damaged[static_cast<qsizetype>(random() % static_cast<unsigned>(damaged.size()))] =
          static_cast<char>(random() & 0xFFU);
    }
    const auto image = read(damaged);
    if (image) {
      EXPECT_GE(image->pixels->width(), 1) << round;
    }
  }
}

TEST(HeicNames, AFileWithoutAPictureIsRejectedWithAReason) {
  const QTemporaryDir folder;
  QFile file(folder.filePath(QStringLiteral("text.heic")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("This is not an image.");
  file.close();
  const auto image = readFlatImage(file.fileName(), MetalContext::shared());
  ASSERT_FALSE(image.has_value());
  EXPECT_EQ(image.error().code, DocumentIOError::loadFailed);
  EXPECT_FALSE(image.error().message.isEmpty());
}

}  // namespace
}  // namespace orvanel
