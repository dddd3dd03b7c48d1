#include "io/image/SvgSource.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include "io/image/FlatImage.h"
#include "io/image/ImageFixture.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

class SvgSource : public ::testing::Test {
 protected:
  SvgSource() {
    QImage red(8, 8, QImage::Format_RGB32);
    red.fill(Qt::red);
    EXPECT_TRUE(red.save(folder.filePath(QStringLiteral("secret.png"))));
  }

  FileResult<FlatImage> read(const QByteArray& drawing) {
    QFile file(folder.filePath(QStringLiteral("drawing.svg")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(drawing);
    file.close();
    return readFlatImage(file.fileName(), context);
  }
  QByteArray secret() const { return folder.filePath(QStringLiteral("secret.png")).toUtf8(); }

  static QByteArray drawing(const QByteArray& content, const QByteArray& prolog = {}) {
    return "<?xml version=\"1.0\"?>" + prolog +
           "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" "
           "width=\"8\" height=\"8\">" +
           content + "</svg>";
  }
  static std::uint64_t middleOf(const FlatImage& image) { return image.pixels->pixelAt(4, 4); }

  static constexpr std::uint64_t green = 0xFF00FF00U;
  static constexpr std::uint64_t nothing = 0;

  QTemporaryDir folder;
  MetalContext& context = MetalContext::shared();
};

const QByteArray greenSquare = "<rect width=\"8\" height=\"8\" fill=\"#00ff00\"/>";

TEST_F(SvgSource, ordinaryDrawingsAreDrawn) {
  const auto plain = read(drawing(greenSquare));
  ASSERT_TRUE(plain.has_value()) << plain.error().message.toStdString();
  EXPECT_EQ(middleOf(*plain), green);
  const auto used = read(drawing("<defs><g id=\"a\">" + greenSquare + "</g></defs><use xlink:href=\"#a\"/>"));
  EXPECT_EQ(middleOf(*used), green);
}

TEST_F(SvgSource, embeddedRasterImagesAreDrawn) {
  QImage square(8, 8, QImage::Format_RGB32);
  square.fill(QColor(0, 255, 0));
  const QByteArray data = testing::pngOf(square).toBase64();
  const auto image =
      read(drawing("<image width=\"8\" height=\"8\" xlink:href=\"data:image/png;base64," + data + "\"/>"));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(middleOf(*image), green);
}

TEST_F(SvgSource, embeddedImagesCountAgainstMemoryTogether) {
  QImage square(400, 400, QImage::Format_RGB32);
  square.fill(QColor(0, 255, 0));
  const QByteArray embedded = "<image width=\"8\" height=\"8\" xlink:href=\"data:image/png;base64," +
                              testing::pngOf(square).toBase64() + "\"/>";
  const ScopedMemoryLimit limit(10'000'000);
  EXPECT_TRUE(read(drawing(embedded)).has_value());
  const auto image = read(drawing(embedded.repeated(4)));
  ASSERT_FALSE(image.has_value());
  EXPECT_EQ(image.error().message, QStringLiteral("There is not enough memory for this image."));
}

TEST_F(SvgSource, otherFilesAreNotRead) {
  for (const QByteArray& reference :
       {secret(), "file://" + secret(), QByteArray("secret.png"), QByteArray("./secret.png")}) {
    for (const char* attribute : {"xlink:href", "href"}) {
      const auto image = read(
          drawing("<image width=\"8\" height=\"8\" " + QByteArray(attribute) + "=\"" + reference + "\"/>"));
      ASSERT_TRUE(image.has_value());
      EXPECT_EQ(middleOf(*image), nothing) << reference.toStdString();
    }
  }
}

TEST_F(SvgSource, embeddedDrawingsReadNoFiles) {
  const QByteArray inner =
      drawing("<image width=\"8\" height=\"8\" xlink:href=\"" + secret() + "\"/>").toBase64();
  const auto image = read(
      drawing("<image width=\"8\" height=\"8\" xlink:href=\"data:image/svg+xml;base64," + inner + "\"/>"));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(middleOf(*image), nothing);
}

TEST_F(SvgSource, externalStyleSheetsAreNotRead) {
  QFile sheet(folder.filePath(QStringLiteral("sheet.css")));
  ASSERT_TRUE(sheet.open(QIODevice::WriteOnly));
  sheet.write("rect { fill: #ff0000; }");
  sheet.close();
  const QByteArray instruction =
      "<?xml-stylesheet type=\"text/css\" href=\"" + sheet.fileName().toUtf8() + "\"?>";
  const auto image = read(drawing("<rect width=\"8\" height=\"8\" style=\"fill:#00ff00\"/>", instruction));
  ASSERT_TRUE(image.has_value());
  EXPECT_EQ(middleOf(*image), green);
}

TEST_F(SvgSource, externalEntitiesStayUnresolved) {
  const QByteArray type = "<!DOCTYPE svg [<!ENTITY x SYSTEM \"file:///etc/hostname\">]>";
  QByteArray bytes = drawing("<text>&x;</text>" + greenSquare, type);
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::ReadOnly);
  const auto safe = selfContainedSvg(buffer);
  EXPECT_FALSE(safe.has_value() && safe->contains("ENTITY"));
}

TEST_F(SvgSource, entityBombsAreRejected) {
  QByteArray type = "<!DOCTYPE svg [<!ENTITY a0 \"aaaaaaaaaaaaaaaa\">";
  for (int i = 1; i < 20; ++i) {
    const QByteArray before = "&a" + QByteArray::number(i - 1) + ";";
    type += "<!ENTITY a" + QByteArray::number(i) + " \"" + before.repeated(16) + "\">";
  }
  EXPECT_FALSE(read(drawing("<text>&a19;</text>", type + "]>")).has_value());
}

TEST_F(SvgSource, compressedDrawingsAreLimitedInSize) {
  const auto compressed = [](const QByteArray& bytes) {
    // Qt writes no gzip streams.
    QByteArray out(static_cast<qsizetype>(compressBound(static_cast<uLong>(bytes.size()))) + 64, '\0');
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.constData()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.truncate(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
    return out;
  };
  const auto sound = read(compressed(drawing(greenSquare)));
  ASSERT_TRUE(sound.has_value()) << sound.error().message.toStdString();
  EXPECT_EQ(middleOf(*sound), green);
  EXPECT_FALSE(read(compressed(drawing(QByteArray(qsizetype{80} << 20U, ' ')))).has_value());
}

}  // namespace
}  // namespace orvanel
