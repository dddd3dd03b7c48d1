#include "io/image/ImageMetadata.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <exiv2/exiv2.hpp>

#include "io/image/FlatImage.h"

namespace orvanel {
namespace {

using Format = Document::ImageFileFormat;

struct Told {
  Exiv2::ExifData exif;
  Exiv2::XmpData xmp;
  Exiv2::IptcData iptc;

  std::string operator[](const char* key) {
    const std::string name = key;
    if (name.starts_with("Exif")) return text(exif, Exiv2::ExifKey(name));
    if (name.starts_with("Xmp")) return text(xmp, Exiv2::XmpKey(name));
    return text(iptc, Exiv2::IptcKey(name));
  }

 private:
  template <typename Data, typename Key>
  static std::string text(const Data& data, const Key& key) {
    const auto found = data.findKey(key);
    return found == data.end() ? std::string() : found->toString();
  }
};

Told toldBy(const QByteArray& bytes) {
  const auto image = Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(bytes.constData()),
                                               static_cast<long>(bytes.size()));
  image->readMetadata();
  return {image->exifData(), image->xmpData(), image->iptcData()};
}

class Metadata : public ::testing::Test {
 protected:
  /// An image of 40 x 30 with an orientation and with metadata of all kinds.
  QString photograph(const char* format) {
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(qRgb(10, 200, 90));
    image.setDotsPerMeterX(11811);
    image.setDotsPerMeterY(11811);
    const QString path = folder.filePath(QStringLiteral("photograph.") + QString::fromLatin1(format));
    EXPECT_TRUE(image.save(path, format));
    const auto file = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
    file->readMetadata();
    Exiv2::ExifData& exif = file->exifData();
    exif["Exif.Image.Artist"] = "Ann";
    exif["Exif.Image.Orientation"] = std::uint16_t{6};
    exif["Exif.Photo.FNumber"] = Exiv2::Rational(28, 10);
    exif["Exif.Photo.PixelXDimension"] = std::uint32_t{4000};
    exif["Exif.Photo.PixelYDimension"] = std::uint32_t{3000};
    exif["Exif.Photo.ColorSpace"] = std::uint16_t{65535};
    exif["Exif.GPSInfo.GPSLatitudeRef"] = "N";
    exif["Exif.Thumbnail.Compression"] = std::uint16_t{6};
    file->xmpData()["Xmp.dc.creator"] = "Ann";
    file->xmpData()["Xmp.tiff.Orientation"] = "6";
    file->xmpData()["Xmp.tiff.ImageWidth"] = "4000";
    file->iptcData()["Iptc.Application2.Caption"] = "A green field";
    file->writeMetadata();
    return path;
  }

  QByteArray written(const FlatImage& image, Format format) {
    Surface composite(PixelFormat::rgba8Unorm, image.pixels->width(), image.pixels->height());
    composite.fill(0xFF5AC80AU);
    const auto bytes = exportImage(composite, ColorMode::rgb8, format, context, {}, image.metadata.get());
    EXPECT_TRUE(bytes.has_value());
    return bytes.value_or(QByteArray());
  }

