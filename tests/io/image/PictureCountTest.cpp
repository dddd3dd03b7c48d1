#include "io/image/PictureCount.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include "io/image/FlatImage.h"
#include "io/image/ImageFixture.h"

namespace orvanel {
namespace {

int countOf(QByteArray bytes) {
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::ReadOnly);
  return pictureCount(buffer);
}

/// One grey pixel.
QImage pixel() {
  QImage image(1, 1, QImage::Format_Grayscale8);
  image.fill(100);
  return image;
}

QByteArray gif(int frames) {
  const QByteArray screen("GIF89a\x01\0\x01\0\x80\0\0\0\0\0\xFF\xFF\xFF", 19);
  const QByteArray frame("\x21\xF9\4\0\0\0\0\0\x2C\0\0\0\0\1\0\1\0\0\2\2\x44\1\0", 23);
  return screen + frame.repeated(frames) + "\x3B";
}

void appendLittleEndian(QByteArray& bytes, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i) bytes.append(static_cast<char>(value >> (8 * i) & 0xFFU));
}

/// A TIFF of one grey pixel whose pages share their only entries. The last page leads to `behindLast`.
QByteArray tiff(int pages, std::uint32_t behindLast = 0) {
  struct Entry {
    std::uint32_t tag;
    std::uint32_t value;
  };
  constexpr std::uint32_t firstDirectory = 8;
  constexpr std::uint32_t entryCount = 8;
  constexpr std::uint32_t directoryBytes = 2 + entryCount * 12 + 4;
  const std::uint32_t pixelsAt = firstDirectory + static_cast<std::uint32_t>(pages) * directoryBytes;
  QByteArray bytes("II*\0", 4);
  appendLittleEndian(bytes, firstDirectory, 4);
  for (int page = 0; page < pages; ++page) {
    appendLittleEndian(bytes, entryCount, 2);
    for (const Entry entry : {Entry{256, 1}, Entry{257, 1}, Entry{258, 8}, Entry{259, 1}, Entry{262, 1},
                              Entry{273, pixelsAt}, Entry{278, 1}, Entry{279, 1}}) {
      constexpr std::uint32_t longType = 4;
      appendLittleEndian(bytes, entry.tag, 2);
      appendLittleEndian(bytes, longType, 2);
      appendLittleEndian(bytes, 1, 4);
      appendLittleEndian(bytes, entry.value, 4);
    }
    const bool isLast = page == pages - 1;
    appendLittleEndian(bytes, isLast ? behindLast : static_cast<std::uint32_t>(bytes.size()) + 4, 4);
  }
  return bytes + QByteArray(1, 100);
}

QByteArray animatedPng(std::uint32_t frames) {
  QByteArray control;
  testing::appendBigEndian(control, frames);
  testing::appendBigEndian(control, 0);
  return testing::withChunk(testing::pngOf(pixel()), "acTL", control);
}

TEST(PictureCount, countsFramesAndPages) {
  for (const int count : {1, 2, 7}) {
    EXPECT_EQ(countOf(gif(count)), count);
    EXPECT_EQ(countOf(tiff(count)), count);
    EXPECT_EQ(countOf(animatedPng(static_cast<std::uint32_t>(count))), count);
  }
  EXPECT_EQ(countOf(testing::pngOf(pixel())), 1);
}

TEST(PictureCount, aChainOfPagesThatLeadsBackEnds) {
  EXPECT_GT(countOf(tiff(3, 8)), 1);
}

TEST(PictureCount, readsTruncatedFilesWithinBounds) {
  for (const QByteArray& whole : {gif(3), tiff(3), animatedPng(3), tiff(2, 0xFFFFFFF0)}) {
    for (qsizetype length = 0; length <= whole.size(); ++length) EXPECT_GE(countOf(whole.first(length)), 1);
  }
}

TEST(PictureCount, aFileWithSeveralPicturesOpensWithAWarningAndHasNoFormatToSaveIn) {
  MetalContext& context = MetalContext::shared();
  const QTemporaryDir folder;
  const auto open = [&](const QByteArray& bytes, const char* name) {
    QFile file(folder.filePath(QLatin1String(name)));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    const auto image = readFlatImage(file.fileName(), context);
    EXPECT_TRUE(image.has_value()) << name;
    const bool canBeSaved =
        image && documentOfFlatImage(*image, file.fileName(), context)->sourceFileFormat.value().has_value();
    EXPECT_EQ(canBeSaved, image && image->warning.isEmpty()) << name;
    return image ? image->warning : QString();
  };
  EXPECT_EQ(open(gif(1), "one.gif"), QString());
  EXPECT_EQ(open(tiff(1), "one.tiff"), QString());
  EXPECT_EQ(open(gif(3), "three.gif"), QStringLiteral("Only the first of 3 pictures was opened."));
  EXPECT_EQ(open(tiff(3), "three.tiff"), QStringLiteral("Only the first of 3 pictures was opened."));
  EXPECT_EQ(open(animatedPng(3), "three.png"), QStringLiteral("Only the first of 3 pictures was opened."));
}

}  // namespace
}  // namespace orvanel
