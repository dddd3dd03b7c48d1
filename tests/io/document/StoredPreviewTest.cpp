// What file managers show of a document. The hostile files are named after their attack.
#include "io/document/StoredPreview.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QTemporaryDir>

#include "io/archive/ZipFixture.h"
#include "io/document/DocumentFixture.h"

namespace orvanel {
namespace {

using testing::Bytes;
using testing::ZipFixture;

Bytes png(const QImage& image) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  EXPECT_TRUE(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "png"));
  return testing::bytesOf({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

QImage picture(int width, int height, QColor color = Qt::red) {
  QImage image(width, height, QImage::Format_ARGB32);
  image.fill(color);
  return image;
}

Described<QImage> previewOf(const ZipFixture::Entry& entry) {
  ZipFixture archive;
  archive.add(entry);
  const Bytes bytes = archive.make();
  return readStoredPreview(std::span<const std::byte>(bytes));
}

Described<QImage> previewOf(const Bytes& entry) {
  return previewOf(ZipFixture::stored("preview.png", entry));
}

std::string failureOf(const Described<QImage>& preview) {
  return preview.has_value() ? std::string() : preview.error().toStdString();
}

/// Writes another width and height into the header, with its check sum.
Bytes claiming(Bytes image, std::uint32_t width, std::uint32_t height) {
  const auto put = [&image](std::size_t offset, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) {
      image[offset + static_cast<std::size_t>(i)] = static_cast<std::byte>(value >> (24 - 8 * i) & 0xFFU);
    }
  };
  constexpr std::size_t header = 12;
  put(header + 4, width);
  put(header + 8, height);
  put(header + 17, crc32(std::span<const std::byte>(image).subspan(header, 17)));
  return image;
}

TEST(StoredPreview, isThatOfASavedDocument) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("saved.tessel"));
  const DocumentPtr document = testing::richDocument(ColorMode::rgb8, 800, 400);
  ASSERT_TRUE(DocumentIO::saveSynchronously(document, path, MetalContext::shared()).has_value());
  const auto preview = readStoredPreview(path);
  ASSERT_TRUE(preview.has_value()) << preview.error().toStdString();
  EXPECT_EQ(preview->size(), QSize(512, 256));
}

TEST(StoredPreview, mayBeCompressedByAnotherWriter) {
  const auto preview = previewOf(ZipFixture::deflated("preview.png", png(picture(9, 7))));
  ASSERT_TRUE(preview.has_value()) << preview.error().toStdString();
  EXPECT_EQ(preview->pixelColor(8, 6), QColor(Qt::red));
}

TEST(StoredPreview, isAsLargeAsTheLimitButNotLarger) {
  EXPECT_EQ(failureOf(previewOf(png(picture(maximumPreviewSide, maximumPreviewSide)))), "");
  EXPECT_EQ(failureOf(previewOf(png(picture(maximumPreviewSide + 1, 1)))), "The preview is too large.");
  EXPECT_EQ(failureOf(previewOf(png(picture(1, maximumPreviewSide + 1)))), "The preview is too large.");
}

TEST(StoredPreview, aDimensionBombIsRefusedByItsHeader) {
  EXPECT_EQ(failureOf(previewOf(claiming(png(picture(2, 2)), 60000, 60000))), "The preview is too large.");
  EXPECT_NE(failureOf(previewOf(claiming(png(picture(2, 2)), 0x7FFFFFFF, 0x7FFFFFFF))), "");
  EXPECT_NE(failureOf(previewOf(claiming(png(picture(2, 2)), 0, 5))), "");
}

TEST(StoredPreview, anInflationBombIsRefusedByItsSize) {
  const Bytes zeros(maximumPreviewBytes + 1);
  EXPECT_NE(failureOf(previewOf(ZipFixture::deflated("preview.png", zeros))).find("too large"),
            std::string::npos);
}

TEST(StoredPreview, aLieAboutTheSizeIsFoundOut) {
  ZipFixture::Entry entry = ZipFixture::deflated("preview.png", Bytes(100000));
  entry.size = 100;
  EXPECT_NE(failureOf(previewOf(entry)), "");
}

TEST(StoredPreview, damagedOrForeignContentsAreRefused) {
  const Bytes whole = png(picture(64, 64));
  EXPECT_EQ(failureOf(previewOf(testing::bytesOf("GIF89a, or so it says"))),
            "The preview is not a PNG image.");
  EXPECT_EQ(failureOf(previewOf(Bytes())), "The preview is not a PNG image.");
  EXPECT_EQ(failureOf(previewOf(Bytes(whole.begin(), whole.end() - 20))), "The preview is damaged.");
  ZipFixture::Entry entry = ZipFixture::stored("preview.png", whole);
  entry.crc ^= 1U;
  EXPECT_NE(failureOf(previewOf(entry)).find("checksum"), std::string::npos);
}

TEST(StoredPreview, anSvgInItsPlaceIsNotRead) {
  EXPECT_EQ(failureOf(previewOf(
                testing::bytesOf(R"(<svg xmlns="http://www.w3.org/2000/svg" width="9" height="9"/>)"))),
            "The preview is not a PNG image.");
}

TEST(StoredPreview, fitsASquareWithoutBeingEnlarged) {
  EXPECT_EQ(fittedPreview(picture(500, 250), 100).size(), QSize(100, 50));
  EXPECT_EQ(fittedPreview(picture(512, 1), 128).size(), QSize(128, 1));
  EXPECT_EQ(fittedPreview(picture(30, 20), 128).size(), QSize(30, 20));
  EXPECT_EQ(fittedPreview(picture(500, 250, QColor(10, 20, 30)), 100).pixelColor(50, 25), QColor(10, 20, 30));
}

}  // namespace
}  // namespace orvanel
