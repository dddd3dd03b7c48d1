// What is shown of a file while it is being read. The hostile files are named after their attack.
#include "io/document/LoadingPreview.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QBuffer>
#include <QPainter>
#include <QTemporaryDir>
#include <exiv2/exiv2.hpp>

#include "io/archive/ZipFixture.h"
#include "io/document/DocumentFixture.h"

namespace orvanel {
namespace {

using testing::Bytes;
using testing::bytesOf;
using testing::ZipFixture;

class LoadingPreviewTest : public ::testing::Test {
 protected:
  [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

  QString write(const char* name, const QByteArray& bytes) {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return path(name);
  }
  QString writeArchive(const std::vector<ZipFixture::Entry>& entries) {
    ZipFixture archive;
    for (const ZipFixture::Entry& entry : entries) archive.add(entry);
    const Bytes bytes = archive.make();
    return write("a.tessel",
                 {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())});
  }
  static ZipFixture::Entry manifest(const std::string& width, const std::string& height) {
    return ZipFixture::stored(
        "manifest.json",
        bytesOf(R"({"formatVersion":3,"generator":"","metadata":{"createdAt":"","modifiedAt":""},"document":)"
                R"({"name":"a","canvasWidth":)" +
                width + R"(,"canvasHeight":)" + height + R"(,"colorMode":2},"nodes":[]})"));
  }
  /// Red on the left and blue on the right.
  QString writePhotograph(const char* name, int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::red);
    QPainter(&image).fillRect(width / 2, 0, width, height, Qt::blue);
    EXPECT_TRUE(image.save(path(name), nullptr, 90));
    return path(name);
  }
  static void edit(const QString& file, const std::function<void(Exiv2::ExifData&)>& change) {
    const auto image = Exiv2::ImageFactory::open(file.toStdString());
    image->readMetadata();
    change(image->exifData());
    image->writeMetadata();
  }
  static void addThumbnail(const QString& file, const QSize& size) {
    QImage thumbnail(size, QImage::Format_RGB32);
    thumbnail.fill(Qt::green);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(thumbnail.save(&buffer, "jpeg"));
    edit(file, [&](Exiv2::ExifData& exif) {
      Exiv2::ExifThumb(exif).setJpegThumbnail(reinterpret_cast<const Exiv2::byte*>(buffer.data().constData()),
                                              static_cast<long>(buffer.size()));
    });
  }

  QTemporaryDir folder;
};

TEST_F(LoadingPreviewTest, aDocumentTellsItsCanvasAndItsPicture) {
  const DocumentPtr document =
      Document::create(QStringLiteral("Wide"), 3000, 1000, ColorMode::rgb8, MetalContext::shared());
  document->fillSelection({0.0F, 1.0F, 0.0F, 1.0F});
  ASSERT_TRUE(DocumentIO::saveSynchronously(document, path("a.tessel"), MetalContext::shared()));
  const LoadingPreview preview = readLoadingPreview(path("a.tessel"), 1024);
  EXPECT_EQ(preview.canvasSize, QSize(3000, 1000));
  ASSERT_FALSE(preview.picture.isNull());
  EXPECT_EQ(preview.picture.pixelColor(10, 10), QColor(Qt::green));
}

TEST_F(LoadingPreviewTest, aDocumentWithoutAPictureTellsItsCanvas) {
  const LoadingPreview preview = readLoadingPreview(writeArchive({manifest("300", "200")}), 1024);
  EXPECT_EQ(preview.canvasSize, QSize(300, 200));
  EXPECT_TRUE(preview.picture.isNull());
}

TEST_F(LoadingPreviewTest, aDamagedPictureIsLeftOut) {
  const auto broken = ZipFixture::stored("preview.png", bytesOf("no picture"));
  const LoadingPreview preview = readLoadingPreview(writeArchive({manifest("300", "200"), broken}), 1024);
  EXPECT_EQ(preview.canvasSize, QSize(300, 200));
  EXPECT_TRUE(preview.picture.isNull());
}

TEST_F(LoadingPreviewTest, canvasBeyondEverySizeIsNone) {
  for (const char* side : {"0", "-3", "16385", "9223372036854775807"}) {
    EXPECT_EQ(readLoadingPreview(writeArchive({manifest(side, "20")}), 1024).canvasSize, QSize()) << side;
  }
}

TEST_F(LoadingPreviewTest, whatIsNoDocumentHasNone) {
  EXPECT_EQ(readLoadingPreview(write("a.tessel", "no archive"), 1024).canvasSize, QSize());
  EXPECT_EQ(readLoadingPreview(path("missing.tessel"), 1024).canvasSize, QSize());
  EXPECT_EQ(readLoadingPreview(folder.path(), 1024).canvasSize, QSize());
}

TEST_F(LoadingPreviewTest, pipeWithoutAWriterDoesNotBlock) {
  for (const char* name : {"pipe.tessel", "pipe.jpg"}) {
    ASSERT_EQ(::mkfifo(QFile::encodeName(path(name)).constData(), 0600), 0);
    EXPECT_EQ(readLoadingPreview(path(name), 1024).canvasSize, QSize());
  }
}

TEST_F(LoadingPreviewTest, aJPEGIsReduced) {
  const LoadingPreview preview = readLoadingPreview(writePhotograph("a.jpg", 3000, 2000), 300);
  EXPECT_EQ(preview.canvasSize, QSize(3000, 2000));
  EXPECT_EQ(preview.picture.size(), QSize(300, 200));
  EXPECT_GT(preview.picture.pixelColor(20, 100).red(), 240);
  EXPECT_GT(preview.picture.pixelColor(280, 100).blue(), 240);
}

TEST_F(LoadingPreviewTest, aTurnedJPEGStandsUpright) {
  const QString file = writePhotograph("a.jpg", 600, 400);
  edit(file, [](Exiv2::ExifData& exif) { exif["Exif.Image.Orientation"] = std::uint16_t{6}; });
  const LoadingPreview preview = readLoadingPreview(file, 300);
  EXPECT_EQ(preview.canvasSize, QSize(400, 600));
  EXPECT_EQ(preview.picture.size(), QSize(200, 300));
  EXPECT_GT(preview.picture.pixelColor(100, 20).red(), 240);
}

TEST_F(LoadingPreviewTest, aLargeJPEGShowsTheThumbnailThatItCarries) {
  const QString file = writePhotograph("a.jpg", 4200, 4200);
  EXPECT_TRUE(readLoadingPreview(file, 300).picture.isNull());
  addThumbnail(file, {160, 160});
  const LoadingPreview preview = readLoadingPreview(file, 300);
  EXPECT_EQ(preview.canvasSize, QSize(4200, 4200));
  ASSERT_EQ(preview.picture.size(), QSize(160, 160));
  EXPECT_GT(preview.picture.pixelColor(80, 80).green(), 240);
}

TEST_F(LoadingPreviewTest, aThumbnailOfOtherProportionsIsLeftOut) {
  const QString file = writePhotograph("a.jpg", 5000, 4000);
  addThumbnail(file, {160, 90});
  EXPECT_TRUE(readLoadingPreview(file, 300).picture.isNull());
}

TEST_F(LoadingPreviewTest, anImageThatTakesLongToReduceTellsItsSize) {
  const LoadingPreview preview = readLoadingPreview(writePhotograph("a.png", 300, 200), 100);
  EXPECT_EQ(preview.canvasSize, QSize(300, 200));
  EXPECT_TRUE(preview.picture.isNull());
}

}  // namespace
}  // namespace orvanel
