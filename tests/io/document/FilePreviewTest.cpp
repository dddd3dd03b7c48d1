#include "io/document/FilePreview.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QBuffer>
#include <QTemporaryDir>

#include "io/archive/ZipFixture.h"
#include "io/document/DocumentFixture.h"
#include "io/document/StoredPreview.h"

namespace orvanel {
namespace {

using orvanel::testing::Bytes;
using orvanel::testing::ZipFixture;

class FilePreviewTest : public ::testing::Test {
 protected:
  [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

  QString write(const char* name, const QByteArray& bytes) {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return path(name);
  }
  QString writeImage(const char* name, int width, int height, QColor color = Qt::red) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    EXPECT_TRUE(image.save(path(name)));
    return path(name);
  }
  static Bytes png(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::blue);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, "PNG"));
    const auto* begin = reinterpret_cast<const std::byte*>(buffer.data().constData());
    return {begin, begin + buffer.size()};
  }
  QString writeArchive(const char* name, const ZipFixture::Entry& entry) {
    ZipFixture archive;
    archive.add(entry);
    const Bytes bytes = archive.make();
    return write(name, {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())});
  }

  QTemporaryDir folder;
};

TEST_F(FilePreviewTest, ADocumentCarriesItsPicture) {
  const DocumentPtr document =
      Document::create(QStringLiteral("Wide"), 600, 300, ColorMode::rgb8, MetalContext::shared());
  document->fillSelection({0.0F, 1.0F, 0.0F, 1.0F});
  ASSERT_TRUE(DocumentIO::saveSynchronously(document, path("a.tessel"), MetalContext::shared()));
  const QImage picture = filePreview(path("a.tessel"), 100);
  EXPECT_EQ(picture.size(), QSize(100, 50));
  EXPECT_EQ(picture.pixelColor(50, 25), QColor(0, 255, 0));
}

TEST_F(FilePreviewTest, AnImageIsReducedToTheSide) {
  for (const char* name : {"a.png", "a.jpg", "a.bmp"}) {
    const QImage picture = filePreview(writeImage(name, 40, 400, QColor(255, 255, 255)), 100);
    EXPECT_EQ(picture.size(), QSize(10, 100)) << name;
    EXPECT_EQ(picture.pixelColor(5, 50), QColor(255, 255, 255)) << name;
  }
}

TEST_F(FilePreviewTest, ASmallImageKeepsItsSize) {
  EXPECT_EQ(filePreview(writeImage("a.png", 20, 10), 100).size(), QSize(20, 10));
}

TEST_F(FilePreviewTest, AThinImageKeepsAPixel) {
  EXPECT_EQ(filePreview(writeImage("a.png", 4000, 1), 100).size(), QSize(100, 1));
}

TEST_F(FilePreviewTest, WhatIsNoPictureHasNone) {
  EXPECT_TRUE(filePreview(path("missing.png"), 100).isNull());
  EXPECT_TRUE(filePreview(path("missing.tessel"), 100).isNull());
  EXPECT_TRUE(filePreview(folder.path(), 100).isNull());
  EXPECT_TRUE(filePreview(write("a.png", "words"), 100).isNull());
  EXPECT_TRUE(filePreview(write("a.tessel", "words"), 100).isNull());
  EXPECT_TRUE(
      filePreview(writeArchive("b.tessel", ZipFixture::stored("other.png", png(8, 8))), 100).isNull());
}

TEST_F(FilePreviewTest, APipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(QFile::encodeName(path("pipe.png")).constData(), 0600), 0);
  EXPECT_TRUE(filePreview(path("pipe.png"), 100).isNull());
}

TEST_F(FilePreviewTest, AnOversizedPreviewIsNotDecoded) {
  EXPECT_FALSE(filePreview(writeArchive("a.tessel", ZipFixture::deflated("preview.png", png(512, 512))), 100)
                   .isNull());
  EXPECT_TRUE(
      filePreview(
          writeArchive("b.tessel", ZipFixture::deflated("preview.png", png(maximumPreviewSide + 1, 8))), 100)
          .isNull());
  Bytes endless = png(8, 8);
  endless.resize(maximumPreviewBytes + 1);
  EXPECT_TRUE(
      filePreview(writeArchive("c.tessel", ZipFixture::deflated("preview.png", endless)), 100).isNull());
}

TEST_F(FilePreviewTest, AnImageThatIsCostlyToDecodeHasNoPicture) {
  EXPECT_TRUE(filePreview(writeImage("a.bmp", 7000, 7000), 100).isNull());
}

TEST_F(FilePreviewTest, ACancelledPictureIsNotMade) {
  const auto cancellation = std::make_shared<Cancellation>();
  cancellation->cancel();
  EXPECT_TRUE(filePreview(writeImage("a.png", 20, 10), 100, Progress({}, cancellation)).isNull());
}

}  // namespace
}  // namespace orvanel