  QTemporaryDir folder;
  MetalContext& context = MetalContext::shared();
};

TEST_F(Metadata, survivesInEveryFormatThatCanCarryIt) {
  for (const char* source : {"jpeg", "png", "tiff"}) {
    const auto image = readFlatImage(photograph(source), context);
    ASSERT_TRUE(image.has_value());
    ASSERT_NE(image->metadata, nullptr) << source;
    for (const Format target : {Format::jpeg, Format::png, Format::tiff}) {
      SCOPED_TRACE(::testing::Message() << source << " to " << static_cast<int>(target));
      const QByteArray bytes = written(*image, target);
      Told told = toldBy(bytes);
      EXPECT_EQ(told["Exif.Image.Artist"], "Ann");
      EXPECT_EQ(told["Exif.Photo.FNumber"], "28/10");
      EXPECT_EQ(told["Exif.GPSInfo.GPSLatitudeRef"], "N");
      EXPECT_EQ(told["Xmp.dc.creator"], "Ann");
      EXPECT_EQ(told["Iptc.Application2.Caption"], "A green field");
      const QImage shown = QImage::fromData(bytes);
      EXPECT_EQ(shown.size(), QSize(image->pixels->width(), image->pixels->height()));
      EXPECT_NEAR(shown.pixelColor(5, 5).green(), 200, 4);
    }
  }
}

TEST_F(Metadata, isCorrectedForTheImage) {
  const auto image = readFlatImage(photograph("jpeg"), context);
  ASSERT_TRUE(image.has_value());
  ASSERT_EQ(image->pixels->width(), 30) << "the picture stands upright";
  Told told = toldBy(written(*image, Format::jpeg));
  EXPECT_EQ(told["Exif.Image.Orientation"], "");
  EXPECT_EQ(told["Xmp.tiff.Orientation"], "");
  EXPECT_EQ(told["Exif.Photo.PixelXDimension"], "30");
  EXPECT_EQ(told["Exif.Photo.PixelYDimension"], "40");
  EXPECT_EQ(told["Xmp.tiff.ImageWidth"], "30");
  EXPECT_EQ(told["Exif.Photo.ColorSpace"], "1");
  EXPECT_EQ(told["Exif.Thumbnail.Compression"], "");
}

TEST_F(Metadata, densityIsKept) {
  for (const char* source : {"jpeg", "png", "bmp"}) {
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::gray);
    image.setDotsPerMeterX(11811);
    image.setDotsPerMeterY(5906);
    const QString path = folder.filePath(QStringLiteral("dense"));
    ASSERT_TRUE(image.save(path, source));
    const auto opened = readFlatImage(path, context);
    ASSERT_TRUE(opened.has_value());
    ASSERT_NE(opened->metadata, nullptr) << source;
    for (const Format target : {Format::jpeg, Format::png, Format::tiff, Format::bmp}) {
      const QImage shown = QImage::fromData(written(*opened, target));
      EXPECT_NEAR(shown.dotsPerMeterX(), 11811, 20) << source;
      EXPECT_NEAR(shown.dotsPerMeterY(), 5906, 20) << source;
    }
  }
}

TEST_F(Metadata, aFileWithoutMetadataHasNone) {
  QImage image(4, 4, QImage::Format_RGB32);
  image.fill(Qt::gray);
  Surface composite(PixelFormat::rgba8Unorm, 4, 4);
  const QString path = folder.filePath(QStringLiteral("plain.png"));
  ASSERT_TRUE(writeFlatImage(composite, ColorMode::rgb8, Format::png, path, context));
  const auto opened = readFlatImage(path, context);
  ASSERT_TRUE(opened.has_value());
  EXPECT_EQ(opened->metadata, nullptr);
}

TEST_F(Metadata, aBlockThatCannotBeWrittenDoesNotCostTheOthers) {
  const QString path = photograph("png");
  const auto file = Exiv2::ImageFactory::open(QFile::encodeName(path).toStdString());
  file->readMetadata();
  file->xmpData()["Xmp.dc.source"] = std::string(100'000, 'x');  // beyond a JPEG's segment
  file->writeMetadata();
  const auto image = readFlatImage(path, context);
  ASSERT_TRUE(image.has_value());
  Told told = toldBy(written(*image, Format::jpeg));
  EXPECT_EQ(told["Exif.Image.Artist"], "Ann");
  EXPECT_EQ(told["Iptc.Application2.Caption"], "A green field");
  EXPECT_EQ(told["Xmp.dc.creator"], "");
  EXPECT_EQ(toldBy(written(*image, Format::png))["Xmp.dc.creator"], "Ann");
}

TEST_F(Metadata, isReadFromAFileWithTheNameOfAStream) {
  const QString path = photograph("jpeg");
  ASSERT_TRUE(QFile::rename(path, folder.filePath(QStringLiteral("-"))));
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(folder.path()));
  const auto image = readFlatImage(QStringLiteral("-"), context);
  QDir::setCurrent(before);
  ASSERT_TRUE(image.has_value());
  ASSERT_NE(image->metadata, nullptr);
  EXPECT_EQ(toldBy(written(*image, Format::jpeg))["Exif.Image.Artist"], "Ann");
}

TEST_F(Metadata, damagedBlocksAreLeftOut) {
  QFile file(photograph("jpeg"));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray whole = file.readAll();
  const QString path = folder.filePath(QStringLiteral("damaged.jpg"));
  const qsizetype exif = whole.indexOf("Exif");
  ASSERT_GT(exif, 0);
  for (qsizetype at = exif; at < exif + 400 && at < whole.size(); at += 3) {
    QByteArray bytes = whole;
    bytes[at] = static_cast<char>(bytes[at] ^ 0xFF);
    QFile damaged(path);
    ASSERT_TRUE(damaged.open(QIODevice::WriteOnly));
    damaged.write(bytes);
    damaged.close();
    const auto image = readFlatImage(path, context);
    EXPECT_TRUE(!image || !written(*image, Format::jpeg).isEmpty());
  }
}

}  // namespace
}  // namespace orvanel
