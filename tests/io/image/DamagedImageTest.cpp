#include <gtest/gtest.h>

#include <QBuffer>
#include <QDataStream>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <random>

#include "io/image/FlatImage.h"
#include "io/image/ImageEnd.h"

namespace orvanel {
namespace {

QImage noise(int width, int height) {
  std::mt19937 random(7);
  QImage image(width, height, QImage::Format_RGB32);
  for (int y = 0; y < height; ++y) {
    auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < width; ++x) row[x] = random() | 0xFF000000U;
  }
  return image;
}

QByteArray encoded(const QImage& image, const char* format) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  EXPECT_TRUE(image.save(&buffer, format)) << format;
  return bytes;
}

class DamagedImages : public ::testing::Test {
 protected:
  FileResult<FlatImage> read(const QByteArray& bytes) {
    QFile file(path());
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    ::testing::internal::CaptureStderr();
    auto image = readFlatImage(path(), context);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << "a library printed its own words";
    return image;
  }
  /// The file opens with a warning or is rejected with a reason.
  void expectHonest(const QByteArray& bytes) {
    const auto image = read(bytes);
    if (image) {
      EXPECT_FALSE(image->warning.isEmpty());
    } else {
      EXPECT_TRUE(image.error().message.endsWith(u'.'));
    }
  }
  QString path() const { return folder.filePath(QStringLiteral("picture.jpg")); }

  QTemporaryDir folder;
  MetalContext& context = MetalContext::shared();
};

class TruncatedImages : public DamagedImages, public ::testing::WithParamInterface<const char*> {};

TEST_P(TruncatedImages, aWholeFileOpensWithoutAWarning) {
  const auto image = read(encoded(noise(90, 70), GetParam()));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->warning, QString());
}

TEST_P(TruncatedImages, aTruncatedFileIsNeverTakenForComplete) {
  const QByteArray whole = encoded(noise(90, 70), GetParam());
  for (const double part : {0.1, 0.5, 0.9, 0.97}) {
    SCOPED_TRACE(part);
    expectHonest(whole.first(static_cast<qsizetype>(part * static_cast<double>(whole.size()))));
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, TruncatedImages, ::testing::Values("jpeg", "png", "tiff", "bmp", "webp"));

TEST_F(DamagedImages, aTruncatedJpegOpensWithAWarningAndHasNoFormatToSaveIn) {
  const QByteArray whole = encoded(noise(200, 160), "jpeg");
  const auto image = read(whole.first(whole.size() / 2));
  ASSERT_TRUE(image.has_value());
  EXPECT_FALSE(image->warning.isEmpty());
  EXPECT_EQ(documentOfFlatImage(*image, path(), context)->sourceFileFormat.value(), std::nullopt);
  const auto sound = read(whole);
  EXPECT_EQ(documentOfFlatImage(*sound, path(), context)->sourceFileFormat.value(),
            Document::ImageFileFormat::jpeg);
}

TEST_F(DamagedImages, aJpegWithMissingDataOpensWithAWarning) {
  QByteArray bytes = encoded(noise(200, 160), "jpeg");
  const qsizetype middle = bytes.size() / 2;
  bytes.remove(middle, bytes.size() - middle - 2);  // the end marker stays
  const auto image = read(bytes);
  ASSERT_TRUE(image.has_value());
  EXPECT_FALSE(image->warning.isEmpty());
}

TEST_F(DamagedImages, trailingBytesOfAJpegAreIgnored) {
  const auto image = read(encoded(noise(40, 30), "jpeg") + QByteArray(500, '\x55'));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(image->warning, QString());
}

TEST_F(DamagedImages, aTruncatedTiffSaysThatItEndsTooEarly) {
  const QByteArray whole = encoded(noise(200, 160), "tiff");
  for (const double part : {0.1, 0.5, 0.67, 0.97}) {
    const auto image = read(whole.first(static_cast<qsizetype>(part * static_cast<double>(whole.size()))));
    ASSERT_FALSE(image.has_value()) << part;
    EXPECT_EQ(image.error().message, QStringLiteral("The file ends before the image does.")) << part;
  }
}

/// Begins with its directory, which announces two strips; the second one begins at byte 60.
QByteArray tiffOfTwoStrips(bool isLittleEndian, int fileBytes) {
  QByteArray bytes;
  QDataStream stream(&bytes, QIODevice::WriteOnly);
  stream.setByteOrder(isLittleEndian ? QDataStream::LittleEndian : QDataStream::BigEndian);
  const quint16 order = isLittleEndian ? 0x4949 : 0x4D4D;
  constexpr quint16 width = 256;
  constexpr quint16 stripOffsets = 273;
  stream << order << quint16{42} << quint32{8} << quint16{2};
  stream << width << quint16{4} << quint32{1} << quint32{100};
  stream << stripOffsets << quint16{4} << quint32{2} << quint32{40};
  return bytes.leftJustified(40, '\0') + [&] {
    QByteArray offsets;
    QDataStream out(&offsets, QIODevice::WriteOnly);
    out.setByteOrder(stream.byteOrder());
    out << quint32{50} << quint32{60};
    return offsets.leftJustified(fileBytes - 40, '\0', true);
  }();
}

TEST_F(DamagedImages, aTiffEndsTooEarlyWhereItsLastStripIsMissing) {
  for (const bool isLittleEndian : {true, false}) {
    for (const int length : {44, 47, 50, 60, 61, 100}) {
      QByteArray bytes = tiffOfTwoStrips(isLittleEndian, length);
      QBuffer buffer(&bytes);
      buffer.open(QIODevice::ReadOnly);
      EXPECT_EQ(endsTooEarly(buffer), length <= 60) << length;
    }
  }
}

TEST_F(DamagedImages, aTruncatedGifOpensWithAWarning) {
  Surface composite(PixelFormat::rgba8Unorm, 90, 70);
  const QImage picture = noise(90, 70).convertToFormat(QImage::Format_RGBA8888);
  composite.writeRect(composite.bounds(), reinterpret_cast<const std::byte*>(picture.constBits()),
                      static_cast<std::size_t>(picture.bytesPerLine()));
  const auto whole = exportImage(composite, ColorMode::rgb8, Document::ImageFileFormat::gif, context);
  ASSERT_TRUE(whole.has_value());
  EXPECT_EQ(read(*whole)->warning, QString());
  expectHonest(whole->first(whole->size() * 2 / 3));
}

TEST_F(DamagedImages, aPngWithAWrongChecksumIsRejected) {
  QByteArray bytes = encoded(noise(90, 70), "png");
  bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 0x55);
  expectHonest(bytes);
}

TEST_F(DamagedImages, truncationAtAnyByteIsDetected) {
  for (const char* format : {"png", "bmp", "webp"}) {
    QByteArray whole = encoded(noise(20, 10), format);
    QBuffer buffer(&whole);
    buffer.open(QIODevice::ReadOnly);
    EXPECT_FALSE(endsTooEarly(buffer)) << format;
    for (qsizetype length = 12; length + 12 < whole.size(); ++length) {
      QByteArray part = whole.first(length);
      QBuffer partBuffer(&part);
      partBuffer.open(QIODevice::ReadOnly);
      EXPECT_TRUE(endsTooEarly(partBuffer)) << format << " of " << length << " bytes";
    }
  }
}

TEST_F(DamagedImages, unsupportedFilesSaySo) {
  const auto image = read("this is a letter, not a picture");
  ASSERT_FALSE(image.has_value());
  EXPECT_EQ(image.error().message, QStringLiteral("Unsupported image format."));
}

}  // namespace
}  // namespace orvanel
